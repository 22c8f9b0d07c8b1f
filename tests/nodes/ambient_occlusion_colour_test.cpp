// The colours of Ambient Occlusion: how the four are mixed, the source of each, and the limit.
#include "tests/nodes/occlusion_fixture.h"

#include <cmath>
#include <gtest/gtest.h>
#include <utility>

namespace velm::plugin {
namespace {

// Sets four different colours and brightnesses.
const Colour kSurface = {0.9, 0.1, 0.3}, kBackground = {0.2, 0.8, 0.4}, kOcclusion = {0.6, 0.5, 0.7},
             kLimit = {0.05, 0.15, 0.25}, kTracedColour = {1.5, 2.5, 0.5}, kSky = {0.35, 0.45, 3.0};
constexpr double kSurfaceBright = 0.5, kBackgroundBright = 2, kOcclusionBright = 1.25, kLimitBright = 4;

Colour mixed(double weight, const Colour &occlusion, const Colour &open, double openBrightness) {
    Colour result;
    for (size_t i = 0; i < 3; ++i)
        result[i] = weight * occlusion[i] * kOcclusionBright + (1 - weight) * open[i] * openBrightness;
    return result;
}

Colour scaled(const Colour &colour, double factor) {
    return {colour[0] * factor, colour[1] * factor, colour[2] * factor};
}

class OcclusionColour : public OcclusionNode {
  protected:
    explicit OcclusionColour(uintptr_t systemWord = kSystemLayout) : OcclusionNode(systemWord) {
        node.set(kSamples, 1);
        node.set("Srf Color", kSurface[0], kSurface[1], kSurface[2]);
        node.set("Bg Color", kBackground[0], kBackground[1], kBackground[2]);
        node.set("Occ Color", kOcclusion[0], kOcclusion[1], kOcclusion[2]);
        node.set("Limit Color", kLimit[0], kLimit[1], kLimit[2]);
        node.set("Srf Brightness", kSurfaceBright);
        node.set("Bg Brightness", kBackgroundBright);
        node.set("Occ Brightness", kOcclusionBright);
        node.set("Limit Brightness", kLimitBright);
        scene.colour = [](const double *, double *colour) {
            std::copy(kTracedColour.begin(), kTracedColour.end(), colour);
        };
        host.time.time = 1.75;
        host.backdrop = [this](double time, const double *direction, double *colour) {
            asked.push_back({time, {direction[0], direction[1], direction[2]}});
            std::copy(kSky.begin(), kSky.end(), colour);
        };
    }
    struct Asked {
        double time;
        Colour direction;
    };
    std::vector<Asked> asked; // the requests to the backdrop

    // Every ray hits, with this weight in ranged mode.
    void hitWithWeight(double weight) { hitEverythingAt(5 * (1 - weight)); }
    // A curve gives misses this weight.
    void missWithWeight(double weight) {
        hitEverythingAt(-1);
        node.connect("Function", weight);
    }
};

// ---- Mixing ----

TEST_F(OcclusionColour, MixesWhatOccludesWithTheSurfaceWhereItHits) {
    for (const double weight : {0.0, 0.25, 0.5, 1.0}) {
        hitWithWeight(weight);
        expectNear(colour(), mixed(weight, kOcclusion, kSurface, kSurfaceBright));
    }
}

TEST_F(OcclusionColour, MixesWhatOccludesWithTheBackgroundWhereItMisses) {
    expectNear(colour(), scaled(kBackground, kBackgroundBright));
    for (const double weight : {0.0, 0.25, 1.0}) {
        missWithWeight(weight);
        expectNear(colour(), mixed(weight, kOcclusion, kBackground, kBackgroundBright));
    }
}

TEST_F(OcclusionColour, AnyDistanceBelowZeroIsAMiss) {
    hitEverythingAt(-0.25);
    expectNear(colour(), scaled(kBackground, kBackgroundBright));
    hitEverythingAt(0);
    node.set("Shift", 0.25);
    expectNear(colour(), mixed(0.75, kOcclusion, kSurface, kSurfaceBright));
}

TEST_F(OcclusionColour, BeyondTheRangeTheSurfaceIsOpen) {
    hitEverythingAt(7);
    expectNear(colour(), scaled(kSurface, kSurfaceBright));
}

TEST_F(OcclusionColour, PlainHitsShowNothingOfTheSurface) {
    node.set(kRanged, 0);
    hitEverythingAt(7);
    expectNear(colour(), scaled(kOcclusion, kOcclusionBright));
}

TEST_F(OcclusionColour, TakesItsColoursFromItsInputs) {
    const Colour surface = {0.11, 0.22, 0.33}, background = {0.44, 0.55, 0.66}, occlusion = {0.77, 0.88, 0.99};
    node.connect("Srf Color", surface[0], surface[1], surface[2]);
    node.connect("Bg Color", background[0], background[1], background[2]);
    node.connect("Occ Color", occlusion[0], occlusion[1], occlusion[2]);
    node.connect("Srf Brightness", 3.0);
    node.connect("Bg Brightness", 5.0);
    node.connect("Occ Brightness", kOcclusionBright);
    hitWithWeight(0.25);
    expectNear(colour(), mixed(0.25, occlusion, surface, 3));
    hitEverythingAt(-1);
    expectNear(colour(), mixed(0, occlusion, background, 5));
    node.connect("Occ Brightness", 7.0);
    hitWithWeight(1);
    expectNear(colour(), scaled(occlusion, 7));
}

TEST_F(OcclusionColour, ModesOutOfTheListAreCustom) {
    for (const unsigned int control : {kSurfaceMode, kBackgroundMode, kOcclusionMode}) node.set(control, 17);
    hitWithWeight(0.5);
    expectNear(colour(), mixed(0.5, kOcclusion, kSurface, kSurfaceBright));
    node.set(kBackgroundMode, kTraced); // not a choice of the background
    hitEverythingAt(-1);
    expectNear(colour(), scaled(kBackground, kBackgroundBright));
}

// ---- Tracing ----

struct Trace {
    int ranged, surfaceMode, occlusionMode;
    bool traces;
    Colour surface, occlusion; // the colours that are mixed
};

const Trace kTraces[] = {
    {.ranged = 1,
     .surfaceMode = kCustom,
     .occlusionMode = kCustom,
     .traces = false,
     .surface = kSurface,
     .occlusion = kOcclusion},
    {.ranged = 1,
     .surfaceMode = kTraced,
     .occlusionMode = kCustom,
     .traces = true,
     .surface = kTracedColour,
     .occlusion = kOcclusion},
    {.ranged = 1,
     .surfaceMode = kCustom,
     .occlusionMode = kTraced,
     .traces = true,
     .surface = kSurface,
     .occlusion = kTracedColour},
    {.ranged = 1,
     .surfaceMode = kTraced,
     .occlusionMode = kTraced,
     .traces = true,
     .surface = kTracedColour,
     .occlusion = kTracedColour},
    {.ranged = 0,
     .surfaceMode = kCustom,
     .occlusionMode = kCustom,
     .traces = false,
     .surface = kSurface,
     .occlusion = kOcclusion},
    {.ranged = 0,
     .surfaceMode = kTraced,
     .occlusionMode = kCustom,
     .traces = false,
     .surface = {0, 0, 0},
     .occlusion = kOcclusion},
    {.ranged = 0,
     .surfaceMode = kCustom,
     .occlusionMode = kTraced,
     .traces = true,
     .surface = kSurface,
     .occlusion = kTracedColour},
    {.ranged = 0,
     .surfaceMode = kTraced,
     .occlusionMode = kTraced,
     .traces = true,
     .surface = kTracedColour,
     .occlusion = kTracedColour},
    {.ranged = 1,
     .surfaceMode = kBackdropColour,
     .occlusionMode = kCustom,
     .traces = false,
     .surface = kSky,
     .occlusion = kOcclusion},
    {.ranged = 1,
     .surfaceMode = kBackdropColour,
     .occlusionMode = kTraced,
     .traces = true,
     .surface = kSky,
     .occlusion = kTracedColour},
    {.ranged = 1,
     .surfaceMode = kTraced,
     .occlusionMode = kBackdropColour,
     .traces = true,
     .surface = kTracedColour,
     .occlusion = kSky},
};

TEST_F(OcclusionColour, TracesWhereAColourNeedsIt) {
    hitEverythingAt(1);
    node.connect("Function", 0.25);
    for (const Trace &row : kTraces) {
        SCOPED_TRACE(testing::Message() << "ranged " << row.ranged << ", surface " << row.surfaceMode << ", occlusion "
                                        << row.occlusionMode);
        node.set(kRanged, row.ranged);
        node.set(kSurfaceMode, row.surfaceMode);
        node.set(kOcclusionMode, row.occlusionMode);
        scene.rays.clear();
        expectNear(colour(), mixed(0.25, row.occlusion, row.surface, kSurfaceBright));
        ASSERT_EQ(scene.rays.size(), 1u);
        EXPECT_EQ(scene.rays[0].traced, row.traces);
    }
}

TEST_F(OcclusionColour, TracesOneOfManyReflectionsInTheSamplesMedium) {
    node.set(kSamples, 3);
    node.set(kOcclusionMode, kTraced);
    sample.refractionIndex = 1.33;
    colour();
    ASSERT_EQ(scene.rays.size(), 3u);
    for (const SentRay &ray : scene.rays) {
        ASSERT_TRUE(ray.traced);
        EXPECT_EQ(ray.mode, 0x40000001);
        EXPECT_EQ(ray.eta, 1.33);
        for (const double component : ray.colour) EXPECT_EQ(component, 0) << "it starts from black each time";
    }
}

TEST_F(OcclusionColour, WeighsATracedDistanceLikeACastOne) {
    node.set(kSurfaceMode, kTraced);
    hitWithWeight(0.75);
    expectNear(colour(), mixed(0.75, kOcclusion, kTracedColour, kSurfaceBright));
}

TEST_F(OcclusionColour, AMissMixesTheTracedColourInByItsWeight) {
    node.set(kOcclusionMode, kTraced);
    missWithWeight(0.5);
    expectNear(colour(), mixed(0.5, kTracedColour, kBackground, kBackgroundBright));
}

TEST_F(OcclusionColour, ScalarNeverTraces) {
    node.set(kSurfaceMode, kTraced);
    node.set(kOcclusionMode, kTraced);
    scalar();
    for (const SentRay &ray : scene.rays) EXPECT_FALSE(ray.traced);
}

// ---- Backdrop ----

TEST_F(OcclusionColour, SeesTheBackdropInTheDirectionOfEachRayAtTheCurrentTime) {
    node.set(kSamples, 4);
    node.set(kBackgroundMode, kBackdropColour);
    expectNear(colour(), scaled(kSky, kBackgroundBright));
    ASSERT_EQ(asked.size(), 4u);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(asked[i].time, 1.75);
        for (size_t k = 0; k < 3; ++k) EXPECT_EQ(asked[i].direction[k], scene.rays[i].direction[k]);
    }
    host.time.time = 2.5;
    colour();
    EXPECT_EQ(asked.back().time, 2.5);
}

TEST_F(OcclusionColour, TakesEachColourFromTheBackdropByItself) {
    hitWithWeight(0.5);
    node.set(kSurfaceMode, kBackdropColour);
    expectNear(colour(), mixed(0.5, kOcclusion, kSky, kSurfaceBright));
    node.set(kSurfaceMode, kCustom);
    node.set(kOcclusionMode, kBackdropColour);
    expectNear(colour(), mixed(0.5, kSky, kSurface, kSurfaceBright));
    missWithWeight(0.5);
    expectNear(colour(), mixed(0.5, kSky, kBackground, kBackgroundBright));
    node.set(kOcclusionMode, kCustom);
    node.set(kBackgroundMode, kBackdropColour);
    expectNear(colour(), mixed(0.5, kOcclusion, kSky, kBackgroundBright));
}

// A backdrop may be made of nodes that draw from the random stream, so the number of lookups matters.
TEST_F(OcclusionColour, LooksForEachColourOfTheBackdropWhetherItShowsOrNot) {
    int looks = 0;
    host.backdrop = [&](double, const double *, double *colour) { std::fill_n(colour, 3, ++looks); };
    for (const unsigned int control : {kSurfaceMode, kBackgroundMode, kOcclusionMode})
        node.set(control, kBackdropColour);
    const double occluded = 0.5 * 3 * kOcclusionBright;
    hitWithWeight(0.5);
    expectNear(colour(), scaled({1, 1, 1}, occluded + 0.5 * 1 * kSurfaceBright)); // the surface is looked up first
    EXPECT_EQ(std::exchange(looks, 0), 3);
    missWithWeight(0.5);
    expectNear(colour(), scaled({1, 1, 1}, occluded + 0.5 * 2 * kBackgroundBright));
    EXPECT_EQ(std::exchange(looks, 0), 3);
    scalar();
    EXPECT_EQ(looks, 0) << "the openness shows none";
}

class OcclusionModelling : public OcclusionColour {
  protected:
    OcclusionModelling() : OcclusionColour(kSystemModelling | 0x123) {}
};

TEST_F(OcclusionModelling, KeepsCustomColoursWithoutABackdrop) {
    for (const unsigned int control : {kSurfaceMode, kBackgroundMode, kOcclusionMode, kLimitMode})
        node.set(control, kBackdropColour);
    hitWithWeight(0.5);
    expectNear(colour(), mixed(0.5, kOcclusion, kSurface, kSurfaceBright));
    missWithWeight(0.5);
    expectNear(colour(), mixed(0.5, kOcclusion, kBackground, kBackgroundBright));
    sample.rayFlags = kRaySampled;
    sample.rayDepth = 1;
    expectNear(colour(), scaled(kLimit, kLimitBright));
    EXPECT_TRUE(asked.empty());
}

// ---- The limit ----

struct Limit {
    int flags, rayDepth, sampleDepth;
    bool limited;
};

constexpr Limit kLimits[] = {
    {.flags = 0, .rayDepth = 9, .sampleDepth = 0, .limited = false},
    {.flags = 8, .rayDepth = 0, .sampleDepth = 0, .limited = false},
    {.flags = 8, .rayDepth = 1, .sampleDepth = 0, .limited = true},
    {.flags = 8 | 2 | 4 | 16, .rayDepth = 1, .sampleDepth = 0, .limited = true},
    {.flags = 2 | 4 | 16 | 32 | 64, .rayDepth = 1, .sampleDepth = 0, .limited = false},
    {.flags = 8, .rayDepth = 2, .sampleDepth = 2, .limited = false},
    {.flags = 8, .rayDepth = 3, .sampleDepth = 2, .limited = true},
    {.flags = 8, .rayDepth = 0, .sampleDepth = -1, .limited = true},
    {.flags = 8, .rayDepth = -1, .sampleDepth = 0, .limited = false},
};

TEST_F(OcclusionColour, SampledRaysBeyondTheSampleDepthGetTheLimit) {
    const Colour limit = scaled(kLimit, kLimitBright), open = scaled(kBackground, kBackgroundBright);
    for (const Limit &row : kLimits) {
        SCOPED_TRACE(testing::Message() << "flags " << row.flags << ", depth " << row.rayDepth << " of "
                                        << row.sampleDepth);
        sample.rayFlags = row.flags;
        sample.rayDepth = row.rayDepth;
        for (const bool connected : {false, true}) {
            node.set(kSampleDepth, connected ? 1000 : row.sampleDepth);
            if (connected) node.connect("Sample Depth", row.sampleDepth);
            scene.rays.clear();
            expectNear(colour(), row.limited ? limit : open);
            EXPECT_NEAR(scalar(), row.limited ? limit[0] : 1, 1e-15) << "its red";
            EXPECT_EQ(scene.rays.empty(), row.limited);
            node.disconnect("Sample Depth");
        }
    }
}

class OcclusionLimit : public OcclusionColour {
  protected:
    OcclusionLimit() {
        sample.rayFlags = kRaySampled;
        sample.rayDepth = 1;
    }
};

TEST_F(OcclusionLimit, TakesItsColourFromItsInputs) {
    node.connect("Limit Color", 0.3, 0.2, 0.1);
    node.connect("Limit Brightness", 2.0);
    expectNear(colour(), {0.6, 0.4, 0.2});
    EXPECT_NEAR(scalar(), 0.6, 1e-15);
}

TEST_F(OcclusionLimit, IsTheBackdropAlongTheViewWhereThatIsChosen) {
    node.set(kLimitMode, kBackdropColour);
    const double position[3] = {4, 6, 3}, source[3] = {1, 2, 15}; // at a distance of 13
    for (int i = 0; i < 3; ++i) sample.position[i] = position[i], sample.raySource[i] = source[i];
    expectNear(colour(), scaled(kSky, kLimitBright));
    ASSERT_EQ(asked.size(), 1u);
    EXPECT_EQ(asked[0].time, 1.75);
    expectNear(asked[0].direction, {3.0 / 13, 4.0 / 13, -12.0 / 13}, 1e-15);
    EXPECT_NEAR(scalar(), kSky[0] * kLimitBright, 1e-15);
    EXPECT_TRUE(scene.rays.empty());
}

TEST_F(OcclusionLimit, AViewFromThePointItselfHasNoDirection) {
    node.set(kLimitMode, kBackdropColour);
    for (int i = 0; i < 3; ++i) sample.position[i] = sample.raySource[i] = i + 1;
    expectNear(colour(), scaled(kSky, kLimitBright));
    ASSERT_EQ(asked.size(), 1u);
    EXPECT_EQ(asked[0].direction, (Colour{0, 0, 0})) << "and no NaN, by which the host might look a pixel up";
}

TEST_F(OcclusionLimit, AppliesInEveryMode) {
    for (const int mode : {1, 2, -1}) {
        node.set(kMode, mode);
        expectNear(colour(), scaled(kLimit, kLimitBright));
    }
    node.set(kLimitMode, kTraced); // not a choice of the limit
    expectNear(colour(), scaled(kLimit, kLimitBright));
}

} // namespace
} // namespace velm::plugin
