#include "host/open/rig.h"

#include "host/open/framing.h"
#include "host/render/scene/lights.h"

#include <gtest/gtest.h>

namespace velm::host {
namespace {

Bounds box(double size) {
    Bounds bounds;
    bounds.include(Vec3{-size, 0, -2 * size});
    bounds.include(Vec3{size, 3 * size, 2 * size});
    return bounds;
}

Vec3 middle(double size) { return {0, 1.5 * size, 0}; }

// The light that a facing surface in the middle of the bounds receives from each light.
std::vector<double> illuminances(Rig rig, double size, View view = View::threeQuarter) {
    const CameraDescription camera = framed(box(size), view, 1.5);
    std::vector<double> all;
    for (const LightDescription &light : lightingOf(rig, box(size), camera).lights) {
        LightSample sample{};
        EXPECT_TRUE(Light(light).sample(middle(size), nullptr, {.x = 0.5, .y = 0.5}, sample));
        all.push_back(sample.colour.x);
    }
    return all;
}

TEST(Rig, LightsObjectsOfAllSizesAlike) {
    for (const Rig rig : {Rig::studio, Rig::outdoor}) {
        const std::vector<double> usual = illuminances(rig, 1);
        EXPECT_EQ(usual.size(), rig == Rig::studio ? 3U : 1U);
        for (const double size : {1e-4, 1e5}) {
            const std::vector<double> others = illuminances(rig, size);
            ASSERT_EQ(others.size(), usual.size());
            for (std::size_t i = 0; i < usual.size(); ++i) EXPECT_NEAR(others[i], usual[i], 1e-9);
        }
    }
    EXPECT_TRUE(illuminances(Rig::none, 1).empty());
}

// By definition of the sRGB curve, light of 0.12 is shown as 0.38, and of 1 as 1.
TEST(Rig, LooksAlikeInBothWorkflows) {
    const CameraDescription camera = framed(box(1), View::threeQuarter, 1.5);
    const Lighting linear = lightingOf(Rig::studio, box(1), camera);
    const Lighting classic = lightingOf(Rig::studio, box(1), camera, Workflow::classic);
    EXPECT_NEAR(linear.backdrop.colour[0], 0.12, 1e-9);
    EXPECT_NEAR(classic.backdrop.colour[0], 0.38, 0.01);
    const auto brightest = [](const Lighting &lighting) {
        double sum = lighting.ambientIntensity;
        for (const LightDescription &light : lighting.lights) {
            LightSample sample{};
            EXPECT_TRUE(Light(light).sample(middle(1), nullptr, {.x = 0.5, .y = 0.5}, sample));
            if (light.name == "Key") sum += sample.colour.x;
        }
        return sum;
    };
    EXPECT_NEAR(brightest(linear), 0.95, 0.01);
    EXPECT_NEAR(brightest(classic), 0.9, 0.01);
    EXPECT_EQ(lightingOf(Rig::none, box(1), camera, Workflow::classic).backdrop.colour, classic.backdrop.colour);
}

TEST(Rig, HasItsKeyLightOnTheCamerasSide) {
    for (const View view : {View::front, View::back, View::left, View::right, View::threeQuarter}) {
        const CameraDescription camera = framed(box(1), view, 1.5);
        const Vec3 toCamera = Vec3(camera.position) - middle(1);
        const Vec3 toKey = Vec3(lightingOf(Rig::studio, box(1), camera).lights.front().position) - middle(1);
        EXPECT_GT(dot(toCamera, toKey), 0) << int(view);
    }
}

TEST(Rig, LightsFromTheSideThatIsSeen) {
    const auto keyHeight = [](View view) {
        return lightingOf(Rig::studio, box(1), framed(box(1), view, 1.5)).lights.front().position[1] - middle(1).y;
    };
    EXPECT_GT(keyHeight(View::top), 1);
    EXPECT_LT(keyHeight(View::bottom), -1);
    EXPECT_TRUE(looksUpwards(framed(box(1), View::bottom, 1)));
    for (const View view : {View::front, View::top, View::threeQuarter})
        EXPECT_FALSE(looksUpwards(framed(box(1), view, 1)));
}

TEST(Rig, PutsTheGroundJustBelowTheBounds) {
    for (const double size : {1e-4, 1.0, 1e5}) {
        const double height = groundBelow(box(size)).position[1];
        EXPECT_LT(height, 0);
        EXPECT_GT(height, -0.01 * size);
    }
}

// Far away, only the ambient light of the studio reaches its ground.
TEST(Rig, HasABackdropLikeTheFarGround) {
    const Lighting studio = lightingOf(Rig::studio, box(1), framed(box(1), View::front, 1));
    EXPECT_EQ(studio.backdrop.kind, BackdropDescription::Kind::plain);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(studio.backdrop.colour[i],
                    studio.groundColour[i] * studio.ambientColour[i] * studio.ambientIntensity, 1e-12);
}

} // namespace
} // namespace velm::host
