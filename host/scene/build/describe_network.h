// From networks of nodes to their description, as a scene file tells them.
#pragma once

#include "host/graph/surface.h"
#include "host/scene/format/description.h"

#include <map>
#include <string>

namespace velm::host {

// What the settings of nodes are when nothing has been set. [interface thread; not while rendering]
class UsualSettings {
  public:
    // Makes one node of each kind in the list, and a surface, and asks their panels.
    explicit UsualSettings(const ServerList &servers);

    // True when that is the value which the setting has in a new node of that server, to the precision of files.
    bool isUsual(const std::string &server, const SettingDescription &setting) const;
    // Of a surface's own settings; null for an unknown one.
    const SettingValue *ofSurface(const std::string &label) const;

  private:
    std::map<std::string, std::map<std::string, SettingValue>> values_; // by server, then by label
};

// Describes a surface: nodes, the settings that are not as usual, connections, views. Numbers get the shortest text
// that becomes the same number in a file. A setting that a scene file cannot make again, for whatever reason, is left
// out. Takes the network's connections apart. InputError when a node has the name of what holds its network, since a
// scene file could not tell them apart. [interface thread; not while rendering]
SurfaceDescription describeSurface(Surface &surface, const UsualSettings &usual);

} // namespace velm::host
