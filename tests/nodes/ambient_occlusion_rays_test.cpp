// The rays of Ambient Occlusion: their number, origins and directions, and the order of draws from the random stream.
#include "random/random.h"
#include "tests/nodes/occlusion_fixture.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <random>

namespace velm::plugin {
namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kTwentyDegrees = 0.3490658503988659, kRightAngle = 1.5707963267948966;

// A reference stream, in the state after the creation of the node.
class Draws {
  public:
    double next() { return static_cast<double>(random_()) * (1.0 / 4294967295.0); }

  private:
    std::mt19937 random_{3};
};

// The direction at theta from an axis and phi about it, step by step: a direction in a cone about +X, rotated by the
// pitch of the axis and then by its heading.
Colour inCone(double theta, double phi, const double axis[3]) {
    const double heading = std::atan2(axis[2], axis[0]);
    const double pitch = std::atan2(axis[1], std::sqrt(axis[0] * axis[0] + axis[2] * axis[2]));
    Colour v = {std::cos(theta), std::sin(theta) * std::sin(phi), std::sin(theta) * std::cos(phi)};
    const double up = std::atan2(v[1], v[0]) + pitch, inXy = std::hypot(v[0], v[1]);
    v[0] = inXy * std::cos(up);
    v[1] = inXy * std::sin(up);
    const double round = std::atan2(v[2], v[0]) + heading, inXz = std::hypot(v[0], v[2]);
    v[0] = inXz * std::cos(round);
    v[2] = inXz * std::sin(round);
    return v;
}

Colour directionOf(const SentRay &ray) { return {ray.direction[0], ray.direction[1], ray.direction[2]}; }

double angleBetween(const double a[3], const double b[3]) {
    double dot = 0, aa = 0, bb = 0;
    for (int i = 0; i < 3; ++i) dot += a[i] * b[i], aa += a[i] * a[i], bb += b[i] * b[i];
    return std::acos(std::clamp(dot / std::sqrt(aa * bb), -1.0, 1.0));
}

constexpr double kNormals[][3] = {{1, 0, 0},  {-1, 0, 0},       {0, 1, 0},          {0, -1, 0},         {0, 0, 1},
                                  {0, 0, -1}, {0.6, 0.0, -0.8}, {0.48, -0.6, 0.64}, {-0.48, 0.8, -0.36}};

class OcclusionRays : public OcclusionNode {
  protected:
    // Expects the rays of one evaluation of "Scalar" at the start of the stream.
    void expectRandom(int count, double cone, const double axis[3]) {
        init_genrand(3);
        const std::vector<SentRay> rays = raysOfScalar();
        ASSERT_EQ(rays.size(), static_cast<size_t>(count));
        Draws draws;
        for (const SentRay &ray : rays) {
            const double r1 = draws.next(), r2 = draws.next();
            expectNear(directionOf(ray), inCone(r2 * cone, r1 * 2 * kPi, axis));
        }
    }
    void expectPolar(int rings, int perRing, double cone, double jitter, const double axis[3]) {
        init_genrand(3);
        const std::vector<SentRay> rays = raysOfScalar();
        ASSERT_EQ(rays.size(), static_cast<size_t>(1 + (rings - 1) * perRing));
        EXPECT_EQ(directionOf(rays[0]), (Colour{axis[0], axis[1], axis[2]})) << "as it was given";
        Draws draws;
        size_t next = 1;
        for (int ring = 1; ring < rings; ++ring)
            for (int i = 0; i < perRing; ++i) {
                const double azimuth = 2 * kPi / perRing * i - jitter + 2 * jitter * draws.next();
                const double elevation = cone / (rings - 1) * ring - jitter * draws.next();
                expectNear(directionOf(rays[next++]), inCone(elevation, azimuth, axis));
            }
    }
};

// ---- Random ----

TEST_F(OcclusionRays, RandomSendsTwentySevenIntoTheHemisphere) {
    expectRandom(27, kRightAngle, sample.shadingNormal);
    for (const SentRay &ray : scene.rays) EXPECT_FALSE(ray.traced);
}

TEST_F(OcclusionRays, RandomGoesOnInTheStreamFromSampleToSample) {
    node.set(kSamples, 5);
    init_genrand(3);
    Draws draws;
    for (int i = 0; i < 4; ++i)
        for (const SentRay &ray : raysOfScalar()) {
            const double r1 = draws.next(), r2 = draws.next();
            expectNear(directionOf(ray), inCone(r2 * kRightAngle, r1 * 2 * kPi, sample.shadingNormal));
        }
}

TEST_F(OcclusionRays, RandomSendsAtLeastOne) {
    struct Row {
        int samples;
        size_t rays;
    };
    for (const Row row : {Row{0, 1}, Row{-7, 1}, Row{1, 1}, Row{2, 2}, Row{100, 100}}) {
        node.connect("Samples", row.samples);
        EXPECT_EQ(raysOfScalar().size(), row.rays) << "connected " << row.samples;
        node.disconnect("Samples");
        node.set(kSamples, row.samples);
        EXPECT_EQ(raysOfScalar().size(), row.rays) << "set to " << row.samples;
    }
}

TEST_F(OcclusionRays, RandomKeepsWithinItsCone) {
    node.set("Cone Angle", 0.4);
    for (const auto &normal : kNormals) {
        setNormal(normal[0], normal[1], normal[2]);
        expectRandom(27, 0.4, normal);
        double widest = 0;
        for (const SentRay &ray : scene.rays) widest = std::max(widest, angleBetween(ray.direction, normal));
        EXPECT_LE(widest, 0.4 + 1e-7);
        EXPECT_GT(widest, 0.3) << "and fills it";
    }
}

TEST_F(OcclusionRays, ANarrowConeIsTheAxisOfUnitLength) {
    node.connect("Cone Angle", 0.0);
    for (const auto &normal : kNormals) {
        setNormal(3 * normal[0], 3 * normal[1], 3 * normal[2]);
        for (const SentRay &ray : raysOfScalar())
            expectNear(directionOf(ray), {normal[0], normal[1], normal[2]}, 1e-15);
    }
}

TEST_F(OcclusionRays, RandomDirectionsAreOfUnitLength) {
    for (const SentRay &ray : raysOfScalar())
        EXPECT_NEAR(std::hypot(ray.direction[0], ray.direction[1], ray.direction[2]), 1, 1e-14);
}

// ---- Polar ----

TEST_F(OcclusionRays, PolarSendsTheAxisAndItsRings) {
    node.set(kMode, kPolar);
    expectPolar(3, 9, kRightAngle, kTwentyDegrees, sample.shadingNormal);
    EXPECT_EQ(scene.rays.size(), 19u);
    for (const auto &normal : kNormals) {
        setNormal(normal[0], normal[1], normal[2]);
        expectPolar(3, 9, kRightAngle, kTwentyDegrees, normal);
    }
}

TEST_F(OcclusionRays, PolarTakesTwoDrawsForEachRayOfARing) {
    node.set(kMode, kPolar);
    init_genrand(3);
    raysOfScalar();
    EXPECT_EQ(mti.load(), 36);
}

TEST_F(OcclusionRays, PolarOfOneRingIsTheAxisAlone) {
    node.set(kMode, kPolar);
    for (const int rings : {1, 0, -4}) {
        node.set(kPolar1, rings);
        init_genrand(3);
        EXPECT_EQ(raysOfScalar().size(), 1u);
        EXPECT_EQ(mti.load(), kStateWords) << "without a draw";
        hitEverythingAt(0);
        EXPECT_EQ(scalar(), 0) << "the count is one";
    }
}

TEST_F(OcclusionRays, PolarTakesItsCountsFromItsInputs) {
    node.set(kMode, kPolar);
    node.set("Cone Angle", 1.0);
    struct Row {
        int given1, given2, rings, perRing;
    };
    for (const Row row : {Row{2, 4, 2, 4}, Row{5, 1, 5, 1}, Row{4, 0, 4, 1}, Row{4, -3, 4, 1}, Row{0, 8, 1, 8}}) {
        node.connect("Polar 1", row.given1);
        node.connect("Polar 2", row.given2);
        node.connect("Jitter Angle", 0.1);
        expectPolar(row.rings, row.perRing, 1.0, 0.1, sample.shadingNormal);
        node.disconnect("Polar 1");
        node.disconnect("Polar 2");
        node.set(kPolar1, row.given1);
        node.set(kPolar2, row.given2);
        expectPolar(row.rings, row.perRing, 1.0, 0.1, sample.shadingNormal);
    }
}

TEST_F(OcclusionRays, PolarWithoutJitterIsAnEvenGrid) {
    node.set(kMode, kPolar);
    node.set("Jitter Angle", 0.0);
    node.set("Cone Angle", 0.9);
    node.set(kPolar1, 4);
    node.set(kPolar2, 6);
    for (const auto &normal : kNormals) {
        setNormal(normal[0], normal[1], normal[2]);
        const std::vector<SentRay> rays = raysOfScalar();
        ASSERT_EQ(rays.size(), 19u);
        for (size_t i = 1; i < rays.size(); ++i) {
            const size_t ring = (i - 1) / 6 + 1,
                         opposite = (ring - 1) * 6 + (i + 2) % 6 + 1; // the ray opposite about the axis
            const double angle = 0.3 * static_cast<double>(ring);
            EXPECT_NEAR(angleBetween(rays[i].direction, normal), angle, 1e-7);
            for (int k = 0; k < 3; ++k)
                EXPECT_NEAR(rays[i].direction[k] + rays[opposite].direction[k], 2 * std::cos(angle) * normal[k], 1e-9);
        }
    }
}

TEST_F(OcclusionRays, JitterTiltsTowardsTheAxisOnly) {
    node.set(kMode, kPolar);
    node.set(kPolar1, 2);
    node.set(kPolar2, 400);
    node.set("Cone Angle", 1.0);
    node.set("Jitter Angle", 0.5);
    double least = 9, most = 0;
    const std::vector<SentRay> rays = raysOfScalar();
    for (size_t i = 1; i < rays.size(); ++i) {
        const double angle = angleBetween(rays[i].direction, sample.shadingNormal);
        least = std::min(least, angle);
        most = std::max(most, angle);
    }
    EXPECT_GE(least, 0.5 - 1e-9);
    EXPECT_LT(least, 0.52);
    EXPECT_LE(most, 1.0 + 1e-9);
    EXPECT_GT(most, 0.98);
}

// ---- Other draws from the stream ----

// Shading what a ray hits may evaluate nodes that draw: the words are still given out in the order of the calls.
class OcclusionAmongDraws : public OcclusionRays {
  protected:
    Draws draws;
    int raised = 0;

    // Called for each ray: sometimes draws, and sometimes more words than the node has taken ahead.
    void drawInBetween() {
        constexpr int kCounts[] = {0, 1, 0, 0, 5, 0, 2, 90, 0, 0, 3};
        for (int i = 0; i < kCounts[raised % 11]; ++i) EXPECT_EQ(genrand_real1(), draws.next());
        ++raised;
    }
    void expectRay(const double direction[3]) {
        const double r1 = draws.next(), r2 = draws.next();
        expectNear({direction[0], direction[1], direction[2]},
                   inCone(r2 * kRightAngle, r1 * 2 * kPi, sample.shadingNormal));
    }
    void expectStreamGoesOn() {
        EXPECT_EQ(raised, 150);
        for (int i = 0; i < 10; ++i) EXPECT_EQ(genrand_real1(), draws.next());
    }
    void SetUp() override {
        node.set(kSamples, 150);
        init_genrand(3);
    }
};

TEST_F(OcclusionAmongDraws, OfWhatIsCast) {
    scene.distance = [this](const double *, const double *direction) {
        expectRay(direction);
        drawInBetween();
        return 1.0;
    };
    scalar();
    expectStreamGoesOn();
}

TEST_F(OcclusionAmongDraws, OfWhatIsTraced) {
    node.set(kOcclusionMode, kTraced);
    scene.colour = [this](const double *direction, double *) {
        expectRay(direction);
        drawInBetween();
    };
    colour();
    expectStreamGoesOn();
}

TEST_F(OcclusionAmongDraws, OfTheBackdrop) {
    node.set(kBackgroundMode, kBackdropColour);
    host.backdrop = [this](double, const double *direction, double *) {
        expectRay(direction);
        drawInBetween();
    };
    colour();
    expectStreamGoesOn();
}

TEST_F(OcclusionAmongDraws, OfAnEvaluationWithinAnother) {
    bool within = false;
    scene.distance = [&](const double *, const double *direction) {
        expectRay(direction);
        ++raised;
        if (!within && raised % 31 == 1) {
            within = true;
            scalar();
            within = false;
        }
        return 1.0;
    };
    node.set(kSamples, 40);
    scalar();
    EXPECT_EQ(raised, 40 + 2 * 40) << "one evaluation and two within it";
    for (int i = 0; i < 10; ++i) EXPECT_EQ(genrand_real1(), draws.next());
}

// ---- Origins and axes ----

TEST_F(OcclusionRays, StartAtTheOffsetAlongTheGeometricNormal) {
    for (int i = 0; i < 3; ++i) sample.position[i] = i + 1;
    sample.geometricNormal[0] = 0.6, sample.geometricNormal[1] = 0, sample.geometricNormal[2] = 0.8;
    for (const bool connected : {false, true}) {
        if (connected)
            node.connect("Offset", 0.5);
        else
            node.set("Offset", 0.5);
        for (const int mode : {kRandom, kPolar}) {
            node.set(kMode, mode);
            for (const SentRay &ray : raysOfScalar())
                expectNear({ray.origin[0], ray.origin[1], ray.origin[2]}, {1.3, 2, 3.4}, 1e-15);
        }
    }
    node.disconnect("Offset");
    node.set("Offset", 0.0);
    for (const SentRay &ray : raysOfScalar())
        EXPECT_EQ((Colour{ray.origin[0], ray.origin[1], ray.origin[2]}), (Colour{1, 2, 3}));
}

TEST_F(OcclusionRays, TurnAboutTheShadingNormal) {
    sample.geometricNormal[1] = -1;
    setNormal(0, 0, 1);
    expectRandom(27, kRightAngle, sample.shadingNormal);
}

TEST_F(OcclusionRays, TurnAboutWhatIsConnectedToNormal) {
    constexpr double kLong[3] = {0, 3, -4}; // not of unit length
    node.connect("Normal", kLong[0], kLong[1], kLong[2]);
    expectRandom(27, kRightAngle, kLong);
    node.set(kMode, kPolar);
    expectPolar(3, 9, kRightAngle, kTwentyDegrees, kLong);
}

TEST_F(OcclusionRays, BothOutputsSendTheSameRays) {
    init_genrand(3);
    const std::vector<SentRay> ofScalar = raysOfScalar();
    init_genrand(3);
    scene.rays.clear();
    colour();
    ASSERT_EQ(scene.rays.size(), ofScalar.size());
    for (size_t i = 0; i < ofScalar.size(); ++i) EXPECT_EQ(directionOf(scene.rays[i]), directionOf(ofScalar[i]));
}

// ---- Evaluations without rays ----

TEST_F(OcclusionRays, AModeThatThereIsNotSendsNoneAndGivesZero) {
    for (const int mode : {2, 3, -1, 1000}) {
        node.set(kMode, mode);
        init_genrand(3);
        EXPECT_EQ(scalar(), 0) << mode;
        EXPECT_EQ(colour(), (Colour{0, 0, 0})) << mode;
        EXPECT_EQ(mti.load(), kStateWords);
    }
    EXPECT_TRUE(scene.rays.empty());
}

TEST_F(OcclusionRays, AShadowRaySendsNoneAndGivesZero) {
    for (const int flags : {1, 1 | 8, 1 | 2 | 4 | 16}) {
        sample.rayFlags = flags;
        sample.rayDepth = 5;
        node.set("Limit Color", 1.0, 1.0, 1.0);
        EXPECT_EQ(scalar(), 0);
        EXPECT_EQ(colour(), (Colour{0, 0, 0}));
    }
    EXPECT_TRUE(scene.rays.empty());
    for (const int flags : {2, 4, 16, 32, 64}) {
        sample.rayFlags = flags;
        EXPECT_EQ(scalar(), 1) << "other flags do not matter";
    }
}

TEST_F(OcclusionRays, WithoutRayFunctionsNothingIsHit) {
    sample.rayCast = nullptr;
    sample.rayTraceMode = nullptr;
    node.set("Bg Color", 0.25, 0.5, 0.75);
    for (const int traced : {kCustom, kTraced}) {
        node.set(kOcclusionMode, traced);
        node.set(kSurfaceMode, traced);
        for (const int mode : {kRandom, kPolar}) {
            node.set(kMode, mode);
            EXPECT_EQ(scalar(), 1);
            expectNear(colour(), {0.25, 0.5, 0.75});
        }
    }
}

} // namespace
} // namespace velm::plugin
