// Normals at the corners of triangles, smoothed up to an angle.
#include "host/render/geometry/mesh.h"
#include "host/render/geometry/parallel.h"
#include "host/render/geometry/vertex_table.h"

#include <algorithm>
#include <numbers>
#include <numeric>

namespace velm::host {
namespace {

// By vertex, the first vertex of the same point.
std::vector<std::uint32_t> groupByPoint(const Mesh &mesh) {
    if (!mesh.firstOfPoint.empty()) return {mesh.firstOfPoint.begin(), mesh.firstOfPoint.end()};
    const std::size_t count = mesh.points.size();
    std::vector<std::uint32_t> group(count);
    std::iota(group.begin(), group.end(), 0u);
    if (!mesh.hasMaps()) return group; // vertices differ only in position
    const auto equal = [&mesh](std::uint32_t a, std::uint32_t b) {
        return equalNumbers(mesh.points[a].position, mesh.points[b].position);
    };
    VertexTable table;
    table.reserve(count);
    for (std::uint32_t vertex = 0; vertex < count; ++vertex) {
        std::uint64_t hash = 0;
        for (const float value : mesh.points[vertex].position) hash = mixIn(hash, value);
        group[vertex] =
            table.findOrAdd(endOfHash(hash), vertex, [&](std::uint32_t other) { return equal(other, vertex); });
    }
    return group;
}

// The corners at each group of vertices, one group after the other. Corner k of triangle t has the number 3 t + k.
struct CornerLists {
    std::vector<std::size_t> starts; // by group; one more than there are vertices
    std::vector<std::size_t> corners;
};

CornerLists cornersByGroup(const Mesh &mesh, const std::vector<std::uint32_t> &group) {
    CornerLists lists{.starts = std::vector<std::size_t>(mesh.points.size() + 1), .corners = {}};
    for (const HostPolygon &triangle : mesh.triangles)
        for (const std::uint32_t corner : triangle.corners) ++lists.starts[group[corner] + 1];
    std::partial_sum(lists.starts.begin(), lists.starts.end(), lists.starts.begin());
    lists.corners.resize(mesh.triangles.size() * 3);
    std::vector<std::size_t> next(lists.starts.begin(), lists.starts.end() - 1);
    for (std::size_t triangle = 0; triangle < mesh.triangles.size(); ++triangle) {
        for (std::size_t k = 0; k < 3; ++k)
            lists.corners[next[group[mesh.triangles[triangle].corners[k]]]++] = 3 * triangle + k;
    }
    return lists;
}

// The contribution of a corner to the normals around it.
struct Facet {
    Vec3 normal; // of its triangle, unit length
    double weight;
    std::size_t triangle, corner; // the corner, 0 to 2, of the triangle
    std::uint16_t material;
};

Facet facetAt(const Mesh &mesh, std::size_t corner) {
    const std::size_t triangle = corner / 3, which = corner % 3;
    const auto number = static_cast<std::uint32_t>(triangle);
    const Vec3 here = mesh.corner(number, static_cast<int>(which));
    const Vec3 a = normalised(mesh.corner(number, static_cast<int>((which + 1) % 3)) - here);
    const Vec3 b = normalised(mesh.corner(number, static_cast<int>((which + 2) % 3)) - here);
    const Vec3 across =
        cross(mesh.corner(number, 1) - mesh.corner(number, 0), mesh.corner(number, 2) - mesh.corner(number, 0));
    return {.normal = normalised(across),
            .weight = std::acos(std::clamp(dot(a, b), -1.0, 1.0)),
            .triangle = triangle,
            .corner = which,
            .material = mesh.materialNumber(number)};
}

// Computes the normals of the corners at one point at a time. Several smoothers may work on different points of the
// same mesh at the same time: each stores the normals of its own vertices, and collects the vertices that have to be
// split.
class CornerSmoother {
  public:
    // A vertex to be added: a copy of `original` with another normal.
    struct Split {
        std::uint32_t original;
        std::array<float, 3> normal;
    };
    // A corner whose vertex becomes that of a split, by its index in `splits`.
    struct Move {
        std::size_t corner, split;
    };

    // `normals` are those of the mesh, by vertex.
    CornerSmoother(const Mesh &mesh, const std::vector<double> &cosines, std::array<float, 3> *normals)
        : mesh_(mesh), cosines_(cosines), normals_(normals) {}

    void smooth(const std::size_t *begin, const std::size_t *end) {
        facets_.clear();
        variants_.clear();
        for (const std::size_t *corner = begin; corner != end; ++corner) facets_.push_back(facetAt(mesh_, *corner));
        const bool alike = allAlike();
        Vec3 shared;
        if (alike) shared = meanAbout(facets_.front());
        for (const Facet &facet : facets_) {
            const Vec3 limit = limitNormalAt(facet);
            if (dot(limit, facet.normal) > 0)
                assign(facet, limit);
            else
                assign(facet, normalised(alike ? shared : meanAbout(facet), facet.normal));
        }
    }

    // The changes to the mesh once all points are smoothed, in this order.
    std::vector<Split> splits;
    std::vector<Move> moves;

  private:
    static constexpr std::size_t kOriginal = ~std::size_t{0};
    // A normal that corners at a vertex share, and the vertex that has it: the original or that of a split.
    struct Variant {
        std::uint32_t original;
        std::size_t split; // the index in `splits`, or kOriginal
        std::array<float, 3> normal;
    };

    // Whether every corner here is smoothed with every other one. Two triangles are inclined to each other by at most
    // twice the largest inclination to the first one, so a single pass decides.
    bool allAlike() const {
        const Facet &first = facets_.front();
        const double limit = std::acos(cosines_[first.material]) / 2;
        const double cosine = std::cos(limit);
        return std::all_of(facets_.begin(), facets_.end(), [&](const Facet &facet) {
            return facet.material == first.material && dot(facet.normal, first.normal) >= cosine;
        });
    }

    // The normal of the subdivision surface; zero if the corner is on none.
    Vec3 limitNormalAt(const Facet &facet) const {
        if (mesh_.limitNormals.empty()) return {0, 0, 0};
        const auto &normal = mesh_.limitNormals[mesh_.triangles[facet.triangle].corners[facet.corner]];
        return {normal[0], normal[1], normal[2]};
    }

    Vec3 meanAbout(const Facet &facet) const {
        const double cosine = cosines_[facet.material];
        Vec3 sum;
        for (const Facet &other : facets_) {
            if (other.material == facet.material && dot(other.normal, facet.normal) >= cosine)
                sum += other.weight * other.normal;
        }
        return sum;
    }

    void assign(const Facet &facet, const Vec3 &normal) {
        const std::array<float, 3> narrow = {static_cast<float>(normal.x), static_cast<float>(normal.y),
                                             static_cast<float>(normal.z)};
        const std::uint32_t original = mesh_.triangles[facet.triangle].corners[facet.corner];
        const std::size_t corner = 3 * facet.triangle + facet.corner;
        bool known = false;
        for (const Variant &variant : variants_) {
            if (variant.original != original) continue;
            known = true;
            if (!close(variant.normal, narrow)) continue;
            if (variant.split != kOriginal) moves.push_back({.corner = corner, .split = variant.split});
            return;
        }
        if (known) {
            moves.push_back({.corner = corner, .split = splits.size()});
            splits.push_back({.original = original, .normal = narrow});
        } else {
            normals_[original] = narrow;
        }
        variants_.push_back({.original = original, .split = known ? splits.size() - 1 : kOriginal, .normal = narrow});
    }

    // The same mean differs by rounding errors when it is summed in another order.
    static bool close(const std::array<float, 3> &a, const std::array<float, 3> &b) {
        constexpr float kClose = 1e-6f;
        return std::abs(a[0] - b[0]) + std::abs(a[1] - b[1]) + std::abs(a[2] - b[2]) < kClose;
    }

    const Mesh &mesh_;
    const std::vector<double> &cosines_;
    std::array<float, 3> *normals_;
    std::vector<Facet> facets_;
    std::vector<Variant> variants_;
};

// By material, the cosine of its smoothing angle.
std::vector<double> cosinesOf(const std::vector<double> &smoothingAngles) {
    std::vector<double> cosines;
    for (const double degrees : smoothingAngles) {
        // A little more than the angle, so that triangles inclined by exactly that angle are smoothed.
        cosines.push_back(std::cos(std::min(degrees + 1e-4, 180.0) * std::numbers::pi / 180));
    }
    return cosines;
}

// Adds the split vertices of all smoothers, in their order, and gives them to their corners.
void splitVertices(Mesh &mesh, const std::vector<CornerSmoother> &smoothers) {
    std::size_t count = mesh.points.size();
    for (const CornerSmoother &smoother : smoothers) count += smoother.splits.size();
    mesh.points.reserve(count + 1);
    mesh.normals.reserve(count);
    mesh.splitFrom.reserve(count - mesh.points.size());
    for (UvMap &map : mesh.uvMaps) map.values.reserve(count);
    for (VertexMap &map : mesh.vertexMaps) map.reserve(count);
    for (const CornerSmoother &smoother : smoothers) {
        const std::size_t first = mesh.points.size();
        for (const CornerSmoother::Split &split : smoother.splits) {
            mesh.splitFrom.push_back(split.original);
            mesh.points.push_back(mesh.points[split.original]);
            mesh.normals.push_back(split.normal);
            for (UvMap &map : mesh.uvMaps) map.values.push_back(map.values[split.original]);
            for (VertexMap &map : mesh.vertexMaps) map.appendCopyOf(split.original);
        }
        for (const CornerSmoother::Move &move : smoother.moves)
            mesh.triangles[move.corner / 3].corners[move.corner % 3] = static_cast<std::uint32_t>(first + move.split);
    }
}

// Undoes smoothNormals: joins split vertices again and drops the normals.
void removeNormals(Mesh &mesh) {
    const std::size_t count = mesh.points.size() - mesh.splitFrom.size();
    for (HostPolygon &triangle : mesh.triangles) {
        for (std::uint32_t &corner : triangle.corners)
            if (corner >= count) corner = mesh.splitFrom[corner - count];
    }
    mesh.points.resize(count);
    mesh.padPoints();
    for (UvMap &map : mesh.uvMaps) map.values.resize(count);
    for (VertexMap &map : mesh.vertexMaps) map.resize(count);
    mesh.normals = {};
    mesh.splitFrom = {};
    mesh.smoothingAngles = {};
}

} // namespace

void smoothNormals(Mesh &mesh, const std::vector<double> &smoothingAngles) {
    if (!mesh.smoothingAngles.empty()) removeNormals(mesh);
    if (std::none_of(smoothingAngles.begin(), smoothingAngles.end(), [](double angle) { return angle > 0; })) return;
    mesh.smoothingAngles = smoothingAngles;
    const std::vector<std::uint32_t> group = groupByPoint(mesh);
    const CornerLists lists = cornersByGroup(mesh, group);
    mesh.normals.resize(mesh.points.size());
    const std::vector<double> cosines = cosinesOf(smoothingAngles);
    const std::size_t groups = lists.starts.size() - 1;
    std::vector<CornerSmoother> smoothers(rangeCount(groups), CornerSmoother(mesh, cosines, mesh.normals.data()));
    forRanges(groups, [&](std::size_t range, std::size_t first, std::size_t last) {
        for (std::size_t i = first; i < last; ++i) {
            const std::size_t begin = lists.starts[i], end = lists.starts[i + 1];
            if (begin != end) smoothers[range].smooth(lists.corners.data() + begin, lists.corners.data() + end);
        }
    });
    splitVertices(mesh, smoothers);
    mesh.padPoints();
}

} // namespace velm::host
