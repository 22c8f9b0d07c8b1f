// The fixture of the tests of Render Cam: a scene with three cameras and two maps, and a node in it.
#pragma once

#include "module/node.h"
#include "module/panel.h"
#include "tests/module/fake_scene.h"
#include "tests/module/hint_list.h"
#include "tests/module/test_node.h"

#include <array>
#include <gtest/gtest.h>
#include <optional>

namespace velm::plugin {

VELM_DECLARE_NODE(RenderCam);
VELM_DECLARE_PANEL(RenderCam);

using Lines = std::vector<std::string>;

inline constexpr uintptr_t kModellingWord = kSystemModelling | 0x123u; // the low bits do not name the application

// Activates the class with a scene, which is created for the call if the test has none.
inline int activateInScene(int version, HostLookup *, void *local, void *serverData) {
    return RenderCam_Activate(version, FakeScene::lookup, local, serverData);
}

using Colour = std::array<double, 3>;
inline constexpr Colour kGreen = {0, 1, 0}, kYellow = {1, 1, 0};
inline constexpr unsigned int kUvMap = 0x8001, kCamera = 0x8002;

class RenderCam : public testing::Test {
  protected:
    FakeHost host;
    FakeScene scene;
    FakeRays rays;
    ShadingSample sample = rays.sample();
    std::optional<TestNode> made;

    RenderCam() {
        for (const char *name : {"Front", "Side", "Top"})
            scene.cameras.push_back({.name = name, .filmWidth = 0.036, .filmHeight = 0.024});
        for (HostItem &camera : scene.cameras)
            camera.timing.intervals[0] = {.count = 1, .offset = 0.5, .duration = 0.25, .stride = 99};
        scene.uvMaps = {"Screen", "Wall"};
        scene.uvMapping = [](const std::string &map, double &u, double &v) {
            u = 0.75, v = 0.125;
            return map == "Screen";
        };
        for (size_t i = 0; i < 3; ++i) scene.cameraRay.filter[i][i] = 1;
    }

    TestNode &node() {
        if (!made) made.emplace(host, activateInScene, RenderCam_Interface);
        return *made;
    }
    // Sets up the node to show the scene through a camera at a time.
    TestNode &ready(int camera = 2, double time = 0.625) {
        node().set(kUvMap, 1);
        node().set(kCamera, camera);
        node().render.init(node().instance, kInitRender);
        node().render.newTime(node().instance, 12, time);
        host.takeLog();
        return node();
    }
    Colour seen() {
        const HostNodeValue value = node().evaluate("Color", sample);
        EXPECT_EQ(value.timesSet, 1);
        return {value.numbers[0], value.numbers[1], value.numbers[2]};
    }
    // The popup functions of a control on the panel.
    int count(unsigned int control) { return popup(control).arguments[1].popupCount(node().instance); }
    std::string name(unsigned int control, int index) {
        return popup(control).arguments[2].popupName(node().instance, index);
    }
    Hint popup(unsigned int control) {
        for (const Hint &hint : hintsWith(kHintPopupFunctions, node().panel()->hints))
            if (hint.arguments[0].word == control) return hint;
        ADD_FAILURE() << "there is no popup " << control;
        return {};
    }
};

} // namespace velm::plugin
