// A texture layer over what is below it. With the layer's value t, the value below b, and o the product of "Opacity"
// and "Coverage", the modes are those of LightWave's texture layers:
//   Normal b + o (t - b), Additive b + o t, Subtractive b - o t, Difference |b - o t|,
//   Multiply b (1 + o (t - 1)), Divide b / (1 + o (t - 1)), with a divisor of at least 1/256.
// Nothing is clamped. LightWave's formulas are not published; these follow from the names of the modes, and are the
// usual ones at an opacity of 100 %.
#include "host/graph/builtin/definitions.h"

#include <algorithm>
#include <cmath>

namespace velm::host::builtin {

namespace {

enum { kBelow, kLayer, kOpacity, kCoverage, kMode };
enum { kNormal, kAdditive, kSubtractive, kDifference, kMultiply, kDivide };

constexpr const char *kModeTexts[] = {"Normal", "Additive", "Subtractive", "Difference", "Multiply", "Divide", nullptr};

constexpr double kLeastDivisor = 1.0 / 256; // so that black does not make a value infinite

double blended(int mode, double below, double layer, double opacity) {
    switch (mode) {
    case kAdditive: return below + opacity * layer;
    case kSubtractive: return below - opacity * layer;
    case kDifference: return std::fabs(below - opacity * layer);
    case kMultiply: return below * (1 + opacity * (layer - 1));
    case kDivide: return below / std::max(1 + opacity * (layer - 1), kLeastDivisor);
    default: return below + opacity * (layer - below);
    }
}

double opacityOf(const Evaluation &evaluation) { return evaluation.scalar(kOpacity) * evaluation.scalar(kCoverage); }

void giveColour(const Evaluation &evaluation, int) {
    std::array<double, 3> result = evaluation.triple(kBelow);
    // The layer is not evaluated where it has no effect, as beyond the edges of an image.
    if (const double opacity = opacityOf(evaluation); opacity != 0) {
        const std::array<double, 3> layer = evaluation.triple(kLayer);
        const int mode = evaluation.choice(kMode);
        for (std::size_t i = 0; i < 3; ++i) result[i] = blended(mode, result[i], layer[i], opacity);
    }
    evaluation.set(result);
}

void giveScalar(const Evaluation &evaluation, int) {
    const double below = evaluation.scalar(kBelow), opacity = opacityOf(evaluation);
    if (opacity == 0) return evaluation.set(below);
    evaluation.set(blended(evaluation.choice(kMode), below, evaluation.scalar(kLayer), opacity));
}

constexpr Parameter kOpacityRow{.label = "Opacity", .kind = Kind::percent, .initial = {1}};
constexpr Parameter kCoverageRow{.label = "Coverage", .kind = Kind::percent, .initial = {1}};
constexpr Parameter kModeRow{.label = "Mode", .kind = Kind::choice, .texts = kModeTexts};

} // namespace

constinit const Definition blendColour{
    .name = "Blend Color",
    .colour = kTextureColour,
    .parameters = {{{.label = "Below", .kind = Kind::colour},
                    {.label = "Layer", .kind = Kind::colour, .initial = {1, 1, 1}},
                    kOpacityRow,
                    kCoverageRow,
                    kModeRow}},
    .outputs = {{{"Color", kConnectColour}}},
    .evaluate = giveColour,
};

constinit const Definition blendScalar{
    .name = "Blend Scalar",
    .colour = kTextureColour,
    .parameters = {{{.label = "Below", .kind = Kind::scalar},
                    {.label = "Layer", .kind = Kind::scalar, .initial = {1}},
                    kOpacityRow,
                    kCoverageRow,
                    kModeRow}},
    .outputs = {{{"Out", kConnectScalar}}},
    .evaluate = giveScalar,
};

} // namespace velm::host::builtin
