// Get Material: it evaluates the inputs of the chosen store with its own sample. The tests of the registry cover its
// slots.
#include "module/servers.h"
#include "share/registry.h"
#include "tests/module/fake_controls.h"
#include "tests/module/hint_list.h"
#include "tests/module/recorded_state.h"
#include "tests/module/test_node.h"

#include <gtest/gtest.h>
#include <memory>

namespace velm::plugin {
namespace {

using Lines = std::vector<std::string>;

constexpr unsigned int kSlot = 0x8001;

struct StoreNode : TestNode {
    StoreNode(FakeHost &fakeHost, const std::string &name)
        : TestNode(fakeHost, activatedWith<FakeControls::lookup, StoreMaterial_Activate>,
                   activatedWith<FakeControls::lookup, StoreMaterial_Interface>, name) {}
    StoreMaterial &self() { return *static_cast<StoreMaterial *>(instance); }
};

struct GetNode : TestNode {
    explicit GetNode(FakeHost &fakeHost, const std::string &name = "get")
        : TestNode(fakeHost, activatedWith<FakeControls::lookup, GetMaterial_Activate>,
                   activatedWith<FakeControls::lookup, GetMaterial_Interface>, name) {}
    GetMaterial &self() { return *static_cast<GetMaterial *>(instance); }
    void choose(int slot) { FakeControls::choose(panel(), kSlot, slot); }
    void startRender() { EXPECT_EQ(render.init(instance, kInitRender), nullptr); }
};

class Get : public testing::Test {
  protected:
    FakeHost host;
    FakeControls controls;
    ShadingSample sample = plainSample();

    Get() { *getShareInst() = {}; }
    ~Get() override { *getShareInst() = {}; }

    Lines items(GetNode &node) {
        const Hint functions = hintsWith(kHintPopupFunctions, node.panel()->hints).at(0);
        Lines texts;
        const int count = functions.arguments[1].popupCount(node.instance);
        for (int i = 0; i < count; ++i) texts.emplace_back(functions.arguments[2].popupName(node.instance, i));
        return texts;
    }
};

// ---- Life ----

TEST_F(Get, IsMadeInOrderAndListed) {
    GetNode node(host);
    HostNode &second = host.addNode("second");
    const char *error = nullptr;
    void *instance = node.ops.create(node.ops.priv, &second, &error);
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(host.takeLog(), (Lines{"setColour 164 50 10", "createOutput Color 1", "createOutput Scalar 2",
                                     "createOutput Vector 3", "createOutput Integer 4"}));
    const auto *made = static_cast<GetMaterial *>(instance);
    EXPECT_EQ(made->slot, 0);
    EXPECT_EQ(made->storeID, 0);
    EXPECT_EQ(made->store, nullptr);
    EXPECT_EQ(getGetNodeIndex(made), 1);
    node.ops.destroy(instance);
    EXPECT_EQ(host.takeLog(), Lines{});
    EXPECT_EQ(getShareInst()->getNodeCount, 2) << "its place stays taken";
}

TEST_F(Get, ACopyHasTheChoiceAndIsNotListed) {
    StoreNode wood(host, "Wood");
    GetNode original(host), copy(host, "copy");
    original.choose(1);
    original.startRender();
    EXPECT_EQ(copy.ops.copy(copy.instance, original.instance), nullptr);
    EXPECT_EQ(copy.self().slot, 1);
    EXPECT_EQ(copy.self().storeID, 1);
    EXPECT_EQ(copy.self().store, nullptr) << "until it starts a render itself";
    EXPECT_EQ(getGetNodeIndex(&copy.self()), -1);
    EXPECT_EQ(getGetNodeIndex(&original.self()), 0);
}

// ---- Files ----

TEST_F(Get, SavesItsSlotAndItsStore) {
    GetNode node(host);
    node.self().slot = 3;
    node.self().storeID = 40000;
    RecordedState state;
    EXPECT_EQ(node.ops.save(node.instance, state.save()), nullptr);
    EXPECT_EQ(state.lines(), (Lines{"I2 3", "I2 -25536"}));
    GetNode other(host, "other");
    EXPECT_EQ(other.ops.load(other.instance, state.load()), nullptr);
    EXPECT_EQ(other.self().slot, 3);
    EXPECT_EQ(other.self().storeID, -25536);
    EXPECT_EQ(getGetNodeIndex(&other.self()), 1) << "as before";
}

TEST_F(Get, IsPointedAtAStoreThatComesAfterItsFile) {
    GetNode node(host);
    RecordedState state;
    state.integer(7).integer(2);
    node.ops.load(node.instance, state.load());
    StoreNode first(host, "first");
    EXPECT_EQ(node.self().slot, 7);
    StoreNode second(host, "second");
    EXPECT_EQ(node.self().slot, 2);
}

// ---- The panel ----

TEST_F(Get, OffersTheStores) {
    GetNode node(host);
    EXPECT_EQ(items(node), Lines{"(none)"});
    StoreNode wood(host, "Wood");
    auto steel = std::make_unique<StoreNode>(host, "Steel");
    EXPECT_EQ(items(node), (Lines{"(none)", "Wood", "Steel"}));
    StoreNode copy(host, "copy");
    copy.ops.copy(copy.instance, wood.instance);
    EXPECT_EQ(items(node), (Lines{"(none)", "Wood", "Steel"})) << "without the copy";
    steel.reset();
    EXPECT_EQ(items(node), (Lines{"(none)", "Wood"}));

    HostPanel *panel = node.panel();
    EXPECT_STREQ(panel->values[0].label, "Slot");
    EXPECT_STREQ(panel->values[0].type, "integer");
    EXPECT_EQ(panel->values[1].id, 0u);
    EXPECT_STREQ(hintsWith(kHintAddControl, panel->hints).at(0).arguments[1].text, "iPopChoice");
    EXPECT_EQ(panel->get(node.instance, kSlot), &node.self().slot);
    for (const unsigned int id : {0u, 0x8000u, 0x8002u}) EXPECT_EQ(panel->get(node.instance, id), nullptr);
}

TEST_F(Get, TakesTheStoreOfAnItem) {
    StoreNode wood(host, "Wood"), steel(host, "Steel");
    steel.self().id = 17; // as if loaded
    GetNode node(host);
    HostPanel *panel = node.panel();
    struct Case {
        int slot, storeID;
    };
    for (const Case &one : {Case{1, 1}, Case{2, 17}, Case{3, 0}, Case{2, 17}, Case{0, 0}, Case{1, 1}, Case{-4, 0}}) {
        int slot = one.slot;
        EXPECT_EQ(panel->set(node.instance, kSlot, &slot), 1);
        EXPECT_EQ(node.self().slot, one.slot);
        EXPECT_EQ(node.self().storeID, one.storeID) << one.slot;
        EXPECT_EQ(node.self().store, nullptr) << "a choice waits for the next render";
    }
    int slot = 1;
    for (const unsigned int id : {0u, 0x8000u, 0x8002u}) EXPECT_EQ(panel->set(node.instance, id, &slot), 0);
    EXPECT_EQ(node.self().slot, -4);
}

TEST_F(Get, TellsOfChanges) {
    GetNode node(host);
    HostPanel *panel = node.panel();
    FakeControls::notify(panel, kSlot, kEventChanging);
    EXPECT_EQ(host.takeLog(), (Lines{"getData 0", "updatePreview get"}));
    FakeControls::notify(panel, kSlot, kEventSet);
    EXPECT_EQ(host.takeLog(), (Lines{"getData 0", "instanceUpdate NodeHandler"}));
    EXPECT_EQ(host.lastUpdated(), node.instance);
    FakeControls::notify(panel, kSlot, kEventFocus);
    EXPECT_EQ(host.takeLog(), Lines{"getData 0"});
}

// ---- Evaluation ----

TEST_F(Get, EvaluatesTheInputsOfItsStoreWithItsOwnSample) {
    StoreNode wood(host, "Wood");
    const auto fromSample = [&](const char *input, size_t components) {
        wood.input(input).source = [components](ShadingSample *shaded, void *value) {
            for (size_t i = 0; i < components; ++i)
                static_cast<double *>(value)[i] = shaded->position[i] + static_cast<double>(i);
        };
    };
    fromSample("Color", 3), fromSample("Vector", 3), fromSample("Scalar", 1);
    wood.input("Integer").source = [](ShadingSample *shaded, void *value) {
        *static_cast<int *>(value) = static_cast<int>(shaded->position[0]);
    };
    GetNode first(host), second(host, "second"); // of two surfaces
    double place = 10;
    for (GetNode *node : {&first, &second}) {
        node->choose(1);
        node->startRender();
        for (double &component : sample.position) component = place;
        for (const char *output : {"Color", "Vector"}) {
            const HostNodeValue value = node->evaluate(output, sample);
            EXPECT_EQ(value.timesSet, 1);
            for (int i = 0; i < 3; ++i) EXPECT_EQ(value.numbers[i], place + i);
        }
        EXPECT_EQ(node->scalar("Scalar", sample), place);
        EXPECT_EQ(node->evaluate("Integer", sample).integer, static_cast<int>(place));
        place += 10;
    }
    host.takeLog();
    host.logsEvaluation = true;
    first.evaluate("Vector", sample);
    EXPECT_EQ(host.takeLog(), (Lines{"evaluate Vector", "setValue"})) << "the store's own outputs stay out of it";
}

TEST_F(Get, GivesTheIntegerForAnyOtherOutput) {
    StoreNode wood(host, "Wood");
    wood.connect("Integer", 4);
    GetNode node(host);
    node.choose(1);
    node.startRender();
    EXPECT_EQ(node.evaluateStranger(kConnectInteger, sample).integer, 4);
}

TEST_F(Get, GivesNullForWhatTheStoreHasNotConnected) {
    StoreNode wood(host, "Wood");
    GetNode node(host);
    node.choose(1);
    node.startRender();
    for (const char *output : {"Color", "Vector", "Scalar"}) {
        HostNodeValue value = {.asked = &node.output(output), .numbers = {5, 5, 5}};
        node.handler.evaluate(node.instance, &sample, value.asked, &value);
        EXPECT_EQ(value.timesSet, 1);
        EXPECT_EQ(value.numbers[0], 0) << output;
        EXPECT_EQ(value.numbers[2], output[0] == 'S' ? 5 : 0) << output;
    }
    HostNodeValue value = {.asked = &node.output("Integer"), .integer = 5};
    node.handler.evaluate(node.instance, &sample, value.asked, &value);
    EXPECT_EQ(value.integer, 0);
}

TEST_F(Get, SetsNothingWithoutAStore) {
    StoreNode wood(host, "Wood");
    wood.connect("Integer", 4);
    GetNode node(host);
    const auto timesSet = [&] {
        int times = 0;
        for (const char *output : {"Color", "Scalar", "Vector", "Integer"})
            times += node.evaluate(output, sample).timesSet;
        return times;
    };
    EXPECT_EQ(timesSet(), 0) << "before a render starts";
    node.choose(1);
    EXPECT_EQ(timesSet(), 0) << "a choice waits for the next render";
    node.startRender();
    EXPECT_EQ(timesSet(), 4);
    node.choose(0);
    EXPECT_EQ(timesSet(), 4) << "until the next render";
    node.startRender();
    EXPECT_EQ(timesSet(), 0);
    node.self().storeID = 99;
    node.startRender();
    EXPECT_EQ(timesSet(), 0) << "no store has this number";
}

TEST_F(Get, HoldsItsStoreThroughANewName) {
    StoreNode wood(host, "Wood");
    wood.connect("Integer", 4);
    GetNode node(host);
    node.choose(1);
    controls.texts[0x8001] = "Oak";
    wood.panel()->set(wood.instance, 0x8001, nullptr);
    node.startRender();
    EXPECT_EQ(items(node), (Lines{"(none)", "Oak"}));
    EXPECT_EQ(node.evaluate("Integer", sample).integer, 4);
}

TEST_F(Get, LosesAStoreWhoseNumberHasChanged) {
    StoreNode wood(host, "Wood"), steel(host, "Steel");
    wood.connect("Integer", 4);
    steel.connect("Integer", 5);
    GetNode node(host);
    node.choose(1);
    wood.self().id = 8; // as if loaded from another file
    node.startRender();
    EXPECT_EQ(node.evaluate("Integer", sample).timesSet, 0);
    steel.self().id = 1;
    node.startRender();
    EXPECT_EQ(node.evaluate("Integer", sample).integer, 5) << "whoever has the number now";
}

TEST_F(Get, LetsGoOfAStoreThatGoes) {
    auto wood = std::make_unique<StoreNode>(host, "Wood");
    auto node = std::make_unique<GetNode>(host);
    GetNode other(host, "other");
    node->choose(1);
    other.choose(1);
    node->startRender();
    other.startRender();
    node.reset(); // this one holds the store, and is destroyed first
    wood.reset();
    EXPECT_EQ(other.evaluate("Integer", sample).timesSet, 0);
    EXPECT_EQ(other.self().slot, 1) << "the choice stays";
    EXPECT_EQ(other.self().storeID, 1);
}

TEST_F(Get, LetsGoAlsoOfAStoreThatIsNotListed) {
    StoreNode first(host, "first");
    auto wood = std::make_unique<StoreNode>(host, "Wood");
    GetNode node(host);
    node.choose(2);
    node.startRender();
    wood->ops.copy(wood->instance, first.instance); // removes it from the list; it is still held
    EXPECT_EQ(node.evaluate("Integer", sample).timesSet, 1);
    wood.reset();
    EXPECT_EQ(node.evaluate("Integer", sample).timesSet, 0);
}

} // namespace
} // namespace velm::plugin
