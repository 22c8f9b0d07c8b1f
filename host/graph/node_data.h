// The data that a server saves of a node: the contents of the node's data block.
#pragma once

#include "host/graph/node.h"

#include <string>
#include <string_view>

namespace velm::host {

// All functions: [interface thread; not while rendering]; InputError, with the node's name, when its server reports an
// error.

// Reads the rest of the innermost open block. Where the server does not save binary data byte for byte as it read them,
// the node keeps a saved copy (HostNode::savedCopy), which is saved for as long as the node is not changed.
void loadData(HostNode &node, const HostLoadState &state);
void saveData(const HostNode &node, const HostSaveState &state);

// The same for data in binary form that are not in a file. `about` begins the messages about damaged data.
void loadSavedData(HostNode &node, std::string_view data, const std::string &about);
std::string savedData(const HostNode &node);

} // namespace velm::host
