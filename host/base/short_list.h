// A list for the path of a sample, which must not allocate memory in the usual case.
#pragma once

#include <array>
#include <cstddef>
#include <memory_resource>
#include <vector>

namespace velm::host {

// A list that stores its first `few` items inline, and allocates memory only for more.
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
