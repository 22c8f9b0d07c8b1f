#include "host/cli/frame_list.h"

#include "host/cli/run.h"

#include <gtest/gtest.h>

namespace velm::host {
namespace {

using Frames = std::vector<int>;

struct ListRow {
    const char *text;
    Frames frames;
};

TEST(FrameLists, KeepTheOrderAndListEachFrameOnce) {
    constexpr int kUsualStep = 1;
    const ListRow rows[] = {
        {"7", {7}},
        {"1-4", {1, 2, 3, 4}},
        {"1-10x3,15", {1, 4, 7, 10, 15}},
        {"1-10:3,15", {1, 4, 7, 10, 15}},
        {"1-10x4", {1, 5, 9}},
        {"3-3x7", {3}},
        {"9,1-3", {9, 1, 2, 3}},
        {"1,5,1-6x2,5", {1, 5, 3}},
        {"-3", {-3}},
        {"-3--1,0", {-3, -2, -1, 0}},
        {"-2-2:2", {-2, 0, 2}},
        {"999999", {999999}},
    };
    for (const ListRow &row : rows) EXPECT_EQ(FrameList::parse(row.text).frames(kUsualStep), row.frames) << row.text;
}

TEST(FrameLists, RangesWithoutAStepHaveTheUsualOne) {
    EXPECT_EQ(FrameList::parse("1-5,10-14x1").frames(2), (Frames{1, 3, 5, 10, 11, 12, 13, 14}));
}

struct WrongRow {
    const char *text, *message;
};

TEST(FrameLists, ErrorsNameTheItemAndItsPosition) {
    const WrongRow rows[] = {
        {"", "--frames: \"\" is neither a frame nor a range such as 1-24 or 1-24x2 (character 1)"},
        {"1,", "--frames: \"\" is neither a frame nor a range such as 1-24 or 1-24x2 (character 3)"},
        {"1-10x3,b", "--frames: \"b\" is neither a frame nor a range such as 1-24 or 1-24x2 (character 8)"},
        {"1-", "--frames: \"1-\" is neither a frame nor a range such as 1-24 or 1-24x2 (character 1)"},
        {"1x3", "--frames: \"1x3\" is neither a frame nor a range such as 1-24 or 1-24x2 (character 1)"},
        {"1-9x", "--frames: \"1-9x\" is neither a frame nor a range such as 1-24 or 1-24x2 (character 1)"},
        {"1 -9", "--frames: \"1 -9\" is neither a frame nor a range such as 1-24 or 1-24x2 (character 1)"},
        {"99999999999",
         "--frames: \"99999999999\" is neither a frame nor a range such as 1-24 or 1-24x2 (character 1)"},
        {"2,1-9x0", "--frames: the step of \"1-9x0\" must be at least 1 (character 3)"},
        {"2,1-9x-2", "--frames: the step of \"1-9x-2\" must be at least 1 (character 3)"},
        {"4,9-1", "--frames: the last frame, 1, comes before the first, 9 (character 3)"},
        {"1000000", "--frames: frames are numbered from -999999 to 999999 (character 1)"},
    };
    for (const WrongRow &row : rows) {
        try {
            FrameList::parse(row.text);
            ADD_FAILURE() << row.text << " was accepted";
        } catch (const UsageError &error) {
            EXPECT_STREQ(error.what(), row.message);
        }
    }
}

TEST(FrameLists, AreWrittenForTheStepThatRangesWithoutOneHave) {
    for (const int usualStep : {1, 2, 3})
        for (const Frames &frames : {Frames{1, 2, 3}, Frames{1, 3, 5, 7, 8, 9}, Frames{4, 7, 10}})
            EXPECT_EQ(FrameList::parse(frameText(frames, usualStep)).frames(usualStep), frames);
    EXPECT_EQ(frameText({1, 3, 5}, 2), "1-5");
    EXPECT_EQ(frameText({1, 2, 3}, 2), "1-3:1");
}

TEST(FrameLists, AreWrittenShort) {
    const ListRow rows[] = {
        {"", {}},
        {"5", {5}},
        {"5,6", {5, 6}},
        {"5-7", {5, 6, 7}},
        {"1-10:3,15", {1, 4, 7, 10, 15}},
        {"9,8", {9, 8}},
        {"3,3", {3, 3}},
        {"-3--1", {-3, -2, -1}},
        {"1,3-6", {1, 3, 4, 5, 6}},
    };
    for (const ListRow &row : rows) EXPECT_EQ(frameText(row.frames, 1), row.text);
    const Frames mixed{12, 1, 2, 3, 5, 7, 9, 9, -1};
    std::string text = frameText(mixed, 1);
    EXPECT_EQ(text, "12,1-3,5-9:2,9,-1");
    EXPECT_EQ(FrameList::parse("12,1-3,5-9:2,-1").frames(1), (Frames{12, 1, 2, 3, 5, 7, 9, -1}));
}

} // namespace
} // namespace velm::host
