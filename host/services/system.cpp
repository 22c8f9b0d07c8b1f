#include "host/services/system.h"

namespace velm::host {

namespace {
unsigned int systemWord = kSystemLayout;
}

void *systemId() {
    return reinterpret_cast<void *>(static_cast<HostWord>(systemWord)); // no address
}

void setSystemId(unsigned int word) { systemWord = word; }

} // namespace velm::host
