// Work in a process of its own: its result, and what becomes of work that crashes, hangs, ends or takes too much.
#include "host/io/reader_process.h"

#include "host/base/error.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory_resource>
#include <numeric>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace velm::host::test {
namespace {

struct Numbers {
    explicit Numbers(std::pmr::memory_resource *memory) : values(memory) {}
    bool isWithin(const SharedArena &arena) const { return arena.holds(values); }

    std::pmr::vector<int> values;
};

using Work = std::function<void(Numbers &)>;

std::shared_ptr<Numbers> readNumbers(const Work &work) { return readApart<Numbers>("data.bin", "the numbers", work); }

std::string failureOf(const Work &work) {
    try {
        readNumbers(work);
    } catch (const InputError &error) {
        EXPECT_EQ(error.location().file, "data.bin");
        return error.message();
    }
    return "";
}

// Limits for as long as it lives; none of its tests leaves a process behind.
struct ReaderProcessTest : testing::Test {
    ReaderProcessTest() { readLimits() = {.mebibytes = 64, .seconds = 30}; }
    ~ReaderProcessTest() override {
        readLimits() = {};
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a process is left behind";
    }
};

constexpr int kCount = 100000;

TEST_F(ReaderProcessTest, HandsOverWhatTheOtherProcessBuilt) {
    int changedThere = 0;
    const auto read = readNumbers([&](Numbers &numbers) {
        changedThere = 1;
        numbers.values.resize(kCount);
        std::iota(numbers.values.begin(), numbers.values.end(), 0);
    });
    EXPECT_EQ(changedThere, 0);
    ASSERT_EQ(read->values.size(), std::size_t{kCount});
    EXPECT_EQ(std::accumulate(read->values.begin(), read->values.end(), 0L), 4999950000L);
}

// The caller may change, move and copy what was read. Its memory stays valid until the last part that uses it is gone.
TEST_F(ReaderProcessTest, ResultsCanBeUsedFreely) {
    std::pmr::vector<int> copy;
    {
        const auto read = readNumbers([](Numbers &numbers) { numbers.values.assign(kCount, 7); });
        const int *before = read->values.data();
        std::pmr::vector<int> moved = std::move(read->values);
        EXPECT_EQ(moved.data(), before);
        moved.push_back(8);
        EXPECT_NE(moved.data(), before);
        copy = moved;
    }
    ASSERT_EQ(copy.size(), std::size_t{kCount + 1});
    EXPECT_EQ(std::count(copy.begin(), copy.end(), 7), kCount);
    EXPECT_EQ(copy.back(), 8);
}

TEST_F(ReaderProcessTest, ThrowAnInputErrorWithItsMessage) {
    EXPECT_EQ(failureOf([](Numbers &) { throw InputError({.file = "x"}, "it is upside down"); }), "it is upside down");
    EXPECT_EQ(failureOf([](Numbers &) { throw InputError(std::string(100000, 'a')); }).substr(0, 3), "aaa");
}

struct Fault {
    const char *name;
    void (*happen)();
    const char *message;
};
class ReaderFault : public ReaderProcessTest, public testing::WithParamInterface<Fault> {};

TEST_P(ReaderFault, IsOneOfTheFile) {
    EXPECT_EQ(failureOf([](Numbers &) { GetParam().happen(); }),
              std::string("cannot read the numbers: ") + GetParam().message);
}

void crash() {
    signal(SIGSEGV, SIG_DFL); // a sanitizer would report it in its own way
    raise(SIGSEGV);
}

INSTANTIATE_TEST_SUITE_P(
    All, ReaderFault,
    testing::Values(Fault{"Crash", crash, "the library that reads it crashed (segmentation fault)"},
                    Fault{"Abort", [] { std::abort(); }, "the library that reads it crashed (aborted)"},
                    Fault{"Kill", [] { raise(SIGKILL); }, "the library that reads it crashed (killed)"},
                    Fault{"Exit", [] { std::exit(0); }, "the library that reads it ended the process"},
                    Fault{"QuickExit", [] { _exit(5); }, "the library that reads it ended with status 5"},
                    Fault{"Exception", [] { throw std::runtime_error("no luck"); }, "no luck"},
                    Fault{"Int", [] { throw 1; }, "the library that reads it threw an exception"},
                    Fault{"Thread", [] { std::thread([] { throw 1; }).join(); },
                          "the library that reads it crashed (aborted)"}),
    [](const auto &fault) { return fault.param.name; });

TEST_F(ReaderProcessTest, AreStoppedAfterTheirTime) {
    readLimits().seconds = 0.3;
    EXPECT_EQ(failureOf([](Numbers &) {
                  for (;;) pause();
              }),
              "cannot read the numbers: it takes longer than 0.3 s (see --read-time)");
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // which replace the allocator
constexpr std::size_t kMebibyte = std::size_t{1} << 20;
constexpr const char *kTooMuch = "cannot read the numbers: it takes more than 64 MiB of memory (see --read-memory)";

// Keeps that much memory.
void take(std::size_t mebibytes) {
    static std::vector<std::unique_ptr<char[]>> kept;
    for (std::size_t i = 0; i < mebibytes; ++i) kept.push_back(std::make_unique_for_overwrite<char[]>(kMebibyte));
}

TEST_F(ReaderProcessTest, MayNotTakeMoreThanTheirMemory) {
    EXPECT_EQ(failureOf([](Numbers &) { take(100); }), kTooMuch);
    EXPECT_EQ(failureOf([](Numbers &numbers) { numbers.values.reserve(100 * kMebibyte / sizeof(int)); }), kTooMuch);
    EXPECT_EQ(failureOf([](Numbers &numbers) {
                  take(40);
                  numbers.values.reserve(40 * kMebibyte / sizeof(int));
              }),
              kTooMuch);
    EXPECT_EQ(failureOf([](Numbers &numbers) {
                  numbers.values.reserve(40 * kMebibyte / sizeof(int));
                  take(40);
              }),
              kTooMuch);
    EXPECT_EQ(failureOf([](Numbers &) { // libraries catch it, and go on
                  try {
                      take(100);
                  } catch (const std::bad_alloc &) {
                  }
              }),
              kTooMuch);
}

TEST_F(ReaderProcessTest, TheMemoryOfThisProcessDoesNotCount) {
    const std::vector<char> large(100 * kMebibyte, 'x');
    EXPECT_EQ(failureOf([](Numbers &numbers) {
                  take(20);
                  numbers.values.reserve(20 * kMebibyte / sizeof(int));
              }),
              "");
}
#endif

TEST_F(ReaderProcessTest, WhatLibrariesPrintIsInTheMessageOnly) {
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    const std::string failure = failureOf([](Numbers &) {
        std::puts("first");
        std::fflush(stdout);
        std::fputs("libx error: bad chunk\n", stderr);
        throw InputError("cannot read it");
    });
    const auto longest = failureOf([](Numbers &) {
        for (int i = 0; i < 100000; ++i) std::fputs("and again\n", stderr);
        throw InputError("cannot read it");
    });
    readNumbers([](Numbers &) { std::fputs("libx warning\n", stderr); });
    EXPECT_EQ(testing::internal::GetCapturedStderr() + testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(failure, "cannot read it (first; libx error: bad chunk)");
    EXPECT_LT(longest.size(), 400u);
}

// A library with a bug may also leave a result that would lead this process astray.
TEST_F(ReaderProcessTest, ResultsOutsideOfTheArenaAreRefused) {
    const auto refusal = [](std::pmr::memory_resource *memory) {
        return failureOf([&](Numbers &numbers) { new (&numbers.values) std::pmr::vector<int>(10, memory); });
    };
    EXPECT_EQ(refusal(std::pmr::new_delete_resource()),
              "cannot read the numbers: the library that reads it went wrong");
    EXPECT_EQ(refusal(std::pmr::get_default_resource()),
              "cannot read the numbers: the library that reads it went wrong");
}

pid_t tester = 0;
int exitsElsewhere = -1; // where the handler tells that it was run

TEST_F(ReaderProcessTest, RunNoExitHandlersOfTheirStarter) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
    tester = getpid();
    exitsElsewhere = ends[1];
    std::atexit([] {
        if (getpid() != tester && write(exitsElsewhere, "x", 1) != 1) _exit(1);
    });
    readNumbers([](Numbers &) {});
    failureOf([](Numbers &) { std::exit(3); });
    char byte = 0;
    EXPECT_EQ(::read(ends[0], &byte, 1), -1);
    for (const int end : ends) close(end);
}

TEST_F(ReaderProcessTest, EndWithTheirStarter) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const pid_t starter = fork();
    if (starter == 0) {
        close(ends[0]);
        failureOf([&](Numbers &) {
            if (write(ends[1], "x", 1) != 1) return;
            for (;;) pause();
        });
        _exit(0);
    }
    close(ends[1]);
    char byte = 0;
    ASSERT_EQ(::read(ends[0], &byte, 1), 1); // the work has begun
    kill(starter, SIGKILL);
    waitpid(starter, nullptr, 0);
    pollfd end{.fd = ends[0], .events = POLLIN, .revents = 0};
    ASSERT_EQ(poll(&end, 1, 10000), 1);
    EXPECT_EQ(::read(ends[0], &byte, 1), 0) << "the end of the last process that has the other end of the pipe";
    close(ends[0]);
}

// Handlers that this process has installed must not act in the other one, as when a terminal sends a signal to both.
TEST_F(ReaderProcessTest, HaveNoSignalHandlers) {
    static volatile sig_atomic_t handled;
    handled = 0;
    std::signal(SIGUSR1, [](int) { handled = 1; });
    EXPECT_EQ(failureOf([](Numbers &) { raise(SIGUSR1); }),
              "cannot read the numbers: the library that reads it crashed (user defined signal 1)");
    EXPECT_EQ(failureOf([](Numbers &) { raise(SIGINT); }), "") << "signals that end programs are for this process";
    std::signal(SIGUSR1, SIG_DFL);
    EXPECT_EQ(handled, 0);
}

// With SIGCHLD ignored, the system keeps no status of processes that have ended.
TEST_F(ReaderProcessTest, WorkWithoutChildSignals) {
    std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(failureOf([](Numbers &numbers) { numbers.values = {1}; }), "");
    EXPECT_NE(failureOf([](Numbers &) { std::abort(); }), "");
    std::signal(SIGCHLD, SIG_DFL);
}

} // namespace
} // namespace velm::host::test
