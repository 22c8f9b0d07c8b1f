// Observes a module under check: every call of the module into the host, and of the host into the module, passes
// through functions that record it and check it against the thread tags of the plug-in interface: which callbacks of
// the module may call what, on which thread, and with which handles. A violation fails the check.
#pragma once

#include "host/graph/server_list.h"
#include "host/load/module.h"

#include <string>
#include <vector>

namespace velm::host {

// The kind of callback of the module that a thread is inside.
enum class Phase {
    none,      // outside all callbacks
    interface, // activate, create, copy, load, save and so on
    between,   // init, newTime, cleanup
    render,    // evaluate
};

// The evaluation that a thread is inside.
struct EvaluationWatch {
    const HostNodeValue *value = nullptr; // the only value that it may set; null outside all evaluations
    int sets = 0;                         // how often it has set the value
};
// That of the calling thread. After an outermost evaluation it keeps that one's state until it is reset.
EvaluationWatch &currentEvaluation();

// Marks the calling thread as inside a callback of that kind. Scopes nest.
class PhaseScope {
  public:
    explicit PhaseScope(Phase entered);
    ~PhaseScope();
    PhaseScope(const PhaseScope &) = delete;
    PhaseScope &operator=(const PhaseScope &) = delete;

  private:
    Phase outer_;
};
Phase currentPhase(); // of the calling thread

// Bounds the cost of the calling thread's evaluations while it lives. A module may connect networks through its own
// pointers, in cycles that the host cannot see, so that an evaluation would take exponential time. From the first
// `inputs` evaluated inputs on, further inputs count as unconnected. Integers that come through inputs are clamped to
// +-`largest`, since they may be sample counts. Scopes do not nest.
class EvaluationBudget {
  public:
    EvaluationBudget(long inputs, int largest);
    ~EvaluationBudget();
    EvaluationBudget(const EvaluationBudget &) = delete;
    EvaluationBudget &operator=(const EvaluationBudget &) = delete;
};

// Replaces the host's services by watched copies for the rest of the process. Only the first call has an effect.
// [interface thread; before any server is activated]
void watchServices();

// Counts of handles that the module has created and not destroyed.
struct LiveHandles {
    long parameters, editors;
};
LiveHandles liveHandles(); // [interface thread]

// Adds the servers of a started module to the host's server list, with watched callbacks. Only one object may exist at
// a time. [interface thread]
class WatchedServers {
  public:
    // `table` has to outlive this object; `origin` names the module in the list. InputError if the servers cannot be
    // listed.
    WatchedServers(const HostServer *table, std::string origin);
    ~WatchedServers(); // removes the servers from the list
    WatchedServers(const WatchedServers &) = delete;
    WatchedServers &operator=(const WatchedServers &) = delete;

    ServerClass &server(const std::string &name) const { return serverList().get(name); } // InputError if unknown
    std::vector<std::string> names() const; // of the nodes, in the table's order

  private:
    const HostServer *own_;
    std::string origin_;
    std::vector<HostServer> table_;
};

// A loaded module whose calls to the system's libraries are watched (imports.h).
class LoadedModule {
  public:
    explicit LoadedModule(const std::string &file); // InputError if it is not a module
    const Module &module() const { return module_; }

  private:
    Module module_;
};

// A loaded module with its servers in the host's list.
class WatchedModule : public LoadedModule, public WatchedServers {
  public:
    explicit WatchedModule(const std::string &file); // InputError, as above
};

// Finds a server by class and name in a module's table; null if there is none. Reads at most kMostRows rows.
const HostServer *findServer(const HostServer *table, const char *className, const std::string &name);

// The names of the node handlers that have an activation, in the table's order and without repetition: at most
// kMostServers. Reads at most kMostRows rows.
constexpr int kMostRows = 4096;
std::vector<std::string> nodeNames(const HostServer *table);

} // namespace velm::host
