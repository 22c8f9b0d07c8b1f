// The readers of mesh formats.
#pragma once

#include "host/render/geometry/mesh.h"

#include <string>
#include <vector>

namespace velm::host {

// A format of mesh files. Its functions are called on the interface thread, for a file that is readable.
struct MeshReader {
    bool (*recognises)(const std::string &file);                       // by the file's contents or name
    Mesh (*read)(const std::string &file, const Transform &transform); // as readMesh
    std::vector<std::string> (*filesRead)(const std::string &file);    // as filesOfMesh
};

// PLY, text or binary.
bool isPly(const std::string &file);
Mesh readPly(const std::string &file, const Transform &transform);

// Any format that assimp knows; it recognises the format itself.
Mesh readWithAssimp(const std::string &file, const Transform &transform);
std::vector<std::string> filesReadWithAssimp(const std::string &file);

} // namespace velm::host
