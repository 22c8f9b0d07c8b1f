// The kinds of file that can be opened as a scene.
#pragma once

#include "host/base/warnings.h"
#include "host/io/file_ends.h"
#include "host/render/geometry/mesh_cache.h"
#include "host/scene/format/description.h"
#include "host/scene/format/search_path.h"
#include "host/scene/overrides.h"
#include "host/scene/read_scene.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace velm::host {

struct FileReader;

// What a reader is asked for.
struct ReadRequest {
    const FileReader &reader;
    std::string file;
    SearchPath path;                          // where to look for the files that this one names
    std::span<const SceneOverride> overrides; // see readScene
    Cameras cameras = Cameras::required;      // of scenes
    std::vector<Warning> &warnings;           // warnings of what the reader leaves out of the file are added here
    MeshCache &meshes;                        // gets the mesh if it is read for its materials
};

// A kind of file.
struct FileReader {
    const char *name;                                                   // "OBJ"
    const char *ending;                                                 // of the names of such files, in lower case
    bool (*recognises)(const FileReader &reader, const FileEnds &file); // by its contents
    // Reads a scene. Throws InputError that names the file.
    SceneDescription (*read)(const ReadRequest &request);
    bool isScene = false;               // a scene with frames and a backdrop of its own
    bool isComplete = false;            // has everything that a picture needs: nothing is added
    bool isMetric = false;              // the format says that lengths are metres
    bool isZUp = false;                 // +Z is up in the file. The object is turned
    std::optional<Workflow> workflow{}; // for which such files are made; none if the file itself states it
};

// All kinds. [any thread]
std::span<const FileReader> fileReaders();

// The names of all kinds, for messages: "scene (JSON), LWO, ...".
std::string readableKinds();

// The kind that the contents of the file have; where they fit several kinds, or none, its name decides. InputError,
// with a list of what is read, for other files, and for a file that cannot be read. [any thread]
const FileReader &readerOf(const std::string &file);

} // namespace velm::host
