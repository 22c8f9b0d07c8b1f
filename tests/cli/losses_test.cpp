// A full disk, a process that is ended, a mesh that cannot be read: nothing is lost that stood before.
#include "tests/cli/program.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>

namespace velm::host {
namespace {

using test::Outcome;
using test::runProgram;
using test::Workplace;
using Files = std::vector<std::string>;

constexpr const char *kObject = "/usr/share/assimp/models/LWO/LWO2/sphere_with_gradient.lwo";

// A wall that fills the picture.
constexpr const char *kWall = R"({
    "render": {"width": 64, "height": 64, "lastFrame": 1},
    "cameras": {"Main": {"position": [0, 0, -5]}},
    "surfaces": {"Wall": {"nodes": {"Middle": {"server": "Faulty Node"}},
                          "connections": ["Middle.Out -> Wall.Color"]}},
    "objects": {"Wall": {"box": {"size": [20, 20, 1]}, "surface": "Wall"}}
})";

std::vector<std::string> renderWords(const Workplace &place, const std::string &scene) {
    return {"render", scene, "-o", place.picture(), "--module", VELM_FAULTY_MODULE, "--threads", "2", "--quiet"};
}

// ---- Full disks ----

// The system refuses what goes beyond, as a full disk does. What is told on standard error stays below.
void keepFilesSmall() {
    constexpr rlim_t kBytes = 350;
    const rlimit small{.rlim_cur = kBytes, .rlim_max = kBytes};
    setrlimit(RLIMIT_FSIZE, &small);
}

void expectOldFile(const Workplace &place, const Outcome &outcome, const std::string &name, const Files &files) {
    EXPECT_EQ(outcome.status, kExitMachine) << outcome.err;
    const std::string told = "velm: cannot write \"" + place.file(name) + "\": File too large\n";
    EXPECT_NE(outcome.err.find(told), std::string::npos) << outcome.err;
    EXPECT_EQ(place.read(name), "old") << name;
    EXPECT_EQ(place.files(), files);
}

TEST(FullDisk, LeavesTheOldPicture) {
    for (const std::string name : {"a.png", "a.jpg", "a.exr", "a.tif", "a.hdr"}) {
        const Workplace place;
        const std::string scene = place.write("scene.json", kWall);
        std::vector<std::string> words = renderWords(place, scene);
        words[3] = place.write(name, "old");
        expectOldFile(place, runProgram(place, words, keepFilesSmall), name, {name, "old.png", "scene.json"});
        EXPECT_TRUE(place.pictureIsUnharmed());
    }
}

TEST(FullDisk, LeavesTheOldFilesOfPackAndUnpack) {
    ASSERT_TRUE(std::filesystem::exists(kObject)) << "the package assimp-testmodels is not installed";
    const Workplace place;
    const std::string scene = place.write("scene.json", R"({"surfaces": {"Default": {"settings": {"Diffuse": 0.5}}}})");
    const std::string object = place.write("new.lwo", "old"), text = place.write("new.json", "old");
    const Files files{"new.json", "new.lwo", "old.png", "scene.json"};
    expectOldFile(place, runProgram(place, {"pack", scene, kObject, "-o", object}, keepFilesSmall), "new.lwo", files);
    expectOldFile(place, runProgram(place, {"unpack", kObject, "-o", text}, keepFilesSmall), "new.json", files);
    const Outcome unpacked = runProgram(place, {"unpack", kObject, "-o", text});
    EXPECT_EQ(unpacked.status, kExitDone) << unpacked.err;
    EXPECT_EQ(unpacked.out, "");
    EXPECT_EQ(place.read("new.json"), runProgram(place, {"unpack", kObject}).out);
}

TEST(FullDisk, LeavesTheOldReportsOfCheck) {
    const Workplace place;
    const std::string json = place.write("new.json", "old"), junit = place.write("new.xml", "old");
    const Files files{"new.json", "new.xml", "old.png"};
    const std::vector<std::string> words{"check", VELM_FAULTY_MODULE, "--filter", "identity.table"};
    for (const std::string name : {"new.json", "new.xml"}) {
        std::vector<std::string> all = words;
        all.insert(all.end(), {name == "new.json" ? "--json" : "--junit", place.file(name)});
        expectOldFile(place, runProgram(place, all, keepFilesSmall), name, files);
    }
}

TEST(FullDisk, OfStandardOutputIsAnError) {
    const Workplace place;
    const Outcome outcome = runProgram(place, {"nodes", "--all"}, keepFilesSmall);
    EXPECT_EQ(outcome.status, kExitMachine);
    EXPECT_EQ(outcome.err, "velm: the results could not be written to standard output\n");
}

// ---- Processes that are ended ----

void waitFor(const std::function<bool()> &condition) {
    constexpr int kMostWaits = 60000;
    for (int waits = 0; waits < kMostWaits && !condition(); ++waits)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

// The process that a process works in.
pid_t workerOf(pid_t process) {
    const std::string number = std::to_string(process);
    std::ifstream children("/proc/" + number + "/task/" + number + "/children");
    pid_t worker = 0;
    children >> worker;
    return worker;
}

bool isGone(pid_t process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/stat");
    std::string number, name, state;
    status >> number >> name >> state;
    return state.empty() || state == "Z" || state == "X";
}

struct Ending {
    const char *name;
    const char *fault; // in which it hangs meanwhile
    std::vector<int> signals;
};
class EndedRender : public testing::TestWithParam<Ending> {};

TEST_P(EndedRender, LeavesTheOldPictureAndNothingElse) {
    const Ending &ending = GetParam();
    const Workplace place, mark;
    const std::string arrived = mark.file("arrived");
    std::vector<std::string> words = renderWords(place, place.write("scene.json", kWall));
    words.insert(words.end(), {"--call-limit", "0"});
    pid_t worker = 0;
    const Outcome outcome = runProgram(
        place, words,
        [&] {
            setenv("VELM_FAULT", ending.fault, 1);
            setenv("VELM_FAULT_FILE", arrived.c_str(), 1);
        },
        [&](pid_t process) {
            waitFor([&] { return std::filesystem::exists(arrived); });
            worker = workerOf(process);
            for (const int signal : ending.signals) {
                kill(process, signal);
                std::this_thread::sleep_for(std::chrono::milliseconds(200)); // two at once would be one
            }
        });
    EXPECT_EQ(outcome.status, -ending.signals.front());
    EXPECT_EQ(outcome.err, "");
    EXPECT_TRUE(place.pictureIsUnharmed());
    EXPECT_EQ(place.files(), (Files{"old.png", "scene.json"}));
    ASSERT_GT(worker, 0);
    waitFor([&] { return isGone(worker); });
    EXPECT_TRUE(isGone(worker));
}

INSTANTIATE_TEST_SUITE_P(All, EndedRender,
                         testing::Values(Ending{"Killed", "hang evaluate", {SIGKILL}},
                                         Ending{"Terminated", "hang evaluate", {SIGTERM}},
                                         Ending{"HungUp", "hang newTime", {SIGHUP}},
                                         Ending{"InterruptedBeforeRendering", "hang create", {SIGINT}},
                                         Ending{"InterruptedTwice", "hang evaluate", {SIGINT, SIGINT}}),
                         [](const auto &row) { return row.param.name; });

// The worker alone, as by the system when memory runs out.
TEST(KilledWorker, IsToldWithWhatItDid) {
    const Workplace place, mark;
    const std::string arrived = mark.file("arrived");
    const Outcome outcome = runProgram(
        place, renderWords(place, place.write("scene.json", kWall)),
        [&] {
            setenv("VELM_FAULT", "hang create", 1);
            setenv("VELM_FAULT_FILE", arrived.c_str(), 1);
        },
        [&](pid_t process) {
            waitFor([&] { return std::filesystem::exists(arrived); });
            kill(workerOf(process), SIGKILL);
        });
    EXPECT_EQ(outcome.status, kExitMachine);
    EXPECT_EQ(outcome.err, "velm: " VELM_FAULTY_MODULE
                           ": server \"Faulty Node\" was killed, perhaps for want of memory, in create\n");
    EXPECT_TRUE(place.pictureIsUnharmed());
}

// What a killed process could not take away again is in nobody's way.
TEST(Leftover, OfAKilledProcessDisturbsNobody) {
    const Workplace place;
    const std::string scene = place.write("scene.json", kWall);
    place.write("old.png.aB3xYz", "half a pict");
    const Outcome outcome = runProgram(place, renderWords(place, scene));
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_TRUE(place.read("old.png").starts_with("\x89PNG"));
    EXPECT_EQ(place.read("old.png.aB3xYz"), "half a pict");
    EXPECT_EQ(place.files(), (Files{"old.png", "old.png.aB3xYz", "scene.json"}));
}

// ---- Unreadable meshes ----

struct MeshCase {
    const char *name;
    std::function<void(const std::string &file)> make;
    const char *message; // a part of it, behind the file's name
};
void PrintTo(const MeshCase &mesh, std::ostream *out) { *out << mesh.name; }
class UnreadableMesh : public testing::TestWithParam<MeshCase> {};

void writeText(const std::string &file, const std::string &text) { std::ofstream(file) << text; }

TEST_P(UnreadableMesh, IsNamedAndLeavesTheOldPicture) {
    const Workplace place;
    const std::string scene = place.write("scene.json", R"({
        "cameras": {"Main": {"position": [0, 0, -5]}},
        "surfaces": {"Wall": {}},
        "objects": {"Wall": {"mesh": {"file": "wall.ply"}, "surface": "Wall"}}
    })");
    GetParam().make(place.file("wall.ply"));
    if (GetParam().name == std::string("Unpermitted") && geteuid() == 0) GTEST_SKIP() << "root may read every file";
    const Files before = place.files();
    const Outcome outcome = runProgram(place, renderWords(place, scene));
    EXPECT_EQ(outcome.status, kExitInput) << outcome.err;
    EXPECT_TRUE(outcome.err.starts_with("velm: ")) << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    const auto named = outcome.err.find("wall.ply");
    ASSERT_NE(named, std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find(GetParam().message), std::string::npos) << outcome.err;
    EXPECT_TRUE(place.pictureIsUnharmed());
    EXPECT_EQ(place.files(), before);
}

constexpr const char *kHeader = "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\n"
                                "property float z\nelement face 1\nproperty list uchar int vertex_indices\n";

INSTANTIATE_TEST_SUITE_P(
    All, UnreadableMesh,
    testing::Values(
        MeshCase{"Missing", [](const std::string &) {}, "there is no file"},
        MeshCase{"Directory", [](const std::string &file) { mkdir(file.c_str(), 0755); }, "it is a directory"},
        MeshCase{"Pipe", [](const std::string &file) { mkfifo(file.c_str(), 0644); }, "it is a pipe"},
        MeshCase{"Unpermitted",
                 [](const std::string &file) {
                     writeText(file, kHeader);
                     chmod(file.c_str(), 0);
                 },
                 "cannot read the mesh: Permission denied"},
        MeshCase{"Empty", [](const std::string &file) { writeText(file, ""); }, "cannot read the mesh"},
        MeshCase{"CutOffInTheHeader", [](const std::string &file) { writeText(file, kHeader); },
                 "cannot read the mesh"},
        MeshCase{"CutOffInTheVertices",
                 [](const std::string &file) { writeText(file, std::string(kHeader) + "end_header\n0 0 0\n1 0 0\n"); },
                 "of 5 lines after its header, 2 are there"}),
    [](const auto &row) { return row.param.name; });

} // namespace
} // namespace velm::host
