// Bakes a value of surfaces into a picture of a UV map.
#pragma once

#include "host/bake/bake_points.h"
#include "host/bake/bake_target.h"
#include "host/bake/normal_space.h"
#include "host/base/warnings.h"

#include <cstddef>
#include <string>

namespace velm::host {

inline constexpr int kMostMargin = 1024; // texels

struct TextureBake {
    BakeTarget target;
    std::size_t uvMap = 0;         // of the object's mesh; see findUvMap
    std::string output;            // see BakedValue
    std::string viewer = "normal"; // see Viewer
    NormalSpace space = NormalSpace::tangent;
    int margin = 16; // texels, 0 to kMostMargin
};

struct BakedTexture {
    // Alpha is the fraction of a texel that the surfaces cover; colours are not multiplied by it. Colours of the margin
    // have no alpha. Normals are of length 1, or 0 where there are none.
    Picture picture;
    BakedKind kind = BakedKind::colour;
    bool complete = true; // false when the sink cancelled; then without a margin
    RenderStatistics statistics;
};

// Bakes the value at the scene's time into a picture of job.width by job.height, with job.samples points of each texel.
// The surfaces have to be initialised and set to the job's time. `sink` may be null. Warns of surfaces without the
// value, of triangles that are missing, mirrored or flat in the map or overlap there, of repeated coordinates, of
// results that depend on the order of evaluation, and of texels that are NaN or infinite. InputError for names that do
// not exist, and if no texel is covered; otherwise throws as bakePoints. [controller thread]
BakedTexture bakeTexture(const RenderScene &scene, const RenderJob &job, const TextureBake &bake, Warnings &warnings,
                         ProgressSink *sink);

// Converts normals for files that hold no negative numbers: to 0.5 + 0.5 n. Texels without a normal stay black.
void encodeNormals(Picture &picture);

} // namespace velm::host
