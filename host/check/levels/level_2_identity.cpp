// Level 2: the server table, and the activation of the servers.
#include "host/check/fixture/fixture.h"
#include "host/check/levels/levels.h"
#include "host/check/process/check_record.h"
#include "host/check/process/child.h"
#include "host/load/lookup.h"

#include <fmt/format.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <set>

namespace velm::host {

namespace {

constexpr std::size_t kLongestText = 255;
constexpr int kMostTags = 256, kActivations = 100;

// Whether a text can be shown and saved: not empty, not too long, no control characters.
bool isUsable(const char *text) {
    const std::size_t length = strnlen(text, kLongestText + 1);
    return length > 0 && length <= kLongestText &&
           std::none_of(text, text + length, [](char c) { return static_cast<unsigned char>(c) < ' '; });
}

void checkTags(const HostServer &server) {
    bool named = false;
    int count = 0;
    for (const HostTag *tag = server.tags; tag && tag->text; ++tag) {
        if (++count > kMostTags) failCheck(fmt::format("the tag list of \"{}\" has no end", server.name));
        if (!isUsable(tag->text)) failCheck(fmt::format("a tag of \"{}\" is not a usable text", server.name));
        named = named || tag->code == kTagUserName;
    }
    if (!named) warnCheck(fmt::format("\"{}\" has no display name", server.name));
}

void checkRow(const HostServer &server, std::set<std::pair<std::string, std::string>> &seen) {
    if (!server.name || !isUsable(server.name)) failCheck("a server has no usable name");
    if (!seen.emplace(server.className, server.name).second)
        failCheck(fmt::format("two servers of the class {} are called \"{}\"", server.className, server.name));
    checkTags(server);
}

void tableIsValid(const CheckTask &task) {
    const CallScope scope(kModuleItself, "reading the server table");
    const Module module = Module::open(task.module);
    const HostServer *table = module.servers();
    std::set<std::pair<std::string, std::string>> seen;
    for (int i = 0; table[i].className; ++i) {
        if (i >= kMostRows) failCheck("the server table has no end");
        checkRow(table[i], seen);
        const std::string className = table[i].className;
        if (className != HOST_CLASS_NODE_HANDLER && className != HOST_CLASS_NODE_INTERFACE)
            warnCheck("this host knows no servers of the class " + className);
        else if (className == HOST_CLASS_NODE_HANDLER && !table[i].activate)
            warnCheck(fmt::format("\"{}\" is listed without an activation", table[i].name));
        else if (className == HOST_CLASS_NODE_INTERFACE && !findServer(table, HOST_CLASS_NODE_HANDLER, table[i].name))
            failCheck(fmt::format("there is a panel for \"{}\", but no such node", table[i].name));
    }
    if (nodeNames(table).size() == kMostServers)
        warnCheck(fmt::format("only the first {} nodes are checked", kMostServers));
}

// The contents of the server table as text, for comparison.
std::string tableText(const std::string &file) {
    const Module module = Module::open(file);
    std::string text;
    for (const HostServer *server = module.servers(); server->className; ++server) {
        text += std::string(server->className) + ' ' + (server->name ? server->name : "") +
                (server->activate ? " +" : " -");
        for (const HostTag *tag = server->tags; tag && tag->text; ++tag)
            text += ' ' + std::to_string(tag->code) + ' ' + tag->text;
        text += '\n';
    }
    return text;
}

void sameInTwoProcesses(const CheckTask &task) {
    SharedCheckRecord names;
    Child other(
        *names,
        [&] {
            shiftAddresses(task.seed);
            warnCheck(tableText(task.module)); // the warning carries the text to this process
        },
        kOtherProcessSeconds);
    const ChildEnd end = waitFor(other);
    const std::string here = tableText(task.module);
    if (end.outcome != Outcome::warn) failCheck("in another process: " + end.message);
    if (here.compare(0, end.message.size(), end.message) != 0)
        failCheck("another process finds another server table, from " + difference(here, end.message));
}

// The records that an activation fills in, between marks that it must not overwrite.
struct MarkedRecords {
    unsigned char before[64];
    HostInstanceOps instance;
    unsigned char second[64];
    HostItemOps item;
    HostRenderOps render;
    unsigned char third[64];
    HostNodeHandler handler;
    HostNodeInterface interface;
    unsigned char after[64];

    explicit MarkedRecords(void *ofInstance) {
        std::memset(static_cast<void *>(this), 0xa5, sizeof *this);
        handler.instance = &instance;
        handler.item = &item;
        handler.render = &render;
        interface = {.instance = ofInstance, .panel = nullptr, .options = nullptr, .command = nullptr};
    }
    bool operator==(const MarkedRecords &other) const {
        MarkedRecords moved = other;
        moved.handler.instance = handler.instance;
        moved.handler.item = handler.item;
        moved.handler.render = handler.render;
        return std::memcmp(this, &moved, sizeof *this) == 0;
    }
};

bool marksAreIntact(const MarkedRecords &records) {
    const MarkedRecords fresh(nullptr);
    return std::memcmp(records.before, fresh.before, sizeof fresh.before) == 0 &&
           std::memcmp(records.second, fresh.second, sizeof fresh.second) == 0 &&
           std::memcmp(&records.item, &fresh.item, sizeof fresh.item) == 0 &&
           std::memcmp(records.third, fresh.third, sizeof fresh.third) == 0 &&
           std::memcmp(records.after, fresh.after, sizeof fresh.after) == 0;
}

// The two servers of a node, which the checks activate themselves.
class Servers {
  public:
    explicit Servers(const CheckTask &task)
        : module_(task.module), fixture_(module_, task.server),
          handler_(findServer(module_.module().servers(), HOST_CLASS_NODE_HANDLER, task.server)),
          interface_(findServer(module_.module().servers(), HOST_CLASS_NODE_INTERFACE, task.server)) {
        if (interface_ && !interface_->activate) interface_ = nullptr;
    }

    bool hasInterface() const { return interface_ != nullptr; }
    MarkedRecords fresh() { return MarkedRecords(fixture_.node().instance); }
    int activate(bool handler, int version, HostLookup *services, MarkedRecords &records) {
        const HostServer &server = handler ? *handler_ : *interface_;
        const CallScope callScope(fixture_.server(), handler ? "activate" : "activate the panel");
        const PhaseScope phase(Phase::interface);
        void *local = handler ? static_cast<void *>(&records.handler) : &records.interface;
        records.handler.instance = &records.instance;
        records.handler.item = &records.item;
        records.handler.render = &records.render;
        const int result = server.activate(version, services, local, nullptr);
        if (result < kActivateOk || result > kActivateBadApplicationQuiet)
            failCheck(fmt::format("an activation returns {}, which is not an activation result", result));
        if (!marksAreIntact(records)) failCheck("an activation writes to memory that it must leave alone");
        return result;
    }
    // Activates, and fails the check if an activation that refuses has changed the records.
    int activateOrRefuse(bool handler, int version, HostLookup *services) {
        const MarkedRecords before = fresh();
        MarkedRecords records = before;
        const int result = activate(handler, version, services, records);
        if (result != kActivateOk && !(before == records))
            failCheck("an activation that refuses has filled in its record");
        return result;
    }

  private:
    WatchedModule module_;
    Fixture fixture_;
    const HostServer *handler_, *interface_;
};

void refusesWrongVersions(const CheckTask &task) {
    Servers servers(task);
    for (const bool handler : {true, false}) {
        if (!handler && !servers.hasInterface()) continue;
        const int right = handler ? int{kNodeHandlerVersion} : int{kNodeInterfaceVersion};
        for (const int version : {0, -1, right - 1, right + 1, 1000, INT_MAX, INT_MIN})
            if (version != right && servers.activateOrRefuse(handler, version, lookup) == kActivateOk)
                failCheck(fmt::format("it accepts version {} of {}", version,
                                      handler ? HOST_CLASS_NODE_HANDLER : HOST_CLASS_NODE_INTERFACE));
        if (servers.activateOrRefuse(handler, right, lookup) != kActivateOk)
            failCheck("it refuses the right version after wrong ones");
    }
}

// A lookup function that withholds some services, and notes which ones are requested.
std::set<std::string> requested, withheld;
bool withholdsAll;

void *partialLookup(const char *service, int use) {
    requested.insert(service ? service : "");
    return withholdsAll || withheld.contains(service ? service : "") ? nullptr : lookup(service, use);
}

void withholdEach(Servers &servers, bool handler) {
    requested.clear();
    withheld.clear();
    withholdsAll = false;
    if (servers.activateOrRefuse(handler, handler ? kNodeHandlerVersion : kNodeInterfaceVersion, partialLookup) !=
        kActivateOk)
        failCheck("it refuses although all services are there");
    const std::set<std::string> all = requested;
    const int version = handler ? int{kNodeHandlerVersion} : int{kNodeInterfaceVersion};
    for (const std::string &service : all) {
        withheld = {service};
        const int result = servers.activateOrRefuse(handler, version, partialLookup);
        if (result != kActivateOk && result != kActivateBadGlobal)
            failCheck(fmt::format("without the service \"{}\" an activation returns {} instead of {}", service, result,
                                  int{kActivateBadGlobal}));
    }
    withholdsAll = true;
    const int result = servers.activateOrRefuse(handler, version, partialLookup);
    if (result != kActivateBadGlobal && !all.empty())
        failCheck("without any service an activation returns " + std::to_string(result));
    withholdsAll = false;
    withheld.clear();
    if (servers.activateOrRefuse(handler, version, partialLookup) != kActivateOk)
        failCheck("it refuses when the services are available again");
}

void refusesMissingServices(const CheckTask &task) {
    Servers servers(task);
    withholdEach(servers, true);
    if (servers.hasInterface()) withholdEach(servers, false);
}

void activatesRepeatably(const CheckTask &task) {
    Servers servers(task);
    MarkedRecords first = servers.fresh();
    servers.activate(true, kNodeHandlerVersion, lookup, first);
    if (!first.instance.create || !first.instance.destroy || !first.handler.evaluate)
        failCheck("the handler lacks a function to create, destroy or evaluate");
    for (int i = 1; i < kActivations; ++i) {
        MarkedRecords again = servers.fresh();
        servers.activate(true, kNodeHandlerVersion, lookup, again);
        if (!(first == again)) failCheck(fmt::format("activation {} fills in another record than the first", i + 1));
    }
    if (!servers.hasInterface()) return;
    MarkedRecords shown = servers.fresh();
    servers.activate(false, kNodeInterfaceVersion, lookup, shown);
    for (int i = 1; i < kActivations; ++i) {
        MarkedRecords again = servers.fresh();
        servers.activate(false, kNodeInterfaceVersion, lookup, again);
        if (again.interface.panel != shown.interface.panel) warnCheck("each activation creates a new panel");
    }
}

constexpr Check kChecks[] = {
    {"identity.table", 2, CheckScope::module, "the server table has an end, unique names and usable texts",
     tableIsValid},
    {"identity.processes", 2, CheckScope::module, "the server table is the same in two processes", sameInTwoProcesses},
    {"identity.versions", 2, CheckScope::node, "wrong versions are refused and the record is left alone",
     refusesWrongVersions},
    {"identity.services", 2, CheckScope::node, "missing services are reported and the record is left alone",
     refusesMissingServices},
    {"identity.repeats", 2, CheckScope::node, "a hundred activations fill in the same record", activatesRepeatably},
};

} // namespace

std::span<const Check> identityChecks() { return kChecks; }

} // namespace velm::host
