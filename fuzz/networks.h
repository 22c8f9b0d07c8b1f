// Networks in blocks of object files, there and back.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velm::host::fuzz {

// Reads a network into a surface and gives it as it is written from there; InputError when it cannot be read or
// written. Demands that what is written can be read, and is written alike from then on.
std::string throughSurface(std::string_view block, const std::string &file, std::size_t offset);

} // namespace velm::host::fuzz
