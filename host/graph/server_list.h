// The node servers that the host knows: its own and those of loaded modules, all described by the same records.
#pragma once

#include "host/guard/call_record.h"
#include "module/host.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

// A node class: a "NodeHandler" server and, where there is one, the "NodeInterface" server of the same name.
class ServerClass {
  public:
    // The records remain the caller's and must outlive the class. `interface` may be null. `origin` is the file of the
    // module, or kBuiltinOrigin. `number` is the server's in the call record.
    ServerClass(const HostServer &handler, const HostServer *interface, std::string origin, int number = kHostServer);
    ServerClass(const ServerClass &) = delete;
    ServerClass &operator=(const ServerClass &) = delete;

    const std::string &name() const { return name_; }               // "Velm Counter"
    const std::string &displayName() const { return displayName_; } // "Counter": the user-name tag, or else the name
    const std::string &menuGroup() const { return menuGroup_; }     // empty when there is no tag for it
    const std::string &origin() const { return origin_; }           // the module's file, or "built in"
    int number() const { return number_; }                          // for calls of its functions; see module_call.h

    // False when there is no interface server, or it has no activation function: the nodes have no panel.
    bool hasPanel() const { return interface_ && interface_->activate; }

    // The handler record, which the server fills in at the first call. InputError when the server refuses; the next
    // call then tries again. [interface thread; not while rendering]
    const HostNodeHandler &handler();

    // Activates the interface server for an instance and returns the panel; null when hasPanel() is false or the server
    // provides none. InputError when the server refuses. The node owns the panel.
    // [interface thread; not while rendering]
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

    // Adds the node servers of a table that ends with a null class name, and ignores servers of other classes.
    // InputError, with nothing added, when a name is taken, a handler has no activation function or no name, or an
    // interface has no handler. The table must outlive its entries in this list.
    void add(const HostServer *table, const std::string &origin);
    // Removes the servers of an origin, of which no node may be left.
    void remove(const std::string &origin);

    // By server name; null when there is none.
    ServerClass *find(std::string_view name) const;
    // By server name; InputError with the nearest name: no node "Velm Countre", did you mean "Velm Counter"?
    ServerClass &get(std::string_view name) const;
    // In the order of addition.
    const std::vector<std::unique_ptr<ServerClass>> &all() const { return classes_; }

  private:
    std::vector<std::unique_ptr<ServerClass>> classes_;
};

// The list of this process. It contains the built-in nodes from the start. [interface thread; not while rendering]
ServerList &serverList();

} // namespace velm::host
