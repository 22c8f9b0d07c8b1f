// Scenes as the text of a scene file, written by the same tables that read it.
#pragma once

#include "host/scene/format/description.h"

#include <string>

namespace velm::host {

// The text of a scene file in `directory` (empty: the current one) that holds this scene. Reading it gives the same
// description but for source locations, and writing that gives the same text. The text ends with a line break; numbers
// are the shortest text that reads back as the same double, in every locale. All numbers must be finite.
//
// Left out is what reading gives without it: keys with their default values, and keys that do not go with the kind of
// an object. Files below the directory get names relative to it, all others absolute names. An image that was not found
// keeps its name.
//
// Object files (.lwo) bring surfaces and images of their own, by "surfaces": {"from": ...} or as the mesh of an object
// without "surface". As long as the scene names the file, these parts are not written: they come again when the scene
// is read.
// - A surface that was changed by hand (its settings, smoothing or sides differ from SurfaceDescription::saved) is
//   written as described, and the objects that have it name it. Its network is still a block of the object file, which
//   text cannot hold: replace such a surface by the result of describeSurface first.
// - A surface of a file that the scene no longer names is left out when no object has it. Such an image is written.
//
// InputError, with the source location in the description: for a changed surface that still has its network in a block;
// for an object that has a surface which reading would not give, or not by that name; and for two objects of one kind
// with the same name.
std::string writeScene(const SceneDescription &scene, const std::string &directory);

} // namespace velm::host
