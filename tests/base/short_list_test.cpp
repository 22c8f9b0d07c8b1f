#include "host/base/short_list.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <numeric>

namespace velm::host {
namespace {

TEST(ShortList, AllocatesNoMemoryForFewItems) {
    std::pmr::memory_resource *before = std::pmr::set_default_resource(std::pmr::null_memory_resource());
    ShortList<std::uint64_t, 4> list;
    for (std::uint64_t i = 0; i < 4; ++i) EXPECT_NO_THROW(list.items.push_back(i));
    EXPECT_THROW(list.items.push_back(4), std::bad_alloc) << "the default resource has no memory";
    EXPECT_EQ(list.items.size(), 4u);
    std::pmr::set_default_resource(before);
}

TEST(ShortList, AllocatesMemoryForMoreItems) {
    ShortList<std::uint64_t, 4> list;
    for (std::uint64_t i = 0; i < 100; ++i) list.items.push_back(i);
    EXPECT_EQ(std::accumulate(list.items.begin(), list.items.end(), std::uint64_t{0}), 4950u);
}

} // namespace
} // namespace velm::host
