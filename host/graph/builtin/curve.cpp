// A function: bends the value of whatever input it is connected to. What lies between the lower and upper input limits
// is brought to 0 to 1, bent, and brought to the output limits; what lies outside counts as the limit. Power raises to
// the exponent. Bias and gain are those of K. Perlin and E. Hoffert, "Hypertexture", SIGGRAPH 1989: the amount is what
// the bias makes of the middle, and the steepness that the gain gives it; at 50 % nothing is bent.
#include "host/graph/builtin/definitions.h"

#include <algorithm>
#include <cmath>

namespace velm::host::builtin {

namespace {

enum { kShape, kInLow, kInHigh, kOutLow, kOutHigh, kExponent, kAmount };
enum { kLinear, kSmoothStep, kPower, kBias, kGain };

constexpr const char *kShapeTexts[] = {"Linear", "Smooth Step", "Power", "Bias", "Gain", nullptr};

// At 0 and 1 the exponent would be endless or nothing.
double bias(double t, double amount) {
    const double middle = std::clamp(amount, 1e-6, 1 - 1e-6);
    return std::pow(t, std::log(middle) / std::log(0.5));
}

double gain(double t, double amount) {
    return t < 0.5 ? 0.5 * bias(2 * t, 1 - amount) : 1 - 0.5 * bias(2 - 2 * t, 1 - amount);
}

double bent(const Evaluation &evaluation, double t) {
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
    // Limits that fall together leave a step.
    const double t = high == low ? (value < low ? 0 : 1) : std::clamp((value - low) / (high - low), 0.0, 1.0);
    const double outLow = evaluation.scalar(kOutLow), outHigh = evaluation.scalar(kOutHigh);
    evaluation.set(outLow + (outHigh - outLow) * bent(evaluation, t));
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
