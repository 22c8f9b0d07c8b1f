// A node of the checks' own, whose outputs give whatever a check wants: one output for each connection type.
#pragma once

#include "host/graph/network.h"

namespace velm::host {

// What its outputs give from now on. [interface thread; between evaluations]
void feed(double number, int whole);

// Adds the node to a network. [interface thread; not while rendering]
HostNode &addFeeder(Network &editor);

// Its output of an input's type.
HostOutput &feederFor(HostNode &feeder, const HostInput &input);

} // namespace velm::host
