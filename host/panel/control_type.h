// The kinds of controls that panels have, and how their values are held and shown.
#pragma once

#include <string>
#include <string_view>

namespace velm::host {

enum class ControlKind {
    number,    // one or three numbers
    whole,     // a whole number
    choice,    // one of a list of texts; the value is its place
    transform, // one of a list of texts; the value is looked up in a list of numbers
    flag,      // a check box, 0 or 1
    text,
    button,
    drawing,
};

// What the pointer points to that a panel's getter hands out.
enum class Storage {
    none,     // no value
    whole,    // an int
    real,     // one or three doubles
    animated, // a HostVParm of as many components
    text,     // characters, ended by 0
};

enum class Unit { none, percent, metres, degrees, colour };

struct ControlType {
    const char *name; // "percent-env"
    ControlKind kind;
    Storage storage;
    int components;
    Unit unit;
};

// Null for a name that is none.
const ControlType *findControlType(std::string_view name);

// What holds a value of a value description's type text ("integer", "percent-env", "string"); Storage::none for a text
// that names no type.
Storage storageOfValueType(std::string_view name);

// What a held number is multiplied with to give the shown one: 100 for fractions shown as per cent, 180/pi for radians
// shown as degrees, else 1.
double shownFactor(Unit unit);

// "%", "m", "degrees" or "".
std::string unitName(Unit unit);

} // namespace velm::host
