// A setting of a node as data: the label on its panel and a value in the units that the panel shows.
#pragma once

#include "host/base/double3.h"
#include "host/base/error.h"

#include <array>
#include <string>
#include <variant>
#include <vector>

namespace velm::host {

// One key of an animated setting. `value` has one or three meaningful numbers, as the setting has.
struct KeyDescription {
    double time = 0; // seconds
    Double3 value{};
    int shape = 0; // kShapeTcb and so on
    double tension = 0, continuity = 0, bias = 0;
    std::array<double, 4> parameters{}; // of the Hermite and Bezier shapes

    bool operator==(const KeyDescription &) const = default;
};

struct KeysDescription {
    int components = 1; // 1 or 3
    std::vector<KeyDescription> keys;
    int before = 1, after = 1; // kBehaveConstant

    bool operator==(const KeysDescription &) const = default;
};

using SettingValue = std::variant<bool, double, Double3, std::string, KeysDescription>;

struct SettingDescription {
    std::string label; // as on the panel; the second of two equal labels is "Clamp 2"
    SettingValue value;
    SourceLocation location;

    bool operator==(const SettingDescription &) const = default;
};

} // namespace velm::host
