// Reading help: the form of its files, and finding it.
#include "host/help/help.h"
#include "host/help/help_files.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace velm::host::test {
namespace {

TEST(Help, ReadsAFile) {
    const NodeHelp help = readHelp("velm_root_4.json", R"json({
        "server": "Velm Root (4)", "summary": "Gives the fourth root.",
        "settings": {"Input": "A number.", "Clamp 2": "Limits it."}, "outputs": {"Out": "The root."}})json");
    EXPECT_EQ(help.server, "Velm Root (4)");
    EXPECT_EQ(help.summary, "Gives the fourth root.");
    EXPECT_EQ(help.settings, (HelpSentences{{"Input", "A number."}, {"Clamp 2", "Limits it."}}));
    EXPECT_EQ(help.inputs, HelpSentences{});
    EXPECT_EQ(help.outputs, (HelpSentences{{"Out", "The root."}}));
}

struct WrongFile {
    const char *name, *text, *message;
};

class HelpErrors : public ::testing::TestWithParam<WrongFile> {};

TEST_P(HelpErrors, AreToldWithTheFile) {
    try {
        readHelp("a.json", GetParam().text);
        FAIL() << "the text was read";
    } catch (const std::runtime_error &error) {
        const std::string message = error.what();
        EXPECT_EQ(message.find("a.json: "), 0U) << message;
        EXPECT_NE(message.find(GetParam().message), std::string::npos) << message;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Files, HelpErrors,
    ::testing::Values(
        WrongFile{"NoJson", R"({"server": "A", "summary")", "parse error at line 1"},
        WrongFile{"NoObject", R"(["A"])", "the text is not an object"},
        WrongFile{"UnknownKey", R"({"server": "A", "summary": "B.", "outptus": {}})", "unknown key \"outptus\""},
        WrongFile{"NoServer", R"({"summary": "B."})", "\"server\" is missing"},
        WrongFile{"NoSummary", R"({"server": "A"})", "\"summary\" is missing"},
        WrongFile{"ServerIsANumber", R"({"server": 1, "summary": "B."})", "\"server\" is not a text"},
        WrongFile{"EmptySummary", R"({"server": "A", "summary": ""})", "\"summary\" is not a text"},
        WrongFile{"InputsAreAText", R"({"server": "A", "summary": "B.", "inputs": "C."})",
                  "\"inputs\" is not an object"},
        WrongFile{"SentenceIsAnObject", R"({"server": "A", "summary": "B.", "inputs": {"In": {}}})",
                  "\"inputs\": \"In\" is not a text"},
        WrongFile{"KeyTwice", R"({"server": "A", "summary": "B.", "summary": "C."})", "\"summary\" occurs twice"},
        WrongFile{"LabelTwice", R"({"server": "A", "summary": "B.", "inputs": {"In": "C.", "In": "D."}})",
                  "\"In\" occurs twice"},
        WrongFile{"NameOfAnotherFile", R"json({"server": "A (B)", "summary": "B."})json",
                  "help for \"A (B)\" belongs in a_b.json"}),
    [](const auto &row) { return std::string(row.param.name); });

TEST(Help, IsFoundByServerAndLabel) {
    const NodeHelp *help = findHelp("Velm Sqrt");
    ASSERT_TRUE(help);
    EXPECT_EQ(help->server, "Velm Sqrt");
    EXPECT_EQ(findSentence(help->outputs, "Out"), "The square root, which is never negative.");
    EXPECT_EQ(findSentence(help->outputs, "In"), "");
    EXPECT_EQ(findHelp("Sqrt"), nullptr);
}

TEST(Help, HoldsTheFilesAsTheyAre) {
    std::size_t count = 0;
    for (const auto &entry : std::filesystem::directory_iterator(VELM_SOURCE_DIR "/docs/nodes"))
        count += entry.path().extension() == ".json";
    EXPECT_EQ(helpFiles().size(), count);
    for (const EmbeddedText &file : helpFiles()) {
        std::ifstream stream(VELM_SOURCE_DIR "/docs/nodes/" + std::string(file.name), std::ios::binary);
        std::ostringstream text;
        text << stream.rdbuf();
        EXPECT_EQ(file.text, text.str()) << file.name;
    }
}

} // namespace
} // namespace velm::host::test
