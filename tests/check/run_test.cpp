// Selecting checks, running them, and reproducing one.
#include "tests/check/check_test.h"

#include "host/base/error.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

namespace velm::host::test {
namespace {

TEST(CheckList, HasUniqueNamesInOrderOfLevels) {
    std::set<std::string> names;
    int level = 1;
    for (const Check &check : allChecks()) {
        EXPECT_TRUE(names.insert(check.name).second) << check.name;
        EXPECT_GE(check.level, level) << check.name;
        level = check.level;
    }
    EXPECT_EQ(level, kHighestLevel);
}

TEST(CheckRun, LevelAndFilterSelect) {
    CheckOptions options = optionsFor(mutantFile("clean"), "identity.versions");
    const auto both = resultsOf(options);
    ASSERT_EQ(both.size(), 2u);
    EXPECT_EQ(both[0].fullName(), "identity.versions/Mutant Sum");
    EXPECT_EQ(both[1].fullName(), "identity.versions/Mutant Pass");
    options.filter = "Pass";
    options.level = 2;
    for (const CheckResult &one : resultsOf(options)) {
        EXPECT_EQ(one.server, "Mutant Pass");
        EXPECT_LE(one.check->level, 2);
    }
    options.level = 1;
    EXPECT_THROW(resultsOf(options), InputError);
}

TEST(CheckRun, SeedsDependOnNameAndMasterSeed) {
    CheckOptions options = optionsFor(mutantFile("clean"), "identity.versions/Mutant Sum");
    const auto first = resultsOf(options), again = resultsOf(options);
    options.seed = 2;
    const auto other = resultsOf(options);
    EXPECT_EQ(first[0].seed, again[0].seed);
    EXPECT_NE(first[0].seed, other[0].seed);
}

TEST(CheckRun, AnyTurnCanBeRepeatedAsTheFirst) {
    CheckOptions options = optionsFor(mutantFile("clean"), "together.one/Mutant Pass");
    const auto turns = resultsOf(options);
    ASSERT_EQ(turns.size(), static_cast<std::size_t>(turns[0].check->turns));
    ASSERT_GT(turns.size(), 1u);
    EXPECT_EQ(turns[0].master, options.seed);
    EXPECT_NE(turns[1].seed, turns[0].seed);
    options.seed = turns[1].master;
    EXPECT_EQ(resultsOf(options)[0].seed, turns[1].seed);
}

TEST(CheckRun, GoesOnForMinutes) {
    CheckOptions options = optionsFor(mutantFile("clean"), "together.one/Mutant Pass");
    options.minutes = 60;
    int turns = 0;
    const auto stopAfterFive = [&](const CheckResult &one) {
        EXPECT_EQ(one.fullName(), options.filter);
        if (++turns == 5) throw MachineError("enough");
    };
    EXPECT_THROW(runChecks(options, stopAfterFive), MachineError);
    options.filter = "identity.table";
    EXPECT_THROW(resultsOf(options), InputError);
}

TEST(CheckRun, AModuleThatCannotBeLoadedFailsOnce) {
    for (const std::string &file : {mutantFile("crashes_at_load"), std::string("/nowhere/at/all.p")}) {
        for (const char *filter : {"", "life.balance"}) {
            const auto results = resultsOf(optionsFor(file, filter));
            ASSERT_EQ(results.size(), 1u);
            EXPECT_EQ(results[0].fullName(), "file.loads");
            EXPECT_FALSE(allWell(results));
        }
    }
}

// The processes that a module leaves behind neither delay a check nor outlive it.
TEST(CheckRun, LeavesNoProcess) {
    const std::string list =
        (std::filesystem::temp_directory_path() / ("velm-left-" + std::to_string(getpid()))).string();
    setenv("VELM_MUTANT_PROCESSES", list.c_str(), 1);
    const auto start = std::chrono::steady_clock::now();
    CheckOptions options = optionsFor(mutantFile("leaves_processes"), "evaluate.finite");
    options.limit = 20;
    for (const CheckResult &one : resultsOf(options)) EXPECT_EQ(one.outcome, Outcome::pass) << one.message;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
    unsetenv("VELM_MUTANT_PROCESSES");
    std::ifstream left(list);
    int count = 0;
    for (pid_t process = 0; left >> process; ++count) EXPECT_EQ(kill(process, 0), -1) << process << " is left behind";
    EXPECT_GT(count, 0);
    std::filesystem::remove(list);
}

TEST(CheckRun, AFileThatIsNoModuleFails) {
    const auto results = resultsOf(optionsFor("/nowhere/at/all.p", "file.loads"));
    ASSERT_EQ(results.size(), 1u);
    EXPECT_EQ(results[0].outcome, Outcome::fail);
    EXPECT_NE(results[0].message.find("there is no such file"), std::string::npos) << results[0].message;
}

using CheckReproductionDeathTest = ::testing::Test;

TEST(CheckReproductionDeathTest, EndsWhereTheCheckFails) {
    EXPECT_DEATH(reproduceCheck(optionsFor(mutantFile("takes_any_version"), "identity.versions/Mutant Sum")),
                 "FAIL: it accepts version 0 of NodeHandler");
}

TEST(CheckReproduction, TakesOneCheckOnly) {
    EXPECT_THROW(reproduceCheck(optionsFor(mutantFile("clean"), "identity.versions")), InputError);
}

} // namespace
} // namespace velm::host::test
