// Three numbers of plain data, as files and settings have them.
#pragma once

#include <array>

namespace velm::host {

using Double3 = std::array<double, 3>;

} // namespace velm::host
