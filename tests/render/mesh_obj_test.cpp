// The reader of OBJ files and of the files of materials that they name.
#include "host/base/error.h"
#include "host/render/geometry/mesh_formats.h"
#include "tests/render/same_meshes.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace velm::host::test {
namespace {

const std::string kObjModels = "/usr/share/assimp/models/OBJ/"; // of Debian's package assimp-testmodels

const MeshFormat &objFormat() {
    for (const MeshFormat *format : allMeshFormats())
        if (format->ending == std::string_view("obj")) return *format;
    throw std::runtime_error("OBJ is not read");
}

std::optional<std::string> contentsOf(const std::string &file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

// ---- Comparison with the mesh library ----

void expectSameMaterials(const Mesh &own, const Mesh &theirs) {
    ASSERT_EQ(own.materialValues.size(), theirs.materialValues.size());
    for (std::size_t i = 0; i < own.materialValues.size(); ++i) {
        const MeshMaterial &a = own.materialValues[i], &b = theirs.materialValues[i];
        const auto numbers = [](const MeshMaterial &of) {
            return std::array{of.colour[0], of.colour[1],       of.colour[2],  of.luminosity,
                              of.diffuse,   of.specular,        of.glossiness, of.reflection,
                              of.opacity,   of.refractionIndex, of.alphaCutoff};
        };
        EXPECT_EQ(a.name, b.name);
        const auto own11 = numbers(a), their11 = numbers(b);
        for (std::size_t k = 0; k < own11.size(); ++k) EXPECT_NEAR(own11[k], their11[k], 1e-6) << a.name << ' ' << k;
        EXPECT_EQ(a.doubleSided, b.doubleSided);
        ASSERT_EQ(a.textures.size(), b.textures.size()) << a.name;
        for (std::size_t k = 0; k < a.textures.size(); ++k) {
            EXPECT_EQ(a.textures[k].use, b.textures[k].use);
            EXPECT_EQ(a.textures[k].file, b.textures[k].file);
            EXPECT_EQ(a.textures[k].uvMap, b.textures[k].uvMap);
            EXPECT_EQ(a.textures[k].wrap, b.textures[k].wrap);
            EXPECT_EQ(a.textures[k].isAlpha, b.textures[k].isAlpha);
        }
    }
}

void expectWhatTheLibraryReads(const std::string &file) {
    const std::string bytes = contentsOf(file).value();
    const Transform turned(TransformDescription{.position = {1, 2, 3}, .rotation = {30, 40, 50}, .scale = {1, -2, 3}});
    for (const Transform &transform : {Transform(), turned}) {
        const auto own = plainObjMesh(bytes, file, objFormat(), transform, contentsOf);
        ASSERT_TRUE(own) << "it is left to the mesh library";
        const Mesh theirs = readWithAssimp(file, objFormat(), transform);
        expectSame(*own, theirs);
        expectSameMaterials(*own, theirs);
    }
}

class ObjModels : public testing::TestWithParam<const char *> {};

TEST_P(ObjModels, AreReadAsTheMeshLibraryReadsThem) { expectWhatTheLibraryReads(kObjModels + GetParam()); }

INSTANTIATE_TEST_SUITE_P(, ObjModels,
                         testing::Values("WusonOBJ.obj", "box.obj", "box_longline.obj", "box_mat_with_spaces.obj",
                                         "box_without_lineending.obj", "concave_polygon.obj", "cube_mtllib_after_g.obj",
                                         "cube_usemtl.obj", "empty_mat.obj", "multiple_spaces.obj", "regr01.obj",
                                         "regr_3429812.obj", "space_in_material_name.obj", "spider.obj"),
                         [](const auto &file) {
                             std::string name = file.param;
                             std::ranges::replace_if(
                                 name, [](char letter) { return !std::isalnum(letter); }, '_');
                             return name;
                         });

constexpr const char *kPaper = "mtllib a.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 0 1\nusemtl Paper\n"
                               "f 1/1 2/2 3/3\nusemtl Plain\nf 3 2 1\n";

TEST(MtlReader, GivesTheValuesOfTheMeshLibrary) {
    const TemporaryDirectory directory;
    const std::string file = directory.write("a.obj", kPaper);
    for (const char *lines :
         {"Kd 0.25 0.5 0.75\nKs 0.5 0.25 0.125\nNs 64\nNi 1.5\n"
          "d 0.75\nillum 2\nKa 1 1 1\nTf 1 1 1\n",
          "Kd 0 0 0\nKe 2 1 0.5\n", "Tr 0.25\n", "d 0\n", "d 1\nTr 1\n", "Ns 1000\nKs 1 1 1\n",
          "Kd 1 1 1\nmap_Kd maps\\my paper.png\n", "map_Kd -clamp on paper.png\nmap_d paper.png\n",
          "map_Kd -bm 1 -blendu off paper.png\nmap_Ke glow.png\nmap_Ks gloss.png\nmap_Bump -bm 0.5 bump.png\n",
          "map_Kd paper.png\nmap_d hole.png\nKe 1 1 1\nmap_Ke glow.png\nnorm n.png\ndisp d.png\n",
          "Kd 0 0 0\nmap_Kd paper.png\n", "  Kd\t0.5 0.5 0.5  \n\n# Kd 1 0 0\n", "Kd 1 0 0\nKd 0 1 0\n"}) {
        SCOPED_TRACE(lines);
        directory.write("a.mtl", std::string("newmtl Paper\n") + lines + "newmtl Plain\nnewmtl Unused\nKd 0 0 1\n");
        expectWhatTheLibraryReads(file);
    }
}

// ---- The forms of lines ----

const std::string kName = "a.obj", kPoints = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";

std::optional<Mesh> meshOf(const std::string &text, const std::map<std::string, std::string> &others = {}) {
    return plainObjMesh(text, kName, objFormat(), Transform(), [&](const std::string &name) {
        const auto found = others.find(name);
        return found == others.end() ? std::nullopt : std::optional(found->second);
    });
}

class SquareForms : public testing::TestWithParam<std::pair<const char *, const char *>> {};

// All are the same square, with UV coordinates and normals where they are given.
TEST_P(SquareForms, AreTheSameMesh) {
    const auto mesh = meshOf(GetParam().second);
    ASSERT_TRUE(mesh);
    ASSERT_EQ(mesh->points.size(), 4u);
    EXPECT_EQ(mesh->triangles.size(), 2u);
    EXPECT_EQ(mesh->polygonCount, 1u);
    for (std::size_t i = 0; i < 4; ++i) {
        const auto &[x, y, z] = mesh->points[i].position;
        EXPECT_EQ(x, i == 1 || i == 2 ? 1 : 0);
        EXPECT_EQ(y, i >= 2 ? 1 : 0);
        EXPECT_EQ(z, 0);
        if (!mesh->uvMaps.empty()) {
            EXPECT_EQ(mesh->uvMaps[0].values[i], (std::array<float, 2>{x, y}));
        }
        if (!mesh->normals.empty()) {
            EXPECT_EQ(mesh->normals[i], (std::array<float, 3>{0, 0, -1}));
        }
    }
    const std::string text = GetParam().second;
    EXPECT_EQ(mesh->uvMaps.empty(), text.find("vt") == std::string::npos);
    EXPECT_EQ(mesh->normals.empty(), text.find("vn") == std::string::npos);
}

#define POINTS "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
#define UVS "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"

INSTANTIATE_TEST_SUITE_P(
    , SquareForms,
    testing::Values(
        std::pair{"Plain", POINTS "f 1 2 3 4\n"}, std::pair{"WithoutLastEnd", POINTS "f 1 2 3 4"},
        std::pair{"Backwards", POINTS "v 9 9 9\nf -5 -4 -3 -2\n"}, std::pair{"Mixed", POINTS "f 1 -3 3 -1\n"},
        std::pair{"Uvs", POINTS UVS "f 1/1 2/2 3/3 4/4\n"},
        std::pair{"UvsBackwards", POINTS UVS "vt 5 5\nf -4/-5 -3/-4 -2/-3 -1/-2\n"},
        std::pair{"Normals", POINTS "vn 0 0 2\nf 1//1 2//1 3//1 4//1\n"},
        std::pair{"NormalsBackwards", POINTS "vn 0 0 2\nf 1//-1 2//-1 3//-1 4//-1\n"},
        std::pair{"All", POINTS UVS "vn 0 0 1\nf 1/1/1 2/2/1 3/3/1 4/4/1\n"},
        std::pair{"AllTwice", POINTS UVS "vt 1 1 0\nvn 0 0 1\nvn 0 0 3\nf 1/1/1 2/2/2 3/5/1 4/4/2\n"},
        std::pair{"LooseSlashes", POINTS "f 1/ 2// 3/ 4\n"}, std::pair{"BeforeItsPoints", "f 1 2 3 4\n" POINTS},
        std::pair{"OtherEnds", "v 0 0 0\r\nv 1 0 0\r\nv 1 1 0\r\nv 0 1 0\r\nf 1 2 3 4\r\n"},
        std::pair{"Blanks", "  v\t0 0 0 \n\tv  1 0  0\nv 1 1 0\n\n \nv 0 1 0\n f  1\t2 3 4 \n"},
        std::pair{"Comments", "# a square \\\n" POINTS "f 1 2 3 4 # 5 6\n#\n"},
        std::pair{"Continued", "v 0 \\\n0 0\nv 1 0 0\nv 1 1 \\\r\n 0\nv 0 1 0\nf 1 2\\\n 3\\\n\\\n 4\\"},
        std::pair{"Weights", "v 0 0 0 1\nv 2 0 0 2\nv 0.5 0.5 0 0.5\nv 0 1 0 1.0\nf 1 2 3 4\n"},
        std::pair{"Numbers", "v -0 +0 0e5\nv +1.0 0. .0\nv 1E0 10e-1 0\nv 0 100000000000000000000e-20 0\nf 1 2 3 4\n"},
        std::pair{"ByteOrderMark", "\xef\xbb\xbf" POINTS "f 1 2 3 4\n"},
        std::pair{"OtherKeywords", "o a\ng a b\ns 1\nvp 0 0\n" POINTS "s off\nmg 1 2\nlod 3\nf 1 2 3 4\nend\n"},
        std::pair{"UnusedValues", POINTS "v 5 5 5\nvq 1\nf 1 2 3 4\n"},
        std::pair{"RepeatedPoints", POINTS "v 1 0 -0\nv 1 1 0\nf 1 5 6 4\n"}),
    [](const auto &form) { return std::string(form.param.first); });

#undef POINTS
#undef UVS

TEST(ObjReader, LeavesColoursAndUtf16ToTheMeshLibrary) {
    EXPECT_FALSE(meshOf("v 0 0 0 1 0 0\nv 1 0 0 1 0 0\nv 0 1 0 1 0 0\nf 1 2 3\n"));
    EXPECT_FALSE(meshOf(std::string("\xff\xfev\0", 4)));
}

TEST(ObjReader, UsesNormalsOnlyIfAllPolygonsHaveThem) {
    const std::string normal = kPoints + "vn 0 0 1\n";
    EXPECT_EQ(meshOf(normal + "f 1//1 2//1 3//1\nf 1//1 3//1 4//1\n")->normals.size(), 4u);
    EXPECT_TRUE(meshOf(normal + "f 1//1 2//1 3//1\nf 1 3 4\n")->normals.empty());
    EXPECT_EQ(meshOf(normal + "f 1//1 2//1 3\n")->normals[2], (std::array<float, 3>{}));
}

TEST(ObjReader, LeavesUvCoordinatesOutWhereThereAreNone) {
    const auto mesh = meshOf(kPoints + "vt 0.5 0.25\nf 1/1 2/1 3/1\nf 1 3 4\n");
    ASSERT_EQ(mesh->uvMaps.size(), 1u);
    ASSERT_EQ(mesh->points.size(), 6u);
    EXPECT_EQ(mesh->uvMaps[0].values[0], (std::array<float, 2>{0.5f, 0.25f}));
    EXPECT_TRUE(std::isnan(mesh->uvMaps[0].values[5][0]));
}

TEST(ObjReader, ReadsManyVerticesAtOnePosition) {
    constexpr std::size_t kCount = 300;
    std::string text = kPoints;
    for (std::size_t i = 0; i < kCount; ++i) text += "vt " + std::to_string(i) + " 0\n";
    for (int round = 0; round < 2; ++round)
        for (std::size_t i = 1; i <= kCount; ++i) text += "f 1/" + std::to_string(i) + " 2/1 3/1\n";
    const auto mesh = meshOf(text);
    ASSERT_TRUE(mesh);
    ASSERT_EQ(mesh->points.size(), kCount + 2);
    ASSERT_EQ(mesh->triangles.size(), 2 * kCount);
    std::size_t sum = 0;
    for (std::size_t i = 0; i < 2 * kCount; ++i) {
        EXPECT_TRUE(std::ranges::equal(mesh->triangles[i].corners, mesh->triangles[i % kCount].corners)) << i;
        for (const std::uint32_t corner : mesh->triangles[i].corners)
            sum += static_cast<std::size_t>(mesh->uvMaps.at(0).values.at(corner)[0]);
    }
    EXPECT_EQ(sum, kCount * (kCount - 1)) << "each triangle has its own UV coordinates";
}

TEST(ObjReader, WarnsOfWhatIsNotDrawn) {
    const auto mesh = meshOf(kPoints + "l 1 2\nf 1 2 3\np 1\nf 1 2\nf\ncurv 0 1 1 2\n");
    ASSERT_EQ(mesh->warnings.size(), 1u);
    EXPECT_EQ(mesh->warnings[0].message,
              "5 lines, points, curves and free-form surfaces are not drawn (the first: line 5)");
    EXPECT_FALSE(mesh->warnings[0].isBesideMesh);
}

// ---- Errors ----

std::string refusalOf(const std::string &text) {
    try {
        if (!meshOf(text)) return "it is left to the mesh library";
    } catch (const InputError &error) {
        EXPECT_EQ(error.location().file, kName);
        return error.message();
    }
    return "it was read";
}

TEST(ObjReader, SaysWhatIsWrong) {
    const std::pair<std::string, std::string> cases[] = {
        {kPoints + "f 1 2 3\n", "it was read"},
        {kPoints, "the mesh has no polygons"},
        {kPoints + "f 1 1 2\n", "the mesh has no polygons"},
        {"v 0 0\n", "cannot read the mesh: line 1: a number is missing"},
        {"v 0 0 # 0\n", "cannot read the mesh: line 1: a number is missing"},
        {kPoints + "vn 0 0\n", "cannot read the mesh: line 5: a number is missing"},
        {kPoints + "vt\n", "cannot read the mesh: line 5: a number is missing"},
        {"v 0 0 \\\n 3.1+e2\n", "cannot read the mesh: line 1: \"3.1+e2\" is not a number"},
        {"#\n\\\n\nv 0 1,5 0\n", "cannot read the mesh: line 4: \"1,5\" is not a number"},
        {kPoints + "f 1 2 x\n",
         "cannot read the mesh: line 5: \"x\" is not a corner, such as \"1\", \"1/2\" or \"1/2/3\""},
        {kPoints + "f 1 2 3/x\n",
         "cannot read the mesh: line 5: \"3/x\" is not a corner, such as \"1\", \"1/2\" or \"1/2/3\""},
        {kPoints + "f 1 2 3.5\n",
         "cannot read the mesh: line 5: \"3.5\" is not a corner, such as \"1\", \"1/2\" or \"1/2/3\""},
        {kPoints + "vt 0 0\nvn 0 0 1\nf 1/1/1/1 2 3\n",
         "cannot read the mesh: line 7: \"1/1/1/1\" is not a corner, such as \"1\", \"1/2\" or \"1/2/3\""},
        {kPoints + "f 1//1 2//1 3//1\n",
         "cannot read the mesh: line 5: the corner \"1//1\" names a value that is not there: the file has 0 normals"},
        {kPoints + "f 1 2 5\n",
         "cannot read the mesh: line 5: the corner \"5\" names a value that is not there: the file has 4 points"},
        {kPoints + "f 0 1 2\n",
         "cannot read the mesh: line 5: the corner \"0\" names a value that is not there: the file has 4 points"},
        {"f -1 2 3\n" + kPoints,
         "cannot read the mesh: line 1: the corner \"-1\" names a value that is not there: the file has 4 points"},
        {kPoints + "f 1 2 99999999999999999999\n",
         "cannot read the mesh: line 5: the corner \"99999999999999999999\" names a value that is not there: the file "
         "has 4 points"},
        {kPoints + "vt 0 0\nf 1/2 2/2 3/2\n",
         "cannot read the mesh: line 6: the corner \"1/2\" names a value that is not there: the file has 1 texture "
         "coordinates"}};
    for (const auto &[text, message] : cases) EXPECT_EQ(refusalOf(text), message) << text;
}

// ---- Files of several parts, which are read at the same time ----

constexpr int kSide = 120;

// A wavy grid with a continued line and a comment after each row. Corners are counted from 1, or backwards.
std::string gridText(bool backwards) {
    std::string values, faces;
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            const std::string u = std::to_string(x), v = std::to_string(y);
            values += "v " + u + " \\\n" + v + " " + std::to_string((x * y) % 7) + "\nvt " + u + " " + v + "\n";
            if (x == 0 || y == 0) continue;
            const int corners[] = {x - 1 + (y - 1) * kSide, x + (y - 1) * kSide, x + y * kSide, x - 1 + y * kSide};
            const auto index = [&](int corner) {
                return std::to_string(backwards ? corner - (y * kSide + x + 1) : corner + 1);
            };
            std::string face = "f";
            for (const int corner : corners) face += " " + index(corner) + "/" + index(corner);
            (backwards ? values : faces) += face + "\n";
        }
        values += "# row \\\n";
    }
    return values + faces;
}

TEST(ThreadedObjReader, ReadsSeveralParts) {
    const std::string forwards = gridText(false), backwards = gridText(true);
    ASSERT_GT(backwards.size(), 600'000u) << "several parts";
    const auto a = meshOf(forwards), b = meshOf(backwards);
    ASSERT_TRUE(a && b);
    EXPECT_EQ(a->polygonCount, (kSide - 1u) * (kSide - 1u));
    EXPECT_EQ(a->points.size(), std::size_t{kSide} * kSide);
    expectSame(*a, *b);
    for (std::size_t i = 0; i < a->points.size(); ++i) {
        const auto &[x, y, z] = a->points[i].position;
        EXPECT_EQ(z, static_cast<float>(-((static_cast<int>(x) * static_cast<int>(y)) % 7)));
        EXPECT_EQ(a->uvMaps.at(0).values[i], (std::array<float, 2>{x, y}));
    }
}

TEST(ThreadedObjReader, NamesTheFirstBadLine) {
    std::string text = kPoints;
    for (int i = 0; i < 200'000; ++i) text += "f 1 2 3\n";
    for (const std::size_t line : {std::size_t{190'000}, std::size_t{40'000}, std::size_t{100'000}})
        text[kPoints.size() + line * 8 + 2] = 'x';
    EXPECT_EQ(refusalOf(text),
              "cannot read the mesh: line 40005: \"x\" is not a corner, such as \"1\", \"1/2\" or \"1/2/3\"");
}

// ---- Materials ----

std::vector<std::string> messagesOf(const Mesh &mesh) {
    std::vector<std::string> messages;
    for (const MeshWarning &warning : mesh.warnings) messages.push_back(warning.message);
    return messages;
}

const std::string kTwo = kPoints + "usemtl one\nf 1 2 3\nusemtl the other\nf 1 3 4\n";

TEST(ObjMaterials, MayBeInSeveralFiles) {
    const std::map<std::string, std::string> files = {
        {"a.mtl", "newmtl one\nKd 1 0 0\n"}, {"b.mtl", "newmtl the other\nKd 0 1 0\n"}, {"b c.mtl", "newmtl none\n"}};
    for (const char *lines : {"mtllib a.mtl\nmtllib b.mtl\n", "mtllib a.mtl b.mtl\n", "mtllib a.mtl b.mtl \\\n a.mtl\n",
                              "mtllib C:\\work\\a.mtl\nmtllib ./b c.mtl\nmtllib b.mtl\n"}) {
        SCOPED_TRACE(lines);
        const auto mesh = meshOf(lines + kTwo, files);
        EXPECT_EQ(mesh->materials, (std::vector<std::string>{"one", "the other"}));
        ASSERT_EQ(mesh->materialValues.size(), 2u);
        EXPECT_EQ(mesh->materialValues[0].colour, (std::array<double, 3>{1, 0, 0}));
        EXPECT_EQ(mesh->materialValues[1].colour, (std::array<double, 3>{0, 1, 0}));
    }
}

TEST(ObjMaterials, WarnOfMissingFiles) {
    EXPECT_TRUE(meshOf("mtllib b.mtl\n" + kTwo, {{"a.mtl", "newmtl one\n"}})->warnings.empty())
        << "the one with the name of the mesh is read instead";
    EXPECT_EQ(messagesOf(*meshOf("mtllib b.mtl\nmtllib c.mtl\n" + kTwo)),
              std::vector<std::string>{"2 files of materials cannot be read (the first: \"b.mtl\")"});
    EXPECT_EQ(messagesOf(*meshOf("mtllib my b.mtl\n" + kTwo)),
              std::vector<std::string>{"a file of materials cannot be read (\"my b.mtl\")"});
    EXPECT_EQ(messagesOf(*meshOf("mtllib a.mtl b.mtl\n" + kTwo, {{"a.mtl", ""}})),
              std::vector<std::string>{"a file of materials cannot be read (\"b.mtl\")"});
}

TEST(ObjMaterials, WarnOfBadLinesAndOfPlacements) {
    const std::string used = kPoints + "vt 0 0\nmtllib a.mtl\nusemtl one\nf 1/1 2/1 3/1\n";
    const auto mesh =
        meshOf(used, {{"a.mtl", "Kd 1 1 1\nnewmtl one\nKd spectral a.rfl\nNs\nmap_Kd -s 2 2 -o 0.5 a.png\n"
                                "map_Bump -s 3 b.png\n"
                                "d -halo 0.5\nmap_Ke -s 1 1 1 -o 0 0 c 1.png\n"
                                "map_d -mm 0 1 -t 0 d.png\n"}});
    EXPECT_EQ(messagesOf(*mesh), (std::vector<std::string>{
                                     "a texture is not read (of the material \"one\")",
                                     "the placement of a texture is not read (of the material \"one\")",
                                     "2 lines of files of materials make no sense and are ignored (the first: a.mtl: "
                                     "line 3)"}));
    ASSERT_EQ(mesh->materialValues.size(), 1u);
    const MeshMaterial &one = mesh->materialValues[0];
    EXPECT_EQ(one.opacity, 0.5);
    EXPECT_EQ(one.texture(MeshTexture::Use::colour)->file, "a.png");
    EXPECT_EQ(one.texture(MeshTexture::Use::luminosity)->file, "c 1.png");
    EXPECT_EQ(one.texture(MeshTexture::Use::opacity)->file, "d.png");
}

TEST(ObjMaterials, OfOneNumberAreGrey) {
    const auto mesh = meshOf("mtllib a.mtl\n" + kTwo, {{"a.mtl", "newmtl one\nKd 0.5\n"}});
    EXPECT_EQ(mesh->materialValues.at(0).colour, (std::array<double, 3>{0.5, 0.5, 0.5}));
}

} // namespace
} // namespace velm::host::test
