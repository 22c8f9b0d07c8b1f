// Reading and writing items with keys, parents and targets.
#include "host/scene/format/item_tree.h"
#include "host/scene/format/write_scene.h"
#include "module/host.h"
#include "tests/scene/compare.h"
#include "tests/scene/scene_text.h"

#include <gtest/gtest.h>

#include <array>
#include <nlohmann/json.hpp>

namespace velm::host::test {
namespace {

// Two of the scene's four items move; the light shines at the camera, which looks at the light.
const char *const kScene = R"({
  "cameras": {"Main": {"position": [0, {"keys": [{"time": 0, "value": 1}, {"time": 2, "value": 3, "shape": "linear"}],
                                        "after": "linear"}, -4],
                       "target": "Lamp",
                       "fieldOfView": {"keys": [{"time": 0, "value": 40}, {"time": 1, "value": 20}]}}},
  "lights": {"Lamp": {"kind": "spot", "position": [0, 2, 0], "target": "Main", "cone": 25, "edge": 10,
                      "falloff": "linear", "range": 6, "parent": "Arm",
                      "colour": {"keys": [{"time": 0, "value": [1, 1, 1]}, {"time": 1, "value": [1, 0, 0]}]}},
             "Fill": {"kind": "area", "position": [0, 4, 0], "rotation": [0, 0, 0], "scale": 2}},
  "nulls": {"Arm": {"rotation": {"keys": [{"time": 0, "value": [0, 0, 0]}, {"time": 1, "value": [90, 0, 0]}]},
                    "pivot": [1, 0, 0]}},
  "objects": {"Ball": {"sphere": {}, "surface": "Clay", "target": [1, 2, 3],
                       "dissolve": {"keys": [{"time": 0, "value": 0}, {"time": 1, "value": 1, "shape": "stepped"}]},
                       "scale": {"keys": [{"time": 0, "value": [0, 0, 0]}, {"time": 1, "value": [1, 1, 2]}]}}},
  "surfaces": {"Clay": {}}
})";

TEST(Items, KeysAreKeptByComponent) {
    const SceneDescription scene = read(kScene);
    const CameraDescription &camera = scene.cameras[0];
    ASSERT_EQ(camera.channels.size(), 2U);
    EXPECT_EQ(camera.position, (Double3{0, 0, -4})) << "the constants";
    EXPECT_EQ(camera.channels[0].channel, Channel::position);
    EXPECT_EQ(camera.channels[0].component, 1);
    EXPECT_EQ(camera.channels[0].keys.after, kBehaveLinear);
    EXPECT_EQ(camera.channels[0].keys.keys[1].value[0], 3);
    EXPECT_EQ(camera.channels[1].channel, Channel::fieldOfView);
    const NullDescription &arm = scene.nulls[0];
    ASSERT_EQ(arm.channels.size(), 3U) << "three components of one list of keys";
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(arm.channels[i].component, static_cast<int>(i));
        EXPECT_EQ(arm.channels[i].keys.components, 1);
        EXPECT_EQ(arm.channels[i].keys.keys[1].value, (Double3{i == 0 ? 90.0 : 0.0, 0, 0}));
    }
    EXPECT_EQ(scene.objects[0].channels.size(), 4U);
}

TEST(Items, PointAtTargetsOrHaveRotations) {
    const SceneDescription scene = read(kScene);
    EXPECT_EQ(scene.cameras[0].targetItem, "Lamp");
    EXPECT_EQ(scene.lights[0].targetItem, "Main");
    EXPECT_EQ(scene.lights[0].parent, "Arm");
    EXPECT_FALSE(scene.lights[1].hasTarget) << "a rotation replaces the target that lights have by default";
    EXPECT_TRUE(scene.objects[0].hasTarget);
    EXPECT_EQ(scene.objects[0].target, (Double3{1, 2, 3}));
}

TEST(Items, AreWrittenAsTheyWere) {
    const SceneDescription scene = read(kScene);
    const std::string written = writeScene(scene, "");
    EXPECT_EQ(withoutLocations(read(written)), withoutLocations(scene)) << written;
    const auto json = nlohmann::json::parse(written);
    EXPECT_TRUE(json["nulls"]["Arm"]["rotation"].is_object()) << "keys that the components share";
    EXPECT_TRUE(json["cameras"]["Main"]["position"].is_array());
    EXPECT_TRUE(json["lights"]["Fill"].contains("rotation")) << "which says that there is no target";
}

// Keys of components that differ in more than their values are written for each component.
TEST(Items, KeysThatDifferAreWrittenByComponent) {
    for (const char *other : {R"("after": "repeat")", R"("before": "reset")"}) {
        const std::string keys = R"({"keys": [{"time": 0, "value": 1}]})";
        const std::string differing = R"({"keys": [{"time": 0, "value": 1}], )" + std::string(other) + "}";
        const SceneDescription scene =
            read(R"({"cameras": {"Main": {"position": [)" + keys + "," + keys + "," + differing + "]}}}");
        const std::string written = writeScene(scene, "");
        EXPECT_EQ(withoutLocations(read(written)), withoutLocations(scene)) << written;
        EXPECT_TRUE(nlohmann::json::parse(written)["cameras"]["Main"]["position"].is_array()) << written;
    }
}

TEST(Items, ComeAfterThoseThatTheyFollow) {
    const SceneDescription scene = read(R"({"cameras": {"Main": {"parent": "C", "target": "Lamp"}},
        "lights": {"Lamp": {"kind": "point", "position": [0, 1, 0], "parent": "A"}},
        "nulls": {"A": {"parent": "B"}, "B": {"parent": "C"}, "C": {}}})");
    const ItemTree tree(scene);
    const auto place = [&tree](const std::string &name) {
        const auto hasName = [&](std::size_t number) { return tree.entries()[number].item->name == name; };
        return std::ranges::find_if(tree.order(), hasName) - tree.order().begin();
    };
    EXPECT_EQ(tree.order().size(), 5U);
    EXPECT_LT(place("C"), place("B"));
    EXPECT_LT(place("B"), place("A"));
    EXPECT_LT(place("A"), place("Lamp"));
    EXPECT_LT(place("A"), place("Main")) << "which looks at an item that A moves";
}

TEST(Items, MayLookAtEachOther) { EXPECT_EQ(refusal(kScene), ""); }

TEST(Items, MayNotFollowTheirOwnChildren) {
    EXPECT_EQ(refusal(R"({"cameras": {"Main": {"target": "Lamp"}},
        "lights": {
        "Lamp": {"kind": "point", "position": [0, 1, 0], "parent": "Main"}}})"),
              "scene.json:1: the camera \"Main\" follows itself, by its parent or its target");
}

} // namespace
} // namespace velm::host::test
