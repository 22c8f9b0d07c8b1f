// A function, which transforms the value of the input that it is connected to. The value is clamped to "In Low" and "In
// High", mapped from this range to 0 to 1, shaped, and mapped to "Out Low" and "Out High". The shape "Power" raises it
// to "Exponent". "Bias" and "Gain" are those of K. Perlin and E. Hoffert, "Hypertexture", SIGGRAPH 1989, with the
// parameter "Amount": bias maps 0.5 to the amount; gain makes the curve steeper in the middle above 50 %, and flatter
// below. At 50 % both leave the value as it is.
#include "host/graph/builtin/definitions.h"

#include <algorithm>
#include <cmath>

namespace velm::host::builtin {

namespace {

enum { kShape, kInLow, kInHigh, kOutLow, kOutHigh, kExponent, kAmount };
enum { kLinear, kSmoothStep, kPower, kBias, kGain };

constexpr const char *kShapeTexts[] = {"Linear", "Smooth Step", "Power", "Bias", "Gain", nullptr};

// An amount of 0 would make the exponent infinite, and 1 would make it 0; both are avoided.
double bias(double t, double amount) {
    const double middle = std::clamp(amount, 1e-6, 1 - 1e-6);
    return std::pow(t, std::log(middle) / std::log(0.5));
}

double gain(double t, double amount) {
    return t < 0.5 ? 0.5 * bias(2 * t, 1 - amount) : 1 - 0.5 * bias(2 - 2 * t, 1 - amount);
}

double shaped(const Evaluation &evaluation, double t) {
    switch (evaluation.choice(kShape)) {
    case kSmoothStep: return t * t * (3 - 2 * t);
    case kPower: return std::pow(t, std::max(0.0, evaluation.scalar(kExponent)));
    case kBias: return bias(t, evaluation.scalar(kAmount));
    case kGain: return gain(t, evaluation.scalar(kAmount));
    default: return t;
    }
}

void give(const Evaluation &evaluation, int) {
    const double low = evaluation.scalar(kInLow), high = evaluation.scalar(kInHigh);
    const double value = evaluation.found();
    // Equal limits make a step.
    const double t = high == low ? (value < low ? 0 : 1) : std::clamp((value - low) / (high - low), 0.0, 1.0);
    const double outLow = evaluation.scalar(kOutLow), outHigh = evaluation.scalar(kOutHigh);
    evaluation.set(outLow + (outHigh - outLow) * shaped(evaluation, t));
}

} // namespace

constinit const Definition curve{
    .name = "Curve",
    .colour = kMathColour,
    .parameters = {{{.label = "Shape", .kind = Kind::choice, .initial = {kSmoothStep}, .texts = kShapeTexts},
                    {.label = "In Low", .kind = Kind::scalar, .initial = {0}},
                    {.label = "In High", .kind = Kind::scalar, .initial = {1}},
                    {.label = "Out Low", .kind = Kind::scalar, .initial = {0}},
                    {.label = "Out High", .kind = Kind::scalar, .initial = {1}},
                    {.label = "Exponent", .kind = Kind::scalar, .initial = {2}},
                    {.label = "Amount", .kind = Kind::percent, .initial = {0.5}}}},
    .outputs = {{{"Function", kConnectFunction}}},
    .evaluate = give,
};

} // namespace velm::host::builtin
