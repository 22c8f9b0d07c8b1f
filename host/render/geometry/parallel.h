// Work on large meshes, divided among the processors.
#pragma once

#include <cstddef>
#include <functional>

namespace velm::host {

// The elements of one range: enough to be worth the time of starting it.
constexpr std::size_t kRangeSize = 16384;

constexpr std::size_t rangeCount(std::size_t count) { return (count + kRangeSize - 1) / kRangeSize; }

// Divides the indices from 0 to count - 1 into ranges, which depend on the count alone. Calls `work(range, begin, end)`
// for each of them, on several threads at the same time, and waits for all. After an exception of `work`, no more
// ranges are begun; the first exception is rethrown. [any thread]
void forRanges(std::size_t count,
               const std::function<void(std::size_t range, std::size_t begin, std::size_t end)> &work);

} // namespace velm::host
