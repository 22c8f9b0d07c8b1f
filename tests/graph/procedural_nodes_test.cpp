// The procedural textures Turbulence, Marble, Wood, Cells and Brick.
#include "tests/graph/builtin_fixture.h"

#include "host/graph/builtin/cellular.h"

#include <cmath>
#include <random>

namespace velm::host::test {
namespace {

constexpr double kTextureTolerance = 1e-12;

// A sample of a wall that faces -Z.
class TextureTest : public BuiltinTest {
  protected:
    TextureTest() {
        constexpr double kUnturned[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
        std::copy_n(kUnturned, 9, sample.objectToWorld);
        sample.geometricNormal[2] = -1;
    }
    double at(HostNode &node, double x, double y, double z = 0, const char *output = "Scalar") {
        place(x, y, z);
        return scalar(node, output);
    }
};

// Those that Procedural Pattern has, too, are the same there.
TEST_F(TextureTest, NoiseTexturesAreThePatternsOfTheSameName) {
    for (const char *name : {"Turbulence", "Marble", "Wood"}) {
        HostNode &node = add(name, {{"Size", Double3{0.5, 1, 2}}});
        HostNode &pattern = add("Procedural Pattern", {{"Pattern", std::string(name)}, {"Size", Double3{0.5, 1, 2}}});
        for (double x = 0.1; x < 3; x += 0.37) {
            const double value = at(node, x, 1.3, 2.6);
            EXPECT_NEAR(value, scalar(pattern, "Value"), kTextureTolerance) << name;
            EXPECT_NEAR(scalar(node, "Height"), 0.1 * 0.5 * value, kTextureTolerance) << name;
            expectTriple(triple(node, "Color"), {value, value, value});
        }
    }
}

TEST_F(TextureTest, WithoutDistortionThereAreEvenWavesAndRings) {
    HostNode &marble = add("Marble", {{"Distortion", 0.0}, {"Size", Double3{1, 2, 1}}});
    EXPECT_NEAR(at(marble, 0.3, 0.5), 1, kTextureTolerance);
    EXPECT_NEAR(at(marble, 0.7, 1.5), 0, kTextureTolerance);
    HostNode &wood = add("Wood", {{"Distortion", 0.0}, {"Axis", std::string("Z")}});
    EXPECT_NEAR(at(wood, 0.15, 0.2), 1, kTextureTolerance);
    EXPECT_NEAR(at(wood, 0.45, 0.6, 9), 0, kTextureTolerance);
}

TEST_F(TextureTest, TexturesWithoutASizeHaveTheFirstColour) {
    for (const char *name : {"Turbulence", "Marble", "Wood", "Cells"}) {
        HostNode &node = add(name, {{"Size", Double3{1, 0, 1}}, {"Color 1", Double3{0.1, 0.2, 0.3}}});
        EXPECT_EQ(at(node, 0.3, 0.4), 0) << name;
        expectTriple(triple(node, "Color"), {0.1, 0.2, 0.3});
    }
    EXPECT_EQ(at(add("Brick", {{"Size", Double3{1, 0, 1}}}), 0.5, 0.5), 0);
}

// ---- Cells ----

// Without randomness the points are in the middles of the cubes of a lattice.
TEST_F(TextureTest, RegularCellsAreCubes) {
    const auto cells = [&](const char *feature) -> HostNode & {
        return add("Cells", {{"Randomness", 0.0}, {"Feature", std::string(feature)}, {"Size", Double3{2, 2, 2}}});
    };
    EXPECT_NEAR(at(cells("Nearest Point"), 1, 1, 1), 0, kTextureTolerance);
    EXPECT_NEAR(at(cells("Nearest Point"), 1.5, 1, 1), 0.25, kTextureTolerance);
    EXPECT_NEAR(at(cells("Nearest Point"), 2, 2, 2), std::sqrt(0.75), kTextureTolerance);
    EXPECT_NEAR(at(cells("Second Point"), 1.5, 1, 1), 0.75, kTextureTolerance);
    EXPECT_NEAR(at(cells("Edges"), 1.5, 1, 1), 0.5, kTextureTolerance);
    EXPECT_NEAR(at(cells("Edges"), 2, 1, 1), 0, kTextureTolerance);
    HostNode &numbers = cells("Cells");
    EXPECT_EQ(at(numbers, 0.1, 0.1, 0.1), at(numbers, 1.9, 1.9, 1.9));
    EXPECT_NE(at(numbers, 0.1, 0.1, 0.1), at(numbers, 2.1, 0.1, 0.1));
}

// A distance to a set of points cannot change by more than the way that one goes. It would where a point is overlooked.
TEST(Cellular, DistancesChangeNoFasterThanThePosition) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> anywhere(-20, 20);
    constexpr double kWay = 0.02, kRounding = 1e-9;
    for (int walk = 0; walk < 500; ++walk) {
        double position[3] = {anywhere(random), anywhere(random), anywhere(random)};
        NearestPoints before = nearestPoints(position, 1);
        for (int step = 0; step < 60; ++step) {
            position[walk % 3] += kWay;
            const NearestPoints now = nearestPoints(position, 1);
            ASSERT_LE(now.first, now.second);
            ASSERT_LE(std::fabs(now.first - before.first), kWay + kRounding);
            ASSERT_LE(std::fabs(now.second - before.second), kWay + kRounding);
            if (now.number != before.number) {
                ASSERT_LE(now.second - now.first, 2 * kWay + kRounding) << "not at an edge";
            }
            before = now;
        }
    }
}

// There is one point for each unit of volume: a ball around a position holds as many as its volume on average. So the
// mean of (4 pi / 3) first^3, which is 1 for points without any order, is less for points that are spread evenly.
TEST(Cellular, PointsAreSpreadEvenly) {
    std::mt19937 random(6);
    std::uniform_real_distribution<double> anywhere(-1000, 1000);
    constexpr int kCount = 40000;
    double volume = 0, numbers = 0;
    for (int i = 0; i < kCount; ++i) {
        const double position[3] = {anywhere(random), anywhere(random), anywhere(random)};
        const NearestPoints points = nearestPoints(position, 1);
        volume += 4 * std::acos(-1.0) / 3 * std::pow(points.first, 3) / kCount;
        numbers += points.number / 4294967295.0 / kCount;
    }
    EXPECT_GT(volume, 0.6);
    EXPECT_LT(volume, 0.95);
    EXPECT_NEAR(numbers, 0.5, 0.01);
}

TEST(Cellular, IsZeroWhereThereIsNoPosition) {
    const double position[3] = {0, INFINITY, 0};
    const NearestPoints points = nearestPoints(position, 1);
    EXPECT_EQ(points.first, 0);
    EXPECT_EQ(points.second, 0);
}

// ---- Brick ----

class BrickTest : public TextureTest {
  protected:
    // Bricks of 4 by 2 metres on a wall, with mortar of 0.4 m.
    HostNode &brick(Settings settings = {}) {
        settings.insert(settings.end(), {{"Size", Double3{4, 2, 8}}, {"Mortar Width", 0.4}});
        return add("Brick", settings);
    }
};

TEST_F(BrickTest, CoursesAreShifted) {
    HostNode &node = brick();
    EXPECT_EQ(at(node, 2, 1), 1);
    EXPECT_EQ(at(node, 0.19, 1), 0);
    EXPECT_EQ(at(node, 0.21, 1), 1);
    EXPECT_EQ(at(node, 3.81, 1), 0);
    EXPECT_EQ(at(node, 2, 0.19), 0);
    EXPECT_EQ(at(node, 0.1, 3), 1) << "the second course";
    EXPECT_EQ(at(node, 2, 3), 0);
    EXPECT_EQ(at(node, 2, -1), 0) << "the course below";
    EXPECT_EQ(at(node, 2, 5), 1);
    EXPECT_EQ(at(brick({{"Offset", 0.0}}), 2, 3), 1);
    EXPECT_NEAR(at(node, 2, 1, 0, "Height"), 0.4, kTextureTolerance);
}

TEST_F(BrickTest, PolygonsThatFaceOtherWaysHaveTheOtherSizes) {
    sample.geometricNormal[0] = 1;
    sample.geometricNormal[2] = 0;
    EXPECT_EQ(at(brick(), 0, 1, 4), 1) << "along Z";
    EXPECT_EQ(at(brick(), 0, 1, 0.1), 0);
    sample.geometricNormal[0] = 0;
    sample.geometricNormal[1] = 1;
    EXPECT_EQ(at(brick(), 2, 0, 4), 1);
    EXPECT_EQ(at(brick(), 2, 0, 0.1), 0) << "courses along Z";
    EXPECT_EQ(at(brick(), 2, 0, 12), 0) << "the second course";
}

TEST_F(BrickTest, EdgesAreFilteredOverTheFootprint) {
    HostNode &node = brick();
    sample.spotSize = 0.1;
    EXPECT_NEAR(at(node, 0.2, 1), 0.5, kTextureTolerance);
    EXPECT_NEAR(at(node, 0.225, 1), 0.75, kTextureTolerance);
    EXPECT_NEAR(at(node, 0.2, 0.2), 0.25, kTextureTolerance) << "a corner";
    // A footprint of whole bricks sees their share of the wall.
    sample.spotSize = 4;
    EXPECT_NEAR(at(node, 0.7, 0.3), 0.9 * 0.8, kTextureTolerance);
}

TEST_F(BrickTest, ColoursAreBetweenTheTwoOfTheBricks) {
    HostNode &node =
        brick({{"Color 1", Double3{0, 0, 0.5}}, {"Color 2", Double3{1, 0, 0.5}}, {"Mortar", Double3{0, 1, 0}}});
    double low = 1, high = 0, sum = 0;
    constexpr int kBricks = 400;
    for (int i = 0; i < kBricks; ++i) {
        const double x = 4.0 * i + 2, number = at(node, x, 1, 0, "Brick");
        expectTriple(triple(node, "Color"), {number, 0, 0.5});
        EXPECT_EQ(at(node, x + 1.5, 0.5, 0, "Brick"), number) << "the same brick";
        low = std::min(low, number);
        high = std::max(high, number);
        sum += number / kBricks;
    }
    EXPECT_LT(low, 0.05);
    EXPECT_GT(high, 0.95);
    EXPECT_NEAR(sum, 0.5, 0.05);
    place(0, 1, 0);
    expectTriple(triple(node, "Color"), {0, 1, 0});
}

} // namespace
} // namespace velm::host::test
