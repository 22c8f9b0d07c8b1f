// Existing files are not lost if the disk is full, a process is killed, or a mesh cannot be read.
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
using test::WorkDirectory;
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

std::vector<std::string> renderWords(const WorkDirectory &directory, const std::string &scene) {
    return {"render", scene, "-o", directory.picture(), "--module", VELM_FAULTY_MODULE, "--threads", "2", "--quiet"};
}

// ---- Full disks ----

// Limits the size of files: writing beyond the limit fails as on a full disk. What is printed on standard error is
// shorter.
void limitFileSizes() {
    constexpr rlim_t kBytes = 350;
    const rlimit small{.rlim_cur = kBytes, .rlim_max = kBytes};
    setrlimit(RLIMIT_FSIZE, &small);
}

void expectOldFile(const WorkDirectory &directory, const Outcome &outcome, const std::string &name,
                   const Files &files) {
    EXPECT_EQ(outcome.status, kExitMachine) << outcome.err;
    const std::string message = "velm: cannot write \"" + (directory / name) + "\": File too large\n";
    EXPECT_NE(outcome.err.find(message), std::string::npos) << outcome.err;
    EXPECT_EQ(directory.read(name), "old") << name;
    EXPECT_EQ(directory.names(), files);
}

TEST(FullDisk, LeavesTheOldPicture) {
    for (const std::string name : {"a.png", "a.jpg", "a.exr", "a.tif", "a.hdr"}) {
        const WorkDirectory directory;
        const std::string scene = directory.write("scene.json", kWall);
        std::vector<std::string> words = renderWords(directory, scene);
        words[3] = directory.write(name, "old");
        expectOldFile(directory, runProgram(directory, words, limitFileSizes), name, {name, "old.png", "scene.json"});
        EXPECT_TRUE(directory.pictureIsUnchanged());
    }
}

TEST(FullDisk, LeavesTheOldFilesOfPackAndUnpack) {
    ASSERT_TRUE(std::filesystem::exists(kObject)) << "the package assimp-testmodels is not installed";
    const WorkDirectory directory;
    const std::string scene =
        directory.write("scene.json", R"({"surfaces": {"Default": {"settings": {"Diffuse": 0.5}}}})");
    const std::string object = directory.write("new.lwo", "old"), text = directory.write("new.json", "old");
    const Files files{"new.json", "new.lwo", "old.png", "scene.json"};
    expectOldFile(directory, runProgram(directory, {"pack", scene, kObject, "-o", object}, limitFileSizes), "new.lwo",
                  files);
    expectOldFile(directory, runProgram(directory, {"unpack", kObject, "-o", text}, limitFileSizes), "new.json", files);
    const Outcome unpacked = runProgram(directory, {"unpack", kObject, "-o", text});
    EXPECT_EQ(unpacked.status, kExitDone) << unpacked.err;
    EXPECT_EQ(unpacked.out, "");
    EXPECT_EQ(directory.read("new.json"), runProgram(directory, {"unpack", kObject}).out);
}

TEST(FullDisk, LeavesTheOldReportsOfCheck) {
    const WorkDirectory directory;
    const std::string json = directory.write("new.json", "old"), junit = directory.write("new.xml", "old");
    const Files files{"new.json", "new.xml", "old.png"};
    const std::vector<std::string> words{"check", VELM_FAULTY_MODULE, "--filter", "identity.table"};
    for (const std::string name : {"new.json", "new.xml"}) {
        std::vector<std::string> all = words;
        all.insert(all.end(), {name == "new.json" ? "--json" : "--junit", directory / name});
        expectOldFile(directory, runProgram(directory, all, limitFileSizes), name, files);
    }
}

TEST(FullDisk, OfStandardOutputIsAnError) {
    const WorkDirectory directory;
    const Outcome outcome = runProgram(directory, {"nodes", "--all"}, limitFileSizes);
    EXPECT_EQ(outcome.status, kExitMachine);
    EXPECT_EQ(outcome.err, "velm: the results could not be written to standard output\n");
}

// ---- Networks that cannot be saved ----

TEST(PackError, NamesTheSurfaceAndTheNode) {
    const WorkDirectory directory;
    const std::string scene =
        directory.write("scene.json", R"({"surfaces": {"Default": {"nodes": {"Big": {"server": "Faulty Node"}}}}})");
    const Outcome outcome =
        runProgram(directory, {"pack", scene, kObject, "-o", directory / "new.lwo", "--module", VELM_FAULTY_MODULE},
                   [] { setenv("VELM_FAULT", "large save", 1); });
    EXPECT_EQ(outcome.status, kExitInput);
    EXPECT_NE(outcome.err.find("surface \"Default\": cannot save the node \"Big\": "), std::string::npos)
        << outcome.err;
    EXPECT_EQ(directory.names(), (Files{"old.png", "scene.json"}));
}

// ---- Processes that are killed ----

void waitFor(const std::function<bool()> &condition) {
    constexpr int kMostWaits = 60000;
    for (int waits = 0; waits < kMostWaits && !condition(); ++waits)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

// The process in which the guarded work of a process runs: its first child; 0: there is none.
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
    const char *fault; // hangs the module until the signals arrive
    std::vector<int> signals;
};
class EndedRender : public testing::TestWithParam<Ending> {};

TEST_P(EndedRender, LeavesTheOldPictureAndNothingElse) {
    const Ending &ending = GetParam();
    const WorkDirectory directory, markers;
    const std::string arrived = markers / "arrived";
    std::vector<std::string> words = renderWords(directory, directory.write("scene.json", kWall));
    words.insert(words.end(), {"--call-limit", "0", "--order", "classic"});
    pid_t worker = 0;
    const Outcome outcome = runProgram(
        directory, words,
        [&] {
            setenv("VELM_FAULT", ending.fault, 1);
            setenv("VELM_FAULT_FILE", arrived.c_str(), 1);
        },
        [&](pid_t process) {
            waitFor([&] { return std::filesystem::exists(arrived); });
            worker = workerOf(process);
            for (const int signal : ending.signals) {
                kill(process, signal);
                std::this_thread::sleep_for(std::chrono::milliseconds(200)); // or the signals could be merged
            }
        });
    EXPECT_EQ(outcome.status, -ending.signals.front());
    EXPECT_EQ(outcome.err, "");
    EXPECT_TRUE(directory.pictureIsUnchanged());
    EXPECT_EQ(directory.names(), (Files{"old.png", "scene.json"}));
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

// A signal that is ignored from the start, as by nohup, ends neither process: the render goes on until the module
// hangs.
TEST(IgnoredSignal, EndsNothing) {
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
        const WorkDirectory directory, markers;
        const std::string arrived = markers / "arrived";
        std::vector<std::string> words = renderWords(directory, directory.write("scene.json", kWall));
        words.insert(words.end(), {"--call-limit", "1"});
        const Outcome outcome = runProgram(
            directory, words,
            [&] {
                setenv("VELM_FAULT", "hang evaluate", 1);
                setenv("VELM_FAULT_FILE", arrived.c_str(), 1);
                std::signal(signal, SIG_IGN);
            },
            [&](pid_t process) {
                waitFor([&] { return std::filesystem::exists(arrived); });
                for (const pid_t each : {workerOf(process), process}) kill(each, signal);
            });
        EXPECT_EQ(outcome.status, kExitMachine) << signal;
        EXPECT_NE(outcome.err.find("hangs in evaluate"), std::string::npos) << outcome.err;
    }
}

TEST(InterruptedCheck, LeavesNoFile) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        const WorkDirectory directory, temporary;
        const auto isBegun = [&] { return temporary.names().size() > 1; }; // besides the existing picture
        const Outcome outcome = runProgram(
            directory, {"check", VELM_MODULE_FILE, "--level", "1"},
            [&] { setenv("TMPDIR", temporary.path().c_str(), 1); },
            [&](pid_t process) {
                waitFor(isBegun);
                kill(process, signal);
            });
        EXPECT_EQ(outcome.status, -signal);
        EXPECT_EQ(temporary.names(), Files{"old.png"});
    }
}

// Only the worker is killed, as the system does when memory runs out.
TEST(KilledWorker, IsReportedWithItsCall) {
    const WorkDirectory directory, markers;
    const std::string arrived = markers / "arrived";
    const Outcome outcome = runProgram(
        directory, renderWords(directory, directory.write("scene.json", kWall)),
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
                           ": server \"Faulty Node\" was killed, perhaps because memory ran out, in create\n");
    EXPECT_TRUE(directory.pictureIsUnchanged());
}

// A temporary file that a killed process left behind does not affect later runs.
TEST(Leftover, OfAKilledProcessIsIgnored) {
    const WorkDirectory directory;
    const std::string scene = directory.write("scene.json", kWall);
    directory.write("old.png.aB3xYz", "half a pict");
    const Outcome outcome = runProgram(directory, renderWords(directory, scene));
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_TRUE(directory.read("old.png").starts_with("\x89PNG"));
    EXPECT_EQ(directory.read("old.png.aB3xYz"), "half a pict");
    EXPECT_EQ(directory.names(), (Files{"old.png", "old.png.aB3xYz", "scene.json"}));
}

// ---- Unreadable meshes ----

struct MeshCase {
    const char *name;
    std::function<void(const std::string &file)> make;
    const char *message; // a part of it
};
void PrintTo(const MeshCase &mesh, std::ostream *out) { *out << mesh.name; }
class UnreadableMesh : public testing::TestWithParam<MeshCase> {};

void writeText(const std::string &file, const std::string &text) { std::ofstream(file) << text; }

TEST_P(UnreadableMesh, IsNamedAndLeavesTheOldPicture) {
    const WorkDirectory directory;
    const std::string scene = directory.write("scene.json", R"({
        "cameras": {"Main": {"position": [0, 0, -5]}},
        "surfaces": {"Wall": {}},
        "objects": {"Wall": {"mesh": {"file": "wall.ply"}, "surface": "Wall"}}
    })");
    GetParam().make(directory / "wall.ply");
    if (GetParam().name == std::string("Unpermitted") && geteuid() == 0) GTEST_SKIP() << "root may read every file";
    const Files before = directory.names();
    const Outcome outcome = runProgram(directory, renderWords(directory, scene));
    EXPECT_EQ(outcome.status, kExitInput) << outcome.err;
    EXPECT_TRUE(outcome.err.starts_with("velm: ")) << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    const auto named = outcome.err.find("wall.ply");
    ASSERT_NE(named, std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find(GetParam().message), std::string::npos) << outcome.err;
    EXPECT_TRUE(directory.pictureIsUnchanged());
    EXPECT_EQ(directory.names(), before);
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
