// Render scenes from descriptions, and their errors.
#include "host/base/error.h"
#include "host/render/geometry/item.h"
#include "tests/render/test_scene.h"
#include "tests/temporary_directory.h"

namespace velm::host::test {
namespace {

// The message of the error that building the scene gives.
std::string errorOf(TestScene &scene) {
    try {
        scene.renderScene();
    } catch (const InputError &error) {
        return error.what();
    }
    ADD_FAILURE() << "no error";
    return {};
}

void expectTells(const std::string &message, std::initializer_list<const char *> parts) {
    for (const char *part : parts) EXPECT_NE(message.find(part), std::string::npos) << message;
}

TEST(RenderScene, CountsAndNames) {
    TestScene scene;
    scene.surface("Grey");
    scene.object("Box", BoxShape{}, "Grey");
    scene.object("Ball", SphereShape{.radius = 1, .segments = 8}, "Grey");
    scene.description.lights.emplace_back().name = "Sun";
    scene.description.lights.back().position = {0, 1, 0};
    EXPECT_EQ(scene.renderScene().triangleCount(), 12u + 8 * 2 + 8 * 2 * 2);
    EXPECT_GT(scene.renderScene().pointCount(), 8u);
    EXPECT_GT(scene.renderScene().accelerationBytes(), 0u);
    EXPECT_EQ(scene.item(kItemObject, "Ball")->index, 1);
    EXPECT_EQ(scene.item(kItemObject, "Ball")->type, kItemObject);
    EXPECT_EQ(scene.item(kItemLight, "Sun")->type, kItemLight);
    EXPECT_EQ(scene.item(kItemCamera, "Camera")->type, kItemCamera);
    EXPECT_EQ(scene.item(kItemObject, "Sun"), nullptr);
    EXPECT_EQ(scene.item(kItemBone, "Ball"), nullptr);
}

TEST(RenderScene, EmptySceneIsAllBackdrop) {
    TestScene scene;
    expectNear(scene.pixel(), {0.25, 0.5, 0.75}, 1e-6);
}

TEST(RenderScene, MaterialsGetTheirSurfaces) {
    const TemporaryDirectory directory;
    writeText(directory / "a.mtl", "newmtl left\nnewmtl right\n");
    writeText(directory / "a.obj", "mtllib a.mtl\nv -1 -1 0\nv 0 -1 0\nv 0 1 0\nv -1 1 0\nv 1 -1 0\nv 1 1 0\n"
                                   "usemtl left\nf 1 2 3 4\nusemtl right\nf 2 5 6 3\n");
    TestScene scene;
    scene.job.width = 2;
    scene.surface("Red", {{"Luminosity", 1}}, {1, 0, 0});
    scene.surface("Green", {{"Luminosity", 1}}, {0, 1, 0});
    ObjectDescription &object = scene.object("Mesh", MeshFile{directory / "a.obj"}, "Green");
    object.surfaces.push_back({.material = "left", .surface = "Red", .location = {}});
    const Picture picture = scene.render().picture;
    EXPECT_EQ(picture.pixel(0, 0)[0], 1);
    EXPECT_EQ(picture.pixel(0, 0)[1], 0);
    EXPECT_EQ(picture.pixel(1, 0)[1], 1);

    TestScene missing;
    missing.surface("Red");
    missing.object("Mesh", MeshFile{directory / "a.obj"}, "Red").surfaces = {
        {.material = "left", .surface = "Red", .location = {}}};
    expectTells(errorOf(missing), {"\"Mesh\"", "\"right\""});

    TestScene unknown;
    unknown.surface("Red");
    unknown.object("Mesh", MeshFile{directory / "a.obj"}, "Red")
        .surfaces.push_back({.material = "lift", .surface = "Red", .location = {}});
    expectTells(errorOf(unknown), {"\"lift\"", "\"left\""});
}

TEST(RenderScene, ErrorsHaveTheirPlace) {
    TestScene scene;
    scene.surface("Grey");
    scene.object("Box", BoxShape{}, "Gray").location = {.file = "scene.json", .line = 12};
    const std::string message = errorOf(scene);
    EXPECT_EQ(message.rfind("scene.json:12: ", 0), 0u) << message;
    expectTells(message, {"\"Box\"", "\"Gray\"", "\"Grey\""});

    TestScene file;
    file.surface("Grey");
    file.object("Mesh", MeshFile{"/nowhere/a.obj"}, "Grey").location = {.file = "scene.json", .line = 3};
    expectTells(errorOf(file), {"scene.json:3", "/nowhere/a.obj"});
}

TEST(RenderScene, RefusesWhatMakesNoSense) {
    const auto refused = [](auto edit, const char *what) {
        TestScene scene;
        scene.surface("Grey");
        scene.object("Box", BoxShape{}, "Grey");
        edit(scene.description);
        EXPECT_THROW(scene.renderScene(), InputError) << what;
    };
    refused([](SceneDescription &scene) { scene.objects[0].surfaces.clear(); }, "no surface");
    refused([](SceneDescription &scene) { scene.objects[0].scale = {1, 0, 1}; }, "flattened");
    refused([](SceneDescription &scene) { scene.objects[0].position = {NAN, 0, 0}; }, "nowhere");
    refused([](SceneDescription &scene) { scene.objects[0].rotation = {0, INFINITY, 0}; }, "spinning");
    refused([](SceneDescription &scene) { scene.objects[0].shape = BoxShape{.size = {1, 0, 1}}; }, "a flat box");
    refused([](SceneDescription &scene) { scene.lights.emplace_back(); }, "a distant light on its target");
    refused(
        [](SceneDescription &scene) {
            LightDescription &area = scene.lights.emplace_back();
            area.kind = LightDescription::Kind::area;
            area.position = {0, 1, 0};
            area.samples = 0;
        },
        "an area light without samples");
    refused(
        [](SceneDescription &scene) {
            LightDescription &area = scene.lights.emplace_back();
            area.kind = LightDescription::Kind::area;
            area.position = {0, 1, 0};
            area.width = -1;
        },
        "an area light of negative width");
    refused(
        [](SceneDescription &scene) {
            LightDescription &tube = scene.lights.emplace_back();
            tube.kind = LightDescription::Kind::linear;
            tube.position = {0, 1, 0};
            tube.length = -1;
        },
        "a linear light of negative length");
    refused([](SceneDescription &scene) { scene.backdrop.skySqueeze = 0; }, "a backdrop squeezed by 0");
}

TEST(RenderScene, SurfacesLearnTheirBounds) {
    TestScene scene;
    scene.surface("Grey");
    scene.object("A", BoxShape{.size = {2, 4, 6}}, "Grey", {10, 0, 0});
    scene.object("B", BoxShape{.size = {2, 2, 2}}, "Grey", {-5, 0, 0});
    double bounds[3][2] = {};
    Surface *surface = nullptr;
    const RenderScene renderScene(scene.description,
                                  [&](const std::string &name) { return surface = scene.surfaceOf(name); });
    surface->network().bounds(bounds);
    const double expected[3][2] = {{-6, 11}, {-2, 2}, {-3, 3}};
    for (int axis = 0; axis < 3; ++axis)
        for (int side = 0; side < 2; ++side) EXPECT_NEAR(bounds[axis][side], expected[axis][side], 1e-5);
}

TEST(RenderScene, ObjectsAreHiddenFromTheCamera) {
    TestScene scene;
    scene.surface("Red", {{"Luminosity", 1}}, {1, 0, 0});
    scene.surface("Green", {{"Luminosity", 1}}, {0, 1, 0});
    scene.object("Front", BoxShape{}, "Red").seenByCamera = false;
    scene.object("Back", BoxShape{}, "Green", {0, 0, 3});
    expectNear(scene.pixel(), {0, 1, 0}, 1e-6);
}

} // namespace
} // namespace velm::host::test
