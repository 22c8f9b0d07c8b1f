// Where the objects of LightWave scenes are looked for.
#include "host/scene/object_finder.h"

#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace velm::host {
namespace {

using test::TemporaryDirectory;

class Finder : public testing::Test {
  protected:
    // The file that the scene Project/Scenes/Day 2/shot.lws calls so, relative to the temporary directory.
    std::string find(std::string_view name) {
        const auto found = ObjectFinder(scene_, path_).find(name);
        return found ? std::filesystem::relative(*found, directory_.path()).string() : "";
    }

    TemporaryDirectory directory_;
    const std::string scene_ = directory_.write("Project/Scenes/Day 2/shot.lws", "");
    const SearchPath path_{.directories = {(directory_ / "data")}};
};

TEST_F(Finder, LooksInTheContentDirectoryFirst) {
    directory_.write("Project/Objects/cube.lwo", "");
    directory_.write("Project/Scenes/Day 2/Objects/cube.lwo", "");
    directory_.write("data/Objects/cube.lwo", "");
    EXPECT_EQ(find("Objects/cube.lwo"), "Project/Objects/cube.lwo");
    std::filesystem::remove((directory_ / "Project/Objects/cube.lwo"));
    EXPECT_EQ(find("Objects/cube.lwo"), "Project/Scenes/Day 2/Objects/cube.lwo");
    std::filesystem::remove((directory_ / "Project/Scenes/Day 2/Objects/cube.lwo"));
    EXPECT_EQ(find("Objects/cube.lwo"), "data/Objects/cube.lwo");
}

TEST_F(Finder, TheContentDirectoryIsTheSceneDirectoryWithoutScenes) {
    directory_.write("loose/Objects/cube.lwo", "");
    ObjectFinder finder((directory_ / "loose/shot.lws"), {});
    EXPECT_EQ(finder.find("Objects/cube.lwo"), (directory_ / "loose/Objects/cube.lwo"));
}

TEST_F(Finder, RelativeScenesHaveRelativeObjects) {
    const std::filesystem::path before = std::filesystem::current_path();
    directory_.write("Project/a.lwo", "");
    std::filesystem::current_path(directory_.path());
    const auto found = ObjectFinder("Project/Scenes/a.lws", {}).find("a.lwo");
    std::filesystem::current_path(directory_.path() / "Project");
    const auto here = ObjectFinder("Scenes/a.lws", {}).find("a.lwo");
    std::filesystem::current_path(before);
    EXPECT_EQ(found, "Project/a.lwo");
    EXPECT_EQ(here, "a.lwo");
}

TEST_F(Finder, UnderstandsPathsOfOtherMachines) {
    directory_.write("Project/Objects/Cars/van.lwo", "");
    for (const char *name :
         {"Objects/Cars/van.lwo", "Objects\\Cars\\van.lwo", "E:\\Work\\Project\\Objects\\Cars\\van.lwo",
          "Work:Project/Objects/Cars/van.lwo", "\\\\server\\share\\Objects\\Cars\\van.lwo",
          "/home/me/Objects/Cars/van.lwo", "OBJECTS/cars/Van.LWO", "./Objects//Cars/van.lwo"})
        EXPECT_EQ(find(name), "Project/Objects/Cars/van.lwo") << name;
}

TEST_F(Finder, TheNameAloneComesLast) {
    directory_.write("Project/van.lwo", "");
    directory_.write("data/Cars/van.lwo", "");
    EXPECT_EQ(find("Objects/Cars/van.lwo"), "data/Cars/van.lwo");
    std::filesystem::remove((directory_ / "data/Cars/van.lwo"));
    EXPECT_EQ(find("Objects/Cars/van.lwo"), "Project/van.lwo");
}

TEST_F(Finder, PrefersTheNameInItsOwnCase) {
    directory_.write("Project/VAN.lwo", "");
    directory_.write("Project/Van.lwo", "");
    EXPECT_EQ(find("Van.lwo"), "Project/Van.lwo");
    EXPECT_EQ(find("van.lwo"), "Project/VAN.lwo") << "the first by name";
}

TEST_F(Finder, AnAbsolutePathIsTakenAsItIs) {
    const std::string file = directory_.write("elsewhere/van.lwo", "");
    directory_.write("Project/van.lwo", "");
    EXPECT_EQ(find(file), "elsewhere/van.lwo");
}

TEST_F(Finder, OnlyTheEndOfAVeryLongPathCounts) {
    directory_.write("Project/van.lwo", "");
    std::string name;
    for (int i = 0; i < 100000; ++i) name += "a/";
    EXPECT_EQ(find(name + "van.lwo"), "Project/van.lwo");
}

TEST_F(Finder, SaysWhatItLookedFor) {
    std::filesystem::create_directories(directory_.path() / "Project" / "van.lwo");
    EXPECT_EQ(find("C:Cars/van.lwo"), "") << "a directory is no file";
    EXPECT_EQ(ObjectFinder(scene_, path_).whyNotFound("C:Cars/van.lwo"),
              "there is no file \"C:Cars/van.lwo\"; looked for \"Cars/van.lwo\", \"van.lwo\" in " +
                  (directory_ / "Project") + ", " + (directory_ / "Project/Scenes/Day 2") + ", " +
                  (directory_ / "data"));
}

} // namespace
} // namespace velm::host
