// LightWave scenes on the command line: those of Debian's package assimp-testmodels, and small ones.
#include "host/image/file_pixels.h"
#include "tests/cli/command.h"
#include "tests/files/test_files.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>

namespace velm::host {
namespace {

using test::Outcome;

const std::string kModels = "/usr/share/assimp/models/LWS/";

class LwsCommand : public testing::Test {
  protected:
    // Renders small pictures of frames, which are `a.0000.exr` and so on.
    Outcome render(const std::string &scene, const std::string &frames, const std::string &name = "a") const {
        return test::velm({"render", scene, "--frames", frames, "-o", file(name + ".####.exr"), "--size", "64x48",
                           "--samples", "1", "--quiet"});
    }
    float red(const std::string &picture, int x, int y) const { return readFilePixels(file(picture)).pixel(x, y)[0]; }
    std::string file(const std::string &name) const { return directory_ / name; }

    test::TemporaryDirectory directory_;
};

// The cube is in the middle at first, and after two thirds of a second 2.138 m to the right.
TEST_F(LwsCommand, ObjectsMoveInFrontOfTheCamera) {
    for (const char *name : {"move_x.lws", "move_x_oldformat_6.lws", "move_x_oldformat_56.lws"}) {
        const Outcome outcome = render(kModels + name, "0,20");
        ASSERT_EQ(outcome.status, kExitDone) << name << outcome.err;
        EXPECT_EQ(outcome.err, "") << name;
        EXPECT_GT(red("a.0000.exr", 16, 24), 0.1F) << name;
        EXPECT_EQ(red("a.0000.exr", 60, 24), 0.0F) << name << ": the backdrop";
        EXPECT_EQ(red("a.0020.exr", 16, 24), 0.0F) << name;
        EXPECT_GT(red("a.0020.exr", 60, 24), 0.1F) << name;
    }
}

TEST_F(LwsCommand, EveryModelIsRendered) {
    std::size_t count = 0;
    for (const auto &path : test::realFiles(".lws")) {
        const Outcome outcome = render(path.string(), "1", path.stem().string());
        EXPECT_EQ(outcome.status, kExitDone) << path << outcome.err;
        EXPECT_EQ(outcome.err, "") << path;
        ++count;
    }
    EXPECT_EQ(count, 14u);
}

TEST_F(LwsCommand, AnArchiveIsTheSamePicture) {
    const std::string scene = kModels + "move_xz_bezier.lws";
    ASSERT_EQ(test::velm({"archive", scene, file("kept")}, false).status, kExitDone);
    ASSERT_EQ(render(scene, "7", "a").status, kExitDone);
    const Outcome outcome = render(file("kept/scene.json"), "7", "b");
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_EQ(readFilePixels(file("a.0007.exr")).values, readFilePixels(file("b.0007.exr")).values);
}

TEST_F(LwsCommand, InfoAndFilesTellWhatIsThere) {
    const std::string scene = kModels + "move_x.lws";
    EXPECT_EQ(test::velm({"files", scene}, false).out, scene + '\n' + kModels + "simple_cube.lwo\n");
    const nlohmann::json info = nlohmann::json::parse(test::velm({"info", scene, "--json"}).out);
    EXPECT_EQ(info["kind"], "LightWave scene");
    EXPECT_EQ(info["objects"][0]["name"], "simple_cube");
    EXPECT_EQ(info["cameras"][0]["name"], "Camera");
    EXPECT_EQ(info["lights"][0]["kind"], "distant");
    EXPECT_EQ(info["frames"]["last"], 60);
    EXPECT_EQ(info["picture"]["width"], 640);
    EXPECT_EQ(info["notes"].size(), 0u);
    const std::string other =
        directory_.write("a.lws", "LWSC\n5\nAddNullObject 10000000 Rig\nEnableCaustics 1\nAddCamera 30000000\n");
    const std::string text = test::velm({"info", other}).out;
    EXPECT_NE(text.find("null      \"Rig\": at 0 0 0\n"), std::string::npos) << text;
    EXPECT_NE(text.find("note      " + other + ":4: caustics are not rendered\n"), std::string::npos) << text;
}

TEST_F(LwsCommand, ObjectsAreLookedForInTheDataDirectories) {
    directory_.write("lib/Models/Sail.lwo", test::triangleObject("Red", ""));
    const std::string scene =
        directory_.write("Scenes/a.lws", "LWSC\n5\nLoadObjectLayer 1 10000000 D:\\Work\\models\\sail.lwo\n"
                                         "AddCamera 30000000\nAddLight 20000000\n");
    const Outcome missing = test::velm({"files", scene}, false);
    EXPECT_EQ(missing.status, kExitInput);
    EXPECT_NE(missing.err.find(scene +
                               ":3: there is no file \"D:\\Work\\models\\sail.lwo\"; looked for "
                               "\"Work/models/sail.lwo\", \"models/sail.lwo\", \"sail.lwo\" in " +
                               directory_.path().string() + ", " + file("Scenes")),
              std::string::npos)
        << missing.err;
    const Outcome found = test::velm({"files", scene, "--data", file("lib")}, false);
    EXPECT_EQ(found.out, scene + '\n' + file("lib/Models/Sail.lwo") + '\n') << found.err;
}

TEST_F(LwsCommand, WarningsAreErrorsWhereThatIsWanted) {
    const std::string scene =
        directory_.write("a.lws", "LWSC\n5\nEnableCaustics 1\nAddNullObject 10000000 A\nAddCamera 30000000\n"
                                  "AddLight 20000000\n");
    const Outcome outcome = test::velm({"render", scene, "-o", file("a.exr"), "--size", "8x8", "--strict"});
    EXPECT_EQ(outcome.status, kExitInput);
    EXPECT_NE(outcome.err.find(scene + ":3: caustics are not rendered"), std::string::npos) << outcome.err;
}

} // namespace
} // namespace velm::host
