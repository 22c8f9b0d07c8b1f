// The formats of mesh files that are read.
#pragma once

#include "host/io/file_ends.h"
#include "host/object/losses.h"
#include "host/render/geometry/mesh.h"

#include <functional>
#include <memory_resource>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

struct MeshFormat {
    const char *name;
    const char *ending; // of the names of such files, by which assimp's importers for the format are found

    bool isGltf() const { return ending == std::string_view("gltf") || ending == std::string_view("glb"); }

    // Whether files may have images inside that can be read again; see readEmbeddedImages.
    bool hasImages() const { return isGltf() || ending == std::string_view("fbx"); }

    // Reads a file of the format. The buffers of the mesh are allocated from `memory`, and have room for more than its
    // elements. Throws InputError as readMesh does. To be called in a process of its own: see readApart.
    Mesh (*read)(const std::string &file, const MeshFormat &format, const Transform &transform,
                 std::pmr::memory_resource *memory);
    // The names of all files that reading opens, the mesh file itself first. Throws as it does, and is to be called in
    // a process of its own, too.
    std::vector<std::string> (*files)(const std::string &file, const MeshFormat &format);
};

// The names of the formats, in one line: "LWO, OBJ, ...".
std::string meshFormats();

// The format that the contents of the file have, whatever it is called; null if it is none of those that are read.
// Throws InputError if the file cannot be read or is empty.
const MeshFormat *meshFormatOf(const std::string &file);
// The same by what was read of the file, which must not be empty. [any thread]
const MeshFormat *meshFormatOf(const FileEnds &ends);

// All formats that are read, in the order of meshFormats. [any thread]
std::vector<const MeshFormat *> allMeshFormats();

// Adds what was left out of the file to the mesh's warnings.
void addWarnings(const Losses &losses, Mesh &mesh);

// MeshFormat::read and MeshFormat::files of the formats that assimp reads.
Mesh readWithAssimp(const std::string &file, const MeshFormat &format, const Transform &transform,
                    std::pmr::memory_resource *memory = std::pmr::get_default_resource());
std::vector<std::string> filesReadWithAssimp(const std::string &file, const MeshFormat &format);

// The same of LightWave's objects: their visible layers. Points that the file has more than once are not joined, since
// normals are only smoothed across common points. What is left out is in the mesh's warnings.
Mesh readObjectMesh(const std::string &file, const MeshFormat &format, const Transform &transform,
                    std::pmr::memory_resource *memory);
// The same with the level of subdivision surfaces, and with only one layer if its number is given, even if it is
// hidden.
Mesh readObjectLayers(const std::string &file, const Transform &transform, std::optional<int> layer, int subdivision,
                      std::pmr::memory_resource *memory);
std::vector<std::string> filesOfObjectMesh(const std::string &file, const MeshFormat &format);

// The name of a mesh file's colours of vertices in formats that do not name them. Further ones are called "Color 2" and
// so on.
inline constexpr char kColourMap[] = "Color";

// MeshFormat::read of PLY and STL files. Files with something that these readers do not know, such as textures, are
// left to assimp.
Mesh readPlyMesh(const std::string &file, const MeshFormat &format, const Transform &transform,
                 std::pmr::memory_resource *memory);
Mesh readStlMesh(const std::string &file, const MeshFormat &format, const Transform &transform,
                 std::pmr::memory_resource *memory);
// MeshFormat::files of both.
std::vector<std::string> filesOfPlainMesh(const std::string &file, const MeshFormat &format);

// MeshFormat::read and MeshFormat::files of OBJ files with the files of materials that they name. Files whose points
// have colours are left to assimp, too, and those in UTF-16.
Mesh readObjMesh(const std::string &file, const MeshFormat &format, const Transform &transform,
                 std::pmr::memory_resource *memory);
std::vector<std::string> filesOfObjMesh(const std::string &file, const MeshFormat &format);

// Returns the bytes of the file of that name; nothing if it cannot be read.
using ReadOther = std::function<std::optional<std::string>(const std::string &name)>;

// The mesh in the bytes of an OBJ file; nothing if the file is left to assimp. `file` is its name, for errors and to
// find the files of materials beside it, which `readOther` reads. Throws InputError as readMesh does. The memory that
// is allocated is in proportion to the size of the files. [any thread]
std::optional<Mesh> plainObjMesh(std::string_view bytes, const std::string &file, const MeshFormat &format,
                                 const Transform &transform, const ReadOther &readOther,
                                 std::pmr::memory_resource *memory = std::pmr::get_default_resource());

// The meshes in the bytes of PLY and STL files; nothing if the file is left to assimp. `file` is its name, for errors.
// Throws InputError as readMesh does. The memory that is allocated is in proportion to the size of the file.
// [any thread]
std::optional<Mesh> plainPlyMesh(std::string_view bytes, const std::string &file, const Transform &transform,
                                 std::pmr::memory_resource *memory = std::pmr::get_default_resource());
std::optional<Mesh> plainStlMesh(std::string_view bytes, const std::string &file, const Transform &transform,
                                 std::pmr::memory_resource *memory = std::pmr::get_default_resource());

} // namespace velm::host
