// Cuts polygons into triangles by clipping ears (Meisters, "Polygons Have Ears", 1975).
#include "host/render/geometry/mesh_builder.h"

#include <numeric>
#include <span>

namespace velm::host {
namespace {

struct Point2 {
    double x, y;
};

// Twice the signed area; positive where a, b, c turn in the polygon's own sense.
double area(const Point2 &a, const Point2 &b, const Point2 &c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

bool contains(const Point2 &a, const Point2 &b, const Point2 &c, const Point2 &p) {
    return area(a, b, p) >= 0 && area(b, c, p) >= 0 && area(c, a, p) >= 0;
}

// Newell's normal, which also holds for polygons that are concave or not quite flat.
Vec3 newellNormal(std::span<const Vec3> points) {
    Vec3 normal;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Vec3 &a = points[i], &b = points[(i + 1) % points.size()];
        normal += {(a.y - b.y) * (a.z + b.z), (a.z - b.z) * (a.x + b.x), (a.x - b.x) * (a.y + b.y)};
    }
    return normal;
}

// Projects the corners along the normal's longest component, so that they run counter-clockwise.
void flatten(std::span<const Vec3> points, std::span<Point2> flat) {
    const Vec3 normal = newellNormal(points);
    const Vec3 size{std::fabs(normal.x), std::fabs(normal.y), std::fabs(normal.z)};
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Vec3 &p = points[i];
        if (size.x >= size.y && size.x >= size.z) {
            flat[i] = normal.x > 0 ? Point2{p.y, p.z} : Point2{p.z, p.y};
        } else if (size.y >= size.z) {
            flat[i] = normal.y > 0 ? Point2{p.z, p.x} : Point2{p.x, p.z};
        } else {
            flat[i] = normal.z > 0 ? Point2{p.x, p.y} : Point2{p.y, p.x};
        }
    }
}

// Whether the corner left[at] of the remaining polygon can be cut off.
bool isEar(std::span<const Point2> flat, std::span<const std::uint32_t> left, std::size_t at) {
    const std::size_t count = left.size();
    const std::uint32_t before = left[(at + count - 1) % count], tip = left[at], after = left[(at + 1) % count];
    if (area(flat[before], flat[tip], flat[after]) <= 0) return false;
    for (const std::uint32_t other : left) {
        if (other == before || other == tip || other == after) continue;
        const Point2 &p = flat[other];
        const auto same = [&p](const Point2 &q) { return p.x == q.x && p.y == q.y; };
        // A corner at the same point as one of the ear's, as where a hole is joined to the rim, does not block the ear.
        if (same(flat[before]) || same(flat[tip]) || same(flat[after])) continue;
        if (contains(flat[before], flat[tip], flat[after], p)) return false;
    }
    return true;
}

// Cuts a quadrangle at its first corner, as triangulate does, but without allocating memory. Returns false if that
// corner is no ear.
bool cutQuadrangle(std::span<const Vec3> points, std::vector<std::array<std::uint32_t, 3>> &triangles) {
    constexpr std::array<std::uint32_t, 4> kAll{0, 1, 2, 3};
    std::array<Point2, 4> flat{};
    flatten(points, flat);
    if (!isEar(flat, kAll, 0)) return false;
    triangles.push_back({3, 0, 1});
    triangles.push_back({1, 2, 3});
    return true;
}

} // namespace

void triangulate(const std::vector<Vec3> &points, std::vector<std::array<std::uint32_t, 3>> &triangles) {
    triangles.clear();
    if (points.size() < 3) return;
    if (points.size() == 3) {
        triangles.push_back({0, 1, 2});
        return;
    }
    if (points.size() == 4 && cutQuadrangle(points, triangles)) return;
    std::vector<Point2> flat(points.size());
    flatten(points, flat);
    std::vector<std::uint32_t> left(points.size());
    std::iota(left.begin(), left.end(), 0u);
    std::size_t at = 0, refused = 0;
    while (left.size() > 3) {
        at %= left.size();
        // A polygon that crosses itself may have no ear left: then any corner is cut off.
        if (!isEar(flat, left, at) && refused < left.size()) {
            ++at;
            ++refused;
            continue;
        }
        const std::size_t count = left.size();
        triangles.push_back({left[(at + count - 1) % count], left[at], left[(at + 1) % count]});
        left.erase(left.begin() + static_cast<std::ptrdiff_t>(at));
        refused = 0;
    }
    triangles.push_back({left[0], left[1], left[2]});
}

} // namespace velm::host
