#include "host/image/image.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace velm::host {
namespace {

const float *pixelOf(const HostImage &image, const ImageLevel &level, int x, int y) {
    const std::ptrdiff_t index = static_cast<std::ptrdiff_t>(y) * level.width + x;
    return level.pixels.data() + index * image.channels;
}

// The four pixels around a point of the map, and the interpolation weights.
struct Neighbours {
    const float *upperLeft, *upperRight, *lowerLeft, *lowerRight;
    double across, down;

    double mean(int channel) const {
        const double upper = upperLeft[channel] + across * (upperRight[channel] - upperLeft[channel]);
        const double lower = lowerLeft[channel] + across * (lowerRight[channel] - lowerLeft[channel]);
        return upper + down * (lower - upper);
    }
};

// The fractional part of a number, relative to its floor; 0 for NaN and for numbers too large to have one. By casts:
// without SSE4.1, rounding functions are library calls that cost more than all the rest.
double fraction(double number) {
    constexpr double kNoFractions = 4e15;
    if (!(std::fabs(number) < kNoFractions)) return 0;
    const double rest = number - static_cast<double>(static_cast<std::int64_t>(number));
    return rest < 0 ? rest + 1 : rest;
}

// For numbers above -1.
int wholeBelow(double number) { return static_cast<int>(number + 1) - 1; }

Neighbours neighbours(const HostImage &image, const ImageLevel &level, double u, double v) {
    const double clamped = std::isfinite(v) ? std::clamp(v, 0.0, 1.0) : 0;
    const double x = fraction(u) * level.width - 0.5, y = clamped * level.height - 0.5;
    const int column = wholeBelow(x), row = wholeBelow(y);
    const int x0 = column < 0 ? level.width - 1 : std::min(column, level.width - 1);
    const int x1 = column + 1 >= level.width ? 0 : column + 1;
    const int y0 = std::max(row, 0), y1 = std::min(row + 1, level.height - 1);
    return {.upperLeft = pixelOf(image, level, x0, y0),
            .upperRight = pixelOf(image, level, x1, y0),
            .lowerLeft = pixelOf(image, level, x0, y1),
            .lowerRight = pixelOf(image, level, x1, y1),
            .across = x - column,
            .down = y - row};
}

void readColour(const HostImage &image, const Neighbours &four, double colour[3]) {
    if (image.isColour)
        for (int i = 0; i < 3; ++i) colour[i] = four.mean(i);
    else
        std::fill_n(colour, 3, four.mean(0));
}

// The two pyramid levels around the width of a spot, and the weight of the coarser one.
struct LevelPair {
    std::size_t finer = 0, coarser = 0;
    double towardsCoarser = 0;
};

LevelPair levelsFor(const HostImage &image, double spotSize) {
    const double pixels = spotSize * image.width;
    if (!(pixels > 1) || !std::isfinite(pixels)) return {};
    const std::size_t last = image.levels.size() - 1;
    const double level = std::log2(pixels);
    const std::size_t finer = static_cast<std::size_t>(std::min(level, static_cast<double>(last)));
    if (finer >= last) return {.finer = last, .coarser = last, .towardsCoarser = 0};
    return {.finer = finer, .coarser = finer + 1, .towardsCoarser = level - static_cast<double>(finer)};
}

int alphaChannel(const HostImage &image) { return image.channels - 1; }

} // namespace

void pixel(const HostImage *image, int x, int y, float colour[3]) {
    if (!image) {
        std::fill_n(colour, 3, 0.0f);
        return;
    }
    const float *found =
        pixelOf(*image, image->levels.front(), std::clamp(x, 0, image->width - 1), std::clamp(y, 0, image->height - 1));
    for (int i = 0; i < 3; ++i) colour[i] = found[image->isColour ? i : 0];
}

float pixelAlpha(const HostImage *image, int x, int y) {
    if (!image || !image->hasAlpha) return 1;
    return pixelOf(*image, image->levels.front(), std::clamp(x, 0, image->width - 1),
                   std::clamp(y, 0, image->height - 1))[alphaChannel(*image)];
}

void sampleBilinear(const HostImage *image, double u, double v, double colour[3]) {
    std::fill_n(colour, 3, 0.0);
    if (image) readColour(*image, neighbours(*image, image->levels.front(), u, v), colour);
}

double sampleBilinearAlpha(const HostImage *image, double u, double v) {
    if (!image || !image->hasAlpha) return 1;
    return neighbours(*image, image->levels.front(), u, v).mean(alphaChannel(*image));
}

void sampleSpot(const HostImage *image, double u, double v, double spotSize, double colour[3]) {
    if (!image) {
        std::fill_n(colour, 3, 0.0);
        return;
    }
    const LevelPair levels = levelsFor(*image, spotSize);
    readColour(*image, neighbours(*image, image->levels[levels.finer], u, v), colour);
    if (levels.towardsCoarser == 0) return;
    double coarse[3];
    readColour(*image, neighbours(*image, image->levels[levels.coarser], u, v), coarse);
    for (int i = 0; i < 3; ++i) colour[i] += levels.towardsCoarser * (coarse[i] - colour[i]);
}

double sampleSpotAlpha(const HostImage *image, double u, double v, double spotSize) {
    if (!image || !image->hasAlpha) return 1;
    const LevelPair levels = levelsFor(*image, spotSize);
    const int channel = alphaChannel(*image);
    const double fine = neighbours(*image, image->levels[levels.finer], u, v).mean(channel);
    const double coarse = neighbours(*image, image->levels[levels.coarser], u, v).mean(channel);
    return fine + levels.towardsCoarser * (coarse - fine);
}

} // namespace velm::host
