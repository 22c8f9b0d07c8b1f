// "velm files" and "velm archive".
#include "host/cli/scene_archive.h"

#include "tests/cli/program.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <iterator>

namespace velm::host {
namespace {

namespace fs = std::filesystem;
using test::TemporaryDirectory;

constexpr const char *kObj = "mtllib stone.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl Grey\nf 1 2 3\n";
constexpr const char *kMaterials = "newmtl Grey\nKd 0.5 0.5 0.5\n";

// A scene in "work" with meshes of one name in two directories, one of which has a file of materials.
class Archives : public testing::Test {
  protected:
    TemporaryDirectory directory_;
    std::string scene_ = directory_.write("work/test.json", R"({
        "render": {"width": 16, "height": 12, "camera": "Main"},
        "cameras": {"Main": {"position": [0.3, 0.3, -2]}},
        "lights": {"Key": {"kind": "distant", "position": [1, 2, -3]}},
        "images": {"Sky": {"file": "sky.png"}, "Gone": {"file": "gone.png"}},
        "backdrop": {"kind": "image", "image": "Sky"},
        "surfaces": {"Stone": {}},
        "objects": {"A": {"mesh": {"file": "a/stone.obj"}, "surface": "Stone"},
                    "B": {"mesh": {"file": "b/stone.obj"}, "surface": "Stone", "position": [0.5, 0, 1]},
                    "C": {"mesh": {"file": "a/stone.obj"}, "surface": "Stone", "position": [-0.5, 0, 1]}}
    })");

    void SetUp() override {
        directory_.write("work/a/stone.obj", kObj);
        directory_.write("work/a/stone.mtl", kMaterials);
        directory_.write("work/b/stone.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 0\nf 1 2 4 3\n");
        fs::copy(VELM_SOURCE_DIR "/examples/robin.png", directory_ / "work/sky.png");
    }
    std::string file(const std::string &name) const { return directory_ / name; }
    static std::string read(const std::string &name) {
        std::ifstream stream(name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    std::vector<std::string> filesBelow(const std::string &name) const {
        std::vector<std::string> names;
        for (const auto &entry : fs::recursive_directory_iterator(file(name)))
            if (!entry.is_directory()) names.push_back(fs::relative(entry.path(), file(name)));
        std::sort(names.begin(), names.end());
        return names;
    }
};

TEST_F(Archives, FilesListsEachFileOnce) {
    const test::Outcome outcome = test::velm({"files", scene_}, false);
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_EQ(outcome.out, scene_ + '\n' + file("work/a/stone.obj") + '\n' + file("work/a/stone.mtl") + '\n' +
                               file("work/b/stone.obj") + '\n' + file("work/sky.png") + '\n');
    EXPECT_NE(outcome.err.find("velm: warning: " + scene_ + ":5: images.Gone.file: there is no file \"gone.png\""),
              std::string::npos)
        << outcome.err;
    EXPECT_EQ(test::velm({"files", scene_, "--strict"}, false).status, kExitInput);
}

TEST_F(Archives, RenderTheSamePictureWithoutTheOriginals) {
    const auto render = [this](const std::string &scene, const std::string &picture) {
        const test::Outcome outcome = test::velm({"render", scene, "-o", file(picture), "--threads", "1", "--quiet"});
        ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    };
    render(scene_, "before.png");
    const test::Outcome outcome = test::velm({"archive", scene_, file("out/kept/")}, false);
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_EQ(outcome.out, file("out/kept/scene.json") + '\n');
    EXPECT_EQ(filesBelow("out"),
              (std::vector<std::string>{"kept/images/sky.png", "kept/meshes-2/stone.obj", "kept/meshes/stone.mtl",
                                        "kept/meshes/stone.obj", "kept/scene.json"}));
    EXPECT_EQ(read(file("out/kept/scene.json")).find(directory_.path()), std::string::npos) << "names are relative";
    fs::remove_all(file("work"));
    fs::rename(file("out/kept"), file("moved"));
    render(file("moved/scene.json"), "after.png");
    EXPECT_EQ(test::velm({"compare", file("before.png"), file("after.png"), "--tolerance", "0"}, false).status,
              kCompareSame);
}

TEST_F(Archives, KeepSurfacesAndImagesOfObjectFiles) {
    const std::string model = "/usr/share/assimp/models/LWO/LWO2/UglyVertexColors.lwo";
    if (!fs::exists(model)) GTEST_SKIP() << "the package assimp-testmodels is not installed";
    const std::string scene = directory_.write("work/object.json", R"({
        "cameras": {"Main": {}}, "surfaces": {},
        "objects": {"Model": {"mesh": {"file": ")" + model + R"("}}}})");
    const test::Outcome outcome = test::velm({"archive", scene, file("kept")}, false);
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    const SceneDescription before = readScene(scene, {}), after = readScene(file("kept/scene.json"), {});
    ASSERT_EQ(after.surfaces.size(), before.surfaces.size());
    for (std::size_t i = 0; i < after.surfaces.size(); ++i) EXPECT_EQ(after.surfaces[i].name, before.surfaces[i].name);
    EXPECT_EQ(std::get<MeshFile>(after.objects[0].shape).file, file("kept/meshes/UglyVertexColors.lwo"));
}

// The scene has the frames 2, 4 and 6. The file of frame 3 is not listed, and that of frame 6 is missing.
TEST_F(Archives, HaveTheFilesThatTheFramesShow) {
    const std::string scene = directory_.write("work/fire.json", R"({
        "render": {"width": 8, "height": 6, "firstFrame": 2, "lastFrame": 6, "frameStep": 2},
        "cameras": {"Main": {}}, "backdrop": {"kind": "image", "image": "Fire"},
        "images": {"Fire": {"file": "fire/f_##.hdr", "sequence": {"first": 0, "last": 20, "offset": 10}},
                   "Other": {"file": "smoke/f_##.hdr", "sequence": {"first": 1, "last": 2, "loop": true}}}})");
    for (const char *name : {"fire/f_12.hdr", "fire/f_13.hdr", "fire/f_14.hdr", "smoke/f_01.hdr", "smoke/f_02.hdr"})
        directory_.write(std::string("work/") + name, test::redHdr("-Y 1 +X 1"));
    const test::Outcome files = test::velm({"files", scene}, false);
    EXPECT_EQ(files.out, scene + '\n' + file("work/fire/f_12.hdr") + '\n' + file("work/fire/f_14.hdr") + '\n' +
                             file("work/smoke/f_02.hdr") + '\n');
    EXPECT_NE(files.err.find("images.Fire.file: " + file("work/fire/f_16.hdr")), std::string::npos) << files.err;
    EXPECT_EQ(test::velm({"files", scene, "--strict"}, false).status, kExitInput);
    const test::Outcome archived = test::velm({"archive", scene, file("kept")}, false);
    ASSERT_EQ(archived.status, kExitDone) << archived.err;
    EXPECT_EQ(filesBelow("kept"),
              (std::vector<std::string>{"images/f_02.hdr", "images/f_12.hdr", "images/f_14.hdr", "scene.json"}));
    const SceneDescription kept = readScene(file("kept/scene.json"), {});
    EXPECT_EQ(kept.images[0].file, file("kept/images/f_##.hdr"));
    EXPECT_EQ(kept.images[0].sequence, (ImageSequence{.first = 0, .last = 20, .offset = 10}));
    const test::Outcome rendered =
        test::velm({"render", file("kept/scene.json"), "--frames", "4", "--strict", "-o", file("a.png"), "--quiet"});
    EXPECT_EQ(rendered.status, kExitDone) << rendered.err;
}

TEST_F(Archives, LeaveNothingBehindWhenTheyFail) {
    fs::permissions(file("work/sky.png"), fs::perms::none);
    fs::remove(file("work/b/stone.obj"));
    EXPECT_EQ(test::velm({"archive", scene_, file("kept")}, false).status, kExitInput);
    EXPECT_FALSE(fs::exists(file("kept")));
    EXPECT_EQ(test::velm({"archive", scene_, file("kept"), "--strict"}, false).status, kExitInput);
    std::vector<std::string> names;
    for (const auto &entry : fs::directory_iterator(directory_.path())) names.push_back(entry.path().filename());
    EXPECT_EQ(names, (std::vector<std::string>{"work"}));
}

// The signal is pending from the beginning, so that it does not matter how fast the command is.
TEST(ArchiveCommand, LeavesNothingBehindWhenItIsEnded) {
    const test::WorkDirectory directory;
    directory.write("scene.json", R"({"cameras": {"Main": {}}})");
    for (const int signal : {SIGTERM, SIGHUP}) {
        const test::Outcome outcome = test::runProgram(directory, {"archive", "scene.json", "kept"}, [&] {
            sigset_t blocked;
            sigemptyset(&blocked);
            sigaddset(&blocked, signal);
            sigprocmask(SIG_BLOCK, &blocked, nullptr);
            raise(signal);
        });
        EXPECT_EQ(outcome.status, -signal) << outcome.err;
        EXPECT_EQ(directory.names(), (std::vector<std::string>{"old.png", "scene.json"}));
    }
}

TEST_F(Archives, DoNotReplaceAnything) {
    const test::Outcome full = test::velm({"archive", scene_, file("work")}, false);
    EXPECT_EQ(full.status, kExitUsage);
    EXPECT_NE(full.err.find("the directory is not empty"), std::string::npos) << full.err;
    EXPECT_EQ(test::velm({"archive", scene_, scene_}, false).status, kExitUsage);
    EXPECT_FALSE(read(scene_).empty());
    fs::create_directory(file("empty"));
    EXPECT_EQ(test::velm({"archive", scene_, file("empty")}, false).status, kExitDone);
    EXPECT_EQ(test::velm({"archive", scene_, "/proc/kept"}, false).status, kExitMachine);
}

TEST(ArchiveLayouts, KeepFilesOfAMeshTogether) {
    Warnings warnings(Warnings::Policy::goOn);
    const ArchiveLayout layout({{.kind = SceneFile::Kind::mesh, .file = "/a/x.obj", .others = {"/a/m/x.mtl"}},
                                {.kind = SceneFile::Kind::mesh, .file = "/b/y.obj", .others = {"/b/m/x.mtl"}},
                                {.kind = SceneFile::Kind::mesh, .file = "/c/z.obj", .others = {"/c/../d/z.mtl"}}},
                               warnings);
    EXPECT_EQ(layout.locationOf("/a/x.obj"), "meshes/x.obj");
    EXPECT_EQ(layout.locationOf("/a/m/x.mtl"), "meshes/m/x.mtl");
    EXPECT_EQ(layout.locationOf("/b/y.obj"), "meshes-2/y.obj");
    EXPECT_EQ(layout.locationOf("/b/m/x.mtl"), "meshes-2/m/x.mtl");
    EXPECT_EQ(layout.locationOf("/c/z.obj"), "meshes/z.obj");
    EXPECT_EQ(layout.locationOf("/c/../d/z.mtl"), "");
    ASSERT_EQ(warnings.all().size(), 1U);
    EXPECT_EQ(warnings.all()[0].text(),
              "/c/z.obj: the file /c/../d/z.mtl is not below the directory of the mesh; it is left out");
}

} // namespace
} // namespace velm::host
