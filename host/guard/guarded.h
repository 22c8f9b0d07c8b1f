// Work with a module in a process of its own, which may crash, hang or end as it likes: this one stays, and tells.
#pragma once

#include <functional>
#include <string>

namespace velm::host {

struct GuardOptions {
    bool on = true;        // without it, the work is done in this process
    double callLimit = 60; // seconds that a call of the module may take, and a sample with it; 0: any time
};

// Does the work in another process and gives its status. ModuleError when the module made it crash, hung, threw where
// nobody could catch it, or ended it; MachineError when it ended badly and no code of the module was running. The
// work's own exceptions are not passed on: it has to catch them. Whatever happens, no unfinished file is left behind.
// Signals that end programs end both: SIGINT and SIGQUIT, which a terminal sends to both, are passed on when they were
// sent to this process alone. What the other process dies of, this one dies of, too, unless it is told as an error.
// A call does not use up the limit while a DialogScope lives. Time counts against the limit only while a call is being
// made or samples are evaluated, and while nothing else is finished meanwhile; and evaluating counts only where a
// thread is in the module's code at the end of it. [main thread; others, which libraries may have, are idle] `module`
// is the file that errors are to name.
int runGuarded(const std::string &module, const GuardOptions &options, const std::function<int()> &work);

} // namespace velm::host
