// docs/first_node.md: the code on the page is that of the files beside this one, and does what the page says.
#include "host/graph/surface.h"
#include "host/image/file_pixels.h"
#include "host/load/module.h"
#include "host/panel/panel.h"
#include "tests/cli/program.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <map>
#include <set>

namespace velm::host::test {
namespace {

std::string textOf(const std::string &file) {
    std::ifstream stream(std::string(VELM_SOURCE_DIR "/") + file);
    EXPECT_TRUE(stream) << file;
    return {std::istreambuf_iterator<char>(stream), {}};
}

// The page's code blocks by what stands behind the language in their first lines: "```cpp nodes/state/smoothstep.cpp".
// Blocks of the same file are joined, with an empty line between them.
std::map<std::string, std::string> blocksOfThePage() {
    std::istringstream page(textOf("docs/first_node.md"));
    std::map<std::string, std::string> blocks;
    std::string *block = nullptr;
    bool inside = false;
    for (std::string line; std::getline(page, line);) {
        if (!line.starts_with("```")) {
            if (block) *block += line + "\n";
            continue;
        }
        inside = !inside;
        const std::size_t blank = line.find(' ');
        block = inside && blank != std::string::npos ? &blocks[line.substr(blank + 1)] : nullptr;
        if (block && !block->empty()) *block += "\n";
    }
    EXPECT_FALSE(inside) << "the page's last block does not end";
    return blocks;
}

TEST(FirstNodePage, QuotesTheFilesThatAreTested) {
    auto blocks = blocksOfThePage();
    blocks.erase("velm show \"Velm Smoothstep\""); // no file; see below
    const std::map<std::string, std::string> files = {
        {"nodes/state/smoothstep.cpp", "smoothstep.cpp"},
        {"module/servers.h", "server_row.txt"},
        {"out/edge.json", "edge.json"},
        {"tests/nodes/smoothstep_test.cpp", "smoothstep_test.cpp"},
        {"docs/nodes/velm_smoothstep.json", "velm_smoothstep.json"},
    };
    for (const auto &[name, file] : files) EXPECT_EQ(blocks[name], textOf("tests/first_node/" + file)) << name;
    EXPECT_EQ(blocks.size(), files.size()) << "the page has a block of a file that is not tested";
}

TEST(FirstNodePage, ShowsWhatVelmShowPrints) {
    const WorkDirectory directory;
    Outcome shown = runProgram(directory, {"--module", VELM_FIRST_NODE, "show", "Velm Smoothstep"});
    EXPECT_EQ(shown.status, 0) << shown.err;
    if (const std::size_t path = shown.out.find(VELM_FIRST_NODE); path != std::string::npos)
        shown.out.replace(path, std::string(VELM_FIRST_NODE).size(), "build/velm.p");
    EXPECT_EQ(shown.out, blocksOfThePage()["velm show \"Velm Smoothstep\""]);
}

TEST(FirstNodePage, ItsSceneShadesTheBallByTheNode) {
    const WorkDirectory directory;
    const std::string scene = directory.write("edge.json", textOf("tests/first_node/edge.json"));
    const Outcome outcome = runProgram(directory, {"--module", VELM_FIRST_NODE, "render", scene, "-o", "edge.exr",
                                                   "--strict", "--quiet", "--threads", "1"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const FilePixels picture = readFilePixels(directory / "edge.exr");
    ASSERT_EQ(picture.width, 128);
    EXPECT_EQ(*picture.pixel(64, 64), 1) << "the middle faces the camera";
    std::set<float> greys;
    for (int x = 0; x < 64; ++x) {
        const float grey = *picture.pixel(x, 64);
        EXPECT_LE(*picture.pixel(x > 0 ? x - 1 : 0, 64), grey) << "column " << x << ": it darkens towards the outline";
        if (grey > 0 && grey < 1) greys.insert(grey);
    }
    EXPECT_GT(greys.size(), 3U) << "and does so smoothly";
}

TEST(FirstNodePage, CheckingTheNodeFindsNothing) {
    const WorkDirectory directory;
    const Outcome outcome =
        runProgram(directory, {"check", VELM_FIRST_NODE, "--level", "3", "--filter", "Velm Smoothstep"});
    EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.err;
    EXPECT_NE(outcome.out.find("life.order"), std::string::npos) << outcome.out;
}

std::set<std::string> keysOf(const nlohmann::json &object) {
    std::set<std::string> keys;
    for (const auto &[key, value] : object.items()) keys.insert(key);
    return keys;
}

TEST(FirstNodePage, ItsHelpNamesEachSettingInputAndOutput) {
    const auto help = nlohmann::json::parse(textOf("tests/first_node/velm_smoothstep.json"));
    const Module module = Module::open(VELM_FIRST_NODE);
    serverList().add(module.servers(), VELM_FIRST_NODE);
    {
        Surface surface("Clay");
        HostNode &node = surface.network().addNode(serverList().get(help.at("server").get<std::string>()));
        std::set<std::string> inputs, outputs, settings;
        for (const auto &input : node.inputs) inputs.insert(input->name);
        for (const auto &output : node.outputs) outputs.insert(output->name);
        HostPanel &panel = *panelOf(node);
        for (const unsigned int id : panel.controls()) settings.insert(panel.uniqueLabel(*panel.find(id)));
        EXPECT_EQ(keysOf(help.at("inputs")), inputs);
        EXPECT_EQ(keysOf(help.at("outputs")), outputs);
        EXPECT_EQ(keysOf(help.at("settings")), settings);
    }
    serverList().remove(VELM_FIRST_NODE);
}

} // namespace
} // namespace velm::host::test
