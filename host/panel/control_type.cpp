#include "host/panel/control_type.h"

#include "host/base/angles.h"

#include <iterator>

namespace velm::host {

namespace {

constexpr ControlKind kNumber = ControlKind::number;
constexpr Storage kReal = Storage::real;
constexpr Storage kAnimated = Storage::animated;

constexpr ControlType kTypes[] = {
    {.name = "integer", .kind = ControlKind::integer, .storage = Storage::integer, .components = 1, .unit = Unit::none},
    {.name = "iPopChoice",
     .kind = ControlKind::choice,
     .storage = Storage::integer,
     .components = 1,
     .unit = Unit::none},
    {.name = "iChoice", .kind = ControlKind::choice, .storage = Storage::integer, .components = 1, .unit = Unit::none},
    {.name = "iPopTransform",
     .kind = ControlKind::transform,
     .storage = Storage::integer,
     .components = 1,
     .unit = Unit::none},
    {.name = "iBoolean", .kind = ControlKind::flag, .storage = Storage::integer, .components = 1, .unit = Unit::none},
    {.name = "string", .kind = ControlKind::text, .storage = Storage::text, .components = 1, .unit = Unit::none},
    {.name = "vButton", .kind = ControlKind::button, .storage = Storage::none, .components = 0, .unit = Unit::none},
    {.name = "dThumbnail", .kind = ControlKind::drawing, .storage = Storage::none, .components = 0, .unit = Unit::none},
    {.name = "float", .kind = kNumber, .storage = kReal, .components = 1, .unit = Unit::none},
    {.name = "float3", .kind = kNumber, .storage = kReal, .components = 3, .unit = Unit::none},
    {.name = "vector", .kind = kNumber, .storage = kReal, .components = 3, .unit = Unit::none},
    {.name = "percent", .kind = kNumber, .storage = kReal, .components = 1, .unit = Unit::percent},
    {.name = "percent3", .kind = kNumber, .storage = kReal, .components = 3, .unit = Unit::percent},
    {.name = "distance", .kind = kNumber, .storage = kReal, .components = 1, .unit = Unit::metres},
    {.name = "distance3", .kind = kNumber, .storage = kReal, .components = 3, .unit = Unit::metres},
    {.name = "angle", .kind = kNumber, .storage = kReal, .components = 1, .unit = Unit::degrees},
    {.name = "angle3", .kind = kNumber, .storage = kReal, .components = 3, .unit = Unit::degrees},
    {.name = "color", .kind = kNumber, .storage = kReal, .components = 3, .unit = Unit::colour},
    {.name = "float-env", .kind = kNumber, .storage = kAnimated, .components = 1, .unit = Unit::none},
    {.name = "float3-env", .kind = kNumber, .storage = kAnimated, .components = 3, .unit = Unit::none},
    {.name = "percent-env", .kind = kNumber, .storage = kAnimated, .components = 1, .unit = Unit::percent},
    {.name = "percent3-env", .kind = kNumber, .storage = kAnimated, .components = 3, .unit = Unit::percent},
    {.name = "distance-env", .kind = kNumber, .storage = kAnimated, .components = 1, .unit = Unit::metres},
    {.name = "distance3-env", .kind = kNumber, .storage = kAnimated, .components = 3, .unit = Unit::metres},
    {.name = "angle-env", .kind = kNumber, .storage = kAnimated, .components = 1, .unit = Unit::degrees},
    {.name = "angle3-env", .kind = kNumber, .storage = kAnimated, .components = 3, .unit = Unit::degrees},
    {.name = "color-env", .kind = kNumber, .storage = kAnimated, .components = 3, .unit = Unit::colour},
};

} // namespace

const ControlType *findControlType(std::string_view name) {
    for (const ControlType &type : kTypes)
        if (name == type.name) return &type;
    return nullptr;
}

// A value description names the type of a control with the same storage.
Storage storageOfValueType(std::string_view name) {
    const ControlType *type = findControlType(name);
    return type ? type->storage : Storage::none;
}

double shownFactor(Unit unit) {
    if (unit == Unit::percent) return 100;
    return unit == Unit::degrees ? kDegreesPerRadian : 1;
}

std::string unitName(Unit unit) {
    switch (unit) {
    case Unit::percent: return "%";
    case Unit::metres: return "m";
    case Unit::degrees: return "degrees";
    default: return "";
    }
}

} // namespace velm::host
