#include "host/cli/frame_names.h"

#include "host/cli/run.h"

#include <gtest/gtest.h>

namespace velm::host {
namespace {

struct Row {
    const char *pattern;
    bool several;
    int frame;
    const char *file;
};

class Names : public testing::TestWithParam<Row> {};

TEST_P(Names, ContainTheFrameNumber) {
    const Row &row = GetParam();
    EXPECT_EQ(FrameNames(row.pattern, row.several)(row.frame), row.file);
}

INSTANTIATE_TEST_SUITE_P(
    All, Names,
    testing::Values(Row{"a.png", false, 7, "a.png"}, Row{"a.png", true, 7, "a_0007.png"},
                    Row{"a.b.exr", true, 7, "a.b_0007.exr"}, Row{"out/a", true, 12345, "out/a_12345"},
                    Row{"out.d/a", true, 1, "out.d/a_0001"}, Row{"a####.png", false, 7, "a0007.png"},
                    Row{"a#.png", true, 123, "a123.png"}, Row{"f_%04d.png", true, 7, "f_0007.png"},
                    Row{"f_%d.png", true, 7, "f_7.png"}, Row{"f_%3d.png", false, 7, "f_007.png"},
                    Row{"a####.png", true, -7, "a-0007.png"}, Row{"dir##/a.png", false, 7, "dir##/a.png"},
                    Row{"dir##/a.png", true, 7, "dir##/a_0007.png"}, Row{"50%.png", true, 7, "50%_0007.png"}));

TEST(FrameNames, AllowOnePlaceholderOnly) {
    EXPECT_THROW(FrameNames("a##b##.png", true), UsageError);
    EXPECT_THROW(FrameNames("a%d_%02d.png", false), UsageError);
}

} // namespace
} // namespace velm::host
