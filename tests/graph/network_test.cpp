// Networks: names, life, rendering, copies, and networks in networks.
#include "tests/graph/test_nodes.h"

#include "host/animation/channel.h"
#include "host/services/services.h"

namespace velm::host::test {
namespace {

using Lines = std::vector<std::string>;

class NetworkTest : public GraphTest {
  protected:
    NetworkTest() : editor("Net", "Net", nullptr, nullptr) {}
    void SetUp() override {
        GraphTest::SetUp();
        addRootInputs(editor);
    }
    void TearDown() override {
        editor.clear();
        GraphTest::TearDown();
    }
    ServerClass &tester() { return serverList().get("Test Node"); }

    Network editor;
};

TEST_F(NetworkTest, NamesAreUniqueInTheirEditor) {
    EXPECT_EQ(editor.addNode(tester()).name, "Tester");
    EXPECT_EQ(editor.addNode(tester()).name, "Tester (2)");
    EXPECT_EQ(editor.addNode(tester()).name, "Tester (3)");
    EXPECT_EQ(add(editor, "Tester (2)").name, "Tester (4)");
    EXPECT_EQ(add(editor, "Net").name, "Net (2)"); // the root's
    EXPECT_EQ(add(editor, "Odd (x)").name, "Odd (x)");
    EXPECT_EQ(add(editor, "Odd (x)").name, "Odd (x) (2)");
    EXPECT_EQ(add(editor, " (3)").name, " (3)");
    editor.destroyNode(editor.node("Tester (2)"));
    EXPECT_EQ(editor.addNode(tester()).name, "Tester (2)");
    Network other("Other", "Other", nullptr, nullptr);
    EXPECT_EQ(other.addNode(tester()).name, "Tester");
}

// Each step has one right name, whatever was asked for, taken and given back before it.
TEST_F(NetworkTest, NumbersThatBecomeFreeAreGivenAgainTheLowestFirst) {
    for (int number = 1; number <= 6; ++number) add(editor, "A");
    editor.destroyNode(editor.node("A (5)"));
    editor.rename(editor.node("A (3)"), "B");
    EXPECT_EQ(add(editor, "A").name, "A (3)");
    EXPECT_EQ(add(editor, "A (4)").name, "A (5)");
    EXPECT_EQ(add(editor, "A").name, "A (7)");
    editor.destroyNode(editor.node("A"));
    EXPECT_EQ(editor.findNode("A"), nullptr);
    EXPECT_EQ(add(editor, "A").name, "A");
    EXPECT_EQ(add(editor, "A (9)").name, "A (9)");
    EXPECT_EQ(add(editor, "A").name, "A (8)");
    EXPECT_EQ(add(editor, "A").name, "A (10)");
    failNextCreate("out of paper");
    EXPECT_THROW(add(editor, "A"), InputError);
    EXPECT_EQ(add(editor, "A").name, "A (11)");
    editor.clear();
    EXPECT_EQ(add(editor, "A").name, "A");
    EXPECT_EQ(add(editor, "A").name, "A (2)");
    EXPECT_EQ(&editor.node("A (2)"), editor.nodes()[1].get());
}

TEST_F(NetworkTest, ARenamedNodeMayKeepItsName) {
    HostNode &a = add(editor, "A");
    add(editor, "B");
    editor.rename(a, "A");
    EXPECT_EQ(a.name, "A");
    editor.rename(a, "B");
    EXPECT_EQ(a.name, "B (2)");
    EXPECT_STREQ(nodeFuncs()->nodeName(&a), "B (2)");
}

TEST_F(NetworkTest, AFailedCreationLeavesNothing) {
    failNextCreate("out of paper");
    try {
        add(editor, "A");
        FAIL();
    } catch (const InputError &error) {
        EXPECT_STREQ(error.what(), "cannot make the node \"A\": out of paper");
    }
    EXPECT_TRUE(editor.nodes().empty());
}

TEST_F(NetworkTest, NodesSpeakThroughNodeFuncs) {
    HostNode &node = add(editor, "A");
    EXPECT_STREQ(nodeFuncs()->serverUserName(&node), "Tester");
    EXPECT_STREQ(nodeFuncs()->serverUserName(&editor.root()), "Net");
    const int colour[] = {1, 2, 3};
    nodeFuncs()->setColour(&node, colour);
    EXPECT_EQ(node.colour, (std::array<int, 3>{1, 2, 3}));
    nodeFuncs()->setColourRgb(&node, 4, 5, 6);
    EXPECT_EQ(node.colour, (std::array<int, 3>{4, 5, 6}));
    nodeFuncs()->setPreviewType(&node, kPreviewOff);
    EXPECT_EQ(node.previewType, kPreviewOff);
    nodeFuncs()->updatePreview(&node);
    nodeFuncs()->updatePreview(&node);
    EXPECT_EQ(node.previewUpdates, 2);
}

TEST_F(NetworkTest, EachNodeHasOneGroupUnderItsEditors) {
    HostNode &a = add(editor, "A");
    HostNode &b = add(editor, "B");
    HostChannelGroup *group = nodeFuncs()->channelGroup(&a);
    EXPECT_EQ(group->name, "A");
    EXPECT_EQ(nodeFuncs()->channelGroup(&a), group);
    EXPECT_EQ(group->parent, editor.channelGroup());
    EXPECT_NE(nodeFuncs()->channelGroup(&b), group);
    EXPECT_EQ(editor.channelGroup()->name, "Net");
    editor.destroyNode(a);
    EXPECT_EQ(editor.channelGroup()->groups.size(), 1u);
}

TEST_F(NetworkTest, RenderingReachesEveryNode) {
    add(editor, "A");
    add(editor, "B");
    journal().clear();
    editor.init(kInitRender);
    editor.newTime(7, 0.25);
    editor.cleanup();
    EXPECT_EQ(journal(), (Lines{"init 1 A", "init 1 B", "time 7 A", "time 7 B", "cleanup A", "cleanup B"}));
}

TEST_F(NetworkTest, AFailedInitCleansUpWhatWasInitialised) {
    add(editor, "A");
    testNode(add(editor, "B")).initError = "no light";
    add(editor, "C");
    journal().clear();
    try {
        editor.init(kInitPreview);
        FAIL();
    } catch (const InputError &error) {
        EXPECT_STREQ(error.what(), "node \"B\": no light");
    }
    EXPECT_EQ(journal(), (Lines{"init 0 A", "init 0 B", "cleanup A"}));
}

TEST_F(NetworkTest, ErrorsOfAFrameNameTheNode) {
    testNode(add(editor, "A")).newTimeError = "too late";
    EXPECT_STREQ(nodeEditorFuncs()->newTime(&editor, 1, 0), "node \"A\": too late");
}

TEST_F(NetworkTest, CopiesTakeNodesSettingsAndConnections) {
    HostNode &a = add(editor, "A");
    testNode(a).scalar = 5;
    a.coordinates = {10, 20};
    a.comment = "five";
    add(editor, "B");
    editor.connect("A", "Scalar", "B", "Scalar");
    editor.connect("B", "Scalar", "Net", "Scalar");
    editor.setState(1);
    Network other("A", "A", nullptr, nullptr); // the root has the name of a node
    addRootInputs(other);
    add(other, "Old");
    EXPECT_EQ(nodeEditorFuncs()->copy(&other, &editor), nullptr);
    ASSERT_EQ(other.nodes().size(), 2u);
    EXPECT_EQ(other.nodes()[0]->name, "A (2)");
    EXPECT_EQ(other.nodes()[0]->comment, "five");
    EXPECT_EQ(other.nodes()[0]->coordinates, (std::array<int, 2>{10, 20}));
    EXPECT_EQ(scalarOf(other.root(), "Scalar"), 5);
    EXPECT_EQ(other.state(), 1);
    testNode(*other.nodes()[0]).scalar = 6;
    EXPECT_EQ(scalarOf(editor.root(), "Scalar"), 5);
    EXPECT_EQ(nodeEditorFuncs()->copy(&editor, &editor), nullptr);
    EXPECT_EQ(editor.nodes().size(), 2u);
}

// A group in a group in a group, with a source of 8 inside.
HostNode &nestThreeDeep(Network &editor, ServerClass &group, ServerClass &node) {
    HostNode &outer = editor.addNode(group, "Outer");
    HostNode &middle = testGroup(outer).editor->addNode(group, "Middle");
    HostNode &inner = testGroup(middle).editor->addNode(group, "Inner");
    HostNode &source = testGroup(inner).editor->addNode(node, "Source");
    testNode(source).scalar = 8;
    testGroup(inner).editor->connect("Source", "Scalar", "Inside", "Scalar");
    testGroup(middle).editor->connect("Inner", "Scalar", "Inside", "Scalar");
    testGroup(outer).editor->connect("Middle", "Scalar", "Inside", "Scalar");
    editor.connect("Outer", "Scalar", editor.root().name, "Scalar");
    return source;
}

TEST_F(NetworkTest, NetworksInNetworksEvaluateRenderCopyAndGo) {
    HostNode &source = nestThreeDeep(editor, serverList().get("Test Group"), tester());
    EXPECT_EQ(scalarOf(editor.root(), "Scalar"), 8);
    journal().clear();
    EXPECT_EQ(nodeEditorFuncs()->init(&editor, kInitRender), nullptr);
    EXPECT_EQ(nodeEditorFuncs()->newTime(&editor, 3, 0.1), nullptr);
    nodeEditorFuncs()->cleanup(&editor);
    EXPECT_EQ(journal(), (Lines{"init 1 Source", "time 3 Source", "cleanup Source"}));
    EXPECT_EQ(nodeFuncs()->channelGroup(&source)->parent->name, "Inner");

    Network copy("Copy", "Copy", nullptr, nullptr);
    addRootInputs(copy);
    EXPECT_EQ(nodeEditorFuncs()->copy(&copy, &editor), nullptr);
    EXPECT_EQ(scalarOf(copy.root(), "Scalar"), 8);
    copy.clear();

    testNode(source).initError = "deep trouble";
    EXPECT_STREQ(nodeEditorFuncs()->init(&editor, kInitRender),
                 "node \"Outer\": node \"Middle\": node \"Inner\": node \"Source\": deep trouble");
    journal().clear();
    editor.clear();
    EXPECT_EQ(journal(), Lines{"destroy Source"});
}

// ---- What the service offers besides -----------------------------------------------------------------------------

int events = 0;
void *countEvent(Network *editor) {
    ++events;
    return nodeEditorFuncs()->userData(editor);
}

TEST_F(NetworkTest, TheOwnerHearsOfChanges) {
    events = 0;
    nodeEditorFuncs()->setEvent(&editor, countEvent);
    HostNode &a = add(editor, "A");
    EXPECT_EQ(events, 1);
    editor.connect("A", "Scalar", "Net", "Scalar");
    EXPECT_EQ(events, 2);
    editor.disconnect(*editor.root().findInput("Scalar"));
    EXPECT_EQ(events, 3);
    editor.disconnect(*editor.root().findInput("Scalar"));
    EXPECT_EQ(events, 3);
    editor.destroyNode(a);
    EXPECT_EQ(events, 4);
    nodeEditorFuncs()->setEvent(&editor, nullptr);
}

TEST_F(NetworkTest, EditorsKeepWhatTheyAreTold) {
    const HostNodeEditorFuncs &editors = *nodeEditorFuncs();
    int mine = 0;
    Network *own = editors.create("Name", "Title", nullptr, &mine);
    EXPECT_EQ(editors.userData(own), &mine);
    editors.setUserData(own, nullptr);
    EXPECT_EQ(editors.userData(own), nullptr);
    EXPECT_EQ(own->title(), "Title");
    editors.rename("Other", own);
    EXPECT_EQ(own->title(), "Other");
    EXPECT_EQ(editors.openWindow(own), 0);
    EXPECT_EQ(editors.isWindowOpen(own), 0);
    editors.setState(own, 1);
    EXPECT_EQ(editors.state(own), 1);
    HostInput *input = editors.addRootInput(own, kConnectScalar, "In", nullptr);
    EXPECT_EQ(editors.rootInputByName(own, "In"), input);
    EXPECT_EQ(editors.rootInputByName(own, "Out"), nullptr);
    EXPECT_EQ(editors.rootInputByIndex(own, 1), input);
    EXPECT_EQ(editors.rootInputByIndex(own, 2), nullptr);
    EXPECT_EQ(editors.rootNode(own), input->node);
    EXPECT_EQ(editors.nodeCount(own), 0);
    add(*own, "A");
    EXPECT_EQ(editors.nodeCount(own), 1);
    editors.destroy(own);
}

HostError rootInit(Network *editor, int mode) {
    journal().push_back("root init " + std::to_string(mode));
    return nodeEditorFuncs()->userData(editor) ? "root refuses" : nullptr;
}
HostError rootTime(Network *, int frame, double) {
    journal().push_back("root time " + std::to_string(frame));
    return nullptr;
}
void rootCleanup(Network *) { journal().push_back("root cleanup"); }
void rootPreview(Network *editor, ShadingSample *sample, double colour[3]) {
    nodeInputFuncs()->evaluate(nodeEditorFuncs()->rootInputByName(editor, "Color"), sample, colour);
}

TEST_F(NetworkTest, TheRootDescriptionIsHeeded) {
    HostRootDescription root{};
    root.previewType = kPreviewDrawnByNode;
    root.init = rootInit;
    root.newTime = rootTime;
    root.cleanup = rootCleanup;
    root.preview = rootPreview;
    Network own("Own", "Own", &root, nullptr);
    addRootInputs(own);
    add(own, "A");
    own.connect("A", "Color", "Own", "Color");
    EXPECT_EQ(own.root().previewType, kPreviewDrawnByNode);
    journal().clear();
    own.init(kInitRender);
    own.newTime(2, 0);
    own.cleanup();
    EXPECT_EQ(journal(), (Lines{"root init 1", "init 1 A", "root time 2", "time 2 A", "root cleanup", "cleanup A"}));
    double colour[3] = {};
    EXPECT_TRUE(own.previewSample(&sample, colour));
    EXPECT_EQ(colour[1], 0.2);
    EXPECT_FALSE(editor.previewSample(&sample, colour));
    EXPECT_EQ(panelOf(own.root()), nullptr);
    own.setUserData(&own);
    EXPECT_STREQ(nodeEditorFuncs()->init(&own, kInitRender), "node \"Own\": root refuses");
}

HostInput *told = nullptr;
int rootEvent(void *instance, HostInput *input, int, int) {
    told = input;
    *static_cast<int *>(instance) += 1;
    return 1;
}

TEST_F(NetworkTest, RootInputsTellTheOwner) {
    int count = 0;
    Network own("Own", "Own", nullptr, &count);
    HostInput *input = nodeEditorFuncs()->addRootInput(&own, kConnectScalar, "In", rootEvent);
    add(own, "A");
    own.connect("A", "Scalar", "Own", "In");
    own.destroyNode(own.node("A"));
    EXPECT_EQ(told, input);
    EXPECT_EQ(count, 2);
}

void wide(Network *, void *, double bounds[3][2]) {
    bounds[0][0] = -2;
    bounds[0][1] = 6;
}

TEST_F(NetworkTest, PreviewsAreSizedByTheOwner) {
    double scale[3], position[3];
    nodeUtilityFuncs()->autosize(&editor.root(), scale, position);
    EXPECT_EQ(scale[0], 1);
    EXPECT_EQ(position[0], 0);
    nodeEditorFuncs()->setAutosize(&editor, wide);
    nodeUtilityFuncs()->autosize(&editor.root(), scale, nullptr);
    nodeUtilityFuncs()->autosize(&editor.root(), scale, position);
    EXPECT_EQ(scale[0], 8);
    EXPECT_EQ(position[0], 2);
    EXPECT_EQ(scale[2], 1);
}

} // namespace
} // namespace velm::host::test
