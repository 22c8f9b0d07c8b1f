// Pictures that are taken through a lens.
#include "tests/render/test_scene.h"

namespace velm::host::test {
namespace {

// A picture of a small luminous ball at a distance of 8 m in front of a black backdrop, with a field of view of 90
// degrees, a focal length of 18 mm and a lens of 0.36 m.
TestScene brightBall() {
    TestScene scene;
    scene.job.width = scene.job.height = 64;
    scene.job.samples = 64;
    scene.description.backdrop.colour = {0, 0, 0};
    scene.surface("Bright", {{"Luminosity", 1}});
    scene.object("Ball", SphereShape{.radius = 0.6, .segments = 48}, "Bright", {0, 0, 3});
    scene.description.cameras[0].fieldOfView = 90;
    scene.description.cameras[0].aperture = 0.05;
    return scene;
}

struct Spot {
    double sum = 0;    // of the light of all pixels
    double reach2 = 0; // the mean of the squared distance from the middle, weighted with the light, in pixels
    double middle = 0; // the light of a pixel in the middle
};

Spot spotOf(TestScene &scene) {
    const Picture picture = scene.render().picture;
    Spot spot{.middle = picture.pixel(32, 32)[0]};
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const double light = picture.pixel(x, y)[0];
            spot.sum += light;
            spot.reach2 += light * (std::pow(x + 0.5 - 32, 2) + std::pow(y + 0.5 - 32, 2));
        }
    }
    spot.reach2 /= spot.sum;
    return spot;
}

// The mean of the squared distance from the middle of an evenly lit disc is half the square of its radius, and that of
// two discs folded with each other is the sum of theirs.
TEST(Lens, BlursByTheCircleOfConfusion) {
    TestScene scene = brightBall();
    const double pixelsPerMetre = 64 / 0.036;
    const double focalLength = 0.018, lens = 0.36, depth = 8;
    for (const double focus : {8.0, 2.0, 1.0, 0.5}) {
        scene.description.cameras[0].focusDistance = focus;
        scene.update();
        const Spot spot = spotOf(scene);
        const double blur = lens * focalLength * (depth - focus) / (depth * focus) / 2 * pixelsPerMetre;
        const double image = 0.6 * focalLength / depth * pixelsPerMetre;
        EXPECT_NEAR(spot.reach2, (blur * blur + image * image) / 2, 0.08 * spot.reach2 + 0.2) << "focus " << focus;
        EXPECT_NEAR(spot.sum, kPi * image * image, 0.08 * spot.sum) << "the same light, focus " << focus;
    }
}

TEST(Lens, LeavesWhatIsInFocusSharp) {
    TestScene scene = brightBall();
    scene.description.cameras[0].focusDistance = 8;
    const Spot sharp = spotOf(scene);
    EXPECT_NEAR(sharp.middle, 1, 1e-6);
    scene.description.cameras[0].focusDistance = 1;
    scene.update();
    EXPECT_LT(spotOf(scene).middle, 0.4);
}

TEST(Lens, PicturesDoNotDependOnTheNumberOfWorkers) {
    TestScene scene = brightBall();
    scene.description.cameras[0].focusDistance = 2;
    scene.job.samples = 4;
    const Picture one = scene.render().picture;
    scene.job.threads = 3;
    EXPECT_TRUE(samePixels(one, scene.render().picture, {.left = 0, .top = 0, .right = 64, .bottom = 64}));
}

} // namespace
} // namespace velm::host::test
