// A module whose servers are in the host's list.
#pragma once

#include "host/graph/server_list.h"
#include "host/load/module.h"

namespace velm {

// Loads a module and lists its servers; takes both back at the end. No node of it may be left then.
// [interface thread; not while rendering]
class LoadedModule {
  public:
    // Throws InputError, naming the file, when it is no module or its servers cannot be listed.
    explicit LoadedModule(const std::string &file) : module_(Module::open(file)) {
        serverList().add(module_.servers(), module_.path());
    }
    ~LoadedModule() { serverList().remove(module_.path()); }
    LoadedModule(const LoadedModule &) = delete;
    LoadedModule &operator=(const LoadedModule &) = delete;

    const std::string &path() const { return module_.path(); }

  private:
    Module module_;
};

} // namespace velm
