// The host as a module under check sees it: every call of the module into the host, and of the host into the module,
// passes through functions that note it and hold it against the wall's tags: which of the module's callbacks may call
// what, on which thread, and with which handles. A breach ends the check as a failure.
#pragma once

#include "host/graph/server_list.h"
#include "host/load/module.h"

#include <string>
#include <vector>

namespace velm::host {

// What the module is doing, by the callback that the calling thread is in.
enum class Phase {
    none,      // in no callback
    interface, // activation, creation, copy, load, save and so on
    between,   // init, newTime, cleanup
    render,    // evaluate
};

// Where the result of the evaluation that the thread is in belongs, and how often it was set.
struct EvaluationWatch {
    const HostNodeValue *value = nullptr;
    int sets = 0;
};
EvaluationWatch &currentEvaluation();

// The calls from the host are entered here. `call` is a literal. Scopes nest.
class PhaseScope {
  public:
    explicit PhaseScope(Phase phase);
    ~PhaseScope();
    PhaseScope(const PhaseScope &) = delete;
    PhaseScope &operator=(const PhaseScope &) = delete;

  private:
    Phase outer_;
};
Phase currentPhase();

// Keeps the calling thread's evaluations short while it lives. They may follow so many inputs; from then on inputs
// count as unconnected: networks may reach themselves through a module's own pointers, of which the host knows nothing,
// and each way round would be taken as often as there are ways. Whole numbers that come through inputs stay within
// +-`largest`: counts of samples may be among them.
class ShortEvaluation {
  public:
    ShortEvaluation(long inputs, int largest);
    ~ShortEvaluation();
    ShortEvaluation(const ShortEvaluation &) = delete;
    ShortEvaluation &operator=(const ShortEvaluation &) = delete;
};

// Puts watched tables in place of the host's own services, for the rest of the process. Calling again does nothing.
// [interface thread; before anything is activated]
void watchServices();

// Handles that the module has had made and not destroyed.
struct HandlesInUse {
    long parameters, editors;
};
HandlesInUse handlesInUse();

// The servers of a started module, in the host's list under functions that watch. One module at a time.
// [interface thread]
class WatchedServers {
  public:
    // `table` stays the caller's. InputError when the servers cannot be listed.
    WatchedServers(const HostServer *table, std::string origin);
    ~WatchedServers();
    WatchedServers(const WatchedServers &) = delete;
    WatchedServers &operator=(const WatchedServers &) = delete;

    ServerClass &server(const std::string &name) const { return serverList().get(name); }
    std::vector<std::string> names() const; // of the nodes, in the table's order

  private:
    const HostServer *own_;
    std::string origin_;
    std::vector<HostServer> table_;
};

// A loaded module, and its own requests for memory and so on under functions that watch.
class LoadedModule {
  public:
    explicit LoadedModule(const std::string &file); // InputError when it is no module
    const Module &module() const { return module_; }

  private:
    Module module_;
};

// A loaded module with its servers. A check that looks at more than the handlers' results says so by the failure of its
// own.
class WatchedModule : public LoadedModule, public WatchedServers {
  public:
    explicit WatchedModule(const std::string &file); // InputError, as above
};

// The module's own servers by class and name; null when there is none.
const HostServer *findServer(const HostServer *table, const char *className, const std::string &name);

// The names of the handler servers with an activation, in order, no more than are checked; reads no more than
// kMostRows rows.
constexpr int kMostRows = 4096;
std::vector<std::string> nodeNames(const HostServer *table);

} // namespace velm::host
