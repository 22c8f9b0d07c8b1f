// What the program loads when it starts, and how it finds its image library.
#include "tests/cli/program.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <unistd.h>

namespace fs = std::filesystem;

namespace velm::host::test {
namespace {

using Words = std::vector<std::string>;

constexpr std::size_t kMostLibraries = 99; // of a command that needs no image library
constexpr const char *kScene = VELM_SOURCE_DIR "/examples/counter.json";
const Words kSmall = {"--size", "4x3", "--samples", "1", "--module", VELM_MODULE_FILE};

// The words of a render of a small picture to this file.
Words renderTo(const std::string &file) {
    Words words = {"render", kScene, "-o", file};
    words.insert(words.end(), kSmall.begin(), kSmall.end());
    return words;
}

// The names of the shared libraries that the processes of a command load, from the dynamic linker's debug output.
std::set<std::string> librariesOf(const WorkDirectory &directory, const Words &words) {
    const TemporaryDirectory lists;
    const Outcome outcome = runProgram(directory, words, [&] {
        setenv("LD_DEBUG", "files", 1);
        setenv("LD_DEBUG_OUTPUT", (lists / "list").c_str(), 1);
    });
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const std::string start = "calling init: ";
    std::set<std::string> libraries;
    for (const std::string &name : lists.names()) {
        std::ifstream list(lists / name);
        for (std::string line; std::getline(list, line);)
            if (const auto found = line.find(start); found != std::string::npos)
                libraries.insert(fs::path(line.substr(found + start.size())).filename());
    }
    return libraries;
}

bool hasImageLibrary(const std::set<std::string> &libraries) { return libraries.contains("libvelm-images.so"); }

// Copies the program, without its image library, to bin/velm in this directory, and returns its path.
fs::path copyOfProgram(const WorkDirectory &directory) {
    fs::create_directory(directory.path() / "bin");
    fs::copy_file(VELM_PROGRAM, directory.path() / "bin/velm");
    return directory.path() / "bin/velm";
}

// Runs `program`, a copy of the program or a link to it. `before` is called in the new process first.
Outcome runOther(
    const WorkDirectory &directory, const fs::path &program, const Words &words,
    const std::function<void()> &before = [] {}) {
    return runProgram(directory, words, [&] {
        before();
        std::vector<const char *> arguments = {program.c_str()};
        for (const std::string &word : words) arguments.push_back(word.c_str());
        arguments.push_back(nullptr);
        execv(program.c_str(), const_cast<char *const *>(arguments.data()));
        _exit(127);
    });
}

TEST(Start, CommandsWithoutImagesDoNotLoadTheImageLibrary) {
    const WorkDirectory directory;
    for (const Words &words : {Words{"--version"}, Words{"--help"}, Words{"nodes", "--module", VELM_MODULE_FILE},
                               Words{"show", "Velm Counter", "--module", VELM_MODULE_FILE},
                               Words{"info", kScene, "--module", VELM_MODULE_FILE}, renderTo("a.png")}) {
        const std::set<std::string> libraries = librariesOf(directory, words);
        EXPECT_TRUE(libraries.contains("libc.so.6")) << words.front() << ": the list is empty";
        EXPECT_FALSE(hasImageLibrary(libraries)) << words.front();
        EXPECT_LE(libraries.size(), kMostLibraries) << words.front();
    }
}

TEST(Start, FloatPicturesLoadTheImageLibrary) {
    const WorkDirectory directory;
    EXPECT_TRUE(hasImageLibrary(librariesOf(directory, renderTo("a.exr"))));
}

TEST(Start, ALinkToTheProgramFindsTheImageLibrary) {
    const WorkDirectory directory;
    const fs::path link = directory.path() / "link";
    fs::create_symlink(VELM_PROGRAM, link);
    const Outcome outcome = runOther(directory, link, renderTo("a.exr"));
    EXPECT_EQ(outcome.status, 0) << outcome.err;
}

TEST(Start, ACopyOfTheProgramNeedsACopyOfTheImageLibrary) {
    const WorkDirectory directory;
    const fs::path copy = copyOfProgram(directory), library = copy.parent_path() / "libvelm-images.so";
    const Outcome without = runOther(directory, copy, renderTo("a.exr"));
    EXPECT_EQ(without.status, kExitMachine);
    EXPECT_TRUE(without.err.starts_with("velm: cannot open velm's image library, which has to be in the directory of "
                                        "the program: " +
                                        library.string() + ": "))
        << without.err;
    EXPECT_FALSE(fs::exists(directory.path() / "a.exr"));
    fs::copy_file(fs::path(VELM_PROGRAM).replace_filename("libvelm-images.so"), library);
    const Outcome with = runOther(directory, copy, renderTo("a.exr"));
    EXPECT_EQ(with.status, 0) << with.err;
}

TEST(Start, NeitherTheWorkingDirectoryNorTheEnvironmentGivesTheImageLibrary) {
    const WorkDirectory directory;
    const fs::path copy = copyOfProgram(directory);
    fs::copy_file(fs::path(VELM_PROGRAM).replace_filename("libvelm-images.so"), directory.path() / "libvelm-images.so");
    const Outcome outcome =
        runOther(directory, copy, renderTo("a.exr"), [&] { setenv("LD_LIBRARY_PATH", directory.path().c_str(), 1); });
    EXPECT_EQ(outcome.status, kExitMachine) << outcome.err;
}

} // namespace
} // namespace velm::host::test
