// Cameras and lights of an opened mesh file.
#include "host/open/mesh_scene.h"
#include "host/open/open_file.h"
#include "host/render/geometry/mesh.h"
#include "host/render/scene/lights.h"
#include "tests/files/gltf_file.h"
#include "tests/temporary_directory.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <string>
#include <vector>

namespace velm::host {
namespace {

using test::gltfLight;
using test::gltfSquare;

constexpr double kTolerance = 1e-6;

// The mesh of a file, a box from -1 to 1, with cameras and lights, and the scene to which they are added.
struct Opened {
    Mesh mesh = shapeMesh(BoxShape{.size = {2, 2, 2}}, Transform());
    SceneDescription scene;

    MeshCamera &camera(double halfWidth, double halfHeight) {
        MeshCamera &added = mesh.cameras.emplace_back();
        added.halfWidth = halfWidth;
        added.halfHeight = halfHeight;
        return added;
    }
    MeshLight &light(MeshLight::Kind kind, const Double3 &position, const Double3 &attenuation) {
        MeshLight &added = mesh.lights.emplace_back();
        added.kind = kind;
        added.position = position;
        added.colour = {1, 1, 1};
        added.intensity = 6;
        added.attenuation = attenuation;
        added.cone = 30;
        return added;
    }
    void add() { addCamerasAndLights(mesh, scene); }
};

double tangentOf(const CameraDescription &camera) { return std::tan(camera.fieldOfView / 2 * std::numbers::pi / 180); }

// The light that a facing surface receives.
double lightAt(const LightDescription &light, const Vec3 &location) {
    LightSample sample;
    return Light(light).sample(location, nullptr, {.x = 0.5, .y = 0.5}, sample) ? sample.colour.x : 0;
}

TEST(MeshScene, ShowsAllThatACameraSees) {
    Opened opened;
    opened.scene.render.width = opened.scene.render.height * 2;
    opened.camera(1, 1);    // narrower than the picture
    opened.camera(1, 0.25); // wider
    opened.camera(0, 0.3);  // as wide as the picture
    opened.camera(0.7, 0);  // as high as the picture
    opened.camera(0, 0);    // not known
    opened.add();
    const std::vector<double> expected = {2, 1, 0.6, 0.7, tangentOf(CameraDescription())};
    ASSERT_EQ(opened.scene.cameras.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_NEAR(tangentOf(opened.scene.cameras[i]), expected[i], kTolerance) << i;
}

TEST(MeshScene, GivesItsItemsNamesOfTheirOwn) {
    Opened opened;
    opened.camera(1, 1).name = "Eye";
    opened.camera(1, 1).name = "Eye";
    opened.camera(1, 1);
    opened.light(MeshLight::Kind::distant, {}, {}).name = " a->b ";
    opened.light(MeshLight::Kind::distant, {}, {});
    opened.add();
    EXPECT_EQ(opened.scene.cameras[0].name, "Eye");
    EXPECT_EQ(opened.scene.cameras[1].name, "Eye (2)");
    EXPECT_EQ(opened.scene.cameras[2].name, "Camera");
    EXPECT_EQ(opened.scene.lights[0].name, "a-b");
    EXPECT_EQ(opened.scene.lights[1].name, "Light");
}

// Sums of one term are exact everywhere.
TEST(MeshScene, LightsDecreaseAsInTheFile) {
    for (const Double3 &attenuation : {Double3{2, 0, 0}, {0, 0.5, 0}, {0, 0, 0.25}, {0, 0, 0}}) {
        Opened opened;
        opened.light(MeshLight::Kind::point, {0, 5, 0}, attenuation);
        opened.add();
        const auto &[a, b, c] = attenuation;
        for (const double distance : {0.5, 3.0, 40.0}) {
            const double sum = a + b * distance + c * distance * distance;
            EXPECT_NEAR(lightAt(opened.scene.lights.at(0), {0, 5 - distance, 0}), 6 / (sum > 0 ? sum : 1), kTolerance)
                << a << ' ' << b << ' ' << c << " at " << distance;
        }
    }
}

// Sums of several terms get the nearest falloff, and are exact in the middle of the mesh.
TEST(MeshScene, LightsDecreaseByTheNearestPower) {
    struct Row {
        Double3 attenuation;
        LightDescription::Falloff falloff;
    };
    for (const auto &[attenuation, falloff] : {Row{{1, 0, 0.001}, LightDescription::Falloff::none},
                                               Row{{1, 8, 0.1}, LightDescription::Falloff::inverseDistance},
                                               Row{{1, 0.1, 3}, LightDescription::Falloff::inverseSquare}}) {
        Opened opened;
        opened.light(MeshLight::Kind::point, {0, 5, 0}, attenuation);
        opened.add();
        const LightDescription &light = opened.scene.lights.at(0);
        EXPECT_EQ(light.falloff, falloff);
        EXPECT_NEAR(lightAt(light, {0, 0, 0}), 6 / (attenuation[0] + 5 * attenuation[1] + 25 * attenuation[2]),
                    kTolerance);
    }
}

TEST(MeshScene, AmbientLightsAddUp) {
    Opened opened;
    for (const Double3 &product : {Double3{0.1, 0.05, 0}, {0, 0, 0.4}}) {
        MeshLight &light = opened.light(MeshLight::Kind::ambient, {}, {});
        light.intensity = std::max(product[0], product[2]);
        for (std::size_t i = 0; i < 3; ++i) light.colour[i] = product[i] / light.intensity;
    }
    opened.add();
    EXPECT_TRUE(opened.scene.lights.empty());
    EXPECT_NEAR(opened.scene.render.ambientIntensity, 0.4, kTolerance);
    const Double3 expected{0.25, 0.125, 1};
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(opened.scene.render.ambientColour[i], expected[i], kTolerance) << i;
}

// An intensity of 6 at a distance of 2 lights the middle to 1.5.
TEST(MeshScene, LightsOfUsualStrengthStayAsTheyAre) {
    Opened opened;
    opened.light(MeshLight::Kind::point, {0, 2, 0}, {0, 0, 1});
    opened.add();
    const SceneDescription before = opened.scene;
    EXPECT_EQ(exposeLights(boundsByMaterial(opened.mesh)[0], opened.scene), 1);
    EXPECT_EQ(opened.scene, before);
}

// 54351 cd (1000 W at 683 lm/W, in all directions) at 5 m, a spot light that does not light the middle but counts as if
// it did, and an ambient light.
TEST(MeshScene, LightsOfOtherStrengthsAreScaled) {
    Opened opened;
    opened.light(MeshLight::Kind::point, {0, 5, 0}, {0, 0, 1}).intensity = 54351;
    MeshLight &spot = opened.light(MeshLight::Kind::spot, {3, 4, 0}, {0, 0, 1});
    spot.intensity = 25 * 126;
    spot.rotation = {0, -90, 0};
    MeshLight sky = spot;
    sky.kind = MeshLight::Kind::ambient;
    sky.intensity = 100;
    opened.mesh.lights.push_back(sky);
    opened.add();
    const double sum = 54351 / 25.0 + 126 + 100;
    EXPECT_NEAR(exposeLights(boundsByMaterial(opened.mesh)[0], opened.scene), 1 / sum, kTolerance / sum);
    EXPECT_NEAR(lightAt(opened.scene.lights[0], {0, 0, 0}), 54351 / 25.0 / sum, kTolerance);
    EXPECT_EQ(lightAt(opened.scene.lights[1], {0, 0, 0}), 0) << "it shines upwards";
    EXPECT_NEAR(opened.scene.lights[1].intensity, 25 * 126 / sum, kTolerance);
    EXPECT_NEAR(opened.scene.render.ambientIntensity, 100 / sum, kTolerance);
}

constexpr const char *kCamera =
    R"({"type": "perspective", "perspective": {"yfov": 0.5, "aspectRatio": 1, "znear": 0.1}})";

class OpenMesh : public testing::Test {
  protected:
    // A file with two cameras and a lamp that lights the square to `light`.
    std::string fileLitTo(double light) const {
        return directory_.write("lit.gltf",
                                gltfSquare({R"({"name": "Front", "camera": 0, "translation": [0, 0, 4]})",
                                            R"({"name": "Far", "camera": 1, "translation": [0, 0, 9]})",
                                            R"({"name": "Lamp", "translation": [0, 0, 3], )" + gltfLight(0) + "}"},
                                           std::string(kCamera) + "," + kCamera,
                                           R"({"type": "point", "intensity": )" + std::to_string(9 * light) + "}"));
    }
    SceneDescription completed(const OpenRequest &request) const {
        MeshCache meshes;
        Warnings warnings(Warnings::Policy::strict);
        return completeFile(openFile(request), meshes, warnings);
    }
    test::TemporaryDirectory directory_;
};

TEST_F(OpenMesh, TakesTheCamerasAndLightsOfTheFile) {
    const std::string file = fileLitTo(1);
    const SceneDescription scene = completed({.file = file});
    ASSERT_EQ(scene.cameras.size(), 2U);
    EXPECT_EQ(scene.cameras[0].name, "Front");
    EXPECT_TRUE(scene.render.camera.empty()) << "the first one";
    ASSERT_EQ(scene.lights.size(), 1U);
    EXPECT_EQ(scene.lights[0].name, "Lamp");
    EXPECT_NEAR(lightAt(scene.lights[0], {0, 0, 0}), 1, kTolerance);
    EXPECT_EQ(scene.objects.size(), 1U) << "no ground";
    EXPECT_NE(scene.backdrop.colour, Double3{});
    EXPECT_EQ(additionsText(openFile({.file = file}), scene), "a backdrop, a neutral surface");
}

TEST_F(OpenMesh, ExposesAPictureOfItsLights) {
    const std::string file = fileLitTo(1000);
    const SceneDescription scene = completed({.file = file});
    EXPECT_NEAR(lightAt(scene.lights[0], {0, 0, 0}), 1, kTolerance);
    EXPECT_EQ(additionsText(openFile({.file = file}), scene),
              "a backdrop, an exposure (the intensities of lights times 0.001), a neutral surface");
    const std::vector<SceneOverride> overrides = {parseOverride("lights.Lamp.intensity=18")};
    EXPECT_NEAR(lightAt(completed({.file = file, .overrides = overrides}).lights[0], {0, 0, 0}), 2, kTolerance)
        << "values of users are not scaled";
}

TEST_F(OpenMesh, AViewAndARigReplaceThoseOfTheFile) {
    const std::string file = fileLitTo(1000);
    const SceneDescription scene = completed({.file = file, .view = View::front, .rig = Rig::outdoor});
    EXPECT_EQ(scene.render.camera, "View");
    ASSERT_EQ(scene.lights.size(), 1U);
    EXPECT_EQ(scene.lights[0].name, "Sun");
    const OpenedFile opened = openFile({.file = file, .rig = Rig::outdoor});
    EXPECT_EQ(opened.exposure, 1);
    EXPECT_FALSE(opened.view) << "the file has cameras";
}

TEST_F(OpenMesh, HasNoGroundAboveItsCamera) {
    const auto objectsSeenFrom = [&](const char *place) {
        const std::string node = std::string(R"({"camera": 0, "translation": )") + place + "}";
        return completed({.file = directory_.write("a.gltf", gltfSquare({node}, kCamera, ""))}).objects.size();
    };
    EXPECT_EQ(objectsSeenFrom("[0, -0.9, 4]"), 2U);
    EXPECT_EQ(objectsSeenFrom("[0, -1.1, 4]"), 1U);
}

// A scene that names the file has cameras and lights of its own.
TEST_F(OpenMesh, ASceneGetsTheGeometryOnly) {
    fileLitTo(1);
    const std::string file = directory_.write("scene.json", R"({"cameras": {"Own": {}}, "surfaces": {"Clay": {}},
        "objects": {"Square": {"mesh": {"file": "lit.gltf"}, "surface": "Clay"}}})");
    const SceneDescription scene = completed({.file = file});
    EXPECT_EQ(scene.cameras.size(), 1U);
    EXPECT_TRUE(scene.lights.empty());
}

} // namespace
} // namespace velm::host
