// Rows whose values are objects of another table, and the schema of a table.
#pragma once

#include "host/scene/format/fields.h"

#include <nlohmann/json.hpp>

namespace velm::host {

// The keys of a table that go with one of its kinds, as a schema of the object. -1: the table has no kinds.
template <class T>
nlohmann::ordered_json kindSchema(const Table<T> &table, int kind) {
    nlohmann::ordered_json properties = nlohmann::ordered_json::object();
    nlohmann::ordered_json required = nlohmann::ordered_json::array();
    for (const Field<T> &field : table.fields) {
        if (kind >= 0 && !(field.kinds >> static_cast<unsigned>(kind) & 1u)) continue;
        nlohmann::ordered_json schema = {{"description", field.help}};
        const bool isKind = kind >= 0 && std::holds_alternative<SetChoice<T>>(field.target);
        if (isKind)
            schema["const"] = table.kinds[static_cast<std::size_t>(kind)];
        else
            schema.update(field.schema ? field.schema() : formSchema(field.form));
        properties[field.key] = schema;
        if (field.required) required.push_back(field.key);
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
    if (table.kinds.empty()) return kindSchema(table, -1);
    nlohmann::ordered_json alternatives = nlohmann::ordered_json::array();
    for (std::size_t kind = 0; kind < table.kinds.size(); ++kind)
        alternatives.push_back(kindSchema(table, static_cast<int>(kind)));
    return {{"oneOf", alternatives}};
}

// A member that is an object of another table: {"render": {...}}.
template <auto member, auto table, class T>
void readNested(const ReadContext &context, const JsonMember &found, T &result) {
    readObject(context, table(), found.value, result.*member);
}
template <auto table>
nlohmann::ordered_json nestedSchema() {
    return objectSchema(table());
}

// A member whose keys are names: {"lights": {"Key light": {...}}}.
template <auto member, auto table, class T>
void readCollection(const ReadContext &context, const JsonMember &found, T &result) {
    readNamed(context, table(), found, result.*member);
}
template <auto table>
nlohmann::ordered_json collectionSchema() {
    return {{"type", "object"}, {"additionalProperties", objectSchema(table())}};
}

} // namespace velm::host
