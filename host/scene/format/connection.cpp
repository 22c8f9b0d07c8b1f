#include "host/scene/format/connection.h"

#include "host/base/names.h"

#include <fmt/format.h>
#include <utility>

namespace velm::host {

namespace {

constexpr std::string_view kArrow = "->";

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

struct End {
    std::string node, socket;
};

End parseEnd(std::string_view text, const NodeNameSet &nodes, const SourceLocation &location) {
    constexpr auto kNone = std::string_view::npos;
    for (auto at = text.rfind('.'); at != kNone; at = at > 0 ? text.rfind('.', at - 1) : kNone) {
        if (!nodes.has(text.substr(0, at))) continue;
        End end{.node = std::string(text.substr(0, at)), .socket = std::string(text.substr(at + 1))};
        if (end.socket.empty()) throw InputError(location, fmt::format("\"{}\" names nothing after its dot", text));
        return end;
    }
    const auto dot = text.find('.');
    if (dot == std::string_view::npos)
        throw InputError(location,
                         fmt::format("\"{}\" must be a node's name, a dot, and one of its inputs or outputs", text));
    const std::string_view wanted = text.substr(0, dot);
    throw InputError(location,
                     fmt::format("there is no node {} here{}", inQuotes(wanted), suggestion(wanted, nodes.all())));
}

} // namespace

NetworkRoot surfaceRoot(const std::string &surface) {
    return {.name = surface, .nameOf = "its surface", .feedsNothing = "the surface itself, which has no outputs"};
}

NetworkRoot ownerRoot(const std::string &node) {
    return {.name = node,
            .nameOf = "the node that holds it",
            .feedsNothing = "the node that holds the network, whose outputs are outside"};
}

ConnectionDescription parseConnection(std::string_view text, const NodeNameSet &nodes, const NetworkRoot &root,
                                      const SourceLocation &location) {
    const auto arrow = text.find(kArrow);
    if (arrow == std::string_view::npos)
        throw InputError(
            location,
            fmt::format("\"{}\" is not a connection; it must have the form \"Node.Output -> Node.Input\"", text));
    End from = parseEnd(trimmed(text.substr(0, arrow)), nodes, location);
    End to = parseEnd(trimmed(text.substr(arrow + kArrow.size())), nodes, location);
    if (from.node == root.name) throw InputError(location, fmt::format("\"{}\" is {}", root.name, root.feedsNothing));
    return {.fromNode = std::move(from.node),
            .output = std::move(from.socket),
            .toNode = std::move(to.node),
            .input = std::move(to.socket),
            .location = location};
}

std::string connectionText(const ConnectionDescription &connection) {
    return fmt::format("{}.{} {} {}.{}", connection.fromNode, connection.output, kArrow, connection.toNode,
                       connection.input);
}

} // namespace velm::host
