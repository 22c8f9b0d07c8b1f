// The faults of the evil module, and where it keeps what some of them destroy. ./run attack reads their names from
// kFaults.
#pragma once

#include "module/host.h"

#include "tests/module/harm.h"
#include "tests/module/small_module.h"

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cfenv>
#include <clocale>
#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>

extern "C" __attribute__((visibility("default"))) HostModuleDescriptor _mod_descrip;

namespace evil {

using namespace harm;
using small_module::outputs;

inline void *lastNode = nullptr;

// What callbacks that can fail answer with, once a fault has set it.
inline HostError answer = nullptr;

// ---- Crashes ----

inline void callAnything() {
    void (*volatile anything)() = reinterpret_cast<void (*)()>(std::uintptr_t{0x12345678});
    anything();
}

// Reads a page of a file that is too short for it.
inline void readBehindFile() {
    char name[] = "/dev/shm/velm-evil-XXXXXX";
    const int file = mkstemp(name);
    if (file < 0) return;
    unlink(name);
    const auto *page = static_cast<volatile char *>(mmap(nullptr, 4096, PROT_READ, MAP_SHARED, file, 0));
    if (page != MAP_FAILED) static_cast<void>(*page);
}

[[gnu::noinline]] inline void smashStack() {
    char room[16];
    volatile char *volatile at = room;
    for (int i = 0; i < 4096; ++i) at[i] = 0x41;
}

inline void unmapStack() {
    char here = 0;
    char *volatile at = &here;
    munmap(reinterpret_cast<void *>(reinterpret_cast<std::uintptr_t>(at) & ~std::uintptr_t{4095}), 4096);
}

inline void jumpAnywhere() {
    static std::jmp_buf target;
    std::memset(&target, 0x41, sizeof target);
    std::longjmp(target, 1);
}

inline void freeTwice() {
    void *volatile block = std::malloc(5000);
    void *volatile between = std::malloc(24);
    std::free(block);
    std::free(between);
    std::free(block);
}

inline void overrunHeap() {
    auto *volatile block = static_cast<volatile char *>(std::malloc(24));
    for (int i = 0; i < 3000; ++i) block[i] = 0x41;
    for (int i = 0; i < 3000; ++i) std::free(std::malloc(static_cast<std::size_t>(i % 700) + 1));
}

// ---- Ends, hangs and hunger ----

inline void lockTwice() {
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_mutex_lock(&mutex);
    pthread_mutex_lock(&mutex);
}

inline void blockSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, nullptr);
}

// Allocates until nothing is left, of 256 MiB so that the machine survives.
inline void eatMemory() {
    rlimit limit{};
    getrlimit(RLIMIT_DATA, &limit);
    limit.rlim_cur = rlim_t{256} << 20;
    setrlimit(RLIMIT_DATA, &limit);
    constexpr std::size_t kPiece = 1 << 24;
    for (;;) std::memset(::operator new(kPiece), 1, kPiece);
}

// ---- Signals, threads and processes ----

inline void holdCrashes() {
    for (const int number : {SIGSEGV, SIGABRT, SIGBUS}) signal(number, [](int) { sleepForEver(); });
    crash();
}

inline void recurseWithoutStack() {
    stack_t none{};
    none.ss_flags = SS_DISABLE;
    sigaltstack(&none, nullptr);
    recurse();
}

inline void crashInThread() {
    std::thread(crash).detach();
    usleep(300000);
}

inline void throwInThread() {
    std::thread([] { throw std::runtime_error("no luck in a thread"); }).detach();
    usleep(300000);
}

inline void spinInThreads() {
    for (int i = 0; i < 3; ++i) std::thread(spin).detach();
}

[[noreturn]] inline void stayForMinutes() {
    for (int i = 0; i < 300; ++i) sleep(1);
    _exit(0);
}

inline void forkSleeper() {
    if (fork() == 0) stayForMinutes();
}

// The copy ends by exit, which runs the host's own exit handlers in it.
inline void forkExit() {
    if (fork() == 0) std::exit(0);
    int status = 0;
    wait(&status);
}

inline void forkDaemon() {
    const pid_t child = fork();
    if (child == 0) {
        setsid();
        if (fork() == 0) stayForMinutes();
        _exit(0);
    }
    waitpid(child, nullptr, 0);
}

// ---- The process as a whole ----

inline void changeDirectory() {
    if (chdir("/") != 0) std::abort();
}

inline void closeAll() {
    for (int i = 0; i < 256; ++i) close(i);
}

inline void limitFiles() {
    const rlimit none{0, 0};
    setrlimit(RLIMIT_FSIZE, &none);
}

inline void flood(std::FILE *stream) {
    for (int i = 0; i < 20000; ++i) std::fprintf(stream, "velm: all is well %d\n", i);
    std::fflush(stream);
}

inline void overwriteTables() {
    if (!outputs) return;
    const auto page = reinterpret_cast<std::uintptr_t>(outputs) & ~std::uintptr_t{4095};
    mprotect(reinterpret_cast<void *>(page), 8192, PROT_READ | PROT_WRITE);
    std::memset(const_cast<HostNodeOutputFuncs *>(outputs), 0x41, sizeof *outputs);
}

inline void overwriteNode() {
    if (lastNode) std::memset(lastNode, 0x41, 64);
}

// ---- Answers ----

inline void answerLong() {
    static const std::string text(1 << 20, 'x');
    answer = text.c_str();
}

struct Fault {
    const char *name;
    void (*act)();
};
inline const Fault kFaults[] = {
    {"crash", crash},
    {"call nothing", callNothing},
    {"call anything", callAnything},
    {"divide", divide},
    {"illegal", [] { raise(SIGILL); }},
    {"trap", [] { raise(SIGTRAP); }},
    {"read behind file", readBehindFile},
    {"abort", [] { std::abort(); }},
    {"terminate", [] { std::terminate(); }},
    {"recurse", recurse},
    {"smash stack", smashStack},
    {"unmap stack", unmapStack},
    {"jump anywhere", jumpAnywhere},
    {"free twice", freeTwice},
    {"overrun heap", overrunHeap},
    {"throw number", [] { throw 42; }},
    {"throw error", [] { throw std::runtime_error("no luck\nvelm: all is well\x1b[31m"); }},
    {"throw long error", [] { throw std::runtime_error(std::string(1 << 20, 'x')); }},
    {"exit 0", [] { std::exit(0); }},
    {"exit 7", [] { std::exit(7); }},
    {"quick_exit", [] { std::quick_exit(0); }},
    {"_exit 0", [] { _exit(0); }},
    {"_exit 2", [] { _exit(2); }},
    {"kill itself", [] { raise(SIGKILL); }},
    {"end itself", [] { kill(getpid(), SIGTERM); }},
    {"stop itself", [] { raise(SIGSTOP); }},
    {"end thread", [] { pthread_exit(nullptr); }},
    {"exec", [] { execl("/bin/true", "true", nullptr); }},
    {"sleep", sleepForEver},
    {"spin", spin},
    {"lock twice", lockTwice},
    {"block and sleep", [] { blockSignals(), sleepForEver(); }},
    {"block signals", blockSignals},
    {"eat memory", eatMemory},
    {"ignore crash", [] { signal(SIGSEGV, SIG_IGN), crash(); }},
    {"hold crashes", holdCrashes},
    {"recurse without stack", recurseWithoutStack},
    {"ignore children", [] { signal(SIGCHLD, SIG_IGN); }},
    {"spin in threads", spinInThreads},
    {"crash in thread", crashInThread},
    {"throw in thread", throwInThread},
    {"fork sleeper", forkSleeper},
    {"fork exit", forkExit},
    {"fork daemon", forkDaemon},
    {"change directory", changeDirectory},
    {"change mask", [] { umask(0777); }},
    {"close errors", [] { close(STDERR_FILENO); }},
    {"close all", closeAll},
    {"limit files", limitFiles},
    {"change locale", [] { std::setlocale(LC_ALL, "de_DE.UTF-8"); }},
    {"change rounding", [] { std::fesetround(FE_UPWARD); }},
    {"trap floats", [] { feenableexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW); }},
    {"clear environment", [] { clearenv(); }},
    {"crash at exit", [] { std::atexit(crash); }},
    {"flood errors", [] { flood(stderr); }},
    {"flood output", [] { flood(stdout); }},
    {"overwrite shared and crash", [] { overwriteShared(0x41), crash(); }},
    {"overwrite shared and sleep", [] { overwriteShared(1), sleepForEver(); }},
    {"overwrite shared", [] { overwriteShared(0xFF); }},
    {"overwrite tables", overwriteTables},
    {"overwrite node", overwriteNode},
    {"answer wildly", [] { answer = wild<const char>(); }},
    {"answer strangely", [] { answer = "no\nvelm: all is well\x1b[31m\xff"; }},
    {"answer long", answerLong},
    {"wild servers", [] { _mod_descrip.servers = wild<const HostServer>(); }},
    {"no servers", [] { _mod_descrip.servers = nullptr; }},
    {"wild startup", [] { _mod_descrip.startup = reinterpret_cast<void *(*)()>(std::uintptr_t{0x12345678}); }},
};

} // namespace evil
