// Networks: names, creation and destruction, rendering, copies, and nested networks.
#include "tests/graph/test_nodes.h"

#include "host/animation/channel.h"
#include "host/animation/vparm.h"
#include "host/load/dialogs.h"
#include "host/services/services.h"

namespace velm::host::test {
namespace {

using Lines = std::vector<std::string>;

class NetworkTest : public GraphTest {
  protected:
    NetworkTest() : network("Net", "Net", nullptr, nullptr) {}
    void SetUp() override {
        GraphTest::SetUp();
        addRootInputs(network);
    }
    void TearDown() override {
        network.clear();
        GraphTest::TearDown();
    }
    ServerClass &tester() { return serverList().get("Test Node"); }

    Network network;
};

TEST_F(NetworkTest, NamesAreUniqueInANetwork) {
    EXPECT_EQ(network.addNode(tester()).name, "Tester");
    EXPECT_EQ(network.addNode(tester()).name, "Tester (2)");
    EXPECT_EQ(network.addNode(tester()).name, "Tester (3)");
    EXPECT_EQ(add(network, "Tester (2)").name, "Tester (4)");
    EXPECT_EQ(add(network, "Net").name, "Net (2)"); // the root's
    EXPECT_EQ(add(network, "Odd (x)").name, "Odd (x)");
    EXPECT_EQ(add(network, "Odd (x)").name, "Odd (x) (2)");
    EXPECT_EQ(add(network, " (3)").name, " (3)");
    network.destroyNode(network.node("Tester (2)"));
    EXPECT_EQ(network.addNode(tester()).name, "Tester (2)");
    Network other("Other", "Other", nullptr, nullptr);
    EXPECT_EQ(other.addNode(tester()).name, "Tester");
}

// The result of each step depends only on the names that are taken at that moment.
TEST_F(NetworkTest, TheLowestFreeNumberIsUsed) {
    for (int number = 1; number <= 6; ++number) add(network, "A");
    network.destroyNode(network.node("A (5)"));
    network.rename(network.node("A (3)"), "B");
    EXPECT_EQ(add(network, "A").name, "A (3)");
    EXPECT_EQ(add(network, "A (4)").name, "A (5)");
    EXPECT_EQ(add(network, "A").name, "A (7)");
    network.destroyNode(network.node("A"));
    EXPECT_EQ(network.findNode("A"), nullptr);
    EXPECT_EQ(add(network, "A").name, "A");
    EXPECT_EQ(add(network, "A (9)").name, "A (9)");
    EXPECT_EQ(add(network, "A").name, "A (8)");
    EXPECT_EQ(add(network, "A").name, "A (10)");
    failNextCreate("out of paper");
    EXPECT_THROW(add(network, "A"), InputError);
    EXPECT_EQ(add(network, "A").name, "A (11)");
    network.clear();
    EXPECT_EQ(add(network, "A").name, "A");
    EXPECT_EQ(add(network, "A").name, "A (2)");
    EXPECT_EQ(&network.node("A (2)"), network.nodes()[1].get());
}

TEST_F(NetworkTest, ANodeCanBeRenamedToItsOwnName) {
    HostNode &a = add(network, "A");
    add(network, "B");
    network.rename(a, "A");
    EXPECT_EQ(a.name, "A");
    network.rename(a, "B");
    EXPECT_EQ(a.name, "B (2)");
    EXPECT_STREQ(nodeFuncs()->nodeName(&a), "B (2)");
}

TEST_F(NetworkTest, AFailedCreationAddsNoNode) {
    failNextCreate("out of paper");
    try {
        add(network, "A");
        FAIL();
    } catch (const CreationError &error) {
        EXPECT_STREQ(error.what(), "cannot make the node \"A\": out of paper");
        EXPECT_TRUE(error.hasReason());
    }
    EXPECT_TRUE(network.nodes().empty());
}

TEST_F(NetworkTest, AServerMayFailWithoutAReason) {
    failNextCreate("");
    try {
        add(network, "A");
        FAIL();
    } catch (const CreationError &error) {
        EXPECT_STREQ(error.what(), "cannot make the node \"A\": its server gives no reason");
        EXPECT_FALSE(error.hasReason());
    }
}

TEST_F(NetworkTest, NodeFuncsReadAndChangeTheNode) {
    HostNode &node = add(network, "A");
    EXPECT_STREQ(nodeFuncs()->serverUserName(&node), "Tester");
    EXPECT_STREQ(nodeFuncs()->serverUserName(&network.root()), "Net");
    const int colour[] = {1, 2, 3};
    nodeFuncs()->setColour(&node, colour);
    EXPECT_EQ(node.colour, (std::array<int, 3>{1, 2, 3}));
    nodeFuncs()->setColourRgb(&node, 4, 5, 6);
    EXPECT_EQ(node.colour, (std::array<int, 3>{4, 5, 6}));
    nodeFuncs()->setPreviewType(&node, kPreviewOff);
    EXPECT_EQ(node.previewType, kPreviewOff);
}

TEST_F(NetworkTest, EachNodeHasOneGroupInTheNetworksGroup) {
    HostNode &a = add(network, "A");
    HostNode &b = add(network, "B");
    HostChannelGroup *group = nodeFuncs()->channelGroup(&a);
    EXPECT_EQ(group->name, "A");
    EXPECT_EQ(nodeFuncs()->channelGroup(&a), group);
    EXPECT_EQ(group->parent, network.channelGroup());
    EXPECT_NE(nodeFuncs()->channelGroup(&b), group);
    EXPECT_EQ(network.channelGroup()->name, "Net");
    network.destroyNode(a);
    EXPECT_EQ(network.channelGroup()->groups.size(), 1u);
}

TEST_F(NetworkTest, RenderingCallsEveryNode) {
    add(network, "A");
    add(network, "B");
    journal().clear();
    network.init(kInitRender);
    network.newTime(7, 0.25);
    network.cleanup();
    EXPECT_EQ(journal(), (Lines{"init 1 A", "init 1 B", "time 7 A", "time 7 B", "cleanup A", "cleanup B"}));
}

TEST_F(NetworkTest, AFailedInitCleansUpTheNodesBefore) {
    add(network, "A");
    testNode(add(network, "B")).initError = "no light";
    add(network, "C");
    journal().clear();
    try {
        network.init(kInitPreview);
        FAIL();
    } catch (const InputError &error) {
        EXPECT_STREQ(error.what(), "node \"B\": no light");
    }
    EXPECT_EQ(journal(), (Lines{"init 0 A", "init 0 B", "cleanup A"}));
}

TEST_F(NetworkTest, ErrorsOfNewTimeNameTheNode) {
    testNode(add(network, "A")).newTimeError = "too late";
    EXPECT_STREQ(nodeEditorFuncs()->newTime(&network, 1, 0), "node \"A\": too late");
}

TEST_F(NetworkTest, CopiesHaveNodesLooksSettingsAndConnections) {
    HostNode &a = add(network, "A");
    testNode(a).scalar = 5;
    a.look = {.at = {10, 20}, .mode = 0, .preview = "Color", .comment = "five"};
    add(network, "B");
    network.connect("A", "Scalar", "B", "Scalar");
    network.connect("B", "Scalar", "Net", "Scalar");
    network.setState(1);
    Network other("A", "A", nullptr, nullptr); // the root has the name of a node
    addRootInputs(other);
    add(other, "Old");
    EXPECT_EQ(nodeEditorFuncs()->copy(&other, &network), nullptr);
    ASSERT_EQ(other.nodes().size(), 2u);
    EXPECT_EQ(other.nodes()[0]->name, "A (2)");
    EXPECT_EQ(other.nodes()[0]->look, a.look);
    EXPECT_EQ(scalarOf(other.root(), "Scalar"), 5);
    EXPECT_EQ(other.state(), 1);
    testNode(*other.nodes()[0]).scalar = 6;
    EXPECT_EQ(scalarOf(network.root(), "Scalar"), 5);
    EXPECT_EQ(nodeEditorFuncs()->copy(&network, &network), nullptr);
    EXPECT_EQ(network.nodes().size(), 2u);
}

// A group in a group in a group, with a source of 8 inside.
HostNode &nestThreeDeep(Network &network, ServerClass &group, ServerClass &node) {
    HostNode &outer = network.addNode(group, "Outer");
    HostNode &middle = testGroup(outer).network->addNode(group, "Middle");
    HostNode &inner = testGroup(middle).network->addNode(group, "Inner");
    HostNode &source = testGroup(inner).network->addNode(node, "Source");
    testNode(source).scalar = 8;
    testGroup(inner).network->connect("Source", "Scalar", "Inside", "Scalar");
    testGroup(middle).network->connect("Inner", "Scalar", "Inside", "Scalar");
    testGroup(outer).network->connect("Middle", "Scalar", "Inside", "Scalar");
    network.connect("Outer", "Scalar", network.root().name, "Scalar");
    return source;
}

TEST_F(NetworkTest, NestedNetworksEvaluateRenderCopyAndAreDestroyed) {
    HostNode &source = nestThreeDeep(network, serverList().get("Test Group"), tester());
    EXPECT_EQ(scalarOf(network.root(), "Scalar"), 8);
    journal().clear();
    EXPECT_EQ(nodeEditorFuncs()->init(&network, kInitRender), nullptr);
    EXPECT_EQ(nodeEditorFuncs()->newTime(&network, 3, 0.1), nullptr);
    nodeEditorFuncs()->cleanup(&network);
    EXPECT_EQ(journal(), (Lines{"init 1 Source", "time 3 Source", "cleanup Source"}));
    EXPECT_EQ(nodeFuncs()->channelGroup(&source)->parent->name, "Inner");

    Network copy("Copy", "Copy", nullptr, nullptr);
    addRootInputs(copy);
    EXPECT_EQ(nodeEditorFuncs()->copy(&copy, &network), nullptr);
    EXPECT_EQ(scalarOf(copy.root(), "Scalar"), 8);
    copy.clear();

    testNode(source).initError = "deep trouble";
    EXPECT_STREQ(nodeEditorFuncs()->init(&network, kInitRender),
                 "node \"Outer\": node \"Middle\": node \"Inner\": node \"Source\": deep trouble");
    journal().clear();
    network.clear();
    EXPECT_EQ(journal(), Lines{"destroy Source"});
}

// ---- The rest of the service ---------------------------------------------------------------------------------------

int events = 0;
void *countEvent(HostNodeEditor *network) {
    ++events;
    return nodeEditorFuncs()->userData(network);
}

TEST_F(NetworkTest, TheOwnersEventIsCalledAfterChanges) {
    events = 0;
    nodeEditorFuncs()->setEvent(&network, countEvent);
    HostNode &a = add(network, "A");
    EXPECT_EQ(events, 1);
    network.connect("A", "Scalar", "Net", "Scalar");
    EXPECT_EQ(events, 2);
    network.disconnect(*network.root().findInput("Scalar"));
    EXPECT_EQ(events, 3);
    network.disconnect(*network.root().findInput("Scalar"));
    EXPECT_EQ(events, 3);
    network.destroyNode(a);
    EXPECT_EQ(events, 4);
    nodeEditorFuncs()->setEvent(&network, nullptr);
}

// A user interface that opens every window it is asked to open, and records each.
struct AllDialogs final : Dialogs {
    Lines shown;
    bool show(const std::string &what) {
        shown.push_back(what + (serverInCall() == kHostServer ? "" : " in a call"));
        return true;
    }
    bool openNetwork(HostNodeEditor &network) override { return show("network " + networkOf(network).name()); }
    bool isNetworkOpen(HostNodeEditor &network) override { return networkOf(network).name() == "Net"; }
    bool editEnvelope(HostEnvelope &envelope) override { return show("envelope " + envelope.name); }
    bool editEnvelopes(HostVParm &parm) override { return show("envelopes " + parm.channelName()); }
    bool editTexture(HostVParm &parm) override { return show("texture " + parm.channelName()); }
};

TEST_F(NetworkTest, WindowsOpenThroughTheDialogs) {
    const HostVParmFuncs &parms = *vparmFuncs();
    HostVParm *parm = parms.create(kParmFloat, -1);
    parms.setUp(parm, "Size", network.channelGroup(), nullptr, nullptr, nullptr, nullptr);
    parms.setState(parm, kParmHasEnvelope);
    HostEnvelope *envelopes[3] = {};
    ASSERT_EQ(parms.envelopes(parm, envelopes), 1);
    const auto openAll = [&] {
        const CallScope call(numberOfServer("Opener"), "panel button");
        return std::array{nodeEditorFuncs()->openWindow(&network), nodeEditorFuncs()->isWindowOpen(&network),
                          envelopeFuncs()->edit(envelopes[0]), parms.editEnvelope(parm), parms.editTexture(parm)};
    };
    EXPECT_EQ(openAll(), (std::array{0, 0, 0, 0, 0}));
    AllDialogs dialogs;
    setDialogs(&dialogs);
    EXPECT_EQ(openAll(), (std::array{1, 1, 1, 1, 1}));
    setDialogs(nullptr);
    EXPECT_EQ(dialogs.shown, (Lines{"network Net", "envelope Size", "envelopes Size", "texture Size"}));
    EXPECT_EQ(openAll(), (std::array{0, 0, 0, 0, 0}));
    EXPECT_EQ(parms.editEnvelope(nullptr) + parms.editTexture(nullptr) + envelopeFuncs()->edit(nullptr), 0);
    parms.destroy(parm);
}

TEST_F(NetworkTest, NetworksStoreTheirProperties) {
    const HostNodeEditorFuncs &editors = *nodeEditorFuncs();
    int mine = 0;
    Network *own = networkOf(editors.create("Name", "Title", nullptr, &mine));
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

HostError rootInit(HostNodeEditor *network, int mode) {
    journal().push_back("root init " + std::to_string(mode));
    return nodeEditorFuncs()->userData(network) ? "root refuses" : nullptr;
}
HostError rootTime(HostNodeEditor *, int frame, double) {
    journal().push_back("root time " + std::to_string(frame));
    return nullptr;
}
void rootCleanup(HostNodeEditor *) { journal().push_back("root cleanup"); }
void rootPreview(HostNodeEditor *network, ShadingSample *sample, double colour[3]) {
    nodeInputFuncs()->evaluate(nodeEditorFuncs()->rootInputByName(network, "Color"), sample, colour);
}

TEST_F(NetworkTest, TheRootDescriptionsFunctionsAreCalled) {
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
    EXPECT_FALSE(network.previewSample(&sample, colour));
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

TEST_F(NetworkTest, EventsOfRootInputsReceiveTheUserData) {
    int count = 0;
    Network own("Own", "Own", nullptr, &count);
    HostInput *input = nodeEditorFuncs()->addRootInput(&own, kConnectScalar, "In", rootEvent);
    add(own, "A");
    own.connect("A", "Scalar", "Own", "In");
    own.destroyNode(own.node("A"));
    EXPECT_EQ(told, input);
    EXPECT_EQ(count, 2);
}

void wide(HostNodeEditor *, void *, double bounds[3][2]) {
    bounds[0][0] = -2;
    bounds[0][1] = 6;
}

TEST_F(NetworkTest, TheOwnerSetsTheExtentOfPreviews) {
    double scale[3], position[3];
    nodeUtilityFuncs()->autosize(&network.root(), scale, position);
    EXPECT_EQ(scale[0], 1);
    EXPECT_EQ(position[0], 0);
    nodeEditorFuncs()->setAutosize(&network, wide);
    nodeUtilityFuncs()->autosize(&network.root(), scale, nullptr);
    nodeUtilityFuncs()->autosize(&network.root(), scale, position);
    EXPECT_EQ(scale[0], 8);
    EXPECT_EQ(position[0], 2);
    EXPECT_EQ(scale[2], 1);
}

} // namespace
} // namespace velm::host::test
