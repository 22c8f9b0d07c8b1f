// Statistics of a render run.
#pragma once

#include "host/render/renderer.h"

#include <chrono>
#include <iosfwd>

namespace velm::host {

// Sums up the frames of one run.
class TotalStatistics {
  public:
    // Ends the time of preparation. `points` is the number of vertices of all meshes.
    void prepared(std::size_t points);
    void add(const RenderStatistics &frame);

    // Prints rays by kind and per second, triangles, times and memory, for people.
    void print(std::ostream &out) const;
    // The same as JSON; times are in seconds, memory is in bytes.
    void printAsJson(std::ostream &out) const;

  private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point start_ = Clock::now();
    double preparation_ = 0; // seconds
    std::size_t points_ = 0;
    int frames_ = 0;
    RenderStatistics sum_;
};

} // namespace velm::host
