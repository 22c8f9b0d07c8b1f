// What scene files and object files keep of networks besides settings and connections, on its way to the nodes.
#pragma once

#include "host/base/warnings.h"
#include "host/graph/surface.h"
#include "host/scene/format/description.h"

#include <string>

namespace velm::host {

// All of it: [interface thread; not while rendering]; InputError without a place in the scene file.

// Makes a node: of its server, or a stand-in where there is none and the description tells the node's kind. Gives it
// its saved data and its look.
HostNode &makeDescribed(const NodeDescription &node, Network &editor, ServerList &servers);

// How an editor shows the network and its root.
void showAs(Network &editor, const NetworkView &view);

// Connects; an end that is a stand-in, or one of the root's other inputs, is made where it is missing.
void connectDescribed(Network &editor, const NetworkDescription &network, const ConnectionDescription &connection);

// Gives a surface what an object file has of it: its own values, and its network when it has one. InputError with the
// byte's offset.
void loadSaved(Surface &surface, const SurfaceDescription &description);

// Warns of each node in a surface, and in the networks inside its nodes, whose server is not there, and of each input
// of the surface that means nothing here.
void warnOfStandIns(Surface &surface, const SurfaceDescription &description, Warnings &warnings);

} // namespace velm::host
