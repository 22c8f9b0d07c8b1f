// Sines and cosines of many angles at once, against the maths library and known values.
#include "shading/sincos.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

namespace velm::plugin {
namespace {

constexpr double kRounding = 3e-16; // as documented: 2 units in the last place of results just below 1

struct Both {
    std::vector<double> sines, cosines;

    explicit Both(const std::vector<double> &angles) : sines(angles.size()), cosines(angles.size()) {
        sinesAndCosines(angles.data(), static_cast<int>(angles.size()), sines.data(), cosines.data());
    }
};

void expectRight(const std::vector<double> &angles, double tolerance) {
    const Both both(angles);
    for (size_t i = 0; i < angles.size(); ++i) {
        const long double angle = static_cast<long double>(angles[i]);
        ASSERT_NEAR(both.sines[i], static_cast<double>(std::sin(angle)), tolerance) << angles[i];
        ASSERT_NEAR(both.cosines[i], static_cast<double>(std::cos(angle)), tolerance) << angles[i];
    }
}

TEST(SinesAndCosines, AgreeWithTheMathsLibraryOverManyTurns) {
    std::mt19937_64 random(1);
    for (const double farthest : {1.0, std::numbers::pi, 20.0, 1000.0, 1.5e6}) {
        std::uniform_real_distribution<double> angle(-farthest, farthest);
        std::vector<double> angles(20000);
        for (double &each : angles) each = angle(random);
        expectRight(angles, kRounding);
    }
}

TEST(SinesAndCosines, AgreeAboutEveryEighthOfATurn) {
    std::vector<double> angles;
    for (int eighth = -40; eighth <= 40; ++eighth) {
        const double angle = eighth * (std::numbers::pi / 4);
        angles.insert(angles.end(), {angle, std::nextafter(angle, -1e9), std::nextafter(angle, 1e9), angle + 1e-9});
    }
    expectRight(angles, kRounding);
}

TEST(SinesAndCosines, AreExactAtNothing) {
    const Both both({0.0, 0.0, 0.0});
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(both.sines[i], 0.0);
        EXPECT_EQ(both.cosines[i], 1.0);
    }
}

TEST(SinesAndCosines, LieOnTheUnitCircle) {
    std::vector<double> angles;
    for (int i = 0; i < 5000; ++i) angles.push_back(i * 0.01 - 20);
    const Both both(angles);
    for (size_t i = 0; i < angles.size(); ++i)
        ASSERT_NEAR(both.sines[i] * both.sines[i] + both.cosines[i] * both.cosines[i], 1.0, 2 * kRounding);
}

TEST(SinesAndCosines, OfFarAnglesAreTheMathsLibrarys) {
    const std::vector<double> angles = {1.7e6, -1e15, 3e300, 0.5};
    const Both both(angles);
    for (size_t i = 0; i < angles.size(); ++i) {
        EXPECT_NEAR(both.sines[i], std::sin(angles[i]), kRounding);
        EXPECT_NEAR(both.cosines[i], std::cos(angles[i]), kRounding);
    }
}

TEST(SinesAndCosines, OfWhatIsNoAngleAreNoNumbersAndLeaveTheOthersAlone) {
    for (const double none : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        const Both both({1.0, none, 2.0});
        EXPECT_TRUE(std::isnan(both.sines[1]));
        EXPECT_TRUE(std::isnan(both.cosines[1]));
        EXPECT_NEAR(both.sines[0], std::sin(1.0), kRounding);
        EXPECT_NEAR(both.cosines[2], std::cos(2.0), kRounding);
    }
}

// A picture must not depend on the machine of a farm that rendered it.
TEST(SinesAndCosines, AreTheSameWithAllProcessorsInstructionsAndWithThoseOfSome) {
    if (!hasWideVectors()) GTEST_SKIP() << "this processor has one kind";
    std::mt19937_64 random(2);
    std::uniform_real_distribution<double> angle(-1.59e6, 1.59e6), aTurn(-7, 7);
    for (int count = 0; count < 300; ++count) {
        const auto size = static_cast<size_t>(count);
        std::vector<double> angles(size), sines(size), cosines(size), wideSines(size), wideCosines(size);
        for (size_t i = 0; i < size; ++i) angles[i] = i % 2 == 0 ? aTurn(random) : angle(random);
        EXPECT_TRUE(nearSinesAndCosinesNarrow(angles.data(), count, sines.data(), cosines.data()));
        EXPECT_TRUE(nearSinesAndCosinesWide(angles.data(), count, wideSines.data(), wideCosines.data()));
        EXPECT_EQ(sines, wideSines);
        EXPECT_EQ(cosines, wideCosines);
    }
}

TEST(SinesAndCosines, OneAngleTooFarIsSeenWhereverItStands) {
    for (const double far : {1.6e6, -1e300, std::numeric_limits<double>::quiet_NaN()}) {
        for (size_t place = 0; place < 11; ++place) {
            std::vector<double> angles(11, 1.5), sines(11), cosines(11);
            angles[place] = far;
            EXPECT_FALSE(nearSinesAndCosinesNarrow(angles.data(), 11, sines.data(), cosines.data())) << place;
            if (!hasWideVectors()) continue;
            EXPECT_FALSE(nearSinesAndCosinesWide(angles.data(), 11, sines.data(), cosines.data())) << place;
        }
    }
}

#if defined(__x86_64__) && !defined(_WIN32)
TEST(SinesAndCosines, UseTheWideVectorsThatTheCompilersOwnQueryFinds) {
    EXPECT_EQ(hasWideVectors(), __builtin_cpu_supports("avx2") != 0);
}
#endif

TEST(SinesAndCosines, OfNoAnglesWriteNothing) {
    double sine = 7, cosine = 8;
    sinesAndCosines(nullptr, 0, &sine, &cosine);
    EXPECT_EQ(sine, 7);
    EXPECT_EQ(cosine, 8);
}

} // namespace
} // namespace velm::plugin
