// Guarded work: its status, and the errors for every way in which its process can end early.
#include "host/base/error.h"
#include "host/guard/call_record.h"
#include "host/guard/crash_handler.h"
#include "host/guard/guarded.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <unistd.h>

namespace velm::host {
namespace {

constexpr GuardOptions kQuick{.on = true, .callLimit = 0.1};
constexpr auto kLongerThanQuick = std::chrono::milliseconds(500);

int guarded(const std::function<int()> &work, const GuardOptions &options = {}) {
    return runGuarded("some.p", options, work);
}

template <class Error>
std::string errorOf(const std::function<void()> &work, const GuardOptions &options = {}) {
    try {
        guarded(
            [&] {
                work();
                return 0;
            },
            options);
    } catch (const Error &error) {
        return error.what();
    }
    return "no error";
}

[[noreturn]] void hang() {
    for (;;) pause();
}

TEST(Guarded, ReturnsTheStatusOfTheWork) {
    EXPECT_EQ(guarded([] { return 7; }), 7);
    const pid_t here = getpid();
    EXPECT_EQ(guarded([&] { return getpid() == here ? 1 : 0; }), 0);
    EXPECT_EQ(guarded([&] { return getpid() == here ? 1 : 0; }, {.on = false, .callLimit = 1}), 1);
}

TEST(Guarded, NamesTheInnermostCallThatFailed) {
    const auto inCalls = [](const std::function<void()> &fail) {
        return [fail] {
            const CallScope outer(numberOfServer("Outer"), "create");
            { const CallScope before(numberOfServer("Before"), "load"); }
            const CallScope inner(numberOfServer("Inner"), "init");
            fail();
        };
    };
    EXPECT_EQ(errorOf<ModuleError>(inCalls([] { raise(SIGFPE); })),
              "some.p: server \"Inner\" crashed (floating point exception) in init");
    EXPECT_EQ(errorOf<ModuleError>(inCalls([] { std::exit(0); })),
              "some.p: server \"Inner\" ended the process by exit in init");
    EXPECT_EQ(errorOf<ModuleError>(inCalls([] { _exit(9); })),
              "some.p: server \"Inner\" ended the process with status 9 in init");
    EXPECT_EQ(errorOf<ModuleError>(inCalls([] { kill(getpid(), SIGKILL); })),
              "some.p: server \"Inner\" was killed, perhaps because memory ran out, in init");
    EXPECT_EQ(errorOf<ModuleError>(inCalls(hang), kQuick),
              "some.p: server \"Inner\" hangs in init: no progress for 0.1 s");
}

TEST(Guarded, DoesNotBlameAModuleThatWasNotRunning) {
    EXPECT_EQ(errorOf<MachineError>([] { raise(SIGSEGV); }),
              "crashed (segmentation fault); no code of the module was running");
    EXPECT_EQ(errorOf<MachineError>([] {
                  std::thread([] {
                      const SlotScope slot(2);
                      throw std::runtime_error("no luck");
                  }).join();
              }),
              "threw std::runtime_error: no luck, thread 2; no code of the module was running");
}

TEST(Guarded, DoesNotCountTimeOutsideTheModule) {
    EXPECT_EQ(guarded(
                  [] {
                      std::this_thread::sleep_for(kLongerThanQuick);
                      std::thread([] {
                          const SlotScope slot(0); // asked for its call site, which is in the host's code
                          std::this_thread::sleep_for(kLongerThanQuick);
                      }).join();
                      return 5;
                  },
                  kQuick),
              5);
}

TEST(Guarded, CountsNoTimeOfADialog) {
    const auto ask = [] {
        const DialogScope dialog;
        std::this_thread::sleep_for(kLongerThanQuick);
    };
    EXPECT_EQ(guarded(
                  [&] {
                      const CallScope call(numberOfServer("Asker"), "panel button");
                      ask();
                      return 5;
                  },
                  kQuick),
              5);
    EXPECT_EQ(errorOf<ModuleError>(
                  [&] {
                      const CallScope call(numberOfServer("Asker"), "panel button");
                      ask();
                      hang();
                  },
                  kQuick),
              "some.p: server \"Asker\" hangs in panel button: no progress for 0.1 s");
}

TEST(Guarded, CountsTheTimeOfCallsThatADialogMakes) {
    EXPECT_EQ(errorOf<ModuleError>(
                  [] {
                      const CallScope call(numberOfServer("Asker"), "panel button");
                      const DialogScope dialog;
                      const CallScope inner(numberOfServer("Answerer"), "panel getter");
                      hang();
                  },
                  kQuick),
              "some.p: server \"Answerer\" hangs in panel getter: no progress for 0.1 s");
}

TEST(Guarded, BlamesNoModuleForACrashInADialog) {
    EXPECT_EQ(errorOf<MachineError>([] {
                  noteModuleCode(reinterpret_cast<const void *>(&hang)); // this program's code counts as the module's
                  const CallScope call(numberOfServer("Asker"), "panel button");
                  const DialogScope dialog;
                  raise(SIGSEGV);
              }),
              "crashed (segmentation fault); no code of the module was running");
}

TEST(Guarded, LeavesNoUnfinishedFile) {
    const std::string file =
        (std::filesystem::temp_directory_path() / ("velm-unfinished-" + std::to_string(getpid()))).string();
    for (const std::function<void()> &end : {std::function<void()>([] { raise(SIGABRT); }), {[] { _exit(0); }}}) {
        errorOf<MachineError>([&] {
            const UnfinishedFile unfinished(file);
            std::ofstream(file) << "half";
            end();
        });
        EXPECT_FALSE(std::filesystem::exists(file));
    }
    guarded([&] {
        { const UnfinishedFile unfinished(file); }
        std::ofstream(file) << "whole";
        return 0;
    });
    EXPECT_TRUE(std::filesystem::remove(file));
}

} // namespace
} // namespace velm::host
