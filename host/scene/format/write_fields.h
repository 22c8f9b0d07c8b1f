// Writing by the tables of the scene format.
#pragma once

#include "host/scene/format/fields.h"

#include <nlohmann/json.hpp>

namespace velm::host {

// The JSON of one row's value. Nothing for a value that reading gives anyway: that of `defaults`, unless the key is
// required.
template <class T>
std::optional<nlohmann::ordered_json> writeField(const WriteContext &context, const Field<T> &field, const T &object,
                                                 const T &defaults) {
    return std::visit(
        [&](const auto &target) -> std::optional<nlohmann::ordered_json> {
            using TargetType = std::remove_cvref_t<decltype(target)>;
            if constexpr (std::is_same_v<TargetType, CustomValue<T>>) {
                return target.write(context, object);
            } else if constexpr (std::is_same_v<TargetType, KindMember<T>>) {
                const int kind = target.get(object);
                if (!field.required && kind == target.get(defaults)) return std::nullopt;
                return writePlain(field.rule, kind);
            } else {
                const auto &value = valueAt(target, object);
                if (!field.required && value == valueAt(target, defaults)) return std::nullopt;
                return writePlain(field.rule, value);
            }
        },
        field.target);
}

// The JSON of an object, with its keys in the order of the table's rows: those that go with the object's kind and whose
// values are not what reading gives without them. Reading it gives the same object.
template <class T>
nlohmann::ordered_json writeObject(const WriteContext &context, const Table<T> &table, const T &object) {
    const T defaults{};
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    for (const Field<T> &field : table.fields) {
        if (!table.applies(field, object)) continue;
        if (auto value = writeField(context, field, object, defaults)) json[field.key] = std::move(*value);
    }
    return json;
}

// Adds the JSON of named objects to an object by their names. InputError for a name that the object has already.
template <class T>
void addNamed(const WriteContext &context, const Table<T> &table, const std::vector<T> &elements,
              nlohmann::ordered_json &json) {
    for (const T &element : elements) {
        if (json.contains(element.name))
            throw InputError(element.location,
                             std::string(table.what) + " has the name of another one: \"" + element.name + '"');
        json[element.name] = writeObject(context, table, element);
    }
}

} // namespace velm::host
