#include "tests/cli/command.h"

#include <gtest/gtest.h>

namespace velm::host {
namespace {

// The first line of a text with this start; empty if there is none.
std::string lineThatStarts(const std::string &text, const std::string &start) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with(start)) return line;
    return {};
}

TEST(Nodes, ListsTheModulesNodes) {
    const test::Outcome outcome = test::velm({"nodes"});
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_NE(lineThatStarts(outcome.out, "Name").find("Menu group"), std::string::npos) << outcome.out;
    const std::string counter = lineThatStarts(outcome.out, "Velm Counter");
    EXPECT_NE(counter.find("Velm's Nodes/Math"), std::string::npos) << outcome.out;
    EXPECT_TRUE(counter.ends_with("yes    5       Out")) << counter;
    EXPECT_EQ(lineThatStarts(outcome.out, "Constant Color"), "");
}

TEST(Nodes, ListsTheHostsOwnOnRequest) {
    const std::string out = test::velm({"nodes", "--all"}).out;
    EXPECT_NE(lineThatStarts(out, "Constant Color"), "");
    EXPECT_NE(lineThatStarts(out, "Velm Counter"), "");
}

TEST(Nodes, AMissingModuleIsAnInputError) {
    const test::Outcome outcome = test::velm({"nodes", "--module", "/nowhere/velm.p"}, false);
    EXPECT_EQ(outcome.status, kExitInput);
    EXPECT_EQ(outcome.err, "velm: cannot load the module /nowhere/velm.p: there is no such file\n");
}

TEST(Show, ListsInputsOutputsSettingsAndPanel) {
    const test::Outcome outcome = test::velm({"show", "Velm Counter"});
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    for (const char *part :
         {"Velm Counter\n", "  menu group  Velm's Nodes/Math\n", "\nInputs\n  Mode            integer\n",
          "\nOutputs\n  Out  scalar\n", "  Increase Value  1 ",
          "  Mode:\n    (Counter Equal To A)\n    Counter Greater Than A\n", "B: 0   enabled by Mode"})
        EXPECT_NE(outcome.out.find(part), std::string::npos) << part << "\nis not in\n" << outcome.out;
}

TEST(Show, PrintsHelpBelowWhatItDescribes) {
    const test::Outcome outcome = test::velm({"show", "Velm Sqrt"});
    EXPECT_EQ(outcome.out, "Velm Sqrt\n"
                           "  shown as    Sqrt\n"
                           "  menu group  Velm's Nodes/Math\n"
                           "  from        " VELM_MODULE_FILE "\n"
                           "\n"
                           "  Gives the square root of a number.\n"
                           "\n"
                           "Inputs\n"
                           "  In  scalar\n"
                           "      Number to take the root of; overrides the setting Input.\n"
                           "\n"
                           "Outputs\n"
                           "  Out  scalar\n"
                           "      The square root, which is never negative.\n"
                           "\n"
                           "Settings\n"
                           "  Name   Default  Kind               Limits\n"
                           "  Input  1        number, with keys\n"
                           "      Plain number to take the root of; a negative number, on purpose, counts as\n"
                           "      positive.\n"
                           "\n"
                           "Panel\n"
                           "  Input: 1\n");
}

TEST(Show, PrintsHelpForButtonsInThePanel) {
    const std::string out = test::velm({"show", "Velm Group Node"}).out;
    EXPECT_NE(out.find("  <Edit Nodes>\n      Opens a node editor"), std::string::npos) << out;
}

TEST(Show, LaysOutTabsStacksAndUnits) {
    const test::Outcome outcome = test::velm({"show", "Velm Ambient Occlusion"});
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    for (const char *part : {"tab \"Sample Settings\"", "tab \"Color Settings\"", "Mode: (Random) | Polar",
                             "shown while Mode is Random", "shown while Mode is Polar", "Cone Angle: 90 degrees",
                             "0 to 90, step 1", "Clamp 2", "Brightness 4", "Max: 5 m   enabled by Ranged"})
        EXPECT_NE(outcome.out.find(part), std::string::npos) << part << "\nis not in\n" << outcome.out;
}

TEST(Show, AcceptsDisplayNames) {
    EXPECT_EQ(test::velm({"show", "Counter"}).out, test::velm({"show", "Velm Counter"}).out);
}

TEST(Show, SuggestsTheNearestNode) {
    const test::Outcome outcome = test::velm({"show", "Velm Countre"});
    EXPECT_EQ(outcome.status, kExitInput);
    EXPECT_EQ(outcome.err, "velm: no node \"Velm Countre\", did you mean \"Velm Counter\"?\n");
}

TEST(Show, ShowsANodeWithoutAPanel) {
    const test::Outcome outcome = test::velm({"show", "Velm Render Info"});
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_NE(outcome.out.find("\nPanel\n  none\n"), std::string::npos) << outcome.out;
}

} // namespace
} // namespace velm::host
