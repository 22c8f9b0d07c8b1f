// Whether two networks in files are equivalent.
#pragma once

#include <string_view>

namespace velm::host {

// True when two blocks of object files, as ObjectFile::network gives them, hold the same nodes with the same data and
// looks, the same connections, and the same view. The order of their parts does not matter, nor whether a part with its
// default value is present. A damaged block equals no other, not even itself.
bool sameNetwork(std::string_view one, std::string_view other);

} // namespace velm::host
