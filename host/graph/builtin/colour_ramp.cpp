// A gradient: a colour for each value of an input, interpolated between up to eight keys. The setting "Keys" is the
// number of keys that are used; their positions have to ascend. The shape of a key applies to the span that ends at it:
// Linear, Spline (a cubic with Catmull-Rom tangents), or Step (the value of the key before). Before the first key and
// after the last one, the gradient is constant.
#include "host/base/angles.h"
#include "host/graph/builtin/definitions.h"

#include <algorithm>
#include <cmath>

namespace velm::host::builtin {

namespace {

enum { kSource, kInput, kKeys, kFirstKey };
enum { kPosition, kColour, kAlpha, kShape, kRowsOfKey };
enum { kColourOut, kAlphaOut };
enum { kFromInput, kIncidence, kSlope, kDistance, kBump };
enum { kLinear, kSpline, kStep };
constexpr int kMostKeys = 8;
static_assert(kFirstKey + kMostKeys * kRowsOfKey < kMaxParameters);

constexpr const char *kSourceTexts[] = {"Input", "Incidence Angle", "Slope", "Distance to Camera", "Bump", nullptr};
constexpr const char *kShapeTexts[] = {"Linear", "Spline", "Step", nullptr};

// The slope is the angle between the ground and the polygon: 0 facing up, 90 upright, 180 facing down.
double inputOf(const Evaluation &evaluation) {
    const ShadingSample &sample = evaluation.sample();
    switch (evaluation.choice(kSource)) {
    case kIncidence: return std::asin(std::clamp(sample.cosine, -1.0, 1.0)) * kDegreesPerRadian;
    case kSlope: return std::acos(std::clamp(sample.geometricNormal[1], -1.0, 1.0)) * kDegreesPerRadian;
    case kDistance: return sample.rayLength;
    case kBump: return sample.bumpHeight;
    default: return evaluation.scalar(kInput);
    }
}

constexpr int rowOf(int key, int part) { return kFirstKey + key * kRowsOfKey + part; }

// The result as a weighted sum of keys.
struct Mix {
    std::array<int, 4> keys{};
    std::array<double, 4> weights{};
    int count = 0;

    void add(int key, double weight) {
        const auto index = static_cast<std::size_t>(count++);
        keys[index] = key;
        weights[index] = weight;
    }
};

// A cubic Hermite curve. The tangent at each end is the slope between the neighbours of that end, or as many of them as
// there are. The result is linear in the values of the keys.
Mix splineMix(const std::array<double, kMostKeys> &positions, int keys, int to, double x) {
    const int from = to - 1, before = std::max(from - 1, 0), after = std::min(to + 1, keys - 1);
    const auto between = [&](int first, int second) {
        return positions[static_cast<std::size_t>(second)] - positions[static_cast<std::size_t>(first)];
    };
    const double length = between(from, to), x2 = x * x, x3 = x2 * x;
    const double out = (x3 - 2 * x2 + x) * length / std::max(between(before, to), length);
    const double in = (x3 - x2) * length / std::max(between(from, after), length);
    Mix mix;
    mix.add(before, -out);
    mix.add(from, 2 * x3 - 3 * x2 + 1 - in);
    mix.add(to, 3 * x2 - 2 * x3 + out);
    mix.add(after, in);
    return mix;
}

Mix mixAt(const Evaluation &evaluation, double value) {
    const int keys = std::clamp(evaluation.integer(kKeys), 1, kMostKeys);
    std::array<double, kMostKeys> positions{};
    int to = keys; // the first key beyond the value
    for (int key = keys - 1; key >= 0; --key) {
        const double position = evaluation.scalar(rowOf(key, kPosition));
        positions[static_cast<std::size_t>(key)] = position;
        if (position > value) to = key;
    }
    Mix mix;
    if (to == 0 || to == keys) {
        mix.add(to == 0 ? 0 : keys - 1, 1);
        return mix;
    }
    const double from = positions[static_cast<std::size_t>(to - 1)];
    const double x = (value - from) / (positions[static_cast<std::size_t>(to)] - from);
    const int shape = evaluation.choice(rowOf(to, kShape));
    if (shape == kSpline) return splineMix(positions, keys, to, x);
    mix.add(to - 1, shape == kStep ? 1 : 1 - x);
    if (shape == kLinear) mix.add(to, x);
    return mix;
}

void give(const Evaluation &evaluation, int output) {
    const Mix mix = mixAt(evaluation, inputOf(evaluation));
    std::array<double, 3> colour{};
    double alpha = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(mix.count); ++i) {
        if (output == kAlphaOut) {
            alpha += mix.weights[i] * evaluation.scalar(rowOf(mix.keys[i], kAlpha));
            continue;
        }
        const std::array<double, 3> key = evaluation.triple(rowOf(mix.keys[i], kColour));
        for (std::size_t c = 0; c < 3; ++c) colour[c] += mix.weights[i] * key[c];
    }
    output == kAlphaOut ? evaluation.set(alpha) : evaluation.set(colour);
}

struct KeyLabels {
    const char *position, *colour, *alpha, *shape;
};
constexpr KeyLabels kLabels[kMostKeys] = {
    {"Position 1", "Color 1", "Alpha 1", "Shape 1"}, {"Position 2", "Color 2", "Alpha 2", "Shape 2"},
    {"Position 3", "Color 3", "Alpha 3", "Shape 3"}, {"Position 4", "Color 4", "Alpha 4", "Shape 4"},
    {"Position 5", "Color 5", "Alpha 5", "Shape 5"}, {"Position 6", "Color 6", "Alpha 6", "Shape 6"},
    {"Position 7", "Color 7", "Alpha 7", "Shape 7"}, {"Position 8", "Color 8", "Alpha 8", "Shape 8"},
};

// Key 1 is black by default, and all others are white.
constexpr std::array<Parameter, kMaxParameters> rampRows() {
    std::array<Parameter, kMaxParameters> rows{};
    rows[kSource] = {.label = "Source", .kind = Kind::choice, .texts = kSourceTexts};
    rows[kInput] = {.label = "Input", .kind = Kind::scalar};
    rows[kKeys] = {.label = "Keys", .kind = Kind::integer, .initial = {2}};
    for (int key = 0; key < kMostKeys; ++key) {
        const KeyLabels &labels = kLabels[key];
        const double level = key == 0 ? 0 : 1;
        Parameter *const row = &rows[static_cast<std::size_t>(rowOf(key, 0))];
        row[kPosition] = {.label = labels.position, .kind = Kind::scalar, .initial = {static_cast<double>(key)}};
        row[kColour] = {.label = labels.colour, .kind = Kind::colour, .initial = {level, level, level}};
        row[kAlpha] = {.label = labels.alpha, .kind = Kind::percent, .initial = {1}};
        row[kShape] = {.label = labels.shape, .kind = Kind::choice, .texts = kShapeTexts};
    }
    return rows;
}

} // namespace

constinit const Definition colourRamp{
    .name = "Color Ramp",
    .colour = kTextureColour,
    .parameters = rampRows(),
    .outputs = {{{"Color", kConnectColour}, {"Alpha", kConnectScalar}}},
    .evaluate = give,
};

} // namespace velm::host::builtin
