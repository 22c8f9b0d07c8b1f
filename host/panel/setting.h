// A setting of a node as data: the label on the panel, and the value in the unit that the panel shows.
#pragma once

#include "host/base/double3.h"
#include "host/base/error.h"

#include <array>
#include <string>
#include <variant>
#include <vector>

namespace velm::host {

// One key of an animated setting.
struct KeyDescription {
    double time = 0; // seconds
    Double3 value{}; // only the first number is used when the setting has one component
    int shape = 0;   // of the span that ends at the key: kShapeTcb and so on
    double tension = 0, continuity = 0, bias = 0;
    std::array<double, 4> parameters{}; // of the Hermite and Bezier shapes

    bool operator==(const KeyDescription &) const = default;
};

struct KeysDescription {
    int components = 1; // 1 or 3
    std::vector<KeyDescription> keys;
    int before = 1, after = 1; // behaviours beyond the first and last keys; 1 is kBehaveConstant

    bool operator==(const KeysDescription &) const = default;
};

using SettingValue = std::variant<bool, double, Double3, std::string, KeysDescription>;

struct SettingDescription {
    std::string label; // as on the panel; the second of two controls "Clamp" is "Clamp 2"
    SettingValue value;
    SourceLocation location;

    bool operator==(const SettingDescription &) const = default;
};

} // namespace velm::host
