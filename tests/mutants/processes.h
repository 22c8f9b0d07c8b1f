// Faults of the mutants that concern whole processes.
#pragma once

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace faults {

[[noreturn]] inline void sleepForEver() {
    if (std::FILE *file = std::fopen(std::getenv("VELM_MUTANT_PROCESSES"), "a")) {
        std::fprintf(file, "%d\n", static_cast<int>(getpid()));
        std::fclose(file);
    }
    for (;;) pause();
}

// Starts a process that stays in the group of this one, and one in a session of its own.
inline void leaveProcesses() {
    static bool hasLeft = false;
    if (hasLeft) return;
    hasLeft = true;
    if (fork() == 0) sleepForEver();
    if (fork() == 0) {
        setsid();
        if (fork() == 0) sleepForEver();
        _exit(0);
    }
}

// Writes to all memory that is shared with other processes, which is that of the host.
inline void overwriteSharedMemory() {
    std::FILE *maps = std::fopen("/proc/self/maps", "r");
    char line[512], access[8];
    unsigned long from = 0, to = 0;
    while (maps && std::fgets(line, sizeof line, maps))
        if (std::sscanf(line, "%lx-%lx %7s", &from, &to, access) == 3 && access[1] == 'w' && access[3] == 's')
            std::memset(reinterpret_cast<void *>(from), 0x41, to - from);
    std::raise(SIGSEGV);
}

} // namespace faults
