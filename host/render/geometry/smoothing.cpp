// Normals at the corners of triangles, smoothed up to an angle.
#include "host/render/geometry/mesh.h"

#include <algorithm>
#include <bit>
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
    if (mesh.uvMaps.empty()) return group; // vertices differ only in position
    // Ordered by their bits, which works for NaNs too.
    const auto bitsOf = [&](std::uint32_t vertex) {
        return std::bit_cast<std::array<std::uint32_t, 3>>(mesh.points[vertex]);
    };
    const auto before = [&](std::uint32_t a, std::uint32_t b) {
        const auto pointA = bitsOf(a), pointB = bitsOf(b);
        return pointA != pointB ? pointA < pointB : a < b;
    };
    std::vector<std::uint32_t> order = group;
    std::sort(order.begin(), order.end(), before);
    for (std::size_t i = 1; i < count; ++i)
        if (bitsOf(order[i]) == bitsOf(order[i - 1])) group[order[i]] = group[order[i - 1]];
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

// Computes the normals of the corners at one point at a time.
class CornerSmoother {
  public:
    CornerSmoother(Mesh &mesh, const std::vector<double> &smoothingAngles) : mesh_(mesh) {
        for (const double degrees : smoothingAngles) {
            // A little more than the angle, so that triangles inclined by exactly that angle are smoothed.
            cosines_.push_back(std::cos(std::min(degrees + 1e-4, 180.0) * std::numbers::pi / 180));
        }
    }

    void smooth(const std::size_t *begin, const std::size_t *end) {
        facets_.clear();
        variants_.clear();
        for (const std::size_t *corner = begin; corner != end; ++corner) facets_.push_back(facetAt(mesh_, *corner));
        const bool alike = allAlike();
        Vec3 shared;
        if (alike) shared = meanAbout(facets_.front());
        for (const Facet &facet : facets_) assign(facet, normalised(alike ? shared : meanAbout(facet), facet.normal));
    }

  private:
    // A normal that corners at a vertex share, and the vertex that holds it: the original or a duplicate.
    struct Variant {
        std::uint32_t original, number;
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
        std::uint32_t &corner = mesh_.triangles[facet.triangle].corners[facet.corner];
        bool known = false;
        for (const Variant &variant : variants_) {
            if (variant.original != corner) continue;
            known = true;
            if (!close(variant.normal, narrow)) continue;
            corner = variant.number;
            return;
        }
        const std::uint32_t original = corner;
        if (known) corner = duplicate(original);
        mesh_.normals[corner] = narrow;
        variants_.push_back({.original = original, .number = corner, .normal = narrow});
    }

    // The same mean differs by rounding errors when it is summed in another order.
    static bool close(const std::array<float, 3> &a, const std::array<float, 3> &b) {
        constexpr float kClose = 1e-6f;
        return std::abs(a[0] - b[0]) + std::abs(a[1] - b[1]) + std::abs(a[2] - b[2]) < kClose;
    }

    std::uint32_t duplicate(std::uint32_t vertex) {
        const auto number = static_cast<std::uint32_t>(mesh_.points.size());
        mesh_.splitFrom.push_back(vertex);
        mesh_.points.push_back(HostPoint(mesh_.points[vertex]));
        mesh_.normals.emplace_back();
        for (UvMap &map : mesh_.uvMaps) map.values.push_back(std::array<float, 2>(map.values[vertex]));
        return number;
    }

    Mesh &mesh_;
    std::vector<double> cosines_;
    std::vector<Facet> facets_;
    std::vector<Variant> variants_;
};

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
    CornerSmoother smoother(mesh, smoothingAngles);
    for (std::size_t i = 0; i + 1 < lists.starts.size(); ++i) {
        const std::size_t begin = lists.starts[i], end = lists.starts[i + 1];
        if (begin != end) smoother.smooth(lists.corners.data() + begin, lists.corners.data() + end);
    }
    mesh.padPoints();
}

} // namespace velm::host
