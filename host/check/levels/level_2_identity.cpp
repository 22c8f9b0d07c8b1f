// Level 2: what the module says of itself, and how its servers are activated.
#include "host/check/process/check_record.h"
#include "host/check/process/child.h"
#include "host/check/levels/levels.h"
#include "host/check/fixture/fixture.h"
#include "host/load/lookup.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <set>

namespace velm::host {

namespace {

constexpr std::size_t kLongestText = 255;
constexpr int kMostTags = 256, kActivations = 100;

// A text that people and files can do with.
bool isUsable(const char *text) {
    const std::size_t length = strnlen(text, kLongestText + 1);
    return length > 0 && length <= kLongestText &&
           std::none_of(text, text + length, [](char c) { return static_cast<unsigned char>(c) < ' '; });
}

void checkTags(const HostServer &server) {
    bool named = false;
    int count = 0;
    for (const HostTag *tag = server.tags; tag && tag->text; ++tag) {
        if (++count > kMostTags) failCheck("the tags of \"" + std::string(server.name) + "\" have no end");
        if (!isUsable(tag->text)) failCheck("a tag of \"" + std::string(server.name) + "\" is no text");
        named = named || tag->code == kTagUserName;
    }
    if (!named) warnCheck("\"" + std::string(server.name) + "\" has no display name");
}

void checkRow(const HostServer &server, std::set<std::pair<std::string, std::string>> &seen) {
    if (!server.name || !isUsable(server.name)) failCheck("a server has no usable name");
    if (!seen.emplace(server.className, server.name).second)
        failCheck("two servers of the class " + std::string(server.className) + " are called \"" + server.name + "\"");
    checkTags(server);
}

void tableIsInOrder(const CheckTask &task) {
    const CallScope noted(-1, "reading the server table");
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
            warnCheck("\"" + std::string(table[i].name) + "\" is listed without an activation");
        else if (className == HOST_CLASS_NODE_INTERFACE && !findServer(table, HOST_CLASS_NODE_HANDLER, table[i].name))
            failCheck("there is a panel for \"" + std::string(table[i].name) + "\", but no such node");
    }
    if (nodeNames(table).size() == kMostServers)
        warnCheck("only the first " + std::to_string(kMostServers) + " nodes are checked");
}

// All texts of the table, one after the other.
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
    SharedBoard names;
    Child other(
        *names,
        [&] {
            shiftAddresses(task.seed);
            warnCheck(tableText(task.module)); // the way back to us
        },
        kOtherProcessSeconds);
    const ChildEnd end = waitFor(other);
    const std::string here = tableText(task.module);
    if (end.outcome != Outcome::warn) failCheck("in another process: " + end.message);
    if (here.compare(0, end.message.size(), end.message) != 0)
        failCheck("another process finds another server table, from " + difference(here, end.message));
}

// Records for an activation, with marks before, between and behind them.
struct Marked {
    unsigned char before[64];
    HostInstanceOps instance;
    unsigned char second[64];
    HostItemOps item;
    HostRenderOps render;
    unsigned char third[64];
    HostNodeHandler handler;
    HostNodeInterface interface;
    unsigned char after[64];

    explicit Marked(void *ofInstance) {
        std::memset(static_cast<void *>(this), 0xa5, sizeof *this);
        handler.instance = &instance;
        handler.item = &item;
        handler.render = &render;
        interface = {.instance = ofInstance, .panel = nullptr, .options = nullptr, .command = nullptr};
    }
    bool operator==(const Marked &other) const {
        Marked moved = other;
        moved.handler.instance = handler.instance;
        moved.handler.item = handler.item;
        moved.handler.render = handler.render;
        return std::memcmp(this, &moved, sizeof *this) == 0;
    }
};

bool marksStand(const Marked &marked) {
    const Marked fresh(nullptr);
    return std::memcmp(marked.before, fresh.before, sizeof fresh.before) == 0 &&
           std::memcmp(marked.second, fresh.second, sizeof fresh.second) == 0 &&
           std::memcmp(&marked.item, &fresh.item, sizeof fresh.item) == 0 &&
           std::memcmp(marked.third, fresh.third, sizeof fresh.third) == 0 &&
           std::memcmp(marked.after, fresh.after, sizeof fresh.after) == 0;
}

// The two servers of a node, and how they are activated by hand.
class Servers {
  public:
    explicit Servers(const CheckTask &task)
        : module_(task.module), stage_(module_, task.server),
          handler_(findServer(module_.module().servers(), HOST_CLASS_NODE_HANDLER, task.server)),
          interface_(findServer(module_.module().servers(), HOST_CLASS_NODE_INTERFACE, task.server)) {
        if (interface_ && !interface_->activate) interface_ = nullptr;
    }

    bool hasInterface() const { return interface_ != nullptr; }
    Marked fresh() { return Marked(stage_.node().instance); }
    int activate(bool handler, int version, HostLookup *services, Marked &marked) {
        const HostServer &server = handler ? *handler_ : *interface_;
        const CallScope noted(stage_.server(), handler ? "activate" : "activate the panel");
        const PhaseScope phase(Phase::interface);
        void *local = handler ? static_cast<void *>(&marked.handler) : &marked.interface;
        marked.handler.instance = &marked.instance;
        marked.handler.item = &marked.item;
        marked.handler.render = &marked.render;
        const int result = server.activate(version, services, local, nullptr);
        if (result < kActivateOk || result > kActivateBadApplicationQuiet)
            failCheck("an activation gives " + std::to_string(result) + ", which is no result");
        if (!marksStand(marked)) failCheck("an activation writes to what is not for it to fill");
        return result;
    }
    // A refusal leaves the record alone.
    int activateOrRefuse(bool handler, int version, HostLookup *services) {
        const Marked before = fresh();
        Marked marked = before;
        const int result = activate(handler, version, services, marked);
        if (result != kActivateOk && !(before == marked)) failCheck("an activation that refuses has filled its record");
        return result;
    }

  private:
    WatchedModule module_;
    Stage stage_;
    const HostServer *handler_, *interface_;
};

void refusesWrongVersions(const CheckTask &task) {
    Servers servers(task);
    for (const bool handler : {true, false}) {
        if (!handler && !servers.hasInterface()) continue;
        const int right = handler ? int{kNodeHandlerVersion} : int{kNodeInterfaceVersion};
        for (const int version : {0, -1, right - 1, right + 1, 1000, INT_MAX, INT_MIN})
            if (version != right && servers.activateOrRefuse(handler, version, lookup) == kActivateOk)
                failCheck("it takes version " + std::to_string(version) + " of " +
                          (handler ? HOST_CLASS_NODE_HANDLER : HOST_CLASS_NODE_INTERFACE));
        if (servers.activateOrRefuse(handler, right, lookup) != kActivateOk)
            failCheck("it refuses the right version after wrong ones");
    }
}

// A host that lacks services.
std::set<std::string> asked, denied;
bool denyAll;

void *partialLookup(const char *service, int use) {
    asked.insert(service ? service : "");
    return denyAll || denied.contains(service ? service : "") ? nullptr : lookup(service, use);
}

void denyEach(Servers &servers, bool handler) {
    asked.clear();
    denied.clear();
    denyAll = false;
    if (servers.activateOrRefuse(handler, handler ? kNodeHandlerVersion : kNodeInterfaceVersion, partialLookup) !=
        kActivateOk)
        failCheck("it refuses to work with all services there");
    const std::set<std::string> all = asked;
    const int version = handler ? int{kNodeHandlerVersion} : int{kNodeInterfaceVersion};
    for (const std::string &service : all) {
        denied = {service};
        const int result = servers.activateOrRefuse(handler, version, partialLookup);
        if (result != kActivateOk && result != kActivateBadGlobal)
            failCheck("without the service \"" + service + "\" an activation gives " + std::to_string(result) +
                      " instead of " + std::to_string(kActivateBadGlobal));
    }
    denyAll = true;
    const int result = servers.activateOrRefuse(handler, version, partialLookup);
    if (result != kActivateBadGlobal && !all.empty())
        failCheck("without any service an activation gives " + std::to_string(result));
    denyAll = false;
    denied.clear();
    if (servers.activateOrRefuse(handler, version, partialLookup) != kActivateOk)
        failCheck("it refuses to work once services are back");
}

void standsMissingServices(const CheckTask &task) {
    Servers servers(task);
    denyEach(servers, true);
    if (servers.hasInterface()) denyEach(servers, false);
}

void activatesAlike(const CheckTask &task) {
    Servers servers(task);
    Marked first = servers.fresh();
    servers.activate(true, kNodeHandlerVersion, lookup, first);
    if (!first.instance.create || !first.instance.destroy || !first.handler.evaluate)
        failCheck("the handler does not say how it is created, destroyed and evaluated");
    for (int i = 1; i < kActivations; ++i) {
        Marked again = servers.fresh();
        servers.activate(true, kNodeHandlerVersion, lookup, again);
        if (!(first == again))
            failCheck("activation " + std::to_string(i + 1) + " fills another record than the first");
    }
    if (!servers.hasInterface()) return;
    Marked shown = servers.fresh();
    servers.activate(false, kNodeInterfaceVersion, lookup, shown);
    for (int i = 1; i < kActivations; ++i) {
        Marked again = servers.fresh();
        servers.activate(false, kNodeInterfaceVersion, lookup, again);
        if (again.interface.panel != shown.interface.panel) warnCheck("each activation makes a new panel");
    }
}

constexpr Check kChecks[] = {
    {"identity.table", 2, CheckScope::module, "the server table ends, with names of their own and texts in it",
     tableIsInOrder},
    {"identity.processes", 2, CheckScope::module, "the server table is the same in two processes", sameInTwoProcesses},
    {"identity.versions", 2, CheckScope::node, "wrong versions are refused, and the record left alone",
     refusesWrongVersions},
    {"identity.services", 2, CheckScope::node, "missing services are told, and the record left alone",
     standsMissingServices},
    {"identity.repeats", 2, CheckScope::node, "a hundred activations fill the same record", activatesAlike},
};

} // namespace

std::span<const Check> identityChecks() { return kChecks; }

} // namespace velm::host
