// "velm nodes": the nodes as a table.
#include "host/cli/commands.h"
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

// The inputs and outputs of a node are known only once an instance exists.
Row rowOf(ServerClass &server) {
    Network editor("nodes", "nodes", nullptr, nullptr);
    const HostNode &node = editor.addNode(server);
    return {server.name(),
            server.displayName(),
            server.menuGroup(),
            server.hasPanel() ? "yes" : "no",
            std::to_string(node.inputs.size()),
            outputNames(node)};
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
};

void declareOptions(CLI::App &command, ProgramOptions &, NodesOptions &options) {
    command.add_flag("--all", options.all, "The host's own nodes too");
}

int run(const ProgramOptions &program, const NodesOptions &nodes, std::ostream &out, std::ostream &) {
    const ListedModule module(program.module);
    std::vector<Row> rows{{"Name", "Shown as", "Menu group", "Panel", "Inputs", "Outputs"}};
    for (const auto &server : serverList().all())
        if (nodes.all || server->origin() == module.path()) rows.push_back(rowOf(*server));
    printTable(rows, out);
    return kExitDone;
}

} // namespace

constinit const Command nodesCommand =
    makeCommand<NodesOptions, declareOptions, run>({.name = "nodes", .help = "List the module's nodes"});

} // namespace velm::host
