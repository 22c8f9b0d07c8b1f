// Watches the calls of the host into the module.
#include "host/check/process/check_record.h"
#include "host/check/watch/imports.h"
#include "host/check/watch/watch.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <utility>

namespace velm::host {

namespace {

thread_local Phase ownPhase = Phase::none;
thread_local EvaluationWatch evaluation;

// A node's servers, and the callbacks that their activations have filled in.
struct WatchedNode {
    const HostServer *handler = nullptr, *interface = nullptr;
    HostInstanceOps instance{};
    HostRenderOps render{};
    HostNodeHandler record{};
};
WatchedNode watchedNodes[kMostServers];

// Calls a callback of the module. An exception that leaves it would crash a host written in C, so it fails the check.
template <class Call>
VELM_FORCED_UNWIND auto callModule(int server, Phase entered, const char *name, Call call) -> decltype(call()) {
    const CallScope callScope(server, name);
    const PhaseScope phaseScope(entered);
    try {
        return call();
    } catch (abi::__forced_unwind &) {
        failCheck(fmt::format("the callback {} ends its thread", name));
    } catch (const std::exception &error) {
        failCheck(fmt::format("an exception left the callback {}: {}", name, error.what()));
    } catch (...) {
        failCheck("an exception left the callback " + std::string(name));
    }
}

// The functions that replace the callbacks of node `i`. Each node needs functions of its own, since the callbacks take
// nothing that identifies the node class.
template <int i>
struct Node {
    static constexpr WatchedNode &own = watchedNodes[i];

    static void *create(void *, void *node, const char **error) {
        return callModule(i, Phase::interface, "create",
                          [&] { return own.instance.create(own.instance.priv, node, error); });
    }
    static void destroy(void *instance) {
        callModule(i, Phase::interface, "destroy", [&] { own.instance.destroy(instance); });
    }
    static HostError copy(void *to, void *from) {
        return callModule(i, Phase::interface, "copy", [&] { return own.instance.copy(to, from); });
    }
    static HostError load(void *instance, const HostLoadState *state) {
        return callModule(i, Phase::interface, "load", [&] { return own.instance.load(instance, state); });
    }
    static HostError save(void *instance, const HostSaveState *state) {
        return callModule(i, Phase::interface, "save", [&] { return own.instance.save(instance, state); });
    }
    static HostError init(void *instance, int mode) {
        return callModule(i, Phase::between, "init", [&] { return own.render.init(instance, mode); });
    }
    static void cleanup(void *instance) {
        callModule(i, Phase::between, "cleanup", [&] { own.render.cleanup(instance); });
    }
    static HostError newTime(void *instance, int frame, double time) {
        return callModule(i, Phase::between, "newTime", [&] { return own.render.newTime(instance, frame, time); });
    }
    static void evaluate(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value) {
        const EvaluationWatch outer = std::exchange(evaluation, {.value = value, .sets = 0});
        callModule(i, Phase::render, "evaluate", [&] { own.record.evaluate(instance, sample, output, value); });
        if (outer.value) evaluation = outer; // the check reads the state of the outermost evaluation afterwards
    }

    static int activateHandler(int version, HostLookup *lookup, void *local, void *data) {
        const int result = callModule(i, Phase::interface, "activate",
                                      [&] { return own.handler->activate(version, lookup, local, data); });
        if (result != kActivateOk) return result;
        auto *record = static_cast<HostNodeHandler *>(local);
        own.instance = *record->instance;
        own.render = *record->render;
        own.record = *record;
        HostInstanceOps &instance = *record->instance;
        instance.create = instance.create ? create : nullptr;
        instance.destroy = instance.destroy ? destroy : nullptr;
        instance.copy = instance.copy ? copy : nullptr;
        instance.load = instance.load ? load : nullptr;
        instance.save = instance.save ? save : nullptr;
        HostRenderOps &render = *record->render;
        render.init = render.init ? init : nullptr;
        render.cleanup = render.cleanup ? cleanup : nullptr;
        render.newTime = render.newTime ? newTime : nullptr;
        record->evaluate = record->evaluate ? evaluate : nullptr;
        return result;
    }
    static int activateInterface(int version, HostLookup *lookup, void *local, void *data) {
        return callModule(i, Phase::interface, "activate the panel",
                          [&] { return own.interface->activate(version, lookup, local, data); });
    }
};

struct Activations {
    HostActivate *handler, *interface;
};

template <int... i>
constexpr std::array<Activations, sizeof...(i)> makeActivations(std::integer_sequence<int, i...>) {
    return {Activations{Node<i>::activateHandler, Node<i>::activateInterface}...};
}
constexpr auto kActivations = makeActivations(std::make_integer_sequence<int, kMostServers>{});

// Opening a module runs its code, so a crash there is reported as one of the module.
Module openWatched(const std::string &file) {
    const CallScope scope(kModuleItself, "loading the module");
    Module module = Module::open(file);
    watchImports(&module.descriptor());
    return module;
}

} // namespace

EvaluationWatch &currentEvaluation() { return evaluation; }

PhaseScope::PhaseScope(Phase entered) : outer_(std::exchange(ownPhase, entered)) {}
PhaseScope::~PhaseScope() { ownPhase = outer_; }
Phase currentPhase() { return ownPhase; }

const HostServer *findServer(const HostServer *table, const char *className, const std::string &name) {
    for (int i = 0; i < kMostRows && table[i].className; ++i)
        if (std::strcmp(table[i].className, className) == 0 && table[i].name && table[i].name == name) return &table[i];
    return nullptr;
}

std::vector<std::string> nodeNames(const HostServer *table) {
    std::vector<std::string> names;
    for (int i = 0; i < kMostRows && table[i].className && names.size() < kMostServers; ++i)
        if (std::strcmp(table[i].className, HOST_CLASS_NODE_HANDLER) == 0 && table[i].name && table[i].activate &&
            std::find(names.begin(), names.end(), table[i].name) == names.end())
            names.emplace_back(table[i].name);
    return names;
}

WatchedServers::WatchedServers(const HostServer *table, std::string origin) : own_(table), origin_(std::move(origin)) {
    watchServices();
    const std::vector<std::string> nodes = names();
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const HostServer *handler = findServer(own_, HOST_CLASS_NODE_HANDLER, nodes[i]);
        const HostServer *interface = findServer(own_, HOST_CLASS_NODE_INTERFACE, nodes[i]);
        watchedNodes[i] = {.handler = handler, .interface = interface};
        table_.push_back(*handler);
        table_.back().activate = kActivations[i].handler;
        if (!interface) continue;
        table_.push_back(*interface);
        if (interface->activate) table_.back().activate = kActivations[i].interface;
    }
    table_.push_back({nullptr, nullptr, nullptr, nullptr});
    serverList().add(table_.data(), origin_);
}

WatchedServers::~WatchedServers() { serverList().remove(origin_); }

std::vector<std::string> WatchedServers::names() const { return nodeNames(own_); }

LoadedModule::LoadedModule(const std::string &file) : module_(openWatched(file)) {}

WatchedModule::WatchedModule(const std::string &file)
    : LoadedModule(file), WatchedServers(module().servers(), module().path()) {}

} // namespace velm::host
