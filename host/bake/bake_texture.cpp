#include "host/bake/bake_texture.h"

#include "host/bake/bake_warnings.h"
#include "host/bake/margin.h"
#include "host/bake/texel_source.h"
#include "host/base/error.h"
#include "host/base/names.h"

#include <cmath>
#include <fmt/format.h>
#include <optional>
#include <utility>

namespace velm::host {
namespace {

// Warns about a scene.
class TextureWarnings : public BakeWarnings {
  public:
    using BakeWarnings::BakeWarnings;

    void ofTriangles(const TexelRaster &raster) const {
        const std::string map = inQuotes(raster.map().map().name);
        addCount(raster.missing(), "polygons without UV coordinates",
                 "without coordinates in the UV map " + map + " left out");
        addCount(raster.flat(), "polygons without an area in the UV map",
                 "without an area in the UV map " + map + " left out");
        addCount(raster.mirrored(), "polygons that are mirrored in the UV map", "mirrored in the UV map " + map);
        addCount(raster.repeated(), "UV coordinates outside 0 to 1",
                 "with coordinates outside 0 to 1 in the UV map " + map + ", which repeats");
    }

    void ofOverlaps(const SharedArray<TileFacts> &tiles) const {
        std::size_t overlapped = 0;
        const TileFacts *first = nullptr;
        for (std::size_t i = 0; i < tiles.size(); ++i) {
            overlapped += tiles[i].overlapped;
            if (tiles[i].overlapped > 0 && !first) first = &tiles[i];
        }
        if (first)
            add("polygons that overlap in the UV map",
                fmt::format("{} texels are covered more than once, such as by the polygons {} and {}; the first "
                            "polygon counts",
                            overlapped, first->polygons[0], first->polygons[1]));
    }

    void ofNotFinite(const Picture &picture, int frame) const {
        int count = 0, firstX = 0, firstY = 0;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x) {
                const float *const texel = picture.pixel(x, y);
                if (std::isfinite(texel[0]) && std::isfinite(texel[1]) && std::isfinite(texel[2])) continue;
                if (count++ > 0) continue;
                firstX = x;
                firstY = y;
            }
        if (count > 0)
            add("texels that are NaN or infinite",
                fmt::format("frame {}: {} {} NaN or infinite, the first at {}, {}", frame, count,
                            count == 1 ? "texel is" : "texels are", firstX, firstY));
    }

  private:
    void addCount(const TriangleCount &found, const char *brief, const std::string &what) const {
        if (found.count > 0)
            add(brief, fmt::format("{} {} {}; the first is of polygon {}", found.count,
                                   found.count == 1 ? "triangle" : "triangles", what, found.firstPolygon));
    }
};

// By triangle, whether it is shaded without smoothing.
std::vector<bool> flatTriangles(const RenderSceneData &scene, std::uint32_t object) {
    const std::size_t count = scene.objects[object].mesh->triangles.size();
    std::vector<bool> isFlat(count);
    for (std::uint32_t triangle = 0; triangle < count; ++triangle)
        isFlat[triangle] = scene.surfaceOf(object, triangle).flat();
    return isFlat;
}

void normaliseAll(Picture &picture) {
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            float *const texel = picture.pixel(x, y);
            const Vec3 normal = normalised({texel[0], texel[1], texel[2]}, {0, 0, 0});
            for (int k = 0; k < 3; ++k) texel[k] = static_cast<float>(k == 0 ? normal.x : k == 1 ? normal.y : normal.z);
        }
}

} // namespace

BakedTexture bakeTexture(const RenderScene &scene, const RenderJob &job, const TextureBake &bake, Warnings &warnings,
                         ProgressSink *sink) {
    const RenderSceneData &data = scene.data();
    const std::uint32_t index = bake.target.object;
    const RenderObject &object = data.objects[index];
    const TextureWarnings warn(data, bake.target, warnings);
    const PointEvaluator evaluator(data, BakedValue(data, bake.output, bake.target.surfaces),
                                   Viewer(data, job, bake.viewer));
    warn.ofSurfaces(evaluator.value(), bake.output);
    warn.ofOrder("the texels");

    const auto isWanted = [&](std::uint32_t triangle) { return evaluator.has(index, triangle); };
    const TexelMap map(*object.mesh, object.mesh->uvMaps[bake.uvMap], job.width, job.height);
    const TexelRaster raster(map, isWanted);
    warn.ofTriangles(raster);
    if (raster.isEmpty())
        throw InputError({.file = data.sceneFile},
                         fmt::format("no polygon that is baked has an area in the UV map {} of the object {}",
                                     inQuotes(map.map().name), inQuotes(object.item->name)));
    const bool isNormal = evaluator.value().kind() == BakedKind::normal;
    const std::vector<bool> isFlat = flatTriangles(data, index);
    std::optional<Tangents> tangents;
    if (isNormal && bake.space == NormalSpace::tangent) tangents.emplace(map.mesh(), map.map(), isFlat);
    // The tangents are in the mesh's coordinates: those of the world, except for instances.
    const bool isInObject = bake.space == NormalSpace::object || (tangents && object.isInstance);
    const Transform *const toObject = isNormal && isInObject ? &object.transform : nullptr;

    const auto tiles = [](int size) { return static_cast<std::size_t>((size + kTileSize - 1) / kTileSize); };
    SharedArray<TileFacts> facts(tiles(job.width) * tiles(job.height));
    BakedPoints points = bakePoints(
        scene, job, evaluator,
        [&] {
            return std::make_unique<TexelSource>(raster, index, object, tangents ? &*tangents : nullptr, toObject,
                                                 facts);
        },
        sink);
    BakedTexture baked{.picture = std::move(points.picture),
                       .kind = evaluator.value().kind(),
                       .complete = points.complete,
                       .statistics = std::move(points.statistics)};
    if (!baked.complete) return baked;
    warn.ofOverlaps(facts);
    warn.ofNotFinite(baked.picture, job.frame);
    fillMargin(baked.picture, map, isWanted, bake.margin);
    if (isNormal) normaliseAll(baked.picture);
    return baked;
}

void encodeNormals(Picture &picture) {
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            float *const texel = picture.pixel(x, y);
            if (texel[0] == 0 && texel[1] == 0 && texel[2] == 0) continue;
            for (int k = 0; k < 3; ++k) texel[k] = 0.5F + 0.5F * texel[k];
        }
}

} // namespace velm::host
