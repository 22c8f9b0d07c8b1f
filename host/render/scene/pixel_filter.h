// Pixel filters: how samples around the middle of a pixel contribute to it.
#pragma once

#include <cstddef>
#include <vector>

namespace velm::host {

enum class FilterShape { box, gaussian, blackmanHarris };

inline constexpr double kNarrowestFilter = 0.1, kWidestFilter = 16; // pixels

struct FilterDescription {
    FilterShape shape = FilterShape::box;
    double width = 1; // pixels from end to end, kNarrowestFilter to kWidestFilter

    bool operator==(const FilterDescription &) const = default;
};

// The width that a shape has where none is chosen.
double defaultFilterWidth(FilterShape shape);

// A separable filter, by importance sampling (Ernst, Stamminger and Greiner, "Filter Importance Sampling", 2006):
// samples are distributed as the filter, and all have the same weight. So each pixel has samples of its own, and does
// not depend on its neighbours.
//
// With a width w and at x pixels from the middle, the Gaussian filter is exp(-18 (x / w)^2): its standard deviation is
// a sixth of its width. The Blackman-Harris filter is the window of four terms (Harris, "On the use of windows for
// harmonic analysis with the discrete Fourier transform", 1978).
class PixelFilter {
  public:
    explicit PixelFilter(const FilterDescription &filter);

    // Maps an evenly distributed number, 0 to 1, to a coordinate that is distributed as the filter: in pixels from the
    // left or upper edge of the pixel, so that 0.5 is its middle. [render threads]
    double coordinate(double number) const {
        if (places_.empty()) return number;
        const double at = number * static_cast<double>(places_.size() - 1);
        const std::size_t before =
            at < static_cast<double>(places_.size() - 2) ? static_cast<std::size_t>(at) : places_.size() - 2;
        const double beyond = at - static_cast<double>(before);
        return places_[before] + beyond * (places_[before + 1] - places_[before]);
    }

  private:
    // The inverse of the filter's cumulative distribution, at equal distances from 0 to 1; empty for the box of one
    // pixel, which leaves numbers as they are.
    std::vector<double> places_;
};

} // namespace velm::host
