// The parts from which the tables of the scene format are made. A key of the format is one row of one table: the
// reader, the writer and the JSON Schema all follow from the row.
//
// To add a key whose value is plain, add a member to the description and a row that names it; what is left is to use
// the value. A value of another form has a row with three functions of its own: one reads it, one writes it, and one
// gives its schema.
#pragma once

#include "host/scene/format/description.h"
#include "host/scene/format/value_rule.h"

#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

namespace velm::host {

// Throws InputError unless the value is an object; `what` is for the message.
void requireObject(const ReadContext &context, std::string_view what, const JsonValue &value);
[[noreturn]] void failUnknownKey(const ReadContext &context, const JsonMember &member, std::string_view what,
                                 const std::vector<std::string> &known);

// What the writer knows of the file that it writes.
struct WriteContext {
    // Where the scene file will be: files below this directory get names relative to it, all others absolute names.
    // Without it, names are written as they are.
    std::optional<std::string> directory;

    // The name by which the scene file names a file.
    std::string nameOf(const std::string &file) const;
};

// ---- Where the value of a row is in a description of type T ----

// A plain value in a member of a member; made by `inside`.
template <class T, class Value>
struct InnerMember {
    Value &(*get)(T &);
    const Value &(*getConst)(const T &);
};

// The value that tells which kind of object this is; made by `kindIn`. The value is an index into the rule's choices.
template <class T>
struct KindMember {
    int (*get)(const T &);
    void (*set)(T &, int);
};

// A value that is not plain: functions that read it into the description, write it, and give its schema. `write` gives
// nothing for a value that the scene file should leave out because reading gives it anyway.
template <class T>
struct CustomValue {
    void (*read)(const ReadContext &, const JsonMember &, T &);
    std::optional<nlohmann::ordered_json> (*write)(const WriteContext &, const T &);
    nlohmann::ordered_json (*schema)();
};

template <class T, class... Values>
using TargetOf = std::variant<Values T::*..., InnerMember<T, Values>..., KindMember<T>, CustomValue<T>>;
template <class T>
using Target = TargetOf<T, bool, int, double, std::string, std::array<int, 2>, Double3, std::array<double, 4>>;

// The way from a description to one of its values: a member, or a member of a member.
template <auto first, auto... rest>
struct MemberPath {
    template <class Class, class Value>
    static Class classOf(Value Class::*);
    using Owner = decltype(classOf(first));

    static auto &get(Owner &object) { return ((object.*first).*....*rest); }
    static const auto &getConst(const Owner &object) { return ((object.*first).*....*rest); }
    using Value = std::remove_reference_t<decltype(get(std::declval<Owner &>()))>;
};
template <auto member>
using OwnerOf = typename MemberPath<member>::Owner;

// `inside<&KeyInFile::key, &KeyDescription::time>`: a member of a member.
template <auto first, auto... rest, class Path = MemberPath<first, rest...>>
consteval auto insideOf() {
    return InnerMember<typename Path::Owner, typename Path::Value>{.get = Path::get, .getConst = Path::getConst};
}
template <auto... members>
inline constexpr auto inside = insideOf<members...>();

// `kindIn<&LightDescription::kind>`: an enumeration or an int, in a member or a member of a member.
template <auto first, auto... rest, class Path = MemberPath<first, rest...>>
consteval auto kindOf() {
    using Owner = typename Path::Owner;
    return KindMember<Owner>{
        .get = [](const Owner &object) { return static_cast<int>(Path::getConst(object)); },
        .set = [](Owner &object, int kind) { Path::get(object) = static_cast<typename Path::Value>(kind); }};
}
template <auto... members>
inline constexpr auto kindIn = kindOf<members...>();

template <class T, class Value>
Value &valueAt(Value T::*member, T &object) {
    return object.*member;
}
template <class T, class Value>
const Value &valueAt(Value T::*member, const T &object) {
    return object.*member;
}
template <class T, class Value>
Value &valueAt(const InnerMember<T, Value> &member, T &object) {
    return member.get(object);
}
template <class T, class Value>
const Value &valueAt(const InnerMember<T, Value> &member, const T &object) {
    return member.getConst(object);
}

// ---- Rows and tables ----

template <class T>
struct Field {
    const char *key;
    const char *help; // one sentence for people, with the unit
    ValueRule rule{}; // of a plain value
    Target<T> target;
    bool required = false;
    // For tables with a kind.
    unsigned kinds = ~0u;         // bit n: objects of kind n may have the key
    unsigned requiredKinds = ~0u; // bit n: `required` holds for objects of kind n
};

// The table of one kind of object.
template <class T>
struct Table {
    const char *what; // "a light", for messages
    std::span<const Field<T>> fields;
    // Keys of which exactly one must be present.
    std::span<const char *const> oneOf{};
    // Called when all keys are read, to check what several of them say together; may be null.
    void (*finish)(const ReadContext &, const JsonValue &object, T &) = nullptr;

    // The row that tells the object's kind; null where objects come in one kind only.
    const Field<T> *kindField() const {
        for (const Field<T> &field : fields)
            if (std::holds_alternative<KindMember<T>>(field.target)) return &field;
        return nullptr;
    }
    int kindOf(const T &object) const { return std::get<KindMember<T>>(kindField()->target).get(object); }
    // Whether the key goes with the object's kind.
    bool applies(const Field<T> &field, const T &object) const {
        return !kindField() || (field.kinds >> static_cast<unsigned>(kindOf(object)) & 1u) != 0;
    }
    bool needs(const Field<T> &field, const T &object) const {
        return field.required && applies(field, object) &&
               (!kindField() || (field.requiredKinds >> static_cast<unsigned>(kindOf(object)) & 1u) != 0);
    }
};

// ---- Reading ----

template <class T>
void readField(const ReadContext &context, const Field<T> &field, const JsonMember &member, T &result) {
    std::visit(
        [&](const auto &target) {
            using TargetType = std::remove_cvref_t<decltype(target)>;
            if constexpr (std::is_same_v<TargetType, CustomValue<T>>)
                target.read(context, member, result);
            else if constexpr (std::is_same_v<TargetType, KindMember<T>>)
                target.set(result, readChoice(context, field.key, member.value, field.rule));
            else
                readPlain(context, field.key, member.value, field.rule, valueAt(target, result));
        },
        field.target);
}

// Throws InputError unless exactly one of the keys in `oneOf` is in the object.
void requireOneOf(const ReadContext &context, std::string_view what, const JsonValue &object,
                  std::span<const char *const> oneOf);
[[noreturn]] void failWrongKind(const ReadContext &context, const JsonValue &value, const char *key, const char *kind);
[[noreturn]] void failMissingKey(const ReadContext &context, const JsonValue &object, const char *what,
                                 const char *key);

template <class T>
void checkPresence(const ReadContext &context, const Table<T> &table, const JsonValue &object, const T &result) {
    for (const Field<T> &field : table.fields) {
        const JsonValue *value = object.find(field.key);
        const bool applies = table.applies(field, result);
        if (value && !applies)
            failWrongKind(context, *value, field.key,
                          table.kindField()->rule.choices[static_cast<std::size_t>(table.kindOf(result))]);
        if (!value && table.needs(field, result)) failMissingKey(context, object, table.what, field.key);
    }
    if (!table.oneOf.empty()) requireOneOf(context, table.what, object, table.oneOf);
}

// Reads an object by its table into `result`, which holds the defaults. Throws InputError on a key that the table does
// not have, on one that is missing or does not go with the object's kind, and on a wrong value.
template <class T>
void readObject(const ReadContext &context, const Table<T> &table, const JsonValue &object, T &result) {
    requireObject(context, table.what, object);
    for (const JsonMember &member : object.members) {
        const Field<T> *found = nullptr;
        for (const Field<T> &field : table.fields)
            if (member.key == field.key) found = &field;
        if (!found) {
            std::vector<std::string> known;
            for (const Field<T> &field : table.fields) known.emplace_back(field.key);
            failUnknownKey(context, member, table.what, known);
        }
        readField(context, *found, member, result);
    }
    checkPresence(context, table, object, result);
    if (table.finish) table.finish(context, object, result);
}

// Throws InputError unless the member's key may be the name of an object.
void checkName(const ReadContext &context, const JsonMember &member, std::string_view what);

// Reads an object whose keys are names that the scene's author chose: {"Key light": {...}, "Fill": {...}}.
template <class T>
void readNamed(const ReadContext &context, const Table<T> &table, const JsonMember &collection,
               std::vector<T> &result) {
    requireObject(context, '"' + collection.key + '"', collection.value);
    for (const JsonMember &member : collection.value.members) {
        checkName(context, member, table.what);
        T &element = result.emplace_back();
        element.name = member.key;
        element.location = context.at(member.line);
        readObject(context, table, member.value, element);
    }
}

} // namespace velm::host
