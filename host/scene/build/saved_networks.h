// Makes nodes, connections and surfaces from what scene files and object files save of them besides settings.
#pragma once

#include "host/base/warnings.h"
#include "host/graph/surface.h"
#include "host/scene/format/description.h"

#include <string>

namespace velm::host {

// All of it: [interface thread; not while rendering]; InputErrors have no location in the scene file unless said
// otherwise.

// The object file that a surface is from, or its place in the scene file.
SourceLocation locationOf(const SurfaceDescription &surface);

// Makes a node of its server, or a placeholder if there is no such server and the description has the node's kind.
// Gives it its saved data and its look.
HostNode &makeDescribed(const NodeDescription &node, Network &network, ServerList &servers);

// Sets how an editor shows the network and its root.
void setView(Network &network, const NetworkView &view);

// Connects. Creates a missing input or output of a placeholder, and a missing input of the root that the description
// lists in `otherInputs`.
void connectDescribed(Network &network, const NetworkDescription &description, const ConnectionDescription &connection);

// Gives a surface its own values from an object file, and its network if the file has one. InputError with the byte's
// offset.
void loadSaved(Surface &surface, const SurfaceDescription &description);

// Warns of each placeholder in a surface and in the networks inside its nodes, and of each input of the surface that is
// not evaluated here.
void warnOfPlaceholders(Surface &surface, const SurfaceDescription &description, Warnings &warnings);

} // namespace velm::host
