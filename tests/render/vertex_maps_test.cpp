// Weights and colours of vertices at samples.
#include "host/base/four_cc.h"
#include "host/render/geometry/item.h"
#include "host/render/geometry/mesh.h"
#include "host/services/vertex_map_provider.h"
#include "tests/object/object_bytes.h"
#include "tests/render/test_scene.h"
#include "tests/temporary_directory.h"

#include <limits>

namespace velm::host::test {
namespace {

// A triangle in an object file, with the maps of these chunks.
class VertexMaps : public testing::Test {
  protected:
    void build(const std::string &maps) {
        scene_.surface("Grey");
        scene_.object("Leaf",
                      MeshFile{directory_.write("leaf.lwo", objectFile(pointsChunk({0, 0, 0, 0, 1, 0, 1, 0, 0}) + maps +
                                                                       polygonsChunk("FACE", {{0, 1, 2}})))},
                      "Grey");
        const Mesh &mesh = *scene_.renderScene().data().objects.at(0).mesh;
        sample_.objectItem = const_cast<HostItem *>(scene_.item(kItemObject, "Leaf"));
        polygon_ = mesh.triangles.at(0);
        sample_.polygon = &polygon_;
        // By position, since the order of the corners is not fixed.
        for (int k = 0; k < 3; ++k) {
            const Vec3 corner = mesh.corner(0, k);
            sample_.vertexWeights[k] = corner.x > 0 ? 0.25F : corner.y > 0 ? 0.5F : 0.25F;
        }
    }
    std::array<double, 4> colour(const char *name) const {
        std::array<double, 4> result{-9, -9, -9, -9};
        hasMap_ = vertexMapFuncs()->colour(name, &sample_, result.data());
        return result;
    }
    double weight(const char *name) const {
        double result = -9;
        hasMap_ = vertexMapFuncs()->weight(name, &sample_, &result);
        return result;
    }

    TemporaryDirectory directory_;
    TestScene scene_;
    ShadingSample sample_{};
    HostPolygon polygon_{};
    mutable bool hasMap_ = false; // of the last look-up
};

// At a quarter of the corners 0 and 2, and half of corner 1.
TEST_F(VertexMaps, AreInterpolated) {
    build(mapChunk("WGHT", 1, "Bend", {{0, {1}}, {1, {-1}}}) + mapChunk("WGHT", 1, "Other", {{0, {4}}}) +
          mapChunk("RGB ", 3, "Paint", {{0, {1, 0, 0}}, {1, {0, 1, 0}}, {2, {0, 0, 2}}}) +
          mapChunk("RGBA", 4, "Glass", {{1, {0, 0, 0, 0.5F}}}));
    EXPECT_EQ(weight("Bend"), -0.25) << "a point without a weight has 0";
    EXPECT_EQ(weight("Other"), 1);
    EXPECT_EQ(weight(nullptr), -0.25) << "the first map";
    EXPECT_EQ(weight(""), -0.25);
    EXPECT_EQ(colour("Paint"), (std::array<double, 4>{0.25, 0.5, 0.5, 1}));
    EXPECT_EQ(colour(""), (std::array<double, 4>{0.25, 0.5, 0.5, 1}));
    EXPECT_EQ(colour("Glass"), (std::array<double, 4>{0.5, 0.5, 0.5, 0.75})) << "a point without a colour is white";
    EXPECT_TRUE(hasMap_);
}

TEST_F(VertexMaps, LeaveTheResultWhereThereIsNone) {
    build(mapChunk("WGHT", 1, "Bend", {{0, {1}}}) +
          mapChunk("RGB ", 3, "Broken", {{0, {1, std::numeric_limits<float>::infinity(), 0}}}));
    EXPECT_EQ(colour("Bend"), (std::array<double, 4>{-9, -9, -9, -9})) << "a weight is no colour";
    EXPECT_FALSE(hasMap_);
    EXPECT_EQ(colour("Broken"), (std::array<double, 4>{-9, -9, -9, -9}));
    EXPECT_EQ(weight("Broken"), -9);
    sample_.polygon = nullptr;
    EXPECT_EQ(weight("Bend"), -9);
    sample_.objectItem = nullptr;
    EXPECT_EQ(weight("Bend"), -9);
    EXPECT_FALSE(hasMap_);
}

} // namespace
} // namespace velm::host::test
