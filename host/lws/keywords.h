// The lines of a scene: tables of keywords, each with the function that reads its arguments.
#pragma once

#include "host/base/angles.h"
#include "host/lws/scene_keys.h"
#include "host/lws/scene_lines.h"
#include "host/lws/scene_record.h"

#include <array>
#include <span>
#include <string_view>

namespace velm::host::lws {

// A line that is being read.
struct Statement {
    Lines &lines;
    Losses &losses;
    KeyUnits units;
    Line line;
    Words words; // after the keyword

    int version() const { return lines.version(); }
    bool isOld() const { return version() <= 2; } // lists of keys, degrees, colours up to 255
    void lose(Loss kind) const { losses.add(kind, line.number); }
};

// A keyword of a Target: Item, Object, Light, Camera or Scene. `read` returns false when it cannot read the arguments;
// the line is then ignored.
template <class Target>
struct Keyword {
    std::string_view name;
    bool (*read)(Statement &statement, Target &target);
};

std::span<const Keyword<Item>> itemKeywords();
std::span<const Keyword<Object>> objectKeywords();
std::span<const Keyword<Light>> lightKeywords();
std::span<const Keyword<Camera>> cameraKeywords();
std::span<const Keyword<Scene>> sceneKeywords();

// Reads a number, or its keys, from the line and what follows it, times `factor`. Keys in blocks, which have radians
// even where numbers have degrees, are taken times `keyFactor`.
bool readValue(Statement &statement, Value &value, double factor = 1, double keyFactor = 1);
// The same for a colour.
bool readColour(Statement &statement, std::array<Value, 3> &colour);
// The same for a value that cannot have keys. Its first key counts.
bool readConstant(Statement &statement, double &value);
bool readConstant(Statement &statement, Double3 &colour);

// ---- Functions for tables ----

template <class Member>
struct TargetOf;
template <class Target, class Member>
struct TargetOf<Member Target::*> {
    using Type = Target;
};

template <auto member, class Target = typename TargetOf<decltype(member)>::Type>
bool number(Statement &statement, Target &target) {
    const std::optional<double> value = statement.words.number();
    if (value) target.*member = *value;
    return value.has_value();
}

template <auto member, class Target = typename TargetOf<decltype(member)>::Type>
bool integer(Statement &statement, Target &target) {
    const std::optional<int> value = statement.words.integer();
    if (value) target.*member = *value;
    return value.has_value();
}

// True for any number but 0; `on` is what the member becomes then.
template <auto member, bool on = true, class Target = typename TargetOf<decltype(member)>::Type>
bool flag(Statement &statement, Target &target) {
    const std::optional<double> value = statement.words.number();
    if (value) target.*member = (*value != 0) == on;
    return value.has_value();
}

template <auto member, class Target = typename TargetOf<decltype(member)>::Type>
bool value(Statement &statement, Target &target) {
    return readValue(statement, target.*member);
}

// Of degrees; in keys of version 3 and later of radians.
template <auto member, class Target = typename TargetOf<decltype(member)>::Type>
bool angle(Statement &statement, Target &target) {
    return readValue(statement, target.*member, 1, kDegreesPerRadian);
}

template <auto member, class Target = typename TargetOf<decltype(member)>::Type>
bool constant(Statement &statement, Target &target) {
    return readConstant(statement, target.*member);
}

// Something that is left out unless the number is `none`.
template <Loss loss, int none, class Target>
bool leftOutUnless(Statement &statement, Target &) {
    const bool hasKeys = isEnvelope(statement.lines, statement.words.rest());
    const std::optional<double> value = statement.words.number();
    if (hasKeys || (value && *value != none)) statement.lose(loss);
    return hasKeys || value;
}

// Something that is left out wherever the line is.
template <Loss loss, class Target>
bool leftOut(Statement &statement, Target &) {
    statement.lose(loss);
    return true;
}

// The name of a file that is left out.
template <Loss loss, class Target>
bool leftOutFile(Statement &statement, Target &) {
    const std::string_view name = statement.words.rest();
    if (!name.empty() && name != "(none)") statement.lose(loss);
    return true;
}

} // namespace velm::host::lws
