// Layers of noise, each finer and fainter than the one before: cloudy patterns in space. The scale is the size of the
// largest features; each octave multiplies their number by the lacunarity and their strength by the gain. The scalar
// runs from 0 to 1 about 0.5 and mixes the colours.
#include "host/graph/builtin/definitions.h"
#include "host/graph/builtin/noise.h"

#include <algorithm>

namespace velm::host::builtin {

namespace {

enum { kFirst, kSecond, kCoordinates, kScale, kOctaves, kLacunarity, kGain };
enum { kColourOut, kScalarOut };
enum { kObject, kWorld };
constexpr int kMostOctaves = 16; // finer ones are below what a double holds of a position

constexpr const char *kCoordinateTexts[] = {"Object", "World", nullptr};

double layers(const Evaluation &evaluation) {
    const double scale = evaluation.scalar(kScale);
    if (!(scale > 0)) return 0.5;
    const ShadingSample &sample = evaluation.sample();
    const double *position = evaluation.choice(kCoordinates) == kWorld ? sample.position : sample.objectPosition;
    const int octaves = std::clamp(evaluation.integer(kOctaves), 1, kMostOctaves);
    const double lacunarity = evaluation.scalar(kLacunarity), gain = evaluation.scalar(kGain);
    double frequency = 1 / scale, strength = 1, sum = 0, whole = 0;
    for (int octave = 0; octave < octaves; ++octave) {
        sum += strength * gradientNoise(position[0] * frequency, position[1] * frequency, position[2] * frequency);
        whole += strength;
        frequency *= lacunarity;
        strength *= gain;
    }
    // A negative gain could make the whole vanish.
    return whole > 0 ? std::clamp(0.5 + 0.5 * sum / whole, 0.0, 1.0) : 0.5;
}

void give(const Evaluation &evaluation, int output) {
    const double share = layers(evaluation);
    if (output == kScalarOut) return evaluation.set(share);
    std::array<double, 3> result = evaluation.triple(kFirst);
    const std::array<double, 3> second = evaluation.triple(kSecond);
    for (std::size_t i = 0; i < 3; ++i) result[i] += (second[i] - result[i]) * share;
    evaluation.set(result);
}

} // namespace

constinit const Definition fractalNoise{
    .name = "Fractal Noise",
    .colour = kTextureColour,
    .parameters = {{{.label = "Color 1", .kind = Kind::colour, .initial = {0, 0, 0}},
                    {.label = "Color 2", .kind = Kind::colour, .initial = {1, 1, 1}},
                    {.label = "Coordinates", .kind = Kind::choice, .texts = kCoordinateTexts},
                    {.label = "Scale", .kind = Kind::distance, .initial = {1}},
                    {.label = "Octaves", .kind = Kind::integer, .initial = {6}},
                    {.label = "Lacunarity", .kind = Kind::scalar, .initial = {2}},
                    {.label = "Gain", .kind = Kind::percent, .initial = {0.5}}}},
    .outputs = {{{"Color", kConnectColour}, {"Scalar", kConnectScalar}}},
    .evaluate = give,
};

} // namespace velm::host::builtin
