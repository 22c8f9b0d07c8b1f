// The "Instance Update" service: instances tell the host that they have changed, and the host tells its observers.
#pragma once

#include "host/base/observers.h"
#include "module/host.h"

#include <string>

namespace velm::host {

// The function that the lookup gives. A null class name counts as an empty one. [interface thread; not while rendering]
HostInstanceUpdate *instanceUpdate();

// Notified of every call of the service. Rules for the function: see ObserverList.
// [interface thread; not while rendering]
class InstanceObserver {
  public:
    // An instance has changed. `className` is that of its server, such as HOST_CLASS_NODE_HANDLER; `instance` may be
    // null.
    virtual void instanceUpdated(const std::string &className, void *instance) = 0;

  protected:
    InstanceObserver() = default;
    ~InstanceObserver() = default;
    InstanceObserver(const InstanceObserver &) = default;
    InstanceObserver &operator=(const InstanceObserver &) = default;
};

// The observers of all instances.
ObserverList<InstanceObserver> &instanceObservers();

} // namespace velm::host
