#include "host/bake/bake_vertices.h"

#include "host/bake/bake_points.h"
#include "host/bake/bake_warnings.h"
#include "host/bake/vertex_groups.h"
#include "host/base/error.h"

#include <fmt/format.h>
#include <memory>
#include <utility>

namespace velm::host {

VertexMapKind vertexMapKind(BakedKind value, const std::optional<VertexMapKind> &wanted) {
    if (value == BakedKind::normal)
        throw InputError("normals are not baked into vertices, which have normals of their own");
    return wanted.value_or(value == BakedKind::number ? VertexMapKind::weights : VertexMapKind::colours);
}

BakedVertices bakeVertices(const RenderScene &scene, RenderJob job, const VertexBake &bake, Warnings &warnings,
                           ProgressSink *sink) {
    const RenderSceneData &data = scene.data();
    const BakeWarnings warn(data, bake.target, warnings);
    const PointEvaluator evaluator(data, BakedValue(data, bake.output, bake.target.surfaces),
                                   Viewer(data, job, bake.viewer));
    warn.ofSurfaces(evaluator.value(), bake.output);
    warn.ofOrder("the vertices");
    const VertexGroups groups(data, bake.target.object, evaluator);
    job.width = groups.width();
    job.height = groups.height();
    BakedPoints points = bakePoints(
        scene, job, evaluator, [&] { return std::make_unique<VertexSource>(groups); }, sink);
    BakedVertices baked{
        .values = {}, .count = groups.count(), .complete = points.complete, .statistics = std::move(points.statistics)};
    if (!baked.complete) return baked;
    std::size_t notFinite = 0;
    baked.values = groups.values(points.picture, bake.size, notFinite);
    if (notFinite > 0)
        warn.add("values that are NaN or infinite",
                 fmt::format("frame {}: {} {} NaN or infinite and written as 0", job.frame, notFinite,
                             notFinite == 1 ? "number of a vertex is" : "numbers of vertices are"));
    return baked;
}

} // namespace velm::host
