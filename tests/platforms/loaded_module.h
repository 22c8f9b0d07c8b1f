// A module opened from its file, as a host on this platform opens it. It stays open, since what the module keeps lives
// as long as the module does.
#pragma once

#include "module/host.h"

#include <string>

namespace velm::plugin {

class LoadedModule {
  public:
    // Throws std::runtime_error, with the system's reason, where the file cannot be opened or has no descriptor.
    explicit LoadedModule(const std::string &path);

    const HostModuleDescriptor &descriptor() const { return *descriptor_; }

  private:
    const HostModuleDescriptor *descriptor_ = nullptr;
};

} // namespace velm::plugin
