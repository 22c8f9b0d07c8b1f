#include "host/bake/vertex_groups.h"

#include "host/base/colour.h"
#include "host/base/error.h"
#include "host/render/scene/render_scene_data.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <tuple>

namespace velm::host {
namespace {

// How far points are moved from their corner towards each of the other two, as a fraction of the edge: rays that start
// exactly at a corner could start inside of a neighbour.
constexpr double kPull = 1.0 / 512;

// A corner with what it has in common with others of its group.
struct KeyedCorner {
    std::uint32_t vertex, part; // the part of the mesh that is shaded as one: a material or a polygon
    bool isSmooth;
    std::size_t corner;

    auto key() const { return std::tuple(vertex, isSmooth, part); }
    auto order() const { return std::tuple(key(), corner); }
};

std::vector<KeyedCorner> keyedCorners(const RenderSceneData &scene, std::uint32_t object,
                                      const PointEvaluator &evaluator) {
    const Mesh &mesh = *scene.objects[object].mesh;
    std::vector<KeyedCorner> corners;
    for (std::uint32_t triangle = 0; triangle < mesh.triangles.size(); ++triangle) {
        if (!evaluator.has(object, triangle)) continue;
        const bool isSmooth = !mesh.normals.empty() && !scene.surfaceOf(object, triangle).flat();
        for (std::size_t k = 0; k < 3; ++k)
            corners.push_back({.vertex = mesh.triangles[triangle].corners[k],
                               .part = isSmooth ? mesh.materialNumber(triangle) : mesh.polygonNumber(triangle),
                               .isSmooth = isSmooth,
                               .corner = std::size_t{3} * triangle + k});
    }
    std::ranges::sort(corners, {}, &KeyedCorner::order);
    return corners;
}

double areaOf(const Mesh &mesh, std::size_t corner) {
    const auto triangle = static_cast<std::uint32_t>(corner / 3);
    const Vec3 here = mesh.corner(triangle, 0);
    return length(cross(mesh.corner(triangle, 1) - here, mesh.corner(triangle, 2) - here)) / 2;
}

} // namespace

VertexGroups::VertexGroups(const RenderSceneData &scene, std::uint32_t object, const PointEvaluator &evaluator)
    : object_(object) {
    const Mesh &mesh = *scene.objects[object].mesh;
    meshCorners_ = 3 * mesh.triangles.size();
    const std::vector<KeyedCorner> corners = keyedCorners(scene, object, evaluator);
    std::vector<std::size_t> starts; // of the groups in `corners`
    for (std::size_t i = 0; i < corners.size(); ++i)
        if (i == 0 || corners[i].key() != corners[i - 1].key()) starts.push_back(i);
    // Ordered by corners instead of vertices, whose numbers change with the maps that the mesh has: a bake into a file
    // that has been baked before gives the same values, also of nodes that draw random numbers.
    std::ranges::sort(starts, {}, [&](std::size_t start) { return corners[start].corner; });
    for (const std::size_t start : starts) {
        double area = 0;
        for (std::size_t i = start; i < corners.size() && corners[i].key() == corners[start].key(); ++i) {
            corners_.push_back(corners[i].corner);
            areas_.push_back(area += areaOf(mesh, corners[i].corner));
        }
        ends_.push_back(corners_.size());
    }
    const std::size_t tiles = (ends_.size() + kTilePixels - 1) / kTilePixels;
    columns_ = std::max(1, static_cast<int>(std::ceil(std::sqrt(static_cast<double>(tiles)))));
    if (width() > kLargestSide) throw InputError("a mesh of more than a thousand million vertices");
}

int VertexGroups::height() const {
    const std::size_t row = static_cast<std::size_t>(columns_) * kTilePixels; // of tiles, in pixels
    return std::max(1, static_cast<int>((count() + row - 1) / row)) * kTileSize;
}

std::size_t VertexGroups::groupOf(int x, int y) const {
    const int row = y / kTileSize, column = x / kTileSize;
    const auto tile =
        static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_) + static_cast<std::size_t>(column);
    return tile * kTilePixels + static_cast<std::size_t>(y % kTileSize * kTileSize + x % kTileSize);
}

bool VertexGroups::find(int x, int y, const UnitSquare &random, SurfacePoint &point) const {
    const std::size_t group = groupOf(x, y);
    if (group >= count()) return false;
    const auto first = areas_.begin() + static_cast<std::ptrdiff_t>(begin(group)),
               last = areas_.begin() + static_cast<std::ptrdiff_t>(ends_[group]);
    const double area = *(last - 1);
    const auto chosen = std::min(std::upper_bound(first, last, random.x * area), last - 1);
    const std::size_t corner = corners_[static_cast<std::size_t>(chosen - areas_.begin())];
    std::array<double, 3> weights{kPull, kPull, kPull};
    weights[corner % 3] = 1 - 2 * kPull;
    point = {.object = object_,
             .triangle = static_cast<std::uint32_t>(corner / 3),
             .u = weights[1],
             .v = weights[2],
             .footprint = std::sqrt(area / 3)}; // a third of each triangle belongs to the corner
    return true;
}

MeshValues VertexGroups::values(const Picture &picture, std::uint32_t size, std::size_t &notFinite) const {
    MeshValues values{.size = size, .numbers = {}};
    values.numbers.assign(meshCorners_ * size, std::numeric_limits<float>::quiet_NaN());
    for (std::size_t group = 0; group < count(); ++group) {
        const auto inTile = static_cast<int>(group % kTilePixels), tile = static_cast<int>(group / kTilePixels);
        const float *pixel = picture.pixel(tile % columns_ * kTileSize + inTile % kTileSize,
                                           tile / columns_ * kTileSize + inTile / kTileSize);
        std::array<float, 4> value{pixel[0], pixel[1], pixel[2], 1};
        // A number is the same in all three components, whose luminance may differ from it by a rounding error.
        if (size == 1 && !(pixel[0] == pixel[1] && pixel[1] == pixel[2]))
            value[0] = static_cast<float>(luminance(double{pixel[0]}, double{pixel[1]}, double{pixel[2]}));
        for (std::size_t i = 0; i < size; ++i)
            if (!std::isfinite(value[i])) {
                value[i] = 0;
                ++notFinite;
            }
        for (std::size_t i = begin(group); i < ends_[group]; ++i)
            std::copy_n(value.begin(), size, values.numbers.begin() + static_cast<std::ptrdiff_t>(corners_[i] * size));
    }
    return values;
}

} // namespace velm::host
