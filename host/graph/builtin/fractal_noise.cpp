// Fractal noise in space: a sum of octaves of gradient noise. "Scale" is the size of the largest features in metres.
// Each octave has the frequency of the one before times "Lacunarity", and its amplitude times "Gain". "Scalar" is the
// sum, from 0 to 1 with a mean of 0.5; "Color" mixes the two colours by it.
#include "host/graph/builtin/definitions.h"
#include "host/graph/builtin/noise.h"
#include "host/graph/builtin/texture_space.h"

#include <algorithm>

namespace velm::host::builtin {

namespace {

enum { kFirst, kSecond, kCoordinates, kScale, kOctaves, kLacunarity, kGain };
enum { kColourOut, kScalarOut };
enum { kObject, kWorld };
constexpr int kMostOctaves = 16; // finer ones are below the precision of a position

double noise(const Evaluation &evaluation) {
    const double scale = evaluation.scalar(kScale);
    if (!(scale > 0)) return 0.5;
    const ShadingSample &sample = evaluation.sample();
    const double *position = evaluation.choice(kCoordinates) == kWorld ? sample.position : sample.objectPosition;
    const int octaves = std::clamp(evaluation.integer(kOctaves), 1, kMostOctaves);
    const double lacunarity = evaluation.scalar(kLacunarity), gain = evaluation.scalar(kGain);
    const auto [sum, total] =
        sumNoise(position, {.octaves = octaves, .frequency = 1 / scale, .lacunarity = lacunarity, .gain = gain});
    // A negative gain can make the total 0 or less.
    return total > 0 ? std::clamp(0.5 + 0.5 * sum / total, 0.0, 1.0) : 0.5;
}

void give(const Evaluation &evaluation, int output) {
    const double fraction = noise(evaluation);
    if (output == kScalarOut) return evaluation.set(fraction);
    std::array<double, 3> result = evaluation.triple(kFirst);
    const std::array<double, 3> second = evaluation.triple(kSecond);
    for (std::size_t i = 0; i < 3; ++i) result[i] += (second[i] - result[i]) * fraction;
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
