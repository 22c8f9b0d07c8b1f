// What a module does, as text that is the same on every platform: for each node, what it saves, and what it computes.
//
//     node Velm Counter
//     saved 0000 0001 ...
//     3 Value 0x1.8p+0          the turn, the output, the result; "unset" where the node sets none
#pragma once

#include "tests/module/recorded_state.h"
#include "tests/platforms/whole_host.h"

#include <cstdint>
#include <string>
#include <vector>

namespace velm::plugin {

using Report = std::vector<std::string>; // lines

// What the node writes, in hexadecimal, in the host's binary form: integers of two bytes, the high one first; texts
// with their end, padded to an even length; blocks with identifier and size. A parameter, whose form is the host's own
// affair, stands as its doubles.
std::string savedBytes(const RecordedState &state);

// Saves, evaluates and describes every node. Throws std::runtime_error where a node does not come back from its own
// file as it was saved.
Report reportOf(WholeHost &whole);

// How far results may be from those of another platform, in units in the last place of the larger of the two: 0 where a
// node only computes with what IEEE 754 rounds exactly, and more where it calls the platform's maths library.
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

// Compares number by number. What differs by more than its node allows, or is no number, is added to `faults`.
std::vector<Comparison> compare(const Report &report, const Report &reference, std::vector<std::string> &faults);

} // namespace velm::plugin
