// Scenes that are read, written and read again.
#include "host/scene/format/write_scene.h"

#include "host/graph/server_list.h"
#include "host/io/files.h"
#include "host/scene/build/describe_network.h"
#include "host/scene/build/scene_surfaces.h"
#include "tests/files/test_files.h"
#include "tests/scene/compare.h"
#include "tests/scene/scene_text.h"
#include "tests/scene/schema_example.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <filesystem>
#include <fmt/format.h>

namespace velm::host::test {
namespace {

namespace fs = std::filesystem;

// Reads a scene and expects that writing loses nothing: the written text reads as the same description, and writing
// that gives the same text.
void expectKept(const std::string &text, const std::string &file, const SearchPath &path = {}) {
    SCOPED_TRACE(file);
    const SceneDescription scene = readSceneText(text, file, path);
    const std::string directory = fs::path(file).parent_path().string();
    const std::string written = writeScene(scene, directory);
    const SceneDescription again = readSceneText(written, file, path);
    EXPECT_EQ(withoutLocations(again), withoutLocations(scene)) << written;
    EXPECT_EQ(writeScene(again, directory), written);
    EXPECT_TRUE(written.ends_with("}\n"));
}

std::vector<fs::path> filesIn(const std::string &directory, const char *extension) {
    std::vector<fs::path> files;
    for (const auto &entry : fs::directory_iterator(fs::path(VELM_SOURCE_DIR) / directory))
        if (entry.path().extension() == extension) files.push_back(entry.path());
    std::ranges::sort(files);
    return files;
}

TEST(WriteScene, KeepsEveryExample) {
    const SearchPath path = makeSearchPath({}, nullptr);
    int read = 0;
    for (const fs::path &file : filesIn("examples", ".json")) {
        try {
            readScene(file.string(), path);
        } catch (const InputError &error) {
            // Some need meshes from packages that may not be installed.
            EXPECT_NE(std::string(error.what()).find("there is no file"), std::string::npos) << error.what();
            continue;
        }
        expectKept(readFile(file.string()), file.string(), path);
        ++read;
    }
    EXPECT_GE(read, 8);
}

TEST(WriteScene, KeepsTheInputsOfTheFuzzer) {
    const std::vector<fs::path> files = filesIn("fuzz/regressions/scene_json", "");
    ASSERT_FALSE(files.empty());
    int read = 0;
    for (const fs::path &file : files) {
        const std::string text = readFile(file.string());
        if (!refusal(text).empty()) continue;
        expectKept(text, file.string());
        ++read;
    }
    EXPECT_GT(read, 0);
}

// A key that the writer lacked would show here.
TEST(WriteScene, KeepsEveryKeyOfTheSchema) {
    const TemporaryDirectory directory;
    directory.write("Name", "");
    for (const std::string &text : schemaExamples()) expectKept(text, directory / "scene.json");
}

TEST(WriteScene, KeepsEveryNumberToTheLastBit) {
    for (const double number : {0.1, -1.0 / 3, 1e300, DBL_MIN, DBL_TRUE_MIN, DBL_MAX, 9007199254740993.0, -2.0, 1e22}) {
        SceneDescription scene = read(R"({"cameras": {"Main": {}}})");
        scene.cameras[0].position = {number, -number, 1};
        const SceneDescription again = readSceneText(writeScene(scene, ""), "scene.json", {});
        EXPECT_EQ(again.cameras[0].position, scene.cameras[0].position);
    }
}

// Also where the numbers are those that a sequence has by default.
TEST(WriteScene, KeepsSequencesOfImages) {
    const TemporaryDirectory directory;
    directory.write("maps/fire_07.png", "");
    for (const std::string sequence :
         {R"({"first": 1, "last": 7, "offset": -2, "loop": true})", R"({"first": 0, "last": 9})"})
        expectKept(R"({"cameras": {"Main": {}}, "images": {"A": {"file": "maps/fire_##.png", "sequence": )" + sequence +
                       "}, \"B\": {\"file\": \"fire_##.png\", \"sequence\": {\"first\": 1, \"last\": 1}}}}",
                   directory / "scene.json", {.directories = {directory / "maps"}});
}

TEST(WriteScene, KeepsFiltersOfImages) {
    const std::string filters =
        R"([{"kind": "gamma", "amount": 0}, {"kind": "negative"}, {"kind": "hue", "amount": -0.1}])";
    expectKept(R"({"cameras": {"Main": {}}, "images": {"A": {"file": "a.png", "filters": )" + filters + "}}}",
               "scene.json");
}

TEST(WriteScene, LeavesDefaultsOut) {
    EXPECT_EQ(writeScene(read(R"({"cameras": {"Main": {"position": [0, 0, -5]}}, "render": {"samples": 1},
                                  "backdrop": {"kind": "plain"}, "surfaces": {"Clay": {"smoothingAngle": 89.5}}})"),
                         ""),
              "{\n  \"cameras\": {\n    \"Main\": {}\n  },\n  \"surfaces\": {\n    \"Clay\": {}\n  }\n}\n");
}

// Keys that do not apply to an object are not written, since the reader would refuse them.
TEST(WriteScene, LeavesOutWhatDoesNotApply) {
    SceneDescription scene = read(R"({"cameras": {"Main": {}}, "lights": {"L": {"kind": "area", "position": [0, 1, 0],
        "width": 3}}})");
    scene.lights[0].kind = LightDescription::Kind::point;
    scene.cameras[0].rotation = {1, 2, 3};
    scene.cameras[0].hasTarget = true;
    const std::string text = writeScene(scene, "");
    EXPECT_EQ(text.find("width"), std::string::npos) << text;
    EXPECT_EQ(text.find("rotation"), std::string::npos) << text;
    EXPECT_NO_THROW(read(text));
}

TEST(WriteScene, RefusesTwoObjectsOfOneName) {
    SceneDescription scene = read(R"({"cameras": {"Main": {}}})");
    scene.cameras.push_back(scene.cameras[0]);
    EXPECT_THROW(writeScene(scene, ""), InputError);
}

TEST(WriteScene, NamesFilesRelativeToItsDirectory) {
    const TemporaryDirectory directory;
    for (const char *file : {"scenes/near.hdr", "scenes/maps/far.hdr", "data/other.hdr"}) directory.write(file, "");
    const SceneDescription scene =
        readSceneText(R"({"cameras": {"Main": {}}, "images": {"A": {"file": "near.hdr"}, "B": {"file": "maps/far.hdr"},
                      "C": {"file": "other.hdr"}, "D": {"file": "absent.hdr", "source": "a shop"}}})",
                      directory / "scenes/a.json", {.directories = {directory / "data"}});
    const auto names = [&scene](const std::string &where) {
        const auto json = nlohmann::json::parse(writeScene(scene, where));
        std::vector<std::string> all;
        for (const auto &image : json.at("images")) all.push_back(image.at("file"));
        return all;
    };
    const std::string other = directory / "data/other.hdr";
    EXPECT_EQ(names(directory / "scenes"), (std::vector<std::string>{"near.hdr", "maps/far.hdr", other, "absent.hdr"}));
    EXPECT_EQ(names(directory / "./scenes/"), names(directory / "scenes"));
    EXPECT_EQ(names(directory / "scene"),
              (std::vector<std::string>{directory / "scenes/near.hdr", directory / "scenes/maps/far.hdr", other,
                                        "absent.hdr"}));
    EXPECT_EQ(names(directory.path().string())[1], "scenes/maps/far.hdr");
}

TEST(WriteScene, FindsFilesFromTheCurrentDirectory) {
    SceneDescription scene = read(R"({"cameras": {"Main": {}}, "images": {"A": {"file": "no such file"}}})");
    scene.images[0].notFound.clear();
    scene.images[0].file = "maps/a.hdr";
    for (const char *here : {"", "."}) {
        const std::string text = writeScene(scene, here);
        EXPECT_NE(text.find("\"maps/a.hdr\""), std::string::npos) << text;
    }
    const std::string above = writeScene(scene, "elsewhere");
    EXPECT_NE(above.find(fs::absolute("maps/a.hdr").string()), std::string::npos) << above;
}

// ---- Object files ----

class WriteOwnSurfaces : public testing::Test {
  protected:
    // Objects with the surfaces "Clay", which has a network, and "Plain", and an image that is not found.
    WriteOwnSurfaces() {
        directory_.write("small.lwo", smallObject());
        directory_.write("other.lwo", smallObject());
    }
    SceneDescription read(const std::string &rest) const { return readText(withCamera(rest)); }
    SceneDescription readText(const std::string &text) const {
        return readSceneText(text, directory_ / "scene.json", {});
    }
    static std::string withCamera(const std::string &rest) { return R"({"cameras": {"C": {}}, )" + rest + '}'; }
    std::string write(const SceneDescription &scene) const { return writeScene(scene, directory_.path().string()); }
    void expectKept(const std::string &rest) const { test::expectKept(withCamera(rest), directory_ / "scene.json"); }
    std::string refusal(const SceneDescription &scene) const {
        try {
            write(scene);
        } catch (const InputError &error) {
            return error.what();
        }
        return {};
    }

    TemporaryDirectory directory_;
};

constexpr const char *kTwoMeshes =
    R"("objects": {"A": {"mesh": {"file": "small.lwo"}}, "B": {"mesh": {"file": "other.lwo"}}})";

TEST_F(WriteOwnSurfaces, ComeAgainWithTheirFiles) {
    expectKept(kTwoMeshes);
    expectKept(R"("surfaces": {"from": "small.lwo"})");
    expectKept(R"("surfaces": {"from": "small.lwo", "Plain": {}},
                  "objects": {"A": {"mesh": {"file": "small.lwo"}, "materials": {"Clay": "Plain"}}})");
    expectKept(std::string(R"json("surfaces": {"Clay": {}, "Clay (small.lwo)": {}}, )json") + kTwoMeshes);
    const std::string text = write(read(kTwoMeshes));
    for (const char *absent : {"Clay", "Plain", "wall.jpg"}) EXPECT_EQ(text.find(absent), std::string::npos) << text;
}

TEST_F(WriteOwnSurfaces, AreDescribedOnceTheyWereChanged) {
    SceneDescription scene = read(kTwoMeshes);
    for (SurfaceDescription &surface : scene.surfaces)
        if (surface.name == "Plain") surface.smoothingAngle = 12;
    const SceneDescription again = readText(write(scene));
    ASSERT_EQ(again.surfaces.size(), scene.surfaces.size());
    const auto &plain = *std::ranges::find(again.surfaces, "Plain", &SurfaceDescription::name);
    EXPECT_TRUE(plain.saved.file.empty());
    EXPECT_EQ(plain.smoothingAngle, 12);
    for (std::size_t i = 0; i < 2; ++i)
        for (const SurfaceUse &use : scene.objects[i].surfaces) {
            const auto &uses = again.objects[i].surfaces;
            EXPECT_EQ(std::ranges::find(uses, use.material, &SurfaceUse::material)->surface, use.surface);
        }
}

TEST_F(WriteOwnSurfaces, WithNetworksNeedADescription) {
    SceneDescription scene = read(kTwoMeshes);
    SurfaceDescription &clay = scene.surfaces[0];
    ASSERT_EQ(clay.name, "Clay");
    clay.settings[0].value = Double3{0, 0, 1};
    EXPECT_NE(refusal(scene).find("the surface \"Clay\" of"), std::string::npos) << refusal(scene);
    {
        Warnings warnings(Warnings::Policy::goOn);
        const SceneSurfaces built(scene, serverList(), &warnings);
        const SurfaceDescription described = describeSurface(*built.surface("Clay"), DefaultSettings(serverList()));
        clay.settings = described.settings;
        clay.network = described.network;
        clay.saved = {};
    }
    const SceneDescription again = readText(write(scene));
    const auto &written = *std::ranges::find(again.surfaces, "Clay", &SurfaceDescription::name);
    EXPECT_EQ(written.settings.at(0).value, SettingValue(Double3{0, 0, 1}));
    EXPECT_EQ(written.network.nodes.at(0).server, "Weather");
    EXPECT_EQ(again.objects[0].surfaces[0].surface, "Clay");
}

TEST_F(WriteOwnSurfaces, GoWithTheLastObjectThatHasThem) {
    SceneDescription scene = read(kTwoMeshes);
    scene.objects.erase(scene.objects.begin());
    // "Clay (other.lwo)" would now be called "Clay".
    const SceneDescription again = readText(write(scene));
    EXPECT_EQ(again.surfaces.size(), 2u);
    EXPECT_EQ(again.objects[0].surfaces[0].surface, "Clay");
    EXPECT_EQ(again.surfaces[0].saved.file, directory_ / "other.lwo");
}

TEST_F(WriteOwnSurfaces, MustKeepTheNamesThatTheSceneUses) {
    SceneDescription scene = read(std::string(kTwoMeshes) + R"(, "surfaces": {"Paint": {}})");
    ObjectDescription &box = scene.objects.emplace_back();
    box.name = "Box";
    box.shape = BoxShape{};
    box.surfaces.push_back({.material = "", .surface = "Clay (other.lwo)", .location = {}});
    EXPECT_EQ(refusal(scene), "");
    scene.objects.erase(scene.objects.begin());
    EXPECT_NE(refusal(scene).find("the object \"Box\" has the surface \"Clay (other.lwo)\""), std::string::npos)
        << refusal(scene);
}

TEST_F(WriteOwnSurfaces, LeaveTheirImagesWhenTheFileIsNotReadAnyMore) {
    SceneDescription scene = read(std::string(kTwoMeshes) + R"(, "surfaces": {"Paint": {}})");
    ASSERT_EQ(scene.images.size(), 1u);
    for (ObjectDescription &object : scene.objects)
        object.surfaces = {{.material = "", .surface = "Paint", .location = {}}};
    const SceneDescription again = readText(write(scene));
    ASSERT_EQ(again.images.size(), 1u);
    EXPECT_EQ(again.images[0].name, "wall.jpg");
    EXPECT_EQ(again.images[0].file, scene.images[0].file);
    EXPECT_EQ(again.surfaces.size(), 1u);
}

} // namespace
} // namespace velm::host::test
