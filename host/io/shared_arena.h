// Memory in which a process that reads a file builds its result for the process that started it.
#pragma once

#include <cstddef>
#include <functional>
#include <memory_resource>

namespace velm::host {

// A range of memory that has the same addresses in this process and in one forked from it. Only pages that are written
// to take memory. A container that was filled in the other process can therefore be used in this one as it is.
//
// The process that calls `fillHere` allocates from the arena. Every other process allocates from its heap, and only
// releases what the first one allocated: a released block returns its pages to the system.
class SharedArena final : public std::pmr::memory_resource {
  public:
    // Reserves addresses for that many bytes; for fewer if the system does not have as many. Throws MachineError if it
    // has next to none.
    explicit SharedArena(std::size_t bytes);
    ~SharedArena() override;
    SharedArena(const SharedArena &) = delete;
    SharedArena &operator=(const SharedArena &) = delete;

    // Allocates from the arena in whichever process. Throws std::bad_alloc if it is full.
    void *place(std::size_t bytes, std::size_t alignment);

    // From now on, this process allocates from the arena. `charge` is called with the bytes of each allocation before
    // it is made; it may throw.
    void fillHere(std::function<void(std::size_t)> charge) { charge_ = std::move(charge); }

    // Ends the filling of the arena: gives back the addresses that were not used.
    void seal();
    // For a process that was forked to read another file: unmaps all sealed arenas there, so that it cannot damage
    // earlier results.
    static void unmapSealed();

    // Whether these bytes are in the part of the arena that is in use. No bytes at all are.
    bool contains(const void *begin, std::size_t bytes) const;
    // Whether a container (std::pmr::vector, std::pmr::string) allocates from this arena, and has all its elements in
    // it. A process that misbehaved while it filled the arena may have left anything there.
    template <class Container>
    bool holds(const Container &container) const {
        return container.get_allocator().resource() == this && container.size() <= container.capacity() &&
               contains(container.data(), container.capacity() * sizeof(typename Container::value_type));
    }

  private:
    void *do_allocate(std::size_t bytes, std::size_t alignment) override;
    void do_deallocate(void *block, std::size_t bytes, std::size_t alignment) override;
    bool do_is_equal(const memory_resource &other) const noexcept override { return this == &other; }
    std::size_t used() const;

    char *begin_ = nullptr;
    std::size_t size_ = 0;                    // in bytes; the first ones hold how many are in use
    std::function<void(std::size_t)> charge_; // empty: this process allocates from its heap
};

} // namespace velm::host
