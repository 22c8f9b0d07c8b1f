// What a render took.
#pragma once

#include "host/render/renderer.h"

#include <chrono>
#include <iosfwd>

namespace velm::host {

// Sums up the frames of one run.
class TotalStatistics {
  public:
    // Preparation is over; `points` are the meshes' vertices.
    void prepared(std::size_t points);
    void add(const RenderStatistics &frame);

    // Rays by kind and second, triangles, times and memory, for people.
    void print(std::ostream &out) const;

  private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point start_ = Clock::now();
    double preparation_ = 0; // seconds
    std::size_t points_ = 0;
    int frames_ = 0;
    RenderStatistics sum_;
};

} // namespace velm::host
