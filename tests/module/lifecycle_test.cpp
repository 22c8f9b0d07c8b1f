// The life of an instance between creation and destruction: copying, the start and end of a render, new frames, and
// changes of connections.
#include "tests/module/test_node.h"
#include "tests/module/test_nodes.h"

#include <cstring>
#include <gtest/gtest.h>

namespace velm::plugin {
namespace {

using Lines = std::vector<std::string>;

class Lifecycle : public testing::Test {
  protected:
    FakeHost host;

    Lifecycle() { hookAnswers = {}; }
    static Everything &everything(TestNode &node) { return *static_cast<Everything *>(node.instance); }
};

// ---- Copying ----

TEST_F(Lifecycle, CopiesParametersInOrder) {
    TestNode from(host, "Velm Counter", "from"), to(host, "Velm Counter", "to");
    EXPECT_EQ(to.ops.copy(to.instance, from.instance), nullptr);
    EXPECT_EQ(host.takeLog(),
              (Lines{"copyParm to/Start Value <- from/Start Value", "copyParm to/Increase Value <- from/Increase Value",
                     "copyParm to/A <- from/A", "copyParm to/B <- from/B"}));
}

TEST_F(Lifecycle, CopiesSettingsAndNothingElse) {
    TestNode from(host, Everything_Activate, Everything_Interface, "from");
    TestNode to(host, Everything_Activate, Everything_Interface, "to");
    everything(from).kind = 1;
    everything(from).count = 70000;
    everything(from).on = 0;
    everything(from).ray = 9;
    everything(from).serial = 5;
    everything(to).serial = 6;
    std::strcpy(everything(from).name, "Walnut");
    from.set("Level Channel", 8.0);
    everything(from).fresh[3] = 0;
    from.parm("Normal").value[0] = 5;
    const Everything before = everything(to);

    EXPECT_EQ(to.ops.copy(to.instance, from.instance), nullptr);
    EXPECT_EQ(host.takeLog(),
              (Lines{"copyParm to/Level Channel <- from/Level Channel", "copyParm to/Last <- from/Last",
                     "copyParm to/Place <- from/Place", "copyParm to/Tint <- from/Tint", "hook copied"}));
    EXPECT_EQ(everything(to).kind, 1);
    EXPECT_EQ(everything(to).count, 70000) << "all 32 bits";
    EXPECT_EQ(everything(to).on, 0);
    EXPECT_EQ(everything(to).ray, 9);
    EXPECT_EQ(everything(to).serial, 6) << "a copy keeps its own";
    EXPECT_STREQ(everything(to).name, "Walnut");
    EXPECT_EQ(to.parm("Level Channel").value[0], 8.0);
    EXPECT_EQ(everything(to).level.value, before.level.value) << "stored values wait for the next frame";
    EXPECT_EQ(everything(to).fresh[3], 1) << "the state of the render threads stays";
    EXPECT_EQ(to.parm("Normal").value[0], 0) << "a bare vector is left alone";
    EXPECT_EQ(everything(to).node, before.node);
    EXPECT_EQ(everything(to).group, before.group);
    EXPECT_EQ(everything(to).level.parm, before.level.parm);
    EXPECT_EQ(everything(to).kindInput, before.kindInput);
}

TEST_F(Lifecycle, CopyingGivesTheUnitsOwnError) {
    TestNode from(host, Everything_Activate, nullptr, "from"), to(host, Everything_Activate, nullptr, "to");
    hookAnswers.copied = "cannot copy";
    EXPECT_STREQ(to.ops.copy(to.instance, from.instance), "cannot copy");
}

TEST_F(Lifecycle, CopyingHeedsNoErrorOfAParameter) {
    TestNode from(host, "Velm Counter", "from"), to(host, "Velm Counter", "to");
    host.copiesFail = true;
    EXPECT_EQ(to.ops.copy(to.instance, from.instance), nullptr);
    EXPECT_EQ(host.takeLog().size(), 4u) << "and the others are copied all the same";
}

TEST_F(Lifecycle, CopiesAParameterThatThereIsNotAsItIs) {
    TestNode from(host, "Velm Counter", "from");
    host.failingParms = {host.parmsAsked};
    TestNode to(host, "Velm Counter", "to");
    EXPECT_EQ(to.ops.copy(to.instance, from.instance), nullptr);
    EXPECT_EQ(host.takeLog().front(), "copyParm null <- from/Start Value");
}

// ---- Rendering ----

TEST_F(Lifecycle, ARenderStartsFresh) {
    TestNode node(host, Everything_Activate, nullptr);
    for (int &fresh : everything(node).fresh) fresh = 0;
    EXPECT_EQ(node.render.init(node.instance, kInitRender), nullptr);
    for (const int fresh : everything(node).fresh) EXPECT_EQ(fresh, 1);
    EXPECT_EQ(everything(node).kind, 0) << "nothing beyond the flags";
    EXPECT_EQ(host.takeLog(), (Lines{"hook init 1"})) << "parameters are read at frames";
    node.render.init(node.instance, kInitPreview);
    EXPECT_EQ(host.takeLog(), (Lines{"hook init 0"}));
}

TEST_F(Lifecycle, AFrameReadsEveryParameterAtItsTime) {
    TestNode node(host, "Velm Counter");
    EXPECT_EQ(node.render.newTime(node.instance, 60, 2.5), nullptr);
    EXPECT_EQ(host.takeLog(), (Lines{"getParm Start Value at 2.5", "getParm Increase Value at 2.5", "getParm A at 2.5",
                                     "getParm B at 2.5"}));
}

TEST_F(Lifecycle, AFrameStoresWhatItReads) {
    TestNode node(host, Everything_Activate, nullptr);
    node.parm("Level Channel").overTime = [](double time, double *value) { value[0] = 10 * time; };
    node.parm("Tint").overTime = [](double time, double *value) {
        for (int i = 0; i < 3; ++i) value[i] = time + i;
    };
    for (int &fresh : everything(node).fresh) fresh = 0;
    EXPECT_EQ(node.render.newTime(node.instance, 7, 0.5), nullptr);
    EXPECT_EQ(host.takeLog(), (Lines{"getParm Level Channel at 0.5", "getParm Last at 0.5", "getParm Place at 0.5",
                                     "getParm Tint at 0.5", "hook newTime 7 0.5"}))
        << "not the bare vector";
    EXPECT_EQ(everything(node).level.value, 5.0);
    EXPECT_EQ(everything(node).level.parm, &node.parm("Level Channel")) << "one component does not spill over";
    EXPECT_EQ(everything(node).last.parm, &node.parm("Last"));
    for (int i = 0; i < 3; ++i) EXPECT_EQ(everything(node).tint.value[i], 0.5 + i);
    for (const int fresh : everything(node).fresh) EXPECT_EQ(fresh, 0) << "counts go on from frame to frame";
}

TEST_F(Lifecycle, ValuesCanBeReadOnTheirOwn) {
    TestNode node(host, Everything_Activate, nullptr);
    Everything_get_vpValues(node.instance, 1.25);
    EXPECT_EQ(host.takeLog(), (Lines{"getParm Level Channel at 1.25", "getParm Last at 1.25", "getParm Place at 1.25",
                                     "getParm Tint at 1.25"}));
}

TEST_F(Lifecycle, AFrameHandsAParameterThatThereIsNotOnAsItIs) {
    host.failingParms = {0};
    TestNode node(host, "Velm Counter");
    EXPECT_EQ(node.render.newTime(node.instance, 0, 0.0), nullptr);
    EXPECT_EQ(host.takeLog().front(), "getParm null at 0");
}

TEST_F(Lifecycle, RenderCallbacksGiveTheUnitsOwnErrors) {
    TestNode node(host, Everything_Activate, nullptr);
    hookAnswers.init = "cannot start";
    hookAnswers.newTime = "no such frame";
    EXPECT_STREQ(node.render.init(node.instance, kInitRender), "cannot start");
    EXPECT_STREQ(node.render.newTime(node.instance, 0, 0), "no such frame");
}

TEST_F(Lifecycle, CleaningUpAsksTheUnitOnly) {
    TestNode node(host, Everything_Activate, nullptr);
    const auto bytes = [&] { return std::string(static_cast<const char *>(node.instance), sizeof(Everything)); };
    const std::string before = bytes();
    node.render.cleanup(node.instance);
    EXPECT_EQ(host.takeLog(), (Lines{"hook cleanup"}));
    EXPECT_EQ(bytes(), before);
    TestNode counter(host, "Velm Counter");
    counter.render.cleanup(counter.instance);
    EXPECT_EQ(host.takeLog(), Lines{});
}

TEST_F(Lifecycle, ANodeWithoutParametersGoesThroughItAll) {
    TestNode node(host, Bare_Activate, nullptr, "one"), other(host, Bare_Activate, nullptr, "two");
    EXPECT_EQ(node.ops.copy(node.instance, other.instance), nullptr);
    EXPECT_EQ(node.render.init(node.instance, kInitRender), nullptr);
    EXPECT_EQ(node.render.newTime(node.instance, 1, 1.0), nullptr);
    node.render.cleanup(node.instance);
    EXPECT_EQ(host.takeLog(), Lines{});
    ShadingSample sample = plainSample();
    sample.pixelX = 17;
    EXPECT_EQ(node.evaluate("Pixel", sample).integer, 17);
}

// ---- Connections ----

class InputEvent : public Lifecycle {
  protected:
    TestNode node{host, Everything_Activate, Everything_Interface};

    int tell(int event) {
        HostInput &input = node.input("In");
        return input.event(node.instance, &input, event, event == kInputConnected ? kConnectScalar : 0);
    }
};

TEST_F(InputEvent, TellsNobodyWhileThereIsNeitherAPanelNorAService) {
    everythingServices.lwupdate = nullptr;
    for (const int event : {0, 1, 2, 3, -1}) EXPECT_EQ(tell(event), 1);
    EXPECT_EQ(host.takeLog(), Lines{});
}

TEST_F(InputEvent, RefreshesThePanelThatThereIsAtEveryEvent) {
    const HostPanel *panel = node.panel();
    everythingServices.lwupdate = nullptr;
    host.takeLog();
    for (const int event : {0, 1, 2}) EXPECT_EQ(tell(event), 1);
    EXPECT_EQ(host.takeLog(), (Lines{"refresh", "refresh", "refresh"}));
    EXPECT_EQ(panel->refreshes, 3);
}

TEST_F(InputEvent, TellsTheHostOfADestroyedSource) {
    TestNode shown(host, Everything_Activate, Everything_Interface, "shown");
    shown.panel(); // of another node: the class has the panel service, but this node has no panel
    host.takeLog();
    for (const int event : {0, 1, 3, 4}) EXPECT_EQ(tell(event), 1);
    EXPECT_EQ(host.takeLog(), Lines{});
    EXPECT_EQ(tell(kInputSourceDestroyed), 1);
    EXPECT_EQ(host.takeLog(), (Lines{"instanceUpdate NodeHandler"}));
    EXPECT_EQ(host.updated, std::vector<void *>{node.instance});
}

TEST_F(InputEvent, RefreshesBeforeItTells) {
    node.panel();
    host.takeLog();
    EXPECT_EQ(tell(kInputSourceDestroyed), 1);
    EXPECT_EQ(host.takeLog(), (Lines{"refresh", "instanceUpdate NodeHandler"}));
}

TEST_F(InputEvent, OfAUnitWithoutAPanelOnlyTellsTheHost) {
    TestNode plain(host, FullBlocks_Activate, nullptr, "plain");
    fullBlocksServices.lwupdate =
        reinterpret_cast<HostInstanceUpdate *>(FakeHost::lookup(HOST_INSTANCE_UPDATE, kUseTransient));
    HostInput &input = plain.input("Unsaved");
    host.takeLog();
    for (const int event : {0, 1, 2, 3}) EXPECT_EQ(input.event(plain.instance, &input, event, 0), 1);
    EXPECT_EQ(host.takeLog(), Lines{"instanceUpdate NodeHandler"});
}

TEST_F(InputEvent, IsWiredIntoTheModulesNodes) {
    for (const char *server : {"Velm Counter", "Velm Ambient Occlusion"}) {
        TestNode shown(host, server);
        shown.panel();
        host.takeLog();
        for (HostInput &input : host.inputs)
            if (input.node == &shown.node) {
                EXPECT_EQ(input.event(shown.instance, &input, 2, 0), 1);
            }
        const Lines log = host.takeLog();
        EXPECT_EQ(log.size(), 2 * shown.inputs().size()) << server;
    }
}

} // namespace
} // namespace velm::plugin
