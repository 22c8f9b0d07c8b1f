// Counts of the rays of a frame.
#pragma once

#include <cstdint>

namespace velm::host {

// Rays by their kind.
struct RayCounts {
    std::uint64_t camera = 0; // from the camera
    std::uint64_t cast = 0;   // for a distance only: ray casts, and traces in distance mode
    std::uint64_t shaded = 0; // reflected, refracted and shaded rays of surfaces and of nodes
    std::uint64_t shadow = 0; // shadow rays of lights, and traces in shadow and occlusion mode

    std::uint64_t total() const { return camera + cast + shaded + shadow; }
    RayCounts &operator+=(const RayCounts &other);
};

} // namespace velm::host
