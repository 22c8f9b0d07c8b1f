// The functions of each node class with outside names are those that the host gets through the server table and the
// panel.
#include "module/servers.h"
#include "tests/module/fake_editors.h"
#include "tests/module/fake_scene.h"
#include "tests/module/hint_list.h"
#include "tests/module/test_node.h"

#include <algorithm>
#include <gtest/gtest.h>

extern "C" {
extern const HostModuleDescriptor _mod_descrip;
}

namespace velm::plugin {

// It has neither a server nor tags.
VELM_DECLARE_NODE(RenderCam);
VELM_DECLARE_PANEL(RenderCam);

namespace {

using Lines = std::vector<std::string>;

struct Names {
    const char *server; // null, like the tags, if the server table does not list the class
    HostActivate *activate;
    const HostTag *tags;
    HostVParm *(*createParm)(int type, const char *name, HostChannelGroup *group, const double *value);
    void (*readParms)(void *instance, double time);
    // Null in a class without a panel:
    HostActivate *interface = nullptr;
    HostPanel *(*panel)(void *instance) = nullptr;
    HostPanelGetter *get = nullptr;
    HostPanelSetter *set = nullptr;
    HostPanelChange *changed = nullptr;
};

#define NODE_NAMES(Name, serverName, serverTags)                                                                       \
    .server = (serverName), .activate = Name##_Activate, .tags = (serverTags), .createParm = Name##_create_vpenv,      \
    .readParms = Name##_get_vpValues
#define PANEL_NAMES(Name)                                                                                              \
    .interface = Name##_Interface, .panel = Name##_get_xPanel, .get = Name##_ui_get, .set = Name##_ui_set,             \
    .changed = Name##_ui_chgnotify
#define WITH_PANEL(Name, server) {NODE_NAMES(Name, server, Name##_ServerTags), PANEL_NAMES(Name)},
#define WITHOUT_PANEL(Name, server) {NODE_NAMES(Name, server, Name##_ServerTags)},

// The services of the scene, and editors of nested networks.
void *lookup(const char *service, int use) {
    return service == std::string(HOST_NODE_EDITOR_FUNCS) ? FakeEditors::lookup(service, use)
                                                          : FakeScene::lookup(service, use);
}

const Names kNodeClasses[] = {
    VELM_SERVERS(WITH_PANEL, WITHOUT_PANEL){NODE_NAMES(RenderCam, nullptr, nullptr), PANEL_NAMES(RenderCam)}};

// A node of each class, in a host with all services that creating it and showing its panel need.
class OutsideNames : public testing::TestWithParam<Names> {
  protected:
    FakeHost host;
    FakeEditors editors;
    FakeScene scene;
    const Names names = GetParam();
    HostNode &node = host.addNode("node");
    HostInstanceOps ops{};
    HostRenderOps render{};
    HostNodeHandler handler = {.instance = &ops,
                               .item = nullptr,
                               .render = &render,
                               .evaluate = nullptr,
                               .customPreview = nullptr,
                               .flags = nullptr};
    void *instance = nullptr;

    void SetUp() override {
        ASSERT_EQ(names.activate(1, lookup, &handler, nullptr), 0);
        const char *error = nullptr;
        instance = ops.create(ops.priv, &node, &error);
        ASSERT_NE(instance, nullptr);
        host.takeLog();
    }
    void TearDown() override {
        if (instance) ops.destroy(instance);
    }
};

INSTANTIATE_TEST_SUITE_P(NodeClasses, OutsideNames, testing::ValuesIn(kNodeClasses), [](const auto &row) {
    std::string name = row.param.server ? row.param.server : "not listed";
    std::erase_if(name, [](char c) { return c == ' ' || c == '(' || c == ')'; });
    return name;
});

TEST_P(OutsideNames, AreThoseOfTheServerTable) {
    if (!names.server) return;
    EXPECT_EQ(activationOf(HOST_CLASS_NODE_HANDLER, names.server), names.activate);
    EXPECT_EQ(activationOf(HOST_CLASS_NODE_INTERFACE, names.server), names.interface);
    for (const HostServer *server = ServerDesc; server->className; ++server)
        if (server->name == std::string(names.server)) {
            EXPECT_EQ(server->tags, names.tags);
        }
}

TEST_P(OutsideNames, AreThoseOfThePanel) {
    if (!names.interface) return;
    HostNodeInterface record = {.instance = instance, .panel = nullptr, .options = nullptr, .command = nullptr};
    ASSERT_EQ(names.interface(4, lookup, &record, nullptr), 0);
    ASSERT_NE(record.panel, nullptr);
    EXPECT_EQ(names.panel(instance), record.panel);
    EXPECT_EQ(record.panel->get, names.get);
    EXPECT_EQ(record.panel->set, names.set);
    EXPECT_EQ(hintsWith(kHintChangeNotify, record.panel->hints).at(0).arguments[0].change, names.changed);
}

TEST_P(OutsideNames, ReadAndCreateParametersByTheServicesOfTheClass) {
    names.readParms(instance, 1.5);
    const Lines read = host.takeLog();
    Lines expected;
    for (const HostVParm &parm : host.parms)
        if (!parm.destroyed && parm.type != kParmPlainTriple) expected.push_back("getParm " + parm.channel + " at 1.5");
    std::vector<std::string> sorted = read;
    std::sort(sorted.begin(), sorted.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(sorted, expected);

    if (names.activate == RenderInfo_Activate) return; // it has not fetched the parameter services
    HostChannelGroup group = {.name = "Group", .parent = nullptr};
    const double value = 2.5;
    EXPECT_NE(names.createParm(kParmFloat, "Extra", &group, &value), nullptr);
    EXPECT_EQ(host.takeLog(), (Lines{"createParm 16 -1", "setUpParm Extra in Group", "setParm Extra 2.5"}));
}

TEST(OutsideNamesOfTheModule, AreThoseOfTheDescriptor) {
    EXPECT_EQ(_mod_descrip.servers, ServerDesc);
    EXPECT_EQ(_mod_descrip.startup, Startup);
    EXPECT_EQ(_mod_descrip.shutdown, Shutdown);
}

} // namespace
} // namespace velm::plugin
