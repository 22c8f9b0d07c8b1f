// Domes, even ones and those with an image, against closed forms and sums over the pixels.
#include "tests/image/image_files.h"
#include "tests/render/test_scene.h"
#include "tests/temporary_directory.h"

#include "host/base/hash.h"
#include "host/image/image.h"
#include "host/render/geometry/transform.h"
#include "host/render/scene/render_scene_data.h"

#include <array>
#include <cmath>
#include <vector>

namespace velm::host::test {
namespace {

constexpr Vec3 kPlaneNormal{0, 0, -1};

LightDescription evenDome(const Double3 &rotation = {}) {
    LightDescription dome;
    dome.kind = LightDescription::Kind::dome;
    dome.rotation = rotation;
    dome.samples = 4096;
    return dome;
}

TEST(DomeLight, LightsASurfaceWithItsColour) {
    constexpr double kTolerance = 1e-3;
    LightDescription dome = evenDome();
    dome.colour = {1, 0.5, 0.25};
    dome.intensity = 0.8;
    expectNear(litPlane(dome).pixel(), {0.8, 0.4, 0.2}, kTolerance);
}

// The form factor between a surface and a hemisphere of sky whose axis makes an angle a with the surface's normal is
// (1 + cos a) / 2.
TEST(DomeLight, HemispheresMatchTheirFormFactor) {
    constexpr double kTolerance = 5e-3;
    for (const double pitch : {0.0, 30.0, 90.0, 180.0, 270.0}) {
        LightDescription dome = evenDome({0, pitch, 0});
        dome.hemisphere = true;
        const Vec3 up = rotationMatrix(dome.rotation) * Vec3{0, 1, 0};
        EXPECT_NEAR(litPlane(dome).pixel().x, (1 + dot(up, kPlaneNormal)) / 2, kTolerance) << pitch;
    }
}

// A square of 2 by 2 metres at a distance of 1 m occludes a fraction of the light that is its form factor: four times
// that of a rectangle above one of its corners (Hottel).
TEST(DomeLight, OccludersMatchTheirFormFactor) {
    constexpr double kTolerance = 0.01; // the edges of the square do not coincide with those of sampling strata
    TestScene scene = litPlane(evenDome());
    scene.surface("Lid");
    ObjectDescription &lid = scene.object("Lid", PlaneShape{.width = 2, .depth = 2}, "Lid", {0, 0, -1});
    lid.rotation = {0, 90, 0};
    lid.seenByCamera = false;
    const double root = std::sqrt(2.0), hidden = 4 / kPi * (1 / root) * std::atan(1 / root);
    EXPECT_NEAR(scene.pixel().x, 1 - hidden, kTolerance);
    scene.description.lights[0].shadows = false;
    scene.update();
    EXPECT_NEAR(scene.pixel().x, 1, kTolerance) << "without shadows";
}

TEST(DomeLight, NodesGetAllOfItsLight) {
    constexpr double kTolerance = 0.02;
    for (const bool isHemisphere : {false, true}) {
        TestScene scene;
        LightDescription dome = evenDome();
        dome.name = "Dome";
        dome.hemisphere = isHemisphere;
        scene.description.lights.push_back(dome);
        probeAtOrigin(scene, [&](ShadingSample &sample, double *) {
            auto *item = const_cast<HostItem *>(scene.item(kItemLight, "Dome"));
            const double above[3] = {0, 1, 0}; // where the ball at the origin hides hardly anything
            double direction[3], colour[3];
            EXPECT_EQ(sample.illuminate(item, above, direction, colour), 1);
            EXPECT_NEAR(colour[0], isHemisphere ? 2 : 4, kTolerance) << "solid angle / pi";
            EXPECT_EQ(direction[1] < -0.99, isHemisphere) << "from above";
        });
    }
}

// An image of 3 channels as the light of a dome.
class ImageDome : public testing::Test {
  protected:
    void SetUp() override { ImageList::instance().clear(); }
    void TearDown() override { ImageList::instance().clear(); }

    void load(int width, int height, const std::vector<float> &values) {
        width_ = width;
        height_ = height;
        values_ = values;
        ASSERT_TRUE(writeImageFile(directory_ / "sky.exr", width, height, 3, values));
        ImageList::instance().load(directory_ / "sky.exr", "Sky");
    }
    static LightDescription dome(const Double3 &rotation = {}) {
        LightDescription light = evenDome(rotation);
        light.image = "Sky";
        return light;
    }
    // The irradiance of the plane due to the whole image, divided by pi: a sum over sub-pixels.
    Vec3 expected(const Double3 &rotation, bool upperHalf = false) const {
        constexpr int kPoints = 16; // sub-pixels along each side of a pixel
        const Matrix turn = rotationMatrix(rotation);
        Vec3 sum;
        for (int y = 0; y < height_ * kPoints; ++y)
            for (int x = 0; x < width_ * kPoints; ++x) {
                const double fromTop = kPi * (y + 0.5) / (height_ * kPoints);
                const double heading = 2 * kPi * ((x + 0.5) / (width_ * kPoints) - 0.5);
                const Vec3 local{std::sin(fromTop) * std::sin(heading), std::cos(fromTop),
                                 std::sin(fromTop) * std::cos(heading)};
                const double cosine = dot(turn * local, kPlaneNormal);
                if (cosine <= 0 || (upperHalf && local.y < 0)) continue;
                const double solidAngle =
                    std::sin(fromTop) * (kPi / (height_ * kPoints)) * (2 * kPi / (width_ * kPoints));
                sum += cosine * solidAngle / kPi * colourAt(x / kPoints, y / kPoints);
            }
        return sum;
    }
    Vec3 colourAt(int x, int y) const {
        const float *pixel = values_.data() + 3 * (static_cast<std::ptrdiff_t>(y) * width_ + x);
        return {pixel[0], pixel[1], pixel[2]};
    }

    const TemporaryDirectory directory_;
    int width_ = 0, height_ = 0;
    std::vector<float> values_;
};

TEST_F(ImageDome, GivesTheSumOverItsPixels) {
    constexpr double kTolerance = 0.01; // relative, of 4096 samples
    std::vector<float> values;
    for (std::uint32_t i = 0; i < 16 * 8 * 3; ++i)
        values.push_back(static_cast<float>(scramble(i) % 1024) / 1024 * (i % 3 == 1 ? 2 : 1));
    load(16, 8, values);
    for (const Double3 &rotation : {Double3{0, 0, 0}, Double3{120, 0, 0}, Double3{40, -70, 20}}) {
        for (const bool upperHalf : {false, true}) {
            LightDescription light = dome(rotation);
            light.hemisphere = upperHalf;
            const Vec3 sum = expected(rotation, upperHalf);
            expectNear(litPlane(light).pixel(), sum, kTolerance * largest(sum),
                       "heading " + std::to_string(rotation[0]));
        }
    }
}

// All light comes from one pixel, so that a few samples of it give the exact sum.
TEST_F(ImageDome, FindsASmallSun) {
    constexpr int kWidth = 64, kHeight = 32, kSunX = 58, kSunY = 10;
    constexpr double kTolerance = 2e-3; // relative, of 16 samples
    std::vector<float> values(kWidth * kHeight * 3);
    for (std::size_t i = 0; i < 3; ++i) values[(kSunY * kWidth + kSunX) * 3 + i] = 1000.0f * static_cast<float>(i + 1);
    load(kWidth, kHeight, values);
    LightDescription light = dome({30, 0, 0});
    light.samples = 16;
    const Vec3 sum = expected(light.rotation);
    EXPECT_GT(sum.x, 1);
    expectNear(litPlane(light).pixel(), sum, kTolerance * largest(sum));
    light.colour = {0.5, 1, 0};
    light.intensity = 2;
    expectNear(litPlane(light).pixel(), Vec3{1, 2, 0} * sum, kTolerance * largest(sum));
    light.rotation = {210, 0, 0};
    EXPECT_EQ(litPlane(light).pixel(), Vec3{}) << "the sun is below the horizon of the plane";
}

// A sky of 1 with a sun of 10 000 in one of 512 pixels of the upper half.
TEST_F(ImageDome, HasLittleNoiseWithASun) {
    constexpr int kWidth = 32, kHeight = 32;
    constexpr double kTolerance = 0.04; // relative, of 64 samples for each of 64 pixels
    std::vector<float> values(kWidth * kHeight * 3, 1.0f);
    for (std::size_t i = 0; i < 3; ++i) values[8 * kWidth * 3 + i] = 10000;
    load(kWidth, kHeight, values);
    LightDescription light = dome();
    light.samples = 64;
    TestScene scene = litPlane(light);
    scene.job.width = scene.job.height = 8;
    const double sum = expected({}).x;
    const Frame frame = scene.render();
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            EXPECT_NEAR(static_cast<double>(frame.picture.pixel(x, y)[0]), sum, kTolerance * sum) << x << ", " << y;
}

TEST_F(ImageDome, UsesWideImagesAtALowerResolution) {
    constexpr double kTolerance = 0.02;
    load(4096, 2, std::vector<float>(std::size_t{4096} * 2 * 3, 0.5f));
    EXPECT_NEAR(litPlane(dome()).pixel().x, 0.5, kTolerance);
}

TEST_F(ImageDome, PixelsWithoutALightAreDark) {
    load(4, 2, std::vector<float>(24, 0.0f));
    EXPECT_EQ(litPlane(dome()).pixel(), Vec3{});
    ImageList::instance().clear();
    std::vector<float> values(24, -1.0f);
    values[3] = INFINITY;
    values[6] = NAN;
    load(4, 2, values);
    EXPECT_EQ(litPlane(dome()).pixel(), Vec3{});
}

TEST_F(ImageDome, AnAbsentImageIsDarkAndAnUnknownOneIsRefused) {
    EXPECT_THROW(litPlane(dome()).pixel(), InputError);
    ImageList::instance().noteAbsent("Sky");
    EXPECT_EQ(litPlane(dome()).pixel(), Vec3{});
}

TEST_F(ImageDome, IsMadeOnce) {
    load(4, 2, std::vector<float>(24, 1.0f));
    TestScene scene = litPlane(dome());
    const auto panorama = [&scene] { return scene.renderScene().data().lights[0].light.panorama(); };
    const auto first = panorama();
    scene.description.lights[0].intensity = 2;
    scene.update();
    EXPECT_EQ(panorama(), first);
    scene.description.lights[0].hemisphere = true;
    scene.update();
    EXPECT_NE(panorama(), first);
}

} // namespace
} // namespace velm::host::test
