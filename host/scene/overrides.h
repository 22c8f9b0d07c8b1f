// Values that replace those of a scene file, each given as a text: "surfaces.Clay.nodes.AO.settings.Max=2".
#pragma once

#include "host/scene/format/json.h"

#include <span>
#include <string>
#include <vector>

namespace velm::host {

// One value, and the path of keys and names that leads to it in the file.
struct SceneOverride {
    std::string text;              // as given, for messages
    std::vector<std::string> path; // not empty
    JsonValue value;
};

// The parts of the path are separated by dots. A part that contains a dot or an equals sign is put in double quotes.
// The value is JSON; a text needs quotes only if it looks like another kind of JSON value. InputError, without a
// location, for anything else. [any thread]
SceneOverride parseOverride(const std::string &text);

// The node whose setting an override replaces. Settings are not replaced in the file but in the open scene, which
// knows all nodes, including those that object files bring.
struct OverriddenSetting {
    std::string surface;
    std::vector<std::string> nodes; // from the outermost one; empty for a value of the surface itself
    std::string label;
};

// Whether the override is of a setting of a node or a surface, and of which one. False for all others, and `setting` is
// then unchanged. [any thread]
bool isSetting(const SceneOverride &override, OverriddenSetting &setting);

// Puts the values of all other overrides, in their order, into the tree of a scene file. A key that is not there yet is
// added, and reading the tree tells whether the format has it; a name must be there. The lines of what was put in are
// negative, so that errors found later can be told to be those of an override: see overrideAt. InputError with such a
// line, and with the nearest name, for a path that leads nowhere. [any thread]
void overrideValues(std::span<const SceneOverride> overrides, const std::string &file, JsonValue &root);

// The override that an error's location belongs to; null for a location in the file itself. [any thread]
const SceneOverride *overrideAt(std::span<const SceneOverride> overrides, const SourceLocation &location);

} // namespace velm::host
