#include "host/services/time.h"

namespace velm::host {

namespace {
HostTimeInfo info = {.time = 0, .frame = 0};
}

const HostTimeInfo *timeInfo() { return &info; }

void setTime(int frame, double time) { info = {.time = time, .frame = frame}; }

} // namespace velm::host
