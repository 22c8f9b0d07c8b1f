// The parts of the conformance program: writing numbers, and comparing reports.
#include "tests/platforms/hex_float.h"
#include "tests/platforms/report.h"

#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <stdexcept>

namespace velm::plugin {
namespace {

using Limits = std::numeric_limits<double>;

TEST(HexFloat, WritesAsTheCLibraryReads) {
    for (const double value : {0.0, -0.0, 1.0, -1.5, 0.1, 1e300, -1e-300, Limits::min(), Limits::denorm_min(),
                               Limits::max(), Limits::infinity(), -Limits::infinity()}) {
        const double back = std::strtod(hexFloat(value).c_str(), nullptr);
        EXPECT_EQ(back, value) << hexFloat(value);
        EXPECT_EQ(std::signbit(back), std::signbit(value)) << hexFloat(value);
    }
    EXPECT_EQ(hexFloat(Limits::quiet_NaN()), "nan");
    EXPECT_EQ(hexFloat(-Limits::quiet_NaN()), "nan");
    EXPECT_EQ(hexFloat(3.0), "0x1.8p+1");
}

TEST(HexFloat, ReadsWhatItWrote) {
    for (const double value : {0.0, -0.0, 1.0, -1.5, 0.1, 1e300, -1e-300, Limits::min(), Limits::denorm_min(),
                               Limits::max(), Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN()})
        EXPECT_EQ(hexFloat(fromHexFloat(hexFloat(value))), hexFloat(value));
}

TEST(HexFloat, RefusesOtherTexts) {
    for (const char *text : {"", "1.0", "0x2p+0", "0x1.8", "0x1.8gp+0", "unset"})
        EXPECT_THROW(fromHexFloat(text), std::invalid_argument) << text;
}

TEST(UnitsApart, CountsDoublesBetween) {
    const double next = std::nextafter(1.0, 2.0);
    EXPECT_EQ(unitsApart(1.0, 1.0), 0u);
    EXPECT_EQ(unitsApart(1.0, next), 1u);
    EXPECT_EQ(unitsApart(next, 1.0), 1u);
    EXPECT_EQ(unitsApart(Limits::denorm_min(), -Limits::denorm_min()), 2u);
    EXPECT_EQ(unitsApart(0.0, -0.0), 0u);
    EXPECT_EQ(unitsApart(Limits::quiet_NaN(), Limits::quiet_NaN()), 0u);
    EXPECT_EQ(unitsApart(Limits::quiet_NaN(), 1.0), std::numeric_limits<uint64_t>::max());
}

TEST(SavedBytes, AreTheHostsBinaryForm) {
    RecordedState state;
    state.integer(-2).text("ab").text("abc").begin(0x4d4f4445).integer(5).end().parm({1.0});
    EXPECT_EQ(savedBytes(state), " fffe616200006162 63004d4f44450002 00053ff000000000 0000");
}

std::vector<std::string> faultsOf(const Report &report, const Report &reference) {
    std::vector<std::string> faults;
    compare(report, reference, faults);
    return faults;
}

const Report kSqrt = {"node Velm Sqrt", "saved 0001", "1 Value 0x1p+0"};

TEST(Compare, FindsNothingInEqualReports) { EXPECT_TRUE(faultsOf(kSqrt, kSqrt).empty()); }

TEST(Compare, AllowsNoDifferenceForUnlistedNodes) {
    EXPECT_EQ(faultsOf({kSqrt[0], kSqrt[1], "1 Value 0x1.0000000000001p+0"}, kSqrt).size(), 1u);
}

TEST(Compare, AllowsTheListedDifferenceAndNoMore) {
    const Report reference = {"node Velm Exponential Decay (Scalar)", "1 Scalar 0x1p+0"};
    EXPECT_TRUE(faultsOf({reference[0], "1 Scalar 0x1.0000000000002p+0"}, reference).empty());
    EXPECT_EQ(faultsOf({reference[0], "1 Scalar 0x1.0000000000003p+0"}, reference).size(), 1u);
}

TEST(Compare, FindsDifferentBytesOutputsAndMissingLines) {
    EXPECT_EQ(faultsOf({kSqrt[0], "saved 0002", kSqrt[2]}, kSqrt).size(), 1u);
    EXPECT_EQ(faultsOf({kSqrt[0], kSqrt[1], "1 Value unset"}, kSqrt).size(), 1u);
    EXPECT_EQ(faultsOf({kSqrt[0], kSqrt[1]}, kSqrt).size(), 1u);
    EXPECT_EQ(faultsOf(kSqrt, {kSqrt[0], kSqrt[1]}).size(), 1u);
    EXPECT_EQ(faultsOf({}, {}).size(), 0u);
}

TEST(Compare, CountsWhatDiffers) {
    std::vector<std::string> faults;
    const auto nodes = compare({kSqrt[0], kSqrt[1], "1 Value 0x1.0000000000003p+0"}, kSqrt, faults);
    ASSERT_EQ(nodes.size(), 1u);
    EXPECT_EQ(nodes[0].numbers, 1);
    EXPECT_EQ(nodes[0].different, 1);
    EXPECT_EQ(nodes[0].worst, 3u);
}

} // namespace
} // namespace velm::plugin
