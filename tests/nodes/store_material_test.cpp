// Store Material: it passes its inputs through, saves its name and number, and registers itself.
#include "module/servers.h"
#include "share/registry.h"
#include "tests/module/fake_controls.h"
#include "tests/module/hint_list.h"
#include "tests/module/recorded_state.h"
#include "tests/module/test_node.h"

#include <cstring>
#include <gtest/gtest.h>

namespace velm::plugin {
namespace {

using Lines = std::vector<std::string>;

constexpr unsigned int kName = 0x8001;

class Store : public testing::Test {
  protected:
    FakeHost host;
    FakeControls controls;

    Store() { *getShareInst() = {}; }
    ~Store() override { *getShareInst() = {}; }

    struct Node : TestNode {
        Node(FakeHost &fakeHost, const std::string &name)
            : TestNode(fakeHost, activatedWith<FakeControls::lookup, StoreMaterial_Activate>,
                       activatedWith<FakeControls::lookup, StoreMaterial_Interface>, name) {}
        StoreMaterial &self() { return *static_cast<StoreMaterial *>(instance); }
    };
    // Loads a number and a name.
    static void load(Node &node, int id, const std::string &name) {
        RecordedState state;
        state.integer(id).text(name);
        EXPECT_EQ(node.ops.load(node.instance, state.load()), nullptr);
    }
    static Lines saved(Node &node) {
        RecordedState state;
        EXPECT_EQ(node.ops.save(node.instance, state.save()), nullptr);
        return state.lines();
    }
};

// ---- Life ----

TEST_F(Store, IsMadeInOrderAndListed) {
    Node node(host, "Store Material (1)");
    HostNode &second = host.addNode("Wood");
    const char *error = nullptr;
    void *instance = node.ops.create(node.ops.priv, &second, &error);
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(host.takeLog(), (Lines{"setColour 164 50 10", "nodeName", "createInput Color 1", "createInput Scalar 2",
                                     "createInput Vector 3", "createInput Integer 4", "createOutput Color 1",
                                     "createOutput Scalar 2", "createOutput Vector 3", "createOutput Integer 4"}));
    EXPECT_EQ(node.self().id, 1);
    EXPECT_STREQ(node.self().name, "Store Material (1)");
    const auto *made = static_cast<StoreMaterial *>(instance);
    EXPECT_EQ(made->id, 2);
    EXPECT_STREQ(made->name, "Wood");
    EXPECT_EQ(getStoreNodeCount(), 3);
    node.ops.destroy(instance);
    EXPECT_EQ(host.takeLog(), Lines{});
    EXPECT_EQ(getStoreNodeCount(), 2);
    EXPECT_EQ(getStoreNodeByID(2), nullptr);
}

TEST_F(Store, KeepsALongNodeNameWithinItsField) {
    Node node(host, std::string(400, 'n'));
    EXPECT_EQ(std::string(node.self().name), std::string(259, 'n'));
}

TEST_F(Store, RenderingAndFramesSetNothingOff) {
    Node node(host, "node");
    EXPECT_EQ(node.render.init(node.instance, kInitRender), nullptr);
    EXPECT_EQ(node.render.newTime(node.instance, 3, 0.1), nullptr);
    node.render.cleanup(node.instance);
    EXPECT_EQ(host.takeLog(), Lines{});
}

TEST_F(Store, ACopyTakesTheNameKeepsItsNumberAndIsNotListed) {
    Node original(host, "original"), copy(host, "copy");
    EXPECT_EQ(copy.ops.copy(copy.instance, original.instance), nullptr);
    EXPECT_STREQ(copy.self().name, "original");
    EXPECT_EQ(copy.self().id, 2);
    EXPECT_EQ(getStoreNodeIndex(&copy.self()), -1);
    EXPECT_EQ(getStoreNodeIndex(&original.self()), 0);
    EXPECT_EQ(getStoreNodeCount(), 2);
    EXPECT_EQ(host.takeLog(), Lines{});
}

// ---- Files ----

TEST_F(Store, SavesItsNumberAndItsName) {
    Node node(host, "Wood");
    EXPECT_EQ(saved(node), (Lines{"I2 1", "text Wood"}));
    node.self().id = 40000; // 16 bits are saved
    EXPECT_EQ(saved(node), (Lines{"I2 -25536", "text Wood"}));
}

TEST_F(Store, LoadsANumberThatTheCounterDoesNotHeed) {
    Node node(host, "Wood"), other(host, "other");
    GetMaterial waiting = {};
    waiting.storeID = 30;
    addGetNodeForced(&waiting);
    load(node, 30, "Oak");
    EXPECT_EQ(node.self().id, 30);
    EXPECT_STREQ(node.self().name, "Oak");
    EXPECT_EQ(waiting.slot, 0) << "gets have loaded their own slots";
    EXPECT_EQ(getShareInst()->lastID, 2);
    EXPECT_EQ(getStoreNodeByID(30), &node.self());
    EXPECT_EQ(getStoreNodeIndex(&node.self()), 0) << "listed as before";
    Node next(host, "next");
    EXPECT_EQ(next.self().id, 3);
    load(node, -25536, "Oak");
    EXPECT_EQ(node.self().id, -25536) << "an id above 32767, as it was saved";
}

TEST_F(Store, LoadingListsACopyAgain) {
    Node original(host, "original"), copy(host, "copy");
    copy.ops.copy(copy.instance, original.instance);
    GetMaterial waiting = {};
    waiting.storeID = 30;
    addGetNodeForced(&waiting);
    load(copy, 30, "Oak");
    EXPECT_EQ(getStoreNodeIndex(&copy.self()), 1);
    EXPECT_EQ(getShareInst()->lastID, 30);
    EXPECT_EQ(waiting.slot, 2);
}

TEST_F(Store, CutsALongNameOnlyWhenItIsReadBack) {
    Node node(host, "node");
    controls.texts[kName] = std::string(258, 'x');
    node.panel()->set(node.instance, kName, nullptr);
    EXPECT_EQ(saved(node)[1], "text " + std::string(258, 'x'));
    load(node, 1, std::string(258, 'y'));
    EXPECT_EQ(std::string(node.self().name), std::string(255, 'y'));
}

// ---- The panel ----

TEST_F(Store, ShowsItsName) {
    Node node(host, "Wood");
    HostPanel *panel = node.panel();
    EXPECT_STREQ(panel->values[0].label, "Name");
    EXPECT_STREQ(panel->values[0].type, "string");
    EXPECT_EQ(panel->values[0].id, kName);
    EXPECT_EQ(panel->values[1].id, 0u);
    const auto added = hintsWith(kHintAddControl, panel->hints);
    ASSERT_EQ(added.size(), 1u);
    EXPECT_STREQ(added[0].arguments[1].text, "string");
    EXPECT_EQ(panel->get(node.instance, kName), node.self().name);
    for (const unsigned int id : {0u, 0x8000u, 0x8002u}) EXPECT_EQ(panel->get(node.instance, id), nullptr);
    for (const char *input : {"Color", "Scalar", "Vector", "Integer"}) node.connect(input, 0);
    EXPECT_EQ(panel->get(node.instance, kName), node.self().name) << "no connection replaces it";
}

TEST_F(Store, TakesItsNameFromTheControlItself) {
    Node node(host, "Wood");
    HostPanel *panel = node.panel();
    host.takeLog();
    controls.texts[kName] = "Oak";
    char handed[] = "Elm";
    EXPECT_EQ(panel->set(node.instance, kName, handed), 1);
    EXPECT_EQ(host.takeLog(), Lines{"getControl 8001"});
    EXPECT_STREQ(node.self().name, "Oak");
    EXPECT_STREQ(getStoreNodeName(nullptr, 1), "Oak") << "and the popup of the gets shows it at once";
    controls.texts[kName] = std::string(1000, 'z');
    EXPECT_EQ(panel->set(node.instance, kName, nullptr), 1);
    EXPECT_EQ(std::string(node.self().name), std::string(kStoreNameSize - 1, 'z')) << "within its field";
    controls.texts.clear();
    EXPECT_EQ(panel->set(node.instance, kName, handed), 1);
    EXPECT_EQ(node.self().name[0], 'z') << "a control without a text changes nothing";
    for (const unsigned int id : {0u, 0x8000u, 0x8002u}) EXPECT_EQ(panel->set(node.instance, id, handed), 0);
    EXPECT_EQ(node.self().name[0], 'z');
}

TEST_F(Store, TellsOfChanges) {
    Node node(host, "Wood");
    HostPanel *panel = node.panel();
    FakeControls::notify(panel, kName, kEventChanging);
    EXPECT_EQ(host.takeLog(), (Lines{"getData 0", "updatePreview Wood"}));
    FakeControls::notify(panel, kName, kEventSet);
    EXPECT_EQ(host.takeLog(), (Lines{"getData 0", "instanceUpdate NodeHandler"}));
    EXPECT_EQ(host.lastUpdated(), node.instance);
    for (const int event : {0, 3, 4, 5}) {
        FakeControls::notify(panel, kName, event);
        EXPECT_EQ(host.takeLog(), Lines{"getData 0"});
    }
}

// ---- Evaluation ----

TEST_F(Store, HandsItsInputsOn) {
    Node node(host, "node");
    ShadingSample sample = plainSample();
    node.connect("Color", 0.1, 0.2, 0.3);
    node.connect("Scalar", 4.5);
    node.connect("Vector", 6.0, 7.0, 8.0);
    node.connect("Integer", -9);
    host.logsEvaluation = true;
    const HostNodeValue colour = node.evaluate("Color", sample);
    EXPECT_EQ(host.takeLog(), (Lines{"evaluate Color", "setValue"}));
    const HostNodeValue vector = node.evaluate("Vector", sample);
    EXPECT_EQ(host.takeLog(), (Lines{"evaluate Vector", "setValue"}));
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(colour.numbers[i], (i + 1) / 10.0);
        EXPECT_EQ(vector.numbers[i], 6 + i);
    }
    EXPECT_EQ(node.scalar("Scalar", sample), 4.5);
    EXPECT_EQ(node.evaluate("Integer", sample).integer, -9);
}

TEST_F(Store, HandsItsIntegerOnForAnyOtherOutput) {
    Node node(host, "node");
    ShadingSample sample = plainSample();
    node.connect("Integer", -9);
    EXPECT_EQ(node.evaluateStranger(kConnectInteger, sample).integer, -9);
}

TEST_F(Store, HandsNothingOnAsNull) {
    Node node(host, "node");
    ShadingSample sample = plainSample();
    for (const char *output : {"Color", "Vector", "Scalar"}) {
        HostNodeValue value = {.asked = &node.output(output), .numbers = {5, 5, 5}};
        node.handler.evaluate(node.instance, &sample, value.asked, &value);
        EXPECT_EQ(value.timesSet, 1);
        const size_t components = output[0] == 'S' ? 1 : 3;
        for (size_t i = 0; i < components; ++i) EXPECT_EQ(value.numbers[i], 0) << output;
    }
    HostNodeValue value = {.asked = &node.output("Integer"), .integer = 5};
    node.handler.evaluate(node.instance, &sample, value.asked, &value);
    EXPECT_EQ(value.integer, 0);
}

} // namespace
} // namespace velm::plugin
