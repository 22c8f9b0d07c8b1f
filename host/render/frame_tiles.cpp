#include "host/render/frame_tiles.h"

namespace velm::host {
namespace {

constexpr int tilesUpTo(int end) { return (end + kTileSize - 1) / kTileSize; }

void writeMean(const PixelSum &sum, float *pixel) {
    const double weight = 1.0 / sum.samples;
    pixel[0] = static_cast<float>(weight * sum.colour.x);
    pixel[1] = static_cast<float>(weight * sum.colour.y);
    pixel[2] = static_cast<float>(weight * sum.colour.z);
    pixel[3] = static_cast<float>(weight * sum.covered);
}

} // namespace

FrameTiles::FrameTiles(int width, int height, const Region &window, int samples)
    : width_(width), height_(height), window_(window), samples_(static_cast<std::uint32_t>(samples)),
      left_(window.left / kTileSize), top_(window.top / kTileSize), columns_(tilesUpTo(window.right) - left_),
      rows_(tilesUpTo(window.bottom) - top_), sums_(static_cast<std::size_t>(count()) * kTilePixels),
      finished_(static_cast<std::size_t>(count())) {}

Tile FrameTiles::tile(int number) const {
    const int column = left_ + number % columns_, row = top_ + number / columns_;
    const Region whole = {.left = column * kTileSize,
                          .top = row * kTileSize,
                          .right = (column + 1) * kTileSize,
                          .bottom = (row + 1) * kTileSize};
    return {.column = column,
            .row = row,
            .inPicture = intersection(whole, {.left = 0, .top = 0, .right = width_, .bottom = height_}),
            .inWindow = intersection(whole, window_)};
}

PixelSum *FrameTiles::sums(int number) {
    const auto index = static_cast<std::size_t>(number);
    return finished_[index] ? nullptr : &sums_[index * kTilePixels];
}

void FrameTiles::show(int number, int step, Picture &picture) {
    const PixelSum *sums = this->sums(number);
    if (!sums) return;
    const Tile shown = tile(number);
    const int left = shown.column * kTileSize, top = shown.row * kTileSize;
    for (int y = shown.inWindow.top; y < shown.inWindow.bottom; ++y) {
        for (int x = shown.inWindow.left; x < shown.inWindow.right; ++x) {
            const PixelSum *sum = &sums[pixelInTile(x - left, y - top)];
            if (sum->samples == 0) sum = &sums[pixelInTile((x - left) / step * step, (y - top) / step * step)];
            if (sum->samples > 0) writeMean(*sum, picture.pixel(x, y));
        }
    }
    if (!isFinished(shown, sums)) return;
    const auto index = static_cast<std::size_t>(number);
    finished_[index] = true;
    sums_.release(index * kTilePixels, kTilePixels);
}

bool FrameTiles::isFinished(const Tile &tile, const PixelSum *sums) const {
    const int left = tile.column * kTileSize, top = tile.row * kTileSize;
    for (int y = tile.inWindow.top; y < tile.inWindow.bottom; ++y)
        for (int x = tile.inWindow.left; x < tile.inWindow.right; ++x)
            if (sums[pixelInTile(x - left, y - top)].samples < samples_) return false;
    return true;
}

} // namespace velm::host
