// The "LW Scene Info 5" service: facts about the scene.
#pragma once

#include "module/host.h"

namespace velm::host {

// One record for the life of the program. Until facts are set, it describes an empty scene of one frame, at 30 frames
// per second. Texts are never null. [render threads]
const HostSceneInfo *sceneInfo();

// Copies the facts. The texts remain the caller's, and must live until other facts are set. [between frames]
void setSceneInfo(const HostSceneInfo &facts);

} // namespace velm::host
