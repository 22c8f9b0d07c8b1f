// Render Info: the class, and the facts that it gives.
#include "tests/nodes/node_frame.h"

#include "module/servers.h"
#include "tests/module/fake_scene.h"
#include "tests/module/recorded_state.h"

#include <array>
#include <thread>

namespace velm::plugin {
namespace {

const NodeFacts kFacts = {
    .name = "Render Info",
    .menu = "Velm's Nodes/Info",
    .activate = RenderInfo_Activate,
    .hasGroup = false,
    .outputs = {"Render X 4", "Render Y 4", "Start Frame 4", "End Frame 4", "Current Frame 4", "Rendered Frames 4",
                "Ray Recursion Limit 4"},
    .initLog = {"lookup LW Scene Info 5"},
};
VELM_NODE_WITHOUT_PANEL(RenderInfo, kFacts);

// The activation in a host with a scene.
int activateInScene(int version, HostLookup *, void *local, void *serverData) {
    return RenderInfo_Activate(version, FakeScene::lookup, local, serverData);
}

class RenderInfo : public testing::Test {
  protected:
    FakeHost host;
    FakeScene scene;
    TestNode node{host, activateInScene, nullptr};
    ShadingSample sample = plainSample();

    RenderInfo() {
        scene.info.firstFrame = 10;
        scene.info.lastFrame = 250;
        scene.info.recursionDepth = 16;
        forgetScene();
    }
    ~RenderInfo() override { forgetScene(); }

    // The class stores the scene service, not the node: starting without a scene clears it.
    void forgetScene() {
        host.missing = {HOST_SCENE_INFO};
        node.render.init(node.instance, kInitRender);
        host.missing = {};
        host.takeLog();
    }
    int fact(const std::string &output) { return node.evaluate(output, sample).integer; }
    void frame(int number) { EXPECT_EQ(node.render.newTime(node.instance, number, number / 25.0), nullptr); }
};

TEST_F(RenderInfo, HasNoPanelToBeActivated) {
    EXPECT_EQ(serverOf(HOST_CLASS_NODE_INTERFACE, "Velm Render Info")->activate, nullptr);
    EXPECT_EQ(node.inputs(), Lines{});
}

TEST_F(RenderInfo, TellsTheSamplesPixel) {
    sample.pixelX = 319;
    sample.pixelY = -7;
    EXPECT_EQ(fact("Render X"), 319);
    EXPECT_EQ(fact("Render Y"), -7);
}

TEST_F(RenderInfo, KnowsNoSceneBeforeTheFirstRender) {
    for (const char *output : {"Start Frame", "End Frame", "Ray Recursion Limit", "Current Frame", "Rendered Frames"}) {
        const HostNodeValue value = node.evaluate(output, sample);
        EXPECT_EQ(value.integer, 0) << output;
        EXPECT_EQ(value.timesSet, 1) << output;
    }
}

TEST_F(RenderInfo, TellsTheScenesRangeAndDepth) {
    EXPECT_EQ(node.render.init(node.instance, kInitRender), nullptr);
    EXPECT_EQ(host.takeLog(), (Lines{"lookup LW Scene Info 5"}));
    EXPECT_EQ(fact("Start Frame"), 10);
    EXPECT_EQ(fact("End Frame"), 250);
    EXPECT_EQ(fact("Ray Recursion Limit"), 16);
    scene.info.lastFrame = 300;
    EXPECT_EQ(fact("End Frame"), 300) << "read at each sample";
}

TEST_F(RenderInfo, LooksTheSceneUpAnewAtEachRenderForAllNodes) {
    TestNode other(host, activateInScene, nullptr, "other");
    node.render.init(node.instance, kInitRender);
    EXPECT_EQ(other.evaluate("Start Frame", sample).integer, 10) << "what one has found, all know";
    host.missing = {HOST_SCENE_INFO};
    other.render.init(other.instance, kInitRender);
    EXPECT_EQ(fact("Start Frame"), 0);
}

TEST_F(RenderInfo, CountsDistinctFrames) {
    node.render.init(node.instance, kInitRender);
    const int frames[][2] = {{5, 0}, {6, 1}, {7, 2}, {7, 2}, {9, 3}, {5, 4}, {5, 4}};
    for (const auto &[number, rendered] : frames) {
        frame(number);
        EXPECT_EQ(fact("Current Frame"), number);
        EXPECT_EQ(fact("Rendered Frames"), rendered);
    }
}

TEST_F(RenderInfo, CountsAfreshInEachRender) {
    frame(5), frame(6);
    EXPECT_EQ(fact("Rendered Frames"), 1) << "a creation starts it too";
    node.render.init(node.instance, kInitRender);
    EXPECT_EQ(fact("Current Frame"), 6) << "until the first frame";
    EXPECT_EQ(fact("Rendered Frames"), 1);
    frame(6);
    EXPECT_EQ(fact("Rendered Frames"), 0);
    frame(8);
    EXPECT_EQ(fact("Current Frame"), 8);
    EXPECT_EQ(fact("Rendered Frames"), 1);
    node.render.cleanup(node.instance);
    EXPECT_EQ(fact("Rendered Frames"), 1);
}

TEST_F(RenderInfo, TheFirstFrameOfANewNodeCountsAsNone) {
    TestNode fresh(host, activateInScene, nullptr, "fresh");
    fresh.render.newTime(fresh.instance, 5, 0.2);
    EXPECT_EQ(fresh.evaluate("Rendered Frames", sample).integer, 0);
    fresh.render.newTime(fresh.instance, 6, 0.24);
    EXPECT_EQ(fresh.evaluate("Rendered Frames", sample).integer, 1);
}

TEST_F(RenderInfo, SetsNothingForAnOutputThatIsNotItsOwn) {
    node.render.init(node.instance, kInitRender);
    EXPECT_EQ(node.evaluateStranger(kConnectInteger, sample).timesSet, 0);
}

TEST_F(RenderInfo, HasNothingToKeep) {
    frame(3), frame(4);
    TestNode other(host, activateInScene, nullptr, "other");
    EXPECT_EQ(other.ops.copy(other.instance, node.instance), nullptr);
    EXPECT_EQ(other.evaluate("Current Frame", sample).integer, 0);
    RecordedState state;
    EXPECT_EQ(node.ops.save(node.instance, state.save()), nullptr);
    EXPECT_TRUE(state.entries.empty());
    state.integer(77);
    EXPECT_EQ(node.ops.load(node.instance, state.load()), nullptr);
    EXPECT_NE(state.take(RecordedState::Entry::Kind::integer), nullptr) << "not read";
    EXPECT_EQ(fact("Current Frame"), 4);
}

TEST_F(RenderInfo, SetsEachOutputOnce) {
    host.logsEvaluation = true;
    for (const std::string &output : kFacts.outputs) {
        node.evaluate(output.substr(0, output.size() - 2), sample);
        EXPECT_EQ(host.takeLog(), (Lines{"setValue"})) << output;
    }
}

class RenderInfoThreaded : public RenderInfo {};

TEST_F(RenderInfoThreaded, EveryThreadSeesItsOwnPixelAndTheOneScene) {
    node.render.init(node.instance, kInitRender);
    frame(12);
    std::array<int, kMaxThreads> wrong{};
    std::vector<std::thread> threads;
    for (int i = 0; i < kMaxThreads; ++i)
        threads.emplace_back([&, i] {
            ShadingSample own = plainSample();
            own.threadIndex = i;
            for (own.pixelX = i * 1000; own.pixelX < i * 1000 + 500; ++own.pixelX)
                wrong[static_cast<size_t>(i)] += node.evaluate("Render X", own).integer != own.pixelX ||
                                                 node.evaluate("Current Frame", own).integer != 12 ||
                                                 node.evaluate("End Frame", own).integer != 250;
        });
    for (std::thread &thread : threads) thread.join();
    for (const int count : wrong) EXPECT_EQ(count, 0);
}

} // namespace
} // namespace velm::plugin
