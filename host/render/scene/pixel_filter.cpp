#include "host/render/scene/pixel_filter.h"

#include <cmath>
#include <numbers>

namespace velm::host {
namespace {

constexpr std::size_t kIntervals = 1024;        // of the table of the inverse distribution
constexpr std::size_t kSteps = 16 * kIntervals; // of the integral

// The unnormalised filter. `fraction` is the distance from the centre as a fraction of the width, -0.5 to 0.5.
double heightAt(FilterShape shape, double fraction) {
    if (shape == FilterShape::gaussian) return std::exp(-18 * fraction * fraction);
    if (shape == FilterShape::blackmanHarris) {
        const double angle = 2 * std::numbers::pi * fraction;
        return 0.35875 + 0.48829 * std::cos(angle) + 0.14128 * std::cos(2 * angle) + 0.01168 * std::cos(3 * angle);
    }
    return 1;
}

// The cumulative integral of the filter at the end of each step, by the midpoint rule.
std::vector<double> integralOf(FilterShape shape) {
    std::vector<double> sums(kSteps + 1);
    for (std::size_t i = 0; i < kSteps; ++i) {
        const double fraction = (static_cast<double>(i) + 0.5) / kSteps - 0.5;
        sums[i + 1] = sums[i] + heightAt(shape, fraction);
    }
    return sums;
}

} // namespace

double defaultFilterWidth(FilterShape shape) { return shape == FilterShape::box ? 1 : 3; }

PixelFilter::PixelFilter(const FilterDescription &filter) {
    if (filter == FilterDescription{}) return;
    const std::vector<double> sums = integralOf(filter.shape);
    std::size_t step = 0;
    for (std::size_t i = 0; i <= kIntervals; ++i) {
        const double sought = sums.back() * static_cast<double>(i) / kIntervals;
        while (step + 1 < kSteps && sums[step + 1] < sought) ++step;
        const double within = (sought - sums[step]) / (sums[step + 1] - sums[step]);
        const double fraction = (static_cast<double>(step) + within) / kSteps - 0.5;
        quantiles_.push_back(0.5 + fraction * filter.width);
    }
}

} // namespace velm::host
