// The look of a node in a network editor: what the artist arranges, and files keep.
#pragma once

#include <array>
#include <string>

namespace velm::host {

// It has no effect on what the node computes.
struct NodeLook {
    std::array<int, 2> at{0, 0}; // position in the editor, in units of its own
    int mode = 1;                // as saved; 1 is a node that is drawn open
    std::string preview;         // name of the output that is previewed; empty for none
    std::string comment;

    bool operator==(const NodeLook &) const = default;
};

} // namespace velm::host
