// Group Node: the calls of its nested editor, and the values of its outputs.
#include "module/servers.h"
#include "tests/module/allocation.h"
#include "tests/module/fake_editors.h"
#include "tests/module/hint_list.h"
#include "tests/module/recorded_state.h"
#include "tests/module/test_node.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace velm::plugin {
namespace {

using Lines = std::vector<std::string>;

constexpr double kGrey = 0.78431;
constexpr unsigned int kNodeBlock = 0x4e4f4445; // "NODE"
constexpr unsigned int kOtherBlock = 0x58595a5a;

class Group : public testing::Test {
  protected:
    FakeHost host;
    FakeEditors editors;
    TestNode node{host, activatedWith<FakeEditors::lookup, GroupNode_Activate>,
                  activatedWith<FakeEditors::lookup, GroupNode_Interface>, "Group Node (2)"};
    ShadingSample sample = plainSample();

    HostNodeEditor &editor() { return editors.editors.front(); }
    HostInput &rootInput(const std::string &name) {
        for (HostInput &input : host.inputs)
            if (input.node == editor().root && input.name == name) return input;
        throw std::out_of_range(name);
    }
};

// ---- Life ----

const Lines kCreation = {
    "setColour 164 50 10",
    "createEditor Group Node, Group Node",
    "channelGroup",
    "createGroup Group Node in second",
    "setChannelGroup second",
    "rootNode",
    "setColour 164 50 10",
    "setEvent",
    "setAutosize",
    "addRootInput Color 1",
    "addRootInput Scalar 2",
    "addRootInput Vector 3",
    "addRootInput Integer 4",
    "addRootInput Material 6",
    "createOutput Color 1",
    "createOutput Scalar 2",
    "createOutput Vector 3",
    "createOutput Integer 4",
    "createOutput Material 6",
};

TEST_F(Group, IsMadeInOrder) {
    HostNode &second = host.addNode("second");
    const char *error = nullptr;
    void *instance = node.ops.create(node.ops.priv, &second, &error);
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(error, nullptr);
    EXPECT_EQ(host.takeLog(), kCreation);

    const HostNodeEditor &made = editors.editors.back();
    EXPECT_EQ(made.userData, instance);
    EXPECT_NE(made.description.preview, nullptr);
    EXPECT_EQ(made.description.previewType, 0);
    EXPECT_EQ(made.description.init, nullptr);
    EXPECT_EQ(made.description.newTime, nullptr);
    EXPECT_EQ(made.description.cleanup, nullptr);
    EXPECT_EQ(made.description.panel, nullptr);
    EXPECT_EQ(made.description.options, nullptr);
    EXPECT_EQ(made.description.customPreview, nullptr);
    EXPECT_EQ(made.group, second.group);
    EXPECT_EQ(second.colour, (std::array{164, 50, 10}));
    EXPECT_EQ(made.root->colour, second.colour);

    node.ops.destroy(instance);
    EXPECT_EQ(host.takeLog(), Lines{"destroyEditor"});
    node.ops.destroy(nullptr);
    EXPECT_EQ(host.takeLog(), Lines{});
}

TEST_F(Group, HasNoInputsOfItsOwn) { EXPECT_EQ(node.inputs(), Lines{}); }

TEST_F(Group, FailsWithoutAnEditorAndLeavesNothingBehind) {
    editors.creationFails = true;
    HostNode &second = host.addNode("second");
    const char *error = nullptr;
    EXPECT_EQ(node.ops.create(node.ops.priv, &second, &error), nullptr);
    EXPECT_STREQ(error, "Node editor creation failed!");
    EXPECT_EQ(host.takeLog(), (Lines{"setColour 164 50 10", "createEditor Group Node, Group Node"}));
    EXPECT_TRUE(lastAllocation().freed);
}

TEST_F(Group, FailsWithoutMemoryBeforeAnEditorIsMade) {
    HostNode &second = host.addNode("second");
    const char *error = nullptr;
    failNextAllocation();
    EXPECT_EQ(node.ops.create(node.ops.priv, &second, &error), nullptr);
    EXPECT_STREQ(error, "Couldn't allocate memory for instance.");
    EXPECT_EQ(host.takeLog(), Lines{});
}

TEST_F(Group, HandsItsLifeOnToTheEditor) {
    EXPECT_EQ(node.render.init(node.instance, kInitRender), nullptr);
    EXPECT_EQ(node.render.init(node.instance, kInitPreview), nullptr);
    EXPECT_EQ(node.render.newTime(node.instance, 7, 0.25), nullptr);
    node.render.cleanup(node.instance);
    EXPECT_EQ(host.takeLog(), (Lines{"initEditor 1", "initEditor 0", "newTimeEditor 7 0.25", "cleanupEditor"}));
    GroupNode_get_vpValues(node.instance, 1);
    EXPECT_EQ(host.takeLog(), Lines{});
}

TEST_F(Group, SucceedsWhateverTheNodesInsideReport) {
    TestNode other(host, activatedWith<FakeEditors::lookup, GroupNode_Activate>,
                   activatedWith<FakeEditors::lookup, GroupNode_Interface>, "other");
    editors.answer = "a node inside fails";
    EXPECT_EQ(node.render.init(node.instance, kInitRender), nullptr);
    EXPECT_EQ(node.render.newTime(node.instance, 7, 0.25), nullptr);
    EXPECT_EQ(node.ops.copy(other.instance, node.instance), nullptr);
}

TEST_F(Group, CopiesTheNetwork) {
    TestNode other(host, activatedWith<FakeEditors::lookup, GroupNode_Activate>,
                   activatedWith<FakeEditors::lookup, GroupNode_Interface>, "other");
    editor().network = "a gradient";
    EXPECT_EQ(node.ops.copy(other.instance, node.instance), nullptr);
    EXPECT_EQ(host.takeLog(), Lines{"copyEditor"});
    EXPECT_EQ(editors.editors.back().network, "a gradient");
}

// ---- Files ----

TEST_F(Group, SavesTheNetworkInABlock) {
    editor().network = "a gradient";
    RecordedState state;
    EXPECT_EQ(node.ops.save(node.instance, state.save()), nullptr);
    EXPECT_EQ(state.lines(), (Lines{"begin NODE NodeEditor", "text a gradient", "end"})) << "not a leaf";
    editor().network = "empty";
    host.takeLog();
    EXPECT_EQ(node.ops.load(node.instance, state.load()), nullptr);
    EXPECT_EQ(editor().network, "a gradient");
    EXPECT_EQ(host.takeLog(), Lines{"loadEditor"});
}

TEST_F(Group, HandsTheEditorsErrorsBackAndLeavesTheBlockOpen) {
    editors.answer = "the disk is full";
    RecordedState state;
    EXPECT_EQ(node.ops.save(node.instance, state.save()), editors.answer);
    EXPECT_EQ(state.lines(), Lines{"begin NODE NodeEditor"});

    RecordedState file;
    file.begin(kNodeBlock).text("first").end().begin(kNodeBlock).text("second").end();
    host.takeLog();
    EXPECT_EQ(node.ops.load(node.instance, file.load()), editors.answer);
    EXPECT_EQ(host.takeLog(), Lines{"loadEditor"}) << "no more is read";
}

TEST_F(Group, PassesOverOtherBlocks) {
    RecordedState file;
    file.begin(kOtherBlock).text("not ours").begin(kNodeBlock).text("inside").end().end();
    file.begin(kNodeBlock).text("ours").end().begin(kOtherBlock).integer(5).end();
    EXPECT_EQ(node.ops.load(node.instance, file.load()), nullptr);
    EXPECT_EQ(editor().network, "ours");
    EXPECT_EQ(host.takeLog(), Lines{"loadEditor"});

    RecordedState without;
    without.begin(kOtherBlock).text("not ours").end();
    EXPECT_EQ(node.ops.load(node.instance, without.load()), nullptr);
    EXPECT_EQ(host.takeLog(), Lines{});
}

TEST_F(Group, LeavesWhatABlockHoldsBesides) {
    RecordedState file; // ending a block skips what the editor has not read
    file.begin(kNodeBlock).text("first").integer(3).text("more").end().begin(kNodeBlock).text("second").end();
    EXPECT_EQ(node.ops.load(node.instance, file.load()), nullptr);
    EXPECT_EQ(editor().network, "second");
}

// ---- The panel ----

TEST_F(Group, OpensItsEditorUnderTheNodesNameOfToday) {
    HostPanel *panel = node.panel();
    const auto added = hintsWith(kHintAddControl, panel->hints);
    ASSERT_EQ(added.size(), 1u);
    EXPECT_STREQ(added[0].arguments[1].text, "vButton");
    EXPECT_STREQ(hintsWith(kHintLabel, panel->hints).at(0).arguments[1].text, "Edit Nodes");
    EXPECT_EQ(panel->values[0].id, 0u) << "a button has no value";
    EXPECT_EQ(panel->get(node.instance, 0x8001), nullptr);
    int value = 1;
    EXPECT_EQ(panel->set(node.instance, 0x8001, &value), 0);

    node.node.name = "Lacquer";
    host.takeLog();
    const auto buttons = hintsWith(kHintButton, panel->hints);
    ASSERT_EQ(buttons.size(), 1u);
    EXPECT_EQ(buttons[0].arguments[0].word, 0x8001u);
    buttons[0].arguments[1].button(panel, 0x8001);
    EXPECT_EQ(host.takeLog(), (Lines{"getData 0", "nodeName", "rename Lacquer", "openWindow"}));
}

TEST_F(Group, TellsOfChanges) {
    HostPanel *panel = node.panel();
    FakeControls::notify(panel, 0x8001, kEventChanging);
    EXPECT_EQ(host.takeLog(), (Lines{"getData 0", "updatePreview Group Node (2)"}));
    FakeControls::notify(panel, 0x8001, kEventSet);
    EXPECT_EQ(host.takeLog(), (Lines{"getData 0", "instanceUpdate NodeHandler"}));
    EXPECT_EQ(host.lastUpdated(), node.instance);
    FakeControls::notify(panel, 0x8001, kEventHit);
    EXPECT_EQ(host.takeLog(), Lines{"getData 0"});
}

TEST_F(Group, ItsPanelIsRefusedWithoutItsServicesOrInAnotherVersion) {
    HostNodeInterface record = {.instance = node.instance, .panel = nullptr, .options = nullptr, .command = nullptr};
    for (const int version : {0, 1, 3, 5})
        EXPECT_EQ(GroupNode_Interface(version, FakeEditors::lookup, &record, nullptr), 1);
    EXPECT_EQ(host.takeLog(), Lines{});
    for (const char *service : {HOST_INSTANCE_UPDATE, HOST_PANEL_FUNCS}) {
        host.missing = {service};
        EXPECT_EQ(GroupNode_Interface(4, FakeEditors::lookup, &record, nullptr), 2) << service;
        EXPECT_EQ(host.takeLog(), (Lines{"lookup Instance Update", "lookup LWXPanel"}));
    }
    EXPECT_EQ(record.panel, nullptr);
    host.missing = {};
    EXPECT_EQ(GroupNode_Interface(4, FakeEditors::lookup, &record, nullptr), 0);
    EXPECT_NE(record.panel, nullptr);
}

// ---- What the editor calls ----

TEST_F(Group, SizesTheViewByTheNodesExtent) {
    double bounds[3][2] = {};
    editor().autosize(&editor(), node.instance, bounds);
    EXPECT_EQ(host.takeLog(), Lines{"autosize Group Node (2)"});
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(bounds[i][0], -0.5 * editors.extent[i]);
        EXPECT_EQ(bounds[i][1], 0.5 * editors.extent[i]);
    }
    double untouched[3][2] = {{1, 2}, {3, 4}, {5, 6}};
    editor().autosize(&editor(), nullptr, untouched);
    EXPECT_EQ(untouched[0][0], 1);
    EXPECT_EQ(untouched[2][1], 6);
}

TEST_F(Group, LeavesTheViewAloneWhereNoExtentsAreTold) {
    host.missing = {HOST_NODE_UTILITY_FUNCS}; // the activation fails while an instance exists
    EXPECT_EQ(GroupNode_Activate(1, FakeEditors::lookup, &node.handler, nullptr), kActivateBadGlobal);
    double untouched[3][2] = {{1, 2}, {3, 4}, {5, 6}};
    editor().autosize(&editor(), node.instance, untouched);
    EXPECT_EQ(untouched[0][0], 1);
    EXPECT_EQ(untouched[2][1], 6);
}

TEST_F(Group, AnswersEventsWithItself) {
    EXPECT_EQ(editor().event(&editor()), node.instance);
    EXPECT_EQ(host.takeLog(), Lines{});
}

TEST_F(Group, PreviewsTheRootsColour) {
    double colour[3] = {9, 9, 9};
    editor().description.preview(&editor(), &sample, colour);
    for (const double component : colour) EXPECT_EQ(component, kGrey);
    rootInput("Color").source = [&](ShadingSample *shaded, void *value) {
        EXPECT_EQ(shaded, &sample);
        for (int i = 0; i < 3; ++i) static_cast<double *>(value)[i] = i;
    };
    editor().description.preview(&editor(), &sample, colour);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(colour[i], i);
}

// ---- Evaluation ----

TEST_F(Group, GivesItsPresetsWhenItIsEmpty) {
    const HostNodeValue colour = node.evaluate("Color", sample), vector = node.evaluate("Vector", sample);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(colour.numbers[i], kGrey);
        EXPECT_EQ(vector.numbers[i], 0);
    }
    EXPECT_EQ(vector.timesSet, 1);
    EXPECT_EQ(node.scalar("Scalar", sample), 1);
    EXPECT_EQ(node.evaluate("Integer", sample).integer, 1);
    EXPECT_EQ(node.evaluate("Material", sample).timesSet, 1);
    ASSERT_EQ(editors.materials.size(), 1u);
    const HostMaterial &material = editors.materials[0];
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(material.diffuse[i], kGrey);
        EXPECT_EQ(material.specular[i], 0);
        EXPECT_EQ(material.reflection[i], 0);
        EXPECT_EQ(material.refraction[i], 0);
    }
    EXPECT_EQ(material.transparency, 0);
}

TEST_F(Group, GivesWhatIsWiredInside) {
    const auto triple = [](double first) {
        return [first](ShadingSample *shaded, void *value) {
            for (int i = 0; i < 3; ++i) static_cast<double *>(value)[i] = first + i + shaded->position[0];
        };
    };
    sample.position[0] = 100;
    rootInput("Color").source = triple(1);
    rootInput("Vector").source = triple(4);
    rootInput("Scalar").source = [](ShadingSample *, void *value) { *static_cast<double *>(value) = 7; };
    rootInput("Integer").source = [](ShadingSample *, void *value) { *static_cast<int *>(value) = 8; };
    rootInput("Material").source = [](ShadingSample *, void *value) {
        static_cast<HostMaterial *>(value)->transparency = 9;
        static_cast<HostMaterial *>(value)->refraction[2] = 10;
    };
    const HostNodeValue colour = node.evaluate("Color", sample), vector = node.evaluate("Vector", sample);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(colour.numbers[i], 101 + i);
        EXPECT_EQ(vector.numbers[i], 104 + i);
    }
    EXPECT_EQ(node.scalar("Scalar", sample), 7);
    EXPECT_EQ(node.evaluate("Integer", sample).integer, 8);
    node.evaluate("Material", sample);
    EXPECT_EQ(editors.materials.back().transparency, 9);
    EXPECT_EQ(editors.materials.back().refraction[2], 10);
    EXPECT_EQ(editors.materials.back().diffuse[0], kGrey);
}

TEST_F(Group, SetsNothingForAnOutputThatIsNotItsOwn) {
    host.logsEvaluation = true;
    EXPECT_EQ(node.evaluateStranger(kConnectScalar, sample).timesSet, 0);
    EXPECT_EQ(host.takeLog(), Lines{});
}

} // namespace
} // namespace velm::plugin
