// A texture layer over what is below it. With the layer's value t, the value below b, and o the product of "Opacity"
// and "Coverage", the modes are those of LightWave's texture layers:
//   Normal b + o (t - b), Additive b + o t, Subtractive b - o t, Difference |b - o t|,
//   Multiply b (1 + o (t - 1)), Divide b / (1 + o (t - 1)), with a divisor of at least 1/256.
// LightWave's formulas are not published; these follow from the names of the modes, and are the usual ones at an
// opacity of 100 %. The further modes are those that the plug-in interface offers to all nodes: b + o (m - b), where m
// is their result at 100 %. Nothing is clamped.
#include "host/graph/builtin/definitions.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace velm::host::builtin {

namespace {

enum { kBelow, kLayer, kOpacity, kCoverage, kMode };
enum { kNormal, kAdditive, kSubtractive, kDifference, kMultiply, kDivide, kFirstOffered };

// Those from kFirstOffered are offered by the plug-in interface. Single components have no meaning for scalars.
constexpr const char *kColourModeTexts[] = {
    "Normal",  "Additive", "Subtractive", "Difference", "Multiply", "Divide", "Screen", "Darken",
    "Lighten", "Negative", "Color Dodge", "Color Burn", "Red",      "Green",  "Blue",   nullptr};
constexpr const char *kScalarModeTexts[] = {"Normal",      "Additive",   "Subtractive", "Difference", "Multiply",
                                            "Divide",      "Screen",     "Darken",      "Lighten",    "Negative",
                                            "Color Dodge", "Color Burn", nullptr};
constexpr int kOffered[] = {kBlendScreen,     kBlendDarken, kBlendLighten, kBlendNegative, kBlendColourDodge,
                            kBlendColourBurn, kBlendRed,    kBlendGreen,   kBlendBlue};
static_assert(std::size(kColourModeTexts) == kFirstOffered + std::size(kOffered) + 1);

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

// Lays the layer over `result`.
void blendOffered(int mode, std::array<double, 3> &result, const std::array<double, 3> &layer, double opacity) {
    services().utility->blend(result.data(), layer.data(), result.data(), opacity, kOffered[mode - kFirstOffered]);
}

double opacityOf(const Evaluation &evaluation) { return evaluation.scalar(kOpacity) * evaluation.scalar(kCoverage); }

void giveColour(const Evaluation &evaluation, int) {
    std::array<double, 3> result = evaluation.triple(kBelow);
    // The layer is not evaluated where it has no effect, as beyond the edges of an image.
    if (const double opacity = opacityOf(evaluation); opacity != 0) {
        const std::array<double, 3> layer = evaluation.triple(kLayer);
        const int mode = evaluation.choice(kMode);
        if (mode >= kFirstOffered)
            blendOffered(mode, result, layer, opacity);
        else
            for (std::size_t i = 0; i < 3; ++i) result[i] = blended(mode, result[i], layer[i], opacity);
    }
    evaluation.set(result);
}

void giveScalar(const Evaluation &evaluation, int) {
    const double below = evaluation.scalar(kBelow), opacity = opacityOf(evaluation);
    if (opacity == 0) return evaluation.set(below);
    const double layer = evaluation.scalar(kLayer);
    const int mode = evaluation.choice(kMode);
    if (mode < kFirstOffered) return evaluation.set(blended(mode, below, layer, opacity));
    std::array<double, 3> result{below, below, below};
    blendOffered(mode, result, {layer, layer, layer}, opacity);
    evaluation.set(result[0]);
}

constexpr Parameter kOpacityRow{.label = "Opacity", .kind = Kind::percent, .initial = {1}};
constexpr Parameter kCoverageRow{.label = "Coverage", .kind = Kind::percent, .initial = {1}};
constexpr Parameter modeRow(const char *const *texts) {
    return {.label = "Mode", .kind = Kind::choice, .texts = texts};
}

} // namespace

constinit const Definition blendColour{
    .name = "Blend Color",
    .colour = kTextureColour,
    .parameters = {{{.label = "Below", .kind = Kind::colour},
                    {.label = "Layer", .kind = Kind::colour, .initial = {1, 1, 1}},
                    kOpacityRow,
                    kCoverageRow,
                    modeRow(kColourModeTexts)}},
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
                    modeRow(kScalarModeTexts)}},
    .outputs = {{{"Out", kConnectScalar}}},
    .evaluate = giveScalar,
};

} // namespace velm::host::builtin
