// Workers: processes and threads that do parts of one piece of work, and what is said of those that fail.
#include "host/base/error.h"
#include "host/guard/call_record.h"
#include "host/guard/module_call.h"
#include "host/guard/workers.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <sched.h>
#include <set>
#include <stdexcept>
#include <string>

namespace velm::host::test {
namespace {

// Waits for all workers, and gives the message of the error, or an empty text.
std::string outcome(int count, Workers::In in, const std::function<void(int)> &work) {
    try {
        Workers workers(count, in, work);
        workers.waitForAll();
    } catch (const std::exception &error) {
        return error.what();
    }
    return "";
}

TEST(Workers, ProcessesShareResultsAndNothingElse) {
    SharedArray<int> processes(5);
    int own = 0;
    EXPECT_EQ(outcome(5, Workers::In::processes,
                      [&](int index) {
                          ++own;
                          processes[static_cast<std::size_t>(index)] = getpid();
                      }),
              "");
    EXPECT_EQ(own, 0);
    const std::set<int> different(processes.data(), processes.data() + 5);
    EXPECT_EQ(different.size(), 5u);
    EXPECT_FALSE(different.contains(getpid()));
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "all were waited for";
    EXPECT_EQ(errno, ECHILD);
}

TEST(WorkersThreaded, ThreadsAreOfThisProcess) {
    SharedArray<int> processes(3);
    EXPECT_EQ(
        outcome(3, Workers::In::threads, [&](int index) { processes[static_cast<std::size_t>(index)] = getpid(); }),
        "");
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(processes[i], getpid());
}

TEST(Workers, NamesTheModuleOfAProcessThatCrashes) {
    nameModule("faulty.p");
    const int server = numberOfServer("Velm Faulty");
    const std::string message = outcome(3, Workers::In::processes, [server](int index) {
        const SlotScope slot(index);
        if (index == 1) callModule(server, "evaluate", [] { return std::raise(SIGSEGV); });
    });
    EXPECT_EQ(message, "faulty.p: server \"Velm Faulty\" crashed (segmentation fault) in evaluate, thread 1");
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "the others were ended";
}

TEST(Workers, NoticesAProcessThatEndsWithoutDoingItsWork) {
    nameModule("faulty.p");
    const int server = numberOfServer("Velm Faulty");
    const auto ends = [server](void (*end)()) {
        return outcome(2, Workers::In::processes, [server, end](int index) {
            const SlotScope slot(index);
            if (index == 0)
                callModule(server, "evaluate", [end] {
                    end();
                    return 0;
                });
        });
    };
    EXPECT_EQ(ends([] { _exit(0); }), "faulty.p: server \"Velm Faulty\" ended the process with status 0 in evaluate");
    EXPECT_EQ(ends([] { std::exit(5); }),
              "faulty.p: server \"Velm Faulty\" ended the process by exit in evaluate, thread 0");
    EXPECT_EQ(ends([] { std::raise(SIGKILL); }),
              "faulty.p: server \"Velm Faulty\" was killed, perhaps because memory ran out, in evaluate");
    EXPECT_EQ(ends([] { std::raise(SIGTERM); }), "faulty.p: server \"Velm Faulty\" was ended by SIGTERM in evaluate");
}

// The system then keeps no status of processes that have ended.
TEST(Workers, NoticesTheEndOfAProcessWithoutItsStatus) {
    const std::function<void(int)> work = [](int) {
        usleep(100000);
        _exit(1);
    };
    Workers workers(1, Workers::In::processes, work);
    const auto before = std::signal(SIGCHLD, SIG_IGN);
    EXPECT_THROW(for (int waits = 0; waits < 100; ++waits) workers.wait(std::chrono::milliseconds{50}),
                 std::runtime_error);
    std::signal(SIGCHLD, before);
}

TEST(Workers, AfterACrashTheNextOnesWork) {
    EXPECT_NE(outcome(1, Workers::In::processes, [](int) { std::abort(); }), "");
    EXPECT_EQ(outcome(2, Workers::In::processes, [](int) {}), "");
}

TEST(Workers, DestructorEndsProcesses) {
    {
        const std::function<void(int)> work = [](int) { pause(); };
        Workers workers(2, Workers::In::processes, work);
        EXPECT_FALSE(workers.wait(std::chrono::milliseconds{1}));
    }
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
}

TEST(Workers, CountsTheProcessorsThatThisProcessMayUse) {
    cpu_set_t all;
    ASSERT_EQ(sched_getaffinity(0, sizeof all, &all), 0);
    EXPECT_EQ(usableProcessors(), CPU_COUNT(&all));
    cpu_set_t one;
    CPU_ZERO(&one);
    for (int cpu = 0; cpu < CPU_SETSIZE && CPU_COUNT(&one) == 0; ++cpu)
        if (CPU_ISSET(cpu, &all)) CPU_SET(cpu, &one);
    ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
    EXPECT_EQ(usableProcessors(), 1);
    sched_setaffinity(0, sizeof all, &all);
}

} // namespace
} // namespace velm::host::test
