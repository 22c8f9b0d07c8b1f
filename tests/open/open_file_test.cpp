#include "host/open/open_file.h"

#include "host/render/geometry/mesh_formats.h"
#include "host/session/session.h"
#include "tests/files/test_files.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace velm::host {
namespace {

using test::TemporaryDirectory;

constexpr const char *kTriangle = "v 0 0 0\nv 1 0 0\nv 0 3 0\nf 1 2 3\n";
constexpr const char *kSolid = "solid a\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\n"
                               "vertex 0 1 5\nendloop\nendfacet\nendsolid a\n";
constexpr const char *kScene = R"({"cameras": {"View": {"position": [0, 0, -9]}},
    "lights": {"Lamp": {"kind": "point", "position": [0, 5, 0]}}, "render": {"width": 40, "height": 20},
    "objects": {"Box": {"box": {"size": [2, 2, 2]}, "surface": "Clay"}}, "surfaces": {"Clay": {}}})";

std::string refusalOf(const std::string &file) {
    try {
        openFile({.file = file});
    } catch (const InputError &error) {
        return error.what();
    }
    return {};
}

SceneDescription completed(const OpenRequest &request) {
    MeshCache meshes;
    Warnings warnings(Warnings::Policy::goOn);
    return completeFile(openFile(request), meshes, warnings);
}

class OpenFile : public testing::Test {
  protected:
    TemporaryDirectory directory_;
};

TEST_F(OpenFile, TellsTheKindByTheContents) {
    EXPECT_STREQ(readerOf(directory_.write("a", kTriangle)).name, "OBJ");
    EXPECT_STREQ(readerOf(directory_.write("b.obj", kSolid)).name, "STL");
    EXPECT_STREQ(readerOf(directory_.write("c.txt", kScene)).name, "scene (JSON)");
    EXPECT_STREQ(readerOf(directory_.write("d.x", R"({"asset": {"version": "2.0"}})")).name, "glTF");
}

TEST_F(OpenFile, TellsTheKindByTheNameWhereTheContentsDoNot) {
    EXPECT_STREQ(readerOf(directory_.write("broken.JSON", "]")).name, "scene (JSON)");
    EXPECT_STREQ(readerOf(directory_.write("damaged.lwo", "FORN")).name, "LWO");
    EXPECT_STREQ(readerOf(directory_.write("asset.json", R"({"surfaces": {"asset": {}}})")).name, "scene (JSON)")
        << "the contents fit glTF, too";
}

TEST_F(OpenFile, AddsToALightWaveSceneWhatItDoesNotBring) {
    directory_.write("a.lwo", test::triangleObject("Red", ""));
    const std::string object = "LWSC\n5\nSolidBackdrop 1\nBackdropColor 0 0 1\nLoadObjectLayer 1 10000000 a.lwo\n";
    const std::string bare = directory_.write("bare.lws", object);
    const OpenedFile opened = openFile({.file = bare});
    EXPECT_STREQ(opened.reader->name, "LightWave scene");
    const SceneDescription scene = completed({.file = bare});
    EXPECT_EQ(additionsText(opened, scene), "a camera (three-quarter view), lights (studio)");
    EXPECT_EQ(scene.cameras.size(), 1u);
    EXPECT_EQ(scene.lights.size(), 3u);
    EXPECT_EQ(scene.objects.size(), 1u) << "no ground";
    EXPECT_EQ(scene.backdrop.colour, (Double3{0, 0, 1})) << "its own";
    const OpenRequest whole{.file = directory_.write("whole.lws", object + "AddLight 20000000\nAddCamera 30000000\n")};
    EXPECT_EQ(completed(whole).cameras.at(0).name, "Camera");
    EXPECT_EQ(completed(whole).lights.at(0).name, "Light");
    EXPECT_EQ(additionsText(openFile(whole), completed(whole)), "");
}

TEST_F(OpenFile, WarnsOfWhatALightWaveSceneHasBesides) {
    const std::string file =
        directory_.write("a.lws", "LWSC\n5\nEnableCaustics 1\nAddLight 20000000\nAddCamera 30000000\n");
    MeshCache meshes;
    Warnings warnings(Warnings::Policy::goOn), strict(Warnings::Policy::strict);
    completeFile(openFile({.file = file}), meshes, warnings);
    ASSERT_EQ(warnings.all().size(), 1u);
    EXPECT_EQ(warnings.all()[0].text(), file + ":3: caustics are not rendered");
    EXPECT_THROW(completeFile(openFile({.file = file}), meshes, strict), InputError);
}

TEST_F(OpenFile, ListsWhatIsReadWhereItRefuses) {
    for (const auto &[name, text] : {std::pair{"notes.txt", "to do"}, {"empty", ""}}) {
        const std::string why = refusalOf(directory_.write(name, text));
        EXPECT_TRUE(why.starts_with((directory_ / name) + ": ")) << why;
        for (const char *kind : {"scene (JSON)", "LightWave scene", "LWO", "glTF", "OBJ"})
            EXPECT_NE(why.find(kind), std::string::npos) << why;
    }
    EXPECT_NE(refusalOf("/nowhere/chair.lwo").find("/nowhere/chair.lwo"), std::string::npos);
}

TEST_F(OpenFile, EveryMeshFormatHasOneReader) {
    for (const FileReader &reader : fileReaders())
        EXPECT_EQ(std::ranges::count(fileReaders(), std::string(reader.ending), &FileReader::ending), 1)
            << reader.ending;
    EXPECT_EQ(readableKinds(), "scene (JSON), LightWave scene, " + meshFormats());
}

TEST_F(OpenFile, AddsToAMeshWhatItDoesNotBring) {
    const SceneDescription scene = completed({.file = directory_.write("sail.obj", kTriangle)});
    EXPECT_EQ(scene.name, "sail");
    ASSERT_EQ(scene.cameras.size(), 1U);
    EXPECT_EQ(scene.render.camera, scene.cameras[0].name);
    EXPECT_EQ(scene.lights.size(), 3U);
    ASSERT_EQ(scene.objects.size(), 2U);
    EXPECT_EQ(scene.objects[1].name, "Ground");
    EXPECT_NE(scene.backdrop.colour, Double3{});
    Warnings warnings(Warnings::Policy::strict);
    EXPECT_EQ(Session(scene, warnings).renderScene().triangleCount(), 3U);
    const OpenedFile opened = openFile({.file = directory_ / "sail.obj"});
    EXPECT_EQ(additionsText(opened, scene),
              "a camera (three-quarter view), lights (studio), a ground, a backdrop, a neutral surface");
}

TEST_F(OpenFile, HasNoGroundBetweenTheCameraAndTheObject) {
    const OpenRequest request{.file = directory_.write("sail.obj", kTriangle), .view = View::bottom};
    const SceneDescription scene = completed(request);
    EXPECT_EQ(scene.objects.size(), 1U);
    EXPECT_EQ(additionsText(openFile(request), scene),
              "a camera (bottom view), lights (studio), a backdrop, a neutral surface");
}

TEST_F(OpenFile, LeavesASceneAsItIs) {
    const std::string file = directory_.write("scene.json", kScene);
    EXPECT_EQ(completed({.file = file}), readScene(file, {}));
    EXPECT_EQ(additionsText(openFile({.file = file}), completed({.file = file})), "");
}

TEST_F(OpenFile, ReframesAndRelightsASceneThatAsksForIt) {
    const std::string file = directory_.write("scene.json", kScene);
    const SceneDescription before = readScene(file, {});
    const SceneDescription scene = completed({.file = file, .view = View::front, .rig = Rig::outdoor});
    ASSERT_EQ(scene.cameras.size(), 2U);
    EXPECT_EQ(scene.cameras[0], before.cameras[0]);
    EXPECT_EQ(scene.cameras[1].name, "View 2");
    EXPECT_EQ(scene.render.camera, "View 2");
    MeshCache meshes;
    EXPECT_EQ(scene.cameras[1].position, framed(boundsOf(scene, meshes), View::front, 2).position);
    ASSERT_EQ(scene.lights.size(), 1U);
    EXPECT_EQ(scene.lights[0].name, "Sun");
    EXPECT_EQ(scene.backdrop, before.backdrop);
    EXPECT_EQ(scene.objects, before.objects);
    EXPECT_TRUE(completed({.file = file, .rig = Rig::none}).lights.empty());
}

TEST_F(OpenFile, RelightsASceneWhoseCameraHasAParentOfNoSize) {
    const std::string file = directory_.write("scene.json", R"({
        "cameras": {"Main": {"position": [0, 0, -9], "parent": "Arm"}},
        "nulls": {"Arm": {"scale": {"keys": [{"time": 0, "value": [0, 0, 0]}]}}},
        "objects": {"Box": {"box": {}, "surface": "Clay"}}, "surfaces": {"Clay": {}}})");
    EXPECT_EQ(completed({.file = file, .rig = Rig::studio}).lights.size(), 3U);
}

TEST_F(OpenFile, ASceneWithoutCamerasNeedsAView) {
    const std::string file = directory_.write("scene.json", R"({"objects": {"Box": {"box": {}, "surface": "Clay"}},
        "surfaces": {"Clay": {}}})");
    EXPECT_NE(refusalOf(file).find("a scene needs \"cameras\""), std::string::npos);
    EXPECT_EQ(completed({.file = file, .view = View::top}).cameras.size(), 1U);
    const std::string empty = directory_.write("empty.json", "{}");
    EXPECT_THROW(completed({.file = empty, .view = View::top}), InputError);
}

TEST_F(OpenFile, FramesWhatStandsOnAFloor) {
    const auto cameraOf = [&](const std::string &floor) {
        const std::string objects = R"("objects": {"Box": {"box": {}, "surface": "Clay"})" + floor + "}";
        const std::string file = directory_.write("a.json", "{\"surfaces\": {\"Clay\": {}}, " + objects + "}");
        return completed({.file = file, .view = View::front}).cameras.back();
    };
    const std::string floor = R"(, "Floor": {"plane": {"width": 90, "depth": 90}, "surface": "Clay"})";
    EXPECT_EQ(cameraOf(floor), cameraOf(""));
}

TEST_F(OpenFile, TurnsFilesWhoseZIsUp) {
    const OpenedFile opened = openFile({.file = directory_.write("a.stl", kSolid)});
    MeshCache meshes;
    const Bounds bounds = boundsOf(opened.scene, meshes);
    const double expected[3][2] = {{0, 1}, {0, 5}, {0, 1}}; // of the file's x, z and y
    for (int axis = 0; axis < 3; ++axis)
        for (int end = 0; end < 2; ++end) EXPECT_NEAR(bounds.sides[axis][end], expected[axis][end], 1e-6) << axis;
}

TEST_F(OpenFile, ReplacesValuesInTheSceneThatAFileBecomes) {
    const std::vector<SceneOverride> overrides = {parseOverride("render.samples=3"),
                                                  parseOverride("objects.sail.position=[0,7,0]")};
    const SceneDescription scene = completed({.file = directory_.write("sail.obj", kTriangle), .overrides = overrides});
    EXPECT_EQ(scene.render.samples, 3);
    EXPECT_EQ(scene.objects[0].position[1], 7);
    EXPECT_GT(scene.cameras[0].position[1], 7);
    const std::vector<SceneOverride> wrong = {parseOverride("objects.Sale.position=[0,7,0]")};
    EXPECT_THROW(openFile({.file = directory_ / "sail.obj", .overrides = wrong}), InputError);
}

TEST_F(OpenFile, WarnsOfWhatAFileHasAndIsNotRead) {
    directory_.write("grey.mtl", "newmtl Grey\nKd 0.5 0.5 0.5\nmap_Kd grey.png\n");
    const std::string file = directory_.write("a.obj", std::string("mtllib grey.mtl\nusemtl Grey\n") + kTriangle);
    MeshCache meshes;
    Warnings warnings(Warnings::Policy::goOn);
    completeFile(openFile({.file = file}), meshes, warnings);
    ASSERT_EQ(warnings.all().size(), 1U);
    EXPECT_EQ(warnings.all()[0].text(), file + ": a texture is not read (of the material \"Grey\")")
        << "the polygon has no UV map";
    EXPECT_EQ(warnings.summary(), "1 warning: textures that are not read");
    Warnings asErrors(Warnings::Policy::strict);
    MeshCache others;
    EXPECT_THROW(completeFile(openFile({.file = file}), others, asErrors), InputError);
    Warnings none(Warnings::Policy::strict);
    EXPECT_NO_THROW(completeFile(openFile({.file = directory_.write("b.obj", kTriangle)}), meshes, none));
}

TEST_F(OpenFile, UsesTheSurfacesOfAnObject) {
    const std::string file = "/usr/share/assimp/models/LWO/LWO2/sphere_with_mat_gloss_10pc.lwo";
    const SceneDescription scene = completed({.file = file});
    EXPECT_EQ(scene.name, "sphere_with_mat_gloss_10pc");
    ASSERT_FALSE(scene.objects.front().surfaces.empty());
    EXPECT_TRUE(scene.objects.front().surfaces.front().fromObject);
    EXPECT_EQ(std::ranges::count(scene.surfaces, "Neutral", &SurfaceDescription::name), 0);
    Warnings warnings(Warnings::Policy::goOn);
    const Session session(scene, warnings);
    EXPECT_GT(session.renderScene().triangleCount(), 2U);
}

// One polygon without a surface, and a surface without polygons.
TEST_F(OpenFile, GivesPolygonsWithoutASurfaceOne) {
    const std::string unused = test::chunk("SURF", test::cString("Unused") + test::cString(""));
    const std::string file = directory_.write("bare.lwo", test::triangleObject("Bare", unused));
    const SceneDescription scene = completed({.file = file});
    Warnings warnings(Warnings::Policy::goOn);
    EXPECT_NO_THROW(Session(scene, warnings));
}

TEST_F(OpenFile, HandsTheMeshesOver) {
    const OpenedFile opened = openFile({.file = directory_.write("sail.obj", kTriangle)});
    MeshCache meshes;
    Warnings warnings(Warnings::Policy::strict);
    const SceneDescription scene = completeFile(opened, meshes, warnings);
    std::filesystem::remove(directory_ / "sail.obj");
    EXPECT_NO_THROW(Session(scene, warnings, &meshes)) << "the file is not read again";
    EXPECT_THROW(Session(scene, warnings, &meshes), InputError) << "the mesh was taken";
}

} // namespace
} // namespace velm::host
