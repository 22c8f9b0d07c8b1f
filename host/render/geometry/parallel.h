// Work on large meshes, divided among the processors.
#pragma once

#include <cstddef>
#include <functional>

namespace velm::host {

// Calls `work` for each number from 0 to count - 1, in that order, on several threads at the same time, and waits for
// all. After an exception of `work`, no more calls are begun; of several exceptions, that of the lowest number is
// rethrown. [any thread]
void forTasks(std::size_t count, const std::function<void(std::size_t task)> &work);

// The elements of one range: enough to be worth the time of starting it.
constexpr std::size_t kRangeSize = 16384;

constexpr std::size_t rangeCount(std::size_t count) { return (count + kRangeSize - 1) / kRangeSize; }

// Divides the indices from 0 to count - 1 into ranges, which depend on the count alone. Calls `work(range, begin, end)`
// for each of them as forTasks does. [any thread]
void forRanges(std::size_t count,
               const std::function<void(std::size_t range, std::size_t begin, std::size_t end)> &work);

} // namespace velm::host
