// Patterns in space that are similar to the commonest procedural textures of LightWave, whose formulas are not
// published. The texture has axes of its own; along them, "Size" is the size of a cell of the pattern, or of the
// largest features of noise. With the position p in cells:
// - Checkerboard: cells that are alternately 0 and 1.
// - Grid: 1 on the planes between the cells. "Thickness" is that of the planes, as a fraction of a cell.
// - Dots: 1 in a ball in the middle of each cell. "Thickness" is the diameter of the ball, as a fraction of a cell.
// - Fractal Noise: octaves of gradient noise, each of twice the frequency and half the amplitude of the one before.
// - Turbulence: octaves of the magnitude of gradient noise, after K. Perlin, "An Image Synthesizer", SIGGRAPH 1985.
// - Marble: waves along the axis, displaced by turbulence, after the same paper.
// - Wood: rings around the axis, displaced by noise, after D. R. Peachey, "Solid Texturing of Complex Surfaces",
//   SIGGRAPH 1985.
// "Contrast" stretches the pattern about 0.5. The output "Height" is for bumps: 1 is raised by a tenth of the smallest
// size.
#include "host/graph/builtin/cells.h"
#include "host/graph/builtin/definitions.h"
#include "host/graph/builtin/noise.h"
#include "host/graph/builtin/texture_space.h"

#include <algorithm>
#include <cmath>

namespace velm::host::builtin {

namespace {

enum {
    kPattern,
    kSpace,
    kAxis = kSpace + kSpaceRowCount,
    kOctaves,
    kContrast,
    kThickness,
    kFalloff,
    kNegative = kFalloff + kFalloffRowCount
};
enum { kValueOut, kAlphaOut, kHeightOut };
enum { kCheckerboard, kGrid, kDots, kFractalNoise, kTurbulence, kMarble, kWood };

constexpr const char *kPatternTexts[] = {"Checkerboard", "Grid",   "Dots", "Fractal Noise",
                                         "Turbulence",   "Marble", "Wood", nullptr};
constexpr int kMostOctaves = 16;       // finer ones are below the precision of a position
constexpr double kHeightOfOne = 0.1;   // as a fraction of the smallest size
constexpr double kRoughness = 0.2;     // of the rings of wood, in cells
constexpr double kFlatNormal = 0.9999; // above this cosine, a polygon counts as parallel to planes of a grid

using Vector = TextureSpace::Vector;

// The distance to the nearest boundary between cells.
double toBoundary(double coordinate) { return std::fabs(coordinate - std::round(coordinate)); }

// One evaluation of the pattern.
class Pattern {
  public:
    explicit Pattern(const Evaluation &evaluation)
        : evaluation_(evaluation), space_(evaluation, kSpace), position_(space_.inCells()) {}

    // From 0 to 1; 0 where a size is 0.
    double value() const {
        if (!position_.isUsable) return 0;
        const double contrast = evaluation_.scalar(kContrast);
        const double value = std::clamp(0.5 + (plain() - 0.5) * contrast, 0.0, 1.0);
        return evaluation_.choice(kNegative) != 0 ? 1 - value : value;
    }
    double smallestSize() const { return position_.smallest; }
    const TextureSpace &space() const { return space_; }

  private:
    double plain() const {
        switch (evaluation_.choice(kPattern)) {
        case kGrid: return grid();
        case kDots: return dots();
        case kFractalNoise: return 0.5 + 0.5 * noise(NoiseShape::plain);
        case kTurbulence: return noise(NoiseShape::magnitude);
        case kMarble: return wave(along() + noise(NoiseShape::magnitude));
        case kWood: return wave(fromAxis() + kRoughness * noise(NoiseShape::plain));
        default: return checkerboard();
        }
    }

    double checkerboard() const {
        double sum = 0;
        for (const double coordinate : cell_) sum += cellAt(coordinate);
        return isOdd(sum) ? 1 : 0;
    }

    // A polygon that is parallel to some of the planes shows only the lines of the others.
    double grid() const {
        const Vector normal = space_.normal();
        const double length = std::hypot(normal[0], normal[1], normal[2]), half = evaluation_.scalar(kThickness) / 2;
        for (std::size_t i = 0; i < 3; ++i) {
            const bool isAlong = std::fabs(normal[i]) > kFlatNormal * length;
            if (!isAlong && toBoundary(cell_[i]) < half) return 1;
        }
        return 0;
    }

    double dots() const {
        const double distance =
            std::hypot(0.5 - toBoundary(cell_[0]), 0.5 - toBoundary(cell_[1]), 0.5 - toBoundary(cell_[2]));
        return distance < evaluation_.scalar(kThickness) / 2 ? 1 : 0;
    }

    double noise(NoiseShape shape) const {
        const int octaves = std::clamp(evaluation_.integer(kOctaves), 1, kMostOctaves);
        const NoiseSum noise = sumNoise(cell_.data(), {.octaves = octaves, .shape = shape});
        return noise.sum / noise.amplitude;
    }

    double along() const { return position_.along(evaluation_.choice(kAxis)); }
    double fromAxis() const { return position_.fromAxis(evaluation_.choice(kAxis)); }

    const Evaluation &evaluation_;
    const TextureSpace space_;
    const CellPosition position_;
    const Vector &cell_ = position_.cell;
};

void give(const Evaluation &evaluation, int output) {
    const Pattern pattern(evaluation);
    const double value = pattern.value();
    if (output == kValueOut) return evaluation.set(value);
    const double alpha = value > 0 ? value * pattern.space().falloff(kFalloff) : 0;
    evaluation.set(output == kHeightOut ? kHeightOfOne * pattern.smallestSize() * alpha : alpha);
}

} // namespace

constinit const Definition proceduralPattern{
    .name = "Procedural Pattern",
    .colour = kTextureColour,
    .parameters =
        joinRows(std::to_array<Parameter>(
                     {{.label = "Pattern", .kind = Kind::choice, .initial = {kFractalNoise}, .texts = kPatternTexts}}),
                 kSpaceRows,
                 std::to_array<Parameter>({
                     {.label = "Axis", .kind = Kind::choice, .initial = {1}, .texts = kAxisTexts},
                     {.label = "Octaves", .kind = Kind::integer, .initial = {4}},
                     {.label = "Contrast", .kind = Kind::scalar, .initial = {1}},
                     {.label = "Thickness", .kind = Kind::percent, .initial = {0.25}},
                 }),
                 kFalloffRows,
                 std::to_array<Parameter>({
                     {.label = "Negative", .kind = Kind::choice, .texts = kSwitchTexts},
                 })),
    .outputs = {{{"Value", kConnectScalar}, {"Alpha", kConnectScalar}, {"Height", kConnectScalar}}},
    .evaluate = give,
};

} // namespace velm::host::builtin
