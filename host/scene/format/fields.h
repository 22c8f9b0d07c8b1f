// The parts from which the tables of the scene format are made. A key of the format is one row of one table: the
// reader checks a value by it and puts it in its place, and the JSON Schema is written from the same row.
#pragma once

#include "host/scene/format/description.h"
#include "host/scene/format/json.h"
#include "host/scene/format/search_path.h"

#include <limits>
#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

namespace velm::host {

// What a plain value may be.
struct Form {
    enum class Kind {
        truth,
        whole,
        number,
        triple,  // a list of three numbers, each within the limits
        scale,   // a triple, or one number that stands for three
        numbers, // a list of four numbers
        text,    // never empty
        choice   // one of the texts; its value is the place in the list
    };
    Kind kind = Kind::number;
    double least = -std::numeric_limits<double>::infinity();
    double most = std::numeric_limits<double>::infinity();
    bool aboveLeast = false; // the least itself is not allowed
    bool belowMost = false;
    std::span<const char *const> choices{};
};

constexpr Form truthForm() { return {.kind = Form::Kind::truth}; }
constexpr Form textForm() { return {.kind = Form::Kind::text}; }
constexpr Form wholeForm(int least, int most) {
    return {.kind = Form::Kind::whole, .least = double(least), .most = double(most)};
}
constexpr Form numberForm() { return {.kind = Form::Kind::number}; }
constexpr Form positiveForm() { return {.kind = Form::Kind::number, .least = 0, .aboveLeast = true}; }
constexpr Form leastForm(double least) { return {.kind = Form::Kind::number, .least = least}; }
constexpr Form tripleForm() { return {.kind = Form::Kind::triple}; }
constexpr Form colourForm() { return {.kind = Form::Kind::triple, .least = 0}; }
constexpr Form choiceForm(std::span<const char *const> choices) {
    return {.kind = Form::Kind::choice, .choices = choices};
}

// What a reading goes by: the name of the file for errors, and where the files that it names are looked for.
struct ReadContext {
    std::string file;
    std::string directory; // of the file
    SearchPath path;

    SourceLocation at(int line) const { return {.file = file, .line = line}; }
    [[noreturn]] void fail(int line, const std::string &message) const { throw InputError(at(line), message); }
};

// Reading one plain value. `key` is for messages. All throw InputError, with the value's line, unless the value is as
// the form wants it.
bool readTruth(const ReadContext &context, std::string_view key, const JsonValue &value);
int readWhole(const ReadContext &context, std::string_view key, const JsonValue &value, const Form &form);
double readNumber(const ReadContext &context, std::string_view key, const JsonValue &value, const Form &form);
Double3 readTriple(const ReadContext &context, std::string_view key, const JsonValue &value, const Form &form);
std::array<double, 4> readFour(const ReadContext &context, std::string_view key, const JsonValue &value,
                               const Form &form);
std::string readText(const ReadContext &context, std::string_view key, const JsonValue &value, const Form &form);
int readChoice(const ReadContext &context, std::string_view key, const JsonValue &value, const Form &form);

// Throws unless the value is an object.
void wantObject(const ReadContext &context, std::string_view what, const JsonValue &value);
[[noreturn]] void failUnknownKey(const ReadContext &context, const JsonMember &member, std::string_view what,
                                 const std::vector<std::string> &known);

// The schema of a plain value.
nlohmann::ordered_json formSchema(const Form &form);

// Rows for keys whose values are not plain read and describe themselves.
template <class T>
using ReadField = void (*)(const ReadContext &, const JsonMember &, T &);
template <class T>
using SetChoice = void (*)(T &, int);
using FieldSchema = nlohmann::ordered_json (*)();

template <class T>
struct Field {
    const char *key;
    const char *help; // a sentence for people, with the unit
    Form form{};
    // Where a plain value goes, or the function that reads another.
    std::variant<bool T::*, int T::*, double T::*, std::string T::*, Double3 T::*, std::array<double, 4> T::*,
                 SetChoice<T>, ReadField<T>>
        target;
    FieldSchema schema = nullptr; // of a value that is not plain
    bool required = false;
    unsigned kinds = ~0u; // the kinds of the object that the key goes with, as bits; see Table
};

// The table of one kind of object.
template <class T>
struct Table {
    const char *what; // "a light"
    std::span<const Field<T>> fields;
    // Where the object comes in kinds that have different keys: the texts of its "kind", and which one was read.
    std::span<const char *const> kinds{};
    int (*kindOf)(const T &) = nullptr;
    // Keys of which exactly one must be there.
    std::span<const char *const> oneOf{};
    // Called when all keys are read, for what several of them say together; may be null.
    void (*finish)(const ReadContext &, const JsonValue &object, T &) = nullptr;
};

template <class T>
void readField(const ReadContext &context, const Field<T> &field, const JsonMember &member, T &result) {
    const JsonValue &value = member.value;
    std::visit(
        [&](auto target) {
            using Target = decltype(target);
            if constexpr (std::is_same_v<Target, ReadField<T>>)
                target(context, member, result);
            else if constexpr (std::is_same_v<Target, SetChoice<T>>)
                target(result, readChoice(context, field.key, value, field.form));
            else if constexpr (std::is_same_v<Target, bool T::*>)
                result.*target = readTruth(context, field.key, value);
            else if constexpr (std::is_same_v<Target, int T::*>)
                result.*target = field.form.kind == Form::Kind::choice
                                     ? readChoice(context, field.key, value, field.form)
                                     : readWhole(context, field.key, value, field.form);
            else if constexpr (std::is_same_v<Target, double T::*>)
                result.*target = readNumber(context, field.key, value, field.form);
            else if constexpr (std::is_same_v<Target, std::string T::*>)
                result.*target = readText(context, field.key, value, field.form);
            else if constexpr (std::is_same_v<Target, Double3 T::*>)
                result.*target = readTriple(context, field.key, value, field.form);
            else
                result.*target = readFour(context, field.key, value, field.form);
        },
        field.target);
}

// Which of the keys in `oneOf` are in the object; throws unless it is one.
void wantOneOf(const ReadContext &context, std::string_view what, const JsonValue &object,
               std::span<const char *const> oneOf);

template <class T>
void checkPresence(const ReadContext &context, const Table<T> &table, const JsonValue &object, const T &result) {
    for (const Field<T> &field : table.fields) {
        const JsonValue *value = object.find(field.key);
        const auto kind = table.kindOf ? static_cast<unsigned>(table.kindOf(result)) : 0u;
        const bool goes = !table.kindOf || (field.kinds >> kind & 1u) != 0;
        if (value && !goes)
            context.fail(value->line,
                         '"' + std::string(field.key) + "\" does not go with the kind \"" + table.kinds[kind] + '"');
        if (!value && goes && field.required)
            context.fail(object.line, std::string(table.what) + " needs \"" + field.key + '"');
    }
    if (!table.oneOf.empty()) wantOneOf(context, table.what, object, table.oneOf);
}

// Reads an object by its table into `result`, which holds the defaults. Throws InputError on a key that the table does
// not have, on one that is missing or does not go with the object's kind, and on a wrong value.
template <class T>
void readObject(const ReadContext &context, const Table<T> &table, const JsonValue &object, T &result) {
    wantObject(context, table.what, object);
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

// Throws unless the member's key can be the name of something.
void checkName(const ReadContext &context, const JsonMember &member, std::string_view what);

// Reads an object whose keys are names given by the scene's author: {"Key light": {...}, "Fill": {...}}.
template <class T>
void readNamed(const ReadContext &context, const Table<T> &table, const JsonMember &collection,
               std::vector<T> &result) {
    wantObject(context, '"' + collection.key + '"', collection.value);
    for (const JsonMember &member : collection.value.members) {
        checkName(context, member, table.what);
        T &element = result.emplace_back();
        element.name = member.key;
        element.location = context.at(member.line);
        readObject(context, table, member.value, element);
    }
}

} // namespace velm::host
