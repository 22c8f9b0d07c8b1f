// Faults of the mutants that concern whole processes.
#pragma once

#include "tests/module/harm.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>

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

inline void overwriteRecord() {
    harm::overwriteShared(0x41);
    std::raise(SIGSEGV);
}

} // namespace faults
