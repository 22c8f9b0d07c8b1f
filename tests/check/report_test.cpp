// Reports as a table, as JSON and as JUnit's XML.
#include "host/check/report.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <sstream>

namespace velm::host::test {
namespace {

constexpr Check kFirst{"some.check", 2, CheckScope::node, "something is so", nullptr};
constexpr Check kSecond{"other.check", 3, CheckScope::module, "something else is so", nullptr};

CheckOptions options() {
    CheckOptions given;
    given.module = "a module.p";
    given.level = 4;
    given.seed = 77;
    return given;
}

std::vector<CheckResult> results() {
    return {{&kFirst, "One", Outcome::pass, "", "", 1, 0.5, 77},
            {&kFirst, "Two", Outcome::crash, "SIGSEGV: node \"Two\", <evaluate>", "trace", 2, 0.25, 77},
            {&kSecond, "", Outcome::warn, "it is odd", "", 3, 0.125, 77}};
}

TEST(CheckReport, TableShowsTheWorstResultAndHowToReproduceIt) {
    std::ostringstream out;
    printResults(results(), options(), out);
    const std::string text = out.str();
    for (const char *part :
         {" 2  CRASH  some.check                 something is so\n",
          "    CRASH  Two: SIGSEGV: node \"Two\", <evaluate>\n", "        trace\n",
          "again: velm check 'a module.p' --level 2 --seed 77 --filter 'some.check/Two' --reproduce\n",
          " 3  WARN   other.check", "    WARN  the module: it is odd\n",
          "PASS 1  WARN 1  CRASH 1  (level 4, seed 77)\n"})
        EXPECT_NE(text.find(part), std::string::npos) << part << "\nis not in\n" << text;
    EXPECT_EQ(text.find("One"), std::string::npos); // results that pass have no line
}

TEST(CheckReport, TableListsEqualResultsOnce) {
    const std::vector<CheckResult> same = {{&kFirst, "One", Outcome::skip, "nothing to try", "", 1, 0, 77},
                                           {&kFirst, "Two", Outcome::skip, "nothing to try", "", 1, 0, 77}};
    std::ostringstream out;
    printResults(same, options(), out);
    EXPECT_NE(out.str().find("    SKIP  One, Two: nothing to try\n\n"), std::string::npos) << out.str();
}

TEST(CheckReport, AFurtherTurnIsReportedWithItsOwnSeed) {
    std::vector<CheckResult> turns(2, results()[1]);
    turns[1].master = 4711;
    std::ostringstream out;
    printResults(turns, options(), out);
    for (const char *part : {"--seed 77 --filter", "--seed 4711 --filter"})
        EXPECT_NE(out.str().find(part), std::string::npos) << out.str();
    EXPECT_NE(resultsAsJunit(turns, options()).find("name=\"Two (seed 4711)\""), std::string::npos);
    turns[0].outcome = turns[1].outcome = Outcome::warn; // needs no seed and is printed once
    std::ostringstream warned;
    printResults(turns, options(), warned);
    EXPECT_NE(warned.str().find("    WARN  Two: SIGSEGV"), std::string::npos) << warned.str();
}

TEST(CheckReport, JsonHoldsEverything) {
    const auto json = nlohmann::json::parse(resultsAsJson(results(), options()));
    EXPECT_EQ(json["module"], "a module.p");
    EXPECT_EQ(json["seed"], 77);
    EXPECT_EQ(json["counts"]["CRASH"], 1);
    EXPECT_EQ(json["counts"]["HANG"], 0);
    ASSERT_EQ(json["results"].size(), 3u);
    EXPECT_EQ(json["results"][1]["name"], "some.check");
    EXPECT_EQ(json["results"][1]["server"], "Two");
    EXPECT_EQ(json["results"][1]["outcome"], "CRASH");
    EXPECT_EQ(json["results"][1]["printed"], "trace");
    EXPECT_EQ(json["results"][1]["seconds"], 0.25);
    EXPECT_EQ(json["results"][1]["seed"], 2);
    EXPECT_EQ(json["results"][1]["master"], 77);
}

TEST(CheckReport, JunitHasASuiteForEachCheck) {
    const std::string text = resultsAsJunit(results(), options());
    for (const char *part :
         {"<testsuite name=\"some.check\" tests=\"2\" failures=\"1\" skipped=\"0\">",
          "<testcase classname=\"some.check\" name=\"One\" time=\"0.500\"></testcase>",
          "<failure type=\"CRASH\" message=\"SIGSEGV: node &quot;Two&quot;, &lt;evaluate&gt;\">",
          "<testcase classname=\"other.check\" name=\"module\" time=\"0.125\"><system-out>it is odd"})
        EXPECT_NE(text.find(part), std::string::npos) << part << "\nis not in\n" << text;
}

TEST(CheckReport, OnlyFailuresCrashesAndHangsAreNotWell) {
    EXPECT_FALSE(allWell(results()));
    EXPECT_TRUE(allWell({results()[0], results()[2]}));
}

} // namespace
} // namespace velm::host::test
