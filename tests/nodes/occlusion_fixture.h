// The fixture of the tests of Ambient Occlusion: the node, a sample in a scripted scene, and the settings by name.
#pragma once

#include "tests/module/test_node.h"
#include "tests/nodes/ray_script.h"

#include <array>
#include <gtest/gtest.h>

namespace velm::plugin {

// The controls of the integers.
enum OcclusionControl : unsigned int {
    kMode = 0x8001,
    kSamples = 0x8002,
    kPolar1 = 0x8003,
    kPolar2 = 0x8004,
    kRanged = 0x8007,
    kClampLow = 0x800a,
    kClampHigh = 0x800c,
    kSampleDepth = 0x800f,
    kSurfaceMode = 0x8010,
    kBackgroundMode = 0x8013,
    kOcclusionMode = 0x8016,
    kLimitMode = 0x8019,
};
enum { kRandom = 0, kPolar = 1 };
enum { kCustom = 0, kBackdropColour = 1, kTraced = 2 };

using Colour = std::array<double, 3>;

class OcclusionNode : public testing::Test {
  protected:
    FakeHost host;
    TestNode node;
    RayScript scene;
    ShadingSample sample = plainSample();

    explicit OcclusionNode(uintptr_t systemWord = kSystemLayout)
        : node((host.systemWord = systemWord, host), "Velm Ambient Occlusion") {
        scene.attach(sample);
    }

    double scalar() { return node.scalar("Scalar", sample); }
    Colour colour() {
        const HostNodeValue value = node.evaluate("Color", sample);
        return {value.numbers[0], value.numbers[1], value.numbers[2]};
    }
    void hitEverythingAt(double distance) {
        scene.distance = [distance](const double *, const double *) { return distance; };
    }
    // The rays that an evaluation of "Scalar" sends.
    std::vector<SentRay> raysOfScalar() {
        scene.rays.clear();
        scalar();
        return scene.rays;
    }
    void setNormal(double x, double y, double z) {
        sample.shadingNormal[0] = x, sample.shadingNormal[1] = y, sample.shadingNormal[2] = z;
    }
};

inline void expectNear(const Colour &actual, const Colour &expected, double tolerance = 1e-12) {
    for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(actual[i], expected[i], tolerance) << "component " << i;
}

} // namespace velm::plugin
