// Memory that this process shares with the processes that it forks.
#pragma once

#include "host/base/error.h"

#include <sys/mman.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>

namespace velm::host {

// An array in memory that this process and the processes that it forks read and write together. All bytes are zero at
// first. Pages take memory once they are touched. Each process unmaps its own view when its object is destroyed.
template <class Element>
class SharedArray {
    static_assert(std::is_trivially_destructible_v<Element>);

  public:
    SharedArray() = default;
    // MachineError when there is no memory.
    explicit SharedArray(std::size_t count) : count_(count) {
        if (count == 0) return;
        void *memory =
            mmap(nullptr, bytes(), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (memory == MAP_FAILED)
            throw MachineError("no memory to share with another process: " + std::string(std::strerror(errno)));
        elements_ = static_cast<Element *>(memory);
    }
    SharedArray(SharedArray &&other) noexcept
        : elements_(std::exchange(other.elements_, nullptr)), count_(std::exchange(other.count_, 0)) {}
    SharedArray &operator=(SharedArray &&other) noexcept {
        std::swap(elements_, other.elements_);
        std::swap(count_, other.count_);
        return *this;
    }
    SharedArray(const SharedArray &) = delete;
    SharedArray &operator=(const SharedArray &) = delete;
    ~SharedArray() {
        if (elements_) munmap(elements_, bytes());
    }

    std::size_t size() const { return count_; }
    Element *data() { return elements_; }
    const Element *data() const { return elements_; }
    Element &operator[](std::size_t index) { return elements_[index]; }
    const Element &operator[](std::size_t index) const { return elements_[index]; }

    // Gives back the memory of `count` elements from `first` on, which have to cover whole pages: all their bytes are
    // zero again. Without effect where the system cannot do it.
    void release(std::size_t first, std::size_t count) {
        madvise(elements_ + first, count * sizeof(Element), MADV_REMOVE);
    }

  private:
    std::size_t bytes() const { return count_ * sizeof(Element); }

    Element *elements_ = nullptr;
    std::size_t count_ = 0;
};

} // namespace velm::host
