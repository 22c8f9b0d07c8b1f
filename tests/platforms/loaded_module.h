// A module that is loaded from its file in the way of a host on this platform. It is never unloaded, so that everything
// that the module allocates stays valid.
#pragma once

#include "module/host.h"

#include <string>

namespace velm::plugin {

class LoadedModule {
  public:
    // Throws std::runtime_error with the system's reason if the file cannot be loaded or has no descriptor.
    explicit LoadedModule(const std::string &path);

    const HostModuleDescriptor &descriptor() const { return *descriptor_; }

  private:
    const HostModuleDescriptor *descriptor_ = nullptr;
};

} // namespace velm::plugin
