// The contents of a network in an object file, without loading it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

struct NetworkOutline {
    std::size_t nodes = 0;               // besides the root
    std::vector<std::string> rootInputs; // the inputs of the root that are connected
};

// Reads a block as ObjectFile::network gives it. Of a damaged block, the outline has what could be read. [interface
// thread]
NetworkOutline outlineOf(std::string_view block);

} // namespace velm::host
