// The "LW Time Info" service: the time of the frame that is being rendered.
#pragma once

#include "module/host.h"

namespace velm::host {

// One record for the life of the program. [render threads]
const HostTimeInfo *timeInfo();

// `time` in seconds. [between frames]
void setTime(int frame, double time);

} // namespace velm::host
