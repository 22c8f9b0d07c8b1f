// Render Cam: the class, which no host can reach, the popups and the settings.
#include "tests/module/recorded_state.h"
#include "tests/nodes/render_cam_scene.h"

extern "C" {
extern const HostModuleDescriptor _mod_descrip;
}

namespace velm::plugin {
namespace {

// ---- The class ----

const Lines kServices = {"NodeFuncs",        "NodeEditorFuncs",  "NodeInputFuncs",
                         "NodeOutputFuncs",  "NodeUtilityFuncs", "Scene Objects 6",
                         "System ID",        "LW Item Info 4",   "LW Camera Evaluation Funcs 2",
                         "LW Camera Info 5", "LWVParmFuncs 2",   "Animation Envelopes"};

TEST_F(RenderCam, IsNoServerOfTheModule) {
    for (const HostServer *server = _mod_descrip.servers; server->className; ++server) {
        EXPECT_NE(server->activate, RenderCam_Activate);
        EXPECT_NE(server->activate, RenderCam_Interface);
        EXPECT_EQ(std::string(server->name).find("Cam"), std::string::npos);
        for (const HostTag *tag = server->tags; tag->text; ++tag)
            EXPECT_EQ(std::string(tag->text).find("Cam"), std::string::npos);
    }
}

TEST_F(RenderCam, LooksItsServicesUpInOrder) {
    HostNodeHandler handler = node().handler;
    EXPECT_EQ(RenderCam_Activate(1, FakeScene::lookup, &handler, nullptr), 0);
    Lines lookups;
    for (const std::string &service : kServices) lookups.push_back("lookup " + service);
    EXPECT_EQ(host.takeLog(), lookups);
    EXPECT_EQ(handler.instance->priv, reinterpret_cast<void *>(FakeScene::lookup));
}

TEST_F(RenderCam, IsRefusedWithoutAnyOfThem) {
    HostNodeHandler handler{}; // its pointers are null: following one crashes the test
    for (const std::string &service : kServices) {
        if (service == HOST_SYSTEM_ID) continue;
        host.missing = {service};
        EXPECT_EQ(RenderCam_Activate(1, FakeScene::lookup, &handler, nullptr), 2) << service;
    }
    for (const int version : {0, 2, 4}) EXPECT_EQ(RenderCam_Activate(version, FakeScene::lookup, &handler, nullptr), 1);
}

TEST_F(RenderCam, TheApplicationIsOfNoAccountBeforeTheServicesForAll) {
    HostNodeHandler handler{};
    for (const char *service : {HOST_NODE_UTILITY_FUNCS, HOST_SCENE_OBJECTS}) {
        host.missing = {service};
        host.takeLog();
        EXPECT_EQ(RenderCam_Activate(1, FakeScene::lookup, &handler, nullptr), 2);
        EXPECT_EQ(host.takeLog().back(), "lookup Scene Objects 6");
    }
}

TEST_F(RenderCam, AnApplicationWithoutCamerasNeedsNoCameraServices) {
    host.systemWord = kModellingWord;
    host.missing = {HOST_ITEM_INFO, HOST_CAMERA_EVALUATION, HOST_CAMERA_INFO};
    HostNodeHandler handler = node().handler;
    host.takeLog();
    EXPECT_EQ(RenderCam_Activate(1, FakeScene::lookup, &handler, nullptr), 0);
    EXPECT_EQ(host.takeLog(), (Lines{"lookup NodeFuncs", "lookup NodeEditorFuncs", "lookup NodeInputFuncs",
                                     "lookup NodeOutputFuncs", "lookup NodeUtilityFuncs", "lookup Scene Objects 6",
                                     "lookup System ID", "lookup LWVParmFuncs 2", "lookup Animation Envelopes"}));
    for (const uintptr_t word :
         {uintptr_t{kSystemLayout}, uintptr_t{kSystemRenderNode}, uintptr_t{0x30000000u}, uintptr_t{0x01000000u}}) {
        host.systemWord = word;
        EXPECT_EQ(RenderCam_Activate(1, FakeScene::lookup, &handler, nullptr), 2) << word;
    }
}

TEST_F(RenderCam, IsMadeInOrderWithoutAPreview) {
    HostNode &second = host.addNode("second");
    const char *error = nullptr;
    node();
    void *instance = node().ops.create(node().ops.priv, &second, &error);
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(host.takeLog(), (Lines{"setColour 164 50 10", "channelGroup", "createGroup Render Cam in second",
                                     "createOutput Color 1"}));
    node().ops.destroy(instance);
    node().ops.destroy(nullptr);
    EXPECT_EQ(host.takeLog(), Lines{});
    EXPECT_EQ(node().inputs(), Lines{});
    EXPECT_EQ(node().outputs(), Lines{"Color 1"});
}

// ---- The panel ----

TEST_F(RenderCam, ThePanelHasTwoPopups) {
    const HostPanel *panel = node().panel();
    const char *const labels[] = {"UV Map", "Camera"};
    const std::vector<Hint> added = hintsWith(kHintAddControl, panel->hints);
    ASSERT_EQ(added.size(), 2u);
    for (unsigned int i = 0; i < 2; ++i) {
        EXPECT_EQ(panel->values[i].id, kUvMap + i);
        EXPECT_STREQ(panel->values[i].label, labels[i]);
        EXPECT_STREQ(panel->values[i].type, "integer");
        EXPECT_EQ(added[i].arguments[0].word, kUvMap + i);
        EXPECT_STREQ(added[i].arguments[1].text, "iPopChoice");
        EXPECT_EQ(added[i].arguments[2].word, kUvMap + i);
        EXPECT_STREQ(hintsWith(kHintLabel, panel->hints)[i].arguments[1].text, labels[i]);
        EXPECT_EQ(node().integer(kUvMap + i), 0);
    }
    EXPECT_EQ(panel->values[2].id, 0u);
    int value = 1;
    for (const unsigned int id : {0u, 0x8000u, 0x8003u, 0x9001u}) {
        EXPECT_EQ(panel->get(node().instance, id), nullptr);
        EXPECT_EQ(panel->set(node().instance, id, &value), 0);
    }
    for (const unsigned int id : {kUvMap, kCamera}) EXPECT_EQ(panel->set(node().instance, id, &value), 1);
}

TEST_F(RenderCam, ThePanelTellsOfChanges) {
    HostPanel *panel = node().panel();
    HostPanelChange *changed = hintsWith(kHintChangeNotify, panel->hints)[0].arguments[0].change;
    host.takeLog();
    EXPECT_EQ(changed(panel, kCamera, kCamera, kEventChanging), 0);
    EXPECT_EQ(host.takeLog(), (Lines{"getData 0", "updatePreview node"}));
    EXPECT_EQ(changed(panel, kCamera, kCamera, kEventSet), 0);
    EXPECT_EQ(host.takeLog(), (Lines{"getData 0", "instanceUpdate NodeHandler"}));
}

TEST_F(RenderCam, OffersTheMapsOfTheScene) {
    EXPECT_EQ(count(kUvMap), 3);
    EXPECT_EQ(name(kUvMap, 0), "(none)");
    EXPECT_EQ(name(kUvMap, 1), "Screen");
    EXPECT_EQ(name(kUvMap, 2), "Wall");
    scene.uvMaps.clear();
    EXPECT_EQ(count(kUvMap), 1);
    EXPECT_EQ(name(kUvMap, 0), "(none)");
}

TEST_F(RenderCam, OffersTheCamerasOfTheScene) {
    EXPECT_EQ(count(kCamera), 4);
    const char *const names[] = {"(none)", "Front", "Side", "Top", "(error)", "(error)"};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(name(kCamera, i), names[i]);
    scene.cameras.clear();
    EXPECT_EQ(count(kCamera), 1);
    EXPECT_EQ(name(kCamera, 0), "(none)");
    EXPECT_EQ(name(kCamera, 1), "(error)");
}

TEST_F(RenderCam, OffersNoCamerasWhereThereIsNoSuchThing) {
    host.systemWord = kModellingWord;
    EXPECT_EQ(count(kCamera), 1);
    for (const int index : {0, 1, 5}) EXPECT_EQ(name(kCamera, index), "(inactive)");
    EXPECT_EQ(count(kUvMap), 3) << "maps there are";
}

TEST_F(RenderCam, AMapIsKnownByItsName) {
    std::string asked;
    scene.uvMapping = [&](const std::string &map, double &, double &) {
        asked = map;
        return false;
    };
    ready();
    const std::string longName(300, 'x');
    scene.uvMaps.push_back(longName);
    struct Case {
        int index;
        std::string name;
    };
    for (const Case &row : {Case{1, "Screen"}, Case{2, "Wall"}, Case{0, "(none)"}, Case{3, longName.substr(0, 255)},
                            Case{1, "Screen"}, Case{9, ""}}) {
        node().set(kUvMap, row.index);
        seen();
        EXPECT_EQ(asked, row.name);
        EXPECT_EQ(node().integer(kUvMap), row.index);
    }
}

// ---- Settings ----

TEST_F(RenderCam, KeepsItsTwoChoicesInFiles) {
    node().set(kUvMap, 2);
    node().set(kCamera, 70000);
    RecordedState state;
    EXPECT_EQ(node().ops.save(node().instance, state.save()), nullptr);
    EXPECT_EQ(state.lines(), (Lines{"I2 2", "I2 4464"}));
    TestNode other(host, activateInScene, RenderCam_Interface, "other");
    EXPECT_EQ(other.ops.load(other.instance, state.load()), nullptr);
    EXPECT_EQ(other.integer(kUvMap), 2);
    EXPECT_EQ(other.integer(kCamera), 4464);
    RecordedState negative;
    negative.integer(65535).integer(40000);
    EXPECT_EQ(other.ops.load(other.instance, negative.load()), nullptr);
    EXPECT_EQ(other.integer(kUvMap), -1);
    EXPECT_EQ(other.integer(kCamera), -25536);
}

TEST_F(RenderCam, LoadingLeavesTheMapAndTheCameraUntilThePanelSetsThem) {
    rays.colour = {{0.5, 0.5, 0.5}};
    ready(1);
    RecordedState state;
    state.integer(2).integer(3);
    EXPECT_EQ(node().ops.load(node().instance, state.load()), nullptr);
    EXPECT_EQ(host.takeLog(), Lines{});
    EXPECT_EQ(seen(), (Colour{0.5, 0.5, 0.5})) << "through the map and the camera of before";
    node().render.cleanup(node().instance);
    host.takeLog();
    node().render.init(node().instance, kInitRender);
    EXPECT_EQ(host.takeLog().at(0), "createEvaluator Front");
    node().set(kCamera, node().integer(kCamera));
    node().set(kUvMap, node().integer(kUvMap));
    EXPECT_EQ(seen(), kGreen) << "the other map";
}

TEST_F(RenderCam, ACopyHasTheChoicesAndNothingBehindThem) {
    ready(3);
    TestNode other(host, activateInScene, RenderCam_Interface, "other");
    EXPECT_EQ(other.ops.copy(other.instance, node().instance), nullptr);
    EXPECT_EQ(other.integer(kUvMap), 1);
    EXPECT_EQ(other.integer(kCamera), 3);
    host.takeLog();
    other.render.init(other.instance, kInitRender);
    EXPECT_EQ(host.takeLog(), Lines{}) << "no camera";
}

} // namespace
} // namespace velm::plugin
