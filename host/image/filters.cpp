#include "host/image/filters.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velm::host {

namespace {

void changeSaturation(double amount, std::span<float> colour) {
    const auto [low, high] = std::ranges::minmax(colour);
    const double saturation = high > 0 ? (high - low) / double{high} : 0;
    if (saturation == 0) return;
    const double factor = std::clamp(saturation + amount, 0.0, 1.0) / saturation;
    for (float &component : colour) component = static_cast<float>(high - (high - component) * factor);
}

// The hue is an angle of 0 to 6: red is 0, green 2 and blue 4. A component has the highest value up to a distance of 1
// from its own hue, falls linearly to the lowest value at a distance of 2, and has the lowest value beyond that.
void turnHue(double turns, std::span<float> colour) {
    const auto [low, high] = std::ranges::minmax(colour);
    const double range = double{high} - low;
    if (range == 0) return;
    const std::size_t top = static_cast<std::size_t>(std::ranges::max_element(colour) - colour.begin());
    const double next = colour[(top + 1) % 3], last = colour[(top + 2) % 3];
    const double hue = 2 * static_cast<double>(top) + (next - last) / range + 6 * turns;
    for (std::size_t i = 0; i < 3; ++i) {
        const double distance = std::abs(std::remainder(hue - 2 * static_cast<double>(i), 6));
        colour[i] = static_cast<float>(low + range * std::clamp(2 - distance, 0.0, 1.0));
    }
}

float changed(const ImageFilter &filter, double value) {
    using Kind = ImageFilter::Kind;
    const auto result = [&] {
        switch (filter.kind) {
        case Kind::brightness: return value + filter.amount;
        case Kind::contrast: return 0.5 + (1 + filter.amount) * (value - 0.5);
        case Kind::gamma: return filter.amount > 0 ? std::pow(value, 1 / filter.amount) : 0;
        case Kind::negative: return 1 - value;
        case Kind::saturation:
        case Kind::hue: break; // they change all components together
        }
        return value;
    };
    return static_cast<float>(result());
}

void apply(const ImageFilter &filter, std::span<float> colour) {
    const bool hasHue = colour.size() == 3;
    if (filter.kind == ImageFilter::Kind::saturation && hasHue) changeSaturation(filter.amount, colour);
    if (filter.kind == ImageFilter::Kind::hue && hasHue) turnHue(filter.amount, colour);
    for (float &component : colour) component = changed(filter, component);
}

} // namespace

void applyFilters(std::span<const ImageFilter> filters, bool isWithinOne, std::span<float> colour) {
    const float highest = isWithinOne ? 1 : std::numeric_limits<float>::max();
    const auto limit = [&] {
        for (float &component : colour) component = std::min(std::max(0.0F, component), highest); // NaN becomes 0
    };
    limit();
    for (const ImageFilter &filter : filters) {
        apply(filter, colour);
        limit();
    }
}

} // namespace velm::host
