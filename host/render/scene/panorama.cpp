#include "host/render/scene/panorama.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>

namespace velm::host {
namespace {

constexpr double kPi = std::numbers::pi;

const ImageLevel &levelToUse(const HostImage &image) {
    constexpr int kWidest = 2048;
    const auto fits = [](const ImageLevel &level) { return level.width <= kWidest; };
    return *std::ranges::find_if(image.levels, fits); // the last level has one pixel
}

double meanOf(const Vec3 &colour) { return (colour.x + colour.y + colour.z) / 3; }

// An entry that was drawn from a table of cumulative sums.
struct Choice {
    std::size_t index;
    double within;      // where in the entry, 0 to 1
    double probability; // of the entry
};

Choice choose(std::span<const double> sums, double fraction) {
    const double total = sums.back(), target = fraction * total;
    auto found = std::ranges::upper_bound(sums, target);
    // If rounding makes the target equal to the total, this is the last entry that is not black.
    if (found == sums.end()) found = std::ranges::lower_bound(sums, total);
    const double before = found == sums.begin() ? 0 : *std::prev(found);
    const double size = *found - before;
    return {.index = static_cast<std::size_t>(found - sums.begin()),
            .within = std::clamp((target - before) / size, 0.0, 1.0),
            .probability = size / total};
}

} // namespace

Panorama::Panorama(const HostImage &image, bool upperHalf)
    : image_(image), level_(levelToUse(image)), upperHalf_(upperHalf), pixelChanges_(image.pixelChanges) {
    const auto width = static_cast<std::size_t>(level_.width), height = static_cast<std::size_t>(level_.height);
    rows_.reserve(height);
    pixels_.reserve(width * height);
    double all = 0;
    for (int y = 0; y < level_.height; ++y) {
        double row = 0;
        for (int x = 0; x < level_.width; ++x) pixels_.push_back(row += meanOf(colourAt(x, y)));
        rows_.push_back(all += row * (upperEdge(y) - upperEdge(y + 1)));
    }
}

Vec3 Panorama::colourAt(int x, int y) const {
    const std::ptrdiff_t index = static_cast<std::ptrdiff_t>(y) * level_.width + x;
    const float *pixel = level_.pixels.data() + index * image_.channels;
    const auto component = [&](int channel) {
        const auto value = static_cast<double>(pixel[image_.isColour ? channel : 0]);
        return std::isfinite(value) ? std::max(0.0, value) : 0;
    };
    return {component(0), component(1), component(2)};
}

double Panorama::upperEdge(int row) const {
    const double lowest = upperHalf_ ? 0.5 : 1;
    return std::cos(kPi * std::min(static_cast<double>(row) / level_.height, lowest));
}

bool Panorama::sample(const UnitSquare &point, Sample &result) const {
    if (!(rows_.back() > 0)) return false;
    const auto width = static_cast<std::size_t>(level_.width);
    const Choice row = choose(rows_, point.y);
    const Choice pixel = choose(std::span(pixels_).subspan(row.index * width, width), point.x);
    const int x = static_cast<int>(pixel.index), y = static_cast<int>(row.index);
    const double top = upperEdge(y), bottom = upperEdge(y + 1);
    const double up = top + row.within * (bottom - top), level = std::sqrt(std::max(0.0, 1 - up * up));
    const double heading = 2 * kPi * ((x + pixel.within) / level_.width - 0.5);
    const double solidAngle = 2 * kPi / level_.width * (top - bottom);
    result = {.direction = {level * std::sin(heading), up, level * std::cos(heading)},
              .colour = solidAngle / (kPi * row.probability * pixel.probability) * colourAt(x, y)};
    return true;
}

} // namespace velm::host
