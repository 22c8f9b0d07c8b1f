#include "host/render/frame_tiles.h"

#include <algorithm>

namespace velm::host {
namespace {

void writeMean(const PixelSum &sum, float *pixel) {
    const double weight = 1.0 / sum.samples;
    pixel[0] = static_cast<float>(weight * sum.colour.x);
    pixel[1] = static_cast<float>(weight * sum.colour.y);
    pixel[2] = static_cast<float>(weight * sum.colour.z);
    pixel[3] = static_cast<float>(weight * sum.covered);
}

} // namespace

FrameTiles::FrameTiles(const Region &region, int samples)
    : region_(region), samples_(static_cast<std::uint32_t>(samples)),
      columns_((region.right - region.left + kTileSize - 1) / kTileSize),
      rows_((region.bottom - region.top + kTileSize - 1) / kTileSize), sums_(static_cast<std::size_t>(count())),
      finished_(static_cast<std::size_t>(count())) {}

Region FrameTiles::region(int tile) const {
    const int left = region_.left + tile % columns_ * kTileSize, top = region_.top + tile / columns_ * kTileSize;
    return {.left = left,
            .top = top,
            .right = std::min(left + kTileSize, region_.right),
            .bottom = std::min(top + kTileSize, region_.bottom)};
}

PixelSum *FrameTiles::sums(int tile) {
    const auto index = static_cast<std::size_t>(tile);
    if (finished_[index] != 0) return nullptr;
    if (!sums_[index]) sums_[index] = std::make_unique<PixelSum[]>(std::size_t{kTileSize} * kTileSize);
    return sums_[index].get();
}

void FrameTiles::show(int tile, int step, Picture &picture) {
    const PixelSum *sums = this->sums(tile);
    if (!sums) return;
    const Region pixels = region(tile);
    for (int y = 0; y < pixels.bottom - pixels.top; ++y) {
        for (int x = 0; x < pixels.right - pixels.left; ++x) {
            const PixelSum *sum = &sums[pixelInTile(x, y)];
            if (sum->samples == 0) sum = &sums[pixelInTile(x - x % step, y - y % step)];
            if (sum->samples > 0) writeMean(*sum, picture.pixel(pixels.left + x, pixels.top + y));
        }
    }
    if (!isFinished(pixels, sums)) return;
    const auto index = static_cast<std::size_t>(tile);
    finished_[index] = 1;
    sums_[index].reset();
}

bool FrameTiles::isFinished(const Region &region, const PixelSum *sums) const {
    for (int y = 0; y < region.bottom - region.top; ++y) {
        for (int x = 0; x < region.right - region.left; ++x)
            if (sums[pixelInTile(x, y)].samples < samples_) return false;
    }
    return true;
}

} // namespace velm::host
