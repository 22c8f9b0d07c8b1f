// Creating and destroying instances: the order of all calls of the host, and the effects of failures.
#include "tests/module/allocation.h"
#include "tests/module/test_node.h"
#include "tests/module/test_nodes.h"

#include <array>
#include <gtest/gtest.h>

namespace velm::plugin {
namespace {

using Lines = std::vector<std::string>;

const Lines kCounterCreation = {
    "setPreviewType 2",
    "setColour 164 50 10",
    "channelGroup",
    "createGroup Counter in node",
    "createParm 16 -1",
    "setUpParm Start Value in Counter",
    "setParm Start Value 0",
    "createParm 16 -1",
    "setUpParm Increase Value in Counter",
    "setParm Increase Value 1",
    "createParm 16 -1",
    "setUpParm A in Counter",
    "setParm A 0",
    "createParm 16 -1",
    "setUpParm B in Counter",
    "setParm B 0",
    "createInput Mode 4",
    "createInput Start Value 2",
    "createInput Increase Value 2",
    "createInput A 2",
    "createInput B 2",
    "createOutput Out 2",
};

const Lines kEverythingCreation = {
    "setPreviewType 1",
    "setColour 1 2 3",
    "hook prepare",
    "channelGroup",
    "createGroup Everything's Channels in node",
    "createParm 16 -1",
    "setUpParm Level Channel in Everything's Channels",
    "setParm Level Channel 1.5",
    "createParm 17 -1",
    "setUpParm Place in Everything's Channels",
    "setParm Place 0 0 0",
    "createParm 81 -1",
    "setUpParm Tint in Everything's Channels",
    "setParm Tint 0.5 0.5 0.5",
    "createParm 32 -1",
    "setUpParm Last in Everything's Channels",
    "setParm Last 0.25",
    "createParm 1 -1",
    "setUpParm Normal in Everything's Channels",
    "setParm Normal 0 1 0",
    "createInput Kind 4",
    "createInput Number 4",
    "createInput In 2",
    "createInput Place 3",
    "createInput Tint 1",
    "createInput Function 5",
    "createInput Last 2",
    "createInput Normal 3",
    "createOutput Color 1",
    "createOutput Word 4",
    "hook created",
};

class Creation : public testing::Test {
  protected:
    FakeHost host;

    Creation() { hookAnswers = {}; }

    // Activates a class and returns its instance operations.
    HostInstanceOps activated(HostActivate *activate) {
        HostInstanceOps ops{};
        HostRenderOps render{};
        HostNodeHandler handler{};
        handler.instance = &ops;
        handler.render = &render;
        EXPECT_EQ(activate(1, FakeHost::lookup, &handler, nullptr), 0);
        host.takeLog();
        return ops;
    }
    static HostActivate *counter() { return activationOf(HOST_CLASS_NODE_HANDLER, "Velm Counter"); }
};

TEST_F(Creation, CallsTheHostInOrder) {
    struct Row {
        HostActivate *activate;
        Lines log;
    };
    const Row rows[] = {
        {.activate = counter(), .log = kCounterCreation},
        {.activate = Everything_Activate, .log = kEverythingCreation},
        {.activate = Bare_Activate, .log = {"setPreviewType 2", "setColour 4 5 6", "createOutput Pixel 4"}},
    };
    for (const Row &row : rows) {
        const HostInstanceOps ops = activated(row.activate);
        const char *error = nullptr;
        void *instance = ops.create(ops.priv, &host.addNode("node"), &error);
        EXPECT_NE(instance, nullptr);
        EXPECT_EQ(error, nullptr);
        EXPECT_EQ(host.takeLog(), row.log);
        ops.destroy(instance);
    }
}

TEST_F(Creation, GivesTheNodeItsColourAndItsPreviewType) {
    TestNode node(host, "Velm Counter");
    EXPECT_EQ(node.node.colour, (std::array{164, 50, 10}));
    EXPECT_EQ(node.node.previewType, 2);
}

TEST_F(Creation, LeavesThePreviewTypeAloneWhereTheUnitNamesNone) {
    const HostInstanceOps ops = activated(Blocks_Activate);
    const char *error = nullptr;
    HostNode &node = host.addNode("node");
    void *instance = ops.create(ops.priv, &node, &error);
    EXPECT_EQ(host.takeLog().front(), "setColour 4 5 6");
    EXPECT_EQ(node.previewType, -1);
    ops.destroy(instance);
}

TEST_F(Creation, KeepsHandlesWhereTheTablesSay) {
    TestNode node(host, Everything_Activate, Everything_Interface);
    const auto &self = *static_cast<Everything *>(node.instance);
    EXPECT_EQ(self.node, &node.node);
    EXPECT_EQ(self.panel, nullptr);
    ASSERT_TRUE(self.group);
    EXPECT_EQ(self.group->name, "Everything's Channels");
    EXPECT_EQ(self.group->parent, node.node.group);
    EXPECT_EQ(self.level.parm, &node.parm("Level Channel"));
    EXPECT_EQ(self.last.parm, &node.parm("Last"));
    EXPECT_EQ(self.tint.parm, &node.parm("Tint"));
    EXPECT_EQ(self.normal.parm, &node.parm("Normal"));
    EXPECT_EQ(self.kindInput, &node.input("Kind"));
    EXPECT_EQ(self.countInput, &node.input("Number"));
    EXPECT_EQ(self.levelInput, &node.input("In"));
    EXPECT_EQ(self.placeInput, &node.input("Place"));
    EXPECT_EQ(self.tintInput, &node.input("Tint"));
    EXPECT_EQ(self.lastInput, &node.input("Last"));
    EXPECT_EQ(self.normalInput, &node.input("Normal"));
    EXPECT_EQ(self.functionInput, &node.input("Function"));
    EXPECT_EQ(self.colourOutput, &node.output("Color"));
    EXPECT_EQ(self.wordOutput, &node.output("Word"));
}

TEST_F(Creation, StartsWithDefaultsAndZeros) {
    TestNode node(host, Everything_Activate, nullptr);
    const auto &self = *static_cast<Everything *>(node.instance);
    EXPECT_EQ(self.kind, 0);
    EXPECT_EQ(self.count, 12);
    EXPECT_EQ(self.on, 1);
    EXPECT_STREQ(self.name, "");
    EXPECT_EQ(self.level.value, 1.5);
    EXPECT_EQ(self.last.value, 0.25);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(self.place.value[i], 0);
        EXPECT_EQ(self.tint.value[i], 0.5);
        EXPECT_EQ(self.normal.value[i], i == 1 ? 1 : 0);
    }
    for (const int fresh : self.fresh) EXPECT_EQ(fresh, 1);
}

TEST_F(Creation, HandsTheLookUpFunctionOn) {
    TestNode node(host, Bare_Activate, nullptr);
    EXPECT_EQ(static_cast<Bare *>(node.instance)->lookup, FakeHost::lookup);
}

TEST_F(Creation, EveryInputNotifiesTheSameNodeClass) {
    TestNode node(host, Everything_Activate, nullptr);
    ASSERT_EQ(host.inputs.size(), 8u);
    for (const HostInput &input : host.inputs) EXPECT_EQ(input.event, host.inputs[0].event);
    EXPECT_NE(host.inputs[0].event, nullptr);
}

TEST_F(Creation, FailsWithAMessageWhenThereIsNoMemory) {
    for (HostActivate *activate : {counter(), activationOf(HOST_CLASS_NODE_HANDLER, "Velm Ambient Occlusion"),
                                   static_cast<HostActivate *>(Everything_Activate)}) {
        const HostInstanceOps ops = activated(activate);
        HostNode &node = host.addNode("node");
        const char *error = nullptr;
        failNextAllocation();
        EXPECT_EQ(ops.create(ops.priv, &node, &error), nullptr);
        EXPECT_STREQ(error, "Couldn't allocate memory for instance.");
        EXPECT_EQ(host.takeLog(), Lines{}) << "nothing was made";
    }
}

TEST_F(Creation, FailsWithTheUnitsOwnMessageAndLeavesNothingBehind) {
    const HostInstanceOps ops = activated(Everything_Activate);
    hookAnswers.prepare = "There is no such thing!";
    const char *error = nullptr;
    EXPECT_EQ(ops.create(ops.priv, &host.addNode("node"), &error), nullptr);
    EXPECT_STREQ(error, "There is no such thing!");
    EXPECT_EQ(host.takeLog(), (Lines{"setPreviewType 1", "setColour 1 2 3", "hook prepare"}));
    EXPECT_TRUE(lastAllocation().freed);
}

TEST_F(Creation, GoesOnWithoutAParameterThatTheHostCannotCreate) {
    host.failingParms = {1};
    TestNode node(host, "Velm Counter");
    ASSERT_NE(node.instance, nullptr);
    EXPECT_EQ(node.inputs().size(), 5u);
    EXPECT_EQ(host.liveParms(), 3);
    EXPECT_EQ(host.parms[1].channel, "A") << "those after it are what they should be";
}

TEST_F(Creation, DestroysItsParametersAndItsRecord) {
    const HostInstanceOps ops = activated(counter());
    const char *error = nullptr;
    void *instance = ops.create(ops.priv, &host.addNode("node"), &error);
    const LastAllocation record = lastAllocation();
    ASSERT_EQ(record.memory, instance);
    host.takeLog();
    ops.destroy(instance);
    EXPECT_EQ(host.takeLog(),
              (Lines{"destroyParm Start Value", "destroyParm Increase Value", "destroyParm A", "destroyParm B"}));
    EXPECT_EQ(lastAllocation().memory, instance);
    EXPECT_TRUE(lastAllocation().freed);
}

TEST_F(Creation, DestroysWhatItKeepsAndLeavesTheRestToTheHost) {
    const HostInstanceOps ops = activated(Everything_Activate);
    const char *error = nullptr;
    void *instance = ops.create(ops.priv, &host.addNode("node"), &error);
    host.takeLog();
    ops.destroy(instance);
    EXPECT_EQ(host.takeLog(), (Lines{"hook destroying", "destroyParm Level Channel", "destroyParm Last",
                                     "destroyParm Place", "destroyParm Tint"}))
        << "neither the bare vector nor the group nor a panel";
    EXPECT_TRUE(lastAllocation().freed);
}

TEST_F(Creation, DestroysTheParametersThatThereAre) {
    host.failingParms = {0, 2};
    const HostInstanceOps ops = activated(counter());
    const char *error = nullptr;
    void *instance = ops.create(ops.priv, &host.addNode("node"), &error);
    host.takeLog();
    ops.destroy(instance);
    EXPECT_EQ(host.takeLog(), (Lines{"destroyParm Increase Value", "destroyParm B"}));
}

TEST_F(Creation, DestroyingNothingDoesNothing) {
    for (HostActivate *activate : {counter(), static_cast<HostActivate *>(Everything_Activate)}) {
        activated(activate).destroy(nullptr);
        EXPECT_EQ(host.takeLog(), Lines{});
    }
}

TEST_F(Creation, OneParameterCanBeMadeOnItsOwn) {
    activated(Everything_Activate);
    HostChannelGroup group = {.name = "Group", .parent = nullptr};
    const double value[3] = {1, 2, 3};
    HostVParm *parm = Everything_create_vpenv(kParmColour, "Extra", &group, value);
    ASSERT_NE(parm, nullptr);
    EXPECT_EQ(host.takeLog(), (Lines{"createParm 81 -1", "setUpParm Extra in Group", "setParm Extra 1 2 3"}));
    host.failingParms = {1};
    EXPECT_EQ(Everything_create_vpenv(kParmFloat, "Extra", &group, value), nullptr);
    EXPECT_EQ(host.takeLog(), (Lines{"createParm 16 -1"}));
}

} // namespace
} // namespace velm::plugin
