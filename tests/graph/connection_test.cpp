// Making and breaking connections, and the events that nodes receive.
#include "tests/graph/test_nodes.h"

#include "host/services/services.h"

#include <algorithm>
#include <chrono>

namespace velm::host::test {
namespace {

using Lines = std::vector<std::string>;

class ConnectionTest : public GraphTest {
  protected:
    ConnectionTest() : network("Net", "Net", nullptr, nullptr) {}
    void SetUp() override {
        GraphTest::SetUp();
        addRootInputs(network);
        for (const char *name : {"A", "B", "C", "D"}) add(network, name);
        journal().clear();
    }
    void TearDown() override {
        network.clear();
        GraphTest::TearDown();
    }
    void chain(const char *from, const char *to) { network.connect(from, "Scalar", to, "Scalar"); }
    template <class Act>
    static std::string errorOf(Act act) {
        try {
            act();
        } catch (const InputError &error) {
            return error.what();
        }
        return "no error";
    }

    Network network;
};

TEST_F(ConnectionTest, EventsGiveTheTypeOfTheOutput) {
    network.connect("A", "Color", "B", "Scalar");
    network.connect("A", "Integer", "B", "Vector");
    EXPECT_EQ(journal(), (Lines{"event B.Scalar connected 1", "event B.Vector connected 4"}));
}

TEST_F(ConnectionTest, ASecondConnectionReplacesTheFirst) {
    chain("A", "C");
    chain("B", "C");
    EXPECT_EQ(journal(),
              (Lines{"event C.Scalar connected 2", "event C.Scalar disconnected 0", "event C.Scalar connected 2"}));
    EXPECT_TRUE(network.node("A").findOutput("Scalar")->consumers.empty());
    EXPECT_EQ(network.node("C").findInput("Scalar")->source->node->name, "B");
}

TEST_F(ConnectionTest, RepeatingAConnectionHasNoEffect) {
    chain("A", "B");
    chain("A", "B");
    EXPECT_EQ(journal().size(), 1u);
}

TEST_F(ConnectionTest, DisconnectingSendsOneEvent) {
    chain("A", "B");
    HostInput *input = network.node("B").findInput("Scalar");
    nodeInputFuncs()->disconnect(input->node, input);
    nodeInputFuncs()->disconnect(input->node, input);
    EXPECT_EQ(journal(), (Lines{"event B.Scalar connected 2", "event B.Scalar disconnected 0"}));
    EXPECT_EQ(nodeInputFuncs()->isConnected(input), 0);
}

TEST_F(ConnectionTest, DestroyingANodeDisconnectsItsConsumersInOrder) {
    chain("A", "B");
    chain("A", "D");
    chain("A", "C");
    chain("D", "Net");
    journal().clear();
    network.destroyNode(network.node("A"));
    EXPECT_EQ(journal(), (Lines{"event B.Scalar orphaned 0", "event D.Scalar orphaned 0", "event C.Scalar orphaned 0",
                                "destroy A"}));
    EXPECT_EQ(network.node("B").findInput("Scalar")->source, nullptr);
    EXPECT_EQ(network.nodes().size(), 3u);
}

TEST_F(ConnectionTest, ADestroyedNodeReceivesNoEventsOfItsOwnInputs) {
    chain("A", "B");
    journal().clear();
    network.destroyNode(network.node("B"));
    EXPECT_EQ(journal(), Lines{"destroy B"});
    EXPECT_TRUE(network.node("A").findOutput("Scalar")->consumers.empty());
}

TEST_F(ConnectionTest, AnyOrderOfDestructionIsSafe) {
    std::vector<std::string> names{"A", "B", "C", "D"};
    do {
        Network net("Net", "Net", nullptr, nullptr);
        addRootInputs(net);
        for (const char *name : {"A", "B", "C", "D"}) add(net, name);
        for (const auto &[from, to] :
             std::vector<std::pair<const char *, const char *>>{{"A", "B"}, {"A", "C"}, {"B", "D"}, {"D", "Net"}})
            net.connect(from, "Scalar", to, "Scalar");
        net.connect("C", "Color", "D", "Color");
        for (const std::string &name : names) net.destroyNode(net.node(name));
        EXPECT_TRUE(net.nodes().empty());
        EXPECT_EQ(net.root().findInput("Scalar")->source, nullptr);
    } while (std::next_permutation(names.begin(), names.end()));
}

TEST_F(ConnectionTest, CyclesAreRefusedWithTheirPath) {
    chain("A", "B");
    chain("B", "C");
    chain("C", "D");
    EXPECT_EQ(errorOf([&] { chain("D", "A"); }),
              "cannot connect \"D.Scalar\" to \"A.Scalar\": it would close the cycle A -> B -> C -> D -> A");
    EXPECT_EQ(errorOf([&] { chain("A", "A"); }),
              "cannot connect \"A.Scalar\" to \"A.Scalar\": it would close the cycle A -> A");
    EXPECT_EQ(network.node("A").findInput("Scalar")->source, nullptr);
    EXPECT_EQ(errorOf([&] { chain("A", "D"); }), "no error");
}

// The time must not grow as the square of the number of nodes, in whichever order they are connected: this took
// minutes.
TEST_F(ConnectionTest, LongChainsTakeLittleTime) {
    constexpr int kNodes = 16000;
    constexpr std::chrono::seconds kMost{20}; // it takes less than a tenth of that, except under the sanitizers
    const auto start = std::chrono::steady_clock::now();
    for (const bool fromTheEnd : {false, true}) {
        Network net("Net", "Net", nullptr, nullptr);
        for (int i = 0; i < kNodes; ++i) add(net, "N");
        const auto &nodes = net.nodes();
        for (std::size_t i = 0; i + 1 < nodes.size(); ++i) {
            const std::size_t from = fromTheEnd ? nodes.size() - 2 - i : i;
            net.connect(*nodes[from]->findOutput("Scalar"), *nodes[from + 1]->findInput("Scalar"));
        }
        EXPECT_THROW(net.connect(*nodes.back()->findOutput("Scalar"), *nodes.front()->findInput("Scalar")), InputError);
        Network copy("Copy", "Copy", nullptr, nullptr);
        copy.copyFrom(net);
        EXPECT_EQ(copy.nodes().back()->findInput("Scalar")->source->node->name, nodes[kNodes - 2]->name);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, kMost);
}

TEST_F(ConnectionTest, NodesOfOtherNetworksAndTheRootFeedNothing) {
    Network other("Other", "Other", nullptr, nullptr);
    HostNode &stranger = add(other, "X");
    EXPECT_EQ(errorOf([&] { network.connect(*stranger.findOutput("Scalar"), *network.node("A").findInput("Scalar")); }),
              "cannot connect \"X.Scalar\" to \"A.Scalar\": they are not both nodes of \"Net\"");
    HostOutput *output = nodeOutputFuncs()->create(&network.root(), kConnectScalar, "Back");
    EXPECT_EQ(errorOf([&] { network.connect(*output, *network.node("A").findInput("Scalar")); }),
              "cannot connect \"Net.Back\" to \"A.Scalar\": the root node feeds nothing");
}

TEST_F(ConnectionTest, UnknownNamesSuggestTheNearestOnes) {
    EXPECT_EQ(errorOf([&] { network.connect("AA", "Scalar", "B", "Scalar"); }),
              "no node \"AA\" in \"Net\", there are \"Net\", \"A\", \"B\", \"C\" and \"D\"");
    EXPECT_EQ(errorOf([&] { network.connect("A", "Scaler", "B", "Scalar"); }),
              "node \"A\" has no output \"Scaler\", did you mean \"Scalar\"?");
    EXPECT_EQ(errorOf([&] { network.connect("A", "Scalar", "B", "Colour"); }),
              "node \"B\" has no input \"Colour\", did you mean \"Color\"?");
    EXPECT_EQ(errorOf([&] { network.connect("Net", "Scalar", "B", "Color"); }),
              "node \"Net\" has no output \"Scalar\", there are none");
}

TEST_F(ConnectionTest, TheServiceRemembersARefusalAsTheLastError) {
    chain("A", "B");
    nodeEditorFuncs()->connect(network.node("B").findOutput("Scalar"), network.node("A").findInput("Scalar"));
    EXPECT_EQ(network.node("A").findInput("Scalar")->source, nullptr);
    EXPECT_NE(network.lastError().find("A -> B -> A"), std::string::npos);
    nodeEditorFuncs()->connect(network.node("A").findOutput("Scalar"), network.node("C").findInput("Scalar"));
    EXPECT_EQ(network.node("C").findInput("Scalar")->source->node->name, "A");
}

TEST_F(ConnectionTest, DestroyedInputsAndOutputsAreDisconnected) {
    chain("A", "B");
    chain("A", "C");
    HostNode &b = network.node("B");
    nodeInputFuncs()->destroy(&b, b.findInput("Scalar"));
    EXPECT_EQ(b.findInput("Scalar"), nullptr);
    EXPECT_EQ(network.node("A").findOutput("Scalar")->consumers.size(), 1u);
    HostNode &a = network.node("A");
    journal().clear();
    nodeOutputFuncs()->destroy(&a, a.findOutput("Scalar"));
    EXPECT_EQ(journal(), Lines{"event C.Scalar disconnected 0"});
}

TEST_F(ConnectionTest, BothServicesIterateInOrder) {
    HostNode &a = network.node("A");
    const HostNodeInputFuncs &inputs = *nodeInputFuncs();
    Lines names;
    for (HostInput *input = inputs.first(&a); input; input = inputs.next(input)) names.push_back(input->name);
    EXPECT_EQ(names, (Lines{"Color", "Scalar", "Vector", "Integer", "Function", "Material"}));
    EXPECT_EQ(inputs.count(&a), 6);
    HostInput *second = inputs.byIndex(&a, 2);
    EXPECT_EQ(second->name, "Scalar");
    EXPECT_EQ(inputs.indexOf(second), 2);
    EXPECT_EQ(inputs.previous(second), inputs.first(&a));
    EXPECT_EQ(inputs.previous(inputs.first(&a)), nullptr);
    EXPECT_EQ(inputs.byIndex(&a, 0), nullptr);
    EXPECT_EQ(inputs.byIndex(&a, 7), nullptr);
    EXPECT_EQ(inputs.node(second), &a);
    const HostNodeOutputFuncs &outputs = *nodeOutputFuncs();
    EXPECT_EQ(outputs.count(&a), 6);
    HostOutput *third = outputs.next(outputs.byIndex(&a, 2));
    EXPECT_EQ(third->name, "Vector");
    EXPECT_EQ(outputs.indexOf(third), 3);
    EXPECT_EQ(outputs.previous(third)->name, "Scalar");
    EXPECT_EQ(outputs.first(&a)->name, "Color");
    EXPECT_EQ(outputs.next(outputs.byIndex(&a, 6)), nullptr);
    EXPECT_EQ(outputs.node(third), &a);
}

TEST_F(ConnectionTest, UnknownTypesCreateNoInputsAndOutputs) {
    EXPECT_EQ(nodeInputFuncs()->create(&network.root(), 0, "None", nullptr), nullptr);
    EXPECT_EQ(nodeOutputFuncs()->create(&network.root(), 7, "None"), nullptr);
    EXPECT_EQ(nodeInputFuncs()->count(&network.root()), 6);
}

} // namespace
} // namespace velm::host::test
