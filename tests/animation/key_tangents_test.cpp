// The tangents of keys, by the shape of each key and its neighbours. Expected tangents are worked out by hand, in value
// per span, from these keys:
//
//     time (s)       0      6      8     10
//     value          2      4     12      8
//     difference         2      8     -4
//
// Between 6 and 8 s, the outgoing tangent takes the fraction 2/8 (its span in the time of both at the key at 6 s), and
// the incoming one 2/4. A tangent at an end of the envelope takes its span whole, with no difference beyond.

#include "tests/animation/curve_fixture.h"

#include <gtest/gtest.h>

#include <array>

using namespace velm::host;

namespace {

constexpr double kRounding = 1e-12; // of a few operations with numbers up to 100

struct Row {
    const char *name;
    int shape;
    std::array<double, 3> tcb;        // tension, continuity, bias
    std::array<double, 4> parameters; // of the curves
    double outgoing, outgoingFirst;   // at 6 s, between keys and as the first key
    double incoming, incomingLast;    // at 8 s, between keys and as the last key
};

// TCB, with a = (1 + C)(1 + B) and b = (1 - C)(1 - B): outgoing (1 - T)(a * 2 + b * 8) / 4 or (1 - T) * b * 8; with
// a = (1 - C)(1 + B) and b = (1 + C)(1 - B): incoming (1 - T)(b * -4 + a * 8) / 2 or (1 - T) * a * 8.
constexpr Row kRows[] = {
    {"plain", kShapeTcb, {0, 0, 0}, {}, 2.5, 8, 2, 8},
    {"tension", kShapeTcb, {0.5, 0, 0}, {}, 1.25, 4, 1, 4},
    {"continuity", kShapeTcb, {0, 0.5, 0}, {}, 1.75, 4, -1, 4},
    {"bias", kShapeTcb, {0, 0, 0.25}, {}, 2.125, 6, 3.5, 10},
    {"all three", kShapeTcb, {0.5, 0.5, 0.25}, {}, 0.84375, 1.5, 0.125, 2.5},
    {"tight", kShapeTcb, {1, 0.5, 0.25}, {}, 0, 0, 0, 0},
    {"hermite", kShapeHermite, {1, 1, 1}, {3, 5, 7, 9}, 1.25, 5, 1.5, 3},
    {"bezier", kShapeBezier1, {1, 1, 1}, {3, 5, 7, 9}, 1.25, 5, 1.5, 3},
    {"linear", kShapeLinear, {1, 1, 1}, {3, 5, 7, 9}, 2.5, 8, 2, 8},
    {"stepped", kShapeStepped, {1, 1, 1}, {3, 5, 7, 9}, 0, 0, 0, 0},
    // The slope of the handle, value / time, times the length of the span.
    {"bezier2", kShapeBezier2, {1, 1, 1}, {-0.5, 3, 0.25, 1}, 8, 8, -12, -12},
    {"upright handles", kShapeBezier2, {0, 0, 0}, {0, 1e-5, 0, -2e-5}, -4, -4, -2, -2},
};

HostKey &putRow(HostEnvelope &envelope, double time, double value, const Row &row) {
    HostKey &key = put(envelope, time, value, row.shape);
    key.tension = row.tcb[0];
    key.continuity = row.tcb[1];
    key.bias = row.tcb[2];
    key.parameters = row.parameters;
    return key;
}

void expectCurve(const HostEnvelope &envelope, Tangents tangents, const char *name) {
    for (const double x : {0.125, 0.25, 0.5, 0.75})
        EXPECT_NEAR(envelope.evaluate(6 + 2 * x), hermite(4, 12, tangents, x), kRounding) << name << " at " << x;
}

TEST(KeyTangents, LeaveByTheShapeOfTheKeyBefore) {
    for (const Row &row : kRows) {
        for (const bool first : {false, true}) {
            HostEnvelope envelope;
            if (!first) put(envelope, 0, 2, kShapeTcb);
            putRow(envelope, 6, 4, row);
            HostKey &to = put(envelope, 8, 12, kShapeHermite);
            put(envelope, 10, 8, kShapeTcb);
            const double leaving = first ? row.outgoingFirst : row.outgoing;
            expectCurve(envelope, {leaving, 0}, row.name);
            to.shape = kShapeBezier1;
            expectCurve(envelope, {leaving, 0}, row.name);
            to.shape = kShapeTcb;
            expectCurve(envelope, {leaving, 2}, row.name);
        }
    }
}

TEST(KeyTangents, ArriveByTheShapeOfTheKeyItself) {
    for (const Row &row : kRows) {
        if (row.shape != kShapeTcb && row.shape != kShapeHermite && row.shape != kShapeBezier1) continue;
        for (const bool last : {false, true}) {
            HostEnvelope envelope;
            put(envelope, 0, 2, kShapeTcb);
            put(envelope, 6, 4, kShapeStepped);
            putRow(envelope, 8, 12, row);
            if (!last) put(envelope, 10, 8, kShapeTcb);
            expectCurve(envelope, {0, last ? row.incomingLast : row.incoming}, row.name);
        }
    }
}

// A curve whose handles lie at thirds of the span is a cubic in time. Keys of other shapes get such a handle.
TEST(KeyTangents, GiveHandlesToTheKeyBeforeABezierSpan) {
    for (const Row &row : kRows) {
        if (row.shape == kShapeBezier2) continue;
        HostEnvelope envelope;
        put(envelope, 0, 2, kShapeTcb);
        putRow(envelope, 6, 4, row);
        put(envelope, 8, 12, kShapeBezier2).parameters = {-2.0 / 3, -1, 0, 0};
        put(envelope, 10, 8, kShapeTcb);
        for (const double x : {0.25, 0.5, 0.75})
            EXPECT_NEAR(envelope.evaluate(6 + 2 * x), bernstein(4, 4 + row.outgoing / 3, 11, 12, x), kRounding)
                << row.name;
    }
}

TEST(KeyTangents, GiveTheSlopeBeyondTheKeysWhateverTheSpan) {
    for (const Row &row : kRows) {
        HostEnvelope before;
        putRow(before, 6, 4, row);
        put(before, 8, 12, kShapeTcb);
        put(before, 10, 8, kShapeTcb);
        before.before = kBehaveLinear;
        for (int shape = kShapeTcb; shape <= kShapeBezier2; ++shape) {
            before.keys[1]->shape = shape;
            EXPECT_NEAR(before.evaluate(5), 4 - row.outgoingFirst / 2, kRounding) << row.name << ", " << shape;
        }
        HostEnvelope after;
        put(after, 0, 2, kShapeTcb);
        put(after, 6, 4, kShapeTcb);
        putRow(after, 8, 12, row);
        after.after = kBehaveLinear;
        EXPECT_NEAR(after.evaluate(11), 12 + 3 * row.incomingLast / 2, kRounding) << row.name;
    }
}

// Three keys of a motion channel in a scene, with the tangents that were stored with the middle one.
TEST(KeyTangents, AgreeWithThoseStoredWithTcbKeys) {
    constexpr double kStoredDigits = 1e-4;
    HostEnvelope envelope;
    put(envelope, 0, 0, kShapeTcb);
    put(envelope, 2.0 / 3, 2.015, kShapeTcb);
    put(envelope, 2, -0.523, kShapeTcb);
    for (const double x : {0.25, 0.5, 0.75}) {
        EXPECT_NEAR(envelope.evaluate(x * 2 / 3), hermite(0, 2.015, {2.015, -0.1743}, x), kStoredDigits);
        EXPECT_NEAR(envelope.evaluate(2.0 / 3 + x * 4 / 3), hermite(2.015, -0.523, {-0.3487, -2.538}, x),
                    kStoredDigits);
    }
}

} // namespace
