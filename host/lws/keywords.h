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
    double framesPerSecond = 30; // of the scene, as far as it was read
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

// Reads a number from the line, or its keys from the lines that follow, and multiplies it by `factor`. Keys in blocks
// are multiplied by `keyFactor` instead: their angles are in radians, even where numbers are in degrees. Returns false
// when there is neither a number nor a key. InputError with the line for damaged keys. These hold for the next three,
// too.
bool readValue(Statement &statement, Value &value, double factor = 1, double keyFactor = 1);
// Reads a colour, of which each component may have keys.
bool readColour(Statement &statement, std::array<Value, 3> &colour);
// Read a value that cannot have keys here: the value of the first key is used, and the loss is counted.
bool readConstant(Statement &statement, double &value);
bool readConstant(Statement &statement, Double3 &colour);

// Lines that cameras have, and the scene for the cameras that use its frame size.
bool readFrameSize(Statement &statement, Camera &camera);
bool readMultiplier(Statement &statement, Camera &camera);
bool readPixelAspect(Statement &statement, Camera &camera);
bool readMotionBlur(Statement &statement, Camera &camera);
bool readMask(Statement &statement, Camera &camera);
bool readFilmHeight(Statement &statement, Camera &camera);

// ---- Functions for tables ----

template <class Member>
struct TargetOf;
template <class Target, class Member>
struct TargetOf<Member Target::*> {
    using Type = Target;
};

template <auto member, class Target = typename TargetOf<decltype(member)>::Type>
bool integer(Statement &statement, Target &target) {
    const std::optional<int> value = statement.words.integer();
    if (value) target.*member = *value;
    return value.has_value();
}

// Sets the member to `on` for any number but 0, and to the opposite for 0.
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

// An angle in degrees. The keys of version 3 and later are in radians.
template <auto member, class Target = typename TargetOf<decltype(member)>::Type>
bool angle(Statement &statement, Target &target) {
    return readValue(statement, target.*member, 1, kDegreesPerRadian);
}

template <auto member, class Target = typename TargetOf<decltype(member)>::Type>
bool constant(Statement &statement, Target &target) {
    return readConstant(statement, target.*member);
}

// For a feature that is not supported: counts the loss unless the value is constant and equal to `none`.
template <Loss loss, int none, class Target>
bool leftOutUnless(Statement &statement, Target &) {
    const bool hasKeys = isEnvelope(statement.lines, statement.words.rest());
    const std::optional<double> value = statement.words.number();
    if (hasKeys || (value && *value != none)) statement.lose(loss);
    return hasKeys || value;
}

// For a feature that is not supported, and that the line itself switches on: counts the loss.
template <Loss loss, class Target>
bool leftOut(Statement &statement, Target &) {
    statement.lose(loss);
    return true;
}

// For a file that is not used: counts the loss if the line names one.
template <Loss loss, class Target>
bool leftOutFile(Statement &statement, Target &) {
    const std::string_view name = statement.words.rest();
    if (!name.empty() && name != "(none)") statement.lose(loss);
    return true;
}

} // namespace velm::host::lws
