// The "LW Scene Info 5" service: facts about the scene that is being rendered.
#pragma once

#include "module/host.h"

namespace velm::host {

// One record for the life of the program; until a scene is set, an empty one of a single frame at 30 a second. Texts
// are never null. Read on [render threads].
const HostSceneInfo *sceneInfo();

// Takes over the facts; the texts stay the caller's and live until other facts are set. [between frames]
void setSceneInfo(const HostSceneInfo &facts);

} // namespace velm::host
