// The geometry of objects of the form LWO2, chunk by chunk.
#include "tests/object/object_bytes.h"

#include "host/object/object_geometry.h"

#include <limits>

namespace velm::host::test {
namespace {

using Indices = std::vector<std::uint32_t>;
using Point = std::array<float, 3>;

ObjectGeometry read(const std::string &chunks) { return readObject(objectFile(chunks), "a.lwo"); }

std::string refusalOf(const std::string &chunks) {
    return errorOf([&] { read(chunks); });
}

// The losses of an object, one a line.
std::string lossesOf(const ObjectGeometry &geometry) {
    std::string lines;
    for (const Losses::Text &loss : geometry.losses.texts()) lines += loss.brief + ": " + loss.message + '\n';
    return lines;
}

const std::string kPoints = pointsChunk(kSixPoints), kPolygons = polygonsChunk("FACE", kSquareAndTriangle);

TEST(NewObject, AnEmptyFormHasNothing) {
    const ObjectGeometry geometry = read("");
    EXPECT_TRUE(geometry.layers.empty());
    EXPECT_TRUE(geometry.tags.empty());
    EXPECT_TRUE(surfacesOfPolygons(geometry).empty());
    EXPECT_EQ(lossesOf(geometry), "");
}

TEST(NewObject, PointsAndPolygonsAreThoseOfTheFile) {
    const ObjectGeometry geometry = read(kPoints + kPolygons);
    ASSERT_EQ(geometry.layers.size(), 1U) << "data before any layer make one";
    const ObjectLayer &layer = geometry.layers[0];
    EXPECT_EQ(layer.number, 0U);
    EXPECT_EQ(layer.points.size(), 6U);
    EXPECT_EQ(layer.points[5], (Point{2, 1, 0}));
    EXPECT_EQ(layer.corners, (Indices{0, 1, 2, 3, 3, 2, 5}));
    EXPECT_EQ(layer.ends, (Indices{4, 7}));
    ASSERT_EQ(layer.polygons.size(), 1U);
    EXPECT_EQ(layer.polygons[0].type, kFacePolygons);
    EXPECT_EQ(layer.polygons[0].count, 2U);
}

TEST(NewObject, NumbersThatAreNoneAreZero) {
    using Limits = std::numeric_limits<float>;
    const ObjectGeometry geometry = read(pointsChunk({Limits::quiet_NaN(), Limits::denorm_min(), -2}));
    EXPECT_EQ(geometry.layers[0].points[0], (Point{0, 0, -2}));
}

TEST(NewObject, TheUpperBitsOfACountAreFlags) {
    const ObjectGeometry geometry = read(kPoints + chunk("POLS", "FACE" + words({0xfc03, 0, 1, 2})));
    EXPECT_EQ(geometry.layers[0].corners, (Indices{0, 1, 2}));
}

TEST(NewObject, IndicesMayHaveFourBytes) {
    std::vector<float> coordinates(3 * 0xff02, 0);
    const std::string polygon = "FACE" + big(3, 2) + big(0xff00feff, 4) + big(0xff00ff00, 4) + big(0xff00ff01, 4);
    const std::string map = "WGHT" + words({1}) + cString("W") + big(0xff00ff01, 4) + reals({0.5F});
    const ObjectGeometry geometry = read(pointsChunk(coordinates) + chunk("POLS", polygon) + chunk("VMAP", map));
    EXPECT_EQ(geometry.layers[0].corners, (Indices{0xfeff, 0xff00, 0xff01}));
    EXPECT_EQ(geometry.layers[0].maps[0].points, (Indices{0xff01}));
}

TEST(NewObject, LayersHaveTheirOwnPointsAndPolygons) {
    const std::string pivot = words({7, 1}) + reals({1, 2, 3}) + cString("Wheels") + words({4});
    const ObjectGeometry geometry = read(chunk("LAYR", pivot) + pointsChunk({0, 0, 0}) + kPoints + kPolygons +
                                         chunk("BBOX", reals({-1, -2, -3, 4, 5, 6})) + layerChunk(4, 0, "") + kPoints +
                                         kPolygons + layerChunk(5, 0, "Last", words({0xffff})));
    ASSERT_EQ(geometry.layers.size(), 3U);
    const ObjectLayer &first = geometry.layers[0], &second = geometry.layers[1];
    EXPECT_EQ(first.number, 7U);
    EXPECT_TRUE(first.isHidden());
    EXPECT_EQ(first.name, "Wheels");
    EXPECT_EQ(first.pivot, (Point{1, 2, 3}));
    EXPECT_EQ(first.parent, 4U);
    ASSERT_TRUE(first.bounds);
    EXPECT_EQ((*first.bounds)[1], (Point{4, 5, 6}));
    EXPECT_EQ(first.corners, (Indices{1, 2, 3, 4, 4, 3, 6})) << "they count from the last chunk of points";
    EXPECT_FALSE(second.isHidden());
    EXPECT_FALSE(second.parent) << "the number may be missing";
    EXPECT_FALSE(second.bounds);
    EXPECT_EQ(second.corners, (Indices{0, 1, 2, 3, 3, 2, 5}));
    EXPECT_FALSE(geometry.layers[2].parent);
}

TEST(NewObject, PolygonsHaveSurfacesPartsAndSmoothingGroups) {
    const ObjectGeometry geometry = read(
        tagsChunk({"Red", "Body", "Blue", "1"}) + kPoints + kPolygons + polygonTagsChunk("SURF", {{1, 2}, {0, 0}}) +
        polygonTagsChunk("PART", {{0, 1}}) + polygonTagsChunk("SMGP", {{1, 3}}) + polygonTagsChunk("COLR", {{0, 0}}));
    const ObjectLayer &layer = geometry.layers[0];
    EXPECT_EQ(layer.surfaces, (Indices{0, 2}));
    EXPECT_EQ(layer.parts, (Indices{1, kNoTag}));
    EXPECT_EQ(layer.smoothingGroups, (Indices{kNoTag, 3}));
    EXPECT_EQ(geometry.surfaceOf(layer, 1), "Blue");
    EXPECT_EQ(surfacesOfPolygons(geometry), (std::vector<std::string>{"Red", "Blue"}));
}

TEST(NewObject, TagsCountTheirPolygonsFromTheLastChunk) {
    const ObjectGeometry geometry = read(tagsChunk({"A", "B"}) + kPoints + kPolygons + kPolygons +
                                         polygonTagsChunk("SURF", {{0, 1}}) + tagsChunk({"C"}));
    EXPECT_EQ(geometry.layers[0].surfaces, (Indices{kNoTag, kNoTag, 1, kNoTag}));
    EXPECT_EQ(geometry.tags, (std::vector<std::string>{"A", "B", "C"}));
    EXPECT_EQ(surfacesOfPolygons(geometry), (std::vector<std::string>{"Default", "B"}));
}

TEST(NewObject, SurfacesOfWhatIsNotDrawnAreNotAmongThoseOfItsPolygons) {
    const std::string line = polygonsChunk("FACE", {{0, 1}}), curve = polygonsChunk("CURV", {{0, 1, 2}});
    const ObjectGeometry geometry =
        read(tagsChunk({"Hidden", "Line", "Curve"}) + layerChunk(0, 1, "") + kPoints + kPolygons +
             polygonTagsChunk("SURF", {{0, 0}, {1, 0}}) + layerChunk(1, 0, "") + kPoints + line +
             polygonTagsChunk("SURF", {{0, 1}}) + curve + polygonTagsChunk("SURF", {{0, 2}}));
    EXPECT_TRUE(surfacesOfPolygons(geometry).empty());
}

TEST(NewObject, OtherPolygonsKeepTheirType) {
    const ObjectGeometry geometry = read(kPoints + polygonsChunk("PTCH", {{0, 1, 2}}) +
                                         polygonsChunk("CURV", {{0, 1}}) + polygonsChunk("SUBD", {{0, 1, 2, 3}}));
    const std::vector<ObjectPolygons> &polygons = geometry.layers[0].polygons;
    ASSERT_EQ(polygons.size(), 3U);
    EXPECT_TRUE(polygons[0].areDrawn() && polygons[0].areCage());
    EXPECT_EQ(polygons[1].type, fourCC("CURV"));
    EXPECT_FALSE(polygons[1].areDrawn());
    EXPECT_EQ(polygons[2].first, 2U);
    EXPECT_EQ(geometry.layers[0].ends, (Indices{3, 5, 9}));
}

// Their contents may be other than those of plain polygons.
TEST(NewObject, PolygonsOfUnknownTypesAreReadAsFarAsPossible) {
    for (const std::string &rest : {words({2, 0, 99}), words({5, 0, 1}), std::string("x"), words({1, 0xff00})}) {
        const ObjectGeometry geometry = read(kPoints + chunk("POLS", "ODD " + words({2, 0, 1}) + rest) + kPolygons);
        EXPECT_EQ(geometry.layers[0].ends, (Indices{2, 6, 9}));
        EXPECT_NE(lossesOf(geometry).find("could not be read to its end (byte 100)"), std::string::npos)
            << lossesOf(geometry);
    }
}

TEST(NewObject, MapsKeepTheirValues) {
    const ObjectGeometry geometry =
        read(kPoints + mapChunk("TXUV", 2, "Map", {{1, {0.25F, 0.5F}}, {3, {1, 0}}}) + kPolygons +
             cornerMapChunk("TXUV", 2, "Map", {{2, 1, {0.75F, 1}}}) + mapChunk("PICK", 0, "Set", {{4, {}}}));
    const std::vector<ObjectVertexMap> &maps = geometry.layers[0].maps;
    ASSERT_EQ(maps.size(), 3U);
    EXPECT_EQ(maps[0].type, fourCC("TXUV"));
    EXPECT_EQ(maps[0].size, 2U);
    EXPECT_EQ(maps[0].name, "Map");
    EXPECT_FALSE(maps[0].isOfCorners);
    EXPECT_EQ(maps[0].points, (Indices{1, 3}));
    EXPECT_EQ(maps[0].numbers, (std::vector<float>{0.25F, 0.5F, 1, 0}));
    EXPECT_TRUE(maps[1].isOfCorners);
    EXPECT_EQ(maps[1].polygons, (Indices{1}));
    EXPECT_EQ(maps[1].points, (Indices{2}));
    EXPECT_EQ(maps[2].points, (Indices{4}));
    EXPECT_TRUE(maps[2].numbers.empty());
}

TEST(NewObject, WhatRefersToNothingIsLeftOutAndCounted) {
    const ObjectGeometry geometry =
        read(tagsChunk({"A"}) + kPoints + polygonTagsChunk("SURF", {{0, 0}}) + kPolygons +
             polygonTagsChunk("SURF", {{2, 0}, {0, 1}, {1, 0}}) + mapChunk("WGHT", 1, "W", {{6, {1}}, {5, {2}}}) +
             cornerMapChunk("WGHT", 1, "W", {{0, 2, {3}}, {6, 0, {4}}, {0, 0, {5}}}) + chunk("ODD ", "x"));
    const ObjectLayer &layer = geometry.layers[0];
    EXPECT_EQ(layer.surfaces, (Indices{kNoTag, 0}));
    EXPECT_EQ(layer.maps[0].numbers, (std::vector<float>{2}));
    EXPECT_EQ(layer.maps[1].numbers, (std::vector<float>{5}));
    EXPECT_EQ(geometry.losses.count(Loss::danglingTag), 3U);
    EXPECT_EQ(geometry.losses.count(Loss::danglingMapValue), 3U);
    EXPECT_NE(lossesOf(geometry).find("3 tags for polygons are ignored: the object has no such polygons or tags (the "
                                      "first: byte 114)"),
              std::string::npos)
        << lossesOf(geometry);
    EXPECT_NE(lossesOf(geometry).find("unknown chunks: a chunk of an unknown kind is left out (ODD  at byte "),
              std::string::npos)
        << lossesOf(geometry);
}

TEST(NewObject, ChunksThatAreReadElsewhereAreNoLosses) {
    std::string chunks;
    for (const char *id : {"SURF", "CLIP", "ENVL", "VMPA", "DESC", "TEXT", "ICON"}) chunks += chunk(id, "abc");
    EXPECT_EQ(lossesOf(read(chunks)), "");
}

struct Malformed {
    const char *name;
    std::string chunks, refusal;
};
class MalformedObject : public testing::TestWithParam<Malformed> {};

TEST_P(MalformedObject, SaysChunkAndByte) { EXPECT_EQ(refusalOf(GetParam().chunks), GetParam().refusal); }

INSTANTIATE_TEST_SUITE_P(
    All, MalformedObject,
    testing::Values(
        Malformed{"LongChunk", "PNTS" + big(1000, 4) + "abc",
                  "a.lwo: byte 12: the chunk PNTS has 1000 bytes where 3 are left"},
        Malformed{"HalfAHead", "PNTS", "a.lwo: byte 12: the form ends within the head of a chunk"},
        Malformed{"NoName", big(0, 8), "a.lwo: byte 12: expected a chunk; found 0x00000000"},
        Malformed{"HalfAPoint", chunk("PNTS", reals({1, 2})),
                  "a.lwo: byte 20: the chunk PNTS: its size is not a multiple of the 12 bytes of a point"},
        Malformed{"Tag", chunk("TAGS", "abc"), "a.lwo: byte 20: a tag has no end"},
        Malformed{"Layer", chunk("LAYR", words({1})), "a.lwo: byte 22: the chunk LAYR: it ends within a number"},
        Malformed{"LayerName", chunk("LAYR", words({1, 0}) + reals({0, 0, 0}) + "ab"),
                  "a.lwo: byte 36: the name of the layer has no end"},
        Malformed{"LayerParent", layerChunk(0, 0, "a", "b"), "a.lwo: byte 38: the chunk LAYR: it ends within a number"},
        Malformed{"Bounds", chunk("BBOX", reals({1, 2, 3, 4, 5})),
                  "a.lwo: byte 40: the chunk BBOX: it ends within a number"},
        Malformed{"PolygonType", chunk("POLS", "FA"), "a.lwo: byte 20: the chunk POLS: it ends within a number"},
        Malformed{"PolygonWithoutPoints", polygonsChunk("FACE", {{0, 1, 2}}),
                  "a.lwo: byte 26: the chunk POLS: polygon 0 has the point 0, and there are 0 points"},
        Malformed{"PolygonBeyondThePoints", kPoints + polygonsChunk("FACE", {{0, 1, 2}, {0, 6, 1}}),
                  "a.lwo: byte 116: the chunk POLS: polygon 1 has the point 6, and there are 6 points"},
        Malformed{"PolygonAfterANewLayer", kPoints + layerChunk(1, 0, "") + kPolygons,
                  "a.lwo: byte 132: the chunk POLS: polygon 0 has the point 0, and there are 0 points"},
        Malformed{"PolygonThatEnds", kPoints + chunk("POLS", "FACE" + words({3, 0, 1})),
                  "a.lwo: byte 110: the chunk POLS: it ends within a number"},
        Malformed{"CageThatEnds", kPoints + chunk("POLS", "PTCH" + words({3, 0, 1})),
                  "a.lwo: byte 110: the chunk POLS: it ends within a number"},
        Malformed{"LongIndexThatEnds", kPoints + chunk("POLS", "FACE" + words({1, 0xff00})),
                  "a.lwo: byte 108: the chunk POLS: it ends within a number"},
        Malformed{"PolygonTag", kPoints + kPolygons + chunk("PTAG", "SURF" + words({0})),
                  "a.lwo: byte 136: the chunk PTAG: it ends within a number"},
        Malformed{"MapName", chunk("VMAP", "TXUV" + words({2}) + "ab"),
                  "a.lwo: byte 26: the name of the map has no end"},
        Malformed{"MapValue", kPoints + chunk("VMAP", "TXUV" + words({2}) + cString("a") + words({0}) + reals({1})),
                  "a.lwo: byte 114: the chunk VMAP: it ends within a number"},
        Malformed{"CornerMapValue", kPoints + chunk("VMAD", "TXUV" + words({2}) + cString("a") + words({0})),
                  "a.lwo: byte 110: the chunk VMAD: it ends within a number"}),
    [](const auto &malformed) { return std::string(malformed.param.name); });

TEST(MalformedObjects, SayTheirForm) {
    EXPECT_EQ(errorOf([] { readObject("", "a.lwo"); }),
              "a.lwo: byte 0: this is no object file: it does not start with FORM");
    EXPECT_EQ(errorOf([] { readObject(oldObjectFile("", "LWO3"), "a.lwo"); }),
              "a.lwo: byte 8: the object file has the form LWO3; LWO2, LWOB and LWLO are read");
    EXPECT_EQ(errorOf([] { readObject("FORM" + big(5, 4) + "LWO2", "a.lwo"); }),
              "a.lwo: byte 4: the form has 5 bytes where 4 are there");
}

TEST(MalformedObjects, CutAnywhereTheySayWhere) {
    const std::string bytes =
        objectFile(tagsChunk({"A"}) + layerChunk(0, 0, "L") + kPoints + mapChunk("TXUV", 2, "M", {{0, {1, 2}}}) +
                   kPolygons + polygonTagsChunk("SURF", {{0, 0}}) + cornerMapChunk("TXUV", 2, "M", {{0, 0, {1, 2}}}));
    EXPECT_EQ(errorOf([&] { readObject(bytes, "a.lwo"); }), "");
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        EXPECT_TRUE(errorOf([&] { readObject(bytes.substr(0, length), "a.lwo"); }).starts_with("a.lwo: byte "));
        if (length < 12) continue;
        const std::string error = refusalOf(bytes.substr(12, length - 12));
        EXPECT_TRUE(error.empty() || error.starts_with("a.lwo: byte ")) << error;
    }
}

} // namespace
} // namespace velm::host::test
