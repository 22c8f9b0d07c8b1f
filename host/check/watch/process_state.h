// The state of the process that a module could change without its host noticing.
#pragma once

#include <string>
#include <vector>

namespace velm::host {

// The control bits of the calling thread's floating-point units: rounding, precision, exception masks, flushing of
// denormals.
unsigned long floatingPointMode();

struct ProcessState {
    unsigned long floatingPoint = 0; // see floatingPointMode
    std::string locale, directory, environment;
    std::vector<std::string> descriptors; // open files: number and target, sorted
    std::vector<std::string> signals;     // the signal handlers, by number
    int threads = 0;
    long printed = 0; // size of standard output and standard error in bytes, where they are regular files
    unsigned int fileMask = 0;
};

// The current state. Flushes all output streams. [interface thread]
ProcessState captureProcessState();

// Describes all differences but those of the floating-point mode; empty if there are none.
std::string describeChanges(const ProcessState &before, const ProcessState &after);

} // namespace velm::host
