#include "host/render/frame_tiles.h"

namespace velm::host {
namespace {

void writeMean(const PixelSum &sum, float *pixel) {
    const double weight = 1.0 / sum.samples;
    pixel[0] = static_cast<float>(weight * sum.colour.x);
    pixel[1] = static_cast<float>(weight * sum.colour.y);
    pixel[2] = static_cast<float>(weight * sum.colour.z);
    pixel[3] = static_cast<float>(weight * static_cast<double>(sum.alpha));
}

} // namespace

FrameTiles::FrameTiles(int width, int height, const Region &window, int samples, std::vector<LayerRule> rules,
                       int tileSize)
    : width_(width), height_(height), tileSize_(tileSize), window_(window),
      samples_(static_cast<std::uint32_t>(samples)), rules_(std::move(rules)), left_(window.left / tileSize),
      top_(window.top / tileSize), columns_((window.right + tileSize - 1) / tileSize - left_),
      rows_((window.bottom + tileSize - 1) / tileSize - top_), sums_(static_cast<std::size_t>(count()) * kTilePixels),
      layerSums_(static_cast<std::size_t>(count()) * kTilePixels * rules_.size()),
      finished_(static_cast<std::size_t>(count())) {}

Tile FrameTiles::tile(int number) const {
    const int column = left_ + number % columns_, row = top_ + number / columns_;
    const Region whole = {.left = column * tileSize_,
                          .top = row * tileSize_,
                          .right = (column + 1) * tileSize_,
                          .bottom = (row + 1) * tileSize_};
    return {.column = column,
            .row = row,
            .left = whole.left,
            .top = whole.top,
            .inPicture = intersection(whole, {.left = 0, .top = 0, .right = width_, .bottom = height_}),
            .inWindow = intersection(whole, window_)};
}

TileSums FrameTiles::sums(int number) {
    const auto index = static_cast<std::size_t>(number);
    if (finished_[index]) return {};
    return {.pixels = &sums_[index * kTilePixels],
            .layers = rules_.empty() ? nullptr : &layerSums_[index * kTilePixels * rules_.size()]};
}

// Writes the values of a pixel's layers, which `layers` has the sums of.
void FrameTiles::writeLayers(const PixelSum &sum, const double *layers, float *values) const {
    for (std::size_t i = 0; i < rules_.size(); ++i) {
        switch (rules_[i]) {
        case LayerRule::mean: values[i] = static_cast<float>(layers[i] / sum.samples); break;
        case LayerRule::first: values[i] = static_cast<float>(layers[i]); break;
        case LayerRule::count: values[i] = static_cast<float>(sum.samples); break;
        }
    }
}

void FrameTiles::show(int number, int step, Picture &picture) {
    const auto [sums, layers] = this->sums(number);
    if (!sums) return;
    const Tile shown = tile(number);
    const int left = shown.left, top = shown.top;
    for (int y = shown.inWindow.top; y < shown.inWindow.bottom; ++y) {
        for (int x = shown.inWindow.left; x < shown.inWindow.right; ++x) {
            std::size_t pixel = pixelInTile(x - left, y - top);
            if (sums[pixel].samples == 0) pixel = pixelInTile((x - left) / step * step, (y - top) / step * step);
            if (sums[pixel].samples == 0) continue;
            writeMean(sums[pixel], picture.pixel(x, y));
            if (layers) writeLayers(sums[pixel], layers + pixel * rules_.size(), picture.layers(x, y));
        }
    }
    if (!isFinished(shown, sums)) return;
    const auto index = static_cast<std::size_t>(number);
    finished_[index] = true;
    sums_.release(index * kTilePixels, kTilePixels);
    if (layers) layerSums_.release(index * kTilePixels * rules_.size(), kTilePixels * rules_.size());
}

bool FrameTiles::isFinished(const Tile &tile, const PixelSum *sums) const {
    for (int y = tile.inWindow.top; y < tile.inWindow.bottom; ++y)
        for (int x = tile.inWindow.left; x < tile.inWindow.right; ++x)
            if (sums[pixelInTile(x - tile.left, y - tile.top)].samples < samples_) return false;
    return true;
}

} // namespace velm::host
