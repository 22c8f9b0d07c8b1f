// Writing vertex maps into objects: what the reader gives afterwards, and which bytes remain the same.
#include "host/object/vertex_map_writer.h"

#include "host/object/iff.h"
#include "tests/object/object_bytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

using namespace velm::host;
using namespace velm::host::test;

namespace {

const std::string kName = "made.lwo";
constexpr float kNone = std::numeric_limits<float>::quiet_NaN();

CornerMap weights(std::vector<LayerCornerValues> layers, const std::string &name = "AO") {
    return {.type = fourCC("WGHT"), .size = 1, .name = name, .tolerance = 0.01, .layers = std::move(layers)};
}

// The values of a layer whose corners all have the weight 1.
LayerCornerValues ofLayer(std::size_t layer, std::vector<float> numbers, std::size_t size = 1) {
    const std::size_t corners = numbers.size() / size;
    return {.layer = layer, .numbers = std::move(numbers), .weights = std::vector<double>(corners, 1)};
}

std::string written(const std::string &bytes, const CornerMap &map) {
    return withVertexMap(bytes, kName, readObject(bytes, kName), map);
}

// The maps of that name in one layer, those of points first.
std::vector<ObjectVertexMap> mapsIn(const std::string &bytes, std::size_t layer = 0, const std::string &name = "AO") {
    std::vector<ObjectVertexMap> maps = readObject(bytes, kName).layers.at(layer).maps;
    std::erase_if(maps, [&](const ObjectVertexMap &map) { return map.name != name; });
    return maps;
}

// The bytes of an object without its chunks of maps of that name.
std::string withoutMaps(const std::string &bytes, const std::string &name = "AO") {
    const IffFile file(bytes, kName);
    std::string left = bytes.substr(0, 4) + bytes.substr(8, 4);
    for (const Chunk &chunk : file.chunks()) {
        ChunkCursor cursor(file, chunk);
        const bool isMap = chunk.id == fourCC("VMAP") || chunk.id == fourCC("VMAD");
        if (isMap && (cursor.u4(), cursor.u2(), cursor.text("the name")) == name) continue;
        left += bytes.substr(chunk.contents.at - 8, 8 + chunk.contents.size + chunk.contents.size % 2);
    }
    return left;
}

const std::string kBody = pointsChunk(kSixPoints) + polygonsChunk("FACE", kSquareAndTriangle);
const std::string kSurfaces =
    polygonTagsChunk("SURF", {{0, 0}, {1, 0}}) + cornerMapChunk("TXUV", 2, "UV", {{2, 1, {0, 1}}});
const std::string kObject =
    objectFile(tagsChunk({"Clay"}) + layerChunk(0, 0, "") + kBody + kSurfaces + chunk("ODD ", "abc"));

} // namespace

TEST(VertexMapWriter, GivesPointsTheMeanOfTheirCorners) {
    CornerMap map = weights({ofLayer(0, {0, 0.1F, 0.2F, 0.304F, 0.3F, 0.2F, 0.5F})});
    map.layers[0].weights[3] = 3; // of the square's corner at point 3; that of the triangle has 1
    const std::string bytes = written(kObject, map);
    const std::vector<ObjectVertexMap> maps = mapsIn(bytes);
    ASSERT_EQ(maps.size(), 1U);
    EXPECT_EQ(maps[0].type, fourCC("WGHT"));
    EXPECT_FALSE(maps[0].isOfCorners);
    EXPECT_EQ(maps[0].points, (std::vector<std::uint32_t>{0, 1, 2, 3, 5})); // no polygon has point 4
    ASSERT_EQ(maps[0].numbers.size(), 5U);
    EXPECT_FLOAT_EQ(maps[0].numbers[2], 0.2F);
    EXPECT_FLOAT_EQ(maps[0].numbers[3], (3 * 0.304F + 0.3F) / 4);
    EXPECT_FLOAT_EQ(maps[0].numbers[4], 0.5F);
}

TEST(VertexMapWriter, LeavesAllOtherBytesAsTheyWere) {
    const std::string bytes = written(kObject, weights({ofLayer(0, {0, 0, 0, 0, 1, 1, 1})}));
    EXPECT_EQ(mapsIn(bytes).size(), 2U);
    EXPECT_EQ(withoutMaps(bytes), withoutMaps(kObject));
    const std::string tail = "after the form";
    EXPECT_TRUE(written(kObject + tail, weights({ofLayer(0, {0, 0, 0, 0, 1, 1, 1})})).ends_with(tail));
    // The map of points precedes the polygons, that of corners follows their tags and other maps.
    EXPECT_LT(bytes.find("VMAP"), bytes.find("POLS"));
    EXPECT_GT(bytes.rfind("VMAD"), bytes.find("TXUV"));
    EXPECT_LT(bytes.rfind("VMAD"), bytes.find("ODD "));
}

TEST(VertexMapWriter, GivesCornersTheirOwnValuesWhereTheyDiffer) {
    const std::string bytes = written(kObject, weights({ofLayer(0, {0, 0, 0.5F, 0, 0, 1, 1})}));
    const std::vector<ObjectVertexMap> maps = mapsIn(bytes);
    ASSERT_EQ(maps.size(), 2U);
    EXPECT_FLOAT_EQ(maps[0].numbers[2], 0.75F);
    ASSERT_TRUE(maps[1].isOfCorners);
    EXPECT_EQ(maps[1].points, (std::vector<std::uint32_t>{2, 2}));
    EXPECT_EQ(maps[1].polygons, (std::vector<std::uint32_t>{0, 1}));
    EXPECT_EQ(maps[1].numbers, (std::vector<float>{0.5F, 1}));
}

TEST(VertexMapWriter, WritesSeveralNumbersOfAValue) {
    std::vector<float> numbers;
    for (int corner = 0; corner < 7; ++corner) numbers.insert(numbers.end(), {0.25F, -1, 8});
    CornerMap map = weights({ofLayer(0, numbers, 3)});
    map.type = fourCC("RGB ");
    map.size = 3;
    const std::vector<ObjectVertexMap> maps = mapsIn(written(kObject, map));
    ASSERT_EQ(maps.size(), 1U);
    EXPECT_EQ(maps[0].size, 3U);
    EXPECT_EQ(std::vector<float>(maps[0].numbers.begin(), maps[0].numbers.begin() + 3),
              (std::vector<float>{0.25F, -1, 8}));
}

TEST(VertexMapWriter, LeavesOutCornersWithoutAValue) {
    const std::string bytes = written(kObject, weights({ofLayer(0, {kNone, kNone, kNone, kNone, 1, 0, 0.5F})}));
    const std::vector<ObjectVertexMap> maps = mapsIn(bytes);
    ASSERT_EQ(maps.size(), 1U);
    EXPECT_EQ(maps[0].points, (std::vector<std::uint32_t>{2, 3, 5}));
    EXPECT_EQ(maps[0].numbers, (std::vector<float>{0, 1, 0.5F}));
}

TEST(VertexMapWriter, ReplacesTheMapOfThatTypeAndName) {
    const CornerMap first = weights({ofLayer(0, {0, 0, 0, 0, 1, 1, 1})}),
                    second = weights({ofLayer(0, {1, 0, 1, 0, 1, 0, 1})});
    const std::string once = written(kObject, second);
    EXPECT_EQ(written(once, second), once);
    EXPECT_EQ(written(written(kObject, first), second), once);

    const std::string kept = mapChunk("RGB ", 3, "AO", {{0, {1, 1, 1}}}) + mapChunk("WGHT", 1, "Other", {{0, {1}}});
    const std::string replaced = chunk("VMPA", words({0, 0, 0, 6})) + mapChunk("WGHT", 1, "AO", {{4, {1}}});
    const std::string other =
        objectFile(pointsChunk(kSixPoints) + kept + replaced + polygonsChunk("FACE", kSquareAndTriangle));
    const std::string without = objectFile(pointsChunk(kSixPoints) + kept + polygonsChunk("FACE", kSquareAndTriangle));
    EXPECT_EQ(written(other, second), written(without, second));
    EXPECT_EQ(mapsIn(written(other, second), 0, "Other").size(), 1U);
    EXPECT_EQ(mapsIn(written(other, second)).size(), 3U);
}

TEST(VertexMapWriter, LeavesPropertiesToTheMapsThatTheyPrecede) {
    const std::string properties = chunk("VMPA", words({0, 1, 0, 6})), uv = mapChunk("TXUV", 2, "UV", {{0, {0, 0}}});
    const std::string polygons = polygonsChunk("FACE", kSquareAndTriangle);
    const CornerMap map = weights({ofLayer(0, {0, 0, 0, 0, 1, 1, 1})});
    // The properties in the last two belong to no map that stays.
    for (const std::string &body : {properties + uv + polygons, polygons + properties,
                                    polygons + properties + properties + mapChunk("WGHT", 1, "AO", {{4, {1}}})}) {
        const std::string bytes = written(objectFile(pointsChunk(kSixPoints) + body), map);
        EXPECT_EQ(written(bytes, map), bytes);
        const ObjectGeometry geometry = readObject(bytes, kName);
        for (const ObjectVertexMap &one : geometry.layers[0].maps)
            EXPECT_EQ(one.subdivision, one.name == "UV" ? MapSubdivision::smooth : MapSubdivision::linear) << one.name;
    }
}

TEST(VertexMapWriter, ChangesOnlyLayersThatHaveValues) {
    const std::string map = mapChunk("WGHT", 1, "AO", {{0, {0.5F}}});
    const std::string other = pointsChunk(kSixPoints) + map + polygonsChunk("FACE", kSquareAndTriangle);
    // The first layer has no LAYR.
    const std::string bytes = written(objectFile(other + layerChunk(3, 0, "B") + other + layerChunk(4, 0, "C") + other),
                                      weights({ofLayer(1, {1, 1, 1, 1, 1, 1, 1})}));
    EXPECT_EQ(mapsIn(bytes, 0).at(0).numbers, std::vector<float>{0.5F});
    EXPECT_EQ(mapsIn(bytes, 1).at(0).numbers, std::vector<float>(5, 1.0F));
    EXPECT_EQ(mapsIn(bytes, 2).at(0).numbers, std::vector<float>{0.5F});
}

TEST(VertexMapWriter, CountsPointsAndPolygonsFromTheLastChunk) {
    const std::string bytes = written(
        objectFile(kBody + polygonsChunk("FACE", {{0, 1, 2}}) + kBody),
        weights({ofLayer(0, {0, 0, 0, 0, 0, 0, 0, /**/ 0, 0, 1, /**/ 0.5F, 0.5F, 0.5F, 0.5F, 0.5F, 0.5F, 0.25F})}));
    const std::vector<ObjectVertexMap> maps = mapsIn(bytes);
    ASSERT_EQ(maps.size(), 4U);
    EXPECT_EQ(maps[0].points, (std::vector<std::uint32_t>{0, 1, 2, 3, 5}));
    EXPECT_EQ(maps[1].polygons, (std::vector<std::uint32_t>{0, 1})); // of point 2
    EXPECT_EQ(maps[2].polygons, (std::vector<std::uint32_t>{2}));
    EXPECT_EQ(maps[3].points, (std::vector<std::uint32_t>{6, 7, 8, 9, 11}));
    EXPECT_EQ(maps[3].numbers.back(), 0.25F);
    EXPECT_EQ(withoutMaps(bytes), withoutMaps(objectFile(kBody + polygonsChunk("FACE", {{0, 1, 2}}) + kBody)));
}

TEST(VertexMapWriter, WritesLongIndices) {
    constexpr std::size_t kMany = 0xff02;
    std::string corners = big(3, 2);
    for (const std::size_t point : {kMany - 3, kMany - 2, kMany - 1})
        corners += point < 0xff00 ? big(point, 2) : big(0xff000000 | point, 4);
    const std::string bytes =
        written(objectFile(pointsChunk(std::vector<float>(3 * kMany)) + chunk("POLS", "FACE" + corners)),
                weights({ofLayer(0, {0, 0.5F, 1})}));
    const std::vector<ObjectVertexMap> maps = mapsIn(bytes);
    ASSERT_EQ(maps.size(), 1U);
    EXPECT_EQ(maps[0].points, (std::vector<std::uint32_t>{kMany - 3, kMany - 2, kMany - 1}));
    EXPECT_EQ(maps[0].numbers, (std::vector<float>{0, 0.5F, 1}));
}

TEST(VertexMapWriter, AddsPaddingThatTheLastChunkLacks) {
    const std::string unpadded = "ODD " + big(3, 4) + "abc", body = kBody + unpadded;
    const CornerMap map = weights({ofLayer(0, {0, 0, 0, 0, 1, 1, 1})});
    const std::string bytes = written("FORM" + big(4 + body.size(), 4) + "LWO2" + body, map);
    EXPECT_EQ(bytes.substr(bytes.size() - 3), "abc"); // nothing is added after it

    // A map whose name lacks its padding, too.
    const std::string odd = kBody + "VMAP" + big(9, 4) + "PICK" + big(0, 2) + std::string("ab\0", 3);
    const std::string added = written("FORM" + big(4 + odd.size(), 4) + "LWO2" + odd, map);
    EXPECT_EQ(mapsIn(added).size(), 2U);
    EXPECT_EQ(written(added, map), added);
}

TEST(VertexMapWriter, RefusesOldForms) {
    const std::string bytes = oldObjectFile(chunk("PNTS", reals({0, 0, 0})));
    EXPECT_EQ(
        errorOf([&] { written(bytes, weights({})); }),
        "made.lwo: byte 8: the object file has the form LWOB, which has no vertex maps. Save it in the form LWO2, "
        "that of LightWave 6 and later");
}
