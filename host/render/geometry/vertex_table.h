// A hash table of the vertices of a mesh, by which equal ones are found.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <new>
#include <utility>

namespace velm::host {

// The bits by which numbers are compared. Zero and minus zero count as equal, and so do all NaNs.
inline std::uint32_t comparedBits(float value) {
    if (value == 0) return 0;
    return value != value ? 0x7fc00000u : std::bit_cast<std::uint32_t>(value);
}

// Whether two arrays of the same length have equal numbers.
template <class Numbers>
bool equalNumbers(const Numbers &a, const Numbers &b) {
    for (std::size_t i = 0; i < std::size(a); ++i)
        if (comparedBits(a[i]) != comparedBits(b[i])) return false;
    return true;
}

// A hash of numbers: starts with 0, mixes in one after the other, and ends with endOfHash. Equal numbers have equal
// hashes.
inline std::uint64_t mixIn(std::uint64_t hash, float value) {
    hash = (hash ^ comparedBits(value)) * 0x9e3779b97f4a7c15u; // the golden ratio's multiplier (Knuth, TAOCP 6.4)
    return hash ^ (hash >> 29);
}
constexpr std::uint32_t endOfHash(std::uint64_t hash) { return static_cast<std::uint32_t>(hash >> 32); }

// Open addressing. A slot holds the hash beside the vertex, so that other vertices are rarely looked at: in a large
// mesh, each of them is a miss of the processor's caches.
class VertexTable {
  public:
    VertexTable() : slots_(allocated(kLeastSize)) {}

    // Makes room for that many vertices in all.
    void reserve(std::size_t vertices) {
        const std::size_t needed = std::bit_ceil(vertices + vertices / 2 + 1);
        if (needed > size_) resize(needed);
    }

    // Returns the first vertex for which `equals(vertex)` is true, of those that were added with that hash. If there is
    // none, adds `newcomer` and returns it.
    template <class Equals>
    std::uint32_t findOrAdd(std::uint32_t hash, std::uint32_t newcomer, const Equals &equals) {
        if ((count_ + 1) * 3 > size_ * 2) resize(size_ * 2);
        std::size_t slot = hash & mask();
        for (; slots_[slot] != 0; slot = (slot + 1) & mask())
            if (slots_[slot] >> 32 == hash && equals(vertexIn(slots_[slot]))) return vertexIn(slots_[slot]);
        slots_[slot] = std::uint64_t{hash} << 32 | (newcomer + 1);
        ++count_;
        return newcomer;
    }

    // Calls `add(i, hashOf(i))` for every i from 0 to count - 1, in that order, where `add` calls findOrAdd with the
    // hash. The hashes are computed some calls ahead, so that the processor's caches have loaded the slots by then;
    // call reserve for all vertices first.
    template <class HashOf, class Add>
    void addAll(std::size_t count, const HashOf &hashOf, const Add &add) const {
        constexpr std::size_t kAhead = 16; // slots that are being loaded
        std::array<std::uint32_t, kAhead> hashes{};
        for (std::size_t next = 0; next < count + kAhead; ++next) {
            std::uint32_t &hash = hashes[next % kAhead];
            if (next >= kAhead) add(next - kAhead, hash);
            if (next >= count) continue;
            hash = hashOf(next);
            __builtin_prefetch(&slots_[hash & mask()]);
        }
    }

  private:
    static std::uint32_t vertexIn(std::uint64_t slot) { return static_cast<std::uint32_t>(slot) - 1; }
    std::size_t mask() const { return size_ - 1; }

    struct Free {
        void operator()(std::uint64_t *slots) const { std::free(slots); }
    };
    using Slots = std::unique_ptr<std::uint64_t[], Free>;

    // Free slots. The system has cleared the memory of large tables already.
    static Slots allocated(std::size_t size) {
        Slots slots(static_cast<std::uint64_t *>(std::calloc(size, sizeof(std::uint64_t))));
        if (!slots) throw std::bad_alloc();
        return slots;
    }

    void resize(std::size_t size) {
        const Slots former = std::exchange(slots_, allocated(size));
        const std::size_t formerSize = std::exchange(size_, size);
        for (std::size_t i = 0; i < formerSize; ++i) {
            const std::uint64_t entry = former[i];
            if (entry == 0) continue;
            std::size_t slot = (entry >> 32) & mask();
            while (slots_[slot] != 0) slot = (slot + 1) & mask();
            slots_[slot] = entry;
        }
    }

    static constexpr std::size_t kLeastSize = 1024;
    Slots slots_;                   // the hash, and the vertex + 1; 0: free
    std::size_t size_ = kLeastSize; // a power of two
    std::size_t count_ = 0;         // of vertices
};

} // namespace velm::host
