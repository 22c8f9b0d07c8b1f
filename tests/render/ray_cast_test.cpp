// Distances along rays, against closed forms.
#include "tests/render/test_scene.h"

#include <cmath>
#include <limits>
#include <random>

namespace velm::host::test {
namespace {

constexpr double kRelative = 3e-6; // a few rounding errors of single precision

Vec3 randomDirection(std::mt19937 &random) {
    std::normal_distribution<double> normal;
    return normalised(Vec3{normal(random), normal(random), normal(random)});
}

double cast(const ShadingSample &sample, const Vec3 &position, const Vec3 &direction) {
    const double p[3] = {position.x, position.y, position.z}, d[3] = {direction.x, direction.y, direction.z};
    return sample.rayCast(p, d);
}

TEST(RayCast, MeetsPlaneAtTheClosedForm) {
    TestScene scene;
    scene.surface("Wall");
    ObjectDescription &wall = scene.object("Wall", PlaneShape{.width = 1000, .depth = 1000}, "Wall", {0, -2, 0});
    wall.rotation = {30, 0, 0};
    probeAtOrigin(scene, [](ShadingSample &sample, double *) {
        std::mt19937 random(1);
        for (int i = 0; i < 1000; ++i) {
            const Vec3 direction = randomDirection(random);
            const Vec3 origin = 0.5 * randomDirection(random);
            const double expected = (-2 - origin.y) / direction.y;
            const double found = cast(sample, origin, direction);
            if (direction.y > -0.01) {
                EXPECT_TRUE(direction.y < 0 || found == HOST_RAY_MISS);
            } else {
                EXPECT_NEAR(found, expected, kRelative * expected);
            }
        }
    });
}

TEST(RayCast, MeetsSphereAtTheClosedForm) {
    TestScene scene;
    scene.surface("Ball");
    scene.object("Ball", SphereShape{.radius = 2, .segments = 512}, "Ball", {0, 0, 10});
    probeAtOrigin(scene, [](ShadingSample &sample, double *) {
        std::mt19937 random(2);
        std::uniform_real_distribution<double> offset(-1.2, 1.2);
        // A facet of this sphere is at most r (1 - cos(pi / 512)) within the true one, and is hit at up to 37 degrees.
        constexpr double kFacets = 2 * 2e-5 / 0.8 * 2;
        for (int i = 0; i < 300; ++i) {
            const double x = offset(random), y = offset(random);
            if (x * x + y * y > 1.44) continue;
            EXPECT_NEAR(cast(sample, {x, y, 1}, {0, 0, 1}), 9 - std::sqrt(4 - x * x - y * y), kFacets);
        }
        EXPECT_EQ(cast(sample, {0, 2.01, 1}, {0, 0, 1}), HOST_RAY_MISS);
        EXPECT_EQ(cast(sample, {0, 0, 1}, {0, 0, -1}), HOST_RAY_MISS);
        EXPECT_NEAR(cast(sample, {0, 0, 10}, {1, 0, 0}), 2, kFacets) << "from inside";
    });
}

TEST(RayCast, HemisphereOverAPlaneIsOpen) {
    TestScene scene;
    scene.surface("Floor", {{"Luminosity", 1}});
    int samples = 0;
    scene.probe("Floor", "Color", [&](ShadingSample &sample, double *) {
        ++samples;
        std::mt19937 random(3);
        const Vec3 position(sample.position), normal(sample.geometricNormal);
        for (int i = 0; i < 10000; ++i) {
            Vec3 direction = randomDirection(random);
            if (dot(direction, normal) < 0) direction = -direction;
            EXPECT_EQ(cast(sample, position, direction), HOST_RAY_MISS);
        }
        // Grazing to the last bit of single precision.
        for (const double rise : {1e-3, 1e-5, 1e-7, 0.0}) {
            EXPECT_EQ(cast(sample, position, {1, rise, 0}), HOST_RAY_MISS) << rise;
            EXPECT_EQ(cast(sample, position, {1, -rise, 0}), HOST_RAY_MISS) << "the own polygon from above";
        }
    });
    scene.object("Floor", PlaneShape{.width = 20, .depth = 20}, "Floor", {0.3, -1, 0.7});
    scene.description.cameras[0].rotation = {10, 20, 0};
    scene.render();
    EXPECT_EQ(samples, 1);
}

TEST(RayCast, ClosedBoxLetsNothingOut) {
    TestScene scene;
    scene.surface("Box");
    ObjectDescription &box = scene.object("Box", BoxShape{.size = {2, 3, 4}, .inward = true}, "Box", {0.1, 0.2, 0.3});
    box.rotation = {31, 17, 43};
    probeAtOrigin(scene, [](ShadingSample &sample, double *) {
        std::mt19937 random(4);
        for (int i = 0; i < 20000; ++i) EXPECT_GT(cast(sample, {0, 0, 0}, randomDirection(random)), 0.5);
    });
}

// Towards the corners and along the edges, where triangles meet.
TEST(RayCast, ClosedBoxIsTightAtItsEdges) {
    TestScene scene;
    scene.surface("Box");
    scene.object("Box", BoxShape{.size = {2, 2, 2}, .inward = true}, "Box");
    probeAtOrigin(scene, [](ShadingSample &sample, double *) {
        for (int i = -100; i <= 100; ++i) {
            const double t = i / 100.0;
            for (const double a : {-1.0, 1.0}) {
                for (const double b : {-1.0, 1.0}) {
                    for (const Vec3 &edge : {Vec3{t, a, b}, Vec3{a, t, b}, Vec3{a, b, t}}) {
                        EXPECT_NEAR(cast(sample, {0, 0, 0}, edge), length(edge), 1e-5);
                        EXPECT_NEAR(cast(sample, {0, 0, 0}, {edge.x, edge.y, t * edge.z}), // diagonals of the sides
                                    length({edge.x, edge.y, t * edge.z}) / largest({edge.x, edge.y, t * edge.z}), 1e-5);
                    }
                }
            }
        }
    });
}

TEST(RayCast, WallFillsItsHalfSpace) {
    TestScene scene;
    scene.surface("Wall");
    ObjectDescription &wall = scene.object("Wall", PlaneShape{.width = 4e6, .depth = 4e6}, "Wall", {3, 0, 0});
    wall.rotation = {0, 0, 90};
    probeAtOrigin(scene, [](ShadingSample &sample, double *) {
        std::mt19937 random(5);
        for (int i = 0; i < 2000; ++i) {
            const Vec3 direction = randomDirection(random);
            if (std::abs(direction.x) < 1e-4) continue;
            const double found = cast(sample, {0, 0, 0}, direction);
            // Single precision rounds the corners of so large a wall to a quarter of a metre, but not its middle.
            if (direction.x > 0) {
                EXPECT_NEAR(found * direction.x, 3, 1e-4);
            } else
                EXPECT_EQ(found, HOST_RAY_MISS);
        }
    });
}

TEST(RayCast, TakesDirectionsOfAnyLength) {
    TestScene scene;
    scene.surface("Box");
    scene.object("Box", BoxShape{.size = {2, 2, 2}, .inward = true}, "Box");
    probeAtOrigin(scene, [](ShadingSample &sample, double *) {
        for (const double size : {1e-300, 1e-160, 1e-20, 0.5, 7.0, 1e20, 1e160, 1e300})
            EXPECT_NEAR(cast(sample, {0, 0, 0}, {0, 0, size}), 1, kRelative) << size;
    });
}

TEST(RayCast, NonsenseIsAMiss) {
    TestScene scene;
    scene.surface("Box");
    scene.object("Box", BoxShape{.size = {2, 2, 2}, .inward = true}, "Box");
    probeAtOrigin(scene, [](ShadingSample &sample, double *) {
        constexpr double kInfinity = std::numeric_limits<double>::infinity();
        constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
        EXPECT_EQ(cast(sample, {0, 0, 0}, {0, 0, 0}), HOST_RAY_MISS);
        for (const double odd : {kNaN, kInfinity, -kInfinity}) {
            EXPECT_EQ(cast(sample, {0, 0, 0}, {odd, 0, 1}), HOST_RAY_MISS);
            EXPECT_EQ(cast(sample, {0, odd, 0}, {0, 0, 1}), HOST_RAY_MISS);
        }
        EXPECT_EQ(cast(sample, {1e300, 0, 0}, {-1, 0, 0}), HOST_RAY_MISS);
    });
}

// A ray that starts off the surface hits objects that are nearer to the surface than the surface's margin.
TEST(RayCast, OriginsOffTheSurfaceAreUsedAsTheyAre) {
    TestScene scene;
    scene.surface("Floor", {{"Luminosity", 1}});
    scene.surface("Above");
    int samples = 0;
    scene.probe("Floor", "Color", [&](ShadingSample &sample, double *) {
        ++samples;
        const Vec3 position(sample.position);
        EXPECT_NEAR(cast(sample, position, {0, 1, 0}), 0.001, 1e-5);
        EXPECT_NEAR(cast(sample, position + Vec3{0, 0.0005, 0}, {0, 1, 0}), 0.0005, 1e-5);
        EXPECT_EQ(cast(sample, position + Vec3{0, 0.0015, 0}, {0, 1, 0}), HOST_RAY_MISS);
        EXPECT_NEAR(cast(sample, position + Vec3{0, 0.0015, 0}, {0, -1, 0}), 0.0005, 1e-5);
    });
    scene.object("Floor", PlaneShape{.width = 2, .depth = 2}, "Floor", {0, -1, 0});
    ObjectDescription &above = scene.object("Above", PlaneShape{.width = 2, .depth = 2}, "Above", {0, -0.999, 0});
    above.seenByCamera = false;
    scene.description.cameras[0].hasTarget = true;
    scene.description.cameras[0].target = {0.1, -1, 0.1};
    scene.render();
    EXPECT_EQ(samples, 1);
}

TEST(RayCast, NeverHitsTheCastingPolygonButItsNeighbours) {
    TestScene scene;
    scene.surface("Box", {{"Luminosity", 1}});
    int samples = 0;
    scene.probe("Box", "Color", [&](ShadingSample &sample, double *) {
        ++samples;
        const Vec3 position(sample.position);
        // From in front of the side that was hit, through both of its triangles to the opposite side.
        for (const double x : {-0.3, -0.2, 0.2, 0.3})
            EXPECT_NEAR(cast(sample, position + Vec3{x, 0.25, -1}, {0, 0, 1}), 3, 1e-5);
        const double origin[3] = {0.3, 0.25, -2}, ahead[3] = {0, 0, 1};
        double colour[3];
        EXPECT_NEAR(sample.rayTraceMode(origin, ahead, colour, 1, static_cast<int>(kTraceMayHitOwnPolygon)), 1, 1e-5);
    });
    scene.object("Box", BoxShape{.size = {2, 2, 2}}, "Box");
    scene.render();
    EXPECT_EQ(samples, 1);
}

TEST(RayCast, DoesNotSeeWhatRaysCannotSee) {
    TestScene scene;
    scene.surface("Glass", {{"Transparency", 1}});
    scene.object("Hidden", BoxShape{}, "Glass", {0, 0, 3}).seenByRays = false;
    scene.object("Seen", BoxShape{}, "Glass", {0, 0, 6});
    probeAtOrigin(scene, [](ShadingSample &sample, double *) {
        EXPECT_NEAR(cast(sample, {0, 0, 0}, {0, 0, 1}), 5.5, 1e-5) << "clear glass is hit too";
    });
}

} // namespace
} // namespace velm::host::test
