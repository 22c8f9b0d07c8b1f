// Values of surfaces at the texels of a UV map.
#include "host/base/error.h"
#include "host/render/scene/render_scene.h"
#include "tests/bake/bake_scene.h"

#include <cmath>
#include <cstring>
#include <numbers>
#include <span>

namespace velm::host::test {
namespace {

constexpr double kSingle = 1e-6; // coordinates of about 1 in single precision

const PlaneShape kSquare{.width = 2, .depth = 2};

LightDescription lightFrom(const Double3 &position) {
    LightDescription light;
    light.name = "Sun";
    light.position = position;
    return light;
}

TEST(BakeTexture, ShowsTheUvCoordinatesOfTexelMiddles) {
    for (const ShapeDescription &shape : {ShapeDescription(kSquare), ShapeDescription(SphereShape{})}) {
        BakeScene scene(shape);
        const Picture picture = scene.bakeProbe([](const ShadingSample &sample, double value[3]) {
            value[2] = sampleUv(sample, nullptr, &value[0], &value[1]) ? 1 : 0;
        });
        for (int y = 0; y < 32; ++y)
            for (int x = 0; x < 32; ++x) {
                if (picture.pixel(x, y)[3] < 0.999F) continue; // at the sphere's poles
                expectNear(texelOf(picture, x, y), {(x + 0.5) / 32, 1 - (y + 0.5) / 32, 1}, kSingle);
            }
        EXPECT_NEAR(picture.pixel(16, 16)[3], 1, kSingle);
    }
}

TEST(BakeTexture, ShowsPositionsOnAPlane) {
    BakeScene scene(kSquare);
    const Picture picture = scene.bakeProbe(kPositionProbe);
    for (int y = 0; y < 32; ++y)
        for (int x = 0; x < 32; ++x)
            expectNear(texelOf(picture, x, y), {(x + 0.5) / 16 - 1, 0, 1 - (y + 0.5) / 16}, kSingle);
}

TEST(BakeTexture, ShowsPositionsOnASphere) {
    constexpr int kSegments = 256;
    BakeScene scene(SphereShape{.radius = 2, .segments = kSegments}, {}, 64);
    const Picture picture = scene.bakeProbe(kPositionProbe);
    // How far a chord is from its arc, and a point on a segment from the point of its angle.
    const double error = 2 * std::numbers::pi / kSegments * 0.1;
    for (int y = 2; y < 62; ++y) {
        for (int x = 0; x < 64; ++x) {
            const double turn = (x + 0.5) / 64 * 2 * kPi, elevation = (0.5 - (y + 0.5) / 64) * kPi;
            expectNear(texelOf(picture, x, y),
                       2 * Vec3{-std::cos(elevation) * std::sin(turn), std::sin(elevation),
                                std::cos(elevation) * std::cos(turn)},
                       error);
        }
    }
}

TEST(BakeTexture, TakesTheMeanOfSamples) {
    BakeScene scene(kSquare);
    scene.job.samples = 16;
    const Picture picture = scene.bakeProbe(kPositionProbe);
    // Stratified samples: their mean is within a quarter of a stratum of the middle.
    for (int y = 0; y < 32; ++y)
        for (int x = 0; x < 32; ++x)
            expectNear(texelOf(picture, x, y), {(x + 0.5) / 16 - 1, 0, 1 - (y + 0.5) / 16}, 1.0 / 16 / 4);
}

TEST(BakeTexture, SamplesSeeASquareOfTheTexelsSize) {
    BakeScene scene(PlaneShape{.width = 2, .depth = 8});
    const Picture picture =
        scene.bakeProbe([](const ShadingSample &sample, double value[3]) { value[0] = sample.spotSize; });
    EXPECT_NEAR(picture.pixel(5, 5)[0], 4.0 / 32, kSingle); // the side of a square of 2/32 by 8/32
}

TEST(BakeTexture, SeesPointsAgainstTheirNormals) {
    BakeScene scene(SphereShape{});
    const Picture picture = scene.bakeProbe([](const ShadingSample &sample, double value[3]) {
        const Vec3 away = Vec3(sample.raySource) - Vec3(sample.position);
        value[0] = dot(away, Vec3(sample.shadingNormal));
        value[1] = sample.rayLength;
        value[2] = sample.rayFlags & kRayBackSide;
    });
    expectNear(texelOf(picture, 9, 9), {1, 1, 0}, kSingle);
}

TEST(BakeTexture, SeesPointsFromACameraOrLight) {
    const Probe source = [](const ShadingSample &sample, double value[3]) { Vec3(sample.raySource).store(value); };
    const auto bakeFrom = [&](const std::string &viewer) {
        BakeScene scene(kSquare);
        scene.description.cameras[0].position = {0, 3, -5};
        scene.description.lights.push_back(lightFrom({0, 4, 0}));
        scene.bake.viewer = viewer;
        return texelOf(scene.bakeProbe(source), 0, 0);
    };
    expectNear(bakeFrom("camera"), {0, 3, -5}, kSingle);
    expectNear(bakeFrom("Camera"), {0, 3, -5}, kSingle);
    expectNear(bakeFrom("Sun"), {1.0 / 32 - 1, 1, 1 - 1.0 / 32}, kSingle); // distant: above each point
    EXPECT_THROW(bakeFrom("Moon"), InputError);
}

TEST(BakeTexture, SeesFrontsEvenFromBehind) {
    BakeScene scene(kSquare);
    scene.description.cameras[0].position = {0, -3, -5};
    scene.bake.viewer = "camera";
    const Picture picture =
        scene.bakeProbe([](const ShadingSample &sample, double value[3]) { Vec3(sample.raySource).store(value); });
    expectNear(texelOf(picture, 3, 3), {0, 3, -5}, kSingle);
}

TEST(BakeTexture, LightsTheSurface) {
    BakeScene scene(kSquare, {{"Diffuse", 0.5}});
    LightDescription light = lightFrom({0, 1, 1});
    light.intensity = 2;
    scene.description.lights.push_back(light);
    scene.bake.output = "lit";
    const BakedTexture baked = scene.bakeIt();
    expectNear(texelOf(baked.picture, 7, 7), std::sqrt(0.5) * Vec3{1, 1, 1}, kSingle);
    EXPECT_EQ(baked.statistics.samples, 32u * 32u);
}

TEST(BakeTexture, SeesShadows) {
    BakeScene scene(kSquare, {{"Diffuse", 1}});
    scene.description.lights.push_back(lightFrom({0, 1, 0}));
    scene.object("Roof", PlaneShape{.width = 1, .depth = 1}, "Skin", {0.5, 1, 0.5}); // over a quarter
    scene.bake.output = "lit";
    const Picture picture = scene.bakeIt().picture;
    EXPECT_EQ(texelOf(picture, 24, 8), (Vec3{0, 0, 0}));
    expectNear(texelOf(picture, 8, 8), {1, 1, 1}, kSingle);
    expectNear(texelOf(picture, 24, 24), {1, 1, 1}, kSingle);
}

TEST(BakeTexture, KnowsNodeOutputsAndSurfaceValues) {
    BakeScene scene(kSquare, {{"Luminosity", 0.25}});
    scene.probe("Skin", "Diffuse", [](const ShadingSample &, double value[3]) { value[0] = 0.75; });
    const auto baked = [&](const char *output) {
        scene.bake.output = output;
        const BakedTexture texture = scene.bakeIt();
        return std::pair(texture.kind, texelOf(texture.picture, 1, 1));
    };
    EXPECT_EQ(baked("Luminosity"), std::pair(BakedKind::number, Vec3(0.25, 0.25, 0.25)));
    EXPECT_EQ(baked("Diffuse"), std::pair(BakedKind::number, Vec3(0.75, 0.75, 0.75)));
    EXPECT_EQ(baked("Probe.Scalar"), std::pair(BakedKind::number, Vec3(0.75, 0.75, 0.75)));
    EXPECT_EQ(baked("Probe.Color").first, BakedKind::colour);
    EXPECT_EQ(baked("Color"), std::pair(BakedKind::colour, Vec3(1, 1, 1)));
    EXPECT_EQ(baked("Normal").first, BakedKind::normal);
}

TEST(BakeTexture, ListsTheOutputsForAWrongName) {
    BakeScene scene(kSquare);
    scene.probe("Skin", "Color", kPositionProbe);
    scene.bake.output = "Occlusion.Out";
    try {
        scene.bakeIt();
        FAIL() << "baked an unknown output";
    } catch (const InputError &error) {
        const std::string message = error.what();
        for (const char *name : {"\"Occlusion.Out\"", "\"Probe.Color\"", "\"Normal\"", "\"lit\""})
            EXPECT_NE(message.find(name), std::string::npos) << message;
    }
}

TEST(BakeTexture, IsTheSameForAnyNumberOfWorkersAndTheSecondTime) {
    const auto bakeWith = [](int workers) {
        BakeScene scene(SphereShape{}, {{"Diffuse", 0.8}, {"Reflection", 0.3}}, 70);
        LightDescription dome; // takes random samples
        dome.kind = LightDescription::Kind::dome;
        dome.samples = 2;
        scene.description.lights.push_back(dome);
        scene.object("Floor", PlaneShape{.width = 10, .depth = 10}, "Skin", {0, -1, 0});
        scene.bake.output = "lit";
        scene.bake.margin = 4;
        scene.job.samples = 2;
        scene.job.threads = workers;
        return scene.bakeIt().picture;
    };
    const Picture first = bakeWith(1);
    const Region whole{.left = 0, .top = 0, .right = 70, .bottom = 70};
    for (const int workers : {1, 2, 3}) EXPECT_TRUE(samePixels(bakeWith(workers), first, whole)) << workers;
}

TEST(BakeTexture, WarnsOfTexelsThatAreNotFinite) {
    BakeScene scene(kSquare);
    scene.bakeProbe([](const ShadingSample &sample, double value[3]) {
        if (sample.position[0] > 0.99) value[0] = std::numeric_limits<double>::quiet_NaN();
    });
    ASSERT_EQ(scene.warnings.all().size(), 0u); // no texel's middle is that far
    BakeScene other(kSquare);
    other.bakeProbe([](const ShadingSample &sample, double value[3]) {
        if (sample.position[0] > 0.96) value[0] = std::numeric_limits<double>::quiet_NaN();
    });
    ASSERT_EQ(other.warnings.all().size(), 1u);
    EXPECT_NE(other.warnings.all()[0].message.find("32 texels are NaN or infinite, the first at 31, 0"),
              std::string::npos)
        << other.warnings.all()[0].message;
}

} // namespace
} // namespace velm::host::test
