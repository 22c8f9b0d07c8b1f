// The values of envelopes, compared with closed formulas.

#include "tests/animation/curve_fixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <string>

using namespace velm::host;

namespace {

TEST(Envelope, WithoutKeysIsZero) {
    const HostEnvelope envelope;
    EXPECT_EQ(envelope.evaluate(1), 0);
}

TEST(Envelope, KeysGiveTheirValuesWhateverTheShapes) {
    for (int first = kShapeTcb; first <= kShapeBezier2; ++first) {
        for (int second = kShapeTcb; second <= kShapeBezier2; ++second) {
            HostEnvelope envelope;
            put(envelope, 0.5, 3, first).parameters = {0.1, 0.2, 0.3, 0.4};
            put(envelope, 1.25, -2, second).parameters = {-0.1, 0.7, 0.2, 0.1};
            put(envelope, 4, 8, first);
            for (const auto &key : envelope.keys) {
                EXPECT_EQ(envelope.evaluate(key->time), key->value) << first << " " << second;
                const double before = envelope.evaluate(std::nextafter(key->time, 0));
                const bool jumps = key->shape == kShapeStepped || key->time == 0.5;
                if (!jumps) {
                    EXPECT_NEAR(before, key->value, 1e-9) << first << " " << second;
                }
            }
        }
    }
}

TEST(Envelope, LinearIsStraight) {
    HostEnvelope envelope;
    put(envelope, 1, 10, kShapeTcb);
    put(envelope, 3, 20, kShapeLinear);
    for (const double t : {0.0, 0.1, 0.5, 0.9, 1.0}) EXPECT_DOUBLE_EQ(envelope.evaluate(1 + 2 * t), 10 + 10 * t);
}

TEST(Envelope, SteppedHoldsUntilTheNextKey) {
    HostEnvelope envelope;
    put(envelope, 0, 1, kShapeTcb);
    put(envelope, 2, 5, kShapeStepped);
    EXPECT_EQ(envelope.evaluate(1.999), 1);
    EXPECT_EQ(envelope.evaluate(2), 5);
}

TEST(Envelope, HermiteTakesItsTangentsFromTheKeys) {
    HostEnvelope envelope;
    put(envelope, 1, 2, kShapeHermite).parameters = {9, -3, 0, 0};
    put(envelope, 5, 6, kShapeHermite).parameters = {4, 9, 0, 0};
    for (const double t : {0.25, 0.5, 0.8}) EXPECT_NEAR(envelope.evaluate(1 + 4 * t), hermite(2, 6, {-3, 4}, t), 1e-12);
}

TEST(Envelope, OneDimensionalBezierIsHermite) {
    HostEnvelope envelope;
    put(envelope, 1, 2, kShapeBezier1).parameters = {9, -3, 0, 0};
    put(envelope, 5, 6, kShapeBezier1).parameters = {4, 9, 0, 0};
    for (const double t : {0.25, 0.5, 0.8}) EXPECT_NEAR(envelope.evaluate(1 + 4 * t), hermite(2, 6, {-3, 4}, t), 1e-12);
}

TEST(Envelope, TwoDimensionalBezierPassesThroughItsCurve) {
    HostEnvelope envelope;
    put(envelope, 1, 2, kShapeBezier2).parameters = {0, 0, 0.7, 3};
    put(envelope, 3, 6, kShapeBezier2).parameters = {-1.8, -0.5, 0, 0};
    for (const double s : {0.1, 0.3, 0.5, 0.7, 0.95}) {
        const double time = bernstein(1, 1.7, 1.2, 3, s);
        EXPECT_NEAR(envelope.evaluate(time), bernstein(2, 5, 5.5, 6, s), 1e-9);
    }
}

TEST(Envelope, BezierHandlesMayLeaveTheirSpan) {
    // Time still increases along this curve, though the handle of the first key ends after the second key.
    HostEnvelope envelope;
    put(envelope, 0, 0, kShapeBezier2).parameters = {0, 0, 1.2, 4};
    put(envelope, 1, 1, kShapeBezier2).parameters = {-0.1, 2, 0, 0};
    for (const double s : {0.1, 0.4, 0.7, 0.9})
        EXPECT_NEAR(envelope.evaluate(bernstein(0, 1.2, 0.9, 1, s)), bernstein(0, 4, 3, 1, s), 1e-9);
}

TEST(Envelope, BezierCurvesThatFoldBackAreLeftAtOneOfTheirPoints) {
    // The values make the curve's value its own parameter.
    HostEnvelope envelope;
    put(envelope, 0, 0, kShapeBezier2).parameters = {0, 0, 50, 1.0 / 3};
    put(envelope, 1, 1, kShapeBezier2).parameters = {-50, -1.0 / 3, 0, 0};
    for (double time = 0.05; time < 1; time += 0.05) {
        const double s = envelope.evaluate(time);
        EXPECT_NEAR(bernstein(0, 50, -49, 1, s), time, 1e-12);
    }
}

TEST(Envelope, TcbMatchesThePublishedFormulas) {
    // Kochanek and Bartels 1984, equations for the incoming and outgoing tangents, on spans of unlike length.
    const double times[] = {0, 1, 3, 4}, values[] = {0, 2, -1, 5};
    const double tension = 0.3, continuity = -0.4, bias = 0.2;
    HostEnvelope envelope;
    for (int i = 0; i < 4; ++i) {
        HostKey &key = put(envelope, times[i], values[i], kShapeTcb);
        key.tension = tension;
        key.continuity = continuity;
        key.bias = bias;
    }
    const auto tangent = [&](int i, double c, double span) {
        const double before = values[i] - values[i - 1], after = values[i + 1] - values[i];
        const double plain = (1 - tension) * ((1 + c) * (1 + bias) * before + (1 - c) * (1 - bias) * after) / 2;
        return plain * 2 * span / (times[i + 1] - times[i - 1]);
    };
    const Tangents middle = {tangent(1, continuity, 2), tangent(2, -continuity, 2)};
    // A key at an end has no difference on its outer side, and its one span counts whole.
    const Tangents first = {(1 - tension) * (1 - continuity) * (1 - bias) * 2, tangent(1, -continuity, 1)};
    const Tangents last = {tangent(2, continuity, 1), (1 - tension) * (1 - continuity) * (1 + bias) * 6};
    for (const double t : {0.2, 0.5, 0.7}) {
        EXPECT_NEAR(envelope.evaluate(t), hermite(0, 2, first, t), 1e-12);
        EXPECT_NEAR(envelope.evaluate(1 + 2 * t), hermite(2, -1, middle, t), 1e-12);
        EXPECT_NEAR(envelope.evaluate(3 + t), hermite(-1, 5, last, t), 1e-12);
    }
}

TEST(Envelope, PlainTcbThroughEvenKeysIsCatmullRom) {
    HostEnvelope envelope;
    const double values[] = {0, 1, 4, 2};
    for (int i = 0; i < 4; ++i) put(envelope, i, values[i], kShapeTcb);
    EXPECT_NEAR(envelope.evaluate(1.5), (-values[0] + 9 * values[1] + 9 * values[2] - values[3]) / 16, 1e-12);
}

TEST(Envelope, AStraightLineIsStraightInEverySmoothShape) {
    for (const int shape : {kShapeTcb, kShapeHermite, kShapeBezier1, kShapeBezier2}) {
        HostEnvelope envelope;
        for (int i = 0; i < 4; ++i) {
            HostKey &key = put(envelope, i, 2 * i, shape);
            // The change of value over both spans; over the only one at the ends.
            const bool hermites = shape == kShapeHermite || shape == kShapeBezier1;
            if (hermites) key.parameters = {i < 3 ? 4.0 : 2.0, i > 0 ? 4.0 : 2.0, 0, 0};
            if (shape == kShapeBezier2) key.parameters = {-0.25, -0.5, 0.4, 0.8};
        }
        for (double time = 0; time <= 3; time += 0.125) EXPECT_NEAR(envelope.evaluate(time), 2 * time, 1e-9) << shape;
    }
}

TEST(Envelope, NeighbouringShapesMeetSmoothly) {
    // Into a Bezier span from a Hermite key: the handle of the key follows its tangent.
    HostEnvelope envelope;
    put(envelope, 0, 0, kShapeHermite).parameters = {0, 6, 0, 0};
    put(envelope, 2, 0, kShapeBezier2);
    EXPECT_NEAR((envelope.evaluate(1e-6) - envelope.evaluate(0)) / 1e-6, 3, 1e-4);
    // And from a Bezier key into a Hermite span.
    HostEnvelope other;
    put(other, 0, 0, kShapeBezier2).parameters = {0, 0, 0.5, 1.5};
    put(other, 2, 0, kShapeHermite);
    EXPECT_NEAR(other.evaluate(1), hermite(0, 0, {6, 0}, 0.5), 1e-12);
}

TEST(Envelope, BehavioursBeyondTheKeys) {
    const auto make = [](int behaviour) {
        auto envelope = std::make_unique<HostEnvelope>();
        put(*envelope, 1, 10, kShapeLinear);
        put(*envelope, 2, 30, kShapeLinear);
        put(*envelope, 3, 20, kShapeLinear);
        envelope->before = envelope->after = behaviour;
        return envelope;
    };
    const struct {
        int behaviour;
        double time, value;
    } rows[] = {
        {kBehaveReset, 0.5, 0},         {kBehaveReset, 3.5, 0},         {kBehaveReset, 3, 20},
        {kBehaveConstant, 0.5, 10},     {kBehaveConstant, 99, 20},      {kBehaveRepeat, 3.5, 20},
        {kBehaveRepeat, 5.5, 20},       {kBehaveRepeat, 0.5, 25},       {kBehaveRepeat, -1.5, 25},
        {kBehaveRepeat, 4, 30},         {kBehaveOscillate, 3.5, 25},    {kBehaveOscillate, 4.5, 20},
        {kBehaveOscillate, 5.5, 20},    {kBehaveOscillate, 0.5, 20},    {kBehaveOscillate, -1.5, 25},
        {kBehaveOffsetRepeat, 3.5, 30}, {kBehaveOffsetRepeat, 5.5, 40}, {kBehaveOffsetRepeat, 0.5, 15},
        {kBehaveOffsetRepeat, -2, 10},  {kBehaveLinear, 4, 10},         {kBehaveLinear, 0, -10},
        {kBehaveLinear, 3.25, 17.5},
    };
    for (const auto &row : rows)
        EXPECT_DOUBLE_EQ(make(row.behaviour)->evaluate(row.time), row.value) << row.behaviour << " at " << row.time;
}

TEST(Envelope, LinearBehaviourLeavesAlongTheCurve) {
    HostEnvelope envelope;
    put(envelope, 0, 0, kShapeHermite).parameters = {0, -4, 0, 0};
    put(envelope, 2, 6, kShapeHermite).parameters = {8, 0, 0, 0};
    envelope.before = envelope.after = kBehaveLinear;
    EXPECT_DOUBLE_EQ(envelope.evaluate(3), 6 + 4);
    EXPECT_DOUBLE_EQ(envelope.evaluate(-1), 2);
    envelope.keys.back()->shape = kShapeStepped;
    EXPECT_DOUBLE_EQ(envelope.evaluate(3), 6);
}

TEST(Envelope, ASingleKeyIsConstantWhateverTheBehaviours) {
    for (int behaviour = kBehaveReset; behaviour <= kBehaveLinear; ++behaviour) {
        HostEnvelope envelope;
        envelope.putKey(1, 7);
        envelope.before = envelope.after = behaviour;
        for (const double time : {0.0, 1.0, 5.0}) EXPECT_EQ(envelope.evaluate(time), 7) << behaviour;
    }
}

TEST(Envelope, InfiniteTimesAreHarmless) {
    const double infinite = std::numeric_limits<double>::infinity();
    for (int behaviour = kBehaveReset; behaviour <= kBehaveLinear; ++behaviour) {
        HostEnvelope envelope;
        envelope.putKey(1, 7);
        envelope.putKey(2, 9);
        envelope.before = envelope.after = behaviour;
        EXPECT_EQ(envelope.evaluate(infinite), 9);
        EXPECT_EQ(envelope.evaluate(-infinite), 7);
        EXPECT_EQ(envelope.evaluate(std::nan("")), 7);
        EXPECT_TRUE(std::isfinite(envelope.evaluate(1e300)));
    }
}

TEST(ChannelGroup, NamesAreUniqueByNumber) {
    const auto root = makeRootGroup("Scene");
    EXPECT_EQ(root->addEnvelope("Color.R", kChannelPercent).name, "Color.R");
    EXPECT_EQ(root->addEnvelope("Color.R", kChannelPercent).name, "Color.R (2)");
    EXPECT_EQ(root->addEnvelope("Color.R", kChannelPercent).name, "Color.R (3)");
    EXPECT_EQ(root->addGroup("Counter").name, "Counter");
    HostChannelGroup &second = root->addGroup("Counter");
    EXPECT_EQ(second.name, "Counter (2)");
    EXPECT_EQ(second.parent, root.get());
    EXPECT_EQ(second.addGroup("Counter").name, "Counter") << "the name is free in another group";
    root->removeEnvelope(*root->findEnvelope("Color.R (2)"));
    EXPECT_EQ(root->addEnvelope("Color.R", kChannelPercent).name, "Color.R (2)");
    EXPECT_EQ(root->findEnvelope("Color"), nullptr);
}

// Each node of a network has a group. The time must not grow as the square of their number.
TEST(ChannelGroup, ManyMembersTakeLittleTime) {
    constexpr int kMembers = 100000;
    constexpr std::chrono::seconds kMost{5}; // it takes less than a tenth of that, except under the sanitizers
    const auto start = std::chrono::steady_clock::now();
    const auto root = makeRootGroup("Scene");
    for (int i = 0; i < kMembers; ++i) {
        root->addGroup("Group of node " + std::to_string(i));
        root->addEnvelope("Envelope of node " + std::to_string(i), kChannelFloat);
    }
    EXPECT_EQ(root->addGroup("Group of node 7").name, "Group of node 7 (2)");
    EXPECT_LT(std::chrono::steady_clock::now() - start, kMost);
}

} // namespace
