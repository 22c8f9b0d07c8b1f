// "velm bake --vertices": baking into the vertices of an object.
#pragma once

#include "host/bake/bake_vertices.h"
#include "host/cli/bake_options.h"
#include "host/session/session.h"

#include <string>
#include <vector>

namespace velm::host {

// Checks that a file for vertices can be written, and creates missing directories of its path. UsageError for an
// extension that is not one of such files, and for a file that the scene is read from; MachineError where the file
// cannot be created.
void prepareVertexOutput(const std::string &file, const SceneDescription &scene);

// What is baked, and as which map.
struct VertexJob {
    VertexBake bake;
    VertexMapKind kind = VertexMapKind::colours;
};

// For a value of this kind, and the files that are written. InputError for a file that cannot be made of the object or
// that cannot hold the map; also if the object's own file cannot be read. [interface thread]
VertexJob vertexJob(const RenderSceneData &scene, const BakeTarget &target, BakedKind value, const BakeOptions &options,
                    const std::vector<std::string> &files);

// Bakes the current frame and writes the file when it is complete. Otherwise throws as bakeVertices, vertexFile and
// writeFileAtomically. [controller thread]
BakedVertices bakeVertexFile(Session &session, const RenderJob &job, const VertexJob &wanted, const std::string &map,
                             const std::string &file, ProgressSink &sink);

} // namespace velm::host
