// Ray shade: all members of the hit record.
#include "tests/render/test_scene.h"

namespace velm::host::test {
namespace {

constexpr double kTolerance = 1e-6;

double shadeRay(const ShadingSample &sample, const Vec3 &direction, HostRayHitRoom &room) {
    const double origin[3] = {0, 0, 0}, d[3] = {direction.x, direction.y, direction.z};
    room = {};
    return sample.rayShade(origin, d, &room.hit);
}

TEST(RayShade, FillsTheWholeRecord) {
    TestScene scene;
    scene.surface("Wall",
                  {{"Luminosity", 0.5},
                   {"Diffuse", 0.25},
                   {"Specular", 0.125},
                   {"Glossiness", 0.75},
                   {"Reflection", 0.0625},
                   {"Refraction Index", 1.25}},
                  {1, 0, 0.5});
    ObjectDescription &wall = scene.object("Wall", BoxShape{.size = {4, 4, 4}}, "Wall", {0, 0, 5});
    wall.scale = {1, 1, 0.5};
    probeAtOrigin(scene, [&](ShadingSample &sample, double *) {
        HostRayHitRoom room;
        EXPECT_NEAR(shadeRay(sample, {0, 0.5, 4}, room), length({0, 0.5, 4}), 1e-5);
        const HostRayHit &hit = room.hit;
        expectNear(Vec3(hit.position), {0, 0.5, 4}, kTolerance);
        expectNear(Vec3(hit.objectPosition), {0, 0.5, -2}, kTolerance);
        expectNear(Vec3(hit.geometricNormal), {0, 0, -1}, kTolerance);
        expectNear(Vec3(hit.shadingNormal), {0, 0, -1}, kTolerance);
        expectNear(Vec3(hit.raySource), {0, 0, 0}, kTolerance);
        EXPECT_NEAR(hit.rayLength, length({0, 0.5, 4}), kTolerance);
        EXPECT_NEAR(hit.cosine, 4 / length({0, 0.5, 4}), kTolerance);
        EXPECT_NEAR(hit.objectToWorld[8], 0.5, kTolerance);
        EXPECT_NEAR(hit.worldToObject[8], 2, kTolerance);
        EXPECT_GT(hit.spotSize, sample.spotSize);
        EXPECT_EQ(hit.objectItem, scene.item(kItemObject, "Wall"));
        EXPECT_EQ(hit.sourceItem, scene.item(kItemObject, "Probe"));
        EXPECT_EQ(hit.polygonNumber, 0);
        EXPECT_EQ(hit.rayDepth, 1);
        EXPECT_EQ(hit.rayFlags, kRayDoubleSided);
        EXPECT_EQ(hit.luminosity, 0.5);
        EXPECT_EQ(hit.diffuse, 0.25);
        EXPECT_EQ(hit.specular, 0.125);
        EXPECT_EQ(hit.roughness, 0.25);
        EXPECT_EQ(hit.mirror, 0.0625);
        EXPECT_EQ(hit.transparency, 0);
        EXPECT_EQ(hit.eta, 1.25);
        const Vec3 backdrop{0.25, 0.5, 0.75};
        expectNear(Vec3(hit.colour), 0.5 * Vec3{1, 0, 0.5} + 0.0625 * backdrop, kTolerance);
        EXPECT_EQ(hit.rayCast, sample.rayCast);
        EXPECT_EQ(hit.rayShade, sample.rayShade);
        EXPECT_EQ(hit.rayTrace, sample.rayTrace);
        EXPECT_EQ(hit.illuminate, sample.illuminate);
    });
}

TEST(RayShade, MissIsTheBackdrop) {
    TestScene scene;
    probeAtOrigin(scene, [](ShadingSample &sample, double *) {
        HostRayHitRoom room;
        EXPECT_EQ(shadeRay(sample, {0, 1, 0}, room), HOST_RAY_MISS);
        expectNear(Vec3(room.hit.colour), {0.25, 0.5, 0.75}, kTolerance);
        EXPECT_EQ(room.hit.objectItem, nullptr);
        EXPECT_EQ(shadeRay(sample, {0, 0, 0}, room), HOST_RAY_MISS);
        expectNear(Vec3(room.hit.colour), {0, 0, 0}, 0, "no direction: left as it was");
    });
}

TEST(RayShade, BeyondTheLimitNothingIsShaded) {
    TestScene scene;
    scene.job.recursionDepth = 0;
    scene.surface("Wall", {{"Luminosity", 1}});
    scene.object("Wall", BoxShape{}, "Wall", {0, 0, 3});
    probeAtOrigin(scene, [&](ShadingSample &sample, double *) {
        HostRayHitRoom room;
        EXPECT_NEAR(shadeRay(sample, {0, 0, 1}, room), 2.5, 1e-5);
        expectNear(Vec3(room.hit.position), {0, 0, 2.5}, kTolerance);
        expectNear(Vec3(room.hit.colour), {0, 0, 0}, 0);
        EXPECT_EQ(room.hit.objectItem, scene.item(kItemObject, "Wall"));
    });
}

TEST(RayShade, FillsNoMoreThanItsRecord) {
    TestScene scene;
    scene.surface("Wall", {{"Luminosity", 1}});
    scene.object("Wall", BoxShape{}, "Wall", {0, 0, 3});
    probeAtOrigin(scene, [](ShadingSample &sample, double *) {
        HostRayHitRoom room;
        for (double &each : room.reserve) each = 42;
        const double origin[3] = {0, 0, 0}, ahead[3] = {0, 0, 1};
        sample.rayShade(origin, ahead, &room.hit);
        EXPECT_EQ(room.reserve[kRayHitReserve / sizeof(double) - 1], 42);
        EXPECT_EQ(room.reserve[(sizeof(HostRayHit) + sizeof(double) - 1) / sizeof(double)], 42);
    });
}

} // namespace
} // namespace velm::host::test
