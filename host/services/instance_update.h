// The "Instance Update" service: instances tell the host that they changed, and the host tells whoever listens.
#pragma once

#include "module/host.h"

#include <functional>
#include <string>

namespace velm::host {

// The function that the lookup gives. A null class name counts as an empty one. [interface thread; not while rendering]
HostInstanceUpdate *instanceUpdate();

// How often it was called since the program started.
long updateCount();

// Listens as long as it lives. The call must not throw; listeners may come and go during it, and hear of the next
// update for the first time. [interface thread]
class UpdateListener {
  public:
    using Call = std::function<void(const std::string &className, void *instance)>;
    explicit UpdateListener(Call call);
    ~UpdateListener();
    UpdateListener(const UpdateListener &) = delete;
    UpdateListener &operator=(const UpdateListener &) = delete;

  private:
    int id_;
};

} // namespace velm::host
