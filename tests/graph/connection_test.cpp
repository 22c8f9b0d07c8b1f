// Making and breaking connections, and what nodes hear of it.
#include "tests/graph/test_nodes.h"

#include "host/services/services.h"

#include <algorithm>

namespace velm::host::test {
namespace {

using Lines = std::vector<std::string>;

class ConnectionTest : public GraphTest {
  protected:
    ConnectionTest() : editor("Net", "Net", nullptr, nullptr) {}
    void SetUp() override {
        GraphTest::SetUp();
        addRootInputs(editor);
        for (const char *name : {"A", "B", "C", "D"}) add(editor, name);
        journal().clear();
    }
    void TearDown() override {
        editor.clear();
        GraphTest::TearDown();
    }
    void chain(const char *from, const char *to) { editor.connect(from, "Scalar", to, "Scalar"); }
    template <class Act>
    static std::string errorOf(Act act) {
        try {
            act();
        } catch (const InputError &error) {
            return error.what();
        }
        return "no error";
    }

    Network editor;
};

TEST_F(ConnectionTest, EventsTellTheTypeOfTheOutput) {
    editor.connect("A", "Color", "B", "Scalar");
    editor.connect("A", "Integer", "B", "Vector");
    EXPECT_EQ(journal(), (Lines{"event B.Scalar connected 1", "event B.Vector connected 4"}));
}

TEST_F(ConnectionTest, AnotherConnectionReplacesTheFirst) {
    chain("A", "C");
    chain("B", "C");
    EXPECT_EQ(journal(),
              (Lines{"event C.Scalar connected 2", "event C.Scalar disconnected 0", "event C.Scalar connected 2"}));
    EXPECT_TRUE(editor.node("A").findOutput("Scalar")->consumers.empty());
    EXPECT_EQ(editor.node("C").findInput("Scalar")->source->node->name, "B");
}

TEST_F(ConnectionTest, TheSameConnectionAgainIsNothingNew) {
    chain("A", "B");
    chain("A", "B");
    EXPECT_EQ(journal().size(), 1u);
}

TEST_F(ConnectionTest, DisconnectingTellsOnce) {
    chain("A", "B");
    HostInput *input = editor.node("B").findInput("Scalar");
    nodeInputFuncs()->disconnect(input->node, input);
    nodeInputFuncs()->disconnect(input->node, input);
    EXPECT_EQ(journal(), (Lines{"event B.Scalar connected 2", "event B.Scalar disconnected 0"}));
    EXPECT_EQ(nodeInputFuncs()->isConnected(input), 0);
}

TEST_F(ConnectionTest, DestroyingANodeOrphansWhatItFedInOrder) {
    chain("A", "B");
    chain("A", "D");
    chain("A", "C");
    chain("D", "Net");
    journal().clear();
    editor.destroyNode(editor.node("A"));
    EXPECT_EQ(journal(), (Lines{"event B.Scalar orphaned 0", "event D.Scalar orphaned 0", "event C.Scalar orphaned 0",
                                "destroy A"}));
    EXPECT_EQ(editor.node("B").findInput("Scalar")->source, nullptr);
    EXPECT_EQ(editor.nodes().size(), 3u);
}

TEST_F(ConnectionTest, ADestroyedNodeHearsNothingOfItsOwnInputs) {
    chain("A", "B");
    journal().clear();
    editor.destroyNode(editor.node("B"));
    EXPECT_EQ(journal(), Lines{"destroy B"});
    EXPECT_TRUE(editor.node("A").findOutput("Scalar")->consumers.empty());
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

TEST_F(ConnectionTest, CirclesAreRefusedWithTheirPath) {
    chain("A", "B");
    chain("B", "C");
    chain("C", "D");
    EXPECT_EQ(errorOf([&] { chain("D", "A"); }),
              "cannot connect \"D.Scalar\" to \"A.Scalar\": it would close the circle A -> B -> C -> D -> A");
    EXPECT_EQ(errorOf([&] { chain("A", "A"); }),
              "cannot connect \"A.Scalar\" to \"A.Scalar\": it would close the circle A -> A");
    EXPECT_EQ(editor.node("A").findInput("Scalar")->source, nullptr);
    EXPECT_EQ(errorOf([&] { chain("A", "D"); }), "no error");
}

TEST_F(ConnectionTest, OtherEditorsAndTheRootFeedNothing) {
    Network other("Other", "Other", nullptr, nullptr);
    HostNode &stranger = add(other, "X");
    EXPECT_EQ(errorOf([&] { editor.connect(*stranger.findOutput("Scalar"), *editor.node("A").findInput("Scalar")); }),
              "cannot connect \"X.Scalar\" to \"A.Scalar\": they are not both nodes of \"Net\"");
    HostOutput *output = nodeOutputFuncs()->create(&editor.root(), kConnectScalar, "Back");
    EXPECT_EQ(errorOf([&] { editor.connect(*output, *editor.node("A").findInput("Scalar")); }),
              "cannot connect \"Net.Back\" to \"A.Scalar\": the root node feeds nothing");
}

TEST_F(ConnectionTest, WrongNamesFindTheNearestRightOnes) {
    EXPECT_EQ(errorOf([&] { editor.connect("AA", "Scalar", "B", "Scalar"); }),
              "no node \"AA\" in \"Net\", there are \"Net\", \"A\", \"B\", \"C\" and \"D\"");
    EXPECT_EQ(errorOf([&] { editor.connect("A", "Scaler", "B", "Scalar"); }),
              "node \"A\" has no output \"Scaler\", did you mean \"Scalar\"?");
    EXPECT_EQ(errorOf([&] { editor.connect("A", "Scalar", "B", "Colour"); }),
              "node \"B\" has no input \"Colour\", did you mean \"Color\"?");
    EXPECT_EQ(errorOf([&] { editor.connect("Net", "Scalar", "B", "Color"); }),
              "node \"Net\" has no output \"Scalar\", there are none");
}

TEST_F(ConnectionTest, TheServiceKeepsARefusalAsTheLastError) {
    chain("A", "B");
    nodeEditorFuncs()->connect(editor.node("B").findOutput("Scalar"), editor.node("A").findInput("Scalar"));
    EXPECT_EQ(editor.node("A").findInput("Scalar")->source, nullptr);
    EXPECT_NE(editor.lastError().find("A -> B -> A"), std::string::npos);
    nodeEditorFuncs()->connect(editor.node("A").findOutput("Scalar"), editor.node("C").findInput("Scalar"));
    EXPECT_EQ(editor.node("C").findInput("Scalar")->source->node->name, "A");
}

TEST_F(ConnectionTest, DestroyedInputsAndOutputsLetGo) {
    chain("A", "B");
    chain("A", "C");
    HostNode &b = editor.node("B");
    nodeInputFuncs()->destroy(&b, b.findInput("Scalar"));
    EXPECT_EQ(b.findInput("Scalar"), nullptr);
    EXPECT_EQ(editor.node("A").findOutput("Scalar")->consumers.size(), 1u);
    HostNode &a = editor.node("A");
    journal().clear();
    nodeOutputFuncs()->destroy(&a, a.findOutput("Scalar"));
    EXPECT_EQ(journal(), Lines{"event C.Scalar disconnected 0"});
}

TEST_F(ConnectionTest, BothServicesWalkInOrder) {
    HostNode &a = editor.node("A");
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

TEST_F(ConnectionTest, UnknownTypesMakeNoInputsAndOutputs) {
    EXPECT_EQ(nodeInputFuncs()->create(&editor.root(), 0, "None", nullptr), nullptr);
    EXPECT_EQ(nodeOutputFuncs()->create(&editor.root(), 7, "None"), nullptr);
    EXPECT_EQ(nodeInputFuncs()->count(&editor.root()), 6);
}

} // namespace
} // namespace velm::host::test
