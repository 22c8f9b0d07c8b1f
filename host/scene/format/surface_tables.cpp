// The tables of surfaces, of their nodes, and of networks inside nodes.
#include "host/scene/format/connection.h"
#include "host/scene/format/nested.h"
#include "host/scene/format/node_data.h"
#include "host/scene/format/settings_value.h"
#include "host/scene/format/tables.h"

#include <fmt/format.h>
#include <map>
#include <utility>

namespace velm::host {

namespace {

using Json = nlohmann::ordered_json;

NetworkDescription &networkOf(SurfaceDescription &surface) { return surface.network; }
NetworkDescription &networkOf(NetworkDescription &network) { return network; }
const NetworkDescription &networkOf(const SurfaceDescription &surface) { return surface.network; }
const NetworkDescription &networkOf(const NetworkDescription &network) { return network; }

// ---- Rows that surfaces and networks inside nodes have in common ----

// The schema only refers to the definition of nodes, since nodes may hold nodes; see nodeDefinition.
template <class T>
constexpr Field<T> kNodesField{
    .key = "nodes",
    .help = "The nodes of the network, by name.",
    .target =
        CustomValue<T>{.read = [](const ReadContext &context, const JsonMember &found,
                                  T &result) { readNamed(context, nodeTable(), found, networkOf(result).nodes); },
                       .write = [](const WriteContext &context, const T &object) -> std::optional<Json> {
                           Json nodes = Json::object();
                           addNamed(context, nodeTable(), networkOf(object).nodes, nodes);
                           if (nodes.empty()) return std::nullopt;
                           return nodes;
                       },
                       .schema =
                           [] {
                               return Json{{"type", "object"}, {"additionalProperties", {{"$ref", "#/$defs/node"}}}};
                           }}};

// The names in connections can be separated only when all nodes are read; see finishNetwork.
void checkConnectionList(const ReadContext &context, const JsonMember &found) {
    if (found.value.kind != JsonValue::Kind::list)
        context.fail(found.value.line, fmt::format("\"connections\" must be a list of texts such as "
                                                   "\"Node.Output -> Node.Input\"; found {}",
                                                   found.value.shown()));
}

template <class T>
constexpr Field<T> kConnectionsField{
    .key = "connections",
    .help = "The connections, as \"Node.Output -> Node.Input\". The inputs of the surface, or of the node that holds "
            "the network, take the results; it is referred to by its own name.",
    .target = CustomValue<T>{
        .read = [](const ReadContext &context, const JsonMember &found, T &) { checkConnectionList(context, found); },
        .write = [](const WriteContext &, const T &object) -> std::optional<Json> {
            Json connections = Json::array();
            for (const ConnectionDescription &one : networkOf(object).connections)
                connections.push_back(connectionText(one));
            if (connections.empty()) return std::nullopt;
            return connections;
        },
        .schema =
            [] {
                return Json{{"type", "array"}, {"items", {{"type", "string"}, {"pattern", "^.+\\..+->.+\\..+$"}}}};
            }}};

template <class T>
constexpr Field<T> kViewField{
    .key = "view",
    .help = "How an editor shows the network and its root node.",
    .target =
        CustomValue<T>{.read = [](const ReadContext &context, const JsonMember &found,
                                  T &result) { readObject(context, viewTable(), found.value, networkOf(result).view); },
                       .write = [](const WriteContext &context, const T &object) -> std::optional<Json> {
                           Json view = writeObject(context, viewTable(), networkOf(object).view);
                           if (view.empty()) return std::nullopt;
                           return view;
                       },
                       .schema = [] { return objectSchema(viewTable()); }}};

void readOtherInputs(const ReadContext &context, const JsonMember &found, SurfaceDescription &surface) {
    if (found.value.kind != JsonValue::Kind::list)
        context.fail(found.value.line,
                     fmt::format("\"{}\" must be a list of names; found {}", found.key, found.value.shown()));
    for (const JsonValue &name : found.value.list)
        surface.network.otherInputs.push_back(readText(context, found.key, name, textRule()));
}

std::optional<Json> writeOtherInputs(const WriteContext &, const SurfaceDescription &surface) {
    if (surface.network.otherInputs.empty()) return std::nullopt;
    return surface.network.otherInputs;
}

Json otherInputsSchema() { return {{"type", "array"}, {"items", textSchema()}}; }

// ---- Networks inside nodes ----

void finishNetwork(const ReadContext &context, const JsonValue &object, const NetworkRoot &root,
                   NetworkDescription &network) {
    std::vector<std::string> names{root.name};
    for (const NodeDescription &node : network.nodes) {
        if (node.name == root.name)
            throw InputError(node.location, fmt::format("the node \"{}\" has the name of {}", node.name, root.nameOf));
        names.push_back(node.name);
    }
    const JsonValue *connections = object.find("connections");
    if (!connections) return;
    const NodeNameSet nodes(std::move(names));
    std::map<std::pair<std::string, std::string>, int> lines; // of the connection of each node's input
    for (const JsonValue &text : connections->list) {
        ConnectionDescription connection =
            parseConnection(readText(context, "connections", text, textRule()), nodes, root, context.at(text.line));
        const auto [earlier, isNew] =
            lines.emplace(std::pair(connection.toNode, connection.input), connection.location.line);
        if (!isNew)
            context.fail(text.line, fmt::format("\"{}.{}\" is connected twice; first on line {}", connection.toNode,
                                                connection.input, earlier->second));
        network.connections.push_back(std::move(connection));
    }
}

constexpr Field<NetworkDescription> kNetworkFields[] = {
    kNodesField<NetworkDescription>, kConnectionsField<NetworkDescription>, kViewField<NetworkDescription>};
constexpr Table<NetworkDescription> kNetworkTable{.what = "a network", .fields = kNetworkFields};

void readNetwork(const ReadContext &context, const JsonMember &found, NodeDescription &node) {
    NetworkDescription &network = node.network.emplace_back();
    network.location = context.at(found.line);
    readObject(context, kNetworkTable, found.value, network);
    finishNetwork(context, found.value, ownerRoot(node.name), network);
}

// An empty network is written: it replaces the one in the node's data.
std::optional<Json> writeNetwork(const WriteContext &context, const NodeDescription &node) {
    if (node.network.empty()) return std::nullopt;
    return writeObject(context, kNetworkTable, node.network.front());
}

// ---- Looks ----

// The rows of a node and of the root of a network; `look` is the member that holds the NodeLook.
template <class T, auto look>
constexpr Field<T> kAtField{.key = "at",
                            .help = "Position of the node in an editor; [0, 0] by default.",
                            .rule = int2Rule(),
                            .target = inside<look, &NodeLook::at>};
template <class T, auto look>
constexpr Field<T> kModeField{.key = "mode",
                              .help = "How an editor shows the node; 1, drawn open, by default.",
                              .rule = integerRule(),
                              .target = inside<look, &NodeLook::mode>};
template <class T, auto look>
constexpr Field<T> kPreviewField{.key = "preview",
                                 .help = "Name of the output that an editor previews.",
                                 .rule = textRule(),
                                 .target = inside<look, &NodeLook::preview>};
template <class T, auto look>
constexpr Field<T> kCommentField{
    .key = "comment", .help = "A comment.", .rule = textRule(), .target = inside<look, &NodeLook::comment>};

constexpr ValueRule kDisabled = integerRule(0, 0xffff);

constexpr Field<NetworkView> kViewFields[] = {
    {.key = "location",
     .help = "Origin of the view in the editor's window, in the editor's units.",
     .rule = int2Rule(),
     .target = &NetworkView::location},
    {.key = "zoom",
     .help = "Magnification of the view in the editor's window.",
     .rule = numberRule(),
     .target = &NetworkView::zoom},
    {.key = "disabled",
     .help = "Other than 0: the network is switched off, and only the surface's settings count.",
     .rule = kDisabled,
     .target = &NetworkView::disabled},
    kAtField<NetworkView, &NetworkView::root>,
    kModeField<NetworkView, &NetworkView::root>,
    kPreviewField<NetworkView, &NetworkView::root>,
    kCommentField<NetworkView, &NetworkView::root>,
};

// ---- Nodes and surfaces ----

constexpr Field<NodeDescription> kNodeFields[] = {
    {.key = "server",
     .help = "The kind of node, as listed by \"velm nodes\": \"Velm Counter\".",
     .rule = textRule(),
     .target = &NodeDescription::server,
     .required = true},
    {.key = "kind",
     .help = "The display name of the server. Where the server is missing, a node with this key becomes a placeholder, "
             "with a warning: it is preserved, and its colours are magenta.",
     .rule = textRule(),
     .target = &NodeDescription::kind},
    {.key = "data",
     .help = "The data that the node saved in an object file, as hexadecimal digits; only where the settings do not "
             "describe all of it.",
     .target = CustomValue<NodeDescription>{.read = readNodeData, .write = writeNodeData, .schema = nodeDataSchema}},
    {.key = "settings",
     .help = "Settings by their labels on the node's panel, in the units that it shows; of labels that repeat, the "
             "second is \"Clamp 2\".",
     .target = settingsValue<&NodeDescription::settings>},
    {.key = "network",
     .help = "The network inside a node that holds one.",
     .target = CustomValue<NodeDescription>{.read = readNetwork,
                                            .write = writeNetwork,
                                            .schema = [] { return objectSchema(kNetworkTable); }}},
    kAtField<NodeDescription, &NodeDescription::look>,
    kModeField<NodeDescription, &NodeDescription::look>,
    kPreviewField<NodeDescription, &NodeDescription::look>,
    kCommentField<NodeDescription, &NodeDescription::look>,
};

constexpr ValueRule kSmoothingAngle{.kind = ValueRule::Kind::number, .minimum = 0, .maximum = 180};

constexpr Field<SurfaceDescription> kSurfaceFields[] = {
    {.key = "settings",
     .help = "Values of the surface itself where nothing is connected: Color, Luminosity, Diffuse, Specular, "
             "Glossiness, Reflection, Transparency, Refraction Index; fractions are 1 for full.",
     .target = settingsValue<&SurfaceDescription::settings>},
    kNodesField<SurfaceDescription>,
    kConnectionsField<SurfaceDescription>,
    {.key = "otherInputs",
     .help = "Names of further inputs that the surface has in LightWave and that are not evaluated here; their "
             "connections are preserved.",
     .target = CustomValue<SurfaceDescription>{.read = readOtherInputs,
                                               .write = writeOtherInputs,
                                               .schema = otherInputsSchema}},
    kViewField<SurfaceDescription>,
    {.key = "smoothingAngle",
     .help = "Edges up to this angle between their polygons are smoothed, in degrees; 0 gives flat polygons.",
     .rule = kSmoothingAngle,
     .target = &SurfaceDescription::smoothingAngle},
    {.key = "doubleSided",
     .help = "Whether polygons are visible from behind.",
     .rule = boolRule(),
     .target = &SurfaceDescription::doubleSided},
};

void finishSurface(const ReadContext &context, const JsonValue &object, SurfaceDescription &surface) {
    surface.network.location = surface.location;
    finishNetwork(context, object, surfaceRoot(surface.name), surface.network);
}

} // namespace

Json nodeDefinition() { return objectSchema(nodeTable()); }

const Table<NetworkView> &viewTable() {
    static constexpr Table<NetworkView> table{.what = "a view", .fields = kViewFields};
    return table;
}

const Table<NodeDescription> &nodeTable() {
    static constexpr Table<NodeDescription> table{.what = "a node", .fields = kNodeFields};
    return table;
}

const Table<SurfaceDescription> &surfaceTable() {
    static constexpr Table<SurfaceDescription> table{
        .what = "a surface", .fields = kSurfaceFields, .finish = finishSurface};
    return table;
}

} // namespace velm::host
