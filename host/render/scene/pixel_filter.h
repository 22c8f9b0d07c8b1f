// Pixel filters: the weights of samples near the centre of a pixel.
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

// The width in pixels that is used if none is chosen.
double defaultFilterWidth(FilterShape shape);

// A separable filter, by importance sampling (Ernst, Stamminger and Greiner, "Filter Importance Sampling", 2006):
// samples are distributed like the filter, and all have the same weight. Each pixel thus has its own samples, and does
// not depend on its neighbours.
//
// For a width w, at x pixels from the centre, the Gaussian filter is exp(-18 (x / w)^2): its standard deviation is
// a sixth of its width. The Blackman-Harris filter is the window of four terms (Harris, "On the use of windows for
// harmonic analysis with the discrete Fourier transform", 1978).
class PixelFilter {
  public:
    explicit PixelFilter(const FilterDescription &filter);

    // Maps a uniformly distributed number, 0 to 1, to a coordinate that is distributed like the filter, in pixels from
    // the left or upper edge of the pixel. 0.5 is its centre. [render threads]
    double coordinate(double number) const {
        if (quantiles_.empty()) return number;
        const double at = number * static_cast<double>(quantiles_.size() - 1);
        const std::size_t before =
            at < static_cast<double>(quantiles_.size() - 2) ? static_cast<std::size_t>(at) : quantiles_.size() - 2;
        const double fraction = at - static_cast<double>(before);
        return quantiles_[before] + fraction * (quantiles_[before + 1] - quantiles_[before]);
    }

  private:
    // The inverse of the filter's cumulative distribution function, tabulated at equal steps from 0 to 1. Empty for the
    // box of one pixel, for which it is the identity.
    std::vector<double> quantiles_;
};

} // namespace velm::host
