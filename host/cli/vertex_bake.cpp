#include "host/cli/vertex_bake.h"

#include "host/base/error.h"
#include "host/cli/interrupt.h"
#include "host/cli/output_file.h"
#include "host/cli/run.h"
#include "host/io/files.h"

#include <variant>

namespace velm::host {

void prepareVertexOutput(const std::string &file, const SceneDescription &scene) {
    try {
        checkVertexEnding(file);
    } catch (const InputError &error) {
        throw UsageError(error.what());
    }
    refuseToReplace(file, scene.file);
    if (!scene.surfaceFile.empty()) refuseToReplace(file, scene.surfaceFile);
    for (const ObjectDescription &object : scene.objects)
        if (const auto *mesh = std::get_if<MeshFile>(&object.shape)) refuseToReplace(file, mesh->file);
    refuseToReplaceImages(file, scene.images);
    prepareFile(file);
}

VertexJob vertexJob(const RenderSceneData &scene, const BakeTarget &target, BakedKind value, const BakeOptions &options,
                    const std::vector<std::string> &files) {
    const VertexMapKind kind = vertexMapKind(value, options.mapKind);
    for (const std::string &file : files)
        checkVertexFile(file, scene.objects[target.object].shape, options.vertexMap, kind);
    return {.bake = {.target = target, .output = options.output, .viewer = options.viewer, .size = sizeOf(kind)},
            .kind = kind};
}

BakedVertices bakeVertexFile(Session &session, const RenderJob &job, const VertexJob &wanted, const std::string &map,
                             const std::string &file, ProgressSink &sink) {
    BakedVertices baked = bakeVertices(session.renderScene(), job, wanted.bake, session.warnings(), &sink);
    baked.complete = baked.complete && !InterruptGuard::interrupted();
    if (!baked.complete) return baked;
    const RenderObject &object = session.renderScene().data().objects[wanted.bake.target.object];
    writeFileAtomically(file, vertexFile(file, object, baked.values, map, wanted.kind));
    return baked;
}

} // namespace velm::host
