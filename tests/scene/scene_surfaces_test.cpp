// Networks built from descriptions, with the host's own nodes.
#include "host/scene/build/scene_surfaces.h"

#include "host/image/image.h"
#include "host/panel/settings.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

namespace velm::host {
namespace {

std::string sceneWith(const std::string &surface) {
    return "{\"cameras\": {\"Main\": {}},\n\"surfaces\": {\"Clay\": {" + surface + "}}}";
}

std::string refusalToBuild(const std::string &text) {
    try {
        const SceneSurfaces built(test::read(text), serverList());
    } catch (const InputError &error) {
        return error.what();
    }
    return {};
}

TEST(BuildScene, MakesNodesSetsThemAndConnectsThem) {
    SceneSurfaces built(test::read(sceneWith(R"(
        "settings": {"Color": [0.1, 0.2, 0.3], "Luminosity": 0.5, "Diffuse": 0.25},
        "nodes": {"Level": {"server": "Constant Scalar", "settings": {"Scalar": 0.75}},
                  "Product": {"server": "Multiply Scalar", "settings": {"A": 3, "B": 4}}},
        "connections": ["Level.Scalar -> Product.B", "Product.Out -> Clay.Luminosity"])")),
                        serverList());
    Surface *clay = built.surface("Clay");
    ASSERT_NE(clay, nullptr);
    EXPECT_EQ(built.surface("Steel"), nullptr);
    ASSERT_EQ(clay->network().nodes().size(), 2u);

    built.init(kInitRender);
    built.newTime(1, 0.5);
    ShadingSample sample{};
    sample.shadingNormal[1] = 1;
    const SurfaceValues values = clay->evaluate(&sample);
    EXPECT_DOUBLE_EQ(values.colour[2], 0.3);
    EXPECT_DOUBLE_EQ(values.diffuse, 0.25);
    EXPECT_DOUBLE_EQ(values.luminosity, 3 * 0.75);
    built.cleanup();
}

TEST(BuildScene, AppliesTheSettingOfAConnectedInput) {
    const SceneSurfaces built(test::read(sceneWith(R"(
        "nodes": {"Level": {"server": "Constant Scalar"}, "Sum": {"server": "Add Scalar", "settings": {"A": 3}}},
        "connections": ["Level.Scalar -> Sum.A"])")),
                              serverList());
    Network &network = built.surface("Clay")->network();
    HostNode &sum = network.node("Sum");
    network.disconnect(*sum.findInput("A"));
    EXPECT_EQ(std::get<double>(readSetting(*panelOf(sum), "A")), 3);
}

TEST(BuildScene, PutsImagesIntoTheListAndTakesThemOut) {
    const std::string text = R"({"cameras": {"Main": {}}, "images": {"Chart": {"file": "chart.hdr"}},
        "surfaces": {"Clay": {"nodes": {"Picture": {"server": "Image", "settings": {"Image": "Chart"}}}}}})";
    const test::TemporaryDirectory directory;
    directory.write("chart.hdr", test::redHdr("-Y 1 +X 1"));
    const SceneDescription scene = readSceneText(text, directory / "scene.json", {});
    {
        const SceneSurfaces built(scene, serverList());
        EXPECT_NE(ImageList::instance().find("Chart"), nullptr);
    }
    EXPECT_EQ(ImageList::instance().first(), nullptr);
}

TEST(BuildScene, ReportsABrokenImageWithItsLine) {
    const test::TemporaryDirectory directory;
    directory.write("chart.png", "no picture");
    const SceneDescription scene =
        readSceneText("{\"cameras\": {\"Main\": {}},\n\"images\": {\n\"Chart\": {\"file\": \"chart.png\"}}}",
                      directory / "scene.json", {});
    try {
        const SceneSurfaces built(scene, serverList());
        FAIL() << "not refused";
    } catch (const InputError &error) {
        EXPECT_TRUE(std::string(error.what()).starts_with((directory / "scene.json") + ":3: ")) << error.what();
    }
    EXPECT_EQ(ImageList::instance().first(), nullptr);
}

struct Wrong {
    const char *name, *surface, *start, *part;
};

class WrongSurface : public testing::TestWithParam<Wrong> {};

TEST_P(WrongSurface, IsRefusedAtItsPlace) {
    const std::string message = refusalToBuild(sceneWith(GetParam().surface));
    EXPECT_TRUE(message.starts_with(GetParam().start)) << message;
    EXPECT_NE(message.find(GetParam().part), std::string::npos) << message;
}

INSTANTIATE_TEST_SUITE_P(
    All, WrongSurface,
    testing::Values(
        Wrong{"Server", "\"nodes\": {\n\"C\": {\"server\": \"Chequer\"}}",
              "scene.json:3: ", "no node \"Chequer\", did you mean \"Checker\"?"},
        Wrong{"Label", "\"nodes\": {\"C\": {\"server\": \"Checker\", \"settings\": {\n\"Sise\": 1}}}",
              "scene.json:3: ", "did you mean \"Size\"?"},
        Wrong{"FirstOfTwo",
              "\"nodes\": {\"C\": {\"server\": \"Checker\", \"settings\": {\n\"Sise\": 1,\n\"Sizee\": 1}}}",
              "scene.json:3: ", "Sise"},
        Wrong{"Output",
              "\"nodes\": {\"C\": {\"server\": \"Checker\"}}, \"connections\": [\n\"C.Colour -> Clay.Color\"]",
              "scene.json:3: ", "did you mean \"Color\"?"},
        Wrong{"Input", "\"nodes\": {\"C\": {\"server\": \"Checker\"}}, \"connections\": [\n\"C.Color -> Clay.Colr\"]",
              "scene.json:3: ", "did you mean \"Color\"?"},
        Wrong{"Circle",
              "\"nodes\": {\"A\": {\"server\": \"Add Scalar\"}, \"B\": {\"server\": \"Add Scalar\"}}, "
              "\"connections\": [\"A.Out -> B.A\",\n\"B.Out -> A.A\"]",
              "scene.json:3: ", "A"},
        Wrong{"RootLabel", "\"settings\": {\n\"Colour\": [1, 1, 1]}", "scene.json:3: ", "did you mean \"Color\"?"},
        Wrong{"RootKind", "\"settings\": {\n\"Color\": \"red\"}", "scene.json:3: ", "Color"}),
    [](const auto &row) { return row.param.name; });

} // namespace
} // namespace velm::host
