#include "host/services/instance_update.h"

namespace velm::host {

namespace {

void update(const char *className, void *instance) noexcept {
    const std::string name = className ? className : "";
    instanceObservers().notify([&](InstanceObserver &observer) { observer.instanceUpdated(name, instance); });
}

} // namespace

HostInstanceUpdate *instanceUpdate() { return update; }

ObserverList<InstanceObserver> &instanceObservers() {
    static ObserverList<InstanceObserver> observers;
    return observers;
}

} // namespace velm::host
