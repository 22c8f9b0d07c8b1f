// Work on large meshes, divided among the processors.
#pragma once

#include <cstddef>
#include <functional>

namespace velm::host {

// Calls `work(task)` for every task from 0 to count - 1 on several threads, and waits for all calls. They begin in the
// order of the tasks and overlap in time. After an exception, no more calls begin; of several exceptions, that of the
// lowest task is rethrown. [any thread]
void forTasks(std::size_t count, const std::function<void(std::size_t task)> &work);

// The elements of one range: enough to be worth the time of starting it.
constexpr std::size_t kRangeSize = 16384;

constexpr std::size_t rangeCount(std::size_t count) { return (count + kRangeSize - 1) / kRangeSize; }

// Divides the indices from 0 to count - 1 into ranges, which depend on the count alone. Calls `work(range, begin, end)`
// for each of them as forTasks does. [any thread]
void forRanges(std::size_t count,
               const std::function<void(std::size_t range, std::size_t begin, std::size_t end)> &work);

} // namespace velm::host
