#include "tests/golden/golden_settings.h"

#include "host/load/module.h"
#include "host/panel/settings.h"
#include "host/scene/read_scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <span>

namespace velm::host::test {

namespace {

// Files hold single precision, and panels show some numbers in other units.
void expectNear(double found, double wanted, const std::string &about) {
    EXPECT_NEAR(found, wanted, 1e-6 * std::max(1.0, std::fabs(wanted))) << about;
}

void expectNear(std::span<const double> found, std::span<const double> wanted, const std::string &about) {
    for (std::size_t i = 0; i < wanted.size(); ++i) expectNear(found[i], wanted[i], about);
}

void expectKeys(const KeysDescription &found, const KeysDescription &wanted, const std::string &about) {
    EXPECT_EQ(found.components, wanted.components) << about;
    EXPECT_EQ(found.before, wanted.before) << about;
    EXPECT_EQ(found.after, wanted.after) << about;
    ASSERT_EQ(found.keys.size(), wanted.keys.size()) << about;
    for (std::size_t i = 0; i < wanted.keys.size(); ++i) {
        const KeyDescription &key = found.keys[i], &as = wanted.keys[i];
        const std::string which = about + ", key " + std::to_string(i);
        EXPECT_EQ(key.shape, as.shape) << which;
        expectNear(key.time, as.time, which);
        expectNear(key.value, as.value, which);
        expectNear({{key.tension, key.continuity, key.bias}}, {{as.tension, as.continuity, as.bias}}, which);
        expectNear(key.parameters, as.parameters, which);
    }
}

void expectValue(const SettingValue &found, const SettingValue &wanted, const std::string &about) {
    ASSERT_EQ(found.index(), wanted.index()) << about;
    if (const auto *number = std::get_if<double>(&wanted))
        expectNear(std::get<double>(found), *number, about);
    else if (const auto *vec3 = std::get_if<Double3>(&wanted))
        expectNear(std::get<Double3>(found), *vec3, about);
    else if (const auto *keys = std::get_if<KeysDescription>(&wanted))
        expectKeys(std::get<KeysDescription>(found), *keys, about);
    else
        EXPECT_EQ(found, wanted) << about;
}

} // namespace

void loadModule() {
    // Never unloaded, so that the leak check can reach what the module keeps until it is unloaded.
    static const Module &module = *new Module(Module::open(VELM_MODULE_FILE));
    const auto isOurs = [](const auto &one) { return one->origin() == kOrigin; };
    if (std::ranges::none_of(serverList().all(), isOurs)) serverList().add(module.servers(), kOrigin);
    std::filesystem::current_path(kGolden);
}

SurfaceDescription describedIn(const std::string &file, const std::string &surface) {
    const SceneDescription scene = readSurfaces(file, {});
    const auto found = std::ranges::find(scene.surfaces, surface, &SurfaceDescription::name);
    if (found == scene.surfaces.end()) throw InputError(file + ": there is no surface \"" + surface + "\"");
    return *found;
}

void expectNode(HostNode &node, const NodeDescription &description) {
    const std::string about = "node \"" + description.name + "\"";
    ASSERT_FALSE(node.placeholder) << about;
    EXPECT_EQ(node.server->name(), description.server) << about;
    for (const SettingDescription &setting : description.settings) {
        ASSERT_NE(panelOf(node), nullptr) << about;
        expectValue(readSetting(*panelOf(node), setting.label), setting.value, about + ", \"" + setting.label + "\"");
    }
    if (description.network.empty()) return;
    ASSERT_EQ(node.nestedNetworks.size(), 1u) << about;
    expectNetwork(*node.nestedNetworks.front(), description.network.front(), description.name);
}

void expectNetwork(Network &editor, const NetworkDescription &description, const std::string &root) {
    const auto nodeCalled = [&](const std::string &name) {
        return name == root ? &editor.root() : editor.findNode(name);
    };
    EXPECT_EQ(editor.nodes().size(), description.nodes.size()) << "in \"" << root << '"';
    for (const NodeDescription &one : description.nodes) {
        HostNode *node = nodeCalled(one.name);
        ASSERT_NE(node, nullptr) << "there is no node \"" << one.name << "\" in \"" << root << '"';
        expectNode(*node, one);
    }
    for (const ConnectionDescription &one : description.connections) {
        const std::string about = one.fromNode + "." + one.output + " -> " + one.toNode + "." + one.input;
        const HostNode *from = nodeCalled(one.fromNode), *to = nodeCalled(one.toNode);
        ASSERT_TRUE(from && to) << about;
        const HostInput *input = to->findInput(one.input);
        ASSERT_NE(input, nullptr) << about;
        ASSERT_NE(input->source, nullptr) << about;
        EXPECT_EQ(input->source, from->findOutput(one.output)) << about;
    }
    const auto isConnected = [](const auto &input) { return input->source != nullptr; };
    auto connected = std::ranges::count_if(editor.root().inputs, isConnected);
    for (const auto &node : editor.nodes()) connected += std::ranges::count_if(node->inputs, isConnected);
    EXPECT_EQ(static_cast<std::size_t>(connected), description.connections.size()) << "in \"" << root << '"';
}

void expectNothingKept(const HostNode &node) {
    EXPECT_FALSE(node.savedCopy.has_value()) << "what the node \"" << node.name << "\" saves is not what it loaded";
    for (const Network *inside : node.nestedNetworks)
        for (const auto &one : inside->nodes()) expectNothingKept(*one);
}

} // namespace velm::host::test
