// Panels as the host uses them: building, the getter and the setter, and the notifications.
#include "tests/module/test_node.h"
#include "tests/module/test_nodes.h"

#include <gtest/gtest.h>

namespace velm::plugin {
namespace {

using Lines = std::vector<std::string>;

class Panel : public testing::Test {
  protected:
    FakeHost host;
    TestNode node{host, Everything_Activate, Everything_Interface};

    Panel() { hookAnswers = {}; }
    Everything &self() { return *static_cast<Everything *>(node.instance); }
    // Builds a panel and clears the log.
    HostPanel &shown() {
        HostPanel *panel = node.panel();
        host.takeLog();
        return *panel;
    }
};

// ---- Building ----

TEST_F(Panel, IsBuiltOnceInOrder) {
    HostPanel *panel = node.panel();
    EXPECT_EQ(host.takeLog(), (Lines{"lookup Instance Update", "lookup LWXPanel", "createPanel 1", "hint 0", "describe",
                                     "viewInstance", "setData 0"}));
    EXPECT_EQ(panel, self().panel);
    EXPECT_EQ(panel->viewed, node.instance);
    EXPECT_EQ(panel->data[0], node.instance);
    EXPECT_EQ(panel->get, Everything_ui_get);
    EXPECT_EQ(panel->set, Everything_ui_set);
    EXPECT_EQ(Everything_get_xPanel(node.instance), panel);
    EXPECT_EQ(host.takeLog(), Lines{});
}

TEST_F(Panel, BelongsToItsInstance) {
    TestNode other(host, Everything_Activate, Everything_Interface, "other");
    EXPECT_NE(node.panel(), other.panel());
}

TEST_F(Panel, IsNotMadeForNothing) {
    shown();
    EXPECT_EQ(Everything_get_xPanel(nullptr), nullptr);
    EXPECT_EQ(host.takeLog(), Lines{});
}

TEST_F(Panel, IsTriedAgainAfterAFailure) {
    host.panelsFail = true;
    EXPECT_EQ(node.panel(), nullptr);
    EXPECT_EQ(self().panel, nullptr);
    EXPECT_EQ(host.takeLog(), (Lines{"lookup Instance Update", "lookup LWXPanel", "createPanel 1"}));
    host.panelsFail = false;
    EXPECT_NE(node.panel(), nullptr);
}

TEST_F(Panel, OutlivesItsWindow) {
    HostPanel &panel = shown();
    const HostHint *word = panel.hints;
    while (word->word != kHintDestroyNotify) ++word; // near the end; no argument has this value
    word[1].destroyed(nullptr);
    word[1].destroyed(node.instance);
    EXPECT_EQ(self().panel, &panel);
    EXPECT_EQ(host.takeLog(), Lines{});
    EXPECT_EQ(node.panel(), &panel);
}

TEST_F(Panel, IsLeftToTheHostWhenItsNodeGoes) {
    {
        TestNode other(host, Everything_Activate, Everything_Interface, "other");
        other.panel();
        host.takeLog();
    }
    for (const std::string &line : host.takeLog()) EXPECT_EQ(line.find("anel"), std::string::npos) << line;
}

// ---- Values ----

TEST_F(Panel, GetterGivesIntegersTextsAndParametersOfWhatIsNotConnected) {
    HostPanel &panel = shown();
    struct Row {
        unsigned int id;
        void *value;
    };
    const Row rows[] = {
        {0x8001, &self().kind},      {0x8002, &self().count},     {0x8003, &self().on},
        {0x8004, &self().name},      {0x8005, self().level.parm}, {0x8006, self().last.parm},
        {0x8007, self().place.parm}, {0x8008, self().tint.parm},  {0x8009, &self().image},
        {0x800a, &self().ray},
    };
    for (const Row &row : rows) EXPECT_EQ(panel.get(node.instance, row.id), row.value) << row.id;
}

TEST_F(Panel, GetterGivesNothingForWhatIsConnected) {
    HostPanel &panel = shown();
    struct Row {
        unsigned int id;
        const char *input;
    };
    const Row rows[] = {{0x8001, "Kind"}, {0x8002, "Number"}, {0x8005, "In"},
                        {0x8006, "Last"}, {0x8007, "Place"},  {0x8008, "Tint"}};
    for (const Row &row : rows) {
        SCOPED_TRACE(row.input);
        const void *value = panel.get(node.instance, row.id);
        EXPECT_NE(value, nullptr);
        node.connect(row.input, 1);
        EXPECT_EQ(panel.get(node.instance, row.id), nullptr);
        for (const Row &other : rows)
            EXPECT_EQ(panel.get(node.instance, other.id) == nullptr, other.id == row.id) << "others stay as they are";
        node.disconnect(row.input);
        EXPECT_EQ(panel.get(node.instance, row.id), value);
    }
}

TEST_F(Panel, GetterGivesWhatHasNoInputWhateverIsConnected) {
    HostPanel &panel = shown();
    for (const char *input : {"Kind", "Number", "In", "Last", "Place", "Tint", "Normal", "Function"})
        node.connect(input, 1);
    EXPECT_EQ(panel.get(node.instance, 0x8003), &self().on);
    EXPECT_EQ(panel.get(node.instance, 0x8004), &self().name);
    EXPECT_EQ(panel.get(node.instance, 0x800a), &self().ray);
}

TEST_F(Panel, GetterGivesNothingForWhatIsNotThere) {
    HostPanel &panel = shown();
    for (const unsigned int id : {0u, 1u, 0x8000u, 0x800bu, 0x800cu, 0x800du, 0x9001u, 0xffffffffu})
        EXPECT_EQ(panel.get(node.instance, id), nullptr) << id;
}

TEST_F(Panel, SetterStoresIntegers) {
    HostPanel &panel = shown();
    int value = 70000;
    EXPECT_EQ(panel.set(node.instance, 0x8002, &value), 1);
    EXPECT_EQ(self().count, 70000);
    value = -3;
    EXPECT_EQ(panel.set(node.instance, 0x8001, &value), 1);
    EXPECT_EQ(self().kind, -3) << "as it comes; it is clamped where it is used";
    value = 0;
    EXPECT_EQ(panel.set(node.instance, 0x8003, &value), 1);
    EXPECT_EQ(self().on, 0);
    EXPECT_EQ(self().image, 0);
}

TEST_F(Panel, SetterStoresNothingForWhatTheHostHasChangedAlready) {
    HostPanel &panel = shown();
    const Everything before = self();
    double value[3] = {7, 8, 9};
    for (const unsigned int id : {0x8005u, 0x8006u, 0x8007u, 0x8008u})
        EXPECT_EQ(panel.set(node.instance, id, value), 1) << id;
    EXPECT_EQ(self().level.value, before.level.value);
    EXPECT_EQ(self().level.parm, before.level.parm);
    EXPECT_EQ(self().tint.value[0], before.tint.value[0]);
    EXPECT_EQ(self().tint.parm, before.tint.parm);
    EXPECT_EQ(node.parm("Tint").value[0], 0.5);
}

TEST_F(Panel, SetterKnowsNothingElse) {
    HostPanel &panel = shown();
    int value = 1;
    for (const unsigned int id : {0u, 1u, 0x8000u, 0x800bu, 0x800cu, 0x800du, 0x9001u, 0xffffffffu})
        EXPECT_EQ(panel.set(node.instance, id, &value), 0) << id;
}

TEST_F(Panel, TheUnitIsAskedFirst) {
    HostPanel &panel = shown();
    int value = 5;
    hookAnswers.setValue = kSetRebuild;
    EXPECT_EQ(panel.set(node.instance, 0x8002, &value), kSetRebuild);
    EXPECT_EQ(self().count, 12) << "the node class has handled it";
    EXPECT_EQ(host.takeLog(), (Lines{"hook setValue 1"}));
}

// ---- Notifications ----

struct Change {
    int event;
    Lines log;
};

const Change kChanges[] = {
    {.event = kEventChanging, .log = {"updatePreview node"}},
    {.event = kEventSet, .log = {"instanceUpdate NodeHandler"}},
    {.event = kEventHit, .log = {}},
    {.event = kEventFocus, .log = {}},
    {.event = kEventFocusLost, .log = {}},
    {.event = 0, .log = {}},
    {.event = -1, .log = {}},
};

HostPanelChange *changeOf(const HostPanel &panel) {
    EXPECT_EQ(panel.hints[0].word, 0x3D000F01u);
    return panel.hints[1].change;
}

TEST_F(Panel, ChangesUpdateThePreviewAndTheInstanceBeforeTheUnitHears) {
    HostPanel &panel = shown();
    hookAnswers.changed = 2;
    for (const Change &row : kChanges) {
        EXPECT_EQ(changeOf(panel)(&panel, 0x8009, 0x8009, row.event), 2) << "the result of the node class";
        Lines expected = {"getData 0"};
        expected.insert(expected.end(), row.log.begin(), row.log.end());
        expected.push_back("hook changed 8 " + std::to_string(row.event));
        EXPECT_EQ(host.takeLog(), expected);
    }
}

TEST_F(Panel, ChangesOfTheModulesNodesDoTheSame) {
    for (const char *server : {"Velm Counter", "Velm Ambient Occlusion"}) {
        TestNode other(host, server);
        HostPanel *panel = other.panel();
        host.takeLog();
        for (const Change &row : kChanges) {
            EXPECT_EQ(changeOf(*panel)(panel, 0x8001, 0x8001, row.event), 0);
            Lines expected = {"getData 0"};
            expected.insert(expected.end(), row.log.begin(), row.log.end());
            EXPECT_EQ(host.takeLog(), expected) << server;
        }
        EXPECT_EQ(host.lastUpdated(), other.instance) << server;
    }
}

TEST_F(Panel, AConnectionGreysACountersControlAtOnce) {
    TestNode counter(host, "Velm Counter", "counter");
    HostPanel *panel = counter.panel();
    host.takeLog();
    EXPECT_EQ(panel->get(counter.instance, 0x8005), &counter.parm("B"));
    HostInput &input = counter.input("B");
    counter.connect("B", 1.0);
    input.event(counter.instance, &input, kInputConnected, kConnectScalar);
    EXPECT_EQ(host.takeLog(), (Lines{"refresh"}));
    EXPECT_EQ(panel->get(counter.instance, 0x8005), nullptr);
}

} // namespace
} // namespace velm::plugin
