#include "host/scene/convert/write_surfaces.h"

#include "host/scene/format/key_texts.h"

#include <algorithm>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace velm::host {

namespace {

using Json = nlohmann::ordered_json;

// Whole numbers without a point, as people write them. The number is finite: none else can be set, or comes here.
Json numberJson(double number) {
    constexpr double kExact = 9007199254740992.0; // 2^53
    const auto whole = static_cast<long long>(std::clamp(number, -kExact, kExact));
    if (static_cast<double>(whole) == number) return whole;
    return number;
}

template <class List>
Json numbersJson(const List &numbers) {
    Json list = Json::array();
    for (const double number : numbers) list.push_back(numberJson(number));
    return list;
}

Json keyJson(const KeyDescription &key, int components) {
    Json json = {{"time", numberJson(key.time)}};
    json["value"] = components == 1 ? numberJson(key.value[0]) : numbersJson(key.value);
    if (key.shape != kShapeTcb) json["shape"] = kShapeTexts[key.shape];
    const auto unlessZero = [&](const char *name, double number) {
        if (number != 0) json[name] = numberJson(number);
    };
    if (key.shape == kShapeTcb) {
        unlessZero("tension", key.tension);
        unlessZero("continuity", key.continuity);
        unlessZero("bias", key.bias);
    } else if (key.shape != kShapeLinear && key.shape != kShapeStepped) {
        if (key.parameters != std::array<double, 4>{}) json["parameters"] = numbersJson(key.parameters);
    }
    return json;
}

struct ValueJson {
    Json operator()(bool on) const { return on; }
    Json operator()(double number) const { return numberJson(number); }
    Json operator()(const Double3 &triple) const { return numbersJson(triple); }
    Json operator()(const std::string &text) const { return text; }
    Json operator()(const KeysDescription &keys) const {
        Json json = {{"keys", Json::array()}};
        for (const KeyDescription &key : keys.keys) json["keys"].push_back(keyJson(key, keys.components));
        if (keys.before != kBehaveConstant) json["before"] = kBehaviourTexts[keys.before];
        if (keys.after != kBehaveConstant) json["after"] = kBehaviourTexts[keys.after];
        return json;
    }
};

void addSettings(Json &json, const std::vector<SettingDescription> &settings) {
    if (settings.empty()) return;
    Json &all = json["settings"] = Json::object();
    for (const SettingDescription &setting : settings) all[setting.label] = std::visit(ValueJson{}, setting.value);
}

void addLook(Json &json, const NodeLook &look) {
    const NodeLook usual;
    if (look.at != usual.at) json["at"] = look.at;
    if (look.mode != usual.mode) json["mode"] = look.mode;
    if (!look.preview.empty()) json["preview"] = look.preview;
    if (!look.comment.empty()) json["comment"] = look.comment;
}

void addView(Json &json, const NetworkView &view) {
    const NetworkView usual;
    if (view == usual) return;
    Json &all = json["view"] = Json::object();
    if (view.location != usual.location) all["location"] = view.location;
    if (view.zoom != usual.zoom) all["zoom"] = numberJson(view.zoom);
    if (view.disabled != usual.disabled) all["disabled"] = view.disabled;
    addLook(all, view.root);
}

std::string hexadecimal(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) text += fmt::format("{:02x}", static_cast<unsigned char>(byte));
    return text;
}

void addNetwork(Json &json, const NetworkDescription &network);

Json nodeJson(const NodeDescription &node) {
    Json json = {{"server", node.server}};
    if (!node.kind.empty()) json["kind"] = node.kind;
    if (!node.data.empty()) json["data"] = hexadecimal(node.data);
    addSettings(json, node.settings);
    for (const NetworkDescription &inside : node.network) addNetwork(json["network"] = Json::object(), inside);
    addLook(json, node.look);
    return json;
}

void addNetwork(Json &json, const NetworkDescription &network) {
    if (!network.nodes.empty()) {
        Json &nodes = json["nodes"] = Json::object();
        for (const NodeDescription &node : network.nodes) nodes[node.name] = nodeJson(node);
    }
    if (!network.connections.empty()) {
        Json &connections = json["connections"] = Json::array();
        for (const ConnectionDescription &one : network.connections)
            connections.push_back(fmt::format("{}.{} -> {}.{}", one.fromNode, one.output, one.toNode, one.input));
    }
    if (!network.otherInputs.empty()) json["otherInputs"] = network.otherInputs;
    addView(json, network.view);
}

// Text that is no UTF-8, as of another machine, gets marks where it cannot be shown.
std::string onOneLine(const Json &json) {
    if (json.is_object() || json.is_array()) {
        std::string text;
        for (const auto &[key, value] : json.items()) {
            text += text.empty() ? "" : ", ";
            if (json.is_object()) text += onOneLine(Json(key)) + ": ";
            text += onOneLine(value);
        }
        return json.is_object() ? '{' + text + '}' : '[' + text + ']';
    }
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

// As people lay it out: what fits on a line stands on one.
std::string laidOut(const Json &json, std::size_t indent) {
    constexpr std::size_t kLongestLine = 110;
    std::string line = onOneLine(json);
    const bool splits = !json.empty() && (json.is_object() || json.is_array());
    if (!splits || (indent > 2 && indent + line.size() <= kLongestLine)) return line;
    const std::string inner(indent + 2, ' ');
    std::string text;
    for (const auto &[key, value] : json.items()) {
        text += text.empty() ? "\n" : ",\n";
        text += inner + (json.is_object() ? onOneLine(Json(key)) + ": " : "") + laidOut(value, indent + 2);
    }
    text += '\n' + std::string(indent, ' ');
    return json.is_object() ? '{' + text + '}' : '[' + text + ']';
}

} // namespace

std::string writeSurfaces(std::span<const ImageDescription> images, std::span<const SurfaceDescription> surfaces) {
    Json scene = Json::object();
    for (const ImageDescription &image : images) scene["images"][image.name] = {{"file", image.file}};
    Json &all = scene["surfaces"] = Json::object();
    for (const SurfaceDescription &surface : surfaces) {
        Json &json = all[surface.name] = Json::object();
        addSettings(json, surface.settings);
        addNetwork(json, surface.network);
    }
    return laidOut(scene, 0) + '\n';
}

} // namespace velm::host
