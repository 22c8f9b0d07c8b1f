// The text of a connection: "Node.Output -> Node.Input".
#pragma once

#include "host/scene/description.h"

#include <string>
#include <string_view>
#include <vector>

namespace velm {

// Takes a connection apart. `nodes` are the names that may stand before the dots, the surface's among them; names of
// nodes and of their inputs and outputs may contain blanks and dots, so that an end is parted after the longest name
// that fits it. `surface` is the name of the surface, which has no outputs. Throws InputError, with the place and the
// nearest right name. Whether the output and the input exist is known only when the nodes are made.
ConnectionDescription parseConnection(std::string_view text, const std::vector<std::string> &nodes,
                                      const std::string &surface, const Place &place);

} // namespace velm
