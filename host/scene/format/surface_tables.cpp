// The tables of surfaces: nodes, settings with their keys, connections.
#include "host/scene/format/connection.h"
#include "host/scene/format/key_texts.h"
#include "host/scene/format/look_tables.h"
#include "host/scene/format/tables.h"

#include <fmt/format.h>

namespace velm::host {

namespace {

using Json = nlohmann::ordered_json;

// ---- Keys of an animated setting ----

constexpr unsigned kTcbBit = 1u << kShapeTcb;
constexpr unsigned kCurveBits = 1u << kShapeHermite | 1u << kShapeBezier1 | 1u << kShapeBezier2;

// A key with the number of components that its value was written with.
struct KeyReading {
    KeyDescription key;
    int components = 1;
};

void readKeyValue(const ReadContext &context, const JsonMember &found, KeyReading &reading) {
    if (found.value.kind == JsonValue::Kind::number) {
        reading.components = 1;
        reading.key.value[0] = found.value.number;
        return;
    }
    if (found.value.kind != JsonValue::Kind::list)
        context.fail(found.value.line,
                     fmt::format("\"value\" must be a number or a list of three; found {}", found.value.shown()));
    reading.components = 3;
    reading.key.value = readTriple(context, found.key, found.value, tripleForm());
}

Json numberOrTripleSchema() { return {{"anyOf", Json::array({formSchema(numberForm()), formSchema(tripleForm())})}}; }

template <double KeyDescription::*member>
void readKeyNumber(const ReadContext &context, const JsonMember &found, KeyReading &reading) {
    reading.key.*member = readNumber(context, found.key, found.value, numberForm());
}

template <double KeyDescription::*member>
constexpr Field<KeyReading> keyNumber(const char *key, const char *help, bool required, unsigned kinds) {
    return {.key = key,
            .help = help,
            .target = ReadField<KeyReading>(readKeyNumber<member>),
            .schema = [] { return formSchema(numberForm()); },
            .required = required,
            .kinds = kinds};
}

constexpr Form kFourNumbers{.kind = Form::Kind::numbers};

void readKeyParameters(const ReadContext &context, const JsonMember &found, KeyReading &reading) {
    reading.key.parameters = readFour(context, found.key, found.value, kFourNumbers);
}

constexpr Field<KeyReading> kKeyFields[] = {
    keyNumber<&KeyDescription::time>("time", "When, in seconds.", true, ~0u),
    {.key = "value",
     .help = "What the setting is then, in the unit that the panel shows.",
     .target = ReadField<KeyReading>(readKeyValue),
     .schema = numberOrTripleSchema,
     .required = true},
    {.key = "shape",
     .help = "How the value comes to this key from the one before; \"tcb\" when there is no word of it.",
     .form = choiceForm(kShapeTexts),
     .target = SetChoice<KeyReading>([](KeyReading &reading, int shape) { reading.key.shape = shape; })},
    keyNumber<&KeyDescription::tension>("tension", "Of the TCB spline, -1 to 1.", false, kTcbBit),
    keyNumber<&KeyDescription::continuity>("continuity", "Of the TCB spline, -1 to 1.", false, kTcbBit),
    keyNumber<&KeyDescription::bias>("bias", "Of the TCB spline, -1 to 1.", false, kTcbBit),
    {.key = "parameters",
     .help = "The four numbers of a Hermite or Bezier key: tangents in and out, or control points.",
     .target = ReadField<KeyReading>(readKeyParameters),
     .schema = [] { return formSchema(kFourNumbers); },
     .kinds = kCurveBits},
};

const Table<KeyReading> &keyTable() {
    static constexpr Table<KeyReading> table{.what = "a key",
                                             .fields = kKeyFields,
                                             .kinds = kShapeTexts,
                                             .kindOf = [](const KeyReading &reading) { return reading.key.shape; }};
    return table;
}

void readKeyList(const ReadContext &context, const JsonMember &found, KeysDescription &keys) {
    const JsonValue &list = found.value;
    if (list.kind != JsonValue::Kind::list || list.list.empty())
        context.fail(list.line, fmt::format("\"keys\" must be a list of at least one key; found {}", list.shown()));
    for (const JsonValue &element : list.list) {
        KeyReading reading;
        readObject(context, keyTable(), element, reading);
        if (!keys.keys.empty() && reading.components != keys.components)
            context.fail(element.line, "all keys must have values of one kind: a number, or a list of three");
        if (!keys.keys.empty() && reading.key.time <= keys.keys.back().time)
            context.fail(element.line, fmt::format("keys must follow one another in time; {} s comes after {} s",
                                                   reading.key.time, keys.keys.back().time));
        keys.components = reading.components;
        keys.keys.push_back(reading.key);
    }
}

constexpr Field<KeysDescription> kKeysFields[] = {
    {.key = "keys",
     .help = "The keys, in order of time.",
     .target = ReadField<KeysDescription>(readKeyList),
     .schema =
         [] {
             return Json{{"type", "array"}, {"items", objectSchema(keyTable())}, {"minItems", 1}};
         },
     .required = true},
    {.key = "before",
     .help = "What the value does before the first key; \"constant\" when there is no word of it.",
     .form = choiceForm(kBehaviourTexts),
     .target = &KeysDescription::before},
    {.key = "after",
     .help = "What the value does after the last key; \"constant\" when there is no word of it.",
     .form = choiceForm(kBehaviourTexts),
     .target = &KeysDescription::after},
};

// ---- Settings ----

SettingValue readSettingValue(const ReadContext &context, const JsonMember &setting) {
    const JsonValue &value = setting.value;
    switch (value.kind) {
    case JsonValue::Kind::truth: return value.truth;
    case JsonValue::Kind::number: return value.number;
    case JsonValue::Kind::text: return value.text;
    case JsonValue::Kind::list: return readTriple(context, setting.key, value, tripleForm());
    case JsonValue::Kind::object: {
        KeysDescription keys;
        readObject(context, keysTable(), value, keys);
        return keys;
    }
    case JsonValue::Kind::null: break;
    }
    context.fail(value.line, fmt::format("\"{}\" must be true or false, a number, a text, a list of three numbers, or "
                                         "an object with \"keys\"; found null",
                                         setting.key));
}

template <class T>
void readSettings(const ReadContext &context, const JsonMember &found, T &result) {
    wantObject(context, '"' + found.key + '"', found.value);
    for (const JsonMember &member : found.value.members)
        result.settings.push_back(
            {.label = member.key, .value = readSettingValue(context, member), .location = context.at(member.line)});
}

// Told once for the whole schema; see settingsDefinition.
Json settingsSchema() { return {{"$ref", "#/$defs/settings"}}; }

// ---- Networks, nodes and surfaces ----

NetworkDescription &networkOf(SurfaceDescription &surface) { return surface.network; }
NetworkDescription &networkOf(NetworkDescription &network) { return network; }

template <class T>
void readNodes(const ReadContext &context, const JsonMember &found, T &result) {
    readNamed(context, nodeTable(), found, networkOf(result).nodes);
}

template <class T>
void checkConnectionList(const ReadContext &context, const JsonMember &found, T &) {
    if (found.value.kind != JsonValue::Kind::list)
        context.fail(found.value.line, fmt::format("\"connections\" must be a list of texts such as "
                                                   "\"Node.Output -> Node.Input\"; found {}",
                                                   found.value.shown()));
}

// The rows that surfaces and nodes with a network of their own have in common. Nodes are told once for the whole
// schema, since they may hold nodes; see nodeDefinition.
template <class T>
constexpr Field<T> kNodesField{
    .key = "nodes", .help = "The nodes of the network, by name.", .target = ReadField<T>(readNodes<T>), .schema = [] {
        return Json{{"type", "object"}, {"additionalProperties", {{"$ref", "#/$defs/node"}}}};
    }};
template <class T>
constexpr Field<T> kConnectionsField{
    .key = "connections",
    .help =
        "What is connected, as \"Node.Output -> Node.Input\"; the surface itself, or the node that holds the network, "
        "goes by its own name and takes the results.",
    .target = ReadField<T>(checkConnectionList<T>),
    .schema = [] {
        return Json{{"type", "array"}, {"items", {{"type", "string"}, {"pattern", "^.+\\..+->.+\\..+$"}}}};
    }};

template <class T>
constexpr Field<T> kViewField{.key = "view",
                              .help = "How an editor shows the network and the node that it ends in.",
                              .target =
                                  ReadField<T>([](const ReadContext &context, const JsonMember &found, T &result) {
                                      readObject(context, viewTable(), found.value, networkOf(result).view);
                                  }),
                              .schema = nestedSchema<viewTable>};
template <class T>
constexpr Field<T> kOtherInputsField{
    .key = "otherInputs",
    .help = "Names of further inputs that the surface has in the big application and that mean nothing here; what is "
            "connected to them is kept.",
    .target = ReadField<T>([](const ReadContext &context, const JsonMember &found, T &result) {
        readOtherInputs(context, found, networkOf(result));
    }),
    .schema = otherInputsSchema};

// Connections can be told apart only when the names of all nodes are known, wherever in the object they stand.
void readConnections(const ReadContext &context, const JsonValue &object, const NetworkRoot &root,
                     NetworkDescription &network) {
    std::vector<std::string> names{root.name};
    for (const NodeDescription &node : network.nodes) {
        if (node.name == root.name)
            throw InputError(node.location, fmt::format("the node \"{}\" has the name of {}", node.name, root.nameOf));
        names.push_back(node.name);
    }
    const JsonValue *connections = object.find("connections");
    if (!connections) return;
    for (const JsonValue &text : connections->list) {
        const ConnectionDescription connection =
            parseConnection(readText(context, "connections", text, textForm()), names, root, context.at(text.line));
        for (const ConnectionDescription &earlier : network.connections)
            if (earlier.toNode == connection.toNode && earlier.input == connection.input)
                context.fail(text.line, fmt::format("\"{}.{}\" is connected twice; first on line {}", earlier.toNode,
                                                    earlier.input, earlier.location.line));
        network.connections.push_back(connection);
    }
}

void finishSurface(const ReadContext &context, const JsonValue &object, SurfaceDescription &surface) {
    surface.network.location = surface.location;
    readConnections(context, object, surfaceRoot(surface.name), surface.network);
}

constexpr Field<NetworkDescription> kNetworkFields[] = {
    kNodesField<NetworkDescription>, kConnectionsField<NetworkDescription>, kViewField<NetworkDescription>};
constexpr Table<NetworkDescription> kNetworkTable{.what = "a network", .fields = kNetworkFields};

void readNetwork(const ReadContext &context, const JsonMember &found, NodeDescription &node) {
    NetworkDescription &network = node.network.emplace_back();
    network.location = context.at(found.line);
    readObject(context, kNetworkTable, found.value, network);
    readConnections(context, found.value, holderRoot(node.name), network);
}

constexpr Field<NodeDescription> kNodeFields[] = {
    {.key = "server",
     .help = "The kind of node, as listed by \"velm nodes\": \"Velm Counter\".",
     .form = textForm(),
     .target = &NodeDescription::server,
     .required = true},
    {.key = "settings",
     .help = "Settings by their labels on the node's panel, in the units that it shows; of labels that repeat, the "
             "second is \"Clamp 2\".",
     .target = ReadField<NodeDescription>(readSettings<NodeDescription>),
     .schema = settingsSchema},
    {.key = "network",
     .help = "Of a node that holds a network: what is inside.",
     .target = ReadField<NodeDescription>(readNetwork),
     .schema = [] { return objectSchema(kNetworkTable); }},
    {.key = "kind",
     .help = "The display name of the server. A node that tells it is kept, with a warning, also where its server is "
             "not there; its colours are magenta then.",
     .form = textForm(),
     .target = &NodeDescription::kind},
    {.key = "data",
     .help = "What the node saved in an object file, as hexadecimal digits, where it is more than the settings tell.",
     .target = ReadField<NodeDescription>(readNodeData),
     .schema = nodeDataSchema},
    kAtField<NodeDescription>,
    kModeField<NodeDescription>,
    kPreviewField<NodeDescription>,
    kCommentField<NodeDescription>,
};

constexpr Form kSmoothingAngle{.kind = Form::Kind::number, .least = 0, .most = 180};

constexpr Field<SurfaceDescription> kSurfaceFields[] = {
    {.key = "settings",
     .help = "Values of the surface itself where nothing is connected: Color, Luminosity, Diffuse, Specular, "
             "Glossiness, Reflection, Transparency, Refraction Index; fractions are 1 for full.",
     .target = ReadField<SurfaceDescription>(readSettings<SurfaceDescription>),
     .schema = settingsSchema},
    kNodesField<SurfaceDescription>,
    kConnectionsField<SurfaceDescription>,
    kOtherInputsField<SurfaceDescription>,
    kViewField<SurfaceDescription>,
    {.key = "smoothingAngle",
     .help = "Edges up to this angle between their polygons are smoothed, in degrees; 0 gives flat polygons.",
     .form = kSmoothingAngle,
     .target = &SurfaceDescription::smoothingAngle},
    {.key = "doubleSided",
     .help = "Whether polygons are seen from behind.",
     .form = truthForm(),
     .target = &SurfaceDescription::doubleSided},
};

} // namespace

nlohmann::ordered_json settingsDefinition() {
    const Json value = {
        {"anyOf", Json::array({formSchema(truthForm()), formSchema(numberForm()), Json{{"type", "string"}},
                               formSchema(tripleForm()), objectSchema(keysTable())})}};
    return {{"type", "object"}, {"additionalProperties", value}};
}

nlohmann::ordered_json nodeDefinition() { return objectSchema(nodeTable()); }

const Table<KeysDescription> &keysTable() {
    static constexpr Table<KeysDescription> table{.what = "an animated setting", .fields = kKeysFields};
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
