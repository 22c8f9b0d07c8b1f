// The servers that the host knows: its own and those of loaded modules, all registered by the same records.
#pragma once

#include "host/guard/call_record.h"
#include "module/host.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

// One kind of node: a "NodeHandler" server and, where there is one, the "NodeInterface" server of the same name.
class ServerClass {
  public:
    // The records stay the caller's and outlive the class. `interface` may be null. `number` is the server's on the
    // call board.
    ServerClass(const HostServer &handler, const HostServer *interface, std::string origin, int number = kHostServer);
    ServerClass(const ServerClass &) = delete;
    ServerClass &operator=(const ServerClass &) = delete;

    const std::string &name() const { return name_; }               // "Velm Counter"
    const std::string &displayName() const { return displayName_; } // "Counter": the user-name tag, else the name
    const std::string &menuGroup() const { return menuGroup_; }     // "" when there is no tag for it
    const std::string &origin() const { return origin_; }           // the module's file, or "built in"
    int number() const { return number_; }                          // for calls of its functions: see module_call.h

    // False when there is no interface server, or one without an activation: the node has no panel.
    bool hasPanel() const { return interface_ && interface_->activate; }

    // The handler record, filled by the server at the first call. InputError when the server refuses; the next call
    // tries again. [interface thread; not while rendering]
    const HostNodeHandler &handler();

    // The panel of an instance, by an activation of the interface server; null when hasPanel() is false or the server
    // gives none. InputError when it refuses. The panel stays with the node. [interface thread; not while rendering]
    HostPanel *panel(void *instance);

  private:
    const HostServer *handler_;
    const HostServer *interface_;
    std::string name_, displayName_, menuGroup_, origin_;
    int number_;
    bool active_ = false;
    HostInstanceOps instanceOps_{};
    HostItemOps itemOps_{};
    HostRenderOps renderOps_{};
    HostNodeHandler record_{};
};

class ServerList {
  public:
    ServerList() = default;
    ServerList(const ServerList &) = delete;
    ServerList &operator=(const ServerList &) = delete;

    // Adds the node servers of a table that ends with a null class. Servers of other classes are passed over.
    // InputError, and nothing added, when a name is there already, a handler has no activation or no name, or an
    // interface has no handler. The table outlives its entries.
    void add(const HostServer *table, const std::string &origin);
    // Removes what came from there; no node of it may be left.
    void remove(const std::string &origin);

    // By server name; null when there is none.
    ServerClass *find(std::string_view name) const;
    // By server name; InputError naming the nearest one: no node "Velm Countre", did you mean "Velm Counter"?
    ServerClass &get(std::string_view name) const;
    // In the order in which they were added.
    const std::vector<std::unique_ptr<ServerClass>> &all() const { return classes_; }

  private:
    std::vector<std::unique_ptr<ServerClass>> classes_;
};

// The host's one list. It holds the built-in nodes from the start. [interface thread; not while rendering]
ServerList &serverList();

} // namespace velm::host
