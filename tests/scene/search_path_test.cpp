// Where files are looked for, and the messages about files that are not found.
#include "host/scene/format/search_path.h"

#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace velm::host {
namespace {

using test::TemporaryDirectory;

TEST(SearchPath, PassesOverWhatIsNoFile) {
    const TemporaryDirectory directory;
    const std::string found = directory.write("data/wall.obj", "");
    std::filesystem::create_directories(directory.path() / "scene" / "wall.obj");
    EXPECT_EQ(findFile("wall.obj", directory / "scene", {.directories = {directory / "data"}}), found);
}

TEST(SearchPath, SaysWhatIsThereInstead) {
    const TemporaryDirectory directory;
    const std::string scene = directory / "scene", data = directory / "data";
    std::filesystem::create_directories(directory.path() / "scene");
    std::filesystem::create_directories(directory.path() / "data" / "wall.obj");
    const SearchPath path{.directories = {data}};
    EXPECT_EQ(whyNotFound("wall.obj", scene, path), "cannot read \"" + data + "/wall.obj\": it is a directory");
    ASSERT_EQ(mkfifo((directory / "scene/wall.obj").c_str(), 0600), 0);
    EXPECT_EQ(whyNotFound("wall.obj", scene, path), "cannot read \"" + scene + "/wall.obj\": it is a pipe");
}

TEST(SearchPath, SaysWhereItLooked) {
    EXPECT_EQ(whyNotFound("a.obj", "", {}), "there is no file \"a.obj\"; looked in .");
    EXPECT_EQ(whyNotFound("a.obj", "/nowhere", {.directories = {"/neither", "/nor"}}),
              "there is no file \"a.obj\"; looked in /nowhere, /neither, /nor");
    EXPECT_EQ(whyNotFound("/nowhere/a.obj", "scene", {.directories = {"/neither"}}),
              "there is no file \"/nowhere/a.obj\"");
}

} // namespace
} // namespace velm::host
