// Bakes a value of surfaces at the vertices of an object.
#pragma once

#include "host/bake/bake_target.h"
#include "host/bake/baked_value.h"
#include "host/bake/vertex_file.h"
#include "host/base/warnings.h"
#include "host/render/frame_renderer.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace velm::host {

struct VertexBake {
    BakeTarget target;
    std::string output;            // see BakedValue
    std::string viewer = "normal"; // see Viewer
    std::uint32_t size = 1;        // numbers in each value: see sizeOf(VertexMapKind)
};

// The kind of map that a value becomes: `wanted`, or else weights for a number and colours for anything else.
// InputError for normals, which files have besides their maps. [any thread]
VertexMapKind vertexMapKind(BakedKind value, const std::optional<VertexMapKind> &wanted);

struct BakedVertices {
    MeshValues values;     // of the object's mesh
    std::size_t count = 0; // of places that were evaluated: vertices, and those of each surface or polygon at a vertex
    bool complete = true;  // false when the sink cancelled; then without values
    RenderStatistics statistics;
};

// Evaluates the value at the scene's time near the corners of polygons, at job.samples points for each vertex, and
// gives each vertex the mean. Corners of a vertex that are shaded alike have the same value. The job's width and height
// are not used. The surfaces have to be initialised and set to the job's time. `sink` may be null. Warns of surfaces
// without the value, of results that depend on the order of evaluation, and of values that are NaN or infinite, which
// become 0. InputError for names that do not exist; otherwise throws as bakePoints. [controller thread]
BakedVertices bakeVertices(const RenderScene &scene, RenderJob job, const VertexBake &bake, Warnings &warnings,
                           ProgressSink *sink);

} // namespace velm::host
