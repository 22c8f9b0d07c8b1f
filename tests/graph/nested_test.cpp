// Networks inside nodes: who holds them, how deep, and what they must not do to each other.
#include "tests/graph/test_nodes.h"

#include "host/services/services.h"
#include "host/state/load_state.h"
#include "host/state/save_state.h"

#include <functional>

namespace velm::host::test {
namespace {

class Nested : public GraphTest {
  protected:
    Nested() { addRootInputs(editor); }
    void TearDown() override {
        editor.clear();
        GraphTest::TearDown();
    }

    static Network &inside(HostNode &group) { return *group.nested.at(0); }

    // Groups in groups, as many as are told; the innermost network.
    Network &nest(int count) {
        Network *at = &editor;
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

    Network editor{"Net", "Net", nullptr, nullptr};
};

TEST_F(Nested, ANodeKnowsTheNetworkThatItMade) {
    HostNode &group = addGroup(editor, "Outer");
    ASSERT_EQ(group.nested, std::vector<Network *>{testGroup(group).editor});
    EXPECT_EQ(inside(group).holder(), &group);
    EXPECT_EQ(editor.holder(), nullptr);
    HostNode &inner = addGroup(inside(group), "Inner");
    EXPECT_EQ(inside(inner).holder(), &inner);
    EXPECT_EQ(group.nested.size(), 1u);
    EXPECT_TRUE(add(editor, "Plain").nested.empty());
    EXPECT_TRUE(editor.contains(inside(inner)));
    EXPECT_TRUE(editor.contains(editor));
    EXPECT_FALSE(inside(inner).contains(editor));
}

TEST_F(Nested, ANetworkMadeOutsideOfCreationIsHeldByNobody) {
    HostNode &group = addGroup(editor, "Outer");
    Network *loose = nodeEditorFuncs()->create("Loose", nullptr, nullptr, nullptr);
    EXPECT_EQ(loose->holder(), nullptr);
    EXPECT_EQ(group.nested.size(), 1u);
    nodeEditorFuncs()->destroy(loose);
}

TEST_F(Nested, ADestroyedNetworkIsForgotten) {
    HostNode &group = addGroup(editor, "Outer");
    nodeEditorFuncs()->destroy(testGroup(group).editor);
    EXPECT_TRUE(group.nested.empty());
    testGroup(group).editor = nodeEditorFuncs()->create("Inside", nullptr, nullptr, nullptr);
}

TEST_F(Nested, ANetworkThatItsNodeLeavesBehindOutlivesIt) {
    HostNode &group = addGroup(editor, "Outer");
    Network *left =
        std::exchange(testGroup(group).editor, nodeEditorFuncs()->create("Other", nullptr, nullptr, nullptr));
    editor.destroyNode(group);
    EXPECT_EQ(left->holder(), nullptr);
    nodeEditorFuncs()->destroy(left);
}

TEST_F(Nested, DepthIsBounded) {
    Network &deepest = nest(kDeepestNesting);
    EXPECT_EQ(refusal([&] { addGroup(deepest, "More"); }),
              "cannot make the node \"More\": networks cannot be nested deeper than 16");
    EXPECT_TRUE(deepest.nodes().empty());
    EXPECT_EQ(add(deepest, "Plain").name, "Plain");
}

TEST_F(Nested, DepthIsBoundedInFilesToo) {
    nest(kDeepestNesting);
    StateWriter writer(kStateText);
    editor.save(*writer.state());
    const std::string bytes = writer.finish();

    Network other("Other", "Other", nullptr, nullptr);
    HostNode &group = addGroup(other, "Holder");
    StateReader reader(kStateText, bytes, "network");
    const std::string message = refusal([&] { inside(group).load(*reader.state()); });
    EXPECT_TRUE(message.ends_with("networks cannot be nested deeper than 16")) << message;
}

TEST_F(Nested, ANetworkIsNotCopiedIntoItselfNorOverItself) {
    HostNode &outer = addGroup(editor, "Outer");
    HostNode &inner = addGroup(inside(outer), "Inner");
    add(inside(inner), "Source");
    EXPECT_EQ(refusal([&] { inside(inner).copyFrom(editor); }),
              "cannot copy \"Net\" to \"Inside\": one is inside the other");
    EXPECT_NE(nodeEditorFuncs()->copy(&inside(inner), &inside(outer)), nullptr);
    EXPECT_EQ(refusal([&] { editor.copyFrom(inside(inner)); }),
              "cannot copy \"Inside\" to \"Net\": one is inside the other");
    ASSERT_EQ(inside(inner).nodes().size(), 1u);
    EXPECT_EQ(inside(inner).nodes()[0]->name, "Source");
    EXPECT_EQ(editor.nodes().size(), 1u);
}

TEST_F(Nested, SistersMayBeCopied) {
    HostNode &one = addGroup(editor, "One"), &two = addGroup(editor, "Two");
    testNode(add(inside(one), "Source")).scalar = 7;
    inside(one).connect("Source", "Scalar", "Inside", "Scalar");
    inside(two).copyFrom(inside(one));
    editor.connect("Two", "Scalar", "Net", "Scalar");
    EXPECT_EQ(scalarOf(editor.root(), "Scalar"), 7);
}

// A group may keep to itself what went wrong inside; the host remembers it and tells.
TEST_F(Nested, ErrorsThatTheHolderSwallowsAreTold) {
    HostNode &group = addGroup(editor, "Quiet");
    testGroup(group).quiet = true;
    HostNode &source = add(inside(group), "Source");
    testNode(source).initError = "no start";
    EXPECT_EQ(refusal([&] { editor.init(kInitRender); }), "node \"Quiet\": node \"Source\": no start");
    testNode(source).initError = nullptr;
    EXPECT_EQ(refusal([&] { editor.init(kInitRender); }), "no error") << "told once";
    testNode(source).newTimeError = "no frame";
    EXPECT_EQ(refusal([&] { editor.newTime(1, 0); }), "node \"Quiet\": node \"Source\": no frame");
    editor.cleanup();
}

} // namespace
} // namespace velm::host::test
