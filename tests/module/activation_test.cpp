// Activation of node classes and their panels: the services that are looked up and their order, the effect of each
// missing service, and the fields of the host's records that are filled.
#include "module/servers.h"
#include "tests/module/test_node.h"
#include "tests/module/test_nodes.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>

namespace velm::plugin {
namespace {

using Lines = std::vector<std::string>;

const Lines kNodeServices = {"lookup NodeFuncs", "lookup NodeEditorFuncs", "lookup NodeInputFuncs",
                             "lookup NodeOutputFuncs"};
const Lines kParameterServices = {"lookup LWVParmFuncs 2", "lookup Animation Envelopes"};

Lines joined(std::initializer_list<Lines> parts) {
    Lines all;
    for (const Lines &part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

// The records that the host passes, with each byte set to a mark.
struct HandlerRecord {
    HostInstanceOps instance;
    HostItemOps item;
    HostRenderOps render;
    HostNodeHandler handler;

    HandlerRecord() {
        std::memset(static_cast<void *>(this), 0x5a, sizeof *this);
        handler.instance = &instance;
        handler.item = &item;
        handler.render = &render;
    }
    bool operator==(const HandlerRecord &other) const {
        return std::memcmp(&instance, &other.instance, sizeof instance) == 0 &&
               std::memcmp(&item, &other.item, sizeof item) == 0 &&
               std::memcmp(&render, &other.render, sizeof render) == 0 && handler.evaluate == other.handler.evaluate &&
               handler.customPreview == other.handler.customPreview && handler.flags == other.handler.flags;
    }
};

// A node class, and the services that it looks up between the node services and the parameter services.
struct Class {
    std::string server; // or the name of a class of these tests
    Lines further = {};
    bool parameters = true;
};

const Lines kScene = {"lookup System ID", "lookup LW Backdrop Info 2", "lookup LW Time Info"};
const Lines kImages = {"lookup LW Image List 5", "lookup NodeUtilityFuncs", "lookup File Request 2"};

// Two classes of these tests, and every node of the module. Nodes that are not listed here look up only the node
// services and the parameter services.
std::vector<Class> allClasses() {
    std::vector<Class> classes = {
        {.server = "Everything", .further = joined({{"lookup LW Image List 5", "lookup File Request 2"}, kScene})},
        {.server = "Bare", .parameters = false},
        {.server = "Velm Ambient Occlusion", .further = kScene},
        {.server = "Velm Gaussian Reflections", .further = joined({kImages, kScene})},
        {.server = "Velm Gaussian Refractions", .further = joined({kImages, kScene})},
        {.server = "Velm Group Node", .further = {"lookup NodeUtilityFuncs"}},
        {.server = "Velm Pixel Image", .further = kImages},
        {.server = "Velm Render Info", .parameters = false},
    };
    for (const HostServer *server = ServerDesc; server->className; server += 2)
        if (std::ranges::find(classes, std::string(server->name), &Class::server) == classes.end())
            classes.push_back({.server = server->name});
    return classes;
}

HostActivate *handlerOf(const std::string &server) {
    if (server == "Everything") return Everything_Activate;
    return server == "Bare" ? Bare_Activate : activationOf(HOST_CLASS_NODE_HANDLER, server.c_str());
}

// A valid name of a test.
std::string plain(std::string name) {
    std::erase_if(name, [](char c) { return c == ' ' || c == '(' || c == ')'; });
    return name;
}

class Activation : public testing::TestWithParam<Class> {
  protected:
    FakeHost host;
    HandlerRecord record;
    const Class tested = GetParam();

    int activate(int version = 1) {
        return handlerOf(tested.server)(version, FakeHost::lookup, &record.handler, nullptr);
    }
    Lines everyLookup() const {
        return joined({kNodeServices, tested.further, tested.parameters ? kParameterServices : Lines{}});
    }
};

INSTANTIATE_TEST_SUITE_P(Classes, Activation, testing::ValuesIn(allClasses()),
                         [](const auto &row) { return plain(row.param.server); });

TEST_P(Activation, RefusesOtherVersionsAndTouchesNothing) {
    for (const int version : {0, 2, 4, -1}) {
        EXPECT_EQ(activate(version), 1);
        EXPECT_EQ(host.takeLog(), Lines{});
        EXPECT_EQ(record, HandlerRecord());
    }
}

TEST_P(Activation, LooksItsServicesUpInOrder) {
    EXPECT_EQ(activate(), 0);
    Lines log = host.takeLog();
    if (tested.server == "Everything") {
        EXPECT_EQ(log.back(), "hook activated") << "once all services are there";
        log.pop_back();
    }
    EXPECT_EQ(log, everyLookup());
}

TEST_P(Activation, FailsWithoutAnyOneOfThemAndFillsNothing) {
    for (const std::string &line : everyLookup()) {
        const std::string service = line.substr(std::strlen("lookup "));
        if (service == HOST_SYSTEM_ID) continue; // its result is a word, and null is a valid one
        SCOPED_TRACE(service);
        host.missing = {service};
        EXPECT_EQ(activate(), 2);
        EXPECT_EQ(record, HandlerRecord());
        for (const std::string &note : host.takeLog()) EXPECT_NE(note, "hook activated");
    }
}

TEST_P(Activation, LooksUpAWholeGroupOfServicesBeforeItFails) {
    host.missing = {HOST_NODE_FUNCS};
    EXPECT_EQ(activate(), 2);
    EXPECT_EQ(host.takeLog(), kNodeServices);
    if (!tested.parameters) return;
    host.missing = {HOST_VPARM_FUNCS};
    EXPECT_EQ(activate(), 2);
    EXPECT_EQ(host.takeLog(), everyLookup());
}

TEST_P(Activation, FillsTheStatedMembersOnly) {
    const HandlerRecord before;
    ASSERT_EQ(activate(), 0);
    EXPECT_EQ(record.instance.priv, reinterpret_cast<void *>(FakeHost::lookup));
    EXPECT_NE(record.instance.create, before.instance.create);
    EXPECT_NE(record.instance.destroy, before.instance.destroy);
    EXPECT_NE(record.instance.copy, before.instance.copy);
    EXPECT_NE(record.instance.load, before.instance.load);
    EXPECT_NE(record.instance.save, before.instance.save);
    EXPECT_NE(record.render.init, before.render.init);
    EXPECT_NE(record.render.cleanup, before.render.cleanup);
    EXPECT_NE(record.render.newTime, before.render.newTime);
    EXPECT_NE(record.handler.evaluate, before.handler.evaluate);

    EXPECT_EQ(record.instance.describe, before.instance.describe);
    EXPECT_EQ(std::memcmp(&record.item, &before.item, sizeof before.item), 0);
    EXPECT_EQ(record.handler.customPreview, before.handler.customPreview);
    EXPECT_EQ(record.handler.flags, before.handler.flags);
    EXPECT_EQ(record.handler.instance, &record.instance);
    EXPECT_EQ(record.handler.item, &record.item);
    EXPECT_EQ(record.handler.render, &record.render);
}

TEST_P(Activation, LeavesTheItemOperationsAloneWhereThereAreNone) {
    record.handler.item = nullptr; // as in the modelling application
    EXPECT_EQ(activate(), 0);
    EXPECT_EQ(record.handler.item, nullptr);
}

TEST_P(Activation, CanBeRepeated) {
    ASSERT_EQ(activate(), 0);
    const HandlerRecord once = record;
    EXPECT_EQ(activate(), 0);
    EXPECT_EQ(record, once);
}

// ---- The application ----

struct Application {
    const char *name;
    uintptr_t word;
    bool modelling;
};

class SystemWord : public testing::TestWithParam<Application> {
  protected:
    FakeHost host;
    HandlerRecord record;
};

INSTANTIATE_TEST_SUITE_P(
    Applications, SystemWord,
    testing::Values(Application{.name = "Layout", .word = 0x00000000u, .modelling = false},
                    Application{.name = "LayoutWithSerial", .word = 0x01234567u, .modelling = false},
                    Application{.name = "Modelling", .word = 0x10000000u, .modelling = true},
                    Application{.name = "ModellingWithSerial", .word = 0x1abcdef0u, .modelling = true},
                    Application{.name = "RenderNode", .word = 0x20000000u, .modelling = false},
                    Application{.name = "RenderNodeWithSerial", .word = 0x21111111u, .modelling = false},
                    Application{.name = "LaterOne", .word = 0x90000000u, .modelling = false},
                    Application{.name = "LastOne", .word = 0xf0000000u, .modelling = false}),
    [](const auto &row) { return std::string(row.param.name); });

TEST_P(SystemWord, DecidesWhetherSceneServicesAreFetched) {
    host.systemWord = GetParam().word;
    ASSERT_EQ(Everything_Activate(1, FakeHost::lookup, &record.handler, nullptr), 0);
    Lines expected = joined({kNodeServices,
                             {"lookup LW Image List 5", "lookup File Request 2", "lookup System ID"},
                             GetParam().modelling ? Lines{} : Lines{"lookup LW Backdrop Info 2", "lookup LW Time Info"},
                             kParameterServices,
                             {"hook activated"}});
    EXPECT_EQ(host.takeLog(), expected);
    EXPECT_EQ(everythingBackdrop == nullptr, GetParam().modelling);
    EXPECT_EQ(everythingTime == nullptr, GetParam().modelling);
    EXPECT_NE(everythingImages, nullptr);
    EXPECT_NE(everythingRequest, nullptr);
}

TEST_P(SystemWord, DecidesWhetherSceneServicesAreRequired) {
    host.systemWord = GetParam().word;
    for (const char *service : {HOST_BACKDROP_INFO, HOST_TIME_INFO}) {
        host.missing = {service};
        const int expected = GetParam().modelling ? 0 : 2;
        EXPECT_EQ(Everything_Activate(1, FakeHost::lookup, &record.handler, nullptr), expected) << service;
        EXPECT_EQ(activationOf(HOST_CLASS_NODE_HANDLER, "Velm Ambient Occlusion")(1, FakeHost::lookup, &record.handler,
                                                                                  nullptr),
                  expected)
            << service;
    }
}

TEST(SceneServices, ForgetsSceneServicesOfAnEarlierActivation) {
    FakeHost host;
    HandlerRecord record;
    ASSERT_EQ(Everything_Activate(1, FakeHost::lookup, &record.handler, nullptr), 0);
    ASSERT_EQ(everythingTime, &host.time);
    host.systemWord = kSystemModelling;
    ASSERT_EQ(Everything_Activate(1, FakeHost::lookup, &record.handler, nullptr), 0);
    EXPECT_EQ(everythingTime, nullptr);
    EXPECT_EQ(everythingBackdrop, nullptr);
}

TEST(SceneServices, IsAskedForOnceTheServicesBeforeItAreThere) {
    FakeHost host;
    HandlerRecord record;
    for (const char *service : {HOST_IMAGE_LIST, HOST_FILE_REQUEST}) {
        host.missing = {service};
        EXPECT_EQ(Everything_Activate(1, FakeHost::lookup, &record.handler, nullptr), 2);
        EXPECT_EQ(host.takeLog(), joined({kNodeServices, {"lookup LW Image List 5", "lookup File Request 2"}}));
    }
}

TEST(SceneServices, AServiceForAllIsNeededInEveryApplication) {
    FakeHost host;
    HandlerRecord record;
    for (const uintptr_t word : {uintptr_t{kSystemLayout}, uintptr_t{kSystemModelling}}) {
        host.systemWord = word;
        host.missing = {};
        EXPECT_EQ(FullBlocks_Activate(1, FakeHost::lookup, &record.handler, nullptr), 0);
        host.missing = {HOST_FILE_REQUEST};
        EXPECT_EQ(FullBlocks_Activate(1, FakeHost::lookup, &record.handler, nullptr), 2);
    }
}

// ---- Panels ----

// Every class with a panel, except the one whose nodes need a host with node editors.
std::vector<std::string> classesWithPanels() {
    std::vector<std::string> names = {"Everything"};
    for (const HostServer *server = ServerDesc; server->className; ++server)
        if (server->className == std::string(HOST_CLASS_NODE_INTERFACE) && server->activate &&
            server->name != std::string("Velm Group Node"))
            names.emplace_back(server->name);
    return names;
}

class PanelActivation : public testing::TestWithParam<std::string> {
  protected:
    FakeHost host;
    HostActivate *interface =
        GetParam() == "Everything" ? Everything_Interface : activationOf(HOST_CLASS_NODE_INTERFACE, GetParam().c_str());
    TestNode node{host, handlerOf(GetParam()), interface};
    char mark = 0;
    HostNodeInterface record = {.instance = node.instance,
                                .panel = reinterpret_cast<HostPanel *>(&mark),
                                .options = [](void *) -> HostError { return nullptr; },
                                .command = [](void *, const char *) -> HostError { return nullptr; }};

    int activate(int version = 4) { return interface(version, FakeHost::lookup, &record, nullptr); }
    void expectUntouched() {
        EXPECT_EQ(record.instance, node.instance);
        EXPECT_EQ(record.panel, reinterpret_cast<HostPanel *>(&mark));
        EXPECT_NE(record.options, nullptr);
        EXPECT_NE(record.command, nullptr);
    }
};

INSTANTIATE_TEST_SUITE_P(Classes, PanelActivation, testing::ValuesIn(classesWithPanels()),
                         [](const auto &row) { return plain(row.param); });

TEST_P(PanelActivation, RefusesOtherVersionsAndTouchesNothing) {
    for (const int version : {0, 1, 3, 5}) {
        EXPECT_EQ(activate(version), 1);
        EXPECT_EQ(host.takeLog(), Lines{});
        expectUntouched();
    }
}

TEST_P(PanelActivation, FailsWithoutEitherServiceAndFillsNothing) {
    for (const char *service : {HOST_INSTANCE_UPDATE, HOST_PANEL_FUNCS}) {
        host.missing = {service};
        EXPECT_EQ(activate(), 2);
        EXPECT_EQ(host.takeLog(), (Lines{"lookup Instance Update", "lookup LWXPanel"}));
        expectUntouched();
    }
}

TEST_P(PanelActivation, GivesThePanelAndNeitherOptionsNorCommands) {
    EXPECT_EQ(activate(), 0);
    const Lines log = host.takeLog();
    ASSERT_GE(log.size(), 2u);
    EXPECT_EQ(log[0], "lookup Instance Update");
    EXPECT_EQ(log[1], "lookup LWXPanel");
    ASSERT_EQ(host.panels.size(), 1u);
    EXPECT_EQ(record.panel, &host.panels[0]);
    EXPECT_EQ(record.options, nullptr);
    EXPECT_EQ(record.command, nullptr);
    EXPECT_EQ(record.instance, node.instance);
}

TEST_P(PanelActivation, GivesTheSamePanelAgain) {
    ASSERT_EQ(activate(), 0);
    HostPanel *first = record.panel;
    host.takeLog();
    EXPECT_EQ(activate(), 0);
    EXPECT_EQ(record.panel, first);
    EXPECT_EQ(host.takeLog(), (Lines{"lookup Instance Update", "lookup LWXPanel"}));
}

TEST_P(PanelActivation, SucceedsWithoutAPanelWhereThereIsNoInstance) {
    record.instance = nullptr;
    EXPECT_EQ(activate(), 0);
    EXPECT_EQ(record.panel, nullptr);
    EXPECT_TRUE(host.panels.empty());
}

} // namespace
} // namespace velm::plugin
