// The values of keys as scenes describe them.
#pragma once

#include "host/animation/channel.h"
#include "host/panel/setting.h"

namespace velm::host {

// Gives an envelope without keys those of one component, and their behaviours. [any thread]
void setKeys(const KeysDescription &keys, HostEnvelope &envelope);

} // namespace velm::host
