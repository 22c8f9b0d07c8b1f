// Complete renders with the module's glossy nodes whose pixels can be calculated: a mirror in a known environment, the
// angle of refraction, and the energy that a glass sphere transmits.
#include "host/image/image.h"
#include "host/image/picture.h"

#include "tests/cli/command.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include <cmath>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <numbers>

namespace velm::host {
namespace {

using test::TemporaryDirectory;

constexpr double kPi = std::numbers::pi, kDegree = kPi / 180;

// Renders a scene on one thread and returns its picture.
std::unique_ptr<HostImage> rendered(const TemporaryDirectory &directory, const std::string &text) {
    const std::string file = directory / "result.exr";
    const test::Outcome outcome = test::velm(
        {"render", directory.write("scene.json", text), "-o", file, "--quiet", "--strict", "--threads", "1"});
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
    return readImage(file, "result");
}

// A picture of one pixel. The camera's field of view is so narrow that every ray is practically the central one.
constexpr const char *kOnePixel = R"("render": {"width": 1, "height": 1})";
std::string cameraAt(double x, double y, double z) {
    return fmt::format(
        R"("cameras": {{"Main": {{"position": [{}, {}, {}], "target": [0, 0, 0], "fieldOfView": 0.001}}}})", x, y, z);
}

// A large plane that emits the colour that a node computes.
std::string planeLitBy(const std::string &server, const std::string &settings) {
    return fmt::format(R"("surfaces": {{"Glass": {{"settings": {{"Luminosity": 1, "Diffuse": 0}},
        "nodes": {{"Node": {{"server": "{}", "settings": {{{}}}}}}}, "connections": ["Node.Color -> Glass.Color"]}}}},
        "objects": {{"Plane": {{"plane": {{"width": 100, "depth": 100}}, "surface": "Glass"}}}})",
                       server, settings);
}

constexpr int kColumns = 8, kRows = 4;

float componentOf(int x, int y, int component) {
    return static_cast<float>(1 + x + kColumns * y) / static_cast<float>(1 << component);
}

void writeEnvironment(const std::string &file) {
    Picture picture(kColumns, kRows);
    for (int y = 0; y < kRows; ++y)
        for (int x = 0; x < kColumns; ++x)
            for (int i = 0; i < 3; ++i) picture.pixel(x, y)[i] = componentOf(x, y, i);
    writePicture(picture, file);
}

struct MirrorCase {
    const char *name, *backdrop, *settings;
};
class Mirror : public testing::TestWithParam<MirrorCase> {};

// For every pixel of the environment, the camera is placed so that its mirrored view hits the centre of that pixel.
TEST_P(Mirror, ShowsTheExactPixelsOfTheEnvironment) {
    const TemporaryDirectory directory;
    writeEnvironment(directory / "map.exr");
    for (int y = 0; y < kRows; ++y)
        for (int x = 0; x < kColumns; ++x) {
            const double heading = ((x + 0.5) / kColumns - 0.5) * 2 * kPi, elevation = (0.5 - (y + 0.5) / kRows) * kPi;
            const double across = std::cos(elevation), up = std::sin(elevation);
            const std::string camera =
                cameraAt(-2 * across * std::sin(heading), 2 * up, -2 * across * std::cos(heading));
            const auto image =
                rendered(directory, fmt::format(R"({{{}, {}, "images": {{"Map": {{"file": "map.exr"}}}}, {} {}}})",
                                                kOnePixel, camera, GetParam().backdrop,
                                                planeLitBy("Velm Gaussian Reflections", GetParam().settings)));
            float colour[3];
            pixel(image.get(), 0, 0, colour);
            constexpr float kRelative = 1e-4f; // rays have float precision, and miss the centre slightly
            for (int i = 0; i < 3; ++i)
                EXPECT_NEAR(colour[i], componentOf(x, y, i), kRelative * componentOf(x, y, i)) << x << ", " << y;
        }
}

INSTANTIATE_TEST_SUITE_P(
    Modes, Mirror,
    testing::Values(MirrorCase{"SphericalMap", "", R"("Mode": "Spherical Map", "Image": "Map")"},
                    MirrorCase{"RaysAndBackdrop", R"("backdrop": {"kind": "image", "image": "Map"},)",
                               R"("Mode": "Ray Tracing + Backdrop")"},
                    MirrorCase{"RaysAndMap", "", R"("Mode": "Ray Tracing + Spherical Map", "Image": "Map")"},
                    MirrorCase{"Backdrop", R"("backdrop": {"kind": "image", "image": "Map"},)",
                               R"("Mode": "Backdrop Only")"}),
    [](const auto &one) { return one.param.name; });

// An environment whose red is the angle between straight up and the direction, in degrees.
constexpr int kSteps = 180;
void writeProtractor(const std::string &file) {
    Picture picture(1, kSteps);
    for (int y = 0; y < kSteps; ++y) picture.pixel(0, y)[0] = static_cast<float>(y) + 0.5f;
    writePicture(picture, file);
}

// Snell's law for a plane that is seen from above: sin(refracted) = sin(incident) / index, both measured from the
// normal.
TEST(Snell, GivesTheAngleOfRefraction) {
    const TemporaryDirectory directory;
    writeProtractor(directory / "map.exr");
    for (const double index : {1.0, 1.33, 1.5, 2.4})
        for (const double degrees : {10.0, 30.0, 45.0, 60.0, 80.0}) {
            const auto image = rendered(
                directory,
                fmt::format(R"({{{}, {}, "images": {{"Map": {{"file": "map.exr"}}}},
                    "backdrop": {{"kind": "image", "image": "Map"}}, {}}})",
                            kOnePixel, cameraAt(-2 * std::sin(degrees * kDegree), 2 * std::cos(degrees * kDegree), 0),
                            planeLitBy("Velm Gaussian Refractions", fmt::format("\"Refraction Index\": {}", index))));
            float colour[3];
            pixel(image.get(), 0, 0, colour);
            const double refracted = std::asin(std::sin(degrees * kDegree) / index) / kDegree;
            constexpr double kDegreesOff = 1e-3;
            EXPECT_NEAR(colour[0], 180 - refracted, kDegreesOff) << degrees << " degrees, index " << index;
        }
}

std::string sphereInWhite(double blurPercent, int recursion) {
    return fmt::format(R"({{"render": {{"width": 24, "height": 24, "recursionDepth": {}}},
        "cameras": {{"Main": {{"position": [0, 0, -5], "fieldOfView": 30}}}},
        "backdrop": {{"kind": "plain", "colour": [1, 1, 1]}},
        "surfaces": {{"Glass": {{"settings": {{"Luminosity": 1, "Diffuse": 0}},
            "nodes": {{"Spot": {{"server": "Spot Info"}},
                       "Index": {{"server": "Mix Scalar", "settings": {{"A": 1.5, "B": 1}}}},
                       "Node": {{"server": "Velm Gaussian Refractions", "settings": {{"Refraction Blur": {}}}}}}},
            "connections": ["Spot.Back Side -> Index.Mix", "Index.Out -> Node.IOR", "Node.Color -> Glass.Color"]}}}},
        "objects": {{"Ball": {{"sphere": {{"radius": 1}}, "surface": "Glass"}}}}}})",
                       recursion, blurPercent);
}

double meanOf(const HostImage &image, double &least) {
    double sum = 0;
    least = 1;
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x) {
            float colour[3];
            pixel(&image, x, y, colour);
            sum += colour[1];
            least = std::min(least, static_cast<double>(colour[1]));
        }
    return sum / (image.width * image.height);
}

// Clear glass absorbs nothing: in a white environment, every pixel is white.
TEST(ClearSphere, TransmitsAllLight) {
    const TemporaryDirectory directory;
    double least = 0;
    const auto image = rendered(directory, sphereInWhite(0, 8));
    EXPECT_NEAR(meanOf(*image, least), 1, 1e-6);
    EXPECT_NEAR(least, 1, 1e-6);
}

// In frosted glass, some rays are reflected inside until the recursion limit ends them. Less than 2 % of the light is
// lost that way.
TEST(FrostedSphere, TransmitsNearlyAllLight) {
    const TemporaryDirectory directory;
    double least = 0;
    const auto image = rendered(directory, sphereInWhite(10, 16));
    const double mean = meanOf(*image, least);
    EXPECT_LE(mean, 1 + 1e-6);
    EXPECT_GE(mean, 0.98);
}

} // namespace
} // namespace velm::host
