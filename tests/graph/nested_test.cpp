// Networks nested in nodes: their owner, their depth, and copies that are refused.
#include "tests/graph/test_nodes.h"

#include "host/services/services.h"
#include "host/state/load_state.h"
#include "host/state/save_state.h"

#include <functional>

namespace velm::host::test {
namespace {

class Nested : public GraphTest {
  protected:
    Nested() { addRootInputs(network); }
    void TearDown() override {
        network.clear();
        GraphTest::TearDown();
    }

    static Network &inside(HostNode &group) { return *group.nestedNetworks.at(0); }

    // Nests groups in each other, and returns the innermost network.
    Network &nest(int count) {
        Network *at = &network;
        for (int i = 0; i < count; ++i) at = &inside(addGroup(*at, "Group"));
        return *at;
    }
    static std::string refusal(const std::function<void()> &act) {
        try {
            act();
        } catch (const InputError &error) {
            return error.what();
        }
        return "no error";
    }

    Network network{"Net", "Net", nullptr, nullptr};
};

TEST_F(Nested, ANodeKnowsItsNestedNetworks) {
    HostNode &group = addGroup(network, "Outer");
    ASSERT_EQ(group.nestedNetworks, std::vector<Network *>{testGroup(group).network});
    EXPECT_EQ(inside(group).ownerNode(), &group);
    EXPECT_EQ(network.ownerNode(), nullptr);
    HostNode &inner = addGroup(inside(group), "Inner");
    EXPECT_EQ(inside(inner).ownerNode(), &inner);
    EXPECT_EQ(group.nestedNetworks.size(), 1u);
    EXPECT_TRUE(add(network, "Plain").nestedNetworks.empty());
    EXPECT_TRUE(network.contains(inside(inner)));
    EXPECT_TRUE(network.contains(network));
    EXPECT_FALSE(inside(inner).contains(network));
}

TEST_F(Nested, ANetworkCreatedOutsideOfANodesCreationHasNoOwner) {
    HostNode &group = addGroup(network, "Outer");
    Network *loose = networkOf(nodeEditorFuncs()->create("Loose", nullptr, nullptr, nullptr));
    EXPECT_EQ(loose->ownerNode(), nullptr);
    EXPECT_EQ(group.nestedNetworks.size(), 1u);
    nodeEditorFuncs()->destroy(loose);
}

TEST_F(Nested, ADestroyedNetworkLeavesTheList) {
    HostNode &group = addGroup(network, "Outer");
    nodeEditorFuncs()->destroy(testGroup(group).network);
    EXPECT_TRUE(group.nestedNetworks.empty());
    testGroup(group).network = networkOf(nodeEditorFuncs()->create("Inside", nullptr, nullptr, nullptr));
}

TEST_F(Nested, ANetworkThatItsNodeDoesNotDestroyOutlivesTheNode) {
    HostNode &group = addGroup(network, "Outer");
    Network *other = networkOf(nodeEditorFuncs()->create("Other", nullptr, nullptr, nullptr));
    Network *left = std::exchange(testGroup(group).network, other);
    network.destroyNode(group);
    EXPECT_EQ(left->ownerNode(), nullptr);
    nodeEditorFuncs()->destroy(left);
}

TEST_F(Nested, DepthIsLimited) {
    Network &deepest = nest(kDeepestNesting);
    EXPECT_EQ(refusal([&] { addGroup(deepest, "More"); }),
              "cannot make the node \"More\": networks cannot be nested deeper than 16");
    EXPECT_TRUE(deepest.nodes().empty());
    EXPECT_EQ(add(deepest, "Plain").name, "Plain");
}

TEST_F(Nested, DepthIsLimitedInFilesToo) {
    nest(kDeepestNesting);
    StateWriter writer(kStateText);
    network.save(*writer.state());
    const std::string bytes = writer.finish();

    Network other("Other", "Other", nullptr, nullptr);
    HostNode &group = addGroup(other, "Outer");
    StateReader reader(kStateText, bytes, "network");
    const std::string message = refusal([&] { inside(group).load(*reader.state()); });
    EXPECT_TRUE(message.ends_with("networks cannot be nested deeper than 16")) << message;
}

TEST_F(Nested, CopiesBetweenANetworkAndOneNestedInItAreRefused) {
    HostNode &outer = addGroup(network, "Outer");
    HostNode &inner = addGroup(inside(outer), "Inner");
    add(inside(inner), "Source");
    EXPECT_EQ(refusal([&] { inside(inner).copyFrom(network); }),
              "cannot copy \"Net\" to \"Inside\": one is inside the other");
    EXPECT_NE(nodeEditorFuncs()->copy(&inside(inner), &inside(outer)), nullptr);
    EXPECT_EQ(refusal([&] { network.copyFrom(inside(inner)); }),
              "cannot copy \"Inside\" to \"Net\": one is inside the other");
    ASSERT_EQ(inside(inner).nodes().size(), 1u);
    EXPECT_EQ(inside(inner).nodes()[0]->name, "Source");
    EXPECT_EQ(network.nodes().size(), 1u);
}

TEST_F(Nested, NetworksOfTwoNodesCanBeCopied) {
    HostNode &one = addGroup(network, "One"), &two = addGroup(network, "Two");
    testNode(add(inside(one), "Source")).scalar = 7;
    inside(one).connect("Source", "Scalar", "Inside", "Scalar");
    inside(two).copyFrom(inside(one));
    network.connect("Two", "Scalar", "Net", "Scalar");
    EXPECT_EQ(scalarOf(network.root(), "Scalar"), 7);
}

// A group may hide an error of its network. The network remembers it, and the host reports it.
TEST_F(Nested, ErrorsThatTheOwnerHidesAreReported) {
    HostNode &group = addGroup(network, "Quiet");
    testGroup(group).quiet = true;
    HostNode &source = add(inside(group), "Source");
    testNode(source).initError = "no start";
    EXPECT_EQ(refusal([&] { network.init(kInitRender); }), "node \"Quiet\": node \"Source\": no start");
    testNode(source).initError = nullptr;
    EXPECT_EQ(refusal([&] { network.init(kInitRender); }), "no error") << "it is reported once";
    testNode(source).newTimeError = "no frame";
    EXPECT_EQ(refusal([&] { network.newTime(1, 0); }), "node \"Quiet\": node \"Source\": no frame");
    network.cleanup();
}

} // namespace
} // namespace velm::host::test
