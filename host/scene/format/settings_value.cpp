#include "host/scene/format/settings_value.h"

#include "host/scene/format/tables.h"

#include <fmt/format.h>

namespace velm::host {

namespace {

using Json = nlohmann::ordered_json;

struct SettingJson {
    const WriteContext &context;

    Json operator()(bool value) const { return writePlain(boolRule(), value); }
    Json operator()(double value) const { return writePlain(numberRule(), value); }
    Json operator()(const Double3 &value) const { return writePlain(vec3Rule(), value); }
    Json operator()(const std::string &value) const { return value; } // may be empty
    Json operator()(const KeysDescription &keys) const { return writeObject(context, keysTable(), keys); }
};

} // namespace

SettingValue readSettingValue(const ReadContext &context, const JsonMember &setting) {
    const JsonValue &value = setting.value;
    switch (value.kind) {
    case JsonValue::Kind::boolean: return value.boolean;
    case JsonValue::Kind::number: return value.number;
    case JsonValue::Kind::text: return value.text;
    case JsonValue::Kind::list: return readVec3(context, setting.key, value, vec3Rule());
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

void readSettings(const ReadContext &context, const JsonMember &found, std::vector<SettingDescription> &settings) {
    requireObject(context, '"' + found.key + '"', found.value);
    for (const JsonMember &member : found.value.members)
        settings.push_back(
            {.label = member.key, .value = readSettingValue(context, member), .location = context.at(member.line)});
}

std::optional<Json> writeSettings(const WriteContext &context, const std::vector<SettingDescription> &settings) {
    if (settings.empty()) return std::nullopt;
    Json all = Json::object();
    for (const SettingDescription &setting : settings)
        all[setting.label] = std::visit(SettingJson{context}, setting.value);
    return all;
}

Json settingsReference() { return {{"$ref", "#/$defs/settings"}}; }

Json settingsDefinition() {
    const Json value = {
        {"anyOf", Json::array({ruleSchema(boolRule()), ruleSchema(numberRule()), Json{{"type", "string"}},
                               ruleSchema(vec3Rule()), objectSchema(keysTable())})}};
    return {{"type", "object"}, {"additionalProperties", value}};
}

} // namespace velm::host
