// One of many operations on up to three scalars. Angles are in radians. The result is 0 where it is not defined, as for
// a division by 0 or the logarithm of a negative number, and where it is too large for a double. Arguments of the
// arcsine and arccosine are limited to -1 to 1.
#include "host/graph/builtin/definitions.h"
#include "host/graph/builtin/operations.h"

#include "host/base/angles.h"

#include <algorithm>
#include <cmath>

namespace velm::host::builtin {

namespace {

enum { kA, kB, kC, kOperation };

struct ScalarOperation {
    const char *text;
    int operands; // 1 for A, 2 for A and B, 3 for all; the others are not evaluated
    double (*compute)(double a, double b, double c);
};

// The position of `value` between two limits: 0 at the first and 1 at the second. Equal limits have no positions.
double positionBetween(double value, double first, double second) {
    return first == second ? 0 : (value - first) / (second - first);
}

double smoothStep(double value, double low, double high) {
    if (low == high) return value < low ? 0 : 1;
    const double t = std::clamp(positionBetween(value, low, high), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

// The remainder of a division that rounds down; it has the sign of the divisor.
double modulo(double value, double divisor) { return value - divisor * std::floor(value / divisor); }

// Up from 0 to the magnitude of `height` and down again, with a slope of 1.
double pingPong(double value, double height) {
    const double top = std::fabs(height);
    return top - std::fabs(modulo(value, 2 * top) - top);
}

double logarithm(double value, double base) {
    return value > 0 && base > 0 && base != 1 ? std::log(value) / std::log(base) : 0;
}

// New operations are added at the end: scenes save an operation by its index.
constexpr ScalarOperation kOperations[] = {
    {"Add", 2, [](double a, double b, double) { return a + b; }},
    {"Subtract", 2, [](double a, double b, double) { return a - b; }},
    {"Multiply", 2, [](double a, double b, double) { return a * b; }},
    {"Divide", 2, [](double a, double b, double) { return a / b; }},
    {"Power", 2, [](double a, double b, double) { return std::pow(a, b); }},
    {"Logarithm", 2, [](double a, double b, double) { return logarithm(a, b); }},
    {"Exponential", 1, [](double a, double, double) { return std::exp(a); }},
    {"Reciprocal", 1, [](double a, double, double) { return 1 / a; }},
    {"Absolute", 1, [](double a, double, double) { return std::fabs(a); }},
    {"Negate", 1, [](double a, double, double) { return -a; }},
    {"Invert", 1, [](double a, double, double) { return 1 - a; }},
    {"Sign", 1, [](double a, double, double) { return static_cast<double>((a > 0) - (a < 0)); }},
    {"Floor", 1, [](double a, double, double) { return std::floor(a); }},
    {"Ceiling", 1, [](double a, double, double) { return std::ceil(a); }},
    {"Round", 1, [](double a, double, double) { return std::round(a); }},
    {"Fraction", 1, [](double a, double, double) { return a - std::floor(a); }},
    {"Modulo", 2, [](double a, double b, double) { return modulo(a, b); }},
    {"Snap", 2, [](double a, double b, double) { return b == 0 ? a : b * std::round(a / b); }},
    {"Minimum", 2, [](double a, double b, double) { return std::min(a, b); }},
    {"Maximum", 2, [](double a, double b, double) { return std::max(a, b); }},
    {"Clamp", 3, [](double a, double b, double c) { return std::min(std::max(a, b), c); }},
    {"Mix", 3, [](double a, double b, double c) { return a + (b - a) * c; }},
    {"Step", 2, [](double a, double b, double) { return a < b ? 0.0 : 1.0; }},
    {"Smooth Step", 3, [](double a, double b, double c) { return smoothStep(a, b, c); }},
    {"Remap", 3, [](double a, double b, double c) { return positionBetween(a, b, c); }},
    {"Ping-Pong", 2, [](double a, double b, double) { return pingPong(a, b); }},
    {"Equal", 3, [](double a, double b, double c) { return std::fabs(a - b) <= c ? 1.0 : 0.0; }},
    {"Less Than", 2, [](double a, double b, double) { return a < b ? 1.0 : 0.0; }},
    {"Greater Than", 2, [](double a, double b, double) { return a > b ? 1.0 : 0.0; }},
    {"Sine", 1, [](double a, double, double) { return std::sin(a); }},
    {"Cosine", 1, [](double a, double, double) { return std::cos(a); }},
    {"Tangent", 1, [](double a, double, double) { return std::tan(a); }},
    {"Arcsine", 1, [](double a, double, double) { return std::asin(std::clamp(a, -1.0, 1.0)); }},
    {"Arccosine", 1, [](double a, double, double) { return std::acos(std::clamp(a, -1.0, 1.0)); }},
    {"Arctangent", 1, [](double a, double, double) { return std::atan(a); }},
    {"Arctangent 2", 2, [](double a, double b, double) { return std::atan2(a, b); }},
    {"To Radians", 1, [](double a, double, double) { return a * kRadiansPerDegree; }},
    {"To Degrees", 1, [](double a, double, double) { return a * kDegreesPerRadian; }},
};

constexpr auto kOperationTexts = operationTexts(kOperations);

void give(const Evaluation &evaluation, int) {
    const ScalarOperation &operation = kOperations[evaluation.choice(kOperation)];
    const double a = evaluation.scalar(kA), b = operation.operands > 1 ? evaluation.scalar(kB) : 0,
                 c = operation.operands > 2 ? evaluation.scalar(kC) : 0;
    evaluation.set(definedOrZero(operation.compute(a, b, c)));
}

} // namespace

constinit const Definition scalarMath{
    .name = "Scalar Math",
    .colour = kMathColour,
    .parameters = {{{.label = "A"},
                    {.label = "B"},
                    {.label = "C", .initial = {1}},
                    {.label = "Operation", .kind = Kind::choice, .texts = kOperationTexts.data()}}},
    .outputs = {{{"Out", kConnectScalar}}},
    .evaluate = give,
};

} // namespace velm::host::builtin
