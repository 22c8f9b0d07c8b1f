// Changing an open scene, and writing it back.
#include "host/session/session.h"

#include "host/render/scene/render_scene_data.h"
#include "tests/session/open_scene.h"

#include <gtest/gtest.h>

#include <functional>

namespace velm::host {
namespace {

const NodePath kLevel{.network = {.surface = "Clay", .nodes = {}}, .node = "Level"};
const NodePath kProduct{.network = {.surface = "Clay", .nodes = {}}, .node = "Product"};
const NodePath kRoot{.network = {.surface = "Clay", .nodes = {}}, .node = "Clay"};

class OpenSession : public testing::Test {
  protected:
    SceneDescription scene_ = test::read(test::kOpenScene);
    Warnings warnings_{Warnings::Policy::strict};
    Session session_{scene_, warnings_};
};

// The message of the InputError that an action throws; empty without one.
std::string refusal(const std::function<void()> &act) {
    try {
        act();
    } catch (const InputError &error) {
        return error.what();
    }
    return {};
}

TEST_F(OpenSession, ShowsTheChangedSceneLikeOneThatIsOpenedSo) {
    session_.setSetting(kLevel, "Scalar", 0.9);
    session_.setSurfaceValue("Ground", "Color", Double3{0.9, 0.1, 0.2});
    const std::vector<float> changed = test::pixelsOf(session_);
    SceneDescription described = session_.describe();
    EXPECT_NE(changed, test::pixelsOf(scene_));
    EXPECT_EQ(changed, test::pixelsOf(described));
}

TEST_F(OpenSession, KeepsMeshesAndRayStructureWhileNetworksChange) {
    const RenderSceneData &data = session_.renderScene().data();
    const Acceleration *acceleration = data.acceleration.get();
    const int updates = session_.renderScene().updates();
    session_.setSetting(kLevel, "Scalar", 0.9);
    session_.disconnect(kProduct, "B");
    session_.connect(kLevel, "Scalar", kRoot, "Luminosity");
    session_.addNode(kLevel.network, "Constant Scalar");
    EXPECT_EQ(session_.renderScene().data().acceleration.get(), acceleration);
    EXPECT_EQ(session_.renderScene().updates(), updates);
}

TEST_F(OpenSession, MovesACameraWithoutBuildingAnything) {
    const SceneWork work = session_.change([](SceneDescription &scene) { scene.cameras[0].position = {1, 2, -5}; });
    EXPECT_EQ(work, SceneWork{});
    EXPECT_EQ(session_.scene().cameras[0].position, (Double3{1, 2, -5}));
    EXPECT_EQ(test::pixelsOf(session_), test::pixelsOf(session_.describe()));
}

TEST_F(OpenSession, ChangesLightsBackdropAndRenderSettingsWithoutBuildingAnything) {
    const SceneWork work = session_.change([](SceneDescription &scene) {
        scene.lights[0].intensity = 0.5;
        scene.backdrop.colour = {0.5, 0, 0};
        scene.render.camera = "Top";
    });
    EXPECT_EQ(work, SceneWork{});
    EXPECT_EQ(test::pixelsOf(session_), test::pixelsOf(session_.describe()));
}

TEST_F(OpenSession, BuildsTheRayStructureAgainForAnObjectThatMoves) {
    const SceneWork work = session_.change([](SceneDescription &scene) { scene.objects[0].position[0] = 0.5; });
    EXPECT_EQ(work.accelerations, 1);
    EXPECT_EQ(work.meshes, 1) << "only the mesh of the moved object";
    EXPECT_EQ(test::pixelsOf(session_), test::pixelsOf(session_.describe()));
}

TEST_F(OpenSession, StaysAsItWasWhenAChangeIsRefused) {
    const std::vector<float> before = test::pixelsOf(session_);
    const auto shrinkToNothing = [](SceneDescription &scene) { scene.objects[0].scale = {0, 1, 1}; };
    EXPECT_NE(refusal([&] { session_.change(shrinkToNothing); }), "");
    const auto switchCurve = [](SceneDescription &scene) { scene.render.workflow = Workflow::classic; };
    EXPECT_NE(refusal([&] { session_.change(switchCurve); }), "") << "the images were read for the other workflow";
    EXPECT_EQ(session_.scene().objects[0].scale, (Double3{1, 1, 1}));
    EXPECT_EQ(test::pixelsOf(session_), before);
}

TEST_F(OpenSession, NamesTheNearestRightName) {
    EXPECT_NE(refusal([&] { session_.surface("Clya"); }).find("did you mean \"Clay\"?"), std::string::npos);
    EXPECT_NE(refusal([&] {
                  session_.setSetting({kLevel.network, "Levle"}, "Scalar", 1.0);
              }).find("\"Level\""),
              std::string::npos);
    EXPECT_NE(refusal([&] { session_.setSetting(kLevel, "Scaler", 1.0); }).find("\"Scalar\""), std::string::npos);
    EXPECT_NE(refusal([&] { session_.disconnect(kProduct, "C"); }).find("\"A\" and \"B\""), std::string::npos);
    EXPECT_NE(refusal([&] {
                  session_.setting({{"Clay", {"Level"}}, "Inner"}, "Scalar");
              }).find("holds no network"),
              std::string::npos);
}

TEST_F(OpenSession, ReadsSettings) {
    EXPECT_EQ(std::get<double>(session_.setting(kLevel, "Scalar")), 0.5);
    session_.setSetting(kLevel, "Scalar", 0.25);
    EXPECT_EQ(std::get<double>(session_.setting(kLevel, "Scalar")), 0.25);
}

TEST_F(OpenSession, AddsRenamesAndRemovesNodes) {
    EXPECT_EQ(session_.addNode(kLevel.network, "Constant Scalar", "Level"), "Level (2)");
    EXPECT_EQ(session_.renameNode({kLevel.network, "Level (2)"}, "More"), "More");
    session_.connect({kLevel.network, "More"}, "Scalar", kProduct, "A");
    session_.removeNode(kLevel);
    const SceneDescription described = session_.describe();
    ASSERT_EQ(described.surfaces[0].network.nodes.size(), 2u);
    EXPECT_EQ(described.surfaces[0].network.nodes[1].name, "More");
    ASSERT_EQ(described.surfaces[0].network.connections.size(), 2u);
    EXPECT_EQ(test::pixelsOf(session_), test::pixelsOf(described));
}

TEST_F(OpenSession, DescribesAnUnchangedSceneAsItWasOpened) {
    const SceneDescription described = session_.describe();
    EXPECT_EQ(described.surfaces[0].network.nodes.size(), scene_.surfaces[0].network.nodes.size());
    EXPECT_EQ(session_.write(""), session_.write(""));
}

TEST_F(OpenSession, WritesTextThatOpensToTheSamePicture) {
    session_.setSetting(kLevel, "Scalar", 0.9);
    session_.change([](SceneDescription &scene) { scene.cameras[0].fieldOfView = 55; });
    const std::string text = session_.write("");
    const SceneDescription again = test::read(text);
    EXPECT_EQ(test::pixelsOf(again), test::pixelsOf(session_));
    Warnings warnings(Warnings::Policy::strict);
    EXPECT_EQ(Session(again, warnings).write(""), text) << "writing what was written gives the same text";
}

TEST_F(OpenSession, DescribesANetworkWithoutTakingItApart) {
    session_.setSetting(kLevel, "Scalar", 0.9);
    const std::vector<float> before = test::pixelsOf(session_);
    session_.describe();
    EXPECT_EQ(test::pixelsOf(session_), before);
}

TEST(OpenDescription, ReadsAnObjectFileAsASceneOfThatObject) {
    const std::string object = "/usr/share/assimp/models/LWO/LWO2/sphere_with_mat_gloss_10pc.lwo";
    const SceneDescription scene = openDescription(object, {});
    ASSERT_EQ(scene.objects.size(), 1u);
    EXPECT_EQ(scene.name, "sphere_with_mat_gloss_10pc");
    EXPECT_FALSE(scene.surfaces.empty());
    EXPECT_TRUE(scene.cameras.empty());
    Warnings warnings(Warnings::Policy::goOn);
    const Session session(scene, warnings);
    EXPECT_GT(session.renderScene().triangleCount(), 0u);
}

TEST(OpenDescription, NamesAFileThatIsNotThere) {
    EXPECT_NE(refusal([] { openDescription("/nowhere/chair.lwo", {}); }).find("chair.lwo"), std::string::npos);
    EXPECT_NE(refusal([] { openDescription("/nowhere/chair.json", {}); }).find("chair.json"), std::string::npos);
}

TEST(ErrorsKeepTheirSourceLocation, AsData) {
    try {
        test::read("{\n\"cameras\": {\"Main\": {}},\n\"lights\": {\"Key\": {\"kind\": \"distand\"}}}");
        FAIL();
    } catch (const InputError &error) {
        EXPECT_EQ(error.location().line, 3);
        EXPECT_FALSE(error.location().file.empty());
        EXPECT_EQ(std::string(error.what()), error.location().text() + ": " + error.message());
    }
}

} // namespace
} // namespace velm::host
