// Objects that share a mesh against the same objects with a mesh each.
#include "host/render/scene/render_scene_data.h"
#include "tests/render/test_scene.h"
#include "tests/temporary_directory.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace velm::host::test {
namespace {

constexpr double kTolerance = 1e-5; // relative; meshes and rays are in single precision
constexpr int kBalls = 460;         // of 224 triangles each: just worth instances
constexpr int kColumns = 23;

enum class Sharing { instances, copies };

// A field of balls with different transforms, many of them stretched and mirrored, that fills the picture. The balls
// of copies have radii that are equal in single precision only.
void addBalls(TestScene &scene, Sharing sharing) {
    scene.job.width = 96;
    scene.job.height = 64;
    for (int i = 0; i < kBalls; ++i) {
        const double radius = 0.1 * (sharing == Sharing::copies ? 1 + 1e-12 * i : 1.0);
        const int row = i / kColumns, column = i % kColumns;
        ObjectDescription &ball = scene.object(fmt::format("Ball {}", i), SphereShape{.radius = radius, .segments = 16},
                                               "Ball", {0.2 * column - 2.2, 0.16 * row - 1.52, 0.05 * (i % 7)});
        ball.rotation = {11.0 * i, 7.0 * i, 5.0 * i};
        ball.scale = {i % 2 == 0 ? 1.0 : -0.8, 0.6 + 0.1 * (i % 5), i % 3 == 0 ? -1.1 : 0.9};
    }
}

// What a node sees of a sample.
struct Seen {
    std::string object;
    int polygon = 0;
    bool isBack = false;
    Vec3 position, objectPosition, geometricNormal, shadingNormal, toObject;
    double u = 0, v = 0, spot = 0, length = 0, cosine = 0;
};

Seen seenIn(const ShadingSample &sample) {
    Seen seen{.object = sample.objectItem->name,
              .polygon = sample.polygonNumber,
              .isBack = (sample.rayFlags & kRayBackSide) != 0,
              .position = Vec3(sample.position),
              .objectPosition = Vec3(sample.objectPosition),
              .geometricNormal = Vec3(sample.geometricNormal),
              .shadingNormal = Vec3(sample.shadingNormal),
              .toObject = {sample.worldToObject[1], sample.worldToObject[3], sample.worldToObject[8]},
              .spot = sample.spotSize,
              .length = sample.rayLength,
              .cosine = sample.cosine};
    sampleUv(sample, nullptr, &seen.u, &seen.v);
    Vec3 mean;
    for (int k = 0; k < 3; ++k) {
        const float *p = sample.vertexPositions[k];
        mean += static_cast<double>(sample.vertexWeights[k]) * Vec3{p[0], p[1], p[2]};
    }
    expectNear(mean, seen.position, kTolerance, "the vertices are around the sample");
    return seen;
}

using Pixels = std::map<std::pair<int, int>, std::vector<Seen>>; // by column and row

// Renders the scene and returns what the camera's rays hit on the surface "Ball".
Pixels look(TestScene &scene) {
    Pixels pixels;
    scene.probe("Ball", "Luminosity", [&pixels](ShadingSample &sample, double *value) {
        value[0] = 1;
        if (sample.rayDepth == 0) pixels[{sample.pixelX, sample.pixelY}].push_back(seenIn(sample));
    });
    scene.render();
    return pixels;
}

void expectSame(const Seen &a, const Seen &b) {
    EXPECT_EQ(a.object, b.object);
    EXPECT_EQ(a.polygon, b.polygon);
    EXPECT_EQ(a.isBack, b.isBack);
    // The flatter a ray meets the surface, the farther rounding errors move the hit along it.
    const double onSurface = kTolerance / std::max(0.01, a.cosine);
    const double turned = 10 * onSurface; // the balls' radii are 0.1
    EXPECT_LE(length(a.position - b.position), 5 * onSurface) << "at a distance of 5";
    EXPECT_LE(length(a.objectPosition - b.objectPosition), onSurface);
    EXPECT_LE(length(a.geometricNormal - b.geometricNormal), 10 * kTolerance) << "of triangles of 0.02";
    EXPECT_LE(length(a.shadingNormal - b.shadingNormal), turned);
    EXPECT_LE(length(a.toObject - b.toObject), kTolerance);
    EXPECT_NEAR(a.u, b.u, turned);
    EXPECT_NEAR(a.v, b.v, turned);
    EXPECT_NEAR(a.spot, b.spot, onSurface * a.spot);
    EXPECT_NEAR(a.length, b.length, kTolerance * a.length);
    EXPECT_NEAR(a.cosine, b.cosine, turned);
}

// Rays that pass an edge within rounding errors may hit the one or the other side of it.
void expectSame(const Pixels &a, const Pixels &b, std::size_t most) {
    std::size_t others = 0;
    ASSERT_GT(a.size(), 100U);
    for (const auto &[pixel, samples] : a) {
        const auto found = b.find(pixel);
        const bool alike =
            found != b.end() && std::ranges::equal(samples, found->second, [](const Seen &x, const Seen &y) {
                return x.object == y.object && x.polygon == y.polygon;
            });
        if (!alike) {
            ++others;
            continue;
        }
        SCOPED_TRACE(fmt::format("pixel {}, {}", pixel.first, pixel.second));
        for (std::size_t i = 0; i < samples.size(); ++i) expectSame(samples[i], found->second[i]);
    }
    EXPECT_LE(others, most);
}

const RenderObject &object(TestScene &scene, std::size_t index) { return scene.renderScene().data().objects.at(index); }

void expectSharing(TestScene &scene, Sharing sharing) {
    std::set<const Mesh *> meshes;
    for (const RenderObject &each : scene.renderScene().data().objects) {
        EXPECT_EQ(each.isInstance, sharing == Sharing::instances);
        meshes.insert(each.mesh.get());
    }
    EXPECT_EQ(meshes.size(), sharing == Sharing::instances ? 1U : scene.description.objects.size());
}

TEST(Instances, HaveTheSamplesOfCopies) {
    TestScene instances, copies;
    for (auto [scene, sharing] : {std::pair{&instances, Sharing::instances}, {&copies, Sharing::copies}}) {
        scene->surface("Ball");
        addBalls(*scene, sharing);
        expectSharing(*scene, sharing);
    }
    expectSame(look(instances), look(copies), 2);
    EXPECT_EQ(instances.renderScene().triangleCount(), copies.renderScene().triangleCount());
    EXPECT_EQ(instances.renderScene().data().work.meshes, 1);
}

TEST(Instances, AreSingleSidedLikeCopies) {
    TestScene instances, copies;
    for (auto [scene, sharing] : {std::pair{&instances, Sharing::instances}, {&copies, Sharing::copies}}) {
        scene->surface("Ball").doubleSided = false;
        addBalls(*scene, sharing);
        scene->description.cameras[0].position = {0, 0, 0.05}; // within some balls
        scene->description.cameras[0].fieldOfView = 120;
    }
    const Pixels seen = look(instances);
    for (const auto &[pixel, samples] : seen)
        for (const Seen &each : samples) EXPECT_FALSE(each.isBack);
    expectSame(seen, look(copies), 2);
}

std::size_t differingPixels(const Picture &a, const Picture &b) {
    constexpr float kDifference = 1e-3F;
    std::size_t count = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            count += std::equal(a.pixel(x, y), a.pixel(x, y) + 3, b.pixel(x, y),
                                [](float c, float d) { return std::fabs(c - d) < kDifference; })
                         ? 0
                         : 1;
    return count;
}

TEST(Instances, CastShadowsAndAreReflectedAndSeenThrough) {
    TestScene instances, copies;
    for (auto [scene, sharing] : {std::pair{&instances, Sharing::instances}, {&copies, Sharing::copies}}) {
        scene->surface("Ball",
                       {{"Diffuse", 0.7}, {"Reflection", 0.3}, {"Transparency", 0.3}, {"Refraction Index", 1.2}});
        scene->surface("Floor", {{"Diffuse", 0.5}, {"Reflection", 0.5}});
        addBalls(*scene, sharing);
        scene->object("Floor", BoxShape{.size = {20, 0.1, 20}}, "Floor", {0, -1.8, 0});
        LightDescription &sun = scene->description.lights.emplace_back();
        sun.position = {1, 3, -2};
        scene->job.recursionDepth = 1; // later bounces magnify rounding errors
    }
    const Picture shared = instances.render().picture, copied = copies.render().picture;
    EXPECT_LE(differingPixels(shared, copied), 12U) << "rays at edges, of 6144 pixels";
    for (ObjectDescription &each : instances.description.objects) each.castsShadows = false;
    instances.update();
    EXPECT_GT(differingPixels(instances.render().picture, copied), 500U) << "without their shadows";
}

void addKeys(ItemDescription &item, Channel channel, int component, double from, double to) {
    item.channels.push_back({.channel = channel,
                             .component = component,
                             .keys = {.components = 1,
                                      .keys = {{.time = 0, .value = {from, 0, 0}},
                                               {.time = 1, .value = {to, 0, 0}, .shape = kShapeLinear}}}});
}

TEST(Instances, AreBlurredLikeCopies) {
    TestScene instances, copies;
    for (auto [scene, sharing] : {std::pair{&instances, Sharing::instances}, {&copies, Sharing::copies}}) {
        scene->surface("Ball");
        addBalls(*scene, sharing);
        scene->job.samples = 4;
        scene->description.render.framesPerSecond = 1;
        scene->description.render.firstFrame = 0;
        scene->description.cameras[0].shutter = 1;
        for (ObjectDescription &ball : scene->description.objects) {
            addKeys(ball, Channel::rotation, 0, 0, 120);
            addKeys(ball, Channel::position, 1, ball.position[1], ball.position[1] + 0.3);
            addKeys(ball, Channel::scale, 2, ball.scale[2], 1.5 * ball.scale[2]);
        }
        EXPECT_EQ(object(*scene, 1).isInstance, sharing == Sharing::instances);
        EXPECT_EQ(object(*scene, 1).motion != nullptr, sharing == Sharing::copies);
    }
    expectSame(look(instances), look(copies), 20);
}

// A mesh without normals, of 20,000 triangles: a ring with a square section whose edges are creased.
std::string ringText() {
    constexpr int kAround = 100, kAcross = 100;
    std::string text;
    for (int i = 0; i < kAround; ++i)
        for (int j = 0; j < kAcross; ++j) {
            const double turn = 2 * kPi * i / kAround, section = 2 * kPi * j / kAcross;
            const double wide = std::cos(section), high = std::sin(section);
            const double size = 0.2 / std::max(std::fabs(wide), std::fabs(high));
            const double radius = 0.5 + size * wide;
            text +=
                fmt::format("v {:.7f} {:.7f} {:.7f}\n", radius * std::cos(turn), radius * std::sin(turn), size * high);
        }
    for (int i = 0; i < kAround; ++i)
        for (int j = 0; j < kAcross; ++j) {
            const auto vertex = [&](int di, int dj) { return (i + di) % kAround * kAcross + (j + dj) % kAcross + 1; };
            text += fmt::format("f {} {} {} {}\n", vertex(0, 0), vertex(1, 0), vertex(1, 1), vertex(0, 1));
        }
    return text;
}

// Rings of which none, or the last, is stretched. Those of copies differ in a setting that has no effect on them.
void addRings(TestScene &scene, const std::string &file, Sharing sharing, bool isStretched = false) {
    constexpr int kRings = 6;
    scene.job.width = 60;
    scene.job.height = 40;
    scene.surface("Ball").smoothingAngle = 60;
    for (int i = 0; i < kRings; ++i) {
        const int setting = sharing == Sharing::copies ? i : 0, row = i / 3, column = i % 3;
        ObjectDescription &ring =
            scene.object(fmt::format("Ring {}", i), MeshFile{.file = file, .subdivision = setting}, "Ball",
                         {1.1 * column - 1.1, 1.1 * row - 0.55, 0.1 * i});
        ring.rotation = {20.0 * i, 30, 13.0 * i};
        const double scale = 0.6 + 0.1 * i;
        ring.scale = {i % 2 == 0 ? scale : -scale, scale, isStretched && i == kRings - 1 ? 0.3 : scale};
    }
}

TEST(Instances, AreSmoothedLikeCopies) {
    const TemporaryDirectory directory;
    const std::string file = directory.write("ring.obj", ringText());
    TestScene instances, copies;
    addRings(instances, file, Sharing::instances);
    addRings(copies, file, Sharing::copies);
    expectSharing(instances, Sharing::instances);
    expectSharing(copies, Sharing::copies);
    EXPECT_EQ(instances.renderScene().data().work.smoothings, 1);
    expectSame(look(instances), look(copies), 2);
}

TEST(Instances, WithOtherSmoothingHaveAMeshOfTheirOwn) {
    const TemporaryDirectory directory;
    TestScene scene;
    addRings(scene, directory.write("ring.obj", ringText()), Sharing::instances);
    scene.surface("Flat").smoothingAngle = 0;
    scene.description.objects[1].surfaces[0].surface = scene.description.objects[3].surfaces[0].surface = "Flat";
    EXPECT_TRUE(object(scene, 1).mesh->normals.empty());
    EXPECT_EQ(object(scene, 1).mesh, object(scene, 3).mesh);
    EXPECT_FALSE(object(scene, 2).mesh->normals.empty());
    EXPECT_EQ(object(scene, 2).mesh, object(scene, 0).mesh);
    for (std::size_t i = 0; i < 6; ++i)
        EXPECT_EQ(scene.item(kItemObject, fmt::format("Ring {}", i))->mesh, object(scene, i).mesh.get());
    scene.description.objects[3].surfaces[0].surface = "Ball";
    const SceneWork work = scene.update();
    EXPECT_EQ(work, SceneWork{}) << "there is a smoothed mesh already";
    EXPECT_EQ(object(scene, 3).mesh, object(scene, 0).mesh);
}

TEST(Instances, ThatAreStretchedAreSmoothedInWorldSpace) {
    const TemporaryDirectory directory;
    TestScene scene;
    addRings(scene, directory.write("ring.obj", ringText()), Sharing::instances, true);
    EXPECT_TRUE(object(scene, 0).isInstance);
    EXPECT_FALSE(object(scene, 5).isInstance);
    EXPECT_TRUE(object(scene, 5).model->smoothingAngles.empty() || object(scene, 5).mesh != object(scene, 5).model);
    std::find_if(scene.description.surfaces.begin(), scene.description.surfaces.end(), [](const auto &surface) {
        return surface.name == "Ball";
    })->smoothingAngle = 0;
    scene.update();
    EXPECT_TRUE(object(scene, 5).isInstance) << "nothing to smooth";
    EXPECT_EQ(object(scene, 5).mesh, object(scene, 0).mesh);
}

TEST(Instances, AFileIsReadOnceHoweverSmall) {
    const TemporaryDirectory directory;
    const std::string file = directory.write("triangle.obj", "v -1 0 0\nv 0 2 0\nv 1 0 0\nf 1 2 3\n");
    TestScene scene;
    scene.surface("Ball");
    for (const char *name : {"A", "B", "C"}) scene.object(name, MeshFile{file}, "Ball");
    scene.object("Other", MeshFile{.file = file, .layer = {}, .subdivision = 1}, "Ball");
    EXPECT_EQ(scene.renderScene().data().work.meshes, 2);
    EXPECT_FALSE(object(scene, 0).isInstance) << "a triangle";
    scene.description.objects[1].position[0] = 3;
    scene.object("D", MeshFile{file}, "Ball");
    EXPECT_EQ(scene.update().meshes, 0) << "neither after changes";
}

TEST(Instances, OnlyTheTopLevelIsBuiltForAFrame) {
    TestScene scene;
    scene.surface("Ball");
    scene.surface("Box").smoothingAngle = 0;
    addBalls(scene, Sharing::instances);
    scene.object("Still", SphereShape{.radius = 1, .segments = 320}, "Ball", {0, 0, 3});
    addKeys(scene.description.objects[3], Channel::position, 2, 0, 1);
    RenderScene &rendered = scene.renderScene();
    const SceneWork first = rendered.data().work;
    EXPECT_EQ(first.accelerations, 2) << "the ball, and the still sphere";
    EXPECT_EQ(first.instanceLevels, 1);
    const Mesh *const mesh = object(scene, 3).mesh.get();
    EXPECT_EQ(rendered.setTime(scene.description, 0.5, scene.lookup()), SceneWork{.instanceLevels = 1});
    EXPECT_EQ(object(scene, 3).mesh.get(), mesh);
    scene.object("Box", BoxShape{}, "Box", {0, 0, 4});
    addKeys(scene.description.objects.back(), Channel::position, 0, 0, 1);
    scene.update();
    EXPECT_EQ(rendered.setTime(scene.description, 0.25, scene.lookup()),
              (SceneWork{.placements = 1, .accelerations = 1, .instanceLevels = 1}))
        << "the box, and the top level that has it";
}

// What a box moves in front of is kept, and the picture is the same as if it were not.
TEST(Instances, AMovingBoxLooksLikeAStillOne) {
    TestScene moving, still;
    for (TestScene *scene : {&moving, &still}) {
        scene->job.width = 40;
        scene->job.height = 30;
        scene->surface("Ball", {{"Diffuse", 0.8}, {"Reflection", 0.2}});
        scene->object("Ball", SphereShape{.radius = 1.4, .segments = 320}, "Ball", {0, 0, 3});
        scene->object("Box", BoxShape{}, "Ball", {0.5, 0.25, 0}).rotation = {30, 20, 10};
        scene->description.lights.emplace_back().position = {1, 2, -3};
    }
    addKeys(moving.description.objects[1], Channel::position, 0, 0.5, 0.5);
    EXPECT_EQ(moving.renderScene().data().work.instanceLevels, 1);
    EXPECT_EQ(still.renderScene().data().work.instanceLevels, 0);
    EXPECT_EQ(differingPixels(moving.render().picture, still.render().picture), 0U);
}

// Of the distinct meshes of a scene, the objects and Embree.
std::size_t bytesOf(TestScene &scene) {
    const RenderSceneData &data = scene.renderScene().data();
    std::set<const Mesh *> meshes;
    for (const RenderObject &each : data.objects)
        for (const std::shared_ptr<Mesh> &mesh : {each.mesh, each.model})
            if (mesh) meshes.insert(mesh.get());
    std::size_t bytes = data.acceleration->bytes() + data.objects.size() * sizeof(RenderObject);
    const auto add = [&bytes](const auto &elements) { bytes += elements.capacity() * sizeof(elements[0]); };
    for (const Mesh *mesh : meshes) {
        add(mesh->points);
        add(mesh->triangles);
        add(mesh->normals);
        add(mesh->polygonNumbers);
        for (const UvMap &map : mesh->uvMaps) add(map.values);
    }
    return bytes;
}

TEST(Instances, AHundredTakeOnePercentMoreThanOne) {
    TestScene one, hundred;
    for (auto [scene, count] : {std::pair{&one, 1}, {&hundred, 100}}) {
        scene->surface("Ball");
        for (int i = 0; i < count; ++i) {
            const int row = i / 10, column = i % 10;
            scene->object(fmt::format("Ball {}", i), SphereShape{.radius = 1, .segments = 400}, "Ball",
                          {3.0 * column, 3.0 * row, 0});
        }
        scene->renderScene();
    }
    EXPECT_LE(static_cast<double>(bytesOf(hundred)), 1.01 * static_cast<double>(bytesOf(one)));
}

} // namespace
} // namespace velm::host::test
