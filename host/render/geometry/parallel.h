// Work on large meshes, divided among the processors.
#pragma once

#include <cstddef>
#include <functional>

namespace velm::host {

// The elements of one range, so that a range is worth the time to hand it out.
constexpr std::size_t kRangeSize = 16384;

constexpr std::size_t rangeCount(std::size_t count) { return (count + kRangeSize - 1) / kRangeSize; }

// Calls `work(range, begin, end)` for every range of the indices from 0 to count - 1, on several threads at the same
// time, and waits for all of them. The ranges depend on the count alone. Rethrows the first exception of `work`, and
// leaves out the ranges that have not been begun then. [any thread]
void forRanges(std::size_t count,
               const std::function<void(std::size_t range, std::size_t begin, std::size_t end)> &work);

} // namespace velm::host
