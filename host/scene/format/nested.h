// Rows whose values are objects of another table, and the schema of a table.
#pragma once

#include "host/scene/format/write_fields.h"

namespace velm::host {

// The schema of an object of one kind, with the keys that go with it. -1: the table has no kinds.
template <class T>
nlohmann::ordered_json kindSchema(const Table<T> &table, int kind) {
    nlohmann::ordered_json properties = nlohmann::ordered_json::object();
    nlohmann::ordered_json required = nlohmann::ordered_json::array();
    for (const Field<T> &field : table.fields) {
        if (kind >= 0 && !(field.kinds >> static_cast<unsigned>(kind) & 1u)) continue;
        nlohmann::ordered_json schema = {{"description", field.help}};
        if (const auto *custom = std::get_if<CustomValue<T>>(&field.target))
            schema.update(custom->schema());
        else if (std::holds_alternative<KindMember<T>>(field.target))
            schema["const"] = field.rule.choices[static_cast<std::size_t>(kind)];
        else
            schema.update(ruleSchema(field.rule));
        properties[field.key] = schema;
        const bool isNeeded = kind < 0 || (field.requiredKinds >> static_cast<unsigned>(kind) & 1u) != 0;
        if (field.required && isNeeded) required.push_back(field.key);
    }
    nlohmann::ordered_json schema = {{"type", "object"}, {"properties", properties}, {"additionalProperties", false}};
    if (!required.empty()) schema["required"] = required;
    if (!table.oneOf.empty()) {
        schema["oneOf"] = nlohmann::ordered_json::array();
        for (const char *key : table.oneOf) schema["oneOf"].push_back({{"required", {key}}});
    }
    return schema;
}

template <class T>
nlohmann::ordered_json objectSchema(const Table<T> &table) {
    const Field<T> *kinds = table.kindField();
    if (!kinds) return kindSchema(table, -1);
    nlohmann::ordered_json alternatives = nlohmann::ordered_json::array();
    for (std::size_t kind = 0; kind < kinds->rule.choices.size(); ++kind)
        alternatives.push_back(kindSchema(table, static_cast<int>(kind)));
    return {{"oneOf", alternatives}};
}

inline nlohmann::ordered_json textSchema() { return ruleSchema(textRule()); }

// A text with a member that remembers its location in the file. An empty text is left out. `Owner` may be derived from
// the class that has the members.
template <auto text, auto location, class Owner = OwnerOf<text>>
inline constexpr CustomValue<Owner> locatedText{
    .read =
        [](const ReadContext &context, const JsonMember &found, Owner &result) {
            result.*text = readText(context, found.key, found.value, textRule());
            result.*location = context.at(found.value.line);
        },
    .write = [](const WriteContext &, const Owner &object) -> std::optional<nlohmann::ordered_json> {
        if ((object.*text).empty()) return std::nullopt;
        return object.*text;
    },
    .schema = textSchema};

// An enumeration, written as one of `names`, which its values index. The default is left out.
template <auto member, const auto &names>
inline constexpr CustomValue<OwnerOf<member>> choiceIn{
    .read =
        [](const ReadContext &context, const JsonMember &found, OwnerOf<member> &result) {
            const int choice = readChoice(context, found.key, found.value, choiceRule(names));
            result.*member = static_cast<typename MemberPath<member>::Value>(choice);
        },
    .write = [](const WriteContext &, const OwnerOf<member> &object) -> std::optional<nlohmann::ordered_json> {
        if (object.*member == OwnerOf<member>{}.*member) return std::nullopt;
        return writePlain(choiceRule(names), static_cast<int>(object.*member));
    },
    .schema = [] { return ruleSchema(choiceRule(names)); }};

// Whether the JSON of an object says nothing that reading does not give without it.
template <class T>
bool isDefault(const WriteContext &context, const Table<T> &table, const nlohmann::ordered_json &json) {
    return json == writeObject(context, table, T{});
}

// A member that is an object of another table: {"render": {...}}.
template <auto member, auto table>
inline constexpr CustomValue<OwnerOf<member>> nested{
    .read =
        [](const ReadContext &context, const JsonMember &found, OwnerOf<member> &result) {
            auto &object = result.*member;
            if constexpr (requires { object.location = context.at(found.line); })
                object.location = context.at(found.line);
            readObject(context, table(), found.value, object);
        },
    .write = [](const WriteContext &context, const OwnerOf<member> &object) -> std::optional<nlohmann::ordered_json> {
        nlohmann::ordered_json json = writeObject(context, table(), object.*member);
        if (isDefault(context, table(), json)) return std::nullopt;
        return json;
    },
    .schema = [] { return objectSchema(table()); }};

// A member whose keys are names: {"lights": {"Key light": {...}}}.
template <auto member, auto table>
inline constexpr CustomValue<OwnerOf<member>> collection{
    .read = [](const ReadContext &context, const JsonMember &found,
               OwnerOf<member> &result) { readNamed(context, table(), found, result.*member); },
    .write = [](const WriteContext &context, const OwnerOf<member> &object) -> std::optional<nlohmann::ordered_json> {
        if ((object.*member).empty()) return std::nullopt;
        nlohmann::ordered_json json = nlohmann::ordered_json::object();
        addNamed(context, table(), object.*member, json);
        return json;
    },
    .schema =
        [] {
            return nlohmann::ordered_json{{"type", "object"}, {"additionalProperties", objectSchema(table())}};
        }};

} // namespace velm::host
