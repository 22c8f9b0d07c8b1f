#include "host/render/geometry/unused_names.h"

#include <gtest/gtest.h>

namespace velm::host::test {
namespace {

TEST(UnusedNames, HaveTheLeastNumberThatIsNotUsed) {
    UnusedNames names(" (", ")");
    names.add("Red");
    names.add("Red (3)");
    EXPECT_EQ(names.take("Blue"), "Blue");
    EXPECT_EQ(names.take("Red"), "Red (2)");
    EXPECT_EQ(names.take("Red"), "Red (4)");
    EXPECT_EQ(names.take("Red (4)"), "Red (4) (2)");
    EXPECT_EQ(names.take("Blue"), "Blue (2)");
    EXPECT_EQ(names.take(""), "");
    EXPECT_EQ(names.take(""), " (2)");
}

} // namespace
} // namespace velm::host::test
