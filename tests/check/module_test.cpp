// The module of shading nodes stands every check.
#include "tests/check/check_test.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace velm::test {
namespace {

class ModuleTest : public ::testing::TestWithParam<int> {};

TEST_P(ModuleTest, StandsTheLevel) {
    const int level = GetParam();
    for (const Check &check : allChecks()) {
        if (check.level != level) continue;
        for (const CheckResult &one : resultsOf(optionsFor(VELM_MODULE_FILE, check.name)))
            EXPECT_TRUE(allWell({one})) << one.fullName() << ": " << outcomeName(one.outcome) << ' ' << one.message
                                        << '\n'
                                        << one.printed;
    }
}

INSTANTIATE_TEST_SUITE_P(Levels, ModuleTest, ::testing::Range(1, std::min(5, kHighestLevel) + 1));

} // namespace
} // namespace velm::test
