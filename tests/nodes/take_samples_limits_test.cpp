// Take Samples with extreme numbers: infinities, NaNs and signed zeros.
#include "tests/module/test_node.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace velm::plugin {
namespace {

using Colour = std::array<double, 3>;

constexpr double kInfinity = std::numeric_limits<double>::infinity(), kMost = std::numeric_limits<double>::max(),
                 kNoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kEnds[] = {0.0, -0.0, 0.5, kMost, -kMost, kInfinity, -kInfinity, kNoNumber};

// A reference for one channel, with a comparison for each limit: a comparison with a NaN is false.
double shiftedAndClamped(double shift, double colour, const double *low, const double *high) {
    double value = shift + colour;
    if (low && value < *low) value = *low;
    if (high && value > *high) value = *high;
    return value;
}

bool isSame(double a, double b) { return std::isnan(a) ? std::isnan(b) : a == b && std::signbit(a) == std::signbit(b); }

class TakeSamplesLimits : public testing::Test {
  protected:
    FakeHost host;
    TestNode node{host, "Velm Take Samples"};
    ShadingSample sample = plainSample();
    double shift = 0, colour = 0, low = 0, high = 0;

    void feedWith(const std::string &channel, const double *from) {
        node.input(channel).source = [from](ShadingSample *, void *value) { *static_cast<double *>(value) = *from; };
    }
    Colour result() {
        const HostNodeValue value = node.evaluate("Color", sample);
        return {value.numbers[0], value.numbers[1], value.numbers[2]};
    }
    // The channels with a wrong result, over all combinations of extreme numbers with these boxes on.
    int wrong(bool clampsLow, bool clampsHigh) {
        int count = 0;
        for (const double s : kEnds)
            for (const double c : kEnds)
                for (const double l : kEnds)
                    for (const double h : kEnds) {
                        shift = s, colour = c, low = l, high = h;
                        const double expected =
                            shiftedAndClamped(s, c, clampsLow ? &l : nullptr, clampsHigh ? &h : nullptr);
                        for (const double component : result()) count += !isSame(component, expected);
                    }
        return count;
    }
};

TEST_F(TakeSamplesLimits, ALimitCountsWhileItsBoxIsOnAndAComparisonWithNoNumberIsNone) {
    node.set(0x8001, 1); // the minimum of one sample is the sample itself, without a sum
    node.set(0x8002, 1);
    for (const std::string letter : {"R", "G", "B"}) {
        feedWith(letter + " Shift", &shift);
        feedWith(letter + " Low", &low);
        feedWith(letter + " High", &high);
    }
    node.input("Color").source = [this](ShadingSample *, void *value) {
        for (int i = 0; i < 3; ++i) static_cast<double *>(value)[i] = colour;
    };
    for (const bool clampsLow : {false, true})
        for (const bool clampsHigh : {false, true}) {
            for (const unsigned int box : {0x8004u, 0x8009u, 0x800eu}) node.set(box, clampsLow);
            for (const unsigned int box : {0x8006u, 0x800bu, 0x8010u}) node.set(box, clampsHigh);
            EXPECT_EQ(wrong(clampsLow, clampsHigh), 0) << clampsLow << clampsHigh;
        }
}

// Only a strictly darker, or brighter, sample replaces the current one.
TEST_F(TakeSamplesLimits, ASampleWithoutABrightnessReplacesNoneAndIsReplacedByNone) {
    const Colour plain = {0.5, 0.25, 2}, none = {0.125, kNoNumber, 0.75}, cancelling = {kInfinity, -kInfinity, 0.75};
    for (const int mode : {3, 4})
        for (const Colour &odd : {none, cancelling})
            for (const bool oddFirst : {false, true}) {
                int evaluations = 0;
                node.input("Color").source = [&](ShadingSample *, void *value) {
                    const Colour &next = (evaluations++ == 0) == oddFirst ? odd : plain;
                    for (size_t i = 0; i < 3; ++i) static_cast<double *>(value)[i] = next[i];
                };
                node.set(0x8001, mode);
                node.set(0x8002, 3);
                const Colour kept = result(), &expected = oddFirst ? odd : plain;
                for (size_t i = 0; i < 3; ++i) EXPECT_TRUE(isSame(kept[i], expected[i])) << mode << oddFirst;
                EXPECT_EQ(evaluations, 3);
            }
}

} // namespace
} // namespace velm::plugin
