// A scene looks the same at any size and, nearly, at any distance from the origin: rounding errors cause no hits.
#include "host/render/geometry/transform.h"
#include "tests/render/test_scene.h"
#include "tests/temporary_directory.h"

#include <fstream>
#include <random>
#include <sstream>

namespace velm::host::test {
namespace {

// A ball on a floor with a mirror behind and a glass box, everything `scale` times as large.
Picture pictureAt(double scale) {
    TestScene scene;
    scene.job.width = 48;
    scene.job.height = 32;
    scene.job.samples = 2;
    scene.surface("Floor", {{"Diffuse", 0.8}}, {0.5, 0.6, 0.7});
    scene.surface("Ball", {{"Diffuse", 0.7}, {"Specular", 0.5}, {"Reflection", 0.2}}, {0.9, 0.3, 0.2});
    scene.surface("Mirror", {{"Reflection", 0.9}});
    scene.surface("Glass", {{"Transparency", 0.8}, {"Refraction Index", 1.4}, {"Diffuse", 0.2}});
    const auto at = [scale](double x, double y, double z) { return Double3{scale * x, scale * y, scale * z}; };
    scene.object("Floor", PlaneShape{.width = 40 * scale, .depth = 40 * scale}, "Floor", at(0, -1, 0));
    scene.object("Ball", SphereShape{.radius = scale, .segments = 48}, "Ball", at(-0.8, 0, 0));
    scene.object("Mirror", PlaneShape{.width = 6 * scale, .depth = 6 * scale}, "Mirror", at(0, 0, 4)).rotation = {
        0, -80, 0};
    scene.object("Glass", BoxShape{.size = at(1, 1, 1)}, "Glass", at(1.3, -0.45, -0.5)).rotation = {30, 0, 0};
    LightDescription sun;
    sun.kind = LightDescription::Kind::distant;
    sun.position = {1, 2, -1};
    scene.description.lights.push_back(sun);
    LightDescription bulb;
    bulb.kind = LightDescription::Kind::point;
    bulb.position = at(2, 3, -3);
    bulb.intensity = 5 * scale * scale;
    scene.description.lights.push_back(bulb);
    scene.description.cameras[0].position = at(0, 1, -6);
    scene.description.cameras[0].hasTarget = true;
    scene.description.cameras[0].target = {0, 0, 0};
    return scene.render().picture;
}

TEST(Scale, SamePictureAtAnySize) {
    const Picture unit = pictureAt(1);
    for (const double scale : {1e-4, 1e-2, 1e4}) {
        const Picture other = pictureAt(scale);
        int differing = 0;
        for (int y = 0; y < unit.height(); ++y) {
            for (int x = 0; x < unit.width(); ++x) {
                double difference = 0;
                for (int i = 0; i < 3; ++i)
                    difference = std::max<double>(difference, std::abs(unit.pixel(x, y)[i] - other.pixel(x, y)[i]));
                differing += difference > 2e-3;
            }
        }
        // Rays very close to an edge may hit or miss it.
        EXPECT_LE(differing, unit.width() * unit.height() / 200) << scale;
    }
}

// A power of two changes exponents only.
TEST(Scale, ExactlyTheSameAtPowersOfTwo) {
    const Picture unit = pictureAt(1), large = pictureAt(1024);
    int differing = 0;
    for (int y = 0; y < unit.height(); ++y) {
        for (int x = 0; x < unit.width(); ++x)
            for (int i = 0; i < 3; ++i) differing += unit.pixel(x, y)[i] != large.pixel(x, y)[i];
    }
    EXPECT_EQ(differing, 0);
}

struct GridCase {
    const char *what;
    double size;
    Double3 position, rotation;
};

// A flat grid of many polygons: rays that leave it at any angle must not hit its other polygons.
TEST(SelfIntersection, FlatGridsDoNotSeeThemselves) {
    const TemporaryDirectory directory;
    std::ostringstream text;
    constexpr int kCells = 24;
    for (int z = 0; z <= kCells; ++z) {
        for (int x = 0; x <= kCells; ++x) {
            text << "v " << static_cast<double>(x) / kCells - 0.5 << " 0 " << static_cast<double>(z) / kCells - 0.5
                 << "\n";
        }
    }
    for (int z = 0; z < kCells; ++z) {
        for (int x = 0; x < kCells; ++x) {
            const int first = z * (kCells + 1) + x + 1;
            text << "f " << first << ' ' << first + 1 << ' ' << first + kCells + 2 << ' ' << first + kCells + 1 << "\n";
        }
    }
    writeText(directory / "grid.obj", text.str());
    const GridCase cases[] = {
        {"as it is", 1, {0, 0, 0}, {0, 0, 0}},        {"turned", 1, {0, 0, 0}, {21, 33, 47}},
        {"tiny", 1e-4, {0, 0, 0}, {21, 33, 47}},      {"huge", 1e4, {0, 0, 0}, {21, 33, 47}},
        {"away", 1, {1000, -300, 777}, {21, 33, 47}}, {"tiny and away", 1e-2, {3, 5, -7}, {61, 13, 27}},
    };
    for (const GridCase &each : cases) {
        TestScene scene;
        scene.job.width = scene.job.height = 12;
        scene.surface("Grid", {{"Luminosity", 1}});
        int samples = 0, hits = 0;
        scene.probe("Grid", "Color", [&](ShadingSample &sample, double *) {
            ++samples;
            std::mt19937 random(static_cast<unsigned>(samples));
            std::uniform_real_distribution<double> turn(0, 2 * kPi);
            const Vec3 normal(sample.geometricNormal);
            const Vec3 across = normalised(cross(normal, {0.3, 0.5, 0.8})), along = cross(normal, across);
            for (const double rise : {1.0, 0.1, 0.01, 1e-3}) {
                for (int i = 0; i < 50; ++i) {
                    const double angle = turn(random);
                    const Vec3 direction = rise * normal + std::cos(angle) * across + std::sin(angle) * along;
                    const double d[3] = {direction.x, direction.y, direction.z};
                    hits += sample.rayCast(sample.position, d) >= 0;
                }
            }
        });
        ObjectDescription &grid = scene.object("Grid", MeshFile{directory / "grid.obj"}, "Grid", each.position);
        grid.rotation = each.rotation;
        grid.scale = {each.size, each.size, each.size};
        const Vec3 up = rotationMatrix(each.rotation) * Vec3{0, 1, 0};
        const Vec3 eye = Vec3(each.position) + 2 * each.size * up;
        scene.description.cameras[0].position = {eye.x, eye.y, eye.z};
        scene.description.cameras[0].hasTarget = true;
        scene.description.cameras[0].target = each.position;
        scene.description.cameras[0].fieldOfView = 18;
        scene.render();
        EXPECT_EQ(samples, 144) << each.what;
        EXPECT_EQ(hits, 0) << each.what;
    }
}

// No ray that leaves a convex body hits it again.
TEST(SelfIntersection, ConvexBodiesDoNotSeeThemselves) {
    for (const double radius : {1e-4, 1.0, 1e4}) {
        for (const Double3 &offset : {Double3{0, 0, 0}, Double3{50, -20, 30}}) {
            TestScene scene;
            scene.job.width = scene.job.height = 24;
            scene.surface("Ball", {{"Luminosity", 1}});
            int samples = 0, hits = 0;
            scene.probe("Ball", "Color", [&](ShadingSample &sample, double *) {
                ++samples;
                std::mt19937 random(static_cast<unsigned>(samples));
                std::normal_distribution<double> gauss;
                for (int i = 0; i < 100; ++i) {
                    Vec3 direction = normalised({gauss(random), gauss(random), gauss(random)});
                    if (dot(direction, Vec3(sample.geometricNormal)) < 0) direction = -direction;
                    const double d[3] = {direction.x, direction.y, direction.z};
                    hits += sample.rayCast(sample.position, d) >= 0;
                }
            });
            const Vec3 centre = radius * Vec3(offset);
            scene.object("Ball", SphereShape{.radius = radius, .segments = 100}, "Ball",
                         {centre.x, centre.y, centre.z});
            scene.description.cameras[0].position = {centre.x, centre.y, centre.z - 4 * radius};
            scene.render();
            EXPECT_GT(samples, 200);
            EXPECT_EQ(hits, 0) << radius << " at " << offset[0];
        }
    }
}

} // namespace
} // namespace velm::host::test
