// Compares the meshes of our own readers with those of the mesh library.
#pragma once

#include "host/render/geometry/mesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace velm::host::test {

// The mesh library does not round the numbers of text files correctly, which shows in the last bits.
struct CloseNumbers {
    float size; // of the largest number
    bool operator()(float a, float b) const {
        return std::fabs(a - b) <= 2e-6f * size || (std::isnan(a) && std::isnan(b));
    }
    template <class Numbers>
    bool operator()(const Numbers &a, const Numbers &b) const {
        return std::ranges::equal(a, b, *this);
    }
};

inline float sizeOf(const Mesh &mesh) {
    float size = 0;
    for (const HostPoint &point : mesh.points)
        for (const float each : point.position) size = std::max(size, std::fabs(each));
    return size;
}

// A colour with its alpha. Our readers store the alpha even if it is 1 everywhere; the mesh library's meshes lack it
// then.
inline std::array<float, 4> rgbaOf(const VertexMap &map, std::size_t vertex) {
    std::array<float, 4> colour{1, 1, 1, 1};
    std::ranges::copy(map.valueOf(vertex), colour.begin());
    return colour;
}

inline void expectSame(const Mesh &own, const Mesh &theirs) {
    ASSERT_EQ(own.points.size(), theirs.points.size());
    ASSERT_EQ(own.triangles.size(), theirs.triangles.size());
    const CloseNumbers areClose{sizeOf(theirs)}, areCloseToOne{1};
    for (std::size_t i = 0; i < own.points.size(); ++i)
        ASSERT_TRUE(areClose(own.points[i].position, theirs.points[i].position)) << "point " << i;
    for (std::size_t i = 0; i < own.triangles.size(); ++i)
        ASSERT_TRUE(std::ranges::equal(own.triangles[i].corners, theirs.triangles[i].corners)) << "triangle " << i;
    EXPECT_TRUE(areCloseToOne(own.normals, theirs.normals));
    ASSERT_EQ(own.uvMaps.size(), theirs.uvMaps.size());
    for (std::size_t i = 0; i < own.uvMaps.size(); ++i) {
        EXPECT_EQ(own.uvMaps[i].name, theirs.uvMaps[i].name);
        EXPECT_TRUE(areCloseToOne(own.uvMaps[i].values, theirs.uvMaps[i].values));
    }
    ASSERT_EQ(own.vertexMaps.size(), theirs.vertexMaps.size());
    for (std::size_t i = 0; i < own.vertexMaps.size(); ++i) {
        const VertexMap &ownMap = own.vertexMaps[i], &theirMap = theirs.vertexMaps[i];
        EXPECT_EQ(ownMap.name, theirMap.name);
        for (std::size_t vertex = 0; vertex < own.points.size(); ++vertex)
            EXPECT_TRUE(areCloseToOne(rgbaOf(ownMap, vertex), rgbaOf(theirMap, vertex))) << "vertex " << vertex;
    }
    EXPECT_EQ(own.polygonNumbers, theirs.polygonNumbers);
    EXPECT_EQ(own.materialNumbers, theirs.materialNumbers);
    EXPECT_EQ(own.materials, theirs.materials);
    EXPECT_EQ(own.polygonCount, theirs.polygonCount);
}

} // namespace velm::host::test
