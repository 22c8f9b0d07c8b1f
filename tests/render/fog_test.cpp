// Fog between the camera and objects.
#include "host/render/scene/fog.h"

#include "tests/render/test_scene.h"

namespace velm::host::test {
namespace {

constexpr double kTolerance = 1e-6; // of single precision

FogDescription whiteFog(FogDescription::Kind kind = FogDescription::Kind::linear) {
    return {.kind = kind, .colour = {1, 1, 1}, .minDistance = 2, .maxDistance = 10, .minAmount = 0.1, .maxAmount = 0.9};
}

TEST(Fog, GrowsBetweenItsDistances) {
    struct Case {
        FogDescription::Kind kind;
        double amounts[4]; // at 1, 4, 6 and 20 metres
    };
    for (const Case &each : {Case{FogDescription::Kind::linear, {0.1, 0.3, 0.5, 0.9}},
                             {FogDescription::Kind::quadratic, {0.1, 0.45, 0.7, 0.9}},
                             {FogDescription::Kind::cubic, {0.1, 0.5625, 0.8, 0.9}}}) {
        const Fog fog(whiteFog(each.kind));
        std::size_t next = 0;
        for (const double distance : {1.0, 4.0, 6.0, 20.0})
            EXPECT_NEAR(1 - fog.transmittance(0, distance), each.amounts[next++], 1e-12) << distance;
    }
}

TEST(Fog, SegmentsOfAPathMultiply) {
    FogDescription description = whiteFog();
    const Fog fog(description);
    EXPECT_NEAR(fog.transmittance(0, 3) * fog.transmittance(3, 7), fog.transmittance(0, 7), 1e-12);
    description.maxAmount = 1;
    const Fog dense(description);
    EXPECT_EQ(dense.transmittance(0, 10), 0);
    EXPECT_EQ(dense.transmittance(10, 12), 0) << "nothing gets out of it";
}

// A black wall at 6 m, at half the amount of fog.
TEST(Fog, CoversWhatTheCameraSees) {
    TestScene scene;
    scene.surface("Black", {}, {0, 0, 0});
    scene.object("Wall", BoxShape{.size = {4, 4, 2}}, "Black", {0, 0, 2});
    scene.description.fog = whiteFog();
    scene.description.fog.minAmount = 0;
    scene.description.fog.maxAmount = 1;
    scene.description.fog.colour = {1, 0.5, 0};
    expectNear(scene.pixel(), {0.5, 0.25, 0}, kTolerance);
    scene.description.fog.backdropColour = true;
    scene.update();
    expectNear(scene.pixel(), {0.125, 0.25, 0.375}, kTolerance, "half of the backdrop's colour");
    scene.description.objects[0].dissolve = 1;
    scene.update();
    expectNear(scene.pixel(), {0.25, 0.5, 0.75}, kTolerance, "not the backdrop itself");
}

// A mirror at 4 m shows a bright wall 3 m behind the camera, 11 m along the path of the light.
TEST(Fog, CoversWhatAMirrorShowsByItsWholePath) {
    TestScene scene;
    scene.surface("Mirror", {{"Reflection", 1}}, {0, 0, 0});
    scene.surface("Bright", {{"Luminosity", 1}}, {8, 8, 8});
    scene.object("Mirror", BoxShape{.size = {4, 4, 2}}, "Mirror", {0, 0, 0});
    scene.object("Bright", BoxShape{.size = {40, 40, 2}}, "Bright", {0, 0, -9});
    scene.description.fog = whiteFog();
    scene.description.fog.colour = {0, 0, 0};
    scene.description.fog.minAmount = 0;
    scene.description.fog.maxDistance = 12;
    expectNear(scene.pixel(), (8 * (1 - 0.9 * 9 / 10)) * Vec3{1, 1, 1}, 1e-5);
}

TEST(Fog, IsNoneByDefault) { EXPECT_FALSE(Fog(FogDescription{}).exists()); }

} // namespace
} // namespace velm::host::test
