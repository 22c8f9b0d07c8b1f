// What the golden files were saved from, and whether networks are still that.
#pragma once

#include "host/graph/network.h"
#include "host/scene/format/description.h"

#include <string>

namespace velm::host::test {

// The directory of the golden files, with a slash at its end.
constexpr const char *kGolden = VELM_SOURCE_DIR "/tests/golden/";

// Loads the module, once for the whole program; its nodes are the ones of this origin in the server list. Golden files
// name images from their own directory, which becomes the current one.
constexpr const char *kOrigin = "velm.p";
void loadModule();

// The surface of that name in a scene file beside the golden ones. Its images are not loaded: golden files do that.
SurfaceDescription describedIn(const std::string &file, const std::string &surface);

// Expects that a node is of the described server, that its panel reads the described settings, numbers to the precision
// of files, and that the network inside it is the described one.
void expectNode(HostNode &node, const NodeDescription &description);

// Expects a network of the described nodes and connections, and no others. `root` is the name that the root goes by in
// the description.
void expectNetwork(Network &editor, const NetworkDescription &description, const std::string &root);

// Expects that the nodes made all of what a file had of them their own, so that what they save next comes from
// themselves and not from what the host keeps of the file.
void expectNothingKept(const HostNode &node);

} // namespace velm::host::test
