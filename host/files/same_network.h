// Whether networks in files say the same.
#pragma once

#include <string_view>

namespace velm::host {

// True when two blocks of object files, as ObjectFile::network has them, hold the same nodes with the same data and
// looks, the same connections, and the same view, in whichever order their parts stand, and whether or not what is as
// it is without a word is said. A damaged block is like no other.
bool sameNetwork(std::string_view one, std::string_view other);

} // namespace velm::host
