// A network in which the host's own nodes are tried one at a time.
#pragma once

#include "host/graph/network.h"
#include "host/panel/settings.h"
#include "host/services/services.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace velm::host::test {

using Settings = std::vector<std::pair<const char *, SettingValue>>;

class BuiltinTest : public ::testing::Test {
  protected:
    BuiltinTest() : editor("Net", "Net", nullptr, nullptr) {
        nodeEditorFuncs()->addRootInput(&editor, kConnectColour, "Color", nullptr);
        nodeEditorFuncs()->addRootInput(&editor, kConnectScalar, "Scalar", nullptr);
    }
    HostNode &add(const std::string &server, const Settings &settings = {}) {
        HostNode &node = editor.addNode(serverList().get(server));
        HostPanel *panel = panelOf(node);
        for (const auto &[label, value] : settings) applySetting(*panel, {label, value, {}});
        return node;
    }
    Double3 triple(HostNode &node, const char *output) {
        HostInput *input = editor.root().findInput("Color");
        editor.connect(node.name, output, "Net", "Color");
        Double3 value{-9, -9, -9};
        evaluateInput(input, &sample, value.data());
        return value;
    }
    double scalar(HostNode &node, const char *output, double held = -9) {
        editor.connect(node.name, output, "Net", "Scalar");
        evaluateInput(editor.root().findInput("Scalar"), &sample, &held);
        return held;
    }
    void place(double x, double y, double z) {
        const double position[3] = {x, y, z};
        std::copy_n(position, 3, sample.position);
        std::copy_n(position, 3, sample.objectPosition);
    }

    Network editor;
    ShadingSample sample{};
};

inline void expectTriple(const Double3 &value, const Double3 &expected) {
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(value[i], expected[i], 1e-12) << i;
}

} // namespace velm::host::test
