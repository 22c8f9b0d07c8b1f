// Round trips of networks in the blocks of object files.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velm::host::fuzz {

// Reads a network's block into a surface and returns the block that the surface writes. `file` and `offset` locate the
// block for error messages. InputError if it cannot be read or written. Requires that the result can be read, and is
// written again without a change.
std::string throughSurface(std::string_view block, const std::string &file, std::size_t offset);

} // namespace velm::host::fuzz
