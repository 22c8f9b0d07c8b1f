// Processes that do parts of one piece of work: each is forked from this process, so that it shares what this one has
// prepared without copying it, and has the module's state to itself.
#pragma once

#include "host/base/shared_memory.h"

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <vector>

namespace velm::host {

// Runs `work(0)` to `work(count - 1)`, each in a process or on a thread of its own. Processes hand their results back
// in memory that was shared before (see SharedArray): whatever else they change, this process does not see. They ignore
// SIGINT, and end when the thread that started them does.
//
// A process that crashes, or ends otherwise than by returning from `work`, is reported as an error of the module, as
// guarded.h does for a command.
class Workers {
  public:
    // Where the work runs.
    enum class In {
        processes, // forked from this one
        threads    // of this process
    };

    // Starts the workers. MachineError when the system refuses; those that were started are then ended. `work` has to
    // outlive this object. It must not throw: what it throws ends its process.
    // [interface thread; not while rendering]
    Workers(int count, In in, const std::function<void(int index)> &work);
    ~Workers(); // kills the processes that still run; waits for the threads, which have to be told to stop before
    Workers(const Workers &) = delete;
    Workers &operator=(const Workers &) = delete;

    // Waits until all have ended, for this long at most. True once all have. Throws ModuleError or MachineError for one
    // that did not end as it should.
    bool wait(std::chrono::milliseconds limit);
    void waitForAll(); // throws likewise

  private:
    struct Process {
        pid_t id;
        bool running;
    };
    void startProcesses(int count);
    void runWorker(int index);
    void reap(int options);
    void endAll();

    const std::function<void(int)> &work_;
    SharedArray<std::atomic<bool>> done_; // by worker
    std::vector<Process> processes_;
    std::vector<std::jthread> threads_;
    int pipe_[2] = {-1, -1}; // each worker writes a byte when its work is done
};

// The number of processors that this process may run on, at least 1. Respects the affinity that was set for it.
int usableProcessors();

} // namespace velm::host
