// Results that commands print as JSON.
#include "host/image/picture.h"

#include "tests/cli/command.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>

namespace velm::host {
namespace {

using nlohmann::json;

TEST(JsonResults, OfNodesHaveWhatTheTableHas) {
    const json nodes = json::parse(test::velm({"nodes", "--json"}).out);
    const auto counter =
        std::find_if(nodes.begin(), nodes.end(), [](const json &node) { return node["name"] == "Velm Counter"; });
    ASSERT_NE(counter, nodes.end());
    EXPECT_EQ((*counter)["shownAs"], "Counter");
    EXPECT_EQ((*counter)["menuGroup"], "Velm's Nodes/Math");
    EXPECT_EQ((*counter)["panel"], true);
    EXPECT_EQ((*counter)["inputs"].size(), 5U);
    EXPECT_EQ((*counter)["outputs"], json::parse(R"([{"name": "Out", "type": "scalar"}])"));
    const auto count = nodes.size();
    EXPECT_GT(json::parse(test::velm({"nodes", "--json", "--all"}).out).size(), count);
}

TEST(JsonResults, OfShowHaveTheSettingsWithTheirLimits) {
    const json node = json::parse(test::velm({"show", "Velm Ambient Occlusion", "--json"}).out);
    EXPECT_EQ(node["name"], "Velm Ambient Occlusion");
    const json &panel = node["panel"];
    const auto control = [&panel](const char *setting) -> json {
        const auto found = std::find_if(panel.begin(), panel.end(),
                                        [setting](const json &one) { return one.value("setting", "") == setting; });
        return found == panel.end() ? json() : *found;
    };
    EXPECT_EQ(control("Max")["default"], 5);
    EXPECT_EQ(control("Max")["unit"], "m");
    EXPECT_EQ(control("Max")["enabledBy"], json::parse(R"(["Ranged"])"));
    EXPECT_FALSE(control("Max")["help"].get<std::string>().empty());
    EXPECT_EQ(control("Cone Angle")["maximum"], 90);
    EXPECT_EQ(control("Mode")["entries"], json::parse(R"(["Random", "Polar"])"));
    EXPECT_EQ(control("Mode")["default"], "Random");
}

TEST(JsonResults, OfANodeWithoutAPanelHaveNull) {
    EXPECT_TRUE(json::parse(test::velm({"show", "Velm Render Info", "--json"}).out)["panel"].is_null());
}

// A picture of 2 x 1 pixels in one colour.
Picture plain(float level, int width = 2) {
    Picture picture(width, 1);
    for (int x = 0; x < width; ++x)
        for (int channel = 0; channel < 4; ++channel) picture.pixel(x, 0)[channel] = channel < 3 ? level : 1;
    return picture;
}

TEST(JsonResults, OfCompareHaveTheVerdictAndTheFigures) {
    const test::TemporaryDirectory directory;
    writePicture(plain(0.5F), directory / "a.exr");
    writePicture(plain(1), directory / "b.exr");
    writePicture(plain(1, 3), directory / "c.exr");
    writePicture(plain(std::numeric_limits<float>::quiet_NaN()), directory / "nan.exr");
    const auto compare = [&directory](const char *first, const char *second, int status) {
        const test::Outcome outcome = test::velm({"compare", directory / first, directory / second, "--json"}, false);
        EXPECT_EQ(outcome.status, status) << outcome.err;
        return json::parse(outcome.out);
    };
    EXPECT_EQ(compare("a.exr", "a.exr", kCompareSame)["verdict"], "the same");
    const json different = compare("a.exr", "b.exr", kCompareDifferent);
    EXPECT_EQ(different["verdict"], "different");
    EXPECT_EQ(different["differentPixels"], 2);
    EXPECT_EQ(different["worst"]["difference"], 0.5);
    const json otherSize = compare("a.exr", "c.exr", kCompareOtherSize);
    EXPECT_EQ(otherSize["verdict"], "other size");
    EXPECT_EQ(otherSize["second"]["width"], 3);
    const json notANumber = compare("a.exr", "nan.exr", kCompareDifferent);
    EXPECT_EQ(notANumber["worst"]["difference"], "Infinity");
    EXPECT_EQ(notANumber["worst"]["second"], "NaN");
}

} // namespace
} // namespace velm::host
