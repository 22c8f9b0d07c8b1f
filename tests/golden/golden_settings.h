// The settings from which the golden files were saved, and comparisons of nodes and networks with them.
#pragma once

#include "host/graph/network.h"
#include "host/scene/format/description.h"

#include <string>

namespace velm::host::test {

// The directory of the golden files, with a slash at its end.
constexpr const char *kGolden = VELM_SOURCE_DIR "/tests/golden/";

// Loads the module, once for the whole program. Its nodes are those with this origin in the server list. The directory
// of the golden files becomes the current one, since their paths of images are relative to it.
constexpr const char *kOrigin = "velm.p";
void loadModule();

// The surface of that name in a scene file beside the golden files. Its images are not loaded; loading a golden file
// does that.
SurfaceDescription describedIn(const std::string &file, const std::string &surface);

// Expects that a node is of the described server, that its panel reads the described settings, numbers to the precision
// of files, and that the network inside it is the described one.
void expectNode(HostNode &node, const NodeDescription &description);

// Expects a network of the described nodes and connections, and no others. `root` is the root node's name in the
// description.
void expectNetwork(Network &editor, const NetworkDescription &description, const std::string &root);

// Expects that the host keeps no copy of the node's data from a file, for this node and for those nested in it. The
// host keeps a copy if a node does not save what it loaded, and then writes the copy instead of the node's own data.
void expectNothingKept(const HostNode &node);

} // namespace velm::host::test
