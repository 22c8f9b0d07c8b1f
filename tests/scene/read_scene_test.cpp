#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include "module/host.h"

#include <gtest/gtest.h>

namespace velm::host {
namespace {

using test::read;
using test::refusal;

constexpr const char *kSmallest = R"({"cameras": {"Main": {}}})";

TEST(ReadScene, TakesTheSmallestSceneWithDefaults) {
    const SceneDescription scene = read(kSmallest);
    EXPECT_EQ(scene.file, "scene.json");
    EXPECT_EQ(scene.name, "scene");
    ASSERT_EQ(scene.cameras.size(), 1u);
    EXPECT_EQ(scene.cameras[0].name, "Main");
    EXPECT_FALSE(scene.cameras[0].hasTarget);
    EXPECT_EQ(scene.render.width, RenderDescription{}.width);
    EXPECT_TRUE(scene.objects.empty());
}

TEST(ReadScene, PutsRenderSettingsInTheirPlaces) {
    const RenderDescription render = read(R"({
        "$schema": "../docs/scene.schema.json",
        "render": {"width": 320, "height": 200, "samples": 4, "recursionDepth": 3, "firstFrame": -2, "lastFrame": 8,
                   "frameStep": 5, "framesPerSecond": 25, "camera": "B", "ambientColour": [1, 0.5, 0],
                   "ambientIntensity": 0.25},
        "cameras": {"A": {}, "B": {}}
    })")
                                         .render;
    EXPECT_EQ(render.width, 320);
    EXPECT_EQ(render.height, 200);
    EXPECT_EQ(render.samples, 4);
    EXPECT_EQ(render.recursionDepth, 3);
    EXPECT_EQ(render.firstFrame, -2);
    EXPECT_EQ(render.lastFrame, 8);
    EXPECT_EQ(render.frameStep, 5);
    EXPECT_EQ(render.framesPerSecond, 25);
    EXPECT_EQ(render.camera, "B");
    EXPECT_EQ(render.ambientColour, (Double3{1, 0.5, 0}));
    EXPECT_EQ(render.ambientIntensity, 0.25);
}

TEST(ReadScene, ReadsCamerasAndLightsWithTheirLines) {
    const SceneDescription scene = read(R"({
        "cameras": {
            "Main": {"position": [1, 2, 3], "target": [0, 1, 0], "fieldOfView": 55},
            "Side": {"position": [4, 5, 6], "rotation": [10, 20, 30]}
        },
        "lights": {
            "Sun": {"kind": "distant", "position": [1, 5, -2], "colour": [1, 1, 0.9], "intensity": 2},
            "Lamp": {"kind": "point", "position": [0, 3, 0], "shadows": false},
            "Window": {"kind": "area", "position": [0, 3, 0], "target": [0, 0, 1], "width": 2, "height": 0.5, "samples": 9},
            "Tube": {"kind": "linear", "position": [0, 3, 0], "samples": 4, "colouredShadows": true,
                     "length": {"keys": [{"time": 0, "value": 1}, {"time": 1, "value": 2}]}}
        }
    })");
    ASSERT_EQ(scene.cameras.size(), 2u);
    EXPECT_TRUE(scene.cameras[0].hasTarget);
    EXPECT_EQ(scene.cameras[0].target, (Double3{0, 1, 0}));
    EXPECT_EQ(scene.cameras[0].fieldOfView, 55);
    EXPECT_EQ(scene.cameras[1].rotation, (Double3{10, 20, 30}));
    EXPECT_EQ(scene.cameras[1].location.text(), "scene.json:4");
    ASSERT_EQ(scene.lights.size(), 4u);
    EXPECT_EQ(scene.lights[0].kind, LightDescription::Kind::distant);
    EXPECT_EQ(scene.lights[0].intensity, 2);
    EXPECT_EQ(scene.lights[1].kind, LightDescription::Kind::point);
    EXPECT_FALSE(scene.lights[1].shadows);
    EXPECT_EQ(scene.lights[2].kind, LightDescription::Kind::area);
    EXPECT_EQ(scene.lights[2].height, 0.5);
    EXPECT_EQ(scene.lights[2].samples, 9);
    EXPECT_EQ(scene.lights[2].location.line, 9);
    EXPECT_EQ(scene.lights[3].kind, LightDescription::Kind::linear);
    EXPECT_EQ(scene.lights[3].samples, 4);
    EXPECT_TRUE(scene.lights[3].colouredShadows);
    ASSERT_EQ(scene.lights[3].channels.size(), 1u);
    EXPECT_EQ(scene.lights[3].channels[0].channel, Channel::length);
    EXPECT_EQ(scene.lights[3].channels[0].keys.keys.at(1).value[0], 2);
}

TEST(ReadScene, ReadsBackdrops) {
    const BackdropDescription gradient =
        read(R"({"cameras": {"Main": {}}, "backdrop": {"kind": "gradient", "zenith": [0, 0, 1], "skySqueeze": 3}})")
            .backdrop;
    EXPECT_EQ(gradient.kind, BackdropDescription::Kind::gradient);
    EXPECT_EQ(gradient.zenith, (Double3{0, 0, 1}));
    EXPECT_EQ(gradient.skySqueeze, 3);
    EXPECT_EQ(gradient.nadir, BackdropDescription{}.nadir);
    const BackdropDescription plain =
        read(R"({"cameras": {"Main": {}}, "backdrop": {"kind": "plain", "colour": [1, 2, 3]}})").backdrop;
    EXPECT_EQ(plain.kind, BackdropDescription::Kind::plain);
    EXPECT_EQ(plain.colour, (Double3{1, 2, 3}));
}

TEST(ReadScene, ReadsObjectsOfEveryShape) {
    const SceneDescription scene = read(R"({
        "cameras": {"Main": {}},
        "surfaces": {"Clay": {}, "Steel": {}},
        "objects": {
            "Floor": {"plane": {"width": 4, "depth": 5}, "surface": "Clay", "seenByRays": false},
            "Crate": {"box": {"size": [1, 2, 3], "inward": true}, "position": [1, 2, 3], "rotation": [4, 5, 6],
                      "scale": 2, "surface": "Steel", "materials": {"Lid": "Clay"}},
            "Ball": {"sphere": {"radius": 0.5, "segments": 12}, "scale": [1, 2, -1], "surface": "Steel",
                     "seenByCamera": false, "castsShadows": false}
        }
    })");
    ASSERT_EQ(scene.objects.size(), 3u);
    const ObjectDescription &floor = scene.objects[0], &crate = scene.objects[1], &ball = scene.objects[2];
    EXPECT_EQ(std::get<PlaneShape>(floor.shape).depth, 5);
    EXPECT_FALSE(floor.seenByRays);
    EXPECT_TRUE(floor.seenByCamera);
    EXPECT_EQ(std::get<BoxShape>(crate.shape).size, (Double3{1, 2, 3}));
    EXPECT_TRUE(std::get<BoxShape>(crate.shape).inward);
    EXPECT_EQ(crate.rotation, (Double3{4, 5, 6}));
    EXPECT_EQ(crate.scale, (Double3{2, 2, 2}));
    ASSERT_EQ(crate.surfaces.size(), 2u);
    EXPECT_EQ(crate.surfaces[0].material, "");
    EXPECT_EQ(crate.surfaces[0].surface, "Steel");
    EXPECT_EQ(crate.surfaces[1].material, "Lid");
    EXPECT_EQ(crate.surfaces[1].surface, "Clay");
    EXPECT_EQ(std::get<SphereShape>(ball.shape).segments, 12);
    EXPECT_EQ(ball.scale, (Double3{1, 2, -1}));
    EXPECT_FALSE(ball.castsShadows);
}

TEST(ReadScene, ReadsSurfacesWithNodesSettingsAndConnections) {
    const SceneDescription scene = read(R"({
        "cameras": {"Main": {}},
        "surfaces": {"Clay": {
            "smoothingAngle": 30, "doubleSided": false,
            "settings": {"Color": [0.5, 0.25, 0], "Diffuse": 0.8},
            "connections": ["AO.Color -> Clay.Color"],
            "nodes": {"AO": {"server": "Some Node", "settings": {
                "Mode": "Polar", "Samples": 12, "Clamp 2": true,
                "Max": {"keys": [{"time": 0, "value": 1},
                                 {"time": 2, "value": 3, "shape": "linear"}], "after": "repeat"},
                "Offset": {"keys": [{"time": 1, "value": [1, 2, 3], "shape": "bezier", "parameters": [1, 2, 3, 4]}],
                           "before": "offsetRepeat"}
            }}}
        }}
    })");
    const SurfaceDescription &clay = scene.surfaces.at(0);
    EXPECT_EQ(clay.smoothingAngle, 30);
    EXPECT_FALSE(clay.doubleSided);
    EXPECT_EQ(std::get<Double3>(clay.settings[0].value), (Double3{0.5, 0.25, 0}));
    EXPECT_EQ(std::get<double>(clay.settings[1].value), 0.8);
    const NodeDescription &node = clay.network.nodes.at(0);
    EXPECT_EQ(node.name, "AO");
    EXPECT_EQ(node.server, "Some Node");
    ASSERT_EQ(node.settings.size(), 5u);
    EXPECT_EQ(std::get<std::string>(node.settings[0].value), "Polar");
    EXPECT_EQ(std::get<double>(node.settings[1].value), 12);
    EXPECT_TRUE(std::get<bool>(node.settings[2].value));
    EXPECT_EQ(node.settings[2].location.line, 8);
    const auto &max = std::get<KeysDescription>(node.settings[3].value);
    EXPECT_EQ(max.components, 1);
    EXPECT_EQ(max.keys[1].time, 2);
    EXPECT_EQ(max.keys[1].value[0], 3);
    EXPECT_EQ(max.keys[1].shape, kShapeLinear);
    EXPECT_EQ(max.before, kBehaveConstant);
    EXPECT_EQ(max.after, kBehaveRepeat);
    const auto &offset = std::get<KeysDescription>(node.settings[4].value);
    EXPECT_EQ(offset.components, 3);
    EXPECT_EQ(offset.keys[0].value, (Double3{1, 2, 3}));
    EXPECT_EQ(offset.keys[0].parameters[3], 4);
    EXPECT_EQ(offset.before, kBehaveOffsetRepeat);
    ASSERT_EQ(clay.network.connections.size(), 1u);
    EXPECT_EQ(clay.network.connections[0].fromNode, "AO");
    EXPECT_EQ(clay.network.connections[0].location.line, 6);
}

TEST(ReadScene, ReadsNetworksInsideNodes) {
    const SceneDescription scene = read(R"({
        "cameras": {"Main": {}},
        "surfaces": {"Clay": {
            "nodes": {"Outer": {"server": "Group", "network": {
                "connections": ["Inner.Color -> Outer.Color"],
                "nodes": {
                    "Inner": {"server": "Group", "network": {
                        "nodes": {"Clay": {"server": "Some Node", "settings": {"Size": 2}}},
                        "connections": ["Clay.Color -> Inner.Color"]
                    }},
                    "Empty": {"server": "Group", "network": {}}
                }
            }}},
            "connections": ["Outer.Color -> Clay.Color"]
        }}
    })");
    const NodeDescription &outer = scene.surfaces.at(0).network.nodes.at(0);
    ASSERT_EQ(outer.network.size(), 1u);
    EXPECT_EQ(outer.network[0].location.line, 4);
    ASSERT_EQ(outer.network[0].connections.size(), 1u);
    EXPECT_EQ(outer.network[0].connections[0].toNode, "Outer");
    ASSERT_EQ(outer.network[0].nodes.size(), 2u);
    const NodeDescription &inner = outer.network[0].nodes[0];
    ASSERT_EQ(inner.network.size(), 1u);
    EXPECT_EQ(inner.network[0].connections.at(0).location.line, 9);
    EXPECT_EQ(inner.network[0].nodes.at(0).name, "Clay") << "the surface's name is free inside";
    EXPECT_EQ(std::get<double>(inner.network[0].nodes[0].settings.at(0).value), 2);
    EXPECT_TRUE(inner.network[0].nodes[0].network.empty());
    EXPECT_EQ(outer.network[0].nodes[1].network.size(), 1u);
}

TEST(ReadScene, FindsFilesBesideTheSceneAndThenAlongThePath) {
    const test::TemporaryDirectory directory;
    directory.write("scenes/near.obj", "");
    directory.write("data/near.obj", "");
    directory.write("data/far.obj", "");
    directory.write("scenes/a.json", R"({"cameras": {"Main": {}}, "surfaces": {"S": {}}, "objects": {
        "Near": {"mesh": {"file": "near.obj"}, "surface": "S"}, "Far": {"mesh": {"file": "far.obj"}, "surface": "S"}}})");
    const SceneDescription scene = readScene(directory / "scenes/a.json", {.directories = {directory / "data"}});
    EXPECT_EQ(std::get<MeshFile>(scene.objects[0].shape).file, directory / "scenes/near.obj");
    EXPECT_EQ(std::get<MeshFile>(scene.objects[1].shape).file, directory / "data/far.obj");
    EXPECT_EQ(scene.name, "a");
}

TEST(ReadScene, RefusesAMissingSceneFile) { EXPECT_THROW(readScene("/nowhere/scene.json", {}), InputError); }

TEST(SearchPath, TakesNamedDirectoriesThenTheEnvironment) {
    const SearchPath path = makeSearchPath({"one", "two"}, "three::four");
    ASSERT_GE(path.directories.size(), 4u);
    EXPECT_EQ(std::vector<std::string>(path.directories.begin(), path.directories.begin() + 4),
              (std::vector<std::string>{"one", "two", "three", "four"}));
    EXPECT_EQ(makeSearchPath({}, nullptr).directories.size() + 4, path.directories.size());
}

TEST(SearchPath, TakesAbsoluteNamesAsTheyAre) {
    const test::TemporaryDirectory directory;
    const std::string file = directory.write("a.obj", "");
    EXPECT_EQ(findFile(file, "/elsewhere", {}), file);
    EXPECT_EQ(findFile(directory / "b.obj", directory.path().string(), {}), std::nullopt);
    EXPECT_EQ(findFile(".", directory.path().string(), {}), std::nullopt) << "a directory is no file";
}

} // namespace
} // namespace velm::host
