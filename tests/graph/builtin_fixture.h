// A network for tests of the host's own nodes, and observers that count.
#pragma once

#include "host/graph/network.h"
#include "host/panel/settings.h"
#include "host/services/instance_update.h"
#include "host/services/services.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace velm::host::test {

// Count notifications for as long as they live.
struct RedrawCount final : PanelObserver {
    explicit RedrawCount(HostPanel &panel) : watching(panel.observers(), *this) {}
    void redraw(HostPanel &) override { ++count; }
    int count = 0;
    const Observation<PanelObserver> watching;
};
struct UpdateCount final : InstanceObserver {
    UpdateCount() : watching(instanceObservers(), *this) {}
    void instanceUpdated(const std::string &, void *) override { ++count; }
    int count = 0;
    const Observation<InstanceObserver> watching;
};

using Settings = std::vector<std::pair<const char *, SettingValue>>;

class BuiltinTest : public ::testing::Test {
  protected:
    BuiltinTest() : network("Net", "Net", nullptr, nullptr) {
        nodeEditorFuncs()->addRootInput(&network, kConnectColour, "Color", nullptr);
        nodeEditorFuncs()->addRootInput(&network, kConnectScalar, "Scalar", nullptr);
    }
    HostNode &add(const std::string &server, const Settings &settings = {}) {
        HostNode &node = network.addNode(serverList().get(server));
        HostPanel *panel = panelOf(node);
        for (const auto &[label, value] : settings) applySetting(*panel, {label, value, {}});
        return node;
    }
    Double3 triple(HostNode &node, const char *output) {
        HostInput *input = network.root().findInput("Color");
        network.connect(node.name, output, "Net", "Color");
        Double3 value{-9, -9, -9};
        evaluateInput(input, &sample, value.data());
        return value;
    }
    double scalar(HostNode &node, const char *output, double held = -9) {
        network.connect(node.name, output, "Net", "Scalar");
        evaluateInput(network.root().findInput("Scalar"), &sample, &held);
        return held;
    }
    void place(double x, double y, double z) {
        const double position[3] = {x, y, z};
        std::copy_n(position, 3, sample.position);
        std::copy_n(position, 3, sample.objectPosition);
    }

    Network network;
    ShadingSample sample{};
};

inline void expectTriple(const Double3 &value, const Double3 &expected) {
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(value[i], expected[i], 1e-12) << i;
}

} // namespace velm::host::test
