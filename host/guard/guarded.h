// Runs work with a module in a separate process. If the module crashes, hangs or ends that process, this one survives
// and reports it.
#pragma once

#include <functional>
#include <string>

namespace velm::host {

struct GuardOptions {
    bool on = true;        // false: the work runs in this process
    double callLimit = 60; // seconds that a call of the module may take, or the evaluation of a sample; 0: unlimited
};

// Runs `work` in another process and returns its status. `module` is the file that errors name until one is loaded.
// Throws ModuleError if the module crashed, hung, threw an exception that was not caught, or ended the process, for
// example by a signal. Throws MachineError if the process crashed or ended while no code of the module was running, or
// could not be started.
// Exceptions of `work` are not passed on: it has to catch them. In every case, the process's unfinished file (see
// UnfinishedFile) is removed.
//
// Signals that end programs end both processes. SIGINT and SIGQUIT are passed on to the other process unless a terminal
// sent them, which sends them to both. If the other process was ended by a signal that this one has received, too, or
// by SIGPIPE, the same signal ends this one.
//
// A call uses up the limit only while no other call begins or ends and no sample is finished on any thread, and not
// while a DialogScope lives. When the time is up while samples are evaluated, it counts as a hang only if a thread is
// in the module's code at that moment.
//
// [main thread; there may be other threads, of libraries, but they must be idle]
int runGuarded(const std::string &module, const GuardOptions &options, const std::function<int()> &work);

} // namespace velm::host
