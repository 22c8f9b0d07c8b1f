// Turns the keys of a scene description into an envelope.
#pragma once

#include "host/animation/channel.h"
#include "host/panel/setting.h"

namespace velm::host {

// Copies the keys of one component, and the behaviours before and after them, to an envelope that has no keys.
// [any thread]
void setKeys(const KeysDescription &keys, HostEnvelope &envelope);

} // namespace velm::host
