// The nodes that combine textures, Blend Color, Blend Scalar and Color Ramp; Bump; and Procedural Pattern.
#include "tests/graph/builtin_fixture.h"

#include "host/services/uv_provider.h"

#include <cmath>
#include <numbers>

namespace velm::host::test {
namespace {

std::string text(const char *entry) { return entry; }

TEST_F(BuiltinTest, BlendsAreTheFormulasOfTheirModes) {
    // Below is 0.8 and the layer 0.5; at 100 %, and at 50 % of 50 %, which is an opacity of 0.25.
    const struct {
        const char *mode;
        double full, quarter;
    } kRows[] = {{"Normal", 0.5, 0.725},     {"Additive", 1.3, 0.925}, {"Subtractive", 0.3, 0.675},
                 {"Difference", 0.3, 0.675}, {"Multiply", 0.4, 0.7},   {"Divide", 1.6, 0.8 / 0.875},
                 {"Screen", 0.9, 0.825},     {"Darken", 0.5, 0.725},   {"Lighten", 0.8, 0.8},
                 {"Negative", 0.7, 0.775},   {"Color Dodge", 1.6, 1},  {"Color Burn", 0.6, 0.75}};
    for (const auto &row : kRows) {
        SCOPED_TRACE(row.mode);
        const Settings full{{"Below", 0.8}, {"Layer", 0.5}, {"Mode", text(row.mode)}};
        Settings quarter = full;
        quarter.insert(quarter.end(), {{"Opacity", 50.0}, {"Coverage", 50.0}});
        EXPECT_NEAR(scalar(add("Blend Scalar", full), "Out"), row.full, 1e-12);
        EXPECT_NEAR(scalar(add("Blend Scalar", quarter), "Out"), row.quarter, 1e-12);
        const Settings colours{
            {"Below", Double3{0.8, 0, 0.8}}, {"Layer", Double3{0.5, 0, 0.5}}, {"Mode", text(row.mode)}};
        const Double3 colour = triple(add("Blend Color", colours), "Color");
        EXPECT_NEAR(colour[0], row.full, 1e-12);
        EXPECT_EQ(colour[1], 0);
        EXPECT_EQ(colour[2], colour[0]);
    }
}

TEST_F(BuiltinTest, BlendsOfSingleComponentsLeaveTheOthers) {
    const std::pair<const char *, Double3> kRows[] = {
        {"Red", {0.5, 0.1, 0.1}}, {"Green", {0.1, 0.6, 0.1}}, {"Blue", {0.1, 0.1, 0.7}}};
    for (const auto &[mode, expected] : kRows) {
        const Settings settings{
            {"Below", Double3{0.1, 0.1, 0.1}}, {"Layer", Double3{0.5, 0.6, 0.7}}, {"Mode", text(mode)}};
        expectTriple(triple(add("Blend Color", settings), "Color"), expected);
    }
}

TEST_F(BuiltinTest, BlendsStayFiniteAndUncoveredLayersShowWhatIsBelow) {
    const Settings bright{{"Below", 0.25}, {"Layer", 1.0}, {"Mode", text("Difference")}};
    EXPECT_EQ(scalar(add("Blend Scalar", bright), "Out"), 0.75);
    const Settings divided{{"Below", 0.5}, {"Layer", 0.0}, {"Mode", text("Divide")}};
    EXPECT_EQ(scalar(add("Blend Scalar", divided), "Out"), 128);
    for (const char *mode : {"Normal", "Additive", "Subtractive", "Difference", "Multiply", "Divide", "Negative"}) {
        const Settings uncovered{{"Below", -0.5}, {"Layer", 3.0}, {"Coverage", 0.0}, {"Mode", text(mode)}};
        EXPECT_EQ(scalar(add("Blend Scalar", uncovered), "Out"), -0.5) << mode;
    }
}

// Three keys at 0, 1 and 3 with the values 0, 1 and 0.
Settings threeKeys(const char *shape) {
    return {{"Keys", 3.0},     {"Position 3", 3.0},      {"Color 3", Double3{0, 0, 0}},
            {"Alpha 3", 50.0}, {"Shape 2", text(shape)}, {"Shape 3", text(shape)}};
}

TEST_F(BuiltinTest, RampsGoFromKeyToKey) {
    const struct {
        const char *shape;
        double at, expected;
    } kRows[] = {
        {"Linear", 0.25, 0.25},
        {"Linear", 2.5, 0.25},
        {"Linear", 1, 1},
        {"Step", 0.99, 0},
        {"Step", 1, 1},
        {"Step", 2.99, 1},
        {"Step", 3, 0},
        // Hermite: the tangents of the first span are 1 and (1/3)(0 - 0) = 0.
        {"Spline", 0.5, 0.5 + 0.125},
        {"Spline", 1, 1},
        // Those of the second are 0 and -1.
        {"Spline", 2, 0.5 + 0.125},
        // Beyond the keys.
        {"Linear", -7, 0},
        {"Linear", 7, 0},
    };
    for (const auto &row : kRows) {
        SCOPED_TRACE(testing::Message() << row.shape << " at " << row.at);
        Settings settings = threeKeys(row.shape);
        settings.emplace_back("Input", row.at);
        const Double3 colour = triple(add("Color Ramp", settings), "Color");
        expectTriple(colour, {row.expected, row.expected, row.expected});
    }
    Settings between = threeKeys("Linear");
    between.emplace_back("Input", 2.0);
    EXPECT_EQ(scalar(add("Color Ramp", between), "Alpha"), 0.75);
}

TEST_F(BuiltinTest, RampsStayFiniteWithKeysOutOfOrder) {
    for (const char *shape : {"Linear", "Spline", "Step"}) {
        Settings settings = threeKeys(shape);
        settings.insert(settings.end(), {{"Position 1", 5.0}, {"Position 3", 1.0}});
        for (const double at : {0.5, 1.0, 2.0, 4.0}) {
            HostNode &ramp = add("Color Ramp", settings);
            applySetting(*panelOf(ramp), {"Input", at, {}});
            EXPECT_TRUE(std::isfinite(triple(ramp, "Color")[0])) << shape << ' ' << at;
        }
    }
}

TEST_F(BuiltinTest, RampsDependOnHowTheSurfaceIsSeen) {
    sample.cosine = 0.5;
    sample.geometricNormal[1] = std::sqrt(0.5);
    sample.rayLength = 20;
    sample.bumpHeight = 0.25;
    const std::pair<const char *, double> kSources[] = {
        {"Incidence Angle", 30.0 / 90}, {"Slope", 45.0 / 90}, {"Distance to Camera", 20.0 / 90}, {"Bump", 0.25 / 90}};
    for (const auto &[source, expected] : kSources) {
        HostNode &ramp = add("Color Ramp", {{"Source", text(source)}, {"Position 2", 90.0}});
        EXPECT_NEAR(triple(ramp, "Color")[0], expected, 1e-12) << source;
    }
    sample.cosine = 2; // of no angle
    EXPECT_EQ(triple(add("Color Ramp", {{"Source", text("Incidence Angle")}, {"Position 2", 90.0}}), "Color")[0], 1);
}

// ---- Bump: heights that rise in one direction tilt the normal by a known angle ----

constexpr double kBumpTolerance = 1e-9;   // of differences of doubles
constexpr double kSingleTolerance = 1e-5; // where the sample's barycentric coordinates, which are floats, count

// Three metres above the origin of a floor that faces up.
class BumpTest : public BuiltinTest {
  protected:
    BumpTest() {
        constexpr double kUnturned[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
        std::copy_n(kUnturned, 9, sample.worldToObject);
        sample.shadingNormal[1] = 1;
        sample.spotSize = 0.01;
        place(3, 0, 4);
    }
    ~BumpTest() override { setUvProvider({}); }

    // A bump whose height is `slope` times an output of Spot Info or of the node after it.
    HostNode &bumpOf(const HostNode &source, const char *output, double slope, double strength = 100) {
        const HostNode &product = add("Multiply Scalar", {{"B", slope}});
        network.connect(source.name, output, product.name, "A");
        HostNode &bump = add("Bump", {{"Strength", strength}});
        network.connect(product.name, "Out", bump.name, "Height");
        return bump;
    }
    // One whose height is `slope` times x in the object's space.
    HostNode &bumpAlongX(double slope, double strength = 100) {
        const HostNode &info = add("Spot Info"), &split = add("Split Vector");
        network.connect(info.name, "Object Position", split.name, "Vector");
        return bumpOf(split, "X", slope, strength);
    }
    void expectTilt(HostNode &bump, double slope, double tolerance = kBumpTolerance) {
        const Double3 normal = triple(bump, "Normal");
        const double length = std::hypot(slope, 1);
        EXPECT_NEAR(normal[0], -slope / length, tolerance);
        EXPECT_NEAR(normal[1], 1 / length, tolerance);
        EXPECT_NEAR(normal[2], 0, tolerance);
    }
};

TEST_F(BumpTest, TiltsTheNormalByTheSlope) {
    expectTilt(bumpAlongX(0), 0);
    expectTilt(bumpAlongX(1), 1); // 45 degrees
    expectTilt(bumpAlongX(-0.5), -0.5);
    expectTilt(bumpAlongX(0.5, 50), 0.25);
    sample.spotSize = 0; // not known
    expectTilt(bumpAlongX(1), 1);
}

TEST_F(BumpTest, LeavesTheNormalWithoutATexture) { expectTilt(add("Bump", {{"Height", 5.0}}), 0); }

TEST_F(BumpTest, FollowsTheObjectsScale) {
    for (std::size_t i = 0; i < 3; ++i) sample.worldToObject[4 * i] = 2; // of half the size
    expectTilt(bumpAlongX(0.5), 1);
}

TEST_F(BumpTest, IsSunkInAtTheBack) {
    sample.rayFlags = kRayBackSide;
    expectTilt(bumpAlongX(1), -1);
}

TEST_F(BumpTest, LeavesTheNormalWhereHeightsAreNotFinite) {
    HostNode &bump = bumpAlongX(1e308);
    place(1e10, 0, 0);
    expectTilt(bump, 0);
}

TEST_F(BumpTest, FollowsUvMaps) {
    // A triangle with the corners (0, 0, 0), (4, 0, 0) and (0, 0, 4) on which u is the fraction of the second corner.
    sample.vertexPositions[1][0] = sample.vertexPositions[2][2] = 4;
    sample.vertexWeights[0] = 0.25F;
    sample.vertexWeights[1] = 0.5F;
    sample.vertexWeights[2] = 0.25F;
    sample.spotSize = 0.5;
    setUvProvider({.lookup = [](const ShadingSample *at, const char *, double *u, double *v) {
        *u = static_cast<double>(at->vertexWeights[1]);
        *v = static_cast<double>(at->vertexWeights[2]);
        return true;
    }});
    expectTilt(bumpOf(add("Spot Info"), "U", 2), 2.0 / 4, kSingleTolerance);
}

// ---- Procedural Pattern, where its patterns have closed forms ----

constexpr double kPatternTolerance = 1e-12;

class PatternTest : public BuiltinTest {
  protected:
    PatternTest() {
        constexpr double kUnturned[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
        std::copy_n(kUnturned, 9, sample.objectToWorld);
    }
    HostNode &pattern(const std::string &kind, Settings settings = {}) {
        settings.emplace_back("Pattern", kind);
        return add("Procedural Pattern", settings);
    }
    double valueAt(HostNode &node, double x, double y, double z) {
        place(x, y, z);
        return scalar(node, "Value");
    }
};

TEST_F(PatternTest, CheckersAlternateAlongEachAxis) {
    HostNode &node = pattern("Checkerboard", {{"Size", Double3{1, 2, 4}}});
    EXPECT_EQ(valueAt(node, 0.5, 1.5, 3.5), 0);
    EXPECT_EQ(valueAt(node, 1.5, 1.5, 3.5), 1);
    EXPECT_EQ(valueAt(node, 1.5, 2.5, 3.5), 0);
    EXPECT_EQ(valueAt(node, 1.5, 2.5, 4.5), 1);
    EXPECT_EQ(valueAt(node, -0.5, 0.5, 0.5), 1);
    EXPECT_EQ(valueAt(node, 0.5, 0, 0), 0) << "on a boundary, which is shifted a little";
}

TEST_F(PatternTest, GridsHaveLinesBetweenTheCells) {
    HostNode &node = pattern("Grid", {{"Thickness", 20.0}});
    sample.geometricNormal[0] = 0.6;
    sample.geometricNormal[1] = 0.8;
    EXPECT_EQ(valueAt(node, 0.5, 0.5, 0.5), 0);
    EXPECT_EQ(valueAt(node, 0.5, 1.09, 0.5), 1);
    EXPECT_EQ(valueAt(node, 0.5, 1.11, 0.5), 0);
    EXPECT_EQ(valueAt(node, 3.95, 0.5, 0.5), 1);
    // A floor at the height of a line shows only the lines across it.
    sample.geometricNormal[0] = 0;
    sample.geometricNormal[1] = 1;
    EXPECT_EQ(valueAt(node, 0.5, 1, 0.5), 0);
    EXPECT_EQ(valueAt(node, 0.5, 1, 1), 1);
}

TEST_F(PatternTest, DotsAreInTheMiddlesOfTheCells) {
    HostNode &node = pattern("Dots", {{"Thickness", 40.0}, {"Size", Double3{2, 2, 2}}});
    EXPECT_EQ(valueAt(node, 1, 1, 1), 1);
    EXPECT_EQ(valueAt(node, 1.39, 1, -1), 1);
    EXPECT_EQ(valueAt(node, 1.41, 1, 1), 0);
    EXPECT_EQ(valueAt(node, 0, 0, 0), 0);
}

// Where all coordinates are whole, every octave of the noise is 0.
TEST_F(PatternTest, NoiseDisappearsAtItsLattice) {
    EXPECT_NEAR(valueAt(pattern("Fractal Noise"), 3, 4, -5), 0.5, kPatternTolerance);
    EXPECT_NEAR(valueAt(pattern("Turbulence"), 3, 4, -5), 0, kPatternTolerance);
    EXPECT_NEAR(valueAt(pattern("Marble"), 3, 4, -5), 0.5, 1e-9);
    EXPECT_NEAR(valueAt(pattern("Wood", {{"Axis", std::string("Y")}}), 1, 7, 1),
                0.5 + 0.5 * std::sin(2 * std::numbers::pi * std::numbers::sqrt2), 1e-9);
}

TEST_F(PatternTest, FractalNoiseIsThatOfTheNodeFractalNoise) {
    HostNode &node = pattern("Fractal Noise", {{"Size", Double3{0.5, 0.5, 0.5}}, {"Octaves", 3.0}});
    HostNode &other = add("Fractal Noise", {{"Scale", 0.5}, {"Octaves", 3.0}});
    for (double x = 0.1; x < 3; x += 0.37) {
        const double value = valueAt(node, x, 1.3, 2.6);
        EXPECT_NEAR(value, scalar(other, "Scalar"), kPatternTolerance);
        EXPECT_NE(value, 0.5);
    }
}

TEST_F(PatternTest, TurbulenceIsTheMagnitudeOfNoise) {
    HostNode &noise = pattern("Fractal Noise", {{"Octaves", 1.0}});
    HostNode &turbulence = pattern("Turbulence", {{"Octaves", 1.0}});
    for (double x = 0.1; x < 3; x += 0.37)
        EXPECT_NEAR(valueAt(turbulence, x, 1.3, 2.6), 2 * std::fabs(valueAt(noise, x, 1.3, 2.6) - 0.5),
                    kPatternTolerance);
}

TEST_F(PatternTest, ContrastAndNegativeChangeTheValue) {
    const double plain = valueAt(pattern("Fractal Noise"), 0.3, 0.4, 0.1);
    EXPECT_NEAR(valueAt(pattern("Fractal Noise", {{"Contrast", 0.5}}), 0.3, 0.4, 0.1), 0.25 + plain / 2,
                kPatternTolerance);
    EXPECT_NEAR(valueAt(pattern("Fractal Noise", {{"Negative", std::string("On")}}), 0.3, 0.4, 0.1), 1 - plain,
                kPatternTolerance);
    EXPECT_EQ(valueAt(pattern("Fractal Noise", {{"Size", Double3{1, 0, 1}}}), 0.3, 0.4, 0.1), 0);
}

TEST_F(PatternTest, AlphaAndHeightFallOff) {
    HostNode &node = pattern("Checkerboard", {{"Size", Double3{4, 2, 4}}, {"Falloff", Double3{0.1, 0, 0}}});
    place(5, 1, 1);
    EXPECT_EQ(scalar(node, "Value"), 1);
    EXPECT_NEAR(scalar(node, "Alpha"), 0.5, kPatternTolerance);
    EXPECT_NEAR(scalar(node, "Height"), 0.5 * 0.1 * 2, kPatternTolerance);
}

} // namespace
} // namespace velm::host::test
