// The files that a scene is made of.
#pragma once

#include "host/base/warnings.h"
#include "host/scene/format/description.h"

#include <string>
#include <vector>

namespace velm::host {

// A file that the scene names, and the files that this one names in turn.
struct SceneFile {
    enum class Kind { mesh, object, image } kind = Kind::mesh; // object: an object file that only brings surfaces
    std::string file;
    std::vector<std::string> others; // such as the materials of a mesh file or the buffers of a glTF file
};

// The files of an image that are read for the scene's frames, each once: one file, or those of a sequence in the order
// of their numbers. Files may be missing. [any thread]
std::vector<std::string> filesOfImage(const ImageDescription &image, const RenderDescription &render);

// The files that a render of the scene reads, with the names by which they are opened: meshes, object files and images,
// but not the scene file itself. Each is listed once, but images that show sequences of the same files list them again.
// Warns of images and files of sequences that are missing. Throws InputError for a mesh that cannot be read. [interface
// thread]
std::vector<SceneFile> filesOfScene(const SceneDescription &scene, Warnings &warnings);

} // namespace velm::host
