// The evaluation that Gaussian Reflections and Gaussian Refractions have in common: the number of rays, the noise, the
// four ways of looking up a ray, and the tint.
#include "tests/nodes/glossy_fixture.h"

#include "random/random.h"

#include <cmath>

namespace velm::plugin {
namespace {

constexpr double kNoiseTolerance = 1e-6; // the module scales its noise in single precision

class GlossyNode : public Glossy, public testing::WithParamInterface<GlossyNodeClass> {
  protected:
    GlossyNode() : Glossy(GetParam()) {}
    unsigned int traceKind() const { return tested.refracts ? 2 : 1; }
};

INSTANTIATE_TEST_SUITE_P(NodeClasses, GlossyNode, testing::Values(kReflections, kRefractions),
                         [](const auto &row) { return std::string(row.param.name); });

// ---- The number of rays ----

struct RayCount {
    double blur;
    int samples, blurDepth, flags, depth;
    size_t rays;
};

TEST_P(GlossyNode, CastsAsManyRaysAsTheSampleIsWorth) {
    const RayCount cases[] = {
        {.blur = 0, .samples = 8, .blurDepth = 0, .flags = 0, .depth = 0, .rays = 1},
        {.blur = 0.1, .samples = 8, .blurDepth = 0, .flags = 0, .depth = 0, .rays = 8},
        {.blur = -0.1, .samples = 8, .blurDepth = 0, .flags = 0, .depth = 0, .rays = 8},
        {.blur = 0.1, .samples = 1, .blurDepth = 0, .flags = 0, .depth = 0, .rays = 1},
        {.blur = 0.1, .samples = 0, .blurDepth = 0, .flags = 0, .depth = 0, .rays = 1},
        {.blur = 0.1, .samples = -3, .blurDepth = 0, .flags = 0, .depth = 0, .rays = 1},
        {.blur = 0.1, .samples = 8, .blurDepth = 0, .flags = 8, .depth = 0, .rays = 8},
        {.blur = 0.1, .samples = 8, .blurDepth = 0, .flags = 8, .depth = 1, .rays = 1},
        {.blur = 0.1, .samples = 8, .blurDepth = 1, .flags = 8, .depth = 1, .rays = 8},
        {.blur = 0.1, .samples = 8, .blurDepth = 1, .flags = 8, .depth = 2, .rays = 1},
        {.blur = 0.1, .samples = 8, .blurDepth = -1, .flags = 8, .depth = 0, .rays = 1},
        {.blur = 0.1, .samples = 8, .blurDepth = 0, .flags = 0, .depth = 5, .rays = 8},
        {.blur = 0.1, .samples = 8, .blurDepth = 0, .flags = 16, .depth = 0, .rays = 1},
        {.blur = 0.1, .samples = 8, .blurDepth = 4, .flags = 24, .depth = 1, .rays = 1},
        {.blur = 0.1, .samples = 8, .blurDepth = 0, .flags = 2 | 4 | 32 | 64, .depth = 3, .rays = 8},
    };
    for (const RayCount &one : cases) {
        SCOPED_TRACE(testing::Message() << "blur " << one.blur << ", samples " << one.samples << ", blur depth "
                                        << one.blurDepth << ", flags " << one.flags << ", depth " << one.depth);
        node.set(tested.blur, one.blur);
        node.set(tested.samples, one.samples);
        node.set(tested.blurDepth, one.blurDepth);
        ShadingSample shaded = sample();
        shaded.rayFlags = one.flags;
        shaded.rayDepth = one.depth;
        rays.traces.clear();
        init_genrand(71);
        std::mt19937 stream(71);
        expectNear(evaluate(shaded), {0.5, 0.25, 0.125});
        ASSERT_EQ(rays.traces.size(), one.rays);
        stream.discard(9 * one.rays);
        EXPECT_EQ(genrand_int32(), stream()) << "three values of noise for each ray, also without blur";
        for (const FakeRays::Call &ray : rays.traces)
            EXPECT_EQ(ray.mode, one.blur != 0 ? traceKind() | 0x40000000u : traceKind());
    }
}

TEST_P(GlossyNode, DrawsItsNoiseWhateverBecomesOfTheRays) {
    node.set(tested.blur, 0.25);
    node.set(tested.samples, 3);
    constexpr int kModes[] = {kBackdrop, kRays, kMap, kRaysAndMap, -1, 4};
    for (const int mode : kModes) { // there is no image
        node.set(kMode, mode);
        init_genrand(5);
        std::mt19937 stream(5);
        evaluate();
        stream.discard(3 * 9);
        EXPECT_EQ(genrand_int32(), stream()) << mode;
    }
    ShadingSample shadow = sample();
    shadow.rayFlags = kRayShadow;
    init_genrand(5);
    evaluate(shadow);
    EXPECT_EQ(genrand_int32(), std::mt19937(5)()) << "a shadow ray needs none";
}

// ---- The rays ----

TEST_P(GlossyNode, JittersTheNormalByNoiseInOrder) {
    node.set(tested.blur, 0.25);
    node.set(tested.samples, 5);
    for (const int flags : {0, 16}) { // five rays, and a single one
        rays.traces.clear();
        init_genrand(1234);
        std::mt19937 stream(1234);
        ShadingSample shaded = sample();
        shaded.rayFlags = flags;
        evaluate(shaded);
        ASSERT_EQ(rays.traces.size(), flags ? 1u : 5u);
        for (const FakeRays::Call &ray : rays.traces)
            expectNear(ray.direction, bent(jittered({0, 1, 0}, 0.25, stream)), kNoiseTolerance);
    }
}

// Shading what a ray hits may evaluate nodes that draw: the words are still given out in the order of the calls.
TEST_P(GlossyNode, SharesTheStreamWithWhatItsRaysMeet) {
    node.set(tested.blur, 0.25);
    node.set(tested.samples, 50);
    init_genrand(77);
    std::mt19937 stream(77);
    int met = 0;
    // Sometimes draws, and sometimes more words than the node has taken ahead.
    rays.met = [&] {
        expectNear(rays.traces.back().direction, bent(jittered({0, 1, 0}, 0.25, stream)), kNoiseTolerance);
        constexpr int kCounts[] = {0, 1, 0, 0, 5, 0, 2, 90, 0, 70, 3};
        for (int i = 0; i < kCounts[met % 11]; ++i) EXPECT_EQ(genrand_int32(), stream());
        ++met;
    };
    evaluate();
    EXPECT_EQ(met, 50);
    for (int i = 0; i < 10; ++i) EXPECT_EQ(genrand_int32(), stream()) << "nothing is taken that is not used";
}

TEST_P(GlossyNode, StartsAtThePositionWithBlack) {
    evaluate();
    ASSERT_EQ(rays.traces.size(), 1u);
    EXPECT_EQ(rays.traces[0].position, (Vector{1, 2, 3}));
    EXPECT_EQ(rays.traces[0].colour, (Vector{0, 0, 0}));
    expectNear(rays.traces[0].direction, bent({0, 1, 0}));
}

TEST_P(GlossyNode, TakesTheShadingNormalAndNoOther) {
    ShadingSample shaded = sample();
    const Vector leaning = {0.2, 1, 0.3};
    for (size_t i = 0; i < 3; ++i) {
        shaded.shadingNormal[i] = 7 * leaning[i]; // of any length
        shaded.geometricNormal[i] = shaded.unbumpedNormal[i] = i == 2 ? 1 : 0;
    }
    evaluate(shaded);
    expectNear(rays.traces.at(0).direction, bent(unit(leaning)));
}

TEST_P(GlossyNode, TakesAConnectedNormalAndNeverItsParameter) {
    node.set("Normal", 1.0, 0.0, 0.0);
    evaluate();
    expectNear(rays.traces.at(0).direction, bent({0, 1, 0}));
    node.connect("Normal", 0.4, 4.0, -0.8);
    evaluate();
    expectNear(rays.traces.at(1).direction, bent(unit({0.1, 1, -0.2})));
}

TEST_P(GlossyNode, BringsTheNormalToUnitLengthBeforeTheNoise) {
    node.set(tested.blur, 0.25);
    node.set(tested.samples, 1);
    node.connect("Normal", 0.0, 10.0, 0.0);
    init_genrand(8);
    std::mt19937 stream(8);
    evaluate();
    expectNear(rays.traces.at(0).direction, bent(jittered({0, 1, 0}, 0.25, stream)), kNoiseTolerance);
}

TEST_P(GlossyNode, ANullNormalStaysOne) {
    node.connect("Normal", 0.0, 0.0, 0.0);
    evaluate();
    for (const double component : rays.traces.at(0).direction) EXPECT_TRUE(std::isfinite(component)) << component;
}

// ---- Inputs ----

TEST_P(GlossyNode, ConnectionsCountForOneSampleOnly) {
    node.connect("Blur", 0.5);
    node.connect("Samples", 3);
    evaluate();
    EXPECT_EQ(rays.traces.size(), 3u);
    ShadingSample deep = sample();
    deep.rayFlags = 8;
    deep.rayDepth = 4;
    node.connect("Blur Depth", 4);
    evaluate(deep);
    EXPECT_EQ(rays.traces.size(), 6u);
    for (const char *input : {"Blur", "Samples", "Blur Depth"}) node.disconnect(input);
    evaluate();
    EXPECT_EQ(rays.traces.size(), 7u) << "no blur: one ray";
    EXPECT_EQ(node.integer(tested.samples), 8);
}

// ---- Looking up ----

TEST_P(GlossyNode, LooksTheBackdropUpAtTheTimeOfTheFrame) {
    node.set(kMode, kBackdrop);
    host.time.time = 2.5;
    host.backdrop = [](double time, const double *direction, double *colour) {
        colour[0] = time;
        colour[1] = direction[0];
        colour[2] = direction[1];
    };
    const Vector direction = bent({0, 1, 0});
    expectNear(evaluate(), {2.5, direction[0], direction[1]});
    EXPECT_TRUE(rays.traces.empty());
}

TEST_P(GlossyNode, AveragesItsRays) {
    node.set(kMode, kBackdrop);
    node.set(tested.blur, 0.25);
    node.set(tested.samples, 7);
    host.backdrop = [](double, const double *direction, double *colour) { std::copy_n(direction, 3, colour); };
    init_genrand(99);
    std::mt19937 stream(99);
    Vector mean{};
    for (int i = 0; i < 7; ++i) {
        const Vector direction = bent(jittered({0, 1, 0}, 0.25, stream));
        for (size_t k = 0; k < 3; ++k) mean[k] += direction[k] / 7;
    }
    expectNear(evaluate(), mean, kNoiseTolerance);
}

TEST_P(GlossyNode, MakesNoBackdropLookupOfItsOwnForRays) {
    host.backdrop = [](double, const double *, double *) { ADD_FAILURE() << "the tracer's business"; };
    rays.distance = -1;
    expectNear(evaluate(), {0.5, 0.25, 0.125});
}

TEST_P(GlossyNode, ReadsTheMapWhereTheDirectionPoints) {
    images.add(3);
    node.set(kMode, kMap);
    node.set(kImage, 2);
    node.set("Image Seam Angle", 0.75);
    const Vector direction = bent({0, 1, 0});
    expectNear(evaluate(), {direction[0] + 7.5, direction[1], 0.375});
    EXPECT_EQ(host.takeLog(), Lines{"spot of picture2 1"});
    EXPECT_TRUE(rays.traces.empty());
    node.connect("Angle", -0.5);
    expectNear(evaluate(), {direction[0] - 5, direction[1], 0.375});
}

struct Choice {
    int images, index;
    const char *read; // null if none is read
};

TEST_P(GlossyNode, FindsTheImageAtEverySample) {
    node.set(kMode, kMap);
    for (const Choice &one :
         {Choice{3, 1, "picture1"}, Choice{3, 3, "picture3"}, Choice{3, 0, nullptr}, Choice{3, 4, nullptr},
          Choice{3, 5, nullptr}, Choice{3, -1, nullptr}, Choice{0, 1, nullptr}, Choice{0, 2, nullptr}}) {
        images.list.clear();
        images.add(one.images);
        node.set(kImage, one.index);
        const Vector colour = evaluate();
        EXPECT_EQ(host.takeLog(), one.read ? Lines{std::string("spot of ") + one.read + " 1"} : Lines{})
            << one.index << " of " << one.images;
        EXPECT_EQ(colour == (Vector{0, 0, 0}), !one.read);
    }
    images.list.clear();
    images.add(3);
    node.set(kImage, 3);
    images.remove(1);
    EXPECT_EQ(evaluate(), (Vector{0, 0, 0})) << "it has been removed meanwhile";
}

struct Miss {
    double distance;
    int image;
    bool map;
};

TEST_P(GlossyNode, ReadsTheMapForAMissOfExactlyMinusOne) {
    images.add(1);
    node.set(kMode, kRaysAndMap);
    const Vector direction = bent({0, 1, 0});
    for (const Miss &one : {Miss{-1, 1, true}, Miss{-1, 0, false}, Miss{-1, 2, false}, Miss{-2, 1, false},
                            Miss{-0.5, 1, false}, Miss{0, 1, false}, Miss{7, 1, false}}) {
        SCOPED_TRACE(testing::Message() << "distance " << one.distance << ", image " << one.image);
        rays.distance = one.distance;
        rays.traces.clear();
        node.set(kImage, one.image);
        expectNear(evaluate(), one.map ? Vector{direction[0], direction[1], 0.375} : Vector{0.5, 0.25, 0.125});
        ASSERT_EQ(rays.traces.size(), 1u);
        EXPECT_EQ(rays.traces[0].mode, traceKind());
    }
}

TEST_P(GlossyNode, GivesBlackInModesThatThereAreNot) {
    images.add(1);
    node.set(kImage, 1);
    for (const int mode : {-1, 4, 70000}) {
        node.set(kMode, mode);
        EXPECT_EQ(evaluate(), (Vector{0, 0, 0}));
    }
    EXPECT_TRUE(rays.traces.empty());
}

TEST_P(GlossyNode, TakesAMissingTracerForRaysThatHitNothing) {
    images.add(1);
    node.set(kImage, 1);
    ShadingSample preview = sample();
    preview.rayTraceMode = nullptr;
    EXPECT_EQ(evaluate(preview), (Vector{0, 0, 0}));
    node.set(kMode, kRaysAndMap);
    const Vector direction = bent({0, 1, 0});
    expectNear(evaluate(preview), {direction[0], direction[1], 0.375});
}

TEST_P(GlossyNode, GivesBlackWithoutABackdropToLookAt) {
    host.systemWord = kSystemModelling; // the backdrop and time services are not looked up
    host.missing = {HOST_BACKDROP_INFO, HOST_TIME_INFO};
    TestNode modelling(host, tested.activate, tested.interface, "modelling");
    modelling.set(kMode, kBackdrop);
    host.backdrop = [](double, const double *, double *) { ADD_FAILURE() << "there is no backdrop"; };
    ShadingSample shaded = sample();
    EXPECT_EQ(colourOf(modelling.evaluate("Color", shaded)), (Vector{0, 0, 0}));
}

// ---- The tint ----

TEST_P(GlossyNode, TintsComponentByComponent) {
    node.set("Color", 0.5, 2.0, 4.0);
    expectNear(evaluate(), {0.5, 0.25, 0.125});
    node.set(tested.tint, 1);
    expectNear(evaluate(), {0.25, 0.5, 0.5});
    node.connect("Color", 1.0, 0.0, 8.0);
    expectNear(evaluate(), {0.5, 0, 1});
    node.disconnect("Color");
    expectNear(evaluate(), {0.25, 0.5, 0.5});
    node.set(kMode, kMap);
    EXPECT_EQ(evaluate(), (Vector{0, 0, 0})) << "no image";
}

TEST_P(GlossyNode, StartsAsALightGreyTint) {
    rays.colour = {1, 1, 1};
    node.set(tested.tint, 1);
    expectNear(evaluate(), {0.78431, 0.78431, 0.78431});
}

} // namespace
} // namespace velm::plugin
