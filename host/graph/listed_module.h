// A module whose servers are in the host's list.
#pragma once

#include "host/graph/server_list.h"
#include "host/load/module.h"

namespace velm::host {

// Loads a module and adds its servers to the host's list. The destructor removes them and unloads the module: no node
// of it may exist then. [interface thread; not while rendering]
class ListedModule {
  public:
    // Throws InputError, naming the file, when it is no module or its servers cannot be listed.
    explicit ListedModule(const std::string &file) : module_(Module::open(file)) {
        serverList().add(module_.servers(), module_.path());
    }
    ~ListedModule() { serverList().remove(module_.path()); }
    ListedModule(const ListedModule &) = delete;
    ListedModule &operator=(const ListedModule &) = delete;

    const std::string &path() const { return module_.path(); }

  private:
    Module module_;
};

} // namespace velm::host
