// What saving and loading, binary and text, say of blocks.
#pragma once

#include <string>

namespace velm::host {

// Blocks that may be open at once, for writing and for reading. It keeps callbacks that load themselves recursively
// (networks in networks) from running out of stack on a damaged file.
inline constexpr int kMaxBlockDepth = 256;

// "VPRM", or "0x00000001" where its bytes are no printable characters.
std::string blockName(unsigned int id);

} // namespace velm::host
