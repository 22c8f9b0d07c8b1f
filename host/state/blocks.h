// What the binary and text forms of saved states have in common about blocks.
#pragma once

#include <string>

namespace velm::host {

// The largest number of blocks that may be open at once, for writing and for reading. The limit keeps callbacks that
// load themselves recursively (networks in networks) from running out of stack on a damaged file.
inline constexpr int kMaxBlockDepth = 256;

// "VPRM", or "0x00000001" if its bytes are not printable characters.
std::string blockName(unsigned int id);

} // namespace velm::host
