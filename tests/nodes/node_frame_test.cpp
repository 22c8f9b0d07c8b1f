// The tests of every node class, with the facts that its test file states.
#include "tests/nodes/node_frame.h"

#include "tests/module/hint_list.h"
#include "tests/module/recorded_state.h"

#include <algorithm>
#include <cstring>

namespace velm::plugin {

std::vector<ControlFacts> NodeFrame::integers() const {
    std::vector<ControlFacts> found;
    for (const ControlFacts &control : facts.panel)
        if (!control.channel) found.push_back(control);
    return found;
}

Lines NodeFrame::forEachParm(const std::string &start, const std::string &end) const {
    Lines lines;
    for (const ParmFacts &parm : facts.parms) lines.push_back(start + parm.channel + end);
    return lines;
}

Lines NodeFrame::creation(const std::string &nodeName) const {
    Lines lines;
    if (facts.setsPreview) lines.emplace_back("setPreviewType 2");
    lines.emplace_back("setColour 164 50 10");
    const std::string group = facts.name;
    if (facts.hasGroup) lines.emplace_back("channelGroup");
    if (facts.hasGroup) lines.push_back("createGroup " + group + " in " + nodeName);
    for (const ParmFacts &parm : facts.parms) {
        std::ostringstream value;
        for (const double component : parm.initial) value << " " << component;
        lines.push_back("createParm " + std::to_string(parm.type) + " -1");
        lines.push_back(std::string("setUpParm ") + parm.channel + " in " + group);
        lines.push_back(std::string("setParm ") + parm.channel + value.str());
    }
    for (const std::string &input : facts.inputs) lines.push_back("createInput " + input);
    for (const std::string &output : facts.outputs) lines.push_back("createOutput " + output);
    return lines;
}

HostPanel *NodeFrame::shown() {
    HostPanel *panel = node.panel();
    host.takeLog();
    return panel;
}

namespace {

const Lines kNodeServices = {HOST_NODE_FUNCS, HOST_NODE_EDITOR_FUNCS, HOST_NODE_INPUT_FUNCS, HOST_NODE_OUTPUT_FUNCS};
const Lines kParameterServices = {HOST_VPARM_FUNCS, HOST_ENVELOPE_FUNCS};

// ---- Servers and activation ----

TEST_P(NodeFrame, IsListedWithItsTagsOrNotAtAll) {
    const std::string name = std::string("Velm ") + facts.name;
    const HostServer *handler = serverOf(HOST_CLASS_NODE_HANDLER, name);
    const HostServer *interface = serverOf(HOST_CLASS_NODE_INTERFACE, name);
    ASSERT_EQ(handler != nullptr, facts.menu != nullptr);
    ASSERT_EQ(interface != nullptr, facts.menu != nullptr);
    if (!handler) return;
    EXPECT_EQ(handler->activate, facts.activate);
    EXPECT_EQ(interface->activate, facts.interface);
    ASSERT_EQ(handler->tags, interface->tags);
    EXPECT_STREQ(handler->tags[0].text, facts.name);
    EXPECT_EQ(handler->tags[0].code, 0u);
    EXPECT_STREQ(handler->tags[1].text, facts.menu);
    EXPECT_EQ(handler->tags[1].code, 0x70000u);
    EXPECT_EQ(handler->tags[2].text, nullptr);
    EXPECT_EQ(handler->tags[2].code, 0u);
}

TEST_P(NodeFrame, LooksItsServicesUpInOrder) {
    const Lines services =
        joined({kNodeServices, facts.furtherServices, facts.hasGroup ? kParameterServices : Lines{}});
    Lines lookups;
    for (const std::string &service : services) lookups.push_back("lookup " + service);
    EXPECT_EQ(facts.activate(1, FakeHost::lookup, &node.handler, nullptr), 0);
    EXPECT_EQ(host.takeLog(), lookups);
}

TEST_P(NodeFrame, IsRefusedWithoutAnyOfItsServicesOrInAnotherVersion) {
    HostNodeHandler record{}; // its pointers are null: following one crashes the test
    for (const int version : {-1, 0, 2, 4}) EXPECT_EQ(facts.activate(version, FakeHost::lookup, &record, nullptr), 1);
    EXPECT_EQ(host.takeLog(), Lines{});
    for (const std::string &service :
         joined({kNodeServices, facts.furtherServices, facts.hasGroup ? kParameterServices : Lines{}})) {
        if (service == HOST_SYSTEM_ID) continue; // its result is a word, which may be 0
        host.missing = {service};
        EXPECT_EQ(facts.activate(1, FakeHost::lookup, &record, nullptr), 2) << service;
    }
    EXPECT_EQ(record.evaluate, nullptr);
    host.missing = {};
    EXPECT_EQ(facts.activate(1, FakeHost::lookup, &node.handler, nullptr), 0) << "for the tests that come after";
}

TEST_P(NodePanel, IsRefusedWithoutItsServicesOrInAnotherVersion) {
    HostNodeInterface record = {.instance = node.instance, .panel = nullptr, .options = nullptr, .command = nullptr};
    for (const int version : {-1, 0, 1, 3, 5})
        EXPECT_EQ(facts.interface(version, FakeHost::lookup, &record, nullptr), 1);
    EXPECT_EQ(host.takeLog(), Lines{});
    for (const char *service : {HOST_INSTANCE_UPDATE, HOST_PANEL_FUNCS}) {
        host.missing = {service};
        EXPECT_EQ(facts.interface(4, FakeHost::lookup, &record, nullptr), 2) << service;
    }
    EXPECT_EQ(record.panel, nullptr);
}

// ---- Life ----

TEST_P(NodeFrame, IsMadeInOrderWithItsDefaults) {
    EXPECT_EQ(node.ops.priv, reinterpret_cast<void *>(FakeHost::lookup));
    HostNode &second = host.addNode("second");
    const char *error = nullptr;
    void *instance = node.ops.create(node.ops.priv, &second, &error);
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(error, nullptr);
    EXPECT_EQ(host.takeLog(), creation("second"));
    EXPECT_EQ(second.colour, (std::array{164, 50, 10}));
    EXPECT_EQ(second.previewType, facts.setsPreview ? 2 : -1);
    EXPECT_EQ(node.inputs(), facts.inputs);
    EXPECT_EQ(node.outputs(), facts.outputs);
    node.ops.destroy(instance);
    EXPECT_EQ(host.takeLog(), forEachParm("destroyParm "));
    node.ops.destroy(nullptr);
    EXPECT_EQ(host.takeLog(), Lines{});
}

TEST_P(NodeFrame, OutlivesAParameterThatTheHostCannotMake) {
    for (size_t failing = 0; failing < facts.parms.size(); ++failing) {
        host.failingParms = {host.parmsAsked + static_cast<int>(failing)};
        HostNode &second = host.addNode("second");
        const char *error = nullptr;
        void *instance = node.ops.create(node.ops.priv, &second, &error);
        ASSERT_NE(instance, nullptr);
        host.takeLog();
        node.ops.destroy(instance);
        Lines destroyed = forEachParm("destroyParm ");
        destroyed.erase(destroyed.begin() + static_cast<std::ptrdiff_t>(failing));
        EXPECT_EQ(host.takeLog(), destroyed);
    }
}

TEST_P(NodeFrame, AFrameReadsEveryParameterAtItsTime) {
    EXPECT_EQ(node.render.newTime(node.instance, 30, 1.25), nullptr);
    EXPECT_EQ(host.takeLog(), forEachParm("getParm ", " at 1.25"));
}

TEST_P(NodeFrame, RenderingStartsAndEndsWithoutMore) {
    EXPECT_EQ(node.render.init(node.instance, kInitRender), nullptr);
    EXPECT_EQ(host.takeLog(), facts.initLog);
    node.render.cleanup(node.instance);
    EXPECT_EQ(host.takeLog(), Lines{});
}

TEST_P(NodeFrame, ACopyHasTheSettings) {
    TestNode other(host, facts.activate, facts.interface, "other");
    int value = 3;
    for (const ControlFacts &control : integers()) node.set(control.id, value++);
    host.takeLog();
    EXPECT_EQ(node.ops.copy(other.instance, node.instance), nullptr);
    Lines copies;
    for (const ParmFacts &parm : facts.parms)
        copies.push_back(std::string("copyParm other/") + parm.channel + " <- node/" + parm.channel);
    EXPECT_EQ(host.takeLog(), copies) << "and stored values wait for the next frame";
    for (const ControlFacts &control : integers())
        EXPECT_EQ(other.integer(control.id), node.integer(control.id)) << control.label;
}

// ---- Saving and loading ----

TEST_P(NodeFrame, WritesItsSettingsInOrder) {
    RecordedState state;
    EXPECT_EQ(node.ops.save(node.instance, state.save()), nullptr);
    EXPECT_EQ(state.lines(), facts.saved);
}

TEST_P(NodeFrame, StopsWritingAtTheFirstError) {
    const auto isParm = [](const std::string &line) { return line.rfind("parm ", 0) == 0; };
    auto place = facts.saved.begin();
    for (size_t failing = 0; failing < facts.parms.size(); ++failing, ++place) {
        place = std::find_if(place, facts.saved.end(), isParm);
        RecordedState state;
        host.parmsSaved = 0;
        host.failingSave = static_cast<int>(failing);
        EXPECT_EQ(node.ops.save(node.instance, state.save()), FakeHost::kSaveError);
        EXPECT_EQ(state.lines(), Lines(facts.saved.begin(), place));
    }
}

TEST_P(NodeFrame, ReadsItsSettingsBackAndThenItsValues) {
    TestNode other(host, facts.activate, facts.interface, "other");
    for (const ParmFacts &parm : facts.parms) node.parm(parm.channel).value[0] = 7.5;
    RecordedState state;
    ASSERT_EQ(node.ops.save(node.instance, state.save()), nullptr);
    host.takeLog();
    EXPECT_EQ(other.ops.load(other.instance, state.load()), nullptr);
    EXPECT_EQ(host.takeLog(), joined({forEachParm("loadParm "), forEachParm("getParm ", " at 0")}));
    for (const ParmFacts &parm : facts.parms) EXPECT_EQ(other.parm(parm.channel).value[0], 7.5) << parm.channel;
}

TEST_P(NodeFrame, StopsReadingAtTheFirstErrorWithoutReadingValues) {
    RecordedState state;
    ASSERT_EQ(node.ops.save(node.instance, state.save()), nullptr);
    for (size_t failing = 0; failing < facts.parms.size(); ++failing) {
        host.parmsLoaded = 0;
        host.failingLoad = static_cast<int>(failing);
        host.takeLog();
        EXPECT_EQ(node.ops.load(node.instance, state.load()), FakeHost::kLoadError);
        Lines loads = forEachParm("loadParm ");
        loads.resize(failing + 1);
        EXPECT_EQ(host.takeLog(), loads);
    }
}

TEST_P(NodeFrame, KeepsSixteenBitsOfAnInteger) {
    TestNode other(host, facts.activate, facts.interface, "other");
    for (const int first : {40000, 70000, -40000}) {
        int value = first;
        for (const ControlFacts &control : integers()) node.set(control.id, value++);
        RecordedState state;
        ASSERT_EQ(node.ops.save(node.instance, state.save()), nullptr);
        ASSERT_EQ(other.ops.load(other.instance, state.load()), nullptr);
        value = first == 40000 ? -25536 : first == 70000 ? 4464 : 25536;
        for (const ControlFacts &control : integers()) EXPECT_EQ(other.integer(control.id), value++) << control.label;
    }
}

// ---- The panel ----

TEST_P(NodePanel, NamesItsValuesInOrder) {
    const HostPanelValue *value = shown()->values;
    for (const ControlFacts &control : facts.panel) {
        EXPECT_EQ(value->id, control.id);
        EXPECT_STREQ(value->label, control.label);
        EXPECT_STREQ(value->type, control.valueType);
        ++value;
    }
    EXPECT_EQ(value->id, 0u);
    EXPECT_EQ(value->label, nullptr);
    EXPECT_EQ(value->type, nullptr);
}

TEST_P(NodePanel, PlacesItsControlsInOrder) {
    const HostHint *words = shown()->hints;
    const std::vector<Hint> added = hintsWith(kHintAddControl, words), labels = hintsWith(kHintLabel, words);
    ASSERT_EQ(added.size(), facts.panel.size());
    ASSERT_GE(labels.size(), facts.panel.size());
    for (size_t i = 0; i < added.size(); ++i) {
        EXPECT_EQ(added[i].arguments[0].word, facts.panel[i].id);
        EXPECT_STREQ(added[i].arguments[1].text, facts.panel[i].control);
        EXPECT_EQ(added[i].arguments[2].word, facts.panel[i].id);
        EXPECT_EQ(labels[i].arguments[0].word, facts.panel[i].id);
        EXPECT_STREQ(labels[i].arguments[1].text, facts.panel[i].label);
    }
    const std::vector<Hint> all = hintsOf(words);
    EXPECT_EQ(all.front().tag, kHintChangeNotify);
    EXPECT_EQ(all.back().tag, kHintDestroyNotify);
}

TEST_P(NodePanel, IsMadeOnceInOrder) {
    const HostPanel *panel = node.panel();
    EXPECT_EQ(host.takeLog(), (Lines{"lookup Instance Update", "lookup LWXPanel", "createPanel 1", "hint 0", "describe",
                                     "viewInstance", "setData 0"}));
    EXPECT_EQ(panel->viewed, node.instance);
    EXPECT_EQ(node.panel(), panel);
    EXPECT_EQ(host.takeLog(), (Lines{"lookup Instance Update", "lookup LWXPanel"}));
}

TEST_P(NodePanel, ShowsEachValueWhileNothingFeedsIt) {
    const HostPanel *panel = shown();
    for (const ControlFacts &control : facts.panel) {
        SCOPED_TRACE(control.id);
        const void *value = panel->get(node.instance, control.id);
        ASSERT_NE(value, nullptr);
        if (control.channel) {
            EXPECT_EQ(value, &node.parm(control.channel));
        } else
            EXPECT_EQ(*static_cast<const int *>(value), control.initial);
        for (const ControlFacts &other : facts.panel)
            if (other.input) node.connect(other.input, 1);
        EXPECT_EQ(panel->get(node.instance, control.id), control.input ? nullptr : value);
        if (control.input) node.disconnect(control.input);
        EXPECT_EQ(panel->get(node.instance, control.id), value);
        for (const ControlFacts &other : facts.panel)
            if (other.input) node.disconnect(other.input);
    }
}

TEST_P(NodePanel, SetsIntegersAndLeavesTheRestToTheHost) {
    const HostPanel *panel = shown();
    int next = 3;
    for (const ControlFacts &control : facts.panel) {
        double untouched[3] = {9, 9, 9};
        EXPECT_EQ(panel->set(node.instance, control.id, control.channel ? static_cast<void *>(untouched) : &next), 1);
        if (control.channel) continue;
        EXPECT_EQ(node.integer(control.id), next) << control.label;
        ++next;
    }
    for (const ParmFacts &parm : facts.parms)
        EXPECT_TRUE(std::equal(parm.initial.begin(), parm.initial.end(), node.parm(parm.channel).value));
    int value = 1;
    for (const unsigned int id :
         {0u, 1u, 0x8000u, facts.panel.back().id + 1, facts.panel.back().id + 2, 0x9001u, 0x9002u, 0xffffffffu}) {
        EXPECT_EQ(panel->set(node.instance, id, &value), 0) << id;
        EXPECT_EQ(panel->get(node.instance, id), nullptr) << id;
    }
}

TEST_P(NodePanel, TellsOfChanges) {
    HostPanel *panel = shown();
    HostPanelChange *changed = hintsWith(kHintChangeNotify, panel->hints)[0].arguments[0].change;
    for (const ControlFacts &control : facts.panel) {
        EXPECT_EQ(changed(panel, control.id, control.id, kEventChanging), 0);
        EXPECT_EQ(host.takeLog(), (Lines{"getData 0", "updatePreview node"}));
        host.updated.clear();
        EXPECT_EQ(changed(panel, control.id, control.id, kEventSet), 0);
        EXPECT_EQ(host.takeLog(), (Lines{"getData 0", "instanceUpdate NodeHandler"}));
        EXPECT_EQ(host.lastUpdated(), node.instance);
        for (const int event : {0, 3, 4, 5}) {
            EXPECT_EQ(changed(panel, control.id, control.id, event), 0);
            EXPECT_EQ(host.takeLog(), (Lines{"getData 0"}));
        }
    }
}

TEST_P(NodePanel, EveryInputTellsOfItsConnection) {
    const HostPanel *panel = shown();
    int refreshes = panel->refreshes;
    for (HostInput &input : host.inputs) {
        for (const int event : {0, 1, 3}) {
            EXPECT_EQ(input.event(node.instance, &input, event, 0), 1);
            EXPECT_EQ(host.takeLog(), (Lines{"refresh"})) << input.name;
            EXPECT_EQ(panel->refreshes, ++refreshes);
        }
        host.updated.clear();
        EXPECT_EQ(input.event(node.instance, &input, kInputSourceDestroyed, 0), 1);
        EXPECT_EQ(host.takeLog(), (Lines{"refresh", "instanceUpdate NodeHandler"})) << input.name;
        EXPECT_EQ(panel->refreshes, ++refreshes);
        EXPECT_EQ(host.lastUpdated(), node.instance);
    }
}

} // namespace
} // namespace velm::plugin
