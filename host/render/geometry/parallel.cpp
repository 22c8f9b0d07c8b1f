#include "host/render/geometry/parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace velm::host {

void forRanges(std::size_t count,
               const std::function<void(std::size_t range, std::size_t begin, std::size_t end)> &work) {
    const std::size_t ranges = rangeCount(count);
    std::atomic<std::size_t> next = 0;
    std::exception_ptr failure;
    std::mutex failureLock;
    const auto takeRanges = [&] {
        try {
            for (std::size_t range = next++; range < ranges; range = next++)
                work(range, range * kRangeSize, std::min(count, (range + 1) * kRangeSize));
        } catch (...) {
            next = ranges;
            const std::lock_guard lock(failureLock);
            if (!failure) failure = std::current_exception();
        }
    };
    const std::size_t threads = std::min<std::size_t>(std::max(1u, std::thread::hardware_concurrency()), ranges);
    {
        std::vector<std::jthread> others;
        try {
            while (others.size() + 1 < threads) others.emplace_back(takeRanges);
        } catch (const std::system_error &) { // no more threads can be started: these do the work
        }
        takeRanges();
    }
    if (failure) std::rethrow_exception(failure);
}

} // namespace velm::host
