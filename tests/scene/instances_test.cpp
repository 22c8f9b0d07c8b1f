// Objects that are described as instances of others.
#include "host/scene/format/write_scene.h"
#include "tests/scene/compare.h"
#include "tests/scene/scene_text.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace velm::host::test {
namespace {

const char *const kForest = R"scene({
  "cameras": {"Main": {}},
  "nulls": {"Hill": {"position": [0, 12, 0]}},
  "objects": {
    "Tree": {"box": {}, "surface": "Bark", "parent": "Hill", "pivot": [0, 1, 0], "target": "Hill", "seenByRays": false,
             "position": {"keys": [{"time": 0, "value": [0, 0, 0]}, {"time": 1, "value": [1, 0, 0]}]},
             "dissolve": {"keys": [{"time": 0, "value": 0}, {"time": 1, "value": 1}]},
             "instances": [{"position": [3, 0, 1]},
                           {"rotation": [120, 0, 0], "scale": 0.5}]},
    "Tree (2)": {"sphere": {}, "surface": "Bark"}
  },
  "surfaces": {"Bark": {}}
})scene";

TEST(Instances, AreObjectsLikeTheirOwner) {
    const SceneDescription scene = read(kForest);
    ASSERT_EQ(scene.objects.size(), 4U);
    const ObjectDescription &tree = scene.objects[0], &first = scene.objects[1], &second = scene.objects[2];
    EXPECT_EQ(first.name, "Tree (3)") << "another object has the first name";
    EXPECT_EQ(second.name, "Tree (4)");
    EXPECT_EQ(first.position, (Double3{3, 0, 1}));
    EXPECT_EQ(first.scale, (Double3{1, 1, 1}));
    EXPECT_EQ(second.position, (Double3{0, 0, 0}));
    EXPECT_EQ(second.rotation, (Double3{120, 0, 0}));
    EXPECT_EQ(second.scale, (Double3{0.5, 0.5, 0.5}));
    for (const ObjectDescription *one : {&first, &second}) {
        EXPECT_EQ(one->shape, tree.shape);
        EXPECT_EQ(one->surfaces, tree.surfaces);
        EXPECT_EQ(one->parent, "Hill");
        EXPECT_EQ(one->pivot, (Double3{0, 1, 0}));
        EXPECT_FALSE(one->seenByRays);
        EXPECT_FALSE(one->hasTarget);
        EXPECT_EQ(one->targetItem, "");
        ASSERT_EQ(one->channels.size(), 1U) << "the keys of the position are the owner's";
        EXPECT_EQ(one->channels[0].channel, Channel::dissolve);
    }
    EXPECT_EQ(first.location.line, 8);
}

TEST(Instances, AreWrittenAsTheyWereRead) {
    const SceneDescription scene = read(kForest);
    const std::string written = writeScene(scene, "");
    EXPECT_EQ(withoutLocations(read(written)), withoutLocations(scene)) << written;
    const auto objects = nlohmann::json::parse(written)["objects"];
    EXPECT_EQ(objects.size(), 2U);
    EXPECT_EQ(objects["Tree"]["instances"].size(), 2U);
    EXPECT_EQ(objects["Tree"]["instances"][1]["scale"], 0.5);
}

TEST(Instances, ThatWereChangedAreWrittenAsObjects) {
    SceneDescription scene = read(kForest);
    scene.objects[2].dissolve = 0.25;
    scene.objects[2].channels.clear();
    const SceneDescription again = read(writeScene(scene, ""));
    ASSERT_EQ(again.objects.size(), 4U);
    EXPECT_EQ(again.objects[2].dissolve, 0.25);
    EXPECT_EQ(again.objects[1].position, (Double3{3, 0, 1}));
    EXPECT_TRUE(again.objects[0].instances.empty());
    scene = read(kForest);
    scene.objects.erase(scene.objects.begin() + 1);
    EXPECT_EQ(read(writeScene(scene, "")).objects.size(), 3U);
}

TEST(Instances, ErrorsTellWhatIsWrong) {
    const auto withInstances = [](const std::string &text) {
        return R"({"cameras": {"Main": {}}, "surfaces": {"Bark": {}},
"objects": {"Tree": {"box": {}, "surface": "Bark", "instances": )" +
               text + "}}}";
    };
    EXPECT_EQ(refusal(withInstances("3")), "scene.json:2: \"instances\" must be a list of objects; found 3");
    EXPECT_EQ(refusal(withInstances("[\n{\"scale\": 0}]")),
              "scene.json:3: \"scale\" must be a number or a list of three, none of them 0; found 0");
    EXPECT_EQ(refusal(withInstances("[{\"positions\": [0, 0, 0]}]")),
              "scene.json:2: an instance has no key \"positions\", did you mean \"position\"?");
}

} // namespace
} // namespace velm::host::test
