// Describing an open network leaves it as it is.
#include "host/scene/build/describe_network.h"

#include "host/base/thread_role.h"
#include "host/load/module.h"
#include "host/scene/build/scene_surfaces.h"
#include "host/scene/convert/write_surfaces.h"
#include "host/state/save_state.h"
#include "tests/scene/compare.h"
#include "tests/scene/scene_text.h"

#include <gtest/gtest.h>

namespace velm::host::test {
namespace {

// Connected controls whose values are not the defaults, at three levels of networks and at the root, and numbers that a
// float cannot hold.
constexpr const char *kScene = R"({"cameras": {"Main": {}}, "surfaces": {"Clay": {
    "settings": {"Color": [0.1, 0.2, 0.3], "Diffuse": 0.7},
    "nodes": {
        "Level": {"server": "Constant Scalar", "settings": {"Scalar": 0.3333333333333333}},
        "Sum": {"server": "Add Scalar", "settings": {"A": 3, "B": 0.1}},
        "Box": {"server": "Velm Group Node", "network": {
            "nodes": {
                "Inner": {"server": "Velm Group Node", "network": {
                    "nodes": {"Paint": {"server": "Constant Color", "settings": {"Color": [0.1, 0.2, 0.3]}}},
                    "connections": ["Paint.Color -> Inner.Color"]}},
                "Mix": {"server": "Checker", "settings": {"Color 1": [1, 0.5, 0], "Size": 0.25}}
            },
            "connections": ["Inner.Color -> Mix.Color 1", "Mix.Color -> Box.Color"]}}
    },
    "connections": ["Level.Scalar -> Sum.A", "Sum.Out -> Clay.Diffuse", "Box.Color -> Clay.Color"]}}})";

class DescribeNetwork : public testing::Test {
  protected:
    // Once for all tests, and never unloaded.
    static void SetUpTestSuite() {
        static Module &module = *new Module(Module::open(VELM_MODULE_FILE));
        if (!serverList().find("Velm Group Node")) serverList().add(module.servers(), "velm.p");
    }
    static std::string saved(Surface &surface) {
        StateWriter writer(kStateBinary);
        surface.save(*writer.state());
        return writer.finish();
    }
    static SurfaceValues evaluated(const Surface &surface) {
        const RoleScope role(ThreadRole::render);
        ShadingSample sample{};
        sample.shadingNormal[1] = 1;
        return surface.evaluate(&sample);
    }
    // All connections of a network and of those inside its nodes, with the order of each output's consumers.
    static std::string connections(const Network &network) {
        std::string text;
        for (const auto &node : network.nodes()) {
            for (const auto &output : node->outputs)
                for (const HostInput *input : output->consumers)
                    text += node->name + '.' + output->name + " -> " + input->node->name + '.' + input->name + '\n';
            for (const auto &input : node->inputs)
                if (input->source) text += input->source->node->name + " <- " + node->name + '.' + input->name + '\n';
            for (const Network *inside : node->nestedNetworks) text += connections(*inside);
        }
        for (const auto &input : network.root().inputs)
            if (input->source) text += input->source->node->name + " <- ." + input->name + '\n';
        return text;
    }
};

TEST_F(DescribeNetwork, LeavesTheNetworkAsItIs) {
    const DefaultSettings defaults(serverList());
    SceneSurfaces built(read(kScene), serverList());
    Surface &clay = *built.surface("Clay");
    built.init(kInitRender);
    built.newTime(1, 0);
    const SurfaceValues before = evaluated(clay);
    const std::string bytes = saved(clay), connected = connections(clay.network());
    EXPECT_NE(connected.find("Inner <- Mix.Color 1"), std::string::npos) << connected;

    const SurfaceDescription first = describeSurface(clay, defaults), second = describeSurface(clay, defaults);

    EXPECT_EQ(first, second);
    EXPECT_EQ(connections(clay.network()), connected);
    EXPECT_EQ(saved(clay), bytes);
    built.newTime(1, 0); // reads the settings, which must not have changed
    const SurfaceValues after = evaluated(clay);
    EXPECT_EQ(after.colour[0], before.colour[0]);
    EXPECT_EQ(after.colour[2], before.colour[2]);
    EXPECT_EQ(after.diffuse, before.diffuse);
    EXPECT_NE(after.diffuse, static_cast<double>(static_cast<float>(after.diffuse))) << "no number was rounded";
    built.cleanup();
}

TEST_F(DescribeNetwork, HasTheSettingsBehindConnections) {
    const DefaultSettings defaults(serverList());
    const SceneSurfaces built(read(kScene), serverList());
    const SurfaceDescription described = describeSurface(*built.surface("Clay"), defaults);
    EXPECT_EQ(described.settings.size(), 2u) << "Color and Diffuse are connected";
    const NodeDescription &sum = described.network.nodes.at(1);
    ASSERT_EQ(sum.settings.size(), 2u);
    EXPECT_EQ(sum.settings[0].label, "A");
    EXPECT_EQ(sum.settings[0].value, SettingValue(3.0));
    EXPECT_EQ(described.network.connections.size(), 3u);
    const NetworkDescription &inside = described.network.nodes.at(2).network.at(0);
    EXPECT_EQ(inside.nodes.at(1).settings.at(0).value, SettingValue(Double3{1, 0.5, 0}));
    EXPECT_EQ(inside.connections.size(), 2u);
    EXPECT_EQ(inside.nodes.at(0).network.at(0).connections.size(), 1u);
}

TEST_F(DescribeNetwork, StaysConnectedWhenItCannotBeDescribed) {
    const DefaultSettings defaults(serverList());
    const SceneSurfaces built(read(kScene), serverList());
    Surface &clay = *built.surface("Clay");
    Network &network = clay.network();
    network.rename(network.root(), "Root"); // which frees the surface's name for a node
    const std::string connected = connections(network);
    HostNode &level = network.node("Level");
    network.rename(level, "Clay");
    EXPECT_THROW(describeSurface(clay, defaults), InputError);
    network.rename(level, "Level");
    EXPECT_EQ(connections(network), connected);
}

} // namespace
} // namespace velm::host::test
