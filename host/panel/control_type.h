// The types of controls on panels, and how their values are stored and shown.
#pragma once

#include <string>
#include <string_view>

namespace velm::host {

enum class ControlKind {
    number, // one or three numbers
    integer,
    choice,    // one of a list of texts; the value is its index
    transform, // one of a list of texts; the value is the number at the same index in a list of numbers
    flag,      // a check box, 0 or 1
    text,
    button,
    drawing,
};

// What the pointer that a panel's getter returns points to.
enum class Storage {
    none,     // no value
    integer,  // an int
    real,     // one or three doubles
    animated, // a HostVParm with one or three components
    text,     // characters that end with a 0
};

enum class Unit { none, percent, metres, degrees, colour };

struct ControlType {
    const char *name; // as in hints, such as "percent-env"
    ControlKind kind;
    Storage storage;
    int components; // 1 or 3; 0 without a value
    Unit unit;
};

// Null for an unknown name.
const ControlType *findControlType(std::string_view name);

// The storage of a value, from the type text in its description ("integer", "percent-env", "string"); Storage::none for
// an unknown text.
Storage storageOfValueType(std::string_view name);

// The shown number divided by the stored number: 100 for fractions that are shown as percentages, 180/pi for radians
// that are shown as degrees, 1 for everything else.
double shownFactor(Unit unit);

// "%", "m", "degrees" or "".
std::string unitName(Unit unit);

} // namespace velm::host
