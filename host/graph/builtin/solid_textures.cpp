// Textures in space, which mix two colours by a value from 0 to 1. The texture has axes of its own; along them, "Size"
// is the size of the largest features. With the position p in sizes:
// - Turbulence: octaves of the magnitude of gradient noise, after K. Perlin, "An Image Synthesizer", SIGGRAPH 1985.
// - Marble: waves along the axis, displaced by turbulence times "Distortion", after the same paper.
// - Wood: rings around the axis, displaced by noise times "Distortion", after D. R. Peachey, "Solid Texturing of
// Complex
//   Surfaces", SIGGRAPH 1985.
// - Cells: from the distances to the two nearest points of a scattered set, after S. Worley, "A Cellular Texture Basis
//   Function", SIGGRAPH 1996.
// Octaves have twice the frequency of the one before, and its amplitude times "Gain". The output "Height" is for bumps:
// a value of 1 is raised by a tenth of the smallest size.
#include "host/graph/builtin/cellular.h"
#include "host/graph/builtin/definitions.h"
#include "host/graph/builtin/noise.h"
#include "host/graph/builtin/texture_space.h"

#include <algorithm>
#include <cmath>

namespace velm::host::builtin {

namespace {

enum { kFirst, kSecond, kSpace, kOwn = kSpace + kSpaceRowCount };
enum { kOctaves = kOwn, kGain, kAxis, kDistortion };   // of Turbulence (the first two), Marble and Wood
enum { kFeature = kOwn, kRandomness };                 // of Cells
enum { kNearestPoint, kSecondPoint, kEdges, kNumber }; // features of cells
enum { kColourOut, kScalarOut, kHeightOut };

constexpr const char *kFeatureTexts[] = {"Nearest Point", "Second Point", "Edges", "Cells", nullptr};
constexpr int kMostOctaves = 16;     // finer ones are below the precision of a position
constexpr double kHeightOfOne = 0.1; // as a fraction of the smallest size

// The mean of the octaves, weighted by their amplitudes: from -1 to 1, or from 0 to 1 for magnitudes.
double noiseAt(const Evaluation &evaluation, const CellPosition &position, NoiseShape shape) {
    const int octaves = std::clamp(evaluation.integer(kOctaves), 1, kMostOctaves);
    const double gain = std::max(0.0, evaluation.scalar(kGain));
    const NoiseSum noise = sumNoise(position.cell.data(), {.octaves = octaves, .gain = gain, .shape = shape});
    return noise.sum / noise.amplitude;
}

double turbulenceAt(const Evaluation &evaluation, const CellPosition &position) {
    return noiseAt(evaluation, position, NoiseShape::magnitude);
}

double marbleAt(const Evaluation &evaluation, const CellPosition &position) {
    const double along = position.along(evaluation.choice(kAxis));
    return wave(along + evaluation.scalar(kDistortion) * noiseAt(evaluation, position, NoiseShape::magnitude));
}

double woodAt(const Evaluation &evaluation, const CellPosition &position) {
    const double fromAxis = position.fromAxis(evaluation.choice(kAxis));
    return wave(fromAxis + evaluation.scalar(kDistortion) * noiseAt(evaluation, position, NoiseShape::plain));
}

double cellsAt(const Evaluation &evaluation, const CellPosition &position) {
    const NearestPoints points = nearestPoints(position.cell.data(), evaluation.scalar(kRandomness));
    switch (evaluation.choice(kFeature)) {
    case kSecondPoint: return points.second;
    case kEdges: return points.second - points.first;
    case kNumber: return points.number / 4294967295.0; // the largest number
    default: return points.first;
    }
}

template <double (*valueAt)(const Evaluation &, const CellPosition &)>
void giveSolid(const Evaluation &evaluation, int output) {
    const CellPosition position = TextureSpace(evaluation, kSpace).inCells();
    double value = position.isUsable ? std::clamp(valueAt(evaluation, position), 0.0, 1.0) : 0;
    if (!std::isfinite(value)) value = 0; // a distortion or gain is not finite
    if (output == kScalarOut) return evaluation.set(value);
    if (output == kHeightOut) return evaluation.set(kHeightOfOne * position.smallest * value);
    std::array<double, 3> result = evaluation.triple(kFirst);
    const std::array<double, 3> second = evaluation.triple(kSecond);
    for (std::size_t i = 0; i < 3; ++i) result[i] += (second[i] - result[i]) * value;
    evaluation.set(result);
}

constexpr auto kColourRows = std::to_array<Parameter>({
    {.label = "Color 1", .kind = Kind::colour},
    {.label = "Color 2", .kind = Kind::colour, .initial = {1, 1, 1}},
});
constexpr auto kNoiseRows = std::to_array<Parameter>({
    {.label = "Octaves", .kind = Kind::integer, .initial = {4}},
    {.label = "Gain", .kind = Kind::percent, .initial = {0.5}},
});
constexpr std::array<Output, kMaxOutputs> kSolidOutputs{
    {{"Color", kConnectColour}, {"Scalar", kConnectScalar}, {"Height", kConnectScalar}}};

// The rows of waves and rings, with the axis and the distortion that a new node has.
constexpr std::array<Parameter, 2> waveRows(double axis, double distortion) {
    return {{{.label = "Axis", .kind = Kind::choice, .initial = {axis}, .texts = kAxisTexts},
             {.label = "Distortion", .kind = Kind::percent, .initial = {distortion}}}};
}

} // namespace

constinit const Definition turbulence{
    .name = "Turbulence",
    .colour = kTextureColour,
    .parameters = joinRows(kColourRows, kSpaceRows, kNoiseRows),
    .outputs = kSolidOutputs,
    .evaluate = giveSolid<turbulenceAt>,
};

constinit const Definition marble{
    .name = "Marble",
    .colour = kTextureColour,
    .parameters = joinRows(kColourRows, kSpaceRows, kNoiseRows, waveRows(1, 1)),
    .outputs = kSolidOutputs,
    .evaluate = giveSolid<marbleAt>,
};

constinit const Definition wood{
    .name = "Wood",
    .colour = kTextureColour,
    .parameters = joinRows(kColourRows, kSpaceRows, kNoiseRows, waveRows(1, 0.2)),
    .outputs = kSolidOutputs,
    .evaluate = giveSolid<woodAt>,
};

constinit const Definition cells{
    .name = "Cells",
    .colour = kTextureColour,
    .parameters = joinRows(kColourRows, kSpaceRows,
                           std::to_array<Parameter>({
                               {.label = "Feature", .kind = Kind::choice, .texts = kFeatureTexts},
                               {.label = "Randomness", .kind = Kind::percent, .initial = {1}},
                           })),
    .outputs = kSolidOutputs,
    .evaluate = giveSolid<cellsAt>,
};

} // namespace velm::host::builtin
