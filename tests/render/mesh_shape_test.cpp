// The built-in shapes: sizes, sides, winding, normals and maps.
#include "host/base/error.h"
#include "host/render/geometry/mesh.h"
#include "tests/render/test_scene.h"

#include <algorithm>

namespace velm::host::test {
namespace {

Vec3 areaVector(const Mesh &mesh, std::uint32_t triangle) {
    const Vec3 a = mesh.corner(triangle, 0);
    return 0.5 * cross(mesh.corner(triangle, 1) - a, mesh.corner(triangle, 2) - a);
}

// Area, volume (by the divergence theorem: positive when polygons face outwards) and the sum of the area vectors (zero
// when the surface is closed).
struct Measures {
    double area = 0, volume = 0;
    Vec3 open;

    explicit Measures(const Mesh &mesh) {
        for (std::uint32_t i = 0; i < mesh.triangles.size(); ++i) {
            const Vec3 own = areaVector(mesh, i);
            area += length(own);
            volume += dot(own, mesh.corner(i, 0)) / 3;
            open += own;
        }
    }
};

const TransformDescription kTurned = {.position = {1, 2, 3}, .rotation = {10, 20, 30}, .scale = {1, 1, 1}};
const TransformDescription kMirrored = {.position = {1, 2, 3}, .rotation = {10, 20, 30}, .scale = {1, -1, 1}};

TEST(Shapes, BoxFacesOutwardsOrInwards) {
    for (const TransformDescription &place : {TransformDescription{}, kTurned, kMirrored}) {
        const Measures out(shapeMesh(BoxShape{.size = {1, 2, 3}}, Transform(place)));
        EXPECT_NEAR(out.area, 22, 1e-5);
        EXPECT_NEAR(out.volume, 6, 1e-5);
        expectNear(out.open, {0, 0, 0}, 1e-5);
        const Measures in(shapeMesh(BoxShape{.size = {1, 2, 3}, .inward = true}, Transform(place)));
        EXPECT_NEAR(in.volume, -6, 1e-5);
    }
}

TEST(Shapes, BoxIsSixPolygons) {
    const Mesh mesh = shapeMesh(BoxShape{}, Transform());
    EXPECT_EQ(mesh.polygonCount, 6u);
    EXPECT_EQ(mesh.triangles.size(), 12u);
    EXPECT_EQ(mesh.polygonNumbers, (std::pmr::vector<std::uint32_t>{0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5}));
    EXPECT_TRUE(mesh.materialNumbers.empty());
}

TEST(Shapes, PlaneFacesUp) {
    const Mesh mesh = shapeMesh(PlaneShape{.width = 4, .depth = 3}, Transform());
    EXPECT_EQ(mesh.points.size(), 4u);
    for (std::uint32_t i = 0; i < 2; ++i) expectNear(areaVector(mesh, i), {0, 6, 0}, 1e-5);
    const Mesh mirrored = shapeMesh(PlaneShape{.width = 4, .depth = 3}, Transform({.scale = {-1, 1, 1}}));
    for (std::uint32_t i = 0; i < 2; ++i) expectNear(areaVector(mirrored, i), {0, 6, 0}, 1e-5);
}

TEST(Shapes, SphereIsRoundClosedAndFacesOutwards) {
    for (const TransformDescription &place : {TransformDescription{}, kTurned, kMirrored}) {
        const Mesh mesh = shapeMesh(SphereShape{.radius = 2, .segments = 64}, Transform(place));
        const Measures measures(mesh);
        EXPECT_NEAR(measures.area, 16 * kPi, 0.003 * 16 * kPi);
        EXPECT_NEAR(measures.volume, 32 * kPi / 3, 0.005 * 32 * kPi / 3);
        expectNear(measures.open, {0, 0, 0}, 1e-4);
        const Vec3 centre(place.position);
        ASSERT_EQ(mesh.normals.size(), mesh.points.size());
        for (std::size_t i = 0; i < mesh.points.size(); ++i) {
            const float *p = mesh.points[i].position;
            const Vec3 outward = Vec3{p[0], p[1], p[2]} - centre;
            EXPECT_NEAR(length(outward), 2, 1e-5);
            const auto &normal = mesh.normals[i];
            expectNear({normal[0], normal[1], normal[2]}, 0.5 * outward, 1e-5);
        }
    }
    EXPECT_EQ(shapeMesh(SphereShape{.segments = 64}, Transform()).polygonCount, 64u * 32);
    EXPECT_EQ(shapeMesh(SphereShape{.segments = 3}, Transform()).polygonCount, 3u * 2);
}

// A mesh that is made in object coordinates and then placed equals, except for rounding, one that is made in world
// space.
TEST(Shapes, CanBeMovedAfterwards) {
    const TransformDescription stretched = {.position = {4, 5, 6}, .rotation = {-70, 5, 12}, .scale = {3, 0.5, -2}};
    for (const TransformDescription &place : {TransformDescription{}, kTurned, kMirrored, stretched}) {
        const Transform transform(place);
        const SphereShape shape{.radius = 2, .segments = 16};
        const Mesh moved = placedMesh(shapeMesh(shape, Transform()), transform), made = shapeMesh(shape, transform);
        ASSERT_EQ(moved.points.size(), made.points.size());
        for (std::size_t i = 0; i < made.points.size(); ++i) {
            const float *p = moved.points[i].position, *q = made.points[i].position;
            expectNear({p[0], p[1], p[2]}, {q[0], q[1], q[2]}, 1e-5);
            const auto &n = moved.normals[i], &m = made.normals[i];
            expectNear({n[0], n[1], n[2]}, {m[0], m[1], m[2]}, 1e-5);
        }
        EXPECT_NEAR(Measures(moved).volume, Measures(made).volume, 1e-4) << "facing outwards";
        EXPECT_EQ(moved.uvMaps[0].values, made.uvMaps[0].values);
        EXPECT_GT(moved.points.capacity(), moved.points.size()) << "for what Embree reads beyond the last point";
    }
}

TEST(Shapes, StretchedSphereHasTheNormalsOfAnEllipsoid) {
    const Mesh mesh = shapeMesh(SphereShape{.radius = 1, .segments = 16}, Transform({.scale = {3, 1, 2}}));
    for (std::size_t i = 0; i < mesh.points.size(); ++i) {
        const float *p = mesh.points[i].position;
        const Vec3 gradient = normalised({p[0] / 9.0, p[1] / 1.0, p[2] / 4.0});
        expectNear({mesh.normals[i][0], mesh.normals[i][1], mesh.normals[i][2]}, gradient, 1e-5);
    }
}

// The UV coordinates of a shape's vertices at a point.
std::vector<std::array<float, 2>> uvsAt(const Mesh &mesh, const Vec3 &place) {
    std::vector<std::array<float, 2>> found;
    for (std::size_t i = 0; i < mesh.points.size(); ++i) {
        const float *p = mesh.points[i].position;
        if (length(Vec3{p[0], p[1], p[2]} - place) < 1e-5) found.push_back(mesh.uvMaps.at(0).values[i]);
    }
    return found;
}

TEST(Shapes, MapsReadTheRightWayFromOutside) {
    const Mesh plane = shapeMesh(PlaneShape{}, Transform());
    using Uvs = std::vector<std::array<float, 2>>;
    EXPECT_EQ(plane.uvMaps.at(0).name, "UV");
    EXPECT_EQ(uvsAt(plane, {-0.5, 0, -0.5}), (Uvs{{0, 0}}));
    EXPECT_EQ(uvsAt(plane, {0.5, 0, -0.5}), (Uvs{{1, 0}}));
    EXPECT_EQ(uvsAt(plane, {0.5, 0, 0.5}), (Uvs{{1, 1}}));
    const Mesh sphere = shapeMesh(SphereShape{.radius = 1, .segments = 8}, Transform());
    EXPECT_EQ(uvsAt(sphere, {0, 0, -1}), (Uvs{{0.5f, 0.5f}}));
    EXPECT_EQ(uvsAt(sphere, {1, 0, 0}), (Uvs{{0.75f, 0.5f}})) << "to the right, as seen from -Z";
    auto seam = uvsAt(sphere, {0, 0, 1});
    std::sort(seam.begin(), seam.end());
    EXPECT_EQ(seam, (Uvs{{0, 0.5f}, {1, 0.5f}}));
    EXPECT_EQ(uvsAt(sphere, {0, 1, 0}).size(), 8u) << "one for each column";
    // Three sides meet at a corner of the box: its lower left front corner is the lower left of the front, the lower
    // right of the left side, and the upper left of the bottom as seen from below with +Z down.
    auto corner = uvsAt(shapeMesh(BoxShape{}, Transform()), {-0.5, -0.5, -0.5});
    std::sort(corner.begin(), corner.end());
    EXPECT_EQ(corner, (Uvs{{0, 0}, {0, 1}, {1, 0}}));
}

TEST(Shapes, RefuseSizesThatAreNone) {
    EXPECT_THROW(shapeMesh(PlaneShape{.width = 0}, Transform()), InputError);
    EXPECT_THROW(shapeMesh(PlaneShape{.depth = -1}, Transform()), InputError);
    EXPECT_THROW(shapeMesh(BoxShape{.size = {1, 0, 1}}, Transform()), InputError);
    EXPECT_THROW(shapeMesh(SphereShape{.radius = NAN}, Transform()), InputError);
    EXPECT_THROW(shapeMesh(SphereShape{.segments = 2}, Transform()), InputError);
}

} // namespace
} // namespace velm::host::test
