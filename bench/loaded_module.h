// The module that was built with the benches, its servers in the list for as long as this lives.
#pragma once

#include "host/graph/server_list.h"
#include "host/load/module.h"

namespace velm::host::bench {

class LoadedModule {
  public:
    LoadedModule() : module_(Module::open(VELM_MODULE_FILE)) { serverList().add(module_.servers(), module_.path()); }
    ~LoadedModule() { serverList().remove(module_.path()); }
    LoadedModule(const LoadedModule &) = delete;
    LoadedModule &operator=(const LoadedModule &) = delete;

  private:
    Module module_;
};

} // namespace velm::host::bench
