// Sum, product, mix and clamp, of scalars and, for each component, of colours.
#include "host/graph/builtin/definitions.h"

#include <algorithm>

namespace velm::host::builtin {

namespace {

using Components = std::array<double, 3>;
enum { kA, kB, kMix };        // parameters of sum, product and mix
enum { kInput, kLow, kHigh }; // of clamp

double sum(double a, double b) { return a + b; }
double product(double a, double b) { return a * b; }
double mixed(double a, double b, double fraction) { return a + (b - a) * fraction; }
// When the low limit is above the high one, the result is the high one.
double clamped(double value, double low, double high) { return std::min(std::max(value, low), high); }

template <double (*join)(double, double)>
void joinScalars(const Evaluation &evaluation, int) {
    evaluation.set(join(evaluation.scalar(kA), evaluation.scalar(kB)));
}

template <double (*join)(double, double)>
void joinColours(const Evaluation &evaluation, int) {
    Components result = evaluation.triple(kA);
    const Components b = evaluation.triple(kB);
    for (std::size_t i = 0; i < 3; ++i) result[i] = join(result[i], b[i]);
    evaluation.set(result);
}

void mixScalars(const Evaluation &evaluation, int) {
    evaluation.set(mixed(evaluation.scalar(kA), evaluation.scalar(kB), evaluation.scalar(kMix)));
}

void mixColours(const Evaluation &evaluation, int) {
    Components result = evaluation.triple(kA);
    const Components b = evaluation.triple(kB);
    const double fraction = evaluation.scalar(kMix);
    for (std::size_t i = 0; i < 3; ++i) result[i] = mixed(result[i], b[i], fraction);
    evaluation.set(result);
}

void clampScalars(const Evaluation &evaluation, int) {
    evaluation.set(clamped(evaluation.scalar(kInput), evaluation.scalar(kLow), evaluation.scalar(kHigh)));
}

void clampColours(const Evaluation &evaluation, int) {
    Components result = evaluation.triple(kInput);
    const double low = evaluation.scalar(kLow), high = evaluation.scalar(kHigh);
    for (double &component : result) component = clamped(component, low, high);
    evaluation.set(result);
}

constexpr Parameter kFraction{.label = "Mix", .kind = Kind::percent, .initial = {0.5}}; // the fraction of B
constexpr Parameter kLowest{.label = "Low", .kind = Kind::scalar, .initial = {0}};
constexpr Parameter kHighest{.label = "High", .kind = Kind::scalar, .initial = {1}};

constexpr Parameter scalar(const char *label, double initial) {
    return {.label = label, .kind = Kind::scalar, .initial = {initial}};
}
constexpr Parameter colour(const char *label, double initial) {
    return {.label = label, .kind = Kind::colour, .initial = {initial, initial, initial}};
}

} // namespace

constinit const Definition addScalar{
    .name = "Add Scalar",
    .colour = kMathColour,
    .parameters = {{scalar("A", 0), scalar("B", 0)}},
    .outputs = {{{"Out", kConnectScalar}}},
    .evaluate = joinScalars<sum>,
};

constinit const Definition multiplyScalar{
    .name = "Multiply Scalar",
    .colour = kMathColour,
    .parameters = {{scalar("A", 1), scalar("B", 1)}},
    .outputs = {{{"Out", kConnectScalar}}},
    .evaluate = joinScalars<product>,
};

constinit const Definition mixScalar{
    .name = "Mix Scalar",
    .colour = kMathColour,
    .parameters = {{scalar("A", 0), scalar("B", 1), kFraction}},
    .outputs = {{{"Out", kConnectScalar}}},
    .evaluate = mixScalars,
};

constinit const Definition clampScalar{
    .name = "Clamp Scalar",
    .colour = kMathColour,
    .parameters = {{scalar("In", 0), kLowest, kHighest}},
    .outputs = {{{"Out", kConnectScalar}}},
    .evaluate = clampScalars,
};

constinit const Definition addColour{
    .name = "Add Color",
    .colour = kMathColour,
    .parameters = {{colour("A", 0), colour("B", 0)}},
    .outputs = {{{"Color", kConnectColour}}},
    .evaluate = joinColours<sum>,
};

constinit const Definition multiplyColour{
    .name = "Multiply Color",
    .colour = kMathColour,
    .parameters = {{colour("A", 1), colour("B", 1)}},
    .outputs = {{{"Color", kConnectColour}}},
    .evaluate = joinColours<product>,
};

constinit const Definition mixColour{
    .name = "Mix Color",
    .colour = kMathColour,
    .parameters = {{colour("A", 0), colour("B", 1), kFraction}},
    .outputs = {{{"Color", kConnectColour}}},
    .evaluate = mixColours,
};

constinit const Definition clampColour{
    .name = "Clamp Color",
    .colour = kMathColour,
    .parameters = {{colour("In", 0), kLowest, kHighest}},
    .outputs = {{{"Color", kConnectColour}}},
    .evaluate = clampColours,
};

} // namespace velm::host::builtin
