// The list of servers: finding them, activating them, and reporting refusals.
#include "host/graph/server_list.h"

#include "host/base/error.h"
#include "host/load/lookup.h"
#include "host/services/system.h"

#include <gtest/gtest.h>

namespace velm::host::test {
namespace {

int activationResult = kActivateOk;
int calls = 0;
const HostItemOps *items = nullptr;
bool complete = true;

void *createNothing(void *, void *, const char **) { return nullptr; }
void destroyNothing(void *) {}
void evaluateNothing(void *, ShadingSample *, HostOutput *, HostNodeValue *) {}

int activate(int version, HostLookup *find, void *local, void *) {
    ++calls;
    EXPECT_EQ(version, kNodeHandlerVersion);
    auto *handler = static_cast<HostNodeHandler *>(local);
    items = handler->item;
    handler->instance->create = createNothing;
    handler->instance->destroy = destroyNothing;
    if (complete) handler->evaluate = evaluateNothing;
    if (activationResult == kActivateBadGlobal) find("Weather Report", kUseTransient);
    return activationResult;
}

int activateInterface(int version, HostLookup *, void *local, void *) {
    EXPECT_EQ(version, kNodeInterfaceVersion);
    auto *interface = static_cast<HostNodeInterface *>(local);
    interface->panel = static_cast<HostPanel *>(interface->instance);
    return activationResult;
}

constexpr HostTag kListedTags[] = {{"Counter", kTagUserName}, {"Nodes/State", kTagMenu}, {nullptr, 0}};
constexpr HostServer kListedTable[] = {
    {"SomethingElse", "Velm Counter", nullptr, nullptr},
    {HOST_CLASS_NODE_HANDLER, "Velm Counter", activate, kListedTags},
    {HOST_CLASS_NODE_INTERFACE, "Velm Counter", activateInterface, kListedTags},
    {HOST_CLASS_NODE_HANDLER, "Velm Plain", activate, nullptr},
    {HOST_CLASS_NODE_INTERFACE, "Velm Plain", nullptr, nullptr},
    {HOST_CLASS_NODE_HANDLER, "Velm Bare", activate, nullptr},
    {nullptr, nullptr, nullptr, nullptr},
};

class ServerListTest : public ::testing::Test {
  protected:
    void SetUp() override {
        activationResult = kActivateOk;
        calls = 0;
        complete = true;
        list.add(kListedTable, "test.p");
    }
    static std::string errorOf(ServerClass &server) {
        try {
            server.handler();
        } catch (const InputError &error) {
            return error.what();
        }
        return "no error";
    }
    ServerList list;
};

TEST_F(ServerListTest, TagsGiveNameAndGroup) {
    ServerClass &counter = list.get("Velm Counter");
    EXPECT_EQ(counter.displayName(), "Counter");
    EXPECT_EQ(counter.menuGroup(), "Nodes/State");
    EXPECT_EQ(counter.origin(), "test.p");
    EXPECT_EQ(list.get("Velm Plain").displayName(), "Velm Plain");
    EXPECT_EQ(list.get("Velm Plain").menuGroup(), "");
    EXPECT_EQ(list.all().size(), 3u);
}

TEST_F(ServerListTest, ANodeWithoutInterfaceActivationHasNoPanel) {
    EXPECT_TRUE(list.get("Velm Counter").hasPanel());
    EXPECT_FALSE(list.get("Velm Plain").hasPanel());
    EXPECT_FALSE(list.get("Velm Bare").hasPanel());
    int instance = 0;
    EXPECT_EQ(static_cast<void *>(list.get("Velm Counter").panel(&instance)), &instance);
    EXPECT_EQ(list.get("Velm Plain").panel(&instance), nullptr);
}

TEST_F(ServerListTest, AServerIsActivatedOnce) {
    const HostNodeHandler &handler = list.get("Velm Counter").handler();
    EXPECT_EQ(&list.get("Velm Counter").handler(), &handler);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(handler.evaluate, evaluateNothing);
    EXPECT_NE(items, nullptr);
}

TEST_F(ServerListTest, TheModellingApplicationHasNoItems) {
    setSystemId(kSystemModelling);
    list.get("Velm Counter").handler();
    setSystemId(kSystemLayout);
    EXPECT_EQ(items, nullptr);
}

TEST_F(ServerListTest, RefusalsAreExplained) {
    const std::pair<int, const char *> kRefusals[] = {
        {kActivateBadVersion, "it does not know version 1 of \"NodeHandler\""},
        {kActivateBadGlobal, "it needs the service \"Weather Report\", which this host does not offer"},
        {kActivateBadLocal, "it cannot use the record that it was given"},
        {kActivateBadApplication, "it is not made for this application"},
        {kActivateBadApplicationQuiet, "it is not made for this application"},
        {77, "it gave the result 77"},
    };
    for (const auto &[code, words] : kRefusals) {
        activationResult = code;
        EXPECT_EQ(errorOf(list.get("Velm Counter")),
                  std::string("node \"Velm Counter\" (test.p) refuses to work: ") + words);
    }
    activationResult = kActivateOk;
    EXPECT_EQ(errorOf(list.get("Velm Counter")), "no error"); // the next activation may succeed
}

TEST_F(ServerListTest, AnIncompleteHandlerIsRefused) {
    complete = false;
    EXPECT_EQ(errorOf(list.get("Velm Counter")),
              "node \"Velm Counter\" (test.p) does not say how it is created, destroyed and evaluated");
}

TEST_F(ServerListTest, RefusalsOfInterfacesAreExplained) {
    activationResult = kActivateBadVersion;
    int instance = 0;
    try {
        list.get("Velm Counter").panel(&instance);
        FAIL();
    } catch (const InputError &error) {
        EXPECT_STREQ(error.what(), "node \"Velm Counter\" (test.p) refuses to work: it does not know version 4 of "
                                   "\"NodeInterface\"");
    }
}

TEST_F(ServerListTest, AnUnknownNameSuggestsTheNearest) {
    try {
        list.get("Velm Countre");
        FAIL();
    } catch (const InputError &error) {
        EXPECT_STREQ(error.what(), "no node \"Velm Countre\", did you mean \"Velm Counter\"?");
    }
    EXPECT_EQ(list.find("Velm Countre"), nullptr);
}

TEST_F(ServerListTest, InvalidTablesAddNothing) {
    const HostServer kTwice[] = {{HOST_CLASS_NODE_HANDLER, "New", activate, nullptr},
                                 {HOST_CLASS_NODE_HANDLER, "Velm Counter", activate, nullptr},
                                 {nullptr, nullptr, nullptr, nullptr}};
    const HostServer kTwins[] = {{HOST_CLASS_NODE_HANDLER, "New", activate, nullptr},
                                 {HOST_CLASS_NODE_HANDLER, "New", activate, nullptr},
                                 {nullptr, nullptr, nullptr, nullptr}};
    const HostServer kLonely[] = {{HOST_CLASS_NODE_INTERFACE, "New", activateInterface, nullptr},
                                  {nullptr, nullptr, nullptr, nullptr}};
    const HostServer kInactive[] = {{HOST_CLASS_NODE_HANDLER, "New", nullptr, nullptr},
                                    {nullptr, nullptr, nullptr, nullptr}};
    const HostServer kNameless[] = {{HOST_CLASS_NODE_HANDLER, nullptr, activate, nullptr},
                                    {nullptr, nullptr, nullptr, nullptr}};
    for (const HostServer *table : {kTwice, kTwins, kLonely, kInactive, kNameless}) {
        EXPECT_THROW(list.add(table, "other.p"), InputError);
        EXPECT_EQ(list.all().size(), 3u);
    }
}

TEST_F(ServerListTest, AnOriginCanBeRemoved) {
    list.remove("other.p");
    EXPECT_EQ(list.all().size(), 3u);
    list.remove("test.p");
    EXPECT_TRUE(list.all().empty());
}

TEST(HostServers, ContainTheBuiltInNodesFromTheStart) {
    for (const char *name : {"Constant Color",
                             "Constant Scalar",
                             "Constant Vector",
                             "Constant Integer",
                             "Spot Info",
                             "Add Scalar",
                             "Multiply Scalar",
                             "Mix Scalar",
                             "Clamp Scalar",
                             "Add Color",
                             "Multiply Color",
                             "Mix Color",
                             "Clamp Color",
                             "Make Vector",
                             "Split Vector",
                             "Make Color",
                             "Split Color",
                             "Checker",
                             "Fractal Noise",
                             "Image",
                             "Curve",
                             "Image Projection",
                             "Color Ramp",
                             "Blend Color",
                             "Blend Scalar",
                             "Bump",
                             "Procedural Pattern",
                             "Vertex Color",
                             "Weight Map",
                             "Scalar Math",
                             "Vector Math",
                             "Incidence",
                             "Fresnel",
                             "Camera Distance",
                             "Item Info",
                             "Time",
                             "Turbulence",
                             "Marble",
                             "Wood",
                             "Cells",
                             "Brick"}) {
        ServerClass &server = serverList().get(name);
        EXPECT_EQ(server.displayName(), name);
        EXPECT_FALSE(server.menuGroup().empty());
        EXPECT_TRUE(server.hasPanel());
    }
}

} // namespace
} // namespace velm::host::test
