// "velm nodes": the nodes as a table.
#include "host/cli/commands.h"
#include "host/cli/json_output.h"
#include "host/cli/socket_json.h"
#include "host/graph/listed_module.h"
#include "host/graph/network.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <ostream>

namespace velm::host {

namespace {

constexpr std::size_t kColumns = 6;
using Row = std::array<std::string, kColumns>;
constexpr const char *kBetween = "  ";

std::string outputNames(const HostNode &node) {
    std::string names;
    for (const auto &output : node.outputs) names += (names.empty() ? "" : ", ") + output->name;
    return names;
}

Row rowOf(ServerClass &server, const HostNode &node) {
    return {server.name(),
            server.displayName(),
            server.menuGroup(),
            server.hasPanel() ? "yes" : "no",
            std::to_string(node.inputs.size()),
            outputNames(node)};
}

Json jsonOf(ServerClass &server, const HostNode &node) {
    return {
        {"name", server.name()},      {"shownAs", server.displayName()},      {"menuGroup", server.menuGroup()},
        {"panel", server.hasPanel()}, {"inputs", jsonOfSockets(node.inputs)}, {"outputs", jsonOfSockets(node.outputs)}};
}

void printTable(const std::vector<Row> &rows, std::ostream &out) {
    std::array<std::size_t, kColumns> widths{};
    for (const Row &row : rows)
        for (std::size_t i = 0; i < kColumns; ++i) widths[i] = std::max(widths[i], row[i].size());
    for (const Row &row : rows) {
        std::string line;
        for (std::size_t i = 0; i < kColumns; ++i)
            line += i + 1 < kColumns ? fmt::format("{:<{}}{}", row[i], widths[i], kBetween) : row[i];
        out << line << '\n';
    }
}

struct NodesOptions {
    bool all = false; // the host's own nodes too
    bool json = false;
};

void declareOptions(CLI::App &command, ProgramOptions &, NodesOptions &options) {
    command.add_flag("--all", options.all, "The host's own nodes too");
    command.add_flag("--json", options.json, kJsonHelp);
}

int run(const ProgramOptions &program, const NodesOptions &nodes, std::ostream &out, std::ostream &) {
    const ListedModule module(program.module);
    std::vector<Row> rows{{"Name", "Shown as", "Menu group", "Panel", "Inputs", "Outputs"}};
    Json json = Json::array();
    for (const auto &server : serverList().all()) {
        if (!nodes.all && server->origin() != module.path()) continue;
        // The inputs and outputs of a node are known only once an instance exists.
        Network editor("nodes", "nodes", nullptr, nullptr);
        const HostNode &node = editor.addNode(*server);
        rows.push_back(rowOf(*server, node));
        json.push_back(jsonOf(*server, node));
    }
    nodes.json ? printJson(json, out) : printTable(rows, out);
    return kExitDone;
}

} // namespace

constinit const Command nodesCommand =
    makeCommand<NodesOptions, declareOptions, run>({.name = "nodes", .help = "List the module's nodes"});

} // namespace velm::host
