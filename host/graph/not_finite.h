// Finds the node that makes a value which is NaN or infinite.
#pragma once

#include "host/graph/node.h"

namespace velm::host {

// The node at which a value of an input first becomes NaN or infinite: its output is, while all that its own inputs get
// is finite. Null for an input that gets a finite value or is not connected. Evaluates the nodes before the input many
// times, so it is for errors only; nodes that draw random numbers or have a memory may behave otherwise than before.
// [render threads]
const HostNode *sourceOfNotFinite(const HostInput &input, ShadingSample *sample);

} // namespace velm::host
