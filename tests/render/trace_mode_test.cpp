// The results of each kind of traced ray, in scenes with known answers.
#include "tests/render/test_scene.h"

#include <vector>

namespace velm::host::test {
namespace {

constexpr double kTolerance = 1e-6;

struct Traced {
    double distance;
    Vec3 colour;
};

constexpr Vec3 kBefore{7, 8, 9}; // the colour argument before the ray

Traced trace(const ShadingSample &sample, unsigned mode, const Vec3 &direction = {0, 0, 1}, const Vec3 &from = {},
             double eta = 1) {
    const double origin[3] = {from.x, from.y, from.z}, d[3] = {direction.x, direction.y, direction.z};
    double colour[3] = {kBefore.x, kBefore.y, kBefore.z};
    const double distance = sample.rayTraceMode(origin, d, colour, eta, static_cast<int>(mode));
    return {distance, Vec3(colour)};
}

void expectTraced(const Traced &found, double distance, const Vec3 &colour, const char *what) {
    EXPECT_NEAR(found.distance, distance, 1e-5) << what;
    expectNear(found.colour, colour, kTolerance, what);
}

const Vec3 kBackdrop{0.25, 0.5, 0.75};

// Glass of transparency 0.5 at z = 2, then of 0.25 at z = 4, then a luminous red wall at z = 6; nothing to the sides.
TestScene panes() {
    TestScene scene;
    scene.surface("Half", {{"Luminosity", 1}, {"Transparency", 0.5}}, {0, 1, 0});
    scene.surface("Quarter", {{"Luminosity", 1}, {"Transparency", 0.25}}, {0, 0, 1});
    scene.surface("Wall", {{"Luminosity", 1}}, {1, 0, 0});
    const PlaneShape pane{.width = 2, .depth = 2};
    scene.object("Half", pane, "Half", {0, 0, 2}).rotation = {0, -90, 0};
    scene.object("Quarter", pane, "Quarter", {0, 0, 4}).rotation = {0, -90, 0};
    scene.object("Wall", pane, "Wall", {0, 0, 6}).rotation = {0, -90, 0};
    return scene;
}

TEST(TraceMode, DistanceShadesNothing) {
    TestScene scene = panes();
    probeAtOrigin(scene, [](ShadingSample &sample, double *) {
        expectTraced(trace(sample, kTraceDistance), 2, kBefore, "hit");
        expectTraced(trace(sample, kTraceDistance, {1, 0, 0}), HOST_RAY_MISS, kBefore, "miss");
    });
}

TEST(TraceMode, ShadingKindsGoThroughGlass) {
    TestScene scene = panes();
    // 0.5 of green, and through the other half 0.75 of blue, and through a quarter of that the wall.
    const Vec3 through{0.125, 0.5, 0.375};
    probeAtOrigin(scene, [&](ShadingSample &sample, double *) {
        expectTraced(trace(sample, kTraceReflection), 2, through, "reflection");
        expectTraced(trace(sample, kTraceRefraction), 2, through, "refraction");
        expectTraced(trace(sample, kTraceDissolve), 2, through, "dissolve");
        for (const unsigned kind : {kTraceReflection, kTraceRefraction, kTraceDissolve})
            expectTraced(trace(sample, kind, {1, 0, 0}), HOST_RAY_MISS, kBackdrop, "miss");
        const double origin[3] = {0, 0, 0}, ahead[3] = {0, 0, 5};
        double colour[3];
        EXPECT_NEAR(sample.rayTrace(origin, ahead, colour), 2, 1e-5);
        expectNear(Vec3(colour), through, kTolerance, "plain ray trace");
    });
}

TEST(TraceMode, ShadowIsTheProductOfTransparencies) {
    TestScene scene = panes();
    probeAtOrigin(scene, [](ShadingSample &sample, double *) {
        expectTraced(trace(sample, kTraceShadow), 2, {1, 1, 1}, "the wall stops everything");
        expectTraced(trace(sample, kTraceShadow, {0, 0, -1}, {0, 0, 3}), 1, {0.5, 0.5, 0.5}, "one pane");
        expectTraced(trace(sample, kTraceShadow, {0, 0, -1}, {0, 0, 5}), 1, {0.875, 0.875, 0.875}, "two panes");
        expectTraced(trace(sample, kTraceShadow, {1, 0, 0}), HOST_RAY_MISS, {0, 0, 0}, "nothing in the way");
        expectTraced(trace(sample, kTraceOcclusion, {0, 0, -1}, {0, 0, 5}), 1, {0.875, 0.875, 0.875}, "occlusion");
    });
}

TEST(TraceMode, ClearGlassStopsNoShadow) {
    TestScene scene;
    scene.surface("Clear", {{"Transparency", 1}});
    scene.object("Clear", BoxShape{}, "Clear", {0, 0, 2});
    probeAtOrigin(scene, [](ShadingSample &sample, double *) {
        expectTraced(trace(sample, kTraceShadow), HOST_RAY_MISS, {0, 0, 0}, "shadow");
    });
}

TEST(TraceMode, ShadowAndOcclusionHeedTheirOwnVisibility) {
    TestScene scene;
    scene.surface("Solid");
    scene.object("No shadow", BoxShape{}, "Solid", {0, 0, 2}).castsShadows = false;
    scene.object("Unseen", BoxShape{}, "Solid", {0, 0, 4}).seenByRays = false;
    probeAtOrigin(scene, [](ShadingSample &sample, double *) {
        expectTraced(trace(sample, kTraceShadow), 3.5, {1, 1, 1}, "shadow");
        expectTraced(trace(sample, kTraceOcclusion), 1.5, {1, 1, 1}, "occlusion");
        expectTraced(trace(sample, kTraceOcclusion, {0, 0, 1}, {0, 0, 3}), HOST_RAY_MISS, {0, 0, 0}, "past the first");
    });
}

TEST(TraceMode, ShadowSamplesSaySo) {
    TestScene scene;
    scene.surface("Pane");
    std::vector<std::pair<int, int>> seen; // flags and depth
    scene.probe("Pane", "Transparency", [&](ShadingSample &sample, double *value) {
        seen.emplace_back(sample.rayFlags, sample.rayDepth);
        value[0] = 0.5;
    });
    scene.object("Pane", PlaneShape{}, "Pane", {0, 3, 0});
    probeAtOrigin(scene, [&](ShadingSample &sample, double *) {
        expectTraced(trace(sample, kTraceShadow, {0, 1, 0}), 3, {0.5, 0.5, 0.5}, "from below");
    });
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].first, kRayShadow | kRayBackSide | kRayDoubleSided);
    EXPECT_EQ(seen[0].second, 1);
}

TEST(TraceMode, BackdropLooksAtNothingElse) {
    TestScene scene = panes();
    scene.description.backdrop.kind = BackdropDescription::Kind::gradient;
    const Double3 sky = scene.description.backdrop.sky, zenith = scene.description.backdrop.zenith;
    probeAtOrigin(scene, [&](ShadingSample &sample, double *) {
        expectTraced(trace(sample, kTraceBackdrop), HOST_RAY_MISS, Vec3(sky), "ahead");
        expectTraced(trace(sample, kTraceBackdrop, {0, 9, 0}), HOST_RAY_MISS, Vec3(zenith), "up");
        expectTraced(trace(sample, kTraceBackdrop | kTraceUseBackdropColour), HOST_RAY_MISS, kBefore, "given");
    });
}

TEST(TraceMode, ReflectsAKnownGradient) {
    TestScene scene;
    scene.description.backdrop.kind = BackdropDescription::Kind::gradient;
    scene.description.backdrop.zenith = {1, 0, 0};
    scene.description.backdrop.sky = {0, 1, 0};
    scene.description.backdrop.skySqueeze = 1;
    scene.surface("Mirror", {{"Reflection", 0.5}});
    scene.object("Mirror", PlaneShape{.width = 10, .depth = 10}, "Mirror", {0, 0, 0});
    // The camera looks down at 30 degrees; the mirrored ray rises at 30, a third of the way to the zenith.
    scene.description.cameras[0].position = {0, 1, -std::sqrt(3.0)};
    scene.description.cameras[0].rotation = {0, 30, 0};
    expectNear(scene.pixel(), {0.5 / 3, 0.5 * 2 / 3, 0}, kTolerance);
}

TEST(TraceMode, UnknownKindsAndNonsenseAreMissesThatLeaveTheColour) {
    TestScene scene = panes();
    probeAtOrigin(scene, [](ShadingSample &sample, double *) {
        for (const unsigned kind : {7u, 99u, 255u})
            expectTraced(trace(sample, kind), HOST_RAY_MISS, kBefore, "unknown");
        expectTraced(trace(sample, static_cast<unsigned>(-25536)), HOST_RAY_MISS, kBefore, "a mode cut to 16 bits");
        for (unsigned kind = kTraceDistance; kind <= kTraceBackdrop; ++kind) {
            expectTraced(trace(sample, kind, {0, 0, 0}), HOST_RAY_MISS, kBefore, "no direction");
            expectTraced(trace(sample, kind, {NAN, 0, 0}), HOST_RAY_MISS, kBefore, "not a number");
        }
    });
}

// Two mirrors that face each other and are slightly luminous.
TEST(TraceMode, RecursionStopsAtTheLimit) {
    for (const int limit : {0, 1, 2, 5, 100}) {
        TestScene scene;
        scene.job.recursionDepth = limit;
        scene.surface("Mirror", {{"Luminosity", 0.25}, {"Reflection", 0.5}});
        scene.object("Front", PlaneShape{.width = 4, .depth = 4}, "Mirror", {0, 0, 1}).rotation = {0, 90, 0};
        ObjectDescription &back = scene.object("Back", PlaneShape{.width = 40, .depth = 40}, "Mirror", {0, 0, -9});
        back.rotation = {0, 90, 0};
        // 0.25 from each mirror that is shaded, halved each time; black beyond the last.
        double expected = 0;
        for (int i = 0; i <= limit; ++i) expected += 0.25 * std::pow(0.5, i);
        expectNear(scene.pixel(), {expected, expected, expected}, kTolerance, std::to_string(limit));
        EXPECT_EQ(scene.render().statistics.rays.shaded, static_cast<std::uint64_t>(limit + 1));
    }
}

TEST(TraceMode, BeyondTheLimitDistancesStayTrue) {
    TestScene scene = panes();
    scene.job.recursionDepth = 0;
    probeAtOrigin(scene, [](ShadingSample &sample, double *) {
        expectTraced(trace(sample, kTraceReflection), 2, {0, 0, 0}, "hit");
        expectTraced(trace(sample, kTraceReflection, {1, 0, 0}), HOST_RAY_MISS, kBackdrop, "miss");
        expectTraced(trace(sample, kTraceShadow, {0, 0, -1}, {0, 0, 3}), 1, {0.5, 0.5, 0.5},
                     "shadows are not recursive");
    });
}

// A surface that traces shadow rays to compute its own transparency, and so evaluates itself again.
TEST(TraceMode, ShadowsThatTraceShadowsEnd) {
    TestScene scene;
    scene.job.recursionDepth = 4;
    int evaluations = 0;
    scene.surface("Pane");
    scene.probe("Pane", "Transparency", [&](ShadingSample &sample, double *value) {
        ++evaluations;
        const Vec3 position(sample.position);
        value[0] = 1 - trace(sample, kTraceShadow, {0, 0, position.z > 3 ? -1.0 : 1.0}, position).colour.x / 2;
    });
    scene.object("A", PlaneShape{}, "Pane", {0, 0, 2}).rotation = {0, 90, 0};
    scene.object("B", PlaneShape{}, "Pane", {0, 0, 4}).rotation = {0, 90, 0};
    probeAtOrigin(scene, [](ShadingSample &sample, double *) { trace(sample, kTraceShadow); });
    EXPECT_GT(evaluations, 4);
    EXPECT_LT(evaluations, 100);
}

} // namespace
} // namespace velm::host::test
