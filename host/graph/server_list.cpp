#include "host/graph/server_list.h"

#include "host/base/error.h"
#include "host/base/names.h"
#include "host/base/thread_role.h"
#include "host/graph/builtin/builtin.h"
#include "host/guard/crash_handler.h"
#include "host/guard/module_call.h"
#include "host/load/lookup.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace velm::host {

namespace {

std::string tagText(const HostServer &server, unsigned int code) {
    for (const HostTag *tag = server.tags; tag && tag->text; ++tag)
        if (tag->code == code) return tag->text;
    return {};
}

bool isClass(const HostServer &server, const char *className) { return std::strcmp(server.className, className) == 0; }

// Describes why an activation failed, from its result.
std::string refusal(int result, const char *className, int version) {
    switch (result) {
    case kActivateBadVersion: return fmt::format("it does not know version {} of {}", version, inQuotes(className));
    case kActivateBadGlobal: {
        const char *missing = lastMissingService();
        return missing ? fmt::format("it needs the service {}, which this host does not offer", inQuotes(missing))
                       : "a service that it needs is missing";
    }
    case kActivateBadLocal: return "it cannot use the record that it was given";
    case kActivateBadApplication:
    case kActivateBadApplicationQuiet: return "it is not made for this application";
    default: return "it gave the result " + std::to_string(result);
    }
}

void activate(const HostServer &server, int version, void *local, const ServerClass &owner, const char *call) {
    clearMissingService();
    const int result =
        callModule(owner.number(), call, [&] { return server.activate(version, lookup, local, nullptr); });
    if (result != kActivateOk)
        throw InputError(fmt::format("node {} ({}) refuses to work: {}", inQuotes(server.name), owner.origin(),
                                     refusal(result, server.className, version)));
}

} // namespace

ServerClass::ServerClass(const HostServer &handler, const HostServer *interface, std::string origin, int number)
    : handler_(&handler), interface_(interface), name_(handler.name), displayName_(tagText(handler, kTagUserName)),
      menuGroup_(tagText(handler, kTagMenu)), origin_(std::move(origin)), number_(number) {
    if (displayName_.empty()) displayName_ = name_;
}

const HostNodeHandler &ServerClass::handler() {
    assertInterface();
    if (active_) return record_;
    instanceOps_ = {};
    itemOps_ = {};
    renderOps_ = {};
    const bool modelling =
        (reinterpret_cast<std::uintptr_t>(lookup(HOST_SYSTEM_ID, kUseTransient)) & kSystemIdMask) == kSystemModelling;
    record_ = {.instance = &instanceOps_,
               .item = modelling ? nullptr : &itemOps_, // scene items are unknown there
               .render = &renderOps_,
               .evaluate = nullptr,
               .customPreview = nullptr,
               .flags = nullptr};
    activate(*handler_, kNodeHandlerVersion, &record_, *this, "activate");
    if (!instanceOps_.create || !instanceOps_.destroy || !record_.evaluate)
        throw InputError(fmt::format("node {} ({}) does not say how it is created, destroyed and evaluated",
                                     inQuotes(name_), origin_));
    noteEvaluate(number_, record_.evaluate);
    active_ = true;
    return record_;
}

HostPanel *ServerClass::panel(void *instance) {
    assertInterface();
    if (!hasPanel()) return nullptr;
    HostNodeInterface local{.instance = instance, .panel = nullptr, .options = nullptr, .command = nullptr};
    activate(*interface_, kNodeInterfaceVersion, &local, *this, "activate the panel");
    return local.panel;
}

namespace {

const HostServer *findInterface(const HostServer *table, const char *name) {
    for (const HostServer *server = table; server->className; ++server)
        if (isClass(*server, HOST_CLASS_NODE_INTERFACE) && server->name && std::strcmp(server->name, name) == 0)
            return server;
    return nullptr;
}

// A table without an end would be read until memory ends.
void requireEnd(const HostServer *table, const std::string &origin) {
    constexpr int kMostRows = 4096;
    int rows = 0;
    while (rows < kMostRows && table && table[rows].className) ++rows;
    if (rows == kMostRows) throw InputError(fmt::format("{}: the table of its servers does not end", origin));
}

bool isNamed(const std::vector<std::unique_ptr<ServerClass>> &classes, std::string_view name) {
    return std::any_of(classes.begin(), classes.end(), [&](const auto &one) { return one->name() == name; });
}

} // namespace

void ServerList::add(const HostServer *table, const std::string &origin) {
    const CallScope reading(origin == kBuiltinOrigin ? kHostServer : kModuleItself, "the table of its servers");
    requireEnd(table, origin);
    std::vector<std::unique_ptr<ServerClass>> added;
    for (const HostServer *server = table; server && server->className; ++server) {
        if (!isClass(*server, HOST_CLASS_NODE_HANDLER)) continue;
        if (!server->name || !*server->name) throw InputError(origin + ": a node server has no name");
        if (!server->activate)
            throw InputError(fmt::format("{}: node {} has no activation", origin, inQuotes(server->name)));
        if (find(server->name) || isNamed(added, server->name))
            throw InputError(fmt::format("{}: there is already a node {}", origin, inQuotes(server->name)));
        const int number = origin == kBuiltinOrigin ? kHostServer : numberOfServer(server->name);
        added.push_back(std::make_unique<ServerClass>(*server, findInterface(table, server->name), origin, number));
    }
    for (const HostServer *server = table; server && server->className; ++server) {
        if (!isClass(*server, HOST_CLASS_NODE_INTERFACE)) continue;
        if (!server->name || !isNamed(added, server->name))
            throw InputError(fmt::format("{}: there is a panel for {}, but no such node", origin,
                                         inQuotes(server->name ? server->name : "")));
    }
    std::move(added.begin(), added.end(), std::back_inserter(classes_));
}

void ServerList::remove(const std::string &origin) {
    std::erase_if(classes_, [&](const auto &one) { return one->origin() == origin; });
}

ServerClass *ServerList::find(std::string_view name) const {
    const auto found =
        std::find_if(classes_.begin(), classes_.end(), [&](const auto &one) { return one->name() == name; });
    return found == classes_.end() ? nullptr : found->get();
}

ServerClass &ServerList::get(std::string_view name) const {
    if (ServerClass *found = find(name)) return *found;
    std::vector<std::string> known;
    for (const auto &one : classes_) known.push_back(one->name());
    throw InputError(fmt::format("no node {}{}", inQuotes(name), suggestion(name, known)));
}

ServerList &serverList() {
    static ServerList list;
    static const bool filled = (list.add(builtinServers(), kBuiltinOrigin), true);
    static_cast<void>(filled);
    return list;
}

} // namespace velm::host
