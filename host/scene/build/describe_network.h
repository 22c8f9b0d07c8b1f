// From networks of nodes to their descriptions, as in scene files.
#pragma once

#include "host/graph/surface.h"
#include "host/scene/format/description.h"

#include <map>
#include <string>

namespace velm::host {

// The values that settings have in new nodes. [interface thread; not while rendering]
class DefaultSettings {
  public:
    // Makes one node of each server in the list, and a surface, and reads their panels.
    explicit DefaultSettings(const ServerList &servers);

    // True when the setting has its default value, to the precision of files. False for an unknown server or label.
    bool isDefault(const std::string &server, const SettingDescription &setting) const;
    // The default of one of a surface's own settings; null for an unknown label.
    const SettingValue *ofSurface(const std::string &label) const;

  private:
    std::map<std::string, std::map<std::string, SettingValue>> values_; // by server, then by label
};

// Describes a surface: nodes, the settings that differ from their defaults, connections, views. Numbers get the
// shortest text that becomes the same number in an object file. A setting that applySetting would not accept is left
// out. The surface stays as it is: its connections stay, its nodes receive no events, and no setting is changed. The
// description has no smoothing angle and no sides, which a network does not hold. InputError when a node has the name
// of the surface or node that owns its network, since a scene file could not tell the two apart.
// [interface thread; not while rendering]
SurfaceDescription describeSurface(Surface &surface, const DefaultSettings &defaults);

} // namespace velm::host
