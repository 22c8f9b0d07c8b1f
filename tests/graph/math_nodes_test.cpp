// Scalar Math and Vector Math: results that are computed by hand, and those of arguments without a result.
#include "tests/graph/builtin_fixture.h"

#include <cmath>
#include <numbers>

namespace velm::host::test {
namespace {

constexpr double kMathTolerance = 1e-12;
constexpr double kPi = std::numbers::pi;

struct ScalarRow {
    const char *operation;
    double a, b, c, expected;
};

class MathTest : public BuiltinTest {
  protected:
    double computed(const ScalarRow &row) {
        HostNode &node = add("Scalar Math", {{"A", row.a}, {"B", row.b}, {"C", row.c}});
        applySetting(*panelOf(node), {"Operation", std::string(row.operation), {}});
        return scalar(node, "Out");
    }
    void expectRows(std::initializer_list<ScalarRow> rows) {
        for (const ScalarRow &row : rows) {
            SCOPED_TRACE(testing::Message() << row.operation << " of " << row.a << ", " << row.b << " and " << row.c);
            EXPECT_NEAR(computed(row), row.expected, kMathTolerance);
        }
    }
    HostNode &vectorNode(const char *operation, const Double3 &a, const Double3 &b, double factor) {
        return add("Vector Math", {{"A", a}, {"B", b}, {"Factor", factor}, {"Operation", std::string(operation)}});
    }
};

TEST_F(MathTest, ScalarOperationsAreAsComputedByHand) {
    expectRows({
        {"Add", 2, 3, 9, 5},
        {"Subtract", 2, 3, 9, -1},
        {"Multiply", 2, -3, 9, -6},
        {"Divide", 3, 2, 9, 1.5},
        {"Power", 4, -0.5, 9, 0.5},
        {"Power", -2, 3, 9, -8},
        {"Logarithm", 8, 2, 9, 3},
        {"Logarithm", 8, 0.5, 9, -3},
        {"Exponential", 1, 0, 0, std::numbers::e},
        {"Reciprocal", -4, 0, 0, -0.25},
        {"Absolute", -4, 0, 0, 4},
        {"Negate", -4, 0, 0, 4},
        {"Invert", 0.25, 0, 0, 0.75},
        {"Sign", -4, 0, 0, -1},
        {"Sign", 0, 0, 0, 0},
        {"Sign", 0.1, 0, 0, 1},
        {"Floor", -1.5, 0, 0, -2},
        {"Ceiling", -1.5, 0, 0, -1},
        {"Round", 2.5, 0, 0, 3},
        {"Round", -2.5, 0, 0, -3},
        {"Fraction", -1.25, 0, 0, 0.75},
        {"Modulo", 7, 3, 0, 1},
        {"Modulo", -7, 3, 0, 2},
        {"Modulo", 7, -3, 0, -2},
        {"Snap", 1.3, 0.5, 0, 1.5},
        {"Snap", -1.2, 0.5, 0, -1},
        {"Snap", 1.3, 0, 0, 1.3},
        {"Minimum", 2, 3, 0, 2},
        {"Maximum", 2, 3, 0, 3},
        {"Clamp", 5, 1, 4, 4},
        {"Clamp", 0, 1, 4, 1},
        {"Clamp", 2, 4, 1, 1},
        {"Mix", 2, 6, 0.25, 3},
    });
}

TEST_F(MathTest, ShapesAndComparisonsAreAsComputedByHand) {
    expectRows({
        {"Step", 1, 2, 0, 0},
        {"Step", 2, 2, 0, 1},
        {"Smooth Step", 2.5, 2, 4, 0.15625},
        {"Smooth Step", 3.5, 4, 2, 0.15625},
        {"Smooth Step", 1, 2, 4, 0},
        {"Smooth Step", 5, 2, 4, 1},
        {"Smooth Step", 2, 2, 2, 1},
        {"Smooth Step", 1, 2, 2, 0},
        {"Remap", 10, 2, 4, 4},
        {"Remap", 1, 2, 4, -0.5},
        {"Ping-Pong", 1.5, 2, 0, 1.5},
        {"Ping-Pong", 2.5, 2, 0, 1.5},
        {"Ping-Pong", 4.5, 2, 0, 0.5},
        {"Ping-Pong", -0.5, 2, 0, 0.5},
        {"Ping-Pong", 2.5, -2, 0, 1.5},
        {"Equal", 1, 1.25, 0.25, 1},
        {"Equal", 1, 1.5, 0.25, 0},
        {"Less Than", 1, 2, 0, 1},
        {"Less Than", 2, 2, 0, 0},
        {"Greater Than", 3, 2, 0, 1},
        {"Greater Than", 2, 2, 0, 0},
    });
}

TEST_F(MathTest, AnglesAreInRadians) {
    expectRows({
        {"Sine", kPi / 6, 0, 0, 0.5},
        {"Cosine", kPi / 3, 0, 0, 0.5},
        {"Tangent", kPi / 4, 0, 0, 1},
        {"Arcsine", 0.5, 0, 0, kPi / 6},
        {"Arccosine", 0.5, 0, 0, kPi / 3},
        {"Arctangent", -1, 0, 0, -kPi / 4},
        {"Arctangent 2", 1, -1, 0, 3 * kPi / 4},
        {"To Radians", 180, 0, 0, kPi},
        {"To Degrees", kPi / 2, 0, 0, 90},
    });
}

TEST_F(MathTest, ArgumentsWithoutAResultGiveZero) {
    expectRows({
        {"Divide", 1, 0, 0, 0},
        {"Divide", 0, 0, 0, 0},
        {"Power", -8, 1.0 / 3, 0, 0},
        {"Power", 0, -1, 0, 0},
        {"Power", 1e200, 2, 0, 0},
        {"Logarithm", 0, 2, 0, 0},
        {"Logarithm", -1, 2, 0, 0},
        {"Logarithm", 2, 0, 0, 0},
        {"Logarithm", 2, -2, 0, 0},
        {"Logarithm", 2, 1, 0, 0},
        {"Exponential", 1000, 0, 0, 0},
        {"Reciprocal", 0, 0, 0, 0},
        {"Modulo", 1, 0, 0, 0},
        {"Remap", 1, 2, 2, 0},
        {"Ping-Pong", 1, 0, 0, 0},
        {"Add", 1.7e308, 1.7e308, 0, 0},
    });
}

TEST_F(MathTest, TheArcsineAndArccosineLimitTheirArguments) {
    expectRows({{"Arcsine", 1.5, 0, 0, kPi / 2},
                {"Arcsine", -1.5, 0, 0, -kPi / 2},
                {"Arccosine", 1.5, 0, 0, 0},
                {"Arccosine", -1.5, 0, 0, kPi}});
}

TEST_F(MathTest, AConnectedOperationIsLimitedToThePopup) {
    HostNode &node = add("Scalar Math", {{"A", 90.0}, {"B", 7.0}});
    HostNode &index = add("Constant Integer");
    network.connect(index.name, "Integer", node.name, "Operation");
    const auto resultOf = [&](double operation) {
        applySetting(*panelOf(index), {"Integer", operation, {}});
        return scalar(node, "Out");
    };
    EXPECT_EQ(resultOf(-5), 97); // Add
    EXPECT_EQ(resultOf(1), 83);
    EXPECT_NEAR(resultOf(1000), 90 * 180 / kPi, kMathTolerance * 1e4); // To Degrees
}

struct VectorRow {
    const char *operation;
    Double3 a, b;
    double factor;
    Double3 expected;
};

TEST_F(MathTest, VectorOperationsAreAsComputedByHand) {
    const VectorRow kRows[] = {
        {"Add", {1, 2, 3}, {10, 20, 30}, 0, {11, 22, 33}},
        {"Subtract", {1, 2, 3}, {10, 20, 30}, 0, {-9, -18, -27}},
        {"Multiply", {1, 2, 3}, {4, 5, 6}, 0, {4, 10, 18}},
        {"Divide", {1, 2, 3}, {2, 0, -4}, 0, {0.5, 0, -0.75}},
        {"Scale", {1, 2, -3}, {}, 2, {2, 4, -6}},
        {"Mix", {1, 2, 3}, {3, 2, -1}, 0.25, {1.5, 2, 2}},
        {"Minimum", {1, 5, 3}, {2, 4, 3}, 0, {1, 4, 3}},
        {"Maximum", {1, 5, 3}, {2, 4, 3}, 0, {2, 5, 3}},
        {"Absolute", {-1, 0, 3}, {}, 0, {1, 0, 3}},
        {"Negate", {-1, 2, 3}, {}, 0, {1, -2, -3}},
        {"Floor", {-1.5, 2.5, 3}, {}, 0, {-2, 2, 3}},
        {"Fraction", {-1.25, 2.5, 3}, {}, 0, {0.75, 0.5, 0}},
        {"Normalize", {0, 3, 4}, {}, 0, {0, 0.6, 0.8}},
        {"Normalize", {0, 0, 0}, {}, 0, {0, 0, 0}},
        {"Cross Product", {1, 0, 0}, {0, 1, 0}, 0, {0, 0, 1}},
        {"Cross Product", {1, 2, 3}, {4, 5, 6}, 0, {-3, 6, -3}},
        {"Dot Product", {1, 2, 3}, {4, -5, 6}, 0, {12, 12, 12}},
        {"Length", {2, 3, 6}, {}, 0, {7, 7, 7}},
        {"Distance", {3, 3, 6}, {1, 0, 0}, 0, {7, 7, 7}},
        {"Reflect", {1, -1, 0}, {0, 2, 0}, 0, {1, 1, 0}},
        {"Reflect", {1, -1, 0}, {0, -2, 0}, 0, {1, 1, 0}},
        {"Reflect", {1, -1, 0}, {0, 0, 0}, 0, {1, -1, 0}},
        {"Project", {3, 4, 5}, {0, 2, 0}, 0, {0, 4, 0}},
        {"Project", {3, 4, 5}, {0, 0, 0}, 0, {0, 0, 0}},
        {"Rotate", {1, 0, 2}, {0, 0, 3}, kPi / 2, {0, 1, 2}},
        {"Rotate", {1, 2, 3}, {1, 1, 1}, 2 * kPi / 3, {3, 1, 2}},
        {"Rotate", {1, 2, 3}, {0, 0, 0}, 1, {1, 2, 3}},
    };
    for (const VectorRow &row : kRows) {
        SCOPED_TRACE(row.operation);
        HostNode &node = vectorNode(row.operation, row.a, row.b, row.factor);
        expectTriple(triple(node, "Vector"), row.expected);
    }
}

TEST_F(MathTest, ScalarsOfVectorsAreTheResultOrItsLength) {
    EXPECT_NEAR(scalar(vectorNode("Dot Product", {1, 2, 3}, {4, -5, 6}, 0), "Scalar"), 12, kMathTolerance);
    EXPECT_NEAR(scalar(vectorNode("Add", {1, 2, 3}, {1, 1, 3}, 0), "Scalar"), 7, kMathTolerance);
}

// Snell's law: the sines have the ratio of the indices, on both sides of the surface.
TEST_F(MathTest, RefractionFollowsSnellsLaw) {
    const double angle = 0.7, ratio = 1 / 1.5, sine = ratio * std::sin(angle), cosine = std::sqrt(1 - sine * sine);
    for (const double side : {1.0, -1.0}) {
        const Double3 incoming{2 * std::sin(angle), -2 * side * std::cos(angle), 0};
        expectTriple(triple(vectorNode("Refract", incoming, {0, 3, 0}, ratio), "Vector"), {sine, -side * cosine, 0});
    }
    // Beyond the critical angle everything is reflected.
    expectTriple(triple(vectorNode("Refract", {1, -0.5, 0}, {0, 1, 0}, 1.5), "Vector"), {0, 0, 0});
}

} // namespace
} // namespace velm::host::test
