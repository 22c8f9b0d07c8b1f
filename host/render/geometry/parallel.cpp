#include "host/render/geometry/parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace velm::host {

void forTasks(std::size_t count, const std::function<void(std::size_t task)> &work) {
    std::atomic<std::size_t> next = 0;
    std::exception_ptr failure;
    std::size_t failed = count; // the task that threw it
    std::mutex failureLock;
    const auto takeTasks = [&] {
        for (std::size_t task = next++; task < count; task = next++) {
            try {
                work(task);
            } catch (...) {
                next = count;
                const std::lock_guard lock(failureLock);
                if (task < failed) failure = std::current_exception();
                failed = std::min(failed, task);
            }
        }
    };
    const std::size_t threads = std::min<std::size_t>(std::max(1u, std::thread::hardware_concurrency()), count);
    {
        std::vector<std::jthread> others;
        try {
            while (others.size() + 1 < threads) others.emplace_back(takeTasks);
        } catch (const std::system_error &) { // no more threads can be started: the others do the work
        }
        takeTasks();
    }
    if (failure) std::rethrow_exception(failure);
}

void forRanges(std::size_t count,
               const std::function<void(std::size_t range, std::size_t begin, std::size_t end)> &work) {
    forTasks(rangeCount(count),
             [&](std::size_t range) { work(range, range * kRangeSize, std::min(count, (range + 1) * kRangeSize)); });
}

} // namespace velm::host
