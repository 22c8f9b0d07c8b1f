// Lists that are usually short, on the path of a sample.
#pragma once

#include <array>
#include <cstddef>
#include <memory_resource>
#include <vector>

namespace velm::host {

// A list that holds its first `few` items in itself, and takes memory from the heap only for more of them.
template <class T, std::size_t few>
class ShortList {
  public:
    ShortList() { items.reserve(few); }
    ShortList(const ShortList &) = delete;
    ShortList &operator=(const ShortList &) = delete;

  private:
    alignas(T) std::array<std::byte, few * sizeof(T)> own_;
    std::pmr::monotonic_buffer_resource memory_{own_.data(), own_.size()};

  public:
    std::pmr::vector<T> items{&memory_};
};

} // namespace velm::host
