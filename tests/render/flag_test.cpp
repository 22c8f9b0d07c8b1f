// The flags of the mode word, each in a scene where it makes a known difference.
#include "tests/render/test_scene.h"

#include <vector>

namespace velm::host::test {
namespace {

double trace(const ShadingSample &sample, unsigned mode, const Vec3 &from, const Vec3 &direction, double colour[3]) {
    const double origin[3] = {from.x, from.y, from.z}, d[3] = {direction.x, direction.y, direction.z};
    return sample.rayTraceMode(origin, d, colour, 1, static_cast<int>(mode));
}

// A box around the sphere that traces, and between them a single-sided pane whose back faces the sphere.
TEST(ModeFlags, ShadeBackSides) {
    TestScene scene;
    scene.surface("Pane", {{"Luminosity", 1}}, {0, 1, 0}).doubleSided = false;
    scene.surface("Box", {{"Luminosity", 1}}, {1, 0, 0});
    scene.object("Pane", PlaneShape{.width = 4, .depth = 4}, "Pane", {0, 1, 0});
    scene.object("Box", BoxShape{.size = {20, 20, 20}, .inward = true}, "Box");
    probeAtOrigin(scene, [](ShadingSample &sample, double *) {
        double colour[3];
        for (const unsigned kind : {kTraceReflection, kTraceRefraction, kTraceDissolve}) {
            EXPECT_NEAR(trace(sample, kind, {}, {0, 1, 0}, colour), 10, 1e-4);
            expectNear(Vec3(colour), {1, 0, 0}, 1e-6, "passed by");
            EXPECT_NEAR(trace(sample, kind | kTraceShadeBackSides, {}, {0, 1, 0}, colour), 1, 1e-4);
            expectNear(Vec3(colour), {0, 1, 0}, 1e-6, "shaded");
            EXPECT_NEAR(trace(sample, kind, {0, 2, 0}, {0, -1, 0}, colour), 1, 1e-4) << "the front";
        }
        EXPECT_NEAR(trace(sample, kTraceDistance, {}, {0, 1, 0}, colour), 10, 1e-4);
        EXPECT_NEAR(trace(sample, kTraceDistance | kTraceShadeBackSides, {}, {0, 1, 0}, colour), 1, 1e-4);
        EXPECT_NEAR(trace(sample, kTraceShadow | kTraceShadeBackSides, {}, {0, 1, 0}, colour), 1, 1e-4);
        const double origin[3] = {0, 0, 0}, up[3] = {0, 1, 0};
        EXPECT_NEAR(sample.rayCast(origin, up), 10, 1e-4);
    });
}

TEST(ModeFlags, UseBackdropColour) {
    TestScene scene;
    scene.surface("Wall", {{"Luminosity", 1}}, {1, 0, 0});
    scene.object("Wall", BoxShape{}, "Wall", {0, 0, 3});
    probeAtOrigin(scene, [](ShadingSample &sample, double *) {
        double colour[3] = {7, 8, 9};
        EXPECT_EQ(trace(sample, kTraceReflection | kTraceUseBackdropColour, {}, {0, 1, 0}, colour), HOST_RAY_MISS);
        expectNear(Vec3(colour), {7, 8, 9}, 0, "a miss keeps the argument");
        EXPECT_NEAR(trace(sample, kTraceReflection | kTraceUseBackdropColour, {}, {0, 0, 1}, colour), 2.5, 1e-5);
        expectNear(Vec3(colour), {1, 0, 0}, 1e-6, "a hit is shaded as ever");
    });
}

// The object that traces is a box; between the rays' start and its far side there is another object.
struct OwnObject : testing::Test {
    void run(const Probe &probe) {
        scene.surface("Own", {{"Luminosity", 1}}, {0, 1, 0});
        scene.surface("Other", {{"Luminosity", 1}}, {1, 0, 0});
        int calls = 0;
        scene.probe("Own", "Color", [&](ShadingSample &sample, double *value) {
            value[1] = 1;
            if (sample.rayDepth > 0) return;
            ++calls;
            probe(sample, value);
        });
        scene.object("Own", BoxShape{.size = {2, 2, 2}}, "Own");
        scene.object("Inside", BoxShape{.size = {0.5, 0.5, 0.5}}, "Other");
        scene.object("Behind", BoxShape{.size = {0.5, 0.5, 0.5}}, "Other", {0, 0, 4});
        scene.render();
        EXPECT_EQ(calls, 1);
    }
    TestScene scene;
    const Vec3 middle{0.05, 0.1, -1}, ahead{0, 0, 1};
};

TEST_F(OwnObject, OnlyFlagHitsNothingElse) {
    run([this](ShadingSample &sample, double *) {
        double colour[3];
        EXPECT_NEAR(trace(sample, kTraceReflection, middle, ahead, colour), 0.75, 1e-5);
        EXPECT_NEAR(trace(sample, kTraceReflection | kTraceOwnObjectOnly, middle, ahead, colour), 2, 1e-5);
        expectNear(Vec3(colour), {0, 1, 0}, 1e-6);
        EXPECT_NEAR(trace(sample, kTraceDistance | kTraceOwnObjectOnly, middle, ahead, colour), 2, 1e-5);
        EXPECT_EQ(trace(sample, kTraceDistance | kTraceOwnObjectOnly, {0, 0, 3}, ahead, colour), HOST_RAY_MISS);
        EXPECT_NEAR(trace(sample, kTraceShadow | kTraceOwnObjectOnly, middle, ahead, colour), 2, 1e-5);
    });
}

TEST_F(OwnObject, DissolveNeverHitsIt) {
    run([this](ShadingSample &sample, double *) {
        double colour[3];
        EXPECT_NEAR(trace(sample, kTraceDissolve, middle, ahead, colour), 0.75, 1e-5);
        EXPECT_NEAR(trace(sample, kTraceDissolve, {0, 0, 0.5}, ahead, colour), 3.25, 1e-5) << "through its own side";
        expectNear(Vec3(colour), {1, 0, 0}, 1e-6);
        EXPECT_NEAR(trace(sample, kTraceRefraction, {0, 0, 0.5}, ahead, colour), 0.5, 1e-5) << "another kind stops";
        EXPECT_EQ(trace(sample, kTraceDissolve | kTraceOwnObjectOnly, middle, ahead, colour), HOST_RAY_MISS);
    });
}

TEST_F(OwnObject, OwnPolygonIsHitOnlyWhenAllowed) {
    run([this](ShadingSample &sample, double *) {
        double colour[3];
        const Vec3 before{0.3, 0.2, -3};
        for (const unsigned kind : {kTraceDistance, kTraceReflection, kTraceRefraction}) {
            EXPECT_NEAR(trace(sample, kind, before, ahead, colour), 4, 1e-5) << "past it to the side opposite";
            EXPECT_NEAR(trace(sample, kind | kTraceMayHitOwnPolygon, before, ahead, colour), 2, 1e-5);
        }
        // With or without the flag, a ray that starts on the polygon leaves it.
        EXPECT_NEAR(trace(sample, kTraceDistance | kTraceMayHitOwnPolygon, middle, ahead, colour), 0.75, 1e-5);
        EXPECT_EQ(trace(sample, kTraceDistance | kTraceMayHitOwnPolygon, middle, {0, 0, -1}, colour), HOST_RAY_MISS);
    });
}

// The flags of a ray in the sample that it hits.
TEST(ModeFlags, SampledIsSeenByTheHitAndHandedOn) {
    TestScene scene;
    std::vector<std::pair<int, int>> seen; // flags and depth of each sample of the mirror
    scene.surface("Mirror", {{"Reflection", 1}});
    scene.probe("Mirror", "Luminosity", [&](ShadingSample &sample, double *value) {
        seen.emplace_back(sample.rayFlags & (kRaySampled | kRayShadow | kRayPreview), sample.rayDepth);
        value[0] = 0;
    });
    scene.object("Left", PlaneShape{.width = 4, .depth = 4}, "Mirror", {0, -1, 0});
    scene.object("Right", PlaneShape{.width = 4, .depth = 4}, "Mirror", {0, 1, 0});
    scene.job.recursionDepth = 3;
    probeAtOrigin(scene, [&](ShadingSample &sample, double *) {
        double colour[3];
        trace(sample, kTraceReflection, {}, {0, 1, 0}, colour);
        trace(sample, kTraceReflection | kTraceSampled, {}, {0, 1, 0}, colour);
    });
    using Seen = std::pair<int, int>;
    EXPECT_EQ(seen, (std::vector<Seen>{{0, 1}, {0, 2}, {0, 3}, {kRaySampled, 1}, {kRaySampled, 2}, {kRaySampled, 3}}));
}

TEST(ModeFlags, AllAtOnceAreNoTrouble) {
    TestScene scene;
    scene.surface("Wall", {{"Luminosity", 1}});
    scene.object("Wall", BoxShape{}, "Wall", {0, 0, 3});
    probeAtOrigin(scene, [](ShadingSample &sample, double *) {
        for (unsigned kind = 0; kind <= 6; ++kind) {
            double colour[3] = {1, 2, 3};
            trace(sample, 0xf8000000u | kind, {}, {0, 0, 1}, colour);
        }
        double colour[3] = {1, 2, 3};
        EXPECT_EQ(trace(sample, 0xf8000006u, {}, {0, 0, 1}, colour), HOST_RAY_MISS);
        expectNear(Vec3(colour), {1, 2, 3}, 0);
    });
}

} // namespace
} // namespace velm::host::test
