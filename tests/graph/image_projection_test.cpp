// The node Image Projection: each projection against its closed form, with an image whose colours are its coordinates.
#include "tests/graph/builtin_fixture.h"

#include "host/image/image.h"
#include "host/image/picture.h"
#include "host/services/camera_view.h"
#include "host/services/uv_provider.h"

#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <numbers>

namespace velm::host::test {
namespace {

constexpr int kSize = 64;           // of the image, in pixels
constexpr double kTolerance = 1e-6; // single precision of the image's pixels
constexpr double kHalfPixel = 0.5 / kSize;

// Red is u, from the left edge, and green is v, from the lower edge.
class ImageProjectionTest : public BuiltinTest {
  protected:
    void SetUp() override {
        const std::string name = "velm_image_projection_" + std::to_string(::getpid()) + ".exr";
        file_ = (std::filesystem::temp_directory_path() / name).string();
        Picture picture(kSize, kSize);
        for (int y = 0; y < kSize; ++y)
            for (int x = 0; x < kSize; ++x) {
                const float pixel[4] = {(static_cast<float>(x) + 0.5F) / kSize,
                                        1 - (static_cast<float>(y) + 0.5F) / kSize, 0, 1};
                std::copy_n(pixel, 4, picture.pixel(x, y));
            }
        writePicture(picture, file_);
        ImageList::instance().load(file_, "Coordinates");
        std::copy_n(kUnturned, 9, sample.objectToWorld);
        sample.geometricNormal[2] = -1;
    }
    void TearDown() override {
        setUvProvider({});
        setCameraView({});
        ImageList::instance().clear();
        std::filesystem::remove(file_);
    }
    HostNode &project(Settings settings) {
        settings.emplace_back("Image", std::string("Coordinates"));
        return add("Image Projection", settings);
    }
    void expectAt(HostNode &node, const Double3 &position, double u, double v) {
        place(position[0], position[1], position[2]);
        const Double3 colour = triple(node, "Color");
        EXPECT_NEAR(colour[0], u, kTolerance);
        EXPECT_NEAR(colour[1], v, kTolerance);
    }
    void expectOff(HostNode &node, const Double3 &position) {
        place(position[0], position[1], position[2]);
        expectTriple(triple(node, "Color"), {0, 0, 0});
        EXPECT_EQ(scalar(node, "Alpha"), 0);
        EXPECT_EQ(scalar(node, "Luminance"), 0);
    }

    static constexpr double kUnturned[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

  private:
    std::string file_;
};

std::string text(const char *entry) { return entry; }

struct ProjectionRow {
    const char *projection, *axis;
    Double3 position;
    double u, v;
};

// The size is (2, 4, 5).
TEST_F(ImageProjectionTest, EachProjectionIsItsClosedForm) {
    const ProjectionRow kRows[] = {
        // The other two axes, in units of the size, from the middle.
        {"Planar", "X", {9, 0.1, 0.2}, 0.54, 0.525},
        {"Planar", "Y", {0.1, 9, 0.2}, 0.55, 0.54},
        {"Planar", "Z", {0.1, 0.2, 9}, 0.55, 0.55},
        // Around Y the middle of the image faces -Z, and its right half +X: it is not mirrored from outside.
        {"Cylindrical", "Y", {0, 0.4, -1}, 0.5, 0.6},
        {"Cylindrical", "Y", {1, 0.4, 0}, 0.75, 0.6},
        {"Cylindrical", "Y", {-3, -0.4, 0}, 0.25, 0.4},
        {"Cylindrical", "Y", {1, 0, -1}, 0.625, 0.5},
        {"Cylindrical", "X", {0.4, 1, 0}, 0.5, 0.7},
        {"Cylindrical", "X", {0.4, 0, -1}, 0.75, 0.7},
        {"Cylindrical", "X", {0.4, 0, 1}, 0.25, 0.7},
        {"Cylindrical", "Z", {0, 1, 0.5}, 0.5, 0.6},
        {"Cylindrical", "Z", {1, 0, 0.5}, 0.75, 0.6},
        {"Cylindrical", "Z", {-1, 0, 0.5}, 0.25, 0.6},
        // The size does not count. v is the elevation.
        {"Spherical", "Y", {1, 1, 0}, 0.75, 0.75},
        {"Spherical", "Y", {0, -2, -2}, 0.5, 0.25},
        {"Spherical", "X", {1, 1, 0}, 0.5, 0.75},
        {"Spherical", "Z", {1, 0, 1}, 0.75, 0.75},
        {"Spherical", "Z", {0, 0.5, -0.5}, 0.5, 0.25},
    };
    for (const ProjectionRow &row : kRows) {
        SCOPED_TRACE(testing::Message() << row.projection << ' ' << row.axis << ' '
                                        << testing::PrintToString(row.position));
        expectAt(project({{"Projection", text(row.projection)}, {"Axis", text(row.axis)}, {"Size", Double3{2, 4, 5}}}),
                 row.position, row.u, row.v);
    }
}

TEST_F(ImageProjectionTest, CubicIsPlanarAlongTheNormalsNearestAxis) {
    HostNode &node = project({{"Projection", text("Cubic")}, {"Size", Double3{1, 1, 1}}});
    const Double3 position{0.1, 0.2, 0.3};
    const auto face = [this](double x, double y, double z) {
        const double normal[3] = {x, y, z};
        std::copy_n(normal, 3, sample.geometricNormal);
    };
    face(0, 0, -1);
    expectAt(node, position, 0.6, 0.7);
    face(-0.9, 0.3, 0.3);
    expectAt(node, position, 0.8, 0.7);
    face(0.1, 0.7, -0.69);
    expectAt(node, position, 0.6, 0.8);
    // The object is turned: its X is the world's Z.
    const double turned[9] = {0, 0, -1, 0, 1, 0, 1, 0, 0};
    std::copy_n(turned, 9, sample.objectToWorld);
    face(0, 0, -1);
    expectAt(node, position, 0.8, 0.7);
    HostNode &world = project({{"Projection", text("Cubic")}, {"Coordinates", text("World")}});
    expectAt(world, position, 0.6, 0.7);
}

TEST_F(ImageProjectionTest, FrontIsThroughTheCamera) {
    HostNode &node = project({{"Projection", text("Front")}});
    CameraView view;
    view.tanHalfWidth = 0.5;
    view.tanHalfHeight = 0.25;
    setCameraView(view);
    expectAt(node, {0, 0, 2}, 0.5, 0.5);
    expectAt(node, {0.5, 0.25, 2}, 0.75, 0.75); // half of the way to the right edge, and to the upper one
}

TEST_F(ImageProjectionTest, UvIsByTheNamedMapAndNothingBeyondIt) {
    HostNode &node = project({{"Projection", text("UV")}, {"UV Map", text("Label")}});
    setUvProvider({[](const ShadingSample *given, const char *map, double *u, double *v) {
        *u = map && std::string_view(map) == "Label" ? 0.25 : 0;
        *v = 0.75;
        return given->polygonNumber == 0;
    }});
    expectAt(node, {0, 0, 0}, 0.25, 0.75);
    EXPECT_EQ(scalar(node, "Alpha"), 1);
    sample.polygonNumber = 1;
    expectOff(node, {0, 0, 0});
}

TEST_F(ImageProjectionTest, CenterMovesAndAnglesTurnTheImage) {
    expectAt(project({{"Center", Double3{1, 2, 3}}}), {1.1, 2.2, 3}, 0.6, 0.7);
    expectAt(project({{"Heading", 90.0}}), {9, 0.1, -0.25}, 0.75, 0.6);
    expectAt(project({{"Pitch", 90.0}}), {0.1, 9, 0.2}, 0.6, 0.7);
    expectAt(project({{"Bank", 90.0}}), {0.1, 0.2, 9}, 0.7, 0.4);
    // Bank first, then pitch, then heading; to the texture's axes, the other way round.
    expectAt(project({{"Heading", 90.0}, {"Pitch", 90.0}}), {0.1, 0.2, -0.3}, 0.8, 0.6);
    expectAt(project({{"Pitch", 90.0}, {"Bank", 90.0}}), {0.1, 9, 0.2}, 0.7, 0.4);
}

TEST_F(ImageProjectionTest, WorldCoordinatesDoNotMoveWithTheObject) {
    HostNode &object = project({}), &world = project({{"Coordinates", text("World")}});
    expectAt(object, {0.1, 0.2, 0}, 0.6, 0.7);
    sample.position[0] = 0.3;
    EXPECT_NEAR(triple(object, "Color")[0], 0.6, kTolerance);
    EXPECT_NEAR(triple(world, "Color")[0], 0.8, kTolerance);
}

TEST_F(ImageProjectionTest, WrapsBeyondItsEdges) {
    const struct {
        const char *wrap;
        double beyondRight, beyondLeft, farRight; // at 1.2, -0.2 and 2.2
    } kRows[] = {
        {"Repeat", 0.2, 0.8, 0.2}, {"Mirror", 0.8, 0.2, 0.2}, {"Edge", 1 - kHalfPixel, kHalfPixel, 1 - kHalfPixel}};
    for (const auto &row : kRows) {
        SCOPED_TRACE(row.wrap);
        HostNode &across = project({{"Wrap U", text(row.wrap)}}), &up = project({{"Wrap V", text(row.wrap)}});
        expectAt(across, {0.7, 0, 0}, row.beyondRight, 0.5);
        expectAt(across, {-0.7, 0, 0}, row.beyondLeft, 0.5);
        expectAt(across, {1.7, 0, 0}, row.farRight, 0.5);
        expectAt(up, {0, 0.7, 0}, 0.5, row.beyondRight);
        expectAt(up, {0, -0.7, 0}, 0.5, row.beyondLeft);
        EXPECT_EQ(scalar(up, "Alpha"), 1);
    }
    expectOff(project({{"Wrap U", text("Reset")}}), {0.7, 0, 0});
    expectOff(project({{"Wrap V", text("Reset")}}), {0, -0.7, 0});
    expectAt(project({{"Wrap U", text("Reset")}, {"Wrap V", text("Reset")}}), {0.3, -0.3, 0}, 0.8, 0.2);
    // The edges of an image that does not repeat do not blend with each other.
    expectAt(project({{"Wrap U", text("Reset")}}), {-0.5, 0, 0}, kHalfPixel, 0.5);
}

TEST_F(ImageProjectionTest, RepeatsAroundAndFromPoleToPole) {
    const Settings twice{
        {"Projection", text("Spherical")}, {"Axis", text("Y")}, {"Repeats U", 2.0}, {"Repeats V", 2.0}};
    expectAt(project(twice), {std::sin(0.5), 0.1, -std::cos(0.5)}, 2 * 0.5 / (2 * std::numbers::pi),
             2 * std::atan(0.1) / std::numbers::pi);
    // An image that goes round once does so without a gap, also where it does not repeat.
    HostNode &once = project({{"Projection", text("Cylindrical")}, {"Axis", text("Y")}, {"Wrap U", text("Reset")}});
    for (const double angle : {0.1, 1.5, 3.1, -3.1, -1.5, -0.1}) {
        place(std::sin(angle), 0, std::cos(angle));
        EXPECT_EQ(scalar(once, "Alpha"), 1) << angle;
    }
}

TEST_F(ImageProjectionTest, FalloffTakesAlphaAwayWithDistance) {
    const Settings about{{"Falloff", Double3{0.5, 0.25, 0}}};
    const auto alpha = [&](const char *type, const Double3 &position) {
        Settings settings = about;
        settings.emplace_back("Falloff Type", text(type));
        place(position[0], position[1], position[2]);
        return scalar(project(settings), "Alpha");
    };
    EXPECT_NEAR(alpha("Cubic", {0.4, -0.6, 9}), 0.8, kTolerance);
    EXPECT_NEAR(alpha("Spherical", {0.4, -0.6, 9}), 0.75, kTolerance);
    EXPECT_NEAR(alpha("Linear X", {0.4, 9, 9}), 0.8, kTolerance);
    EXPECT_NEAR(alpha("Linear Y", {9, 0.4, 9}), 0.9, kTolerance);
    EXPECT_EQ(alpha("Linear X", {-0.4, 0, 0}), 1);
    EXPECT_EQ(alpha("Linear Z", {9, 9, 9}), 1);
    EXPECT_EQ(alpha("Cubic", {9, 0, 0}), 0);
}

TEST_F(ImageProjectionTest, TheNegativeTurnsColoursAround) {
    HostNode &node = project({{"Negative", text("On")}, {"Wrap U", text("Reset")}});
    place(-0.25, 0.25, 0);
    expectTriple(triple(node, "Color"), {0.75, 0.25, 1});
    EXPECT_NEAR(scalar(node, "Luminance"), 1 - (0.299 * 0.25 + 0.587 * 0.75), kTolerance);
    expectOff(node, {0.7, 0, 0}); // nothing beyond the image
}

TEST_F(ImageProjectionTest, PixelsAreBlendedOrPlain) {
    HostNode &plain = project({{"Pixel Blending", text("Off")}});
    expectAt(plain, {0.3 * kHalfPixel, 0.3 * kHalfPixel, 0}, 0.5 + kHalfPixel, 0.5 + kHalfPixel);
    expectAt(project({}), {0.3 * kHalfPixel, 0, 0}, 0.5 + 0.3 * kHalfPixel, 0.5);
}

TEST_F(ImageProjectionTest, AntialiasingBlursByTheSizeOfTheSample) {
    place(-0.25, 0.25, 0);
    sample.spotSize = 3; // wider than the image, which is one metre
    expectTriple(triple(project({}), "Color"), {0.5, 0.5, 0});
    expectTriple(triple(project({{"Antialiasing", 0.0}}), "Color"), {0.25, 0.75, 0});
    expectTriple(triple(project({{"Size", Double3{1000, 1000, 1}}}), "Color"), {0.49975, 0.50025, 0});
}

TEST_F(ImageProjectionTest, WithoutAnImageOrASizeThereIsNothing) {
    expectOff(add("Image Projection"), {0, 0, 0});
    expectOff(project({{"Size", Double3{0, 1, 1}}}), {0.1, 0, 0});
    expectOff(project({}), {NAN, 0, 0});
}

// ---- Height ----

TEST_F(ImageProjectionTest, TheHeightIsAFractionOfTheImagesWidth) {
    constexpr double kOfWidth = 0.02;
    const auto expectWidth = [&](HostNode &node, double width) {
        const double luminance = scalar(node, "Luminance");
        EXPECT_GT(luminance, 0);
        EXPECT_NEAR(scalar(node, "Height"), kOfWidth * width * luminance, kTolerance);
    };
    place(0.5, 0.25, 0);
    expectWidth(project({{"Size", Double3{4, 2, 1}}}), 4);
    place(0, 0.25, -3);
    const Settings around{{"Projection", std::string("Cylindrical")}, {"Axis", std::string("Y")}, {"Repeats U", 2.0}};
    expectWidth(project(around), 2 * std::numbers::pi * 3 / 2);
    EXPECT_EQ(scalar(project({{"Wrap U", std::string("Reset")}, {"Center", Double3{9, 0, 0}}}), "Height"), 0);
}

TEST_F(ImageProjectionTest, TheWidthOfAUvMapIsThatOnTheTriangle) {
    // A right triangle with legs of 6 m and 3 m; its legs on the map are 0.5 and 0.25, so that the map is 12 m wide.
    sample.vertexPositions[1][0] = 6;
    sample.vertexPositions[2][1] = 3;
    std::fill_n(sample.vertexWeights, 3, 1.0F / 3);
    setUvProvider({.lookup = [](const ShadingSample *at, const char *, double *u, double *v) {
        *u = 0.25 + 0.5 * static_cast<double>(at->vertexWeights[1]);
        *v = 0.25 + 0.25 * static_cast<double>(at->vertexWeights[2]);
        return true;
    }});
    HostNode &node = project({{"Projection", std::string("UV")}});
    EXPECT_NEAR(scalar(node, "Height"), 0.02 * 12 * scalar(node, "Luminance"), kTolerance);
}

} // namespace
} // namespace velm::host::test
