// Objects of LightWave 5 and earlier: the forms LWOB and LWLO.
#include "tests/object/object_bytes.h"

#include "host/object/object_geometry.h"
#include "host/object/old_surfaces.h"

#include <cmath>

namespace velm::host::test {
namespace {

using Indices = std::vector<std::uint32_t>;

ObjectGeometry read(const std::string &chunks) { return readObject(oldObjectFile(chunks), "a.lwo"); }

const std::string kPoints = pointsChunk(kSixPoints);
const std::string kNames = chunk("SRFS", cString("Red") + cString("Blue"));

constexpr std::size_t kMinus = 0x10000; // less a number is its negative in two bytes

TEST(OldObject, PolygonsAreFollowedByTheirSurface) {
    const ObjectGeometry geometry =
        read(kNames + kPoints + chunk("POLS", words({4, 0, 1, 2, 3, 2}) + words({3, 3, 2, 5, 1})));
    ASSERT_EQ(geometry.layers.size(), 1U);
    const ObjectLayer &layer = geometry.layers[0];
    EXPECT_EQ(layer.points.size(), 6U);
    EXPECT_EQ(layer.corners, (Indices{0, 1, 2, 3, 3, 2, 5}));
    EXPECT_EQ(layer.ends, (Indices{4, 7}));
    EXPECT_EQ(layer.polygons[0].type, kFacePolygons);
    EXPECT_EQ(surfacesOfPolygons(geometry), (std::vector<std::string>{"Blue", "Red"}));
}

TEST(OldObject, DetailsArePolygons) {
    // A square with two details, the first of which has the other surface; then a triangle.
    const std::string polygons = words({4, 0, 1, 2, 3, kMinus - 1, 2}) + words({3, 0, 1, 2, 2}) +
                                 words({3, 0, 2, 3, 1}) + words({3, 3, 2, 5, 2});
    const ObjectGeometry geometry = read(kNames + kPoints + chunk("POLS", polygons));
    EXPECT_EQ(geometry.layers[0].ends, (Indices{4, 7, 10, 13}));
    EXPECT_EQ(geometry.layers[0].surfaces, (Indices{0, 1, 0, 1}));
    EXPECT_TRUE(geometry.losses.texts().empty());
}

TEST(OldObject, NamesMayFollowThePolygons) {
    const ObjectGeometry geometry = read(kPoints + chunk("POLS", words({3, 0, 1, 2, 2})) + kNames);
    EXPECT_EQ(surfacesOfPolygons(geometry), (std::vector<std::string>{"Blue"}));
}

TEST(OldObject, SurfacesThatAreNotThereAreCounted) {
    const std::string polygons =
        words({3, 0, 1, 2, 3}) + words({3, 0, 1, 2, 0}) + words({3, 0, 1, 2, kMinus - 0x8000, 0});
    const ObjectGeometry geometry = read(kNames + kPoints + chunk("POLS", polygons));
    EXPECT_EQ(geometry.layers[0].surfaces, (Indices{kNoTag, kNoTag, kNoTag}));
    EXPECT_EQ(geometry.losses.count(Loss::danglingTag), 3U);
    EXPECT_EQ(surfacesOfPolygons(geometry), (std::vector<std::string>{"Default"}));
}

TEST(OldObject, CurvesAreCounted) {
    const ObjectGeometry geometry = read(kPoints + chunk("CRVS", words({3, 0, 1, 2, 0}) + words({2, 3, 4, 1})));
    EXPECT_EQ(geometry.losses.count(Loss::curve), 2U);
    EXPECT_EQ(geometry.losses.texts()[0].message, "2 curves are left out (the first: byte 100)");
}

TEST(OldObject, LayersHaveTheirOwnPoints) {
    const auto layer = [](std::size_t number, const char *name) {
        return chunk("LAYR", words({number, 1}) + cString(name));
    };
    const std::string polygon = chunk("POLS", words({3, 0, 1, 2, 1}));
    const ObjectGeometry geometry = readObject(
        oldObjectFile(kNames + layer(1, "Body") + kPoints + polygon + layer(3, "") + kPoints + polygon, "LWLO"),
        "a.lwo");
    ASSERT_EQ(geometry.layers.size(), 2U);
    EXPECT_EQ(geometry.layers[0].number, 1U);
    EXPECT_EQ(geometry.layers[0].name, "Body");
    EXPECT_FALSE(geometry.layers[0].isHidden()) << "the flag does not say so";
    EXPECT_EQ(geometry.layers[1].number, 3U);
    EXPECT_EQ(geometry.layers[1].corners, (Indices{0, 1, 2}));
}

TEST(OldObject, MalformedItSaysChunkAndByte) {
    const auto refusalOf = [](const std::string &chunks) { return errorOf([&] { read(chunks); }); };
    EXPECT_EQ(refusalOf(kPoints + chunk("POLS", words({3, 0, 1, 6, 1}))),
              "a.lwo: byte 106: the chunk POLS: polygon 0 has the point 6, and there are 6 points");
    EXPECT_EQ(refusalOf(kPoints + chunk("POLS", words({3, 0, 1, 2}))),
              "a.lwo: byte 108: the chunk POLS: it ends within a number");
    EXPECT_EQ(refusalOf(kPoints + chunk("POLS", words({3, 0, 1, 2, kMinus - 1}))),
              "a.lwo: byte 110: the chunk POLS: it ends within a number");
    EXPECT_EQ(refusalOf(chunk("CRVS", words({3, 0}))), "a.lwo: byte 24: the chunk CRVS: it ends within a number");
    EXPECT_EQ(refusalOf(chunk("SRFS", "ab")), "a.lwo: byte 20: the name of a surface has no end");
    EXPECT_EQ(refusalOf(chunk("LAYR", words({1}))), "a.lwo: byte 22: the chunk LAYR: it ends within a number");
}

// ---- Surfaces ----

std::vector<OldSurface> surfacesIn(const std::string &chunks) {
    return readOldSurfaces(oldObjectFile(chunks), "a.lwo");
}

SurfaceChunkValues valuesOf(const std::string &subChunks) {
    return surfacesIn(chunk("SURF", cString("A") + subChunks)).at(0).values;
}

TEST(OldSurfaces, AreInTheOrderOfTheFile) {
    const std::vector<OldSurface> surfaces =
        surfacesIn(kNames + chunk("SURF", cString("Blue")) + kPoints + chunk("SURF", cString("Red")));
    ASSERT_EQ(surfaces.size(), 2U);
    EXPECT_EQ(surfaces[0].name, "Blue");
    EXPECT_EQ(surfaces[1].name, "Red");
}

TEST(OldSurfaces, HaveTheUnitsOfNewOnes) {
    const SurfaceChunkValues values =
        valuesOf(subChunk("COLR", std::string("\xff\x33\0\x99", 4)) + subChunk("LUMI", words({64})) +
                 subChunk("DIFF", words({256})) + subChunk("SPEC", words({128})) + subChunk("REFL", words({0})) +
                 subChunk("TRAN", words({32})) + subChunk("RIND", reals({1.5F})));
    EXPECT_EQ(values.colour, (std::array<float, 3>{1, 0.2F, 0}));
    EXPECT_EQ(values.luminosity, 0.25F);
    EXPECT_EQ(values.diffuse, 1.0F);
    EXPECT_EQ(values.specular, 0.5F);
    EXPECT_EQ(values.reflection, 0.0F);
    EXPECT_EQ(values.transparency, 0.125F);
    EXPECT_EQ(values.refractionIndex, 1.5F);
    EXPECT_FALSE(values.glossiness);
    EXPECT_FALSE(valuesOf("").colour);
}

TEST(OldSurfaces, ExactValuesReplaceRoundedOnes) {
    const std::string exact = subChunk("VLUM", reals({0.1F})) + subChunk("VDIF", reals({0.2F})) +
                              subChunk("VSPC", reals({0.3F})) + subChunk("VRFL", reals({0.4F})) +
                              subChunk("VTRN", reals({0.5F}));
    for (const std::string &rounded : {std::string(), subChunk("DIFF", words({256})) + subChunk("TRAN", words({7}))}) {
        const SurfaceChunkValues values = valuesOf(exact + rounded);
        EXPECT_EQ(values.luminosity, 0.1F);
        EXPECT_EQ(values.diffuse, 0.2F);
        EXPECT_EQ(values.specular, 0.3F);
        EXPECT_EQ(values.reflection, 0.4F);
        EXPECT_EQ(values.transparency, 0.5F);
    }
}

// An exponent of 2^(10 g + 2): 20 % are 16, 40 % are 64, 60 % are 256, 80 % are 1024.
TEST(OldSurfaces, HighlightsKeepTheirExponent) {
    for (const unsigned exponent : {16U, 64U, 256U, 1024U, 50U}) {
        const auto glossiness = valuesOf(subChunk("GLOS", words({exponent}))).glossiness;
        ASSERT_TRUE(glossiness);
        EXPECT_NEAR(std::exp2(10 * *glossiness + 2), static_cast<double>(exponent),
                    1e-4 * static_cast<double>(exponent));
    }
    EXPECT_EQ(valuesOf(subChunk("GLOS", words({0}))).glossiness, 0.0F);
}

TEST(OldSurfaces, FlagsTellSmoothingAndSides) {
    const std::string angle = subChunk("SMAN", reals({0.5F}));
    EXPECT_EQ(valuesOf(angle).smoothingAngle, 0.0F) << "without the flag";
    EXPECT_EQ(valuesOf(angle + subChunk("FLAG", words({4}))).smoothingAngle, 0.5F);
    EXPECT_NEAR(*valuesOf(subChunk("FLAG", words({4}))).smoothingAngle, 1.5620697, 1e-6); // 89.5 degrees
    EXPECT_EQ(valuesOf("").sides, 1);
    EXPECT_EQ(valuesOf(subChunk("FLAG", words({0x100}))).sides, 3);
}

TEST(OldSurfaces, MalformedTheySayChunkAndByte) {
    const auto refusalOf = [](const std::string &chunks) { return errorOf([&] { surfacesIn(chunks); }); };
    EXPECT_EQ(refusalOf(chunk("SURF", "ab")), "a.lwo: byte 20: the name of a surface has no end");
    EXPECT_EQ(refusalOf(chunk("SURF", cString("A") + "CO")),
              "a.lwo: byte 22: the surface ends within the head of a sub-chunk");
    EXPECT_EQ(refusalOf(chunk("SURF", cString("A") + subChunk("DIFF", ""))),
              "a.lwo: byte 28: the chunk DIFF: it ends within a number");
    EXPECT_EQ(refusalOf(chunk("SURF", cString("A") + subChunk("COLR", "abc"))),
              "a.lwo: byte 30: the chunk COLR: it ends within a number");
}

TEST(OldSurfaces, AreNotReadFromWhatIsNoObject) {
    for (const char *bytes : {"", "FORM", "none of this is a form"})
        EXPECT_EQ(errorOf([bytes] { readOldSurfaces(bytes, "a.lwo"); }),
                  "a.lwo: byte 0: this is no object file: it does not start with FORM");
}

TEST(OldSurfaces, AreThoseOfTheOldForms) {
    EXPECT_TRUE(isOldObject(oldObjectFile("")));
    EXPECT_TRUE(isOldObject(oldObjectFile("", "LWLO")));
    EXPECT_FALSE(isOldObject(objectFile("")));
    EXPECT_FALSE(isOldObject("FORM"));
}

} // namespace
} // namespace velm::host::test
