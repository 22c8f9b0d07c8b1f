// What a network tells its observers.
#include "tests/graph/test_nodes.h"

#include "host/services/services.h"
#include "host/state/load_state.h"
#include "host/state/save_state.h"

#include <optional>

namespace velm::host::test {
namespace {

using Lines = std::vector<std::string>;

std::string nameOf(const HostOutput &output, const HostInput &input) {
    return output.node->name + "." + output.name + " -> " + input.node->name + "." + input.name;
}

// Records the notifications of a network as lines.
struct Recorder final : NetworkObserver {
    explicit Recorder(Network &network) : watching(std::in_place, network.observers(), *this) {}

    void nodeAdded(HostNode &node) override { lines.push_back("added " + node.name); }
    void nodeRemoved(HostNode &node) override {
        lines.push_back("removed " + node.name + (node.instance ? "" : " without instance"));
    }
    void nodeRenamed(HostNode &node, const std::string &before) override {
        lines.push_back("renamed " + before + " to " + node.name);
    }
    void socketsChanged(HostNode &node) override { lines.push_back("sockets of " + node.name); }
    void connected(HostOutput &output, HostInput &input) override { lines.push_back("made " + nameOf(output, input)); }
    void disconnected(HostOutput &output, HostInput &input) override {
        lines.push_back("broke " + nameOf(output, input));
    }
    void lookChanged(HostNode &node) override { lines.push_back("look of " + node.name); }
    void previewRequested(HostNode &node) override { lines.push_back("preview of " + node.name); }
    void networkDestroyed() override { lines.push_back("destroyed"); }

    Lines take() { return std::exchange(lines, {}); }

    Lines lines;
    std::optional<Observation<NetworkObserver>> watching;
};

class ObserverTest : public GraphTest {
  protected:
    ObserverTest() { addRootInputs(network); }
    void TearDown() override {
        network.clear();
        GraphTest::TearDown();
    }
    Network network{"Net", "Net", nullptr, nullptr};
};

TEST_F(ObserverTest, HearsOfNodesAndConnections) {
    Recorder recorder(network);
    HostNode &a = add(network, "A");
    add(network, "B");
    EXPECT_EQ(recorder.take(), (Lines{"added A", "added B"})) << "and nothing while they were being created";
    network.connect("A", "Scalar", "B", "Scalar");
    network.connect("B", "Scalar", "Net", "Scalar");
    network.connect("A", "Scalar", "Net", "Scalar");
    EXPECT_EQ(recorder.take(), (Lines{"made A.Scalar -> B.Scalar", "made B.Scalar -> Net.Scalar",
                                      "broke B.Scalar -> Net.Scalar", "made A.Scalar -> Net.Scalar"}));
    network.disconnect(*network.root().findInput("Scalar"));
    network.rename(a, "B");
    network.rename(a, "B (2)");
    EXPECT_EQ(recorder.take(), (Lines{"broke A.Scalar -> Net.Scalar", "renamed A to B (2)"}));
    network.destroyNode(a);
    EXPECT_EQ(recorder.take(), (Lines{"broke B (2).Scalar -> B.Scalar", "removed B (2)"}));
}

TEST_F(ObserverTest, HearsOfLooksAndPreviews) {
    HostNode &a = add(network, "A");
    Recorder recorder(network);
    network.setLook(a, {.at = {3, 4}, .mode = 1, .preview = "", .comment = "here"});
    network.setLook(a, a.look);
    EXPECT_EQ(recorder.take(), Lines{"look of A"}) << "once: the second look is the same";
    nodeFuncs()->setColourRgb(&a, 1, 2, 3);
    nodeFuncs()->setColourRgb(&a, 1, 2, 3);
    nodeFuncs()->setPreviewType(&network.root(), kPreviewOff);
    EXPECT_EQ(recorder.take(), (Lines{"look of A", "look of Net"}));
    nodeFuncs()->updatePreview(&a);
    nodeFuncs()->updatePreview(&a);
    EXPECT_EQ(recorder.take(), (Lines{"preview of A", "preview of A"}));
}

TEST_F(ObserverTest, HearsOfInputsAndOutputs) {
    HostNode &a = add(network, "A");
    Recorder recorder(network);
    HostInput *input = nodeInputFuncs()->create(&a, kConnectScalar, "More", nullptr);
    network.connect("A", "Scalar", "Net", "Scalar");
    nodeInputFuncs()->destroy(&a, input);
    nodeOutputFuncs()->destroy(&a, a.findOutput("Scalar"));
    EXPECT_EQ(recorder.take(), (Lines{"sockets of A", "made A.Scalar -> Net.Scalar", "sockets of A",
                                      "broke A.Scalar -> Net.Scalar", "sockets of A"}));
}

TEST_F(ObserverTest, HearsOfALoadedNetworkInOrder) {
    Network source("Source", "Source", nullptr, nullptr);
    addRootInputs(source);
    source.setLook(add(source, "Net"), {.at = {1, 2}, .mode = 1, .preview = "", .comment = ""});
    source.connect("Net", "Scalar", "Source", "Scalar");
    StateWriter writer(kStateBinary);
    source.save(*writer.state());
    source.clear();
    const std::string bytes = writer.finish();
    add(network, "Old");
    Recorder recorder(network);
    StateReader reader(kStateBinary, bytes, "network");
    network.load(*reader.state());
    EXPECT_EQ(recorder.take(), (Lines{"removed Old", "added Net", "look of Net", "renamed Net to Net (2)",
                                      "made Net.Scalar -> Net (2).Scalar"}));
}

TEST_F(ObserverTest, OutlivesItsNetwork) {
    std::optional<Network> brief(std::in_place, "Brief", "Brief", nullptr, nullptr);
    Recorder recorder(*brief);
    add(*brief, "A");
    brief.reset();
    EXPECT_EQ(recorder.take(), (Lines{"added A", "removed A", "destroyed"}));
}

// An observer that changes the network and unregisters itself while it is called.
struct Meddler final : NetworkObserver {
    explicit Meddler(Network &watched) : network(watched), watching(std::in_place, watched.observers(), *this) {}
    void nodeAdded(HostNode &node) override {
        watching.reset();
        network.rename(node, "Renamed");
    }
    Network &network;
    std::optional<Observation<NetworkObserver>> watching;
};

TEST_F(ObserverTest, MayChangeTheNetworkWhileItIsCalled) {
    Meddler meddler(network);
    Recorder recorder(network);
    add(network, "A");
    add(network, "B");
    EXPECT_EQ(recorder.take(), (Lines{"renamed A to Renamed", "added Renamed", "added B"}));
}

} // namespace
} // namespace velm::host::test
