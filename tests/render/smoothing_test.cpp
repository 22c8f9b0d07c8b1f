// Smooth normals by angle.
#include "host/render/geometry/mesh.h"
#include "host/render/geometry/mesh_builder.h"
#include "tests/render/test_scene.h"

#include <algorithm>

namespace velm::host::test {
namespace {

// A roof: two slopes that meet in a ridge along Z, inclined to each other by `degrees`.
Mesh roof(double degrees, std::uint16_t secondMaterial = 0) {
    const double half = degrees * kPi / 360, x = std::cos(half), y = -std::sin(half);
    MeshBuilder builder({}, false);
    const auto vertex = [&](double px, double py, double pz) {
        return builder.addVertex({.position = {px, py, pz}, .normal = {}, .uvs = {}});
    };
    builder.addMaterial("first");
    if (secondMaterial != 0) builder.addMaterial("second");
    const std::uint32_t near = vertex(0, 0, -1), far = vertex(0, 0, 1);
    builder.addPolygon({vertex(-x, y, -1), vertex(-x, y, 1), far, near}, 0);
    builder.addPolygon({near, far, vertex(x, y, 1), vertex(x, y, -1)}, secondMaterial);
    return builder.finish();
}

std::vector<Vec3> normalsAt(const Mesh &mesh, const Vec3 &point) {
    std::vector<Vec3> found;
    for (std::size_t i = 0; i < mesh.points.size(); ++i) {
        const float *p = mesh.points[i].position;
        const auto &n = mesh.normals[i];
        if (length(Vec3{p[0], p[1], p[2]} - point) < 1e-6) found.emplace_back(n[0], n[1], n[2]);
    }
    std::sort(found.begin(), found.end(), [](const Vec3 &a, const Vec3 &b) { return a.x < b.x; });
    return found;
}

TEST(Smoothing, RidgesFlatterThanTheAngleAreRound) {
    Mesh mesh = roof(60);
    smoothNormals(mesh, {60});
    EXPECT_EQ(mesh.points.size(), 6u) << "nothing was split";
    const auto ridge = normalsAt(mesh, {0, 0, 1});
    ASSERT_EQ(ridge.size(), 1u);
    expectNear(ridge[0], {0, 1, 0}, 1e-6);
    expectNear(normalsAt(mesh, {-std::cos(kPi / 6), -0.5, 1}).at(0), {-0.5, std::cos(kPi / 6), 0}, 1e-6, "eaves");
}

TEST(Smoothing, SplitVerticesKeepTheirColours) {
    MeshBuilder builder({}, false);
    builder.addVertexMap("Bend", 1);
    builder.addVertexMap("Paint", 3);
    builder.addMaterial("");
    const auto vertex = [&](double x, double y, double z, float weight) {
        return builder.addVertex({.position = {x, y, z}, .normal = {}, .uvs = {}, .values = {weight, 0, weight, 1}});
    };
    const std::uint32_t near = vertex(0, 0, -1, 0.25F), far = vertex(0, 0, 1, 0.5F);
    builder.addPolygon({vertex(-1, -1, 0, 0), far, near}, 0);
    builder.addPolygon({near, far, vertex(1, -1, 0, 1)}, 0);
    EXPECT_EQ(vertex(0, 0, 1, 0.5F), far) << "equal vertices are one";
    Mesh mesh = builder.finish();
    smoothNormals(mesh, {10});
    ASSERT_EQ(mesh.splitFrom.size(), 2U);
    for (std::size_t split = 0; split < 2; ++split)
        for (const VertexMap &map : mesh.vertexMaps)
            EXPECT_TRUE(std::ranges::equal(map.valueOf(4 + split), map.valueOf(mesh.splitFrom[split]))) << map.name;
    smoothNormals(mesh, {0});
    EXPECT_EQ(mesh.vertexMaps[0].values.size(), 4U);
    EXPECT_EQ(mesh.vertexMaps[1].values.size(), 12U);
}

// Vertices at one point that differ in their colours are one point of the surface.
TEST(Smoothing, GoesAcrossColours) {
    MeshBuilder builder({}, false);
    builder.addVertexMap("Paint", 3);
    builder.addMaterial("");
    const auto vertex = [&](double x, double y, double z, float red) {
        return builder.addVertex({.position = {x, y, z}, .normal = {}, .uvs = {}, .values = {red, 0, 0}});
    };
    builder.addPolygon({vertex(-1, -0.1, 0, 0), vertex(0, 0, 1, 0), vertex(0, 0, -1, 0)}, 0);
    builder.addPolygon({vertex(0, 0, -1, 1), vertex(0, 0, 1, 1), vertex(1, -0.1, 0, 1)}, 0);
    Mesh mesh = builder.finish();
    smoothNormals(mesh, {60});
    EXPECT_EQ(mesh.points.size(), 6U);
    for (const Vec3 &normal : normalsAt(mesh, {0, 0, 1})) expectNear(normal, {0, 1, 0}, 1e-6);
}

TEST(Smoothing, AnotherAngleForgetsTheOneBefore) {
    const Mesh flat = roof(60);
    Mesh mesh = flat;
    for (const double angle : {59.0, 60.0, 10.0, 180.0, 0.0}) {
        smoothNormals(mesh, {angle});
        Mesh expected = flat;
        smoothNormals(expected, {angle});
        EXPECT_EQ(mesh.normals, expected.normals) << angle;
        ASSERT_EQ(mesh.points.size(), expected.points.size()) << angle;
        for (std::size_t i = 0; i < mesh.triangles.size(); ++i)
            for (int k = 0; k < 3; ++k) EXPECT_EQ(mesh.triangles[i].corners[k], expected.triangles[i].corners[k]);
        EXPECT_GT(mesh.points.capacity(), mesh.points.size()) << "Embree reads beyond the last point";
    }
    EXPECT_TRUE(mesh.normals.empty());
}

TEST(Smoothing, SharperOnesStayCreases) {
    Mesh mesh = roof(60);
    smoothNormals(mesh, {59});
    EXPECT_EQ(mesh.points.size(), 8u) << "the ridge was split";
    const auto ridge = normalsAt(mesh, {0, 0, 1});
    ASSERT_EQ(ridge.size(), 2u);
    expectNear(ridge[0], {-0.5, std::cos(kPi / 6), 0}, 1e-6);
    expectNear(ridge[1], {0.5, std::cos(kPi / 6), 0}, 1e-6);
    // Splitting must not change the triangles.
    for (std::uint32_t i = 0; i < mesh.triangles.size(); ++i) {
        const Vec3 a = mesh.corner(i, 0);
        EXPECT_GT(cross(mesh.corner(i, 1) - a, mesh.corner(i, 2) - a).y, 0);
    }
}

TEST(Smoothing, MaterialsAreNotSmoothedTogether) {
    Mesh mesh = roof(60, 1);
    smoothNormals(mesh, {180, 180});
    EXPECT_EQ(normalsAt(mesh, {0, 0, 1}).size(), 2u);
}

TEST(Smoothing, SubdivisionSurfacesHaveTheirOwnNormals) {
    Mesh mesh = roof(60, 1);
    const std::size_t count = mesh.points.size();
    mesh.limitNormals.assign(count, {0, 0, 0});
    const std::array<float, 3> up{0, 1, 0};
    for (std::size_t i = 0; i < count; ++i)
        if (mesh.points[i].position[0] == 0) mesh.limitNormals[i] = up; // the ridge
    for (int times = 0; times < 2; ++times) {
        smoothNormals(mesh, {10, 20});
        ASSERT_EQ(normalsAt(mesh, {0, 0, 1}).size(), 1U) << "beyond the angles, and across materials";
        expectNear(normalsAt(mesh, {0, 0, 1})[0], {0, 1, 0}, 1e-6);
        EXPECT_EQ(mesh.points.size(), count);
    }
    for (std::array<float, 3> &normal : mesh.limitNormals) normal = {0, -normal[1], 0};
    smoothNormals(mesh, {10, 20});
    EXPECT_EQ(normalsAt(mesh, {0, 0, 1}).size(), 2U) << "normals that point away from their triangles are not theirs";
}

TEST(Smoothing, EachMaterialHasItsOwnAngle) {
    for (const double angle : {30.0, 90.0}) {
        Mesh mesh = roof(60);
        mesh.materialNumbers.assign(mesh.triangles.size(), 1);
        smoothNormals(mesh, {10, angle});
        EXPECT_EQ(normalsAt(mesh, {0, 0, 1}).size(), angle > 60 ? 1u : 2u);
    }
}

// At the corner of a cube, one or two triangles of each side meet. With weights by angle that does not matter.
TEST(Smoothing, WeighsByAngleNotByTriangles) {
    Mesh mesh = shapeMesh(BoxShape{.size = {2, 2, 2}}, Transform());
    smoothNormals(mesh, {120});
    const double diagonal = 1 / std::sqrt(3.0);
    for (const Vec3 &corner : {Vec3{1, 1, 1}, Vec3{-1, 1, 1}, Vec3{1, -1, -1}, Vec3{-1, -1, -1}})
        for (const Vec3 &normal : normalsAt(mesh, corner)) expectNear(normal, diagonal * corner, 1e-5);
}

TEST(Smoothing, GoesAcrossSeamsOfMaps) {
    Mesh mesh = shapeMesh(SphereShape{.radius = 1, .segments = 32}, Transform());
    const auto exact = mesh.normals;
    mesh.normals.clear();
    smoothNormals(mesh, {89.5});
    ASSERT_EQ(mesh.normals.size(), exact.size()) << "nothing was split";
    for (std::size_t i = 0; i < exact.size(); ++i) {
        const Vec3 normal{mesh.normals[i][0], mesh.normals[i][1], mesh.normals[i][2]};
        EXPECT_NEAR(length(normal), 1, 1e-6);
        EXPECT_GT(dot(normal, {exact[i][0], exact[i][1], exact[i][2]}), 0.999);
    }
}

TEST(Smoothing, EveryNormalIsOfUnitLength) {
    Mesh mesh = shapeMesh(BoxShape{.size = {1e-4, 3, 1e4}}, Transform({.rotation = {12, 34, 56}}));
    for (const double angle : {1.0, 89.5, 90.0, 180.0}) {
        Mesh copy = mesh;
        smoothNormals(copy, {angle});
        for (const auto &n : copy.normals) EXPECT_NEAR(length({n[0], n[1], n[2]}), 1, 1e-6) << angle;
    }
}

// Folds in a row, more points than are smoothed at a time: every point on a ridge is split in two, and the new vertices
// come in the order of the points.
TEST(ThreadedSmoothing, SplitsVerticesInTheirOrder) {
    constexpr std::uint32_t kRidges = 30000;
    MeshBuilder builder({}, false);
    builder.addMaterial("");
    for (std::uint32_t i = 0; i <= kRidges + 1; ++i)
        for (const double z : {0.0, 1.0})
            builder.addVertex({.position = {double(i), i % 2 == 0 ? 0.0 : 1.0, z}, .normal = {}, .uvs = {}});
    for (std::uint32_t i = 0; i <= kRidges; ++i) builder.addPolygon({2 * i, 2 * i + 1, 2 * i + 3, 2 * i + 2}, 0);
    Mesh mesh = builder.finish();
    const std::size_t before = mesh.points.size();
    smoothNormals(mesh, {60});
    ASSERT_EQ(mesh.splitFrom.size(), 2 * kRidges);
    for (std::size_t i = 0; i < mesh.splitFrom.size(); ++i) ASSERT_EQ(mesh.splitFrom[i], i + 2);
    for (std::uint32_t i = 0; i < mesh.triangles.size(); ++i) {
        const Vec3 across = cross(mesh.corner(i, 1) - mesh.corner(i, 0), mesh.corner(i, 2) - mesh.corner(i, 0));
        for (const std::uint32_t corner : mesh.triangles[i].corners) {
            const auto &[x, y, z] = mesh.normals[corner];
            ASSERT_LT(length(Vec3{x, y, z} - normalised(across)), 1e-6) << i;
            ASSERT_LT(corner, before + mesh.splitFrom.size());
        }
    }
}

} // namespace
} // namespace velm::host::test
