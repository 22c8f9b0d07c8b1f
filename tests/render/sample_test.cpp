// The shading sample, member by member.
#include "tests/render/test_scene.h"

#include "host/render/geometry/mesh.h"
#include "host/services/uv_provider.h"

#include <vector>

namespace velm::host::test {
namespace {

constexpr double kTolerance = 1e-6;

// A floor at y = -1 that is stretched, turned and seen from above by a camera that looks down at 30 degrees.
struct SampleTest : testing::Test {
    void look(const Probe &probe) {
        scene.surface("Floor", {{"Luminosity", 1}});
        int calls = 0;
        scene.probe("Floor", "Color", [&](ShadingSample &sample, double *value) {
            ++calls;
            probe(sample, value);
        });
        ObjectDescription &floor = scene.object("Floor", PlaneShape{.width = 4, .depth = 4}, "Floor", {1, -1, 0.5});
        floor.rotation = {90, 0, 0};
        floor.scale = {2, 1, 4};
        scene.description.cameras[0].position = {0, 0, -std::sqrt(3.0)};
        scene.description.cameras[0].rotation = {0, 30, 0};
        scene.render();
        EXPECT_EQ(calls, 1);
    }
    TestScene scene;
};

TEST_F(SampleTest, PlacesAndNormals) {
    look([&](ShadingSample &sample, double *) {
        EXPECT_EQ(sample.pixelX, 0);
        EXPECT_EQ(sample.pixelY, 0);
        expectNear(Vec3(sample.position), {0, -1, 0}, kTolerance);
        expectNear(Vec3(sample.raySource), {0, 0, -std::sqrt(3.0)}, kTolerance);
        EXPECT_NEAR(sample.rayLength, 2, kTolerance);
        EXPECT_NEAR(sample.cosine, 0.5, kTolerance);
        EXPECT_EQ(sample.bumpHeight, 0);
        for (const double *normal : {sample.geometricNormal, sample.shadingNormal, sample.unbumpedNormal})
            expectNear(Vec3(normal), {0, 1, 0}, kTolerance);
        // The position is (-1, 0, -0.5) from the object's, in world space. A heading of 90 takes +Z to +X and +X to -Z;
        // the object is scaled by 4 along its Z and by 2 along its X.
        expectNear(Vec3(sample.objectPosition), {0.25, 0, -0.25}, kTolerance);
    });
}

TEST_F(SampleTest, MatricesGoThereAndBack) {
    look([&](ShadingSample &sample, double *) {
        Matrix toWorld, toObject;
        std::copy_n(sample.objectToWorld, 9, toWorld.m);
        std::copy_n(sample.worldToObject, 9, toObject.m);
        expectNear(toWorld * Vec3(sample.objectPosition) + Vec3{1, -1, 0.5}, Vec3(sample.position), kTolerance);
        expectNear(toWorld * Vec3{0, 0, 1}, {4, 0, 0}, kTolerance);
        expectNear(toWorld * (toObject * Vec3{1, 2, 3}), {1, 2, 3}, kTolerance);
    });
}

TEST_F(SampleTest, RayAndItems) {
    look([&](ShadingSample &sample, double *) {
        EXPECT_EQ(sample.rayDepth, 0);
        EXPECT_EQ(sample.rayFlags, kRayDoubleSided);
        EXPECT_EQ(sample.sourceItem, scene.item(kItemCamera, "Camera"));
        EXPECT_EQ(sample.objectItem, scene.item(kItemObject, "Floor"));
        EXPECT_EQ(sample.refractionIndex, 1);
        EXPECT_EQ(sample.threadIndex, 0);
        EXPECT_NE(sample.illuminate, nullptr);
        EXPECT_NE(sample.illuminateSampled, nullptr);
        EXPECT_NE(sample.rayTrace, nullptr);
        EXPECT_NE(sample.rayCast, nullptr);
        EXPECT_NE(sample.rayShade, nullptr);
        EXPECT_NE(sample.rayTraceMode, nullptr);
    });
}

TEST_F(SampleTest, PolygonAboutThePosition) {
    look([](ShadingSample &sample, double *) {
        EXPECT_EQ(sample.polygonNumber, 0);
        ASSERT_NE(sample.polygon, nullptr);
        Vec3 mean;
        float sum = 0;
        for (int k = 0; k < 4; ++k) {
            const float *p = sample.vertexPositions[k];
            mean += static_cast<double>(sample.vertexWeights[k]) * Vec3{p[0], p[1], p[2]};
            sum += sample.vertexWeights[k];
            EXPECT_EQ(sample.vertices[k] == nullptr, k == 3);
        }
        EXPECT_NEAR(sum, 1, 1e-6);
        expectNear(mean, Vec3(sample.position), 1e-5);
        EXPECT_EQ(sample.vertices[1]->position[0], sample.vertexPositions[1][0]);
    });
}

TEST_F(SampleTest, SpotIsThePixelsWidth) {
    const double pixel = 2 * std::tan(20 * kPi / 180); // of the whole picture, at 1 m
    look([&](ShadingSample &sample, double *) { EXPECT_NEAR(sample.spotSize, 2 * pixel, kTolerance); });
}

TEST(Sample, SpotGrowsAlongThePath) {
    TestScene scene;
    scene.job.width = scene.job.height = 101;
    scene.job.region = {.left = 50, .top = 50, .right = 51, .bottom = 51};
    const double pixel = 2 * std::tan(20 * kPi / 180) / 101;
    scene.surface("Mirror", {{"Reflection", 1}});
    scene.surface("Wall", {{"Luminosity", 1}});
    std::vector<double> spots;
    const Probe note = [&](ShadingSample &sample, double *value) {
        spots.push_back(sample.spotSize);
        value[0] = 0;
    };
    scene.probe("Mirror", "Luminosity", note);
    scene.probe("Wall", "Luminosity", note);
    const PlaneShape wall{.width = 9, .depth = 9};
    scene.object("Mirror", wall, "Mirror").rotation = {0, 90, 0};
    scene.object("Wall", wall, "Wall", {0, 0, -7}).rotation = {0, 90, 0};
    scene.render();
    ASSERT_EQ(spots.size(), 2u);
    EXPECT_NEAR(spots[0], 5 * pixel, kTolerance);
    EXPECT_NEAR(spots[1], 12 * pixel, kTolerance);
}

TEST(Sample, BackSidesAreTurnedToTheView) {
    TestScene scene;
    scene.surface("Pane", {{"Luminosity", 1}});
    bool called = false;
    scene.probe("Pane", "Color", [&](ShadingSample &sample, double *) {
        called = true;
        EXPECT_EQ(sample.rayFlags, kRayDoubleSided | kRayBackSide);
        expectNear(Vec3(sample.geometricNormal), {0, 0, -1}, kTolerance);
        expectNear(Vec3(sample.shadingNormal), {0, 0, -1}, kTolerance);
        EXPECT_NEAR(sample.cosine, 1, kTolerance);
    });
    scene.object("Pane", PlaneShape{.width = 4, .depth = 4}, "Pane").rotation = {0, 90, 0};
    scene.render();
    EXPECT_TRUE(called);
}

TEST(Sample, SingleSidedBacksAreNotThere) {
    TestScene scene;
    scene.surface("Pane", {{"Luminosity", 1}}).doubleSided = false;
    scene.object("Pane", PlaneShape{.width = 4, .depth = 4}, "Pane").rotation = {0, 90, 0};
    expectNear(scene.pixel(), {0.25, 0.5, 0.75}, kTolerance, "the back");
    TestScene front;
    front.surface("Pane", {{"Luminosity", 1}}).doubleSided = false;
    int flags = -1;
    front.probe("Pane", "Color", [&](ShadingSample &sample, double *) { flags = sample.rayFlags; });
    front.object("Pane", PlaneShape{.width = 4, .depth = 4}, "Pane").rotation = {0, -90, 0};
    front.render();
    EXPECT_EQ(flags, 0);
}

TEST(Sample, SmoothNormalsAreInterpolatedAndFlatOnesNot) {
    for (const double angle : {89.5, 0.0}) {
        TestScene scene;
        scene.job.width = scene.job.height = 16;
        scene.surface("Ball", {{"Luminosity", 1}}).smoothingAngle = angle;
        double worst = 0;
        int count = 0;
        scene.probe("Ball", "Color", [&](ShadingSample &sample, double *) {
            ++count;
            const Vec3 shading(sample.shadingNormal);
            EXPECT_NEAR(length(shading), 1, 1e-12);
            EXPECT_NEAR(length(Vec3(sample.geometricNormal)), 1, 1e-12);
            worst = std::max(worst, length(shading - normalised(Vec3(sample.position))));
            if (angle == 0) expectNear(shading, Vec3(sample.geometricNormal), 0);
        });
        scene.object("Ball", SphereShape{.radius = 1, .segments = 24}, "Ball");
        scene.render();
        EXPECT_GT(count, 50);
        if (angle > 0) {
            EXPECT_LT(worst, 0.005);
        } else
            EXPECT_GT(worst, 0.03);
    }
}

TEST(Sample, MapsAreLookedUpByName) {
    TestScene scene;
    scene.surface("Floor", {{"Luminosity", 1}});
    bool called = false;
    scene.probe("Floor", "Color", [&](ShadingSample &sample, double *) {
        called = true;
        double u = 9, v = 9;
        EXPECT_TRUE(lookUpUv(&sample, nullptr, &u, &v));
        EXPECT_NEAR(u, 0.75, 1e-6);
        EXPECT_NEAR(v, 0.625, 1e-6);
        u = v = 9;
        EXPECT_TRUE(lookUpUv(&sample, "UV", &u, &v));
        EXPECT_NEAR(u, 0.75, 1e-6);
        EXPECT_FALSE(lookUpUv(&sample, "Other", &u, &v));
        EXPECT_NEAR(v, 0.625, 1e-6) << "left alone";
        const ShadingSample nowhere{};
        EXPECT_FALSE(lookUpUv(&nowhere, nullptr, &u, &v));
    });
    scene.object("Floor", PlaneShape{.width = 4, .depth = 4}, "Floor", {-1, 0, -0.5});
    scene.description.cameras[0].position = {0, 5, 0};
    scene.description.cameras[0].rotation = {0, 90, 0};
    scene.render();
    EXPECT_TRUE(called);
}

} // namespace
} // namespace velm::host::test
