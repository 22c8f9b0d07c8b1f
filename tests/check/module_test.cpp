// The module of shading nodes passes every check.
#include "tests/check/check_test.h"
#include "tests/module/node_names.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace velm::host::test {
namespace {

void expectWell(const Check &check) {
    for (const CheckResult &one : resultsOf(optionsFor(VELM_MODULE_FILE, check.name)))
        EXPECT_TRUE(allWell({one})) << one.fullName() << ": " << outcomeName(one.outcome) << ' ' << one.message << '\n'
                                    << one.printed;
}

class ModuleTest : public ::testing::TestWithParam<int> {};

TEST_P(ModuleTest, PassesTheLevel) {
    for (const Check &check : allChecks())
        if (check.level == GetParam()) expectWell(check);
}

// In these checks, networks inside nodes read and write through states that are not the host's own.
TEST(ModuleStates, MayFail) {
    for (const Check &check : dataChecks())
        if (const std::string name = check.name; name == "data.reads" || name == "data.writes") expectWell(check);
}

// These checks run in this process: the thread sanitizer, which ends the program at a race, cannot follow threads into
// a forked process.
class ThreadedModule : public ::testing::TestWithParam<const char *> {};

TEST_P(ThreadedModule, PassesTheCheck) {
    for (const std::string node : plugin::kNodeNames) {
        const CheckResult one = reproduceCheck(optionsFor(VELM_MODULE_FILE, GetParam() + ("/" + node)));
        EXPECT_EQ(one.outcome, Outcome::pass) << one.fullName() << ": " << one.message;
    }
}

constexpr const char *kSharedVariables = "threads.globals"; // which needs a process for each of its threads

std::vector<const char *> threadCheckNames() {
    std::vector<const char *> names;
    for (const Check &check : threadChecks())
        if (std::string(check.name) != kSharedVariables) names.push_back(check.name);
    return names;
}

// The one that all threads share, on purpose. Without optimisation, its plain stores are atomic instructions.
TEST(ModuleVariables, OnlyTheRandomStreamIsShared) {
    constexpr const char *kDrawing[] = {"Velm Ambient Occlusion", "Velm Gaussian Reflections",
                                        "Velm Gaussian Refractions", "Velm Random"};
    for (const CheckResult &one : resultsOf(optionsFor(VELM_MODULE_FILE, kSharedVariables))) {
        if (one.outcome == Outcome::skip) GTEST_SKIP() << one.message;
        const bool draws = std::ranges::find(kDrawing, one.server) != std::end(kDrawing);
        const bool isWarned = one.message.find("velm::plugin::mt") != std::string::npos;
        EXPECT_EQ(one.outcome, isWarned ? Outcome::warn : Outcome::pass) << one.fullName() << ": " << one.message;
        EXPECT_FALSE(isWarned && !draws) << one.fullName() << ": " << one.message;
#ifdef __OPTIMIZE__
        EXPECT_TRUE(isWarned || !draws) << one.fullName();
#endif
    }
}

INSTANTIATE_TEST_SUITE_P(Checks, ThreadedModule, ::testing::ValuesIn(threadCheckNames()), [](const auto &row) {
    std::string name = row.param;
    std::replace(name.begin(), name.end(), '.', '_');
    return name;
});

TEST(ThreadedRandomWalk, TheModulePassesIt) {
    const CheckResult one = reproduceCheck(optionsFor(VELM_MODULE_FILE, "together.all"));
    EXPECT_TRUE(allWell({one})) << one.message;
}

// The thread sanitizer reports the race itself, other builds the wrong results.
TEST(ThreadedMutantDeathTest, ARaceIsReported) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // a new process
    EXPECT_DEATH(reproduceCheck(optionsFor(mutantFile("counts_for_all"), "threads.one/Mutant Sum")),
                 "data race|other results than each alone");
}

INSTANTIATE_TEST_SUITE_P(Levels, ModuleTest, ::testing::Range(1, std::min(5, kHighestLevel) + 1));

} // namespace
} // namespace velm::host::test
