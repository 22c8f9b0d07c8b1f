// The tables of the scene format, one for each kind of object that a scene file may hold.
#pragma once

#include "host/scene/format/fields.h"

namespace velm::host {

const Table<SceneDescription> &sceneTable(); // the file as a whole
const Table<RenderDescription> &renderTable();
const Table<CameraDescription> &cameraTable();
const Table<LightDescription> &lightTable();
const Table<BackdropDescription> &backdropTable();
const Table<FogDescription> &fogTable();
const Table<ImageDescription> &imageTable();
const Table<ObjectDescription> &objectTable();
const Table<NullDescription> &nullTable();
const Table<SurfaceDescription> &surfaceTable();
const Table<NodeDescription> &nodeTable();
const Table<NetworkView> &viewTable();     // "view" of a surface or of a network inside a node
const Table<KeysDescription> &keysTable(); // an animated setting

// The schema of "settings", to which the schemas of surfaces and nodes refer as "#/$defs/settings".
nlohmann::ordered_json settingsDefinition();
// The schema of a node, to which those of networks refer as "#/$defs/node": a node may hold a network of nodes.
nlohmann::ordered_json nodeDefinition();

// A file that the scene names, looked for beside the scene and along the search path. InputError, with the line and
// where it was looked for, when there is none.
std::string resolveFile(const ReadContext &context, const JsonValue &value);

} // namespace velm::host
