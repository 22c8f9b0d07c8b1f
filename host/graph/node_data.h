// What a node's server saves of a node, by itself: the contents of its block in the network's.
#pragma once

#include "host/graph/node.h"

#include <string>
#include <string_view>

namespace velm::host {

// All of it: [interface thread; not while rendering]; InputError with the node's name when its server reports an error.

// Reads what stands unread in the innermost block. What the server does not make its own of binary data is kept with
// the node: as long as the node is as it was loaded, it is saved to the byte as it was.
void loadData(HostNode &node, const HostLoadState &state);
void saveData(const HostNode &node, const HostSaveState &state);

// The same for data that stand by themselves, in binary form. `about` stands before what is wrong in damaged ones.
void loadSavedData(HostNode &node, std::string_view data, const std::string &about);
std::string savedData(const HostNode &node);

} // namespace velm::host
