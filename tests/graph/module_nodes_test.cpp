// The nodes of the real module in this host's networks: tests that hold for all of them, whatever they compute.
#include "host/base/thread_role.h"
#include "host/graph/surface.h"
#include "host/load/lookup.h"
#include "host/panel/settings.h"
#include "host/state/load_state.h"
#include "host/state/save_state.h"
#include "tests/graph/listed_module.h"
#include "tests/module/node_names.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iterator>
#include <sstream>
#include <thread>

namespace velm::host::test {
namespace {

class ModuleNodes : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { listModule(); }
    static std::vector<ServerClass *> classes() {
        std::vector<ServerClass *> found;
        for (const auto &one : serverList().all())
            if (one->origin() == "velm.p") found.push_back(one.get());
        return found;
    }
    static void addAll(Network &network) {
        for (ServerClass *server : classes()) network.addNode(*server);
    }
    static std::string saved(int mode, Surface &surface) {
        StateWriter writer(mode);
        surface.save(*writer.state());
        return writer.finish();
    }
    // Another entry or number for each setting.
    static void changeSettings(HostPanel &panel) {
        for (unsigned int id : panel.controls()) {
            const PanelItem &control = *panel.find(id);
            if (!control.type || control.type->storage == Storage::none) continue;
            const std::string label = panel.uniqueLabel(control);
            SettingValue value = 2.0;
            if (control.type->kind == ControlKind::flag) value = true;
            if (control.type->kind == ControlKind::text) value = std::string("Changed");
            if (control.type->components == 3) value = Double3{0.25, 0.5, 0.75};
            if (control.type->kind == ControlKind::choice || control.type->kind == ControlKind::transform) {
                const std::vector<std::string> entries = panel.entries(control);
                if (entries.empty()) continue;
                value = entries.front() == "(none)" ? entries.front() : entries.back();
            }
            applySetting(panel, {label, value, {}});
        }
    }
    static std::vector<std::string> allValues(HostNode &node) {
        std::vector<std::string> values;
        if (HostPanel *panel = panelOf(node))
            for (unsigned int id : panel->controls()) values.push_back(describeValue(*panel, *panel->find(id)));
        return values;
    }
    // Files hold floats: texts have to be equal, numbers nearly equal.
    static void expectAlike(const std::vector<std::string> &values, const std::vector<std::string> &expected) {
        ASSERT_EQ(values.size(), expected.size());
        for (std::size_t i = 0; i < values.size(); ++i) {
            std::istringstream left(values[i]), right(expected[i]);
            for (std::string a, b; (left >> a) && (right >> b);) {
                char *end = nullptr;
                const double number = std::strtod(b.c_str(), &end);
                if (*end == '\0') {
                    EXPECT_NEAR(std::strtod(a.c_str(), nullptr), number, 1e-6);
                } else
                    EXPECT_EQ(a, b);
            }
        }
    }
};

TEST_F(ModuleNodes, HaveWorkingPanels) {
    ASSERT_EQ(classes().size(), std::size(plugin::kNodeNames));
    Surface surface("Clay");
    addAll(surface.network());
    for (const auto &node : surface.network().nodes()) {
        SCOPED_TRACE(node->name);
        EXPECT_EQ(node->name, node->server->displayName());
        EXPECT_FALSE(node->server->menuGroup().empty());
        EXPECT_EQ(node->colour, (std::array<int, 3>{164, 50, 10}));
        HostPanel *panel = panelOf(*node);
        EXPECT_EQ(panel != nullptr, node->server->hasPanel());
        if (!panel) continue;
        panel->check();
        EXPECT_EQ(panelOf(*node), panel);
        EXPECT_FALSE(panel->controls().empty());
    }
}

TEST_F(ModuleNodes, SaveTheirSettingsInBothForms) {
    Surface surface("Clay");
    addAll(surface.network());
    for (const auto &node : surface.network().nodes())
        if (HostPanel *panel = panelOf(*node)) {
            SCOPED_TRACE(node->name);
            changeSettings(*panel);
        }
    for (int mode : {kStateBinary, kStateText}) {
        const std::string bytes = saved(mode, surface);
        Surface again("Clay");
        StateReader reader(mode, bytes, "surface");
        again.load(*reader.state());
        EXPECT_FALSE(reader.failed()) << reader.error();
        EXPECT_EQ(saved(mode, again), bytes);
        for (const auto &node : surface.network().nodes()) {
            SCOPED_TRACE(node->name);
            expectAlike(allValues(again.network().node(node->name)), allValues(*node));
        }
    }
}

class ThreadedModuleNodes : public ModuleNodes {};

TEST_F(ThreadedModuleNodes, EvaluateEveryOutputWithoutASceneOnSixteenThreads) {
    Surface surface("Clay");
    Network &network = surface.network();
    addAll(network);
    // Each output feeds an input of its own type, of a node that is there only for this.
    std::vector<HostInput *> asking;
    const std::size_t count = network.nodes().size();
    for (std::size_t i = 0; i < count; ++i)
        for (const auto &output : network.nodes()[i]->outputs) {
            HostNode &asker = network.addNode(serverList().get("Constant Scalar"));
            asking.push_back(createInput(asker, output->type, "Asking", nullptr));
            network.connect(*output, *asking.back());
        }
    surface.init(kInitRender);
    surface.newTime(1, 0);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kMaxThreads; ++thread)
        threads.emplace_back([&, thread] {
            const RoleScope role(ThreadRole::render);
            ShadingSample sample{};
            sample.threadIndex = thread;
            sample.shadingNormal[1] = sample.geometricNormal[1] = 1;
            sample.raySource[1] = 2;
            sample.rayLength = 2;
            sample.refractionIndex = 1;
            for (int round = 0; round < 3; ++round)
                for (HostInput *input : asking) {
                    HostMaterial room{};
                    evaluateInput(input, &sample, &room);
                }
        });
    for (std::thread &thread : threads) thread.join();
    surface.cleanup();
    EXPECT_FALSE(takeEvaluationTooDeep());
}

TEST_F(ModuleNodes, ConnectedInputsMakeTheirControlsUnavailable) {
    Surface surface("Clay");
    Network &network = surface.network();
    HostNode &source = network.addNode(serverList().get("Constant Scalar"), "Source");
    int greyed = 0;
    for (ServerClass *server : classes()) {
        HostNode &node = network.addNode(*server);
        HostPanel *panel = panelOf(node);
        if (!panel) continue;
        for (const auto &input : node.inputs) network.connect(*source.findOutput("Scalar"), *input);
        for (unsigned int id : panel->controls())
            if (!panel->isAvailable(*panel->find(id))) ++greyed;
    }
    EXPECT_GT(greyed, 0);
    network.destroyNode(source);
    for (const auto &node : network.nodes()) {
        HostPanel *panel = panelOf(*node);
        if (!panel) continue;
        for (unsigned int id : panel->controls()) {
            const PanelItem &control = *panel->find(id);
            if (control.type->storage == Storage::none) continue;
            EXPECT_TRUE(panel->isAvailable(control)) << node->name << ' ' << control.label;
        }
    }
}

} // namespace
} // namespace velm::host::test
