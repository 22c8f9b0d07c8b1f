// PLY files with baked values, read back by our reader and by the mesh library.
#include "host/bake/files/ply_writer.h"

#include "host/render/geometry/mesh_formats.h"
#include "host/render/geometry/ply_values.h"
#include "tests/bake/files/position_values.h"
#include "tests/object/object_bytes.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace velm::host::test {
namespace {

std::array<double, 3> colourAt(const Vec3 &p) { return {0.5 + 0.25 * p.x, 0.5 + 0.25 * p.y, 0.5 - 0.25 * p.z}; }
std::array<double, 1> weightAt(const Vec3 &p) { return {2 * p.x - p.y + 0.5 * p.z}; }

constexpr double kStep = 1.0 / 255; // of a colour of 8 bits

Mesh boxMesh(const Transform &transform = {}) { return shapeMesh(BoxShape{.size = {2, 2, 2}}, transform); }

struct PlyWriterTest : testing::Test {
    std::string write(const std::string &bytes) { return directory.write("made.ply", bytes); }

    const TemporaryDirectory directory;
};

std::vector<std::array<float, 3>> sorted(const std::pmr::vector<HostPoint> &points) {
    std::vector<std::array<float, 3>> all;
    for (const HostPoint &p : points) all.push_back({p.position[0], p.position[1], p.position[2]});
    std::ranges::sort(all);
    all.erase(std::unique(all.begin(), all.end()), all.end());
    return all;
}

// The values of the vertices of a file that has one element of positions and one number.
std::vector<std::array<float, 4>> verticesOf(const std::string &bytes) {
    const PlyHeader header = readPlyHeader(bytes, "made.ply");
    BinaryPlyValues<std::endian::little> values(std::string_view(bytes).substr(header.size));
    std::vector<std::array<float, 4>> vertices;
    for (std::uint64_t i = 0; i < header.elements[0].count; ++i) {
        std::array<float, 4> vertex{};
        for (std::size_t k = 0; k < header.elements[0].properties.size(); ++k) {
            const float number = values.real(PlyType::float32);
            if (k < 3 || k + 1 == header.elements[0].properties.size()) vertex[std::min<std::size_t>(k, 3)] = number;
        }
        vertices.push_back(vertex);
    }
    return vertices;
}

TEST_F(PlyWriterTest, KeepsPointsPolygonsAndFronts) {
    for (const Double3 &scale : {Double3{1, 1, 1}, Double3{-1, 1, 1}}) {
        const Transform transform({.position = {1, 2, 3}, .scale = scale});
        const Mesh box = boxMesh(), placed = boxMesh(transform);
        const std::string file =
            write(plyFile(placed, valuesOfPositions(placed, transform, 3, colourAt), transform, "Shade"));
        const Mesh read = readMesh(file, {});
        EXPECT_EQ(read.polygonCount, box.polygonCount);
        EXPECT_EQ(read.triangles.size(), box.triangles.size());
        EXPECT_EQ(sorted(read.points), sorted(box.points));
        for (std::uint32_t i = 0; i < read.triangles.size(); ++i) {
            const Vec3 front = cross(read.corner(i, 1) - read.corner(i, 0), read.corner(i, 2) - read.corner(i, 0));
            EXPECT_GT(dot(front, read.corner(i, 0)), 0) << "faces out of the box, whose middle is at the origin";
        }
    }
}

TEST_F(PlyWriterTest, HasTheColours) {
    const Mesh box = boxMesh();
    const std::string file = write(plyFile(box, valuesOfPositions(box, {}, 3, colourAt), {}, "Shade"));
    const MeshFormat &format = *meshFormatOf(file);
    for (const Mesh &read : {readMesh(file, {}), readWithAssimp(file, format, {})}) {
        ASSERT_EQ(read.vertexMaps.size(), 1U);
        ASSERT_EQ(read.vertexMaps[0].size, 3U);
        for (std::size_t i = 0; i < read.points.size(); ++i) {
            const float *p = read.points[i].position;
            const std::array<double, 3> expected = colourAt({p[0], p[1], p[2]});
            for (std::size_t k = 0; k < 3; ++k)
                EXPECT_NEAR(double{read.vertexMaps[0].valueOf(i)[k]}, expected[k], kStep / 2 + kRoundingError);
        }
    }
}

TEST_F(PlyWriterTest, HasTheNumbers) {
    const Mesh box = boxMesh();
    const std::string bytes = plyFile(box, valuesOfPositions(box, {}, 1, weightAt), {}, "AO");
    EXPECT_NE(bytes.find("property float AO\n"), std::string::npos);
    const auto vertices = verticesOf(bytes);
    EXPECT_GE(vertices.size(), 8U);
    for (const auto &[x, y, z, weight] : vertices)
        EXPECT_NEAR(double{weight}, weightAt({x, y, -double{z}})[0], kRoundingError); // the axes are right-handed
}

TEST_F(PlyWriterTest, ClampsColours) {
    const Mesh box = boxMesh();
    const auto of = [](const Vec3 &) { return std::array<double, 4>{-1, 2, 0.5, 1}; };
    const Mesh read = readMesh(write(plyFile(box, valuesOfPositions(box, {}, 4, of), {}, "")), {});
    ASSERT_EQ(read.vertexMaps.at(0).size, 4U);
    EXPECT_EQ(read.vertexMaps[0].valueOf(0)[0], 0);
    EXPECT_EQ(read.vertexMaps[0].valueOf(0)[1], 1);
    EXPECT_NEAR(double{read.vertexMaps[0].valueOf(0)[2]}, 0.5, kStep / 2 + kRoundingError);
}

// Two triangles of a square; a vertex is split only where they have different values.
TEST_F(PlyWriterTest, SplitsVerticesWhereValuesDiffer) {
    const Mesh square = readMesh(
        directory.write("a.lwo", objectFile(pointsChunk(kSixPoints) + polygonsChunk("FACE", {{0, 1, 2}, {0, 2, 3}}))),
        {});
    MeshValues values{.size = 1, .numbers = {0, 0, 0, 0, 0, 0}};
    EXPECT_EQ(verticesOf(plyFile(square, values, {}, "AO")).size(), 4U);
    for (std::size_t corner = 3; corner < 6; ++corner) values.numbers[corner] = 1;
    const auto vertices = verticesOf(plyFile(square, values, {}, "AO"));
    EXPECT_EQ(vertices.size(), 6U);
    EXPECT_EQ(std::ranges::count_if(vertices, [](const auto &vertex) { return vertex[3] == 1; }), 3);
    // Corners without a value get that of the others.
    for (std::size_t corner = 3; corner < 6; ++corner) values.numbers[corner] = std::nanf("");
    EXPECT_EQ(verticesOf(plyFile(square, values, {}, "AO")).size(), 4U);
}

TEST_F(PlyWriterTest, KeepsLongPolygonsAndThoseWithHoles) {
    // A ring as one polygon, whose outline passes two vertices twice, becomes triangles.
    std::vector<float> points;
    std::vector<std::size_t> round;
    constexpr std::size_t kMany = 300;
    for (std::size_t i = 0; i < kMany; ++i) {
        const double angle = -6.283185307179586 * static_cast<double>(i) / kMany;
        points.insert(points.end(), {static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)), 0});
        round.push_back(i);
    }
    const Mesh disc =
        readMesh(directory.write("a.lwo", objectFile(pointsChunk(points) + polygonsChunk("FACE", {round}))), {});
    const Mesh read = readMesh(write(plyFile(disc, valuesOfPositions(disc, {}, 1, weightAt), {}, "AO")), {});
    EXPECT_EQ(read.polygonCount, 1U);
    EXPECT_EQ(read.triangles.size(), kMany - 2);

    const Mesh ring =
        readMesh(directory.write("b.lwo", objectFile(pointsChunk({0, 0, 0, 0, 3, 0, 3, 3, 0, 3, 0, 0, //
                                                                  1, 1, 0, 1, 2, 0, 2, 2, 0, 2, 1, 0}) +
                                                     polygonsChunk("FACE", {{0, 1, 2, 3, 0, 4, 7, 6, 5, 4}}))),
                 {});
    const Mesh ringRead = readMesh(write(plyFile(ring, valuesOfPositions(ring, {}, 1, weightAt), {}, "AO")), {});
    EXPECT_EQ(ringRead.polygonCount, ring.triangles.size());
    EXPECT_EQ(ringRead.triangles.size(), ring.triangles.size());
}

TEST_F(PlyWriterTest, RefusesUnfitNames) {
    EXPECT_EQ(errorOf([] { checkPlyName("AO"); }), "");
    EXPECT_EQ(errorOf([] { checkPlyName("My AO"); }),
              "\"My AO\" cannot be the name of a number in a PLY file, which must not have blanks");
    EXPECT_EQ(errorOf([] { checkPlyName("nx"); }), "\"nx\" is the name of another number in PLY files");
    EXPECT_EQ(errorOf([] { checkPlyName("red"); }), "\"red\" is the name of another number in PLY files");
}

} // namespace
} // namespace velm::host::test
