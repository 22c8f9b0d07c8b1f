#include "host/check/watch/imports.h"

#include "host/check/watch/import.h"
#include "host/check/watch/locks.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <malloc.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <clocale>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <span>
#include <string_view>

namespace velm::host {

namespace {

constexpr auto kRelaxed = std::memory_order_relaxed; // counting must not order what threads do

std::atomic<long> blocksInUse, bytesInUse;
thread_local long calls[kImportKinds];
thread_local const char *lastCall[kImportKinds] = {"", "", "", ""};
thread_local long allocationsLeft = -1; // to succeed before the one that fails; negative: none fails
thread_local bool failed = false;

void note(ImportKind kind, const char *name) {
    ++calls[static_cast<int>(kind)];
    lastCall[static_cast<int>(kind)] = name;
}

// Counts an allocation, and tells whether it is the one that has to fail.
bool isDenied(const char *name) {
    note(ImportKind::memory, name);
    if (allocationsLeft < 0 || allocationsLeft-- > 0) return false;
    failed = true;
    return true;
}

void *countAllocated(void *memory) {
    if (memory) {
        blocksInUse.fetch_add(1, kRelaxed);
        bytesInUse.fetch_add(static_cast<long>(malloc_usable_size(memory)), kRelaxed);
    }
    return memory;
}

void countFreed(void *memory) {
    if (!memory) return;
    blocksInUse.fetch_sub(1, kRelaxed);
    bytesInUse.fetch_sub(static_cast<long>(malloc_usable_size(memory)), kRelaxed);
}

void *watchedMalloc(std::size_t size) { return isDenied("malloc") ? nullptr : countAllocated(std::malloc(size)); }
void *watchedCalloc(std::size_t count, std::size_t size) {
    return isDenied("calloc") ? nullptr : countAllocated(std::calloc(count, size));
}
void *watchedRealloc(void *memory, std::size_t size) {
    if (isDenied("realloc")) return nullptr;
    countFreed(memory);
    void *moved = std::realloc(memory, size);
    if (!moved && size > 0) return countAllocated(memory), nullptr; // the old block remains
    return countAllocated(moved);
}
int watchedAlign(void **memory, std::size_t alignment, std::size_t size) {
    if (isDenied("posix_memalign")) return ENOMEM;
    const int result = posix_memalign(memory, alignment, size);
    if (result == 0) countAllocated(*memory);
    return result;
}
void *watchedAlignedAlloc(std::size_t alignment, std::size_t size) {
    return isDenied("aligned_alloc") ? nullptr : countAllocated(std::aligned_alloc(alignment, size));
}
char *watchedStrdup(const char *text) {
    return isDenied("strdup") ? nullptr : static_cast<char *>(countAllocated(strdup(text)));
}
void watchedFree(void *memory) {
    countFreed(memory);
    std::free(memory);
}
void *watchedNewNothrow(std::size_t size, const std::nothrow_t &nothrow) {
    return isDenied("operator new") ? nullptr : countAllocated(::operator new(size, nothrow));
}
void *watchedNew(std::size_t size) {
    if (isDenied("operator new")) throw std::bad_alloc();
    return countAllocated(::operator new(size));
}
void watchedDelete(void *memory) {
    countFreed(memory);
    ::operator delete(memory);
}
void watchedSizedDelete(void *memory, std::size_t) { watchedDelete(memory); }

std::FILE *watchedFopen(const char *path, const char *mode) {
    note(ImportKind::file, "fopen");
    return std::fopen(path, mode);
}
int watchedOpen(const char *path, int flags, mode_t mode) {
    note(ImportKind::file, "open");
    return open(path, flags, mode);
}
int watchedThread(pthread_t *thread, const pthread_attr_t *attributes, void *(*start)(void *), void *argument) {
    note(ImportKind::thread, "pthread_create");
    return pthread_create(thread, attributes, start, argument);
}
char *watchedLocale(int category, const char *locale) {
    note(ImportKind::environment, "setlocale");
    return std::setlocale(category, locale);
}
int watchedSetenv(const char *name, const char *value, int overwrite) {
    note(ImportKind::environment, "setenv");
    return setenv(name, value, overwrite);
}
int watchedChdir(const char *path) {
    note(ImportKind::environment, "chdir");
    return chdir(path);
}
sighandler_t watchedSignal(int number, sighandler_t handler) {
    note(ImportKind::environment, "signal");
    return signal(number, handler);
}
int watchedSigaction(int number, const struct sigaction *action, struct sigaction *before) {
    note(ImportKind::environment, "sigaction");
    return sigaction(number, action, before);
}

const Import kImports[] = {
    import("malloc", watchedMalloc),
    import("calloc", watchedCalloc),
    import("realloc", watchedRealloc),
    import("posix_memalign", watchedAlign),
    import("aligned_alloc", watchedAlignedAlloc),
    import("strdup", watchedStrdup),
    import("free", watchedFree),
    import("_Znwm", watchedNew),
    import("_Znam", watchedNew),
    import("_ZnwmRKSt9nothrow_t", watchedNewNothrow),
    import("_ZnamRKSt9nothrow_t", watchedNewNothrow),
    import("_ZdlPv", watchedDelete),
    import("_ZdaPv", watchedDelete),
    import("_ZdlPvm", watchedSizedDelete),
    import("_ZdaPvm", watchedSizedDelete),
    import("fopen", watchedFopen),
    import("fopen64", watchedFopen),
    import("open", watchedOpen),
    import("open64", watchedOpen),
    import("pthread_create", watchedThread),
    import("setlocale", watchedLocale),
    import("setenv", watchedSetenv),
    import("chdir", watchedChdir),
    import("signal", watchedSignal),
    import("sigaction", watchedSigaction),
};

const Import *findImport(std::string_view name) {
    for (const std::span<const Import> imports : {std::span<const Import>(kImports), lockImports()})
        for (const Import &import : imports)
            if (import.name == name) return &import;
    return nullptr;
}

#if __SIZEOF_POINTER__ == 8
using Relocation = ElfW(Rela);
constexpr ElfW(Sxword) kTable = DT_RELA, kTableSize = DT_RELASZ;
std::size_t symbolOf(const Relocation &entry) { return ELF64_R_SYM(entry.r_info); }
#else
using Relocation = ElfW(Rel);
constexpr ElfW(Sword) kTable = DT_REL, kTableSize = DT_RELSZ;
std::size_t symbolOf(const Relocation &entry) { return ELF32_R_SYM(entry.r_info); }
#endif

struct Dynamic {
    const ElfW(Sym) *symbols = nullptr;
    const char *names = nullptr;
    const char *table = nullptr, *calls = nullptr; // the relocations of data and those of calls
    std::size_t tableSize = 0, callsSize = 0;
};

// Reads the dynamic section, in which the loader has made all addresses absolute.
Dynamic readDynamic(const ElfW(Dyn) * entry) {
    Dynamic found;
    for (; entry->d_tag != DT_NULL; ++entry) {
        const auto *at = reinterpret_cast<const char *>(entry->d_un.d_ptr);
        switch (entry->d_tag) {
        case DT_SYMTAB: found.symbols = reinterpret_cast<const ElfW(Sym) *>(at); break;
        case DT_STRTAB: found.names = at; break;
        case DT_JMPREL: found.calls = at; break;
        case DT_PLTRELSZ: found.callsSize = entry->d_un.d_val; break;
        case kTable: found.table = at; break;
        case kTableSize: found.tableSize = entry->d_un.d_val; break;
        default: break;
        }
    }
    return found;
}

// Overwrites an address that the loader has resolved, in a page that it may have write-protected since.
void replaceEntry(void **entry, void *function) {
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    auto *start = reinterpret_cast<void *>(reinterpret_cast<std::uintptr_t>(entry) & ~(page - 1));
    if (mprotect(start, page, PROT_READ | PROT_WRITE) == 0) *entry = function;
}

int watchTable(const Dynamic &dynamic, const char *table, std::size_t size, ElfW(Addr) base) {
    int count = 0;
    const auto *entries = reinterpret_cast<const Relocation *>(table);
    for (std::size_t i = 0; table && i < size / sizeof(Relocation); ++i) {
        const std::size_t symbol = symbolOf(entries[i]);
        if (symbol == 0) continue;
        const Import *found = findImport(dynamic.names + dynamic.symbols[symbol].st_name);
        if (!found) continue;
        replaceEntry(reinterpret_cast<void **>(base + entries[i].r_offset), found->function);
        ++count;
    }
    return count;
}

} // namespace

const char *importKindName(ImportKind kind) {
    constexpr const char *kNames[kImportKinds] = {"memory", "a file", "a thread", "the process's settings"};
    return kNames[static_cast<int>(kind)];
}

int watchImports(const void *inside) {
    Dl_info info;
    link_map *map = nullptr;
    if (dladdr1(inside, &info, reinterpret_cast<void **>(&map), RTLD_DL_LINKMAP) == 0 || !map) return 0;
    const Dynamic dynamic = readDynamic(map->l_ld);
    if (!dynamic.symbols || !dynamic.names) return 0;
    return watchTable(dynamic, dynamic.table, dynamic.tableSize, map->l_addr) +
           watchTable(dynamic, dynamic.calls, dynamic.callsSize, map->l_addr);
}

MemoryInUse moduleMemory() { return {blocksInUse.load(kRelaxed), bytesInUse.load(kRelaxed)}; }
long importCalls(ImportKind kind) { return calls[static_cast<int>(kind)]; }
const char *lastImport(ImportKind kind) { return lastCall[static_cast<int>(kind)]; }

void failAllocation(long number) {
    allocationsLeft = number;
    failed = false;
}

bool allocationFailed() { return failed; }

} // namespace velm::host
