// A wall of bricks. The texture has axes of its own; "Size" is the distance from one brick to the next along them,
// which is the size of a brick and of the mortar beside it. Bricks lie along X, or along Z on polygons that face X;
// courses are above each other along Y, or along Z on polygons that face Y. Each second course is shifted by "Offset".
// Each brick has a colour of its own between "Color 1" and "Color 2".
//
// The edges are filtered over the width of the sample's footprint: "Scalar" is the fraction of the footprint that
// bricks cover. Footprints that reach over several courses are filtered as if these were not shifted.
#include "host/base/hash.h"
#include "host/graph/builtin/cells.h"
#include "host/graph/builtin/definitions.h"
#include "host/graph/builtin/texture_space.h"

#include <algorithm>
#include <cmath>

namespace velm::host::builtin {

namespace {

enum { kFirst, kSecond, kMortar, kSpace, kWidth = kSpace + kSpaceRowCount, kOffset };
enum { kColourOut, kScalarOut, kNumberOut, kHeightOut };

// The integral, from 0 to x, of a wave of the period 1 that is 1 but for `gap` / 2 on both sides of whole numbers.
double coveredUpTo(double x, double gap) {
    const double whole = std::floor(x);
    return whole * (1 - gap) + std::clamp(x - whole - gap / 2, 0.0, 1 - gap);
}

// The mean of that wave over an interval.
double covered(double middle, double width, double gap) {
    if (!(width > 0)) {
        const double inside = middle - std::floor(middle);
        return inside >= gap / 2 && inside <= 1 - gap / 2 ? 1 : 0;
    }
    return (coveredUpTo(middle + width / 2, gap) - coveredUpTo(middle - width / 2, gap)) / width;
}

// The position of one sample on a wall.
struct Wall {
    double across = 0, up = 0;         // in bricks
    double acrossSize = 0, upSize = 0; // of a brick with its mortar; metres
    bool isUsable = false;
};

Wall wallAt(const Evaluation &evaluation) {
    const TextureSpace space(evaluation, kSpace);
    const CellPosition position = space.inCells();
    if (!position.isUsable) return {};
    const int facing = space.normalAxis();
    const std::size_t across = facing == 0 ? 2 : 0, up = facing == 1 ? 2 : 1;
    const TextureSpace::Vector size = space.size();
    Wall wall{.across = position.cell[across],
              .up = position.cell[up],
              .acrossSize = std::fabs(size[across]),
              .upSize = std::fabs(size[up]),
              .isUsable = true};
    if (isOdd(std::floor(wall.up))) wall.across -= evaluation.scalar(kOffset);
    return wall;
}

// The fraction of the footprint that bricks cover.
double brickCover(const Evaluation &evaluation, const Wall &wall) {
    const double mortar = std::max(0.0, evaluation.scalar(kWidth)), spot = evaluation.sample().spotSize;
    const auto along = [&](double middle, double size) {
        return covered(middle, spot / size, std::min(mortar / size, 1.0));
    };
    const double cover = along(wall.across, wall.acrossSize) * along(wall.up, wall.upSize);
    return std::isfinite(cover) ? cover : 0;
}

// A random number from 0 to 1 that belongs to the brick.
double brickNumber(const Wall &wall) {
    constexpr double kLimit = 1e15; // a larger double has no whole number of its own
    if (!(std::fabs(wall.across) < kLimit && std::fabs(wall.up) < kLimit)) return 0;
    const auto column = static_cast<std::uint32_t>(static_cast<std::int64_t>(std::floor(wall.across)));
    const auto row = static_cast<std::uint32_t>(static_cast<std::int64_t>(std::floor(wall.up)));
    return scramble(scramble(column) + row) / 4294967295.0; // the largest number
}

void giveBrickColour(const Evaluation &evaluation, const Wall &wall, double cover) {
    const double number = brickNumber(wall);
    std::array<double, 3> result = evaluation.triple(kMortar);
    const std::array<double, 3> first = evaluation.triple(kFirst), second = evaluation.triple(kSecond);
    for (std::size_t i = 0; i < 3; ++i) {
        const double colour = first[i] + (second[i] - first[i]) * number;
        result[i] += (colour - result[i]) * cover;
    }
    evaluation.set(result);
}

void give(const Evaluation &evaluation, int output) {
    const Wall wall = wallAt(evaluation);
    if (output == kNumberOut) return evaluation.set(wall.isUsable ? brickNumber(wall) : 0.0);
    const double cover = wall.isUsable ? brickCover(evaluation, wall) : 0;
    switch (output) {
    case kColourOut: return giveBrickColour(evaluation, wall, cover);
    case kScalarOut: return evaluation.set(cover);
    case kHeightOut: return evaluation.set(cover * std::max(0.0, evaluation.scalar(kWidth)));
    default: return;
    }
}

// The axes of other textures, with the size of a brick.
constexpr std::array<Parameter, kSpaceRowCount> brickSpaceRows() {
    std::array<Parameter, kSpaceRowCount> rows = kSpaceRows;
    for (Parameter &row : rows)
        if (row.initial == std::array<double, 3>{1, 1, 1}) row.initial = {0.225, 0.075, 0.225};
    return rows;
}

} // namespace

constinit const Definition brick{
    .name = "Brick",
    .colour = kTextureColour,
    .parameters = joinRows(std::to_array<Parameter>({
                               {.label = "Color 1", .kind = Kind::colour, .initial = {0.45, 0.15, 0.1}},
                               {.label = "Color 2", .kind = Kind::colour, .initial = {0.6, 0.25, 0.15}},
                               {.label = "Mortar", .kind = Kind::colour, .initial = {0.6, 0.57, 0.52}},
                           }),
                           brickSpaceRows(),
                           std::to_array<Parameter>({
                               {.label = "Mortar Width", .kind = Kind::distance, .initial = {0.01}},
                               {.label = "Offset", .kind = Kind::percent, .initial = {0.5}},
                           })),
    .outputs = {{{"Color", kConnectColour},
                 {"Scalar", kConnectScalar},
                 {"Brick", kConnectScalar},
                 {"Height", kConnectScalar}}},
    .evaluate = give,
};

} // namespace velm::host::builtin
