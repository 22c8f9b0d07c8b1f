// Harm that modules of tests do to their process.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>

namespace harm {

// A pointer to memory that does not exist.
template <class Type>
Type *wild() {
    return reinterpret_cast<Type *>(std::uintptr_t{0x12345678});
}

inline void crash() {
    volatile int *volatile nowhere = nullptr;
    *nowhere = 1;
}

inline void callNothing() {
    void (*volatile nothing)() = nullptr;
    nothing();
}

inline void divide() {
    volatile int seven = 7, zero = 0;
    volatile int result = seven / zero;
    static_cast<void>(result);
}

inline int deeper(volatile int *from) {
    volatile int room[1000];
    room[0] = *from + 1;
    return room[0] == 0 ? 0 : deeper(room) + room[0];
}

inline void recurse() {
    volatile int none = 0;
    deeper(&none);
}

[[noreturn]] inline void sleepForEver() {
    for (;;) sleep(1);
}

inline void spin() {
    for (volatile bool on = true; on;) {
    }
}

// Overwrites all memory that this process shares with others, which holds the host's record of calls.
inline void overwriteShared(int byte) {
    std::FILE *maps = std::fopen("/proc/self/maps", "r");
    if (!maps) return;
    char line[512], access[8];
    unsigned long from = 0, to = 0;
    while (std::fgets(line, sizeof line, maps))
        if (std::sscanf(line, "%lx-%lx %7s", &from, &to, access) == 3 && access[1] == 'w' && access[3] == 's')
            std::memset(reinterpret_cast<void *>(from), byte, to - from);
    std::fclose(maps);
}

} // namespace harm
