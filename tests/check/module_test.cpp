// The module of shading nodes stands every check.
#include "tests/check/check_test.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace velm::test {
namespace {

void expectWell(const Check &check) {
    for (const CheckResult &one : resultsOf(optionsFor(VELM_MODULE_FILE, check.name)))
        EXPECT_TRUE(allWell({one})) << one.fullName() << ": " << outcomeName(one.outcome) << ' ' << one.message << '\n'
                                    << one.printed;
}

class ModuleTest : public ::testing::TestWithParam<int> {};

TEST_P(ModuleTest, StandsTheLevel) {
    for (const Check &check : allChecks())
        if (check.level == GetParam()) expectWell(check);
}

// Under the thread sanitizer these are the ones that tell; a level 6 there is a level without a race.
TEST(ThreadedModule, StandsLevelSix) {
    for (const Check &check : allChecks())
        if (check.level == 6) expectWell(check);
}

INSTANTIATE_TEST_SUITE_P(Levels, ModuleTest, ::testing::Range(1, std::min(5, kHighestLevel) + 1));

} // namespace
} // namespace velm::test
