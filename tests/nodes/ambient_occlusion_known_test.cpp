// Ambient Occlusion in scenes with known results, and on all render threads at once.
#include "random/random.h"
#include "tests/nodes/occlusion_fixture.h"

#include <atomic>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <thread>

namespace velm::plugin {
namespace {

constexpr double kRightAngle = std::numbers::pi / 2;
constexpr int kRays = 40000;
// Four standard errors of the mean of values between 0 and 1, whose standard deviation is at most 1/2.
const double kBound = 4 * 0.5 / std::sqrt(kRays);

class KnownOcclusion : public OcclusionNode {
  protected:
    KnownOcclusion() {
        node.set(kSamples, kRays);
        node.set(kRanged, 0);
        init_genrand(2024);
    }
    // The fraction of the cone about the shading normal that is blocked.
    double blocked() {
        scene.rays.clear();
        return 1 - scalar();
    }
};

double dot(const double *a, const double *b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

// An infinite wall blocks every direction that leads towards it. If it is perpendicular to the surface, this is half of
// any cone about the normal.
TEST_F(KnownOcclusion, AnUprightWallBlocksHalf) {
    struct Row {
        double normal[3], towardsWall[3];
    };
    const Row rows[] = {
        {.normal = {0, 1, 0}, .towardsWall = {1, 0, 0}},          {.normal = {0, 1, 0}, .towardsWall = {0, 0, -1}},
        {.normal = {1, 0, 0}, .towardsWall = {0, 1, 0}},          {.normal = {0, 0, -1}, .towardsWall = {0, -1, 0}},
        {.normal = {0.6, 0.8, 0}, .towardsWall = {-0.8, 0.6, 0}}, {.normal = {0.6, 0.8, 0}, .towardsWall = {0, 0, 1}},
    };
    for (const Row &row : rows) {
        setNormal(row.normal[0], row.normal[1], row.normal[2]);
        scene.distance = [&row](const double *, const double *direction) {
            const double approach = dot(direction, row.towardsWall);
            return approach > 0 ? 2 / approach : HOST_RAY_MISS;
        };
        for (const double cone : {0.3, 1.0, kRightAngle}) {
            node.set("Cone Angle", cone);
            EXPECT_NEAR(blocked(), 0.5, kBound) << "cone " << cone;
        }
    }
}

// A ceiling that covers the directions up to the angle beta from the normal. Directions are uniform in the angle, so it
// blocks the fraction beta / (cone angle). For a hemisphere, directions weighted by the cosine would give sin(beta)
// squared, and directions uniform over the sphere 1 - cos(beta).
TEST_F(KnownOcclusion, ARoundCeilingBlocksItsShareOfTheAngle) {
    const double height = 3;
    for (const double beta : {0.2, std::numbers::pi / 4, 1.2})
        for (const double cone : {1.3, kRightAngle}) {
            node.set("Cone Angle", cone);
            scene.distance = [beta, height](const double *, const double *direction) {
                const bool within = direction[1] > 0 && std::acos(std::min(1.0, direction[1])) < beta;
                return within ? height / direction[1] : HOST_RAY_MISS;
            };
            EXPECT_NEAR(blocked(), beta / cone, kBound) << "beta " << beta << ", cone " << cone;
        }
}

// An infinite ceiling at the height h, in ranged mode: a ray at theta from the normal hits at h / cos(theta) and has
// the weight 1 - h / (max cos(theta)), up to the angle where this is 0. The expected result is the mean over the angle.
TEST_F(KnownOcclusion, AnEndlessCeilingInRangeBlocksItsIntegral) {
    node.set(kRanged, 1);
    for (const double height : {0.5, 2.0, 4.5})
        for (const double cone : {0.4, kRightAngle}) {
            const double max = 5, reach = std::min(cone, std::acos(height / max));
            const double expected = (reach - height / max * std::asinh(std::tan(reach))) / cone;
            node.set("Cone Angle", cone);
            scene.distance = [height](const double *, const double *direction) {
                return direction[1] > 0 ? height / direction[1] : HOST_RAY_MISS;
            };
            EXPECT_NEAR(blocked(), expected, kBound) << "height " << height << ", cone " << cone;
        }
}

TEST_F(KnownOcclusion, PolarCountsTheSameWall) {
    node.set(kMode, kPolar);
    node.set(kPolar1, 101);
    node.set(kPolar2, 100);
    scene.distance = [](const double *, const double *direction) { return direction[0] > 1e-9 ? 1.0 : HOST_RAY_MISS; };
    EXPECT_NEAR(blocked(), 0.5, 4 * 0.5 / std::sqrt(10000)) << "but for the axis, which runs along it";
}

TEST_F(KnownOcclusion, OpenAndClosed) {
    EXPECT_EQ(scalar(), 1);
    hitEverythingAt(0.1);
    EXPECT_EQ(scalar(), 0);
}

// If all colours are white, the result is white: the weights add up to 1.
TEST_F(KnownOcclusion, AWhiteWorldStaysExactlyWhite) {
    node.set(kSamples, 500);
    node.set("Occ Color", 1.0, 1.0, 1.0);
    int sent = 0;
    // Multiples of 1/8 of the range, so that every weight is exact.
    scene.distance = [&](const double *, const double *) { return sent++ % 10 - 1.0; };
    node.set("Max", 8.0);
    scene.colour = [](const double *, double *colour) { colour[0] = colour[1] = colour[2] = 1; };
    host.backdrop = [](double, const double *, double *colour) { colour[0] = colour[1] = colour[2] = 1; };
    for (const int mode : {kRandom, kPolar})
        for (const int ranged : {0, 1})
            for (const int source : {kCustom, kBackdropColour, kTraced}) {
                if (source == kTraced && !ranged) continue; // then the surface is black, on purpose
                node.set(kMode, mode);
                node.set(kRanged, ranged);
                node.set(kSurfaceMode, source);
                node.set(kBackgroundMode, source);
                node.set(kOcclusionMode, source);
                EXPECT_EQ(colour(), (Colour{1, 1, 1})) << mode << ranged << source;
            }
}

// ---- Several threads ----

class ThreadedAmbientOcclusion : public KnownOcclusion {};

TEST_F(ThreadedAmbientOcclusion, EveryThreadGetsASoundAnswer) {
    node.set(kSamples, 64);
    sample.rayCast = [](const double *, const double *direction) { return direction[0] > 0 ? 1.0 : HOST_RAY_MISS; };
    std::atomic<int> unsound = 0;
    std::vector<std::thread> threads;
    HostOutput &scalarOutput = node.output("Scalar"), &colourOutput = node.output("Color");
    for (int index = 0; index < kMaxThreads; ++index)
        threads.emplace_back([&, index] {
            ShadingSample own = sample;
            own.threadIndex = index;
            for (int i = 0; i < 200; ++i) {
                HostNodeValue openness = {.asked = &scalarOutput}, colour = {.asked = &colourOutput};
                node.handler.evaluate(node.instance, &own, &scalarOutput, &openness);
                node.handler.evaluate(node.instance, &own, &colourOutput, &colour);
                for (const double value : {openness.numbers[0], colour.numbers[0], colour.numbers[2]})
                    if (!(value >= 0 && value <= 1 && std::fmod(value * 64, 1.0) == 0)) ++unsound;
            }
        });
    for (std::thread &thread : threads) thread.join();
    EXPECT_EQ(unsound, 0) << "each answer is a whole number of the rays";
}

} // namespace
} // namespace velm::plugin
