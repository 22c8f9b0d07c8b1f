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
    {.recognises = isPly,
     .read = readPly,
     .filesRead = [](const std::string &file) { return std::vector<std::string>{file}; }},
    {.recognises = [](const std::string &) { return true; }, .read = readWithAssimp, .filesRead = filesReadWithAssimp},
};

const MeshReader &readerFor(const std::string &file) {
    if (const auto reason = whyUnreadable(file)) throw InputError({.file = file}, "cannot read the mesh: " + *reason);
    return *std::find_if(std::begin(kMeshReaders), std::end(kMeshReaders),
                         [&](const MeshReader &each) { return each.recognises(file); });
}

} // namespace

Mesh readMesh(const std::string &file, const Transform &transform) { return readerFor(file).read(file, transform); }

std::vector<std::string> filesOfMesh(const std::string &file) { return readerFor(file).filesRead(file); }

} // namespace velm::host
