#include "host/load/dialogs.h"

namespace velm::host {

namespace {

Dialogs noDialogs;
Dialogs *current = &noDialogs;

} // namespace

Dialogs &dialogs() { return *current; }

void setDialogs(Dialogs *dialogs) {
    assertInterface();
    current = dialogs ? dialogs : &noDialogs;
}

} // namespace velm::host
