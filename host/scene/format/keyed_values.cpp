#include "host/scene/format/keyed_values.h"

#include "host/scene/format/nested.h"
#include "host/scene/format/tables.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

namespace velm::host {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char *kKeys = "keys";

bool hasKeyList(const JsonValue &value) { return value.kind == JsonValue::Kind::object && value.find(kKeys); }

// The rule of one component.
ValueRule componentRule(const ValueRule &rule) {
    return {.kind = ValueRule::Kind::number,
            .minimum = rule.minimum,
            .maximum = rule.maximum,
            .exclusiveMinimum = rule.exclusiveMinimum,
            .exclusiveMaximum = rule.exclusiveMaximum};
}

KeysDescription readKeysOf(const ReadContext &context, const KeyedValue &value, const JsonValue &found,
                           int components) {
    KeysDescription keys;
    readObject(context, keysTable(), found, keys);
    if (keys.components != components)
        context.fail(found.line, fmt::format("the keys of \"{}\" must have {}", value.key,
                                             components == 1 ? "numbers as values" : "lists of three as values"));
    for (const KeyDescription &key : keys.keys)
        for (int i = 0; i < components; ++i) {
            JsonValue number;
            number.kind = JsonValue::Kind::number;
            number.line = found.line;
            number.number = key.value[static_cast<std::size_t>(i)];
            readNumber(context, value.key, number, componentRule(value.rule));
        }
    return keys;
}

void addChannel(const KeyedValue &value, int component, KeysDescription keys) {
    const auto comesLater = [&](const ChannelDescription &each) {
        return std::pair(each.channel, each.component) > std::pair(value.channel, component);
    };
    value.channels.insert(std::ranges::find_if(value.channels, comesLater),
                          {.channel = value.channel, .component = component, .keys = std::move(keys)});
}

KeysDescription componentOf(KeysDescription keys, std::size_t component) {
    keys.components = 1;
    for (KeyDescription &key : keys.keys) key.value = {key.value[component], 0, 0};
    return keys;
}

void readComponents(const ReadContext &context, const JsonMember &found, const KeyedValue &value) {
    if (found.value.list.size() != value.constants.size())
        context.fail(found.value.line,
                     fmt::format("\"{}\" must have three components; found {}", found.key, found.value.shown()));
    for (std::size_t i = 0; i < value.constants.size(); ++i) {
        const JsonValue &component = found.value.list[i];
        if (hasKeyList(component))
            addChannel(value, static_cast<int>(i), readKeysOf(context, value, component, 1));
        else
            value.constants[i] = readNumber(context, value.key, component, componentRule(value.rule));
    }
}

const KeysDescription *keysOf(std::span<const ChannelDescription> channels, Channel channel, std::size_t component) {
    for (const ChannelDescription &each : channels)
        if (each.channel == channel && each.component == static_cast<int>(component)) return &each.keys;
    return nullptr;
}

// The keys of three components as one list of keys with three values each. None where the components' keys differ in
// more than their values.
std::optional<KeysDescription> merged(const std::array<const KeysDescription *, 3> &components) {
    for (const KeysDescription *each : components)
        if (!each || each->keys.size() != components[0]->keys.size()) return std::nullopt;
    std::array<KeysDescription, 3> candidates; // the keys of each component, with the values of all three
    for (std::size_t i = 0; i < 3; ++i) {
        candidates[i] = *components[i];
        candidates[i].components = 3;
        for (std::size_t k = 0; k < candidates[i].keys.size(); ++k)
            for (std::size_t j = 0; j < 3; ++j) candidates[i].keys[k].value[j] = components[j]->keys[k].value[0];
    }
    if (candidates[0] != candidates[1] || candidates[0] != candidates[2]) return std::nullopt;
    return candidates[0];
}

Json keysDefinition(const ValueRule &rule) {
    Json schema = objectSchema(keysTable());
    for (Json &alternative : schema["properties"][kKeys]["items"]["oneOf"]) {
        Json &value = alternative["properties"]["value"];
        const Json description = value["description"];
        value = {{"description", description}};
        value.update(ruleSchema(rule));
    }
    return schema;
}

Json reference(const char *definition) { return {{"$ref", std::string("#/$defs/") + definition}}; }

} // namespace

void readKeyed(const ReadContext &context, const JsonMember &found, const KeyedValue &value) {
    const bool isVector = value.constants.size() == 3;
    if (hasKeyList(found.value)) {
        const KeysDescription keys = readKeysOf(context, value, found.value, isVector ? 3 : 1);
        for (std::size_t i = 0; i < value.constants.size(); ++i)
            addChannel(value, static_cast<int>(i), componentOf(keys, i));
    } else if (!isVector) {
        value.constants[0] = readNumber(context, found.key, found.value, value.rule);
    } else if (std::ranges::any_of(found.value.list, hasKeyList)) {
        readComponents(context, found, value);
    } else {
        Double3 constants;
        readPlain(context, found.key, found.value, value.rule, constants);
        std::ranges::copy(constants, value.constants.begin());
    }
}

Json writeKeyed(const WriteContext &context, const ValueRule &rule, Channel channel, std::span<const double> constants,
                std::span<const ChannelDescription> channels) {
    if (constants.size() == 1) {
        const KeysDescription *keys = keysOf(channels, channel, 0);
        return keys ? writeObject(context, keysTable(), *keys) : writePlain(rule, constants[0]);
    }
    const std::array<const KeysDescription *, 3> keys = {keysOf(channels, channel, 0), keysOf(channels, channel, 1),
                                                         keysOf(channels, channel, 2)};
    if (!hasKeys(channels, channel)) return writePlain(rule, Double3{constants[0], constants[1], constants[2]});
    if (const auto together = merged(keys)) return writeObject(context, keysTable(), *together);
    Json list = Json::array();
    for (std::size_t i = 0; i < 3; ++i)
        list.push_back(keys[i] ? writeObject(context, keysTable(), *keys[i]) : writePlain(numberRule(), constants[i]));
    return list;
}

bool hasKeys(std::span<const ChannelDescription> channels, Channel channel) {
    return std::ranges::count(channels, channel, &ChannelDescription::channel) > 0;
}

Json keyedSchema(const ValueRule &rule) {
    const bool isVector = rule.kind == ValueRule::Kind::vec3 || rule.kind == ValueRule::Kind::scale;
    if (!isVector) return {{"anyOf", Json::array({ruleSchema(rule), reference("numberKeys")})}};
    const Json component = {{"anyOf", Json::array({ruleSchema(componentRule(rule)), reference("numberKeys")})}};
    const Json components = {{"type", "array"}, {"items", component}, {"minItems", 3}, {"maxItems", 3}};
    return {{"anyOf", Json::array({ruleSchema(rule), reference("vectorKeys"), components})}};
}

Json numberKeysDefinition() { return keysDefinition(numberRule()); }
Json vectorKeysDefinition() { return keysDefinition(vec3Rule()); }

} // namespace velm::host
