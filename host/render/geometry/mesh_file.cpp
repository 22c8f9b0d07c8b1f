// Reads meshes from files: a new format is a row here and its reader.
#include "host/render/geometry/mesh_readers.h"

#include "host/base/error.h"
#include "host/io/files.h"

#include <algorithm>
#include <iterator>

namespace velm::host {
namespace {

// The first reader that recognises a file reads it.
constexpr MeshReader kMeshReaders[] = {
    {.recognises = isPly, .read = readPly},
    {.recognises = [](const std::string &) { return true; }, .read = readWithAssimp},
};

} // namespace

Mesh readMesh(const std::string &file, const Transform &transform) {
    if (const auto reason = whyUnreadable(file)) throw InputError({.file = file}, "cannot read the mesh: " + *reason);
    const MeshReader &reader = *std::find_if(std::begin(kMeshReaders), std::end(kMeshReaders),
                                             [&](const MeshReader &each) { return each.recognises(file); });
    return reader.read(file, transform);
}

} // namespace velm::host
