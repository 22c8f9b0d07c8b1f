#include "host/io/shared_arena.h"

#include "host/base/error.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <new>
#include <unordered_set>

namespace velm::host {

namespace {

constexpr std::size_t kLeastBytes = std::size_t{1} << 20;
constexpr std::size_t kLargeBlock = std::size_t{1} << 23; // in bytes: room for several huge pages

std::size_t pageSize() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }

// [interface thread]
std::unordered_set<const SharedArena *> &sealedArenas() {
    static std::unordered_set<const SharedArena *> arenas;
    return arenas;
}

std::size_t roundedUp(std::size_t bytes, std::size_t unit) { return (bytes + unit - 1) / unit * unit; }

} // namespace

SharedArena::SharedArena(std::size_t bytes) {
    for (size_ = roundedUp(std::max(bytes, kLeastBytes), pageSize()); size_ >= kLeastBytes;
         size_ = roundedUp(size_ / 2, pageSize())) {
        void *memory = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (memory == MAP_FAILED) continue;
        begin_ = static_cast<char *>(memory);
        new (begin_) std::size_t{sizeof(std::size_t)};
        return;
    }
    throw MachineError("no memory to share with a process that reads a file: " + std::string(std::strerror(errno)));
}

SharedArena::~SharedArena() {
    sealedArenas().erase(this);
    munmap(begin_, size_);
}

std::size_t SharedArena::used() const { return std::min(*reinterpret_cast<const std::size_t *>(begin_), size_); }

void *SharedArena::place(std::size_t bytes, std::size_t alignment) {
    // Large blocks have their pages to themselves, so that these can be returned.
    const std::size_t start = roundedUp(used(), bytes >= pageSize() ? pageSize() : alignment);
    if (start > size_ || bytes > size_ - start) throw std::bad_alloc();
    *reinterpret_cast<std::size_t *>(begin_) = start + bytes;
    // Huge pages are faster to fill, since there are fewer page faults. It is no error if the system has none.
    if (bytes >= kLargeBlock) madvise(begin_ + start, bytes, MADV_HUGEPAGE);
    return begin_ + start;
}

void SharedArena::seal() {
    const std::size_t kept = roundedUp(used(), pageSize());
    if (kept < size_) munmap(begin_ + kept, size_ - kept);
    size_ = kept;
    sealedArenas().insert(this);
}

void SharedArena::unmapSealed() {
    for (const SharedArena *arena : sealedArenas()) munmap(arena->begin_, arena->size_);
}

bool SharedArena::contains(const void *begin, std::size_t bytes) const {
    if (bytes == 0) return true;
    const auto first = reinterpret_cast<std::uintptr_t>(begin), start = reinterpret_cast<std::uintptr_t>(begin_);
    return first >= start && first - start <= used() && bytes <= used() - (first - start);
}

void *SharedArena::do_allocate(std::size_t bytes, std::size_t alignment) {
    if (!charge_) return std::pmr::new_delete_resource()->allocate(bytes, alignment);
    charge_(bytes);
    return place(bytes, alignment);
}

void SharedArena::do_deallocate(void *block, std::size_t bytes, std::size_t alignment) {
    if (!contains(block, 1)) {
        std::pmr::new_delete_resource()->deallocate(block, bytes, alignment);
    } else if (bytes >= pageSize()) {
        // The page that a block ends in may also hold the next, smaller one.
        madvise(block, bytes / pageSize() * pageSize(), MADV_REMOVE);
    }
}

} // namespace velm::host
