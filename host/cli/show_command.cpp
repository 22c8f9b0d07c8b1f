// "velm show": one node, its inputs and outputs, its settings and its panel.
#include "host/base/error.h"
#include "host/base/names.h"
#include "host/cli/commands.h"
#include "host/cli/panel_json.h"
#include "host/cli/panel_text.h"
#include "host/cli/socket_json.h"
#include "host/cli/wrapped_text.h"
#include "host/graph/listed_module.h"
#include "host/graph/network.h"
#include "host/help/help.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <ostream>
#include <sstream>

namespace velm::host {

namespace {

// Finds a node by its server name, or by its display name if only one node has that.
ServerClass &findServer(const std::string &wanted) {
    if (ServerClass *server = serverList().find(wanted)) return *server;
    std::vector<std::string> names, fitting;
    ServerClass *found = nullptr;
    for (const auto &server : serverList().all()) {
        names.push_back(server->name());
        if (server->displayName() != server->name()) names.push_back(server->displayName());
        if (server->displayName() != wanted) continue;
        found = server.get();
        fitting.push_back(inQuotes(server->name()));
    }
    if (fitting.size() > 1)
        throw InputError(fmt::format("several nodes are shown as {}: {}", inQuotes(wanted), fmt::join(fitting, ", ")));
    if (!found) throw InputError(fmt::format("no node {}{}", inQuotes(wanted), suggestion(wanted, names)));
    return *found;
}

template <class Sockets>
void printSockets(const char *title, const Sockets &sockets, const HelpSentences &sentences, std::ostream &out) {
    out << '\n' << title << '\n';
    if (sockets.empty()) out << "  none\n";
    std::size_t width = 0;
    for (const auto &socket : sockets) width = std::max(width, socket->name.size());
    for (const auto &socket : sockets) {
        out << fmt::format("  {:<{}}  {}\n", socket->name, width, typeName(socket->type));
        printWrapped(findSentence(sentences, socket->name), kIndent + kHelpIndent, out);
    }
}

void printNode(const ServerClass &server, HostNode &node, const NodeHelp &help, std::ostream &out) {
    std::ostringstream text; // printed at once at the end: a panel with mistakes throws before that
    text << fmt::format("{}\n  shown as    {}\n  menu group  {}\n  from        {}\n", server.name(),
                        server.displayName(), server.menuGroup().empty() ? "none" : server.menuGroup(),
                        server.origin());
    if (!help.summary.empty()) text << '\n';
    printWrapped(help.summary, kIndent, text);
    printSockets("Inputs", node.inputs, help.inputs, text);
    printSockets("Outputs", node.outputs, help.outputs, text);
    if (HostPanel *panel = panelOf(node))
        printPanel(*panel, help.settings, text);
    else
        text << "\nPanel\n  none\n";
    out << text.str();
}

Json jsonOf(const ServerClass &server, HostNode &node, const NodeHelp &help) {
    HostPanel *const panel = panelOf(node);
    return {{"name", server.name()},
            {"shownAs", server.displayName()},
            {"menuGroup", server.menuGroup()},
            {"from", server.origin()},
            {"help", help.summary},
            {"inputs", jsonOfSockets(node.inputs, help.inputs)},
            {"outputs", jsonOfSockets(node.outputs, help.outputs)},
            {"panel", panel ? jsonOfPanel(*panel, help.settings) : Json()}};
}

struct ShowOptions {
    std::string node; // server name or display name
    bool json = false;
};

void declareOptions(CLI::App &command, ProgramOptions &, ShowOptions &options) {
    command.add_option("NODE", options.node, "Its name, as listed by \"velm nodes\"")->required()->type_name("");
    command.add_flag("--json", options.json, kJsonHelp);
}

int run(const ProgramOptions &program, const ShowOptions &show, std::ostream &out, std::ostream &) {
    const ListedModule module(program.module);
    ServerClass &server = findServer(show.node);
    Network editor("show", "show", nullptr, nullptr);
    HostNode &node = editor.addNode(server);

    const NodeHelp *found = findHelp(server.name());
    const NodeHelp help = found ? *found : NodeHelp{}; // nodes of other modules have none

    if (show.json)
        printJson(jsonOf(server, node, help), out);
    else
        printNode(server, node, help, out);
    return kExitDone;
}

} // namespace

constinit const Command showCommand = makeCommand<ShowOptions, declareOptions, run>(
    {.name = "show", .help = "Show a node: inputs, outputs, settings, panel"});

} // namespace velm::host
