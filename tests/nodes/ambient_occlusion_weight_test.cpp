// The weight of one ray of Ambient Occlusion: the distance, the connected curve and the clamps. The same for both
// outputs.
#include "tests/nodes/occlusion_fixture.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace velm::plugin {
namespace {

class OcclusionWeight : public OcclusionNode {
  protected:
    OcclusionWeight() {
        node.set(kSamples, 1);
        // With a white occlusion colour and all others black, "Color" is the weight itself.
        node.set("Occ Color", 1.0, 1.0, 1.0);
        node.set("Srf Color", 0.0, 0.0, 0.0);
        node.set("Bg Color", 0.0, 0.0, 0.0);
    }
    void expectWeight(double expected) {
        EXPECT_NEAR(1 - scalar(), expected, 1e-15);
        expectNear(colour(), {expected, expected, expected}, 1e-15);
    }
};

struct Weight {
    int ranged;
    double distance, max, shift;
    double expected;
};

const Weight kWeights[] = {
    {.ranged = 1, .distance = 0, .max = 5, .shift = 0, .expected = 1},
    {.ranged = 1, .distance = 1.25, .max = 5, .shift = 0, .expected = 0.75},
    {.ranged = 1, .distance = 2.5, .max = 5, .shift = 0, .expected = 0.5},
    {.ranged = 1, .distance = 5, .max = 5, .shift = 0, .expected = 0},
    {.ranged = 1, .distance = 5, .max = 5, .shift = 0.25, .expected = -0.25},
    {.ranged = 1, .distance = std::nextafter(5.0, 6.0), .max = 5, .shift = 0.25, .expected = 0},
    {.ranged = 1, .distance = 500, .max = 5, .shift = 0.25, .expected = 0},
    {.ranged = 1, .distance = 2.5, .max = 5, .shift = 0.25, .expected = 0.25},
    {.ranged = 1, .distance = 4, .max = 5, .shift = 0.5, .expected = -0.3},
    {.ranged = 1, .distance = 2.5, .max = 5, .shift = -0.75, .expected = 1.25},
    {.ranged = 1, .distance = 2.5, .max = 10, .shift = 0, .expected = 0.75},
    {.ranged = 1, .distance = -1, .max = 5, .shift = 0.25, .expected = 0},
    {.ranged = 1, .distance = -0.001, .max = 5, .shift = 0.25, .expected = 0},
    {.ranged = 1, .distance = 1, .max = 0, .shift = 0.25, .expected = 0},
    {.ranged = 1, .distance = -1, .max = -2, .shift = 0.25, .expected = 0},
    {.ranged = 0, .distance = 0, .max = 5, .shift = 0, .expected = 1},
    {.ranged = 0, .distance = 2.5, .max = 5, .shift = 0, .expected = 1},
    {.ranged = 0, .distance = 1e9, .max = 5, .shift = 0, .expected = 1},
    {.ranged = 0, .distance = 2.5, .max = 5, .shift = 0.25, .expected = 0.75},
    {.ranged = 0, .distance = 2.5, .max = 5, .shift = 2, .expected = -1},
    {.ranged = 0, .distance = -1, .max = 5, .shift = 0.25, .expected = 0},
};

TEST_F(OcclusionWeight, FollowsTheDistance) {
    for (const Weight &row : kWeights) {
        SCOPED_TRACE(testing::Message() << "ranged " << row.ranged << ", distance " << row.distance << ", max "
                                        << row.max << ", shift " << row.shift);
        node.set(kRanged, row.ranged);
        node.set("Max", row.max);
        node.set("Shift", row.shift);
        hitEverythingAt(row.distance);
        expectWeight(row.expected);
    }
}

TEST_F(OcclusionWeight, TakesItsSettingsFromItsInputs) {
    for (const Weight &row : kWeights) {
        node.set(kRanged, row.ranged);
        node.connect("Max", row.max);
        node.connect("Shift", row.shift);
        hitEverythingAt(row.distance);
        expectWeight(row.expected);
    }
    EXPECT_EQ(node.parm("Max").value[0], 5.0) << "the settings stay";
}

TEST_F(OcclusionWeight, AnySettingOfRangedButZeroIsOn) {
    node.set(kRanged, 2);
    hitEverythingAt(2.5);
    expectWeight(0.5);
}

// ---- Clamps ----

struct Clamp {
    int clampLow;
    double low;
    int clampHigh;
    double high;
    double weight, expected;
};

constexpr Clamp kClamps[] = {
    {.clampLow = 0, .low = 0.25, .clampHigh = 0, .high = 0.5, .weight = 1, .expected = 1},
    {.clampLow = 0, .low = 0.25, .clampHigh = 0, .high = 0.5, .weight = 0, .expected = 0},
    {.clampLow = 1, .low = 0.25, .clampHigh = 0, .high = 0.5, .weight = 1, .expected = 0.75},
    {.clampLow = 1, .low = 0.25, .clampHigh = 0, .high = 0.5, .weight = 0.75, .expected = 0.75},
    {.clampLow = 1, .low = 0.25, .clampHigh = 0, .high = 0.5, .weight = 0.5, .expected = 0.5},
    {.clampLow = 1, .low = 0.25, .clampHigh = 0, .high = 0.5, .weight = -0.5, .expected = -0.5},
    {.clampLow = 0, .low = 0.25, .clampHigh = 1, .high = 0.75, .weight = 0, .expected = 0.25},
    {.clampLow = 0, .low = 0.25, .clampHigh = 1, .high = 0.75, .weight = -0.5, .expected = 0.25},
    {.clampLow = 0, .low = 0.25, .clampHigh = 1, .high = 0.75, .weight = 0.25, .expected = 0.25},
    {.clampLow = 0, .low = 0.25, .clampHigh = 1, .high = 0.75, .weight = 0.5, .expected = 0.5},
    {.clampLow = 0, .low = 0.25, .clampHigh = 1, .high = 0.75, .weight = 1, .expected = 1},
    {.clampLow = 1, .low = 0.25, .clampHigh = 1, .high = 0.75, .weight = 1, .expected = 0.75},
    {.clampLow = 1, .low = 0.25, .clampHigh = 1, .high = 0.75, .weight = 0, .expected = 0.25},
    {.clampLow = 1, .low = 0.25, .clampHigh = 1, .high = 0.75, .weight = 0.5, .expected = 0.5},
    // Crossed limits: if the low clamp applies, the high one does not.
    {.clampLow = 1, .low = 0.5, .clampHigh = 1, .high = 0.25, .weight = 1, .expected = 0.5},
    {.clampLow = 1, .low = 0.5, .clampHigh = 1, .high = 0.25, .weight = 0.5, .expected = 0.75},
    {.clampLow = 1, .low = 0.5, .clampHigh = 1, .high = 0.25, .weight = 0, .expected = 0.75},
};

TEST_F(OcclusionWeight, IsClamped) {
    node.set(kRanged, 0);
    for (const Clamp &row : kClamps) {
        SCOPED_TRACE(testing::Message() << "low " << row.clampLow << " " << row.low << ", high " << row.clampHigh << " "
                                        << row.high << ", weight " << row.weight);
        node.set(kClampLow, row.clampLow);
        node.set(kClampHigh, row.clampHigh);
        hitEverythingAt(1);
        node.set("Shift", 1 - row.weight);
        node.set("Low", row.low);
        node.set("High", row.high);
        expectWeight(row.expected);
        node.connect("Low", row.low);
        node.connect("High", row.high);
        node.set("Low", 0.0);
        node.set("High", 1.0);
        expectWeight(row.expected);
        node.disconnect("Low");
        node.disconnect("High");
    }
}

TEST_F(OcclusionWeight, AMissIsClampedToo) {
    node.set(kClampHigh, 1);
    node.set("High", 0.75);
    expectWeight(0.25);
}

TEST_F(OcclusionWeight, ALowClampKeepsScalarAtOrAboveIt) {
    node.set(kSamples, 27);
    node.set(kRanged, 0);
    node.set(kClampLow, 1);
    node.set("Low", 0.25);
    hitEverythingAt(1);
    EXPECT_EQ(scalar(), 0.25);
}

// ---- The connected curve ----

TEST_F(OcclusionWeight, GoesThroughTheConnectedFunctionBeforeTheClamps) {
    node.input("Function").source = [](ShadingSample *, void *value) {
        auto *weight = static_cast<double *>(value);
        *weight = *weight * *weight * 2;
    };
    hitEverythingAt(2.5);
    expectWeight(0.5);
    hitEverythingAt(0);
    expectWeight(2);
    node.set(kClampLow, 1);
    node.set("Low", 0.25);
    expectWeight(0.75);
    hitEverythingAt(-1);
    expectWeight(0);
    node.set(kClampHigh, 1);
    node.set("High", 0.875);
    expectWeight(0.125);
}

TEST_F(OcclusionWeight, AsksTheFunctionForEachRay) {
    int asked = 0;
    node.set(kSamples, 9);
    node.input("Function").source = [&](ShadingSample *, void *value) {
        EXPECT_EQ(*static_cast<double *>(value), 0) << "a miss weighs nothing";
        *static_cast<double *>(value) = ++asked;
    };
    EXPECT_EQ(scalar(), 1 - 45.0 / 9);
    EXPECT_EQ(asked, 9);
    colour();
    EXPECT_EQ(asked, 18);
}

TEST_F(OcclusionWeight, AveragesItsRays) {
    node.set(kSamples, 8);
    int sent = 0;
    scene.distance = [&](const double *, const double *) { return sent++ % 4 == 0 ? 0.0 : 2.5; };
    expectWeight((2 + 6 * 0.5) / 8);
}

} // namespace
} // namespace velm::plugin
