// Guarded work: its status, and the errors for every way in which its process can end early.
#include "host/base/error.h"
#include "host/guard/call_record.h"
#include "host/guard/crash_handler.h"
#include "host/guard/guarded.h"
#include "host/guard/module_call.h"
#include "host/guard/shared_record.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <atomic>
#include <cfenv>
#include <csignal>
#include <cstring>
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

// A module that writes beyond its memory often makes the host crash, some time later.
TEST(Guarded, NamesAModuleThatHasRunBeforeACrash) {
    EXPECT_EQ(errorOf<MachineError>([] {
                  { const CallScope call(numberOfServer("Writer"), "create"); }
                  raise(SIGABRT);
              }),
              "crashed (aborted); no code of some.p was running, but it may have damaged memory before");
    EXPECT_EQ(errorOf<MachineError>([] {
                  { const CallScope call(numberOfServer("Writer"), "create"); }
                  std::thread([] { throw std::runtime_error("no luck"); }).join();
              }),
              "threw std::runtime_error: no luck, on a thread of its own; no code of the module was running");
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

// The crash handler may have been removed, or may crash itself.
TEST(Guarded, NamesAModuleThatHasRunBeforeACrashThatNoHandlerRecords) {
    EXPECT_EQ(errorOf<MachineError>([] {
                  { const CallScope call(numberOfServer("Writer"), "create"); }
                  std::signal(SIGSEGV, SIG_DFL);
                  raise(SIGSEGV);
              }),
              "crashed (segmentation fault); no code of some.p was running, but it may have damaged memory before");
}

TEST(Guarded, BlamesNoModuleForACrashInADialog) {
    EXPECT_EQ(errorOf<MachineError>([] {
                  noteModuleCode(reinterpret_cast<const void *>(&hang)); // this program's code counts as the module's
                  const CallScope call(numberOfServer("Asker"), "panel button");
                  const DialogScope dialog;
                  raise(SIGSEGV);
              }),
              "crashed (segmentation fault); no code of some.p was running, but it may have damaged memory before");
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

// ---- Processes that the work leaves behind -------------------------------------------------------------------------

// Forks a process that never ends, and one in a session of its own whose parent has ended. Their numbers go to `known`.
void leaveProcesses(std::atomic<pid_t> *known) {
    const pid_t child = fork();
    if (child == 0) hang();
    known[0] = child;
    const pid_t between = fork();
    if (between == 0) {
        setsid();
        if (fork() == 0) {
            known[1] = getpid();
            hang();
        }
        _exit(0);
    }
    waitpid(between, nullptr, 0);
    while (known[1] == 0) usleep(1000);
}

struct Known {
    std::atomic<pid_t> processes[2];
};

TEST(Guarded, LeavesNoProcess) {
    const std::function<int()> ends[] = {[] { return 5; }, [] { return raise(SIGSEGV); },
                                         [] {
                                             const CallScope call(numberOfServer("Parent"), "create");
                                             hang();
                                             return 0;
                                         }};
    for (const auto &end : ends) {
        const SharedRecord<Known> known;
        try {
            guarded(
                [&] {
                    leaveProcesses(known->processes);
                    return end();
                },
                kQuick);
        } catch (const std::runtime_error &) { // it crashed or hung
        }
        for (const auto &process : known->processes) {
            ASSERT_GT(process, 0);
            EXPECT_EQ(kill(process, 0), -1) << "process " << process << " is left behind";
        }
    }
}

TEST(Guarded, KillsNoProcessOfOthers) {
    const pid_t before = fork();
    if (before == 0) hang();
    const SharedRecord<Known> known;
    guarded([&] {
        leaveProcesses(known->processes);
        return 0;
    });
    EXPECT_EQ(kill(before, 0), 0);
    int status = 0;
    EXPECT_EQ(waitpid(before, &status, WNOHANG), 0) << "it has ended";
    for (const pid_t process : {before, known->processes[0].load(), known->processes[1].load()}) {
        ASSERT_GT(process, 0);
        kill(process, SIGKILL);
    }
    waitpid(before, nullptr, 0);
}

// ---- Stopped processes, threads that end ---------------------------------------------------------------------------

TEST(Guarded, ReportsAProcessThatStaysStopped) {
    EXPECT_EQ(errorOf<ModuleError>(
                  [] {
                      const CallScope call(numberOfServer("Stopper"), "create");
                      raise(SIGSTOP);
                  },
                  kQuick),
              "some.p: server \"Stopper\" was stopped by SIGSTOP in create: not continued for 0.1 s");
    EXPECT_EQ(errorOf<MachineError>([] { raise(SIGSTOP); }, kQuick),
              "some.p: the process was stopped by SIGSTOP; no call of the module was in progress: not continued for "
              "0.1 s");
}

TEST(Guarded, LetsAStoppedProcessContinue) {
    EXPECT_EQ(guarded(
                  [] {
                      const pid_t work = getpid();
                      const pid_t other = fork();
                      if (other == 0) {
                          std::this_thread::sleep_for(std::chrono::milliseconds(100));
                          kill(work, SIGCONT);
                          _exit(0);
                      }
                      raise(SIGSTOP);
                      std::this_thread::sleep_for(std::chrono::milliseconds(600)); // not in a call
                      waitpid(other, nullptr, 0);
                      return 5;
                  },
                  {.on = true, .callLimit = 0.5}),
              5);
}

TEST(Guarded, ReportsAThreadThatTheModuleHasEnded) {
    EXPECT_EQ(errorOf<ModuleError>([] {
                  { const CallScope call(numberOfServer("Leaver"), "create"); }
                  std::thread([] {
                      SlotScope slot(2);
                      slot.run([] { pthread_exit(nullptr); });
                  }).detach();
                  hang();
              }),
              "some.p: server \"Leaver\" ended the thread by pthread_exit in evaluate, thread 2");
    EXPECT_EQ(
        errorOf<ModuleError>([] { callModule(numberOfServer("Leaver"), "create", [] { pthread_exit(nullptr); }); }),
        "some.p: server \"Leaver\" ended the thread by pthread_exit in create");
}

// A module may write anything into the record, and so the numbers of a process and a thread that are not velm's.
TEST(Guarded, AsksNoThreadOfOtherProcesses) {
    const pid_t other = fork();
    if (other == 0) hang();
    EXPECT_EQ(errorOf<ModuleError>(
                  [other] {
                      { const CallScope call(numberOfServer("Scribbler"), "create"); }
                      callRecord().slots[1].process.store(other);
                      callRecord().slots[1].thread.store(other);
                      hang();
                  },
                  kQuick),
              "some.p: server \"Scribbler\" hangs in evaluate, thread 0: no progress for 0.1 s");
    EXPECT_EQ(waitpid(other, nullptr, WNOHANG), 0) << "it has ended";
    kill(other, SIGKILL);
    waitpid(other, nullptr, 0);
}

// ---- What a module does to its host --------------------------------------------------------------------------------

TEST(Guarded, ReportsAnOverwrittenRecord) {
    const std::function<void()> ends[] = {[] { raise(SIGSEGV); }, hang, [] { _exit(0); }};
    for (const int byte : {0x41, 0x01, 0xFF})
        for (const auto &end : ends)
            EXPECT_EQ(errorOf<ModuleError>([&] {
                          const CallScope call(numberOfServer("Scribbler"), "create");
                          std::memset(static_cast<void *>(&callRecord()), byte, sizeof(CallRecord));
                          end();
                      }).find("some.p: the module has overwritten the host's record of its calls; the process "),
                      0U);
}

TEST(Guarded, NamesTheModuleThatTurnedTrapsOn) {
    EXPECT_EQ(errorOf<ModuleError>([] {
                  { const CallScope call(numberOfServer("Trapper"), "create"); }
                  feenableexcept(FE_DIVBYZERO);
                  volatile double zero = 0;
                  volatile double result = 1 / zero;
                  static_cast<void>(result);
              }),
              "some.p: server \"Trapper\" turned on floating-point traps, one of which ended the process, in evaluate");
}

TEST(Guarded, NamesTheModuleWhoseThreadCrashesWhileItIsLoaded) {
    EXPECT_EQ(errorOf<ModuleError>([] {
                  const CallScope call(kModuleItself, "loading the module");
                  std::thread([] { raise(SIGSEGV); }).join();
              }),
              "some.p: the module crashed (segmentation fault) in loading the module, on a thread of its own");
}

// ---- Signals that end programs -------------------------------------------------------------------------------------

TEST(Guarded, ReportsSignalsThatTheModuleSends) {
    const auto endBy = [](int signal) {
        return errorOf<ModuleError>([signal] {
            const CallScope call(numberOfServer("Sender"), "create");
            kill(getpid(), signal);
            hang();
        });
    };
    EXPECT_EQ(endBy(SIGTERM), "some.p: server \"Sender\" was ended by SIGTERM in create");
    EXPECT_EQ(endBy(SIGINT), "some.p: server \"Sender\" was ended by SIGINT in create");
    EXPECT_EQ(endBy(SIGALRM), "some.p: server \"Sender\" was ended by SIGALRM in create");
    EXPECT_EQ(errorOf<MachineError>([] { raise(SIGTERM); }),
              "some.p: the process was ended by SIGTERM; no call of the module was in progress");
}

// Runs work under a guard in another process, and calls `send(guard, worker)` with the numbers of both processes once
// the work has begun. Returns the signal that ended the guard; 0 if none did.
int signalThatEnds(const std::function<void()> &work, const std::function<void(pid_t, pid_t)> &send) {
    const SharedRecord<Known> known;
    const pid_t guard = fork();
    if (guard == 0)
        _exit(guarded([&] {
            known->processes[0] = getpid();
            work();
            return 0;
        }));
    while (known->processes[0] == 0) usleep(1000);
    send(guard, known->processes[0]);
    int status = 0;
    waitpid(guard, &status, 0);
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

TEST(Guarded, EndsByTheSignalThatEndsBothProcesses) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT}) {
        EXPECT_EQ(signalThatEnds(hang, [signal](pid_t guard, pid_t) { kill(guard, signal); }), signal);
        EXPECT_EQ(signalThatEnds(hang,
                                 [signal](pid_t guard, pid_t worker) {
                                     kill(worker, signal);
                                     usleep(50000);
                                     kill(guard, signal);
                                 }),
                  signal)
            << "sent to one after the other";
    }
    EXPECT_EQ(signalThatEnds([] { raise(SIGPIPE); }, [](pid_t, pid_t) {}), SIGPIPE);
}

TEST(Guarded, KeepsIgnoringSignals) {
    for (const int signal : {SIGHUP, SIGINT, SIGTERM, SIGQUIT}) {
        const auto before = std::signal(signal, SIG_IGN);
        EXPECT_EQ(guarded([&] {
                      struct sigaction here {};
                      sigaction(signal, nullptr, &here);
                      kill(getppid(), signal);
                      std::this_thread::sleep_for(std::chrono::milliseconds(50));
                      return here.sa_handler == SIG_IGN ? 5 : 6;
                  }),
                  5);
        std::signal(signal, before);
    }
}

} // namespace
} // namespace velm::host
