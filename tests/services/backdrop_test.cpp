// Backdrops by direction, and the service that describes them to nodes.
#include "host/base/error.h"
#include "host/image/image.h"
#include "host/services/backdrop.h"
#include "tests/image/image_files.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace velm::host::test {
namespace {

constexpr double kTolerance = 1e-9;
using Kind = BackdropDescription::Kind;

// A description with some members set.
template <typename Edit>
BackdropDescription describe(Kind kind, Edit edit) {
    BackdropDescription description;
    description.kind = kind;
    edit(description);
    return description;
}

Double3 seen(const Backdrop &backdrop, double x, double y, double z) {
    const double direction[3] = {x, y, z};
    Double3 colour;
    backdrop.evaluate(direction, colour.data());
    return colour;
}

void expectNear(const Double3 &found, const Double3 &expected, const char *what, double tolerance = kTolerance) {
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(found[i], expected[i], tolerance) << what << ", component " << i;
}

TEST(Backdrop, PlainIsTheSameEverywhere) {
    EXPECT_EQ(seen(Backdrop(), 0, 1, 0), (Double3{0, 0, 0}));
    const Backdrop backdrop(describe(Kind::plain, [](BackdropDescription &each) { each.colour = {0.1, 0.2, 0.3}; }));
    EXPECT_EQ(seen(backdrop, 0, 1, 0), (Double3{0.1, 0.2, 0.3}));
    EXPECT_EQ(seen(backdrop, 1, -2, 3), (Double3{0.1, 0.2, 0.3}));
}

TEST(Backdrop, GradientDependsOnTheElevation) {
    const Backdrop backdrop(describe(Kind::gradient, [](BackdropDescription &each) {
        each.zenith = {0, 0, 0};
        each.sky = {1, 0.5, 2};
        each.ground = {4, 4, 4};
        each.nadir = {0, 8, 0};
        each.skySqueeze = 2;
        each.groundSqueeze = 1;
    }));
    expectNear(seen(backdrop, 0, 1, 0), {0, 0, 0}, "zenith");
    expectNear(seen(backdrop, 0, 0, 1), {1, 0.5, 2}, "horizon");
    expectNear(seen(backdrop, -3, 0, 0), {1, 0.5, 2}, "horizon to the left");
    expectNear(seen(backdrop, 0, 1, 1), {0.25, 0.125, 0.5}, "half up, squeezed by 2");
    expectNear(seen(backdrop, 1, -1, 0), {2, 6, 2}, "half down, even");
    expectNear(seen(backdrop, 0, -1, 0), {0, 8, 0}, "nadir");
    expectNear(seen(backdrop, 0, -1e-12, 1), {4, 4, 4}, "just under the horizon", 1e-6);
}

TEST(Backdrop, SqueezesArePowers) {
    // From black straight up to white at the horizon, the colour is the fraction. At 30 degrees, it is two thirds.
    for (const double squeeze : {0.25, 1.0, 1.5, 2.0, 3.0, 6.0, 7.0, 15.0, 16.0, 16.5, 17.0, 40.0}) {
        const Backdrop backdrop(describe(Kind::gradient, [squeeze](BackdropDescription &each) {
            each.zenith = {0, 0, 0};
            each.sky = {1, 1, 1};
            each.skySqueeze = squeeze;
        }));
        const double fraction = std::pow(2.0 / 3.0, squeeze);
        const std::string what = "squeeze " + std::to_string(squeeze);
        expectNear(seen(backdrop, 0, 0.5, std::sqrt(0.75)), {fraction, fraction, fraction}, what.c_str(), 1e-14);
    }
}

TEST(Backdrop, TheLengthOfADirectionDoesNotMatter) {
    const Backdrop backdrop(describe(Kind::gradient, [](BackdropDescription &each) { each.skySqueeze = 1.5; }));
    const Double3 one = seen(backdrop, 0.3, 0.4, -0.5);
    for (const double length : {1e-300, 1e-170, 1e-140, 1e-6, 1e6, 1e139, 1e170, 1e300})
        expectNear(seen(backdrop, 0.3 * length, 0.4 * length, -0.5 * length), one, "of another length", 1e-14);
}

TEST(Backdrop, InvalidDirectionsCountAsAhead) {
    const Backdrop backdrop(describe(Kind::gradient, [](BackdropDescription &) {}));
    const Double3 ahead = seen(backdrop, 0, 0, 1);
    EXPECT_EQ(seen(backdrop, 0, 0, 0), ahead);
    EXPECT_EQ(seen(backdrop, NAN, 0, 0), ahead);
    EXPECT_EQ(seen(backdrop, 0, INFINITY, 0), ahead);
}

class ImageBackdrop : public testing::Test {
  protected:
    void SetUp() override {
        ImageList::instance().clear();
        // Eight columns and four rows; red is the column, green the row.
        std::vector<float> values;
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 8; ++x) values.insert(values.end(), {static_cast<float>(x), static_cast<float>(y), 1});
        ASSERT_TRUE(writeImageFile(directory / "map.exr", 8, 4, 3, values));
        ImageList::instance().load(directory / "map.exr", "map");
    }
    void TearDown() override { ImageList::instance().clear(); }

    const TemporaryDirectory directory;
};

TEST_F(ImageBackdrop, SurroundsTheScene) {
    const Backdrop backdrop(describe(Kind::image, [](BackdropDescription &each) { each.image = "map"; }));
    expectNear(seen(backdrop, 0, 0, 1), {3.5, 1.5, 1}, "ahead");
    expectNear(seen(backdrop, 1, 0, 0), {5.5, 1.5, 1}, "right");
    expectNear(seen(backdrop, 0, 1, 0), {3.5, 0, 1}, "zenith: the top row");
    expectNear(seen(backdrop, 0, -1, 0), {3.5, 3, 1}, "nadir: the bottom row");
    expectNear(seen(backdrop, 0, 0, -1), {3.5, 1.5, 1}, "behind: the mean of the last and first columns");
    // Each side of the seam is half a pixel from the centres of the edge columns.
    expectNear(seen(backdrop, 1e-9, 0, -1), {3.5, 1.5, 1}, "right of the seam", 1e-6);
    expectNear(seen(backdrop, -1e-9, 0, -1), {3.5, 1.5, 1}, "left of the seam", 1e-6);
}

TEST_F(ImageBackdrop, HasSeamAngleAndBrightness) {
    const Backdrop backdrop(describe(Kind::image, [](BackdropDescription &each) {
        each.image = "map";
        each.seamAngle = 90;
        each.brightness = 2;
    }));
    expectNear(seen(backdrop, 1, 0, 0), {7, 3, 2}, "right, where ahead was");
    expectNear(seen(backdrop, 0, 0, 1), {3, 3, 2}, "ahead");
}

TEST_F(ImageBackdrop, MissingImageIsAnErrorWithItsLocation) {
    try {
        const Backdrop backdrop(describe(Kind::image, [](BackdropDescription &each) {
            each.image = "mop";
            each.location = {.file = "scene.json", .line = 7};
        }));
        ADD_FAILURE();
    } catch (const InputError &error) {
        const std::string message = error.what();
        EXPECT_EQ(message.rfind("scene.json:7", 0), 0u) << message;
        EXPECT_NE(message.find("\"mop\""), std::string::npos) << message;
        EXPECT_NE(message.find("\"map\""), std::string::npos) << message;
    }
}

TEST_F(ImageBackdrop, AnImageKnownToBeAbsentIsBlack) {
    ImageList::instance().noteAbsent("Forest");
    const Backdrop backdrop(describe(Kind::image, [](BackdropDescription &each) { each.image = "Forest"; }));
    expectNear(seen(backdrop, 0.5, 0.2, -1), {0, 0, 0}, "without its image");
    ImageList::instance().clear();
    EXPECT_FALSE(ImageList::instance().isAbsent("Forest"));
}

TEST(Backdrop, SqueezeHasToBePositive) {
    EXPECT_THROW(Backdrop(describe(Kind::plain, [](BackdropDescription &each) { each.skySqueeze = 0; })), InputError);
    EXPECT_THROW(Backdrop(describe(Kind::plain, [](BackdropDescription &each) { each.groundSqueeze = -1; })),
                 InputError);
    EXPECT_THROW(Backdrop(describe(Kind::plain, [](BackdropDescription &each) { each.groundSqueeze = NAN; })),
                 InputError);
}

TEST(BackdropService, DescribesTheBackdropThatIsSet) {
    const HostBackdropInfo *info = backdropInfo();
    const Backdrop backdrop(describe(Kind::gradient, [](BackdropDescription &each) {
        each.skySqueeze = 3;
        each.groundSqueeze = 4;
    }));
    setBackdrop(&backdrop);
    const double up[3] = {0, 1, 0};
    Double3 colour, zenith, sky, ground, nadir;
    info->backdrop(1.5, up, colour.data());
    EXPECT_EQ(colour, backdrop.description().zenith);
    EXPECT_EQ(info->type(0), Backdrop::kGradient);
    info->colours(0, zenith.data(), sky.data(), ground.data(), nadir.data());
    EXPECT_EQ(zenith, backdrop.description().zenith);
    EXPECT_EQ(sky, backdrop.description().sky);
    EXPECT_EQ(ground, backdrop.description().ground);
    EXPECT_EQ(nadir, backdrop.description().nadir);
    double skySqueeze, groundSqueeze;
    info->squeeze(0, &skySqueeze, &groundSqueeze);
    EXPECT_EQ(skySqueeze, 3);
    EXPECT_EQ(groundSqueeze, 4);

    setBackdrop(nullptr);
    info->backdrop(0, up, colour.data());
    EXPECT_EQ(colour, (Double3{0, 0, 0}));
    EXPECT_EQ(info->type(0), Backdrop::kPlain);
}

} // namespace
} // namespace velm::host::test
