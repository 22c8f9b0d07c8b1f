// Changes of a prepared scene: the pictures of a scene that is built anew, with only the work that a change needs.
#include "host/base/error.h"
#include "host/render/scene/render_scene_data.h"
#include "tests/render/test_scene.h"
#include "tests/temporary_directory.h"

#include <filesystem>

namespace velm::host::test {
namespace {

const Region kWhole = {.left = 0, .top = 0, .right = 20, .bottom = 16};

// A ball and a creased box on a floor, lit and seen from above.
struct SceneUpdateTest : testing::Test {
    SceneUpdateTest() {
        test.job.width = 20;
        test.job.height = 16;
        test.surface("Ball", {{"Diffuse", 0.8}, {"Reflection", 0.3}});
        test.surface("Box", {{"Diffuse", 0.7}}, {1, 0.5, 0.2});
        test.object("Ball", SphereShape{.radius = 0.7, .segments = 12}, "Ball", {-0.6, 0, 0});
        test.object("Box", BoxShape{}, "Box", {0.8, 0.2, 0}).rotation = {30, 20, 10};
        test.object("Floor", PlaneShape{.width = 10, .depth = 10}, "Box", {0, -1, 0});
        LightDescription sun;
        sun.name = "Sun";
        sun.position = {2, 3, -2};
        scene().lights.push_back(sun);
        scene().cameras[0].position = {0, 1, -5};
        scene().cameras[0].hasTarget = true;
        test.renderScene();
    }

    SceneDescription &scene() { return test.description; }
    SurfaceDescription &surface(const std::string &name) {
        return *std::find_if(scene().surfaces.begin(), scene().surfaces.end(),
                             [&](const SurfaceDescription &each) { return each.name == name; });
    }
    const RenderObject &object(std::size_t index) { return test.renderScene().data().objects.at(index); }
    const Acceleration *acceleration() { return test.renderScene().data().acceleration.get(); }

    // Expects the picture and the counts of a scene that is built from the description.
    void expectLikeNew(const char *what) {
        const Picture updated = test.render().picture;
        const std::size_t points = test.renderScene().pointCount(), triangles = test.renderScene().triangleCount();
        const RenderScene built(scene(), test.lookup());
        EXPECT_TRUE(samePixels(updated, renderFrame(built, test.job).picture, kWhole)) << what;
        EXPECT_EQ(points, built.pointCount()) << what;
        EXPECT_EQ(triangles, built.triangleCount()) << what;
    }

    // Updates the scene after an edit, which has to change the picture and cost this work.
    void expectWork(const char *what, const SceneWork &expected) {
        const Picture before = test.render().picture;
        const SceneWork work = test.update();
        EXPECT_EQ(work.meshes, expected.meshes) << what;
        EXPECT_EQ(work.smoothings, expected.smoothings) << what;
        EXPECT_EQ(work.accelerations, expected.accelerations) << what;
        EXPECT_FALSE(samePixels(before, test.render().picture, kWhole)) << what;
        expectLikeNew(what);
    }

    TestScene test;
};

TEST_F(SceneUpdateTest, LooksCostNothing) {
    const Acceleration *const before = acceleration();
    const Mesh *const ball = object(0).mesh.get(), *const box = object(1).mesh.get();
    EXPECT_EQ(test.update(), SceneWork{}) << "nothing changed";
    scene().cameras[0].position = {1, 1, -5};
    expectWork("camera", {});
    scene().lights[0].intensity = 0.5;
    expectWork("light", {});
    scene().lights.emplace_back().position = {-1, 1, 0};
    expectWork("further light", {});
    scene().backdrop.colour = {1, 0, 0};
    expectWork("backdrop", {});
    scene().render.ambientIntensity = 0.25;
    expectWork("ambient light", {});
    scene().objects[0].surfaces[0].surface = "Box";
    expectWork("another surface", {});
    surface("Ball").doubleSided = surface("Box").doubleSided = false;
    scene().objects[2].rotation = {0, 180, 0}; // the floor turns its back
    expectWork("single-sided surfaces", {.meshes = 1, .smoothings = 1, .accelerations = 1});
    EXPECT_NE(acceleration(), before);
    EXPECT_EQ(object(0).mesh.get(), ball);
    EXPECT_EQ(object(1).mesh.get(), box);
}

TEST_F(SceneUpdateTest, SmoothingComputesNormalsOnly) {
    const Acceleration *const before = acceleration();
    surface("Box").smoothingAngle = 120;
    expectWork("rounder", {.smoothings = 2}); // the box and the floor
    surface("Box").smoothingAngle = 100;
    test.update();
    expectLikeNew("another angle");
    surface("Box").smoothingAngle = 0;
    expectWork("flat", {.smoothings = 2});
    surface("Box").smoothingAngle = 150;
    expectWork("round again", {.smoothings = 2});
    surface("Ball").smoothingAngle = 0;
    expectWork("flat, with normals of its own", {});
    surface("Ball").smoothingAngle = 89.5;
    expectWork("round, with normals of its own", {});
    EXPECT_EQ(acceleration(), before);
    scene().objects[1].castsShadows = false;
    expectWork("geometry again, after vertices were split", {.accelerations = 1});
}

TEST_F(SceneUpdateTest, GeometryIsBuiltWhereItChanged) {
    const Mesh *const floor = object(2).mesh.get();
    scene().objects[0].position[0] = -0.4;
    expectWork("moved", {.meshes = 1, .accelerations = 1});
    scene().objects[1].shape = BoxShape{.size = {1, 2, 1}};
    expectWork("reshaped", {.meshes = 1, .smoothings = 1, .accelerations = 1});
    scene().objects[1].seenByCamera = false;
    expectWork("hidden", {.accelerations = 1});
    scene().objects.erase(scene().objects.begin());
    expectWork("removed", {.accelerations = 1});
    EXPECT_EQ(object(1).mesh.get(), floor);
    scene().objects.insert(scene().objects.begin(), scene().objects.back());
    scene().objects.front().name = "Ceiling";
    scene().objects.front().position[1] = 1.5;
    expectWork("added", {.meshes = 1, .smoothings = 1, .accelerations = 1});
}

TEST_F(SceneUpdateTest, FilesAreNotReadAgain) {
    const TemporaryDirectory directory;
    writeText(directory / "a.obj", "v -1 -1 0\nv 1 -1 0\nv 0 1 0\nf 1 2 3\n");
    test.object("Mesh", MeshFile{directory / "a.obj"}, "Box");
    expectWork("file", {.meshes = 1, .smoothings = 1, .accelerations = 1});
    std::filesystem::remove(directory / "a.obj");
    scene().cameras[0].fieldOfView = 50;
    EXPECT_EQ(test.update(), SceneWork{});
    scene().objects.back().scale = {2, 2, 2};
    EXPECT_THROW(test.update(), InputError);
}

TEST_F(SceneUpdateTest, ItemsKeepTheirHandles) {
    const HostItem *const ball = test.item(kItemObject, "Ball"), *const floor = test.item(kItemObject, "Floor"),
                          *const sun = test.item(kItemLight, "Sun");
    scene().objects.erase(scene().objects.begin());
    const LightDescription light = scene().lights[0];
    scene().lights.clear();
    test.update();
    EXPECT_EQ(test.item(kItemObject, "Floor"), floor);
    EXPECT_EQ(floor->index, 1);
    EXPECT_EQ(floor->mesh, object(1).mesh.get());
    EXPECT_EQ(ball->index, -1);
    EXPECT_EQ(ball->mesh, nullptr);
    EXPECT_EQ(sun->index, -1);
    scene().lights.push_back(light);
    test.update();
    EXPECT_EQ(test.item(kItemLight, "Sun"), sun) << "put back";
    EXPECT_EQ(sun->index, 0);
}

TEST_F(SceneUpdateTest, NodesMayKeepHandlesOfLightsThatAreGone) {
    HostItem *const sun = const_cast<HostItem *>(test.item(kItemLight, "Sun"));
    int lit = -1;
    test.probe("Box", "Diffuse", [&](ShadingSample &sample, double value[3]) {
        double direction[3], colour[3];
        lit = sample.illuminate(sun, sample.position, direction, colour);
        value[0] = 1;
    });
    test.render();
    EXPECT_EQ(lit, 1);
    scene().lights.clear();
    test.update();
    test.render();
    EXPECT_EQ(lit, 0);
}

TEST_F(SceneUpdateTest, ErrorsLeaveTheSceneAsItWas) {
    const Picture before = test.render().picture;
    const HostItem *const ball = test.item(kItemObject, "Ball");
    const SceneDescription good = scene();
    const auto refused = [&](const char *what, auto edit) {
        scene() = good;
        edit(scene());
        EXPECT_THROW(test.update(), InputError) << what;
        EXPECT_TRUE(samePixels(test.render().picture, before, kWhole)) << what;
        EXPECT_EQ(test.item(kItemObject, "Ball"), ball) << what;
        EXPECT_EQ(ball->mesh, object(0).mesh.get()) << what;
    };
    refused("flattened", [](SceneDescription &scene) { scene.objects[0].scale = {1, 0, 1}; });
    refused("a new object without a surface", [](SceneDescription &scene) {
        scene.objects.insert(scene.objects.begin(), scene.objects[1]);
        scene.objects[0].name = "New";
        scene.objects[0].surfaces[0].surface = "Nothing";
    });
    refused("a light on its target", [](SceneDescription &scene) { scene.lights[0].position = {}; });
    refused("no such image", [](SceneDescription &scene) {
        scene.backdrop.kind = BackdropDescription::Kind::image;
        scene.backdrop.image = "nothing";
    });
    scene() = good;
    EXPECT_EQ(test.update(), SceneWork{});
}

TEST_F(SceneUpdateTest, SurfacesLearnTheirNewBounds) {
    scene().objects[1].position = {5, 0, 0};
    scene().objects[1].rotation = {};
    test.update();
    double bounds[3][2] = {};
    test.surfaceOf("Box")->network().bounds(bounds);
    EXPECT_NEAR(bounds[0][1], 5.5, 1e-5);
    EXPECT_NEAR(bounds[0][0], -5, 1e-5);
}

} // namespace
} // namespace velm::host::test
