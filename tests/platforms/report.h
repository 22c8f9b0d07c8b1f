// A report of what a module does: for each node, the data that it saves and the values that it computes. The text is
// the same on every platform.
//
//     node Velm Counter
//     saved 0000 0001 ...
//     3 Value 0x1.8p+0          the turn, the output, the result ("unset" if the node sets none)
#pragma once

#include "tests/module/recorded_state.h"
#include "tests/platforms/whole_host.h"

#include <cstdint>
#include <string>
#include <vector>

namespace velm::plugin {

using Report = std::vector<std::string>; // lines

// The saved data in the host's binary form, as hexadecimal text: integers of two bytes, big-endian; texts with a
// terminating zero, padded to an even length; blocks with identifier and size. A parameter is written as its doubles,
// since its actual form is up to the host.
std::string savedBytes(const RecordedState &state);

// Saves and evaluates every node, and reports the results. Throws std::runtime_error if a node fails, or if it does not
// save the same data again after it has loaded what it saved.
Report reportOf(WholeHost &whole);

// How far the results of a node may be from those of another platform, in units in the last place. Nodes that are not
// listed use only operations that IEEE 754 rounds exactly, and must give equal results; the others call the platform's
// mathematics library.
struct Tolerance {
    const char *node;
    uint64_t units;
    const char *because;
};
const std::vector<Tolerance> &tolerances();

struct Comparison {
    std::string node;
    int numbers = 0, different = 0;
    uint64_t worst = 0; // units in the last place
    uint64_t allowed = 0;
};

// Compares two reports. Appends a line to `faults` for each line in which a number differs by more than its node
// allows, or anything else differs.
std::vector<Comparison> compare(const Report &report, const Report &reference, std::vector<std::string> &faults);

} // namespace velm::plugin
