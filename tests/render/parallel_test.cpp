// Ranges of a large mesh that are worked on at the same time.
#include "host/render/geometry/parallel.h"

#include <gtest/gtest.h>

#include <chrono>
#include <numeric>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace velm::host::test {
namespace {

TEST(ThreadedRanges, CoverEveryIndexOnce) {
    for (const std::size_t count : {std::size_t{0}, std::size_t{1}, kRangeSize, 10 * kRangeSize + 1}) {
        std::vector<int> visits(count);
        std::vector<std::size_t> sizes(rangeCount(count));
        forRanges(count, [&](std::size_t range, std::size_t begin, std::size_t end) {
            sizes[range] += end - begin;
            for (std::size_t i = begin; i < end; ++i) ++visits[i];
        });
        EXPECT_EQ(visits, std::vector<int>(count, 1));
        EXPECT_EQ(std::accumulate(sizes.begin(), sizes.end(), std::size_t{0}), count);
    }
}

// The order in which the exceptions are thrown does not matter, so that a file always has the same error.
TEST(ThreadedTasks, PassTheExceptionOfTheLowestNumberOn) {
    for (int round = 0; round < 50; ++round) {
        const auto work = [](std::size_t task) {
            if (task == 2) std::this_thread::sleep_for(std::chrono::microseconds(100));
            if (task >= 2) throw std::runtime_error(std::to_string(task));
        };
        try {
            forTasks(8, work);
            ADD_FAILURE() << "nothing was thrown";
        } catch (const std::runtime_error &error) {
            EXPECT_STREQ(error.what(), "2");
        }
    }
}

TEST(ThreadedRanges, PassExceptionsOn) {
    const auto work = [](std::size_t range, std::size_t, std::size_t) {
        if (range == 3) throw std::runtime_error("the third");
    };
    try {
        forRanges(100 * kRangeSize, work);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::runtime_error &error) {
        EXPECT_STREQ(error.what(), "the third");
    }
}

} // namespace
} // namespace velm::host::test
