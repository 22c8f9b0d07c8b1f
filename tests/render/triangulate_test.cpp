// Polygons into triangles.
#include "host/render/geometry/mesh_builder.h"
#include "tests/render/test_scene.h"

namespace velm::host::test {
namespace {

using Triangles = std::vector<std::array<std::uint32_t, 3>>;

Vec3 areaVector(const std::vector<Vec3> &points, const std::array<std::uint32_t, 3> &triangle) {
    return 0.5 * cross(points[triangle[1]] - points[triangle[0]], points[triangle[2]] - points[triangle[0]]);
}

struct PolygonCase {
    const char *what;
    std::vector<Vec3> points;
    double area;
};

// The triangles run in the polygon's sense, and their areas, all of one sign, add up to the polygon's. So they cover it
// exactly once.
void expectCovers(const PolygonCase &each, const Vec3 &normal) {
    Triangles triangles;
    triangulate(each.points, triangles);
    ASSERT_EQ(triangles.size(), each.points.size() - 2) << each.what;
    double sum = 0;
    for (const auto &triangle : triangles) {
        const double area = dot(areaVector(each.points, triangle), normal);
        EXPECT_GE(area, -1e-12) << each.what;
        sum += area;
    }
    EXPECT_NEAR(sum, each.area, 1e-9) << each.what;
}

TEST(Triangulate, CoversThePolygonOnce) {
    const PolygonCase cases[] = {
        {"triangle", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, 0.5},
        {"square", {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, 1},
        {"arrowhead", {{0, 0, 0}, {2, 1, 0}, {0, 2, 0}, {1, 1, 0}}, 1},
        {"arrowhead from its notch", {{1, 1, 0}, {0, 0, 0}, {2, 1, 0}, {0, 2, 0}}, 1},
        {"L", {{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {1, 1, 0}, {1, 2, 0}, {0, 2, 0}}, 3},
        {"comb",
         {{0, 0, 0},
          {5, 0, 0},
          {5, 2, 0},
          {4, 2, 0},
          {4, 1, 0},
          {3, 1, 0},
          {3, 2, 0},
          {2, 2, 0},
          {2, 1, 0},
          {1, 1, 0},
          {1, 2, 0},
          {0, 2, 0}},
         8},
        {"corners in a line", {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {2, 2, 0}, {1, 2, 0}, {0, 2, 0}}, 4},
        {"square with a square hole, joined by a slit",
         {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}, {0, 0, 0}, {1, 1, 0}, {1, 3, 0}, {3, 3, 0}, {3, 1, 0}, {1, 1, 0}},
         12},
        {"square that is not flat", {{0, 0, 0.1}, {1, 0, -0.1}, {1, 1, 0.1}, {0, 1, -0.1}}, 1},
        {"L that is not flat", {{0, 0, 0.1}, {2, 0, 0}, {2, 1, 0.1}, {1, 1, -0.1}, {1, 2, 0}, {0, 2, 0.1}}, 3},
    };
    // Each polygon in several orientations.
    for (const PolygonCase &each : cases) {
        for (const Double3 &rotation :
             {Double3{0, 0, 0}, Double3{90, 0, 0}, Double3{0, 90, 0}, Double3{0, 180, 0}, Double3{33, 44, 55}}) {
            PolygonCase turned = each;
            for (Vec3 &point : turned.points) point = rotationMatrix(rotation) * point;
            expectCovers(turned, rotationMatrix(rotation) * Vec3{0, 0, 1});
        }
    }
}

TEST(Triangulate, EndsOnPolygonsThatCrossThemselvesOrHaveNoArea) {
    Triangles triangles;
    triangulate({{0, 0, 0}, {1, 1, 0}, {1, 0, 0}, {0, 1, 0}}, triangles);
    EXPECT_EQ(triangles.size(), 2u);
    triangulate({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {1.5, 0, 0}}, triangles);
    EXPECT_EQ(triangles.size(), 3u);
    triangulate({{NAN, 0, 0}, {1, 0, 0}, {2, NAN, 0}, {3, 0, 0}}, triangles);
    EXPECT_EQ(triangles.size(), 2u);
    triangulate({{0, 0, 0}, {1, 0, 0}}, triangles);
    EXPECT_TRUE(triangles.empty());
}

} // namespace
} // namespace velm::host::test
