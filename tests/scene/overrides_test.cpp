#include "host/scene/overrides.h"

#include "host/base/error.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

namespace velm::host {
namespace {

using test::TemporaryDirectory;
using Path = std::vector<std::string>;

constexpr const char *kScene = R"({
    "cameras": {"Main": {"position": [0, 0, -5]}},
    "lights": {"Key light": {"kind": "distant", "position": [2, 4, -3]}},
    "objects": {"Ball": {"sphere": {"radius": 0.6}, "surface": "Clay"}},
    "surfaces": {"Clay": {}, "Old.Clay": {}}
})";

SceneDescription readWith(const std::vector<std::string> &texts) {
    const TemporaryDirectory directory;
    std::vector<SceneOverride> overrides;
    for (const std::string &text : texts) overrides.push_back(parseOverride(text));
    return readScene(directory.write("scene.json", kScene), {}, overrides);
}

TEST(Overrides, AreAPathAndAJsonValue) {
    struct Row {
        const char *text;
        Path path;
        JsonValue::Kind kind;
        const char *shown; // the value in messages
    };
    const Row rows[] = {
        {"render.samples=16", {"render", "samples"}, JsonValue::Kind::number, "16"},
        {"lights.Key light.shadows=false", {"lights", "Key light", "shadows"}, JsonValue::Kind::boolean, "false"},
        {"a.b=", {"a", "b"}, JsonValue::Kind::text, "\"\""},
        {"a.b=Polar", {"a", "b"}, JsonValue::Kind::text, "\"Polar\""},
        {"a.b=trueish", {"a", "b"}, JsonValue::Kind::text, "\"trueish\""},
        {"a.b=/x/y=z.png", {"a", "b"}, JsonValue::Kind::text, "\"/x/y=z.png\""},
        {"a.b=\"2\"", {"a", "b"}, JsonValue::Kind::text, "\"2\""},
        {"a.b=-2.5", {"a", "b"}, JsonValue::Kind::number, "-2.5"},
        {"a.b=[1,2,3]", {"a", "b"}, JsonValue::Kind::list, "a list of 3 values"},
        {R"(a."Old.Clay".b={"c":1})", {"a", "Old.Clay", "b"}, JsonValue::Kind::object, "an object"},
        {R"(a."5" nails"=1)", {"a", "5\" nails"}, JsonValue::Kind::number, "1"},
    };
    for (const Row &row : rows) {
        const SceneOverride override = parseOverride(row.text);
        EXPECT_EQ(override.path, row.path) << row.text;
        EXPECT_EQ(override.value.kind, row.kind) << row.text;
        EXPECT_EQ(override.value.shown(), row.shown) << row.text;
    }
}

TEST(Overrides, ReplaceAndAddValuesOfTheFile) {
    const SceneDescription scene =
        readWith({"render.width=320", "lights.Key light.intensity=2.5", "objects.Ball.sphere.radius=2",
                  "cameras.Main.position=[1,2,3]", R"(surfaces."Old.Clay".doubleSided=false)",
                  "backdrop={\"kind\":\"plain\"}", "backdrop.colour=[1,0,0]"});
    EXPECT_EQ(scene.render.width, 320);
    EXPECT_EQ(scene.lights[0].intensity, 2.5);
    EXPECT_EQ(std::get<SphereShape>(scene.objects[0].shape).radius, 2);
    EXPECT_EQ(scene.cameras[0].position, (Double3{1, 2, 3}));
    EXPECT_FALSE(scene.surfaces[1].doubleSided);
    EXPECT_EQ(scene.backdrop.colour, (Double3{1, 0, 0}));
}

TEST(Overrides, ErrorsAreThoseOfTheOverrideWithTheNearestName) {
    struct Row {
        const char *text, *message;
    };
    const Row rows[] = {
        {"render.wdith=4", "has no key \"wdith\", did you mean \"width\"?"},
        {"render.samples=0", "\"samples\" must be"},
        {"lights.Key.intensity=2", "\"lights\" has no \"Key\", there is only \"Key light\""},
        {"lights.Kye light.intensity=2", "\"lights\" has no \"Kye light\", did you mean \"Key light\"?"},
        {"surfcaes.Clay.doubleSided=true", "has no key \"surfcaes\", did you mean \"surfaces\"?"},
        {"surfaces.Clay.nodes.AO.server=Spot Info", "\"nodes\" has no \"AO\", there are none"},
        {"cameras.Main.position.x=2", "there is no \"x\" in a list of 3 values"},
    };
    for (const Row &row : rows) {
        try {
            readWith({"render.height=200", row.text});
            ADD_FAILURE() << row.text << " was accepted";
        } catch (const InputError &error) {
            EXPECT_NE(error.message().find(row.message), std::string::npos) << error.what();
            const std::vector<SceneOverride> overrides{parseOverride("render.height=200"), parseOverride(row.text)};
            EXPECT_EQ(overrideAt(overrides, error.location()), &overrides[1]) << error.what();
        }
    }
}

TEST(Overrides, LocationsInTheFileBelongToNoOverride) {
    const std::vector<SceneOverride> overrides{parseOverride("render.height=200")};
    EXPECT_EQ(overrideAt(overrides, {.file = "scene.json", .line = 1}), nullptr);
    EXPECT_EQ(overrideAt(overrides, {}), nullptr);
}

TEST(Overrides, OfSettingsAreRecognised) {
    struct Row {
        const char *text;
        bool isSetting;
        const char *surface;
        Path nodes;
        const char *label;
    };
    const Row rows[] = {
        {"surfaces.Clay.settings.Diffuse=1", true, "Clay", {}, "Diffuse"},
        {"surfaces.Clay.nodes.AO.settings.Max 2=1", true, "Clay", {"AO"}, "Max 2"},
        {"surfaces.Clay.nodes.Group.network.nodes.AO.settings.Max=1", true, "Clay", {"Group", "AO"}, "Max"},
        {"surfaces.Clay.doubleSided=true", false, "", {}, ""},
        {"surfaces.Clay.nodes.AO.server=Velm Sqrt", false, "", {}, ""},
        {"surfaces.Clay.nodes.settings.server=Velm Sqrt", false, "", {}, ""},
        {"lights.Key.settings.Max=1", false, "", {}, ""},
    };
    for (const Row &row : rows) {
        OverriddenSetting setting;
        EXPECT_EQ(isSetting(parseOverride(row.text), setting), row.isSetting) << row.text;
        EXPECT_EQ(setting.surface, row.surface) << row.text;
        EXPECT_EQ(setting.nodes, row.nodes) << row.text;
        EXPECT_EQ(setting.label, row.label) << row.text;
    }
}

} // namespace
} // namespace velm::host
