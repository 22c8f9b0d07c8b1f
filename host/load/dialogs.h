// The windows and dialogs that modules ask the host to show. A program with a user interface provides them; a program
// without one leaves them as they are, and nothing is shown.
#pragma once

#include "host/base/thread_role.h"
#include "host/guard/call_record.h"
#include "module/host.h"

#include <string>

namespace velm::host {

// What a user interface provides. The default implementations show nothing. All functions are called within a call of a
// module, through showDialog where they may wait for a person. They must not throw. References are never to null, and
// what they refer to belongs to the caller. [interface thread; not while rendering]
class Dialogs {
  public:
    // Opens the window of a network, or brings it to the front, and returns without waiting for it to be closed.
    // Returns whether it is open.
    virtual bool openNetwork(HostNodeEditor & /*network*/) { return false; }
    virtual bool isNetworkOpen(HostNodeEditor & /*network*/) { return false; }

    // Opens a panel and returns without waiting. Returns whether it is open.
    virtual bool openPanel(HostPanel & /*panel*/) { return false; }
    // Shows a panel and waits until the person closes it. Returns whether the person accepted the values.
    virtual bool postPanel(HostPanel & /*panel*/) { return false; }

    // Opens the editor for an envelope, for the envelopes of a parameter, or for its texture. Returns whether it was
    // opened.
    virtual bool editEnvelope(HostEnvelope & /*envelope*/) { return false; }
    virtual bool editEnvelopes(HostVParm & /*parm*/) { return false; }
    virtual bool editTexture(HostVParm & /*parm*/) { return false; }

    // Asks for a file to read, and waits. `title` is the dialog's; `fileType` is the kind of file to offer ("Images").
    // Both may be empty. Returns the path; empty when the person cancels.
    virtual std::string chooseFile(const std::string & /*title*/, const std::string & /*fileType*/) { return {}; }

    virtual ~Dialogs() = default;
};

// The dialogs in use: those last set, or else the default ones.
Dialogs &dialogs();
// Uses other dialogs, which must outlive their use; null for the default ones. [interface thread; not while rendering]
void setDialogs(Dialogs *dialogs);

// Calls `show(dialogs())` and returns its result. The call of the module that is waiting for it does not use up the
// call limit. [interface thread; not while rendering]
template <class Show>
auto showDialog(Show show) {
    assertInterface();
    const DialogScope waiting;
    return show(dialogs());
}

} // namespace velm::host
