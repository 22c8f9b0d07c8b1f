// Refraction by Snell's law, and total reflection.
#include "tests/render/test_scene.h"

#include <vector>

namespace velm::host::test {
namespace {

constexpr double kTolerance = 1e-6;

struct Seen {
    Vec3 direction;
    double index;
    int flags;
};

// A glass body whose top is y = 0, or a pane there, seen from a camera at `degrees` off the vertical, and a box of
// 100 m around everything, which records the rays that reach it.
struct GlassTest : testing::Test {
    void look(const ShapeDescription &glass, const Double3 &position, double index, double degrees) {
        scene.surface("Glass", {{"Transparency", 1}, {"Refraction Index", index}});
        scene.surface("Box", {{"Luminosity", 1}});
        scene.probe("Box", "Color", [this](ShadingSample &sample, double *) {
            seen.push_back({.direction = normalised(Vec3(sample.position) - Vec3(sample.raySource)),
                            .index = sample.refractionIndex,
                            .flags = sample.rayFlags});
        });
        scene.object("Glass", glass, "Glass", position);
        scene.object("Box", BoxShape{.size = {100, 100, 100}, .inward = true}, "Box");
        const double angle = degrees * kPi / 180;
        scene.description.cameras[0].position = {-5 * std::sin(angle), 5 * std::cos(angle), 0};
        scene.description.cameras[0].hasTarget = true;
        scene.description.cameras[0].target = {0, 0, 0};
        scene.render();
    }
    TestScene scene;
    std::vector<Seen> seen;
};

TEST_F(GlassTest, BendsTowardsTheNormal) {
    look(PlaneShape{}, {}, 1.5, 40);
    ASSERT_EQ(seen.size(), 1u);
    const double inside = std::asin(std::sin(40 * kPi / 180) / 1.5);
    expectNear(seen[0].direction, {std::sin(inside), -std::cos(inside), 0}, kTolerance);
    EXPECT_EQ(seen[0].index, 1.5);
    EXPECT_EQ(seen[0].flags & kRayToOutside, 0);
}

TEST_F(GlassTest, PlateOnlyShiftsTheRay) {
    look(BoxShape{.size = {20, 1, 20}}, {0, -0.5, 0}, 1.5, 40);
    ASSERT_EQ(seen.size(), 1u);
    const double outside = 40 * kPi / 180;
    expectNear(seen[0].direction, {std::sin(outside), -std::cos(outside), 0}, kTolerance);
    EXPECT_EQ(seen[0].index, 1);
    EXPECT_NE(seen[0].flags & kRayToOutside, 0);
}

TEST_F(GlassTest, SameIndexGoesStraight) {
    look(BoxShape{.size = {20, 1, 20}}, {0, -0.5, 0}, 1, 75);
    ASSERT_EQ(seen.size(), 1u);
    expectNear(seen[0].direction, {std::sin(75 * kPi / 180), -std::cos(75 * kPi / 180), 0}, kTolerance);
}

// In through the top at 45 degrees, against the side at more than the critical angle, out through the bottom.
TEST_F(GlassTest, TotalReflectionInsideABlock) {
    look(BoxShape{.size = {2, 20, 20}}, {0, -10, 0}, 1.5, 45);
    ASSERT_EQ(seen.size(), 1u);
    const double in = std::asin(std::sin(kPi / 4) / 1.5); // 28.1 off the vertical, 61.9 off the side: beyond 41.8
    ASSERT_GT(kPi / 2 - in, std::asin(1 / 1.5));
    const double outside = kPi / 4;
    // Over the depth of 20 m it moves 10.7 m aside: from the middle to a side and four times across, so five
    // reflections without loss; the bottom restores the angle.
    ASSERT_EQ(std::floor((20 * std::tan(in) + 1) / 2), 5);
    expectNear(seen[0].direction, {-std::sin(outside), -std::cos(outside), 0}, 1e-5);
    EXPECT_EQ(seen[0].index, 1);
    EXPECT_EQ(scene.render().statistics.rays.shaded, 1u + 5 + 1);
}

struct CriticalCase {
    double degrees;
    bool reflects;
};

// A traced ray with a refraction index of 1.5 enters a surface of index 1.
TEST(TotalReflection, BeginsAtTheCriticalAngle) {
    const double critical = std::asin(1 / 1.5) * 180 / kPi;
    for (const CriticalCase &each : {CriticalCase{critical - 0.1, false}, CriticalCase{critical + 0.1, true}}) {
        TestScene scene;
        scene.description.backdrop.kind = BackdropDescription::Kind::gradient;
        scene.description.backdrop.sky = scene.description.backdrop.zenith = {0, 1, 0};
        scene.description.backdrop.ground = scene.description.backdrop.nadir = {1, 0, 0};
        scene.surface("Glass", {{"Transparency", 1}, {"Refraction Index", 1}});
        scene.object("Glass", PlaneShape{.width = 100, .depth = 100}, "Glass", {0, -1, 0});
        probeAtOrigin(scene, [&](ShadingSample &sample, double *) {
            const double angle = each.degrees * kPi / 180;
            const double origin[3] = {0, 0, 0}, down[3] = {std::sin(angle), -std::cos(angle), 0};
            double colour[3];
            sample.rayTraceMode(origin, down, colour, 1.5, kTraceRefraction);
            expectNear(Vec3(colour), each.reflects ? Vec3{0, 1, 0} : Vec3{1, 0, 0}, kTolerance);
        });
    }
}

TEST(Refraction, IndexOfTheRayReachesTheSample) {
    TestScene scene;
    scene.surface("Wall", {{"Luminosity", 1}});
    std::vector<double> seen;
    scene.probe("Wall", "Color", [&](ShadingSample &sample, double *) { seen.push_back(sample.refractionIndex); });
    scene.object("Wall", BoxShape{}, "Wall", {0, 0, 3});
    probeAtOrigin(scene, [](ShadingSample &sample, double *) {
        const double origin[3] = {0, 0, 0}, ahead[3] = {0, 0, 1};
        double colour[3];
        for (const int kind : {kTraceReflection, kTraceRefraction, kTraceDissolve})
            sample.rayTraceMode(origin, ahead, colour, 1.25 + kind, kind);
        sample.rayTrace(origin, ahead, colour);
    });
    EXPECT_EQ(seen, (std::vector<double>{2.25, 3.25, 4.25, 1}));
}

TEST(Refraction, IndicesThatAreNoneCountAsOne) {
    for (const double index : {0.0, -2.0}) {
        TestScene scene;
        scene.surface("Glass", {{"Transparency", 1}, {"Refraction Index", index}});
        scene.object("Glass", BoxShape{}, "Glass");
        expectNear(scene.pixel(), {0.25, 0.5, 0.75}, kTolerance);
    }
}

} // namespace
} // namespace velm::host::test
