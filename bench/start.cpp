// Compares the time to the first ray, and the memory of a large mesh, with those of Embree and the mesh reader alone,
// and the time that velm takes to start with that of a program that does nothing.
#include "bench/compare.h"
#include "bench/plain_mesh.h"
#include "host/graph/listed_module.h"
#include "host/render/renderer.h"
#include "host/render/scene/render_scene_data.h"
#include "host/scene/read_scene.h"
#include "host/session/rendering.h"

#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <numbers>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <variant>
#include <vector>

namespace velm::host::bench {
namespace {

constexpr const char *kScene = VELM_SOURCE_DIR "/examples/occlusion.json";

double secondsOf(const std::function<void()> &act) {
    const auto begin = std::chrono::steady_clock::now();
    act();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

void startPlainly(const std::string &file) {
    Assimp::Importer importer;
    const aiScene *read = importer.ReadFile(file, aiProcess_Triangulate | aiProcess_JoinIdenticalVertices);
    if (!read) throw std::runtime_error(importer.GetErrorString());
    PlainMesh mesh;
    for (unsigned m = 0; m < read->mNumMeshes; ++m) {
        const aiMesh &part = *read->mMeshes[m];
        const auto first = static_cast<uint32_t>(mesh.points.size() / 3);
        for (unsigned i = 0; i < part.mNumVertices; ++i) {
            const aiVector3D &vertex = part.mVertices[i];
            for (const float each : {vertex.x, vertex.y, vertex.z}) mesh.points.push_back(each);
        }
        for (unsigned i = 0; i < part.mNumFaces; ++i) {
            const aiFace &face = part.mFaces[i];
            if (face.mNumIndices == 3)
                mesh.addTriangle(first + face.mIndices[0], first + face.mIndices[1], first + face.mIndices[2]);
        }
    }
    mesh.build();
    mesh.castOneRay();
}

void startWithNodes() {
    const ListedModule module(VELM_MODULE_FILE);
    const SceneDescription scene = readScene(kScene, makeSearchPath({}, nullptr));
    Warnings warnings(Warnings::Policy::strict);
    Session session(scene, warnings);
    RenderJob job = renderJob(session);
    job.width = job.height = job.samples = job.threads = 1;
    Rendering rendering(session);
    rendering.setFrame(job.frame);
    rendering.render(job);
}

std::string meshFileOf(const SceneDescription &scene) {
    for (const ObjectDescription &object : scene.objects)
        if (const auto *mesh = std::get_if<MeshFile>(&object.shape)) return mesh->file;
    throw std::runtime_error("the demonstration has no mesh file");
}

// ---- The program ----

double millisecondsOf(const timeval &time) {
    return static_cast<double>(time.tv_sec) * 1000 + static_cast<double>(time.tv_usec) / 1000;
}

// Runs a program, and returns the processor time in milliseconds that it and the processes that it waits for take.
// Their output is discarded.
double processorTimeOf(std::vector<std::string> words) {
    std::vector<char *> arguments;
    for (std::string &word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_WRONLY, 0);
    pid_t process = 0;
    const int failure = posix_spawn(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    rusage used{};
    if (failure != 0 || wait4(process, &status, 0, &used) != process || status != 0)
        throw std::runtime_error("cannot run " + words.front());
    return millisecondsOf(used.ru_utime) + millisecondsOf(used.ru_stime);
}

void compareProgram(Table &table) {
    constexpr int kRounds = 21;
    const auto nothing = [] { return processorTimeOf({"/bin/true"}); };
    Row row{.what = "velm --version, processor time",
            .against = "a program that does nothing",
            .unit = "ms",
            .goal = Goal::differenceAtMost,
            .target = 20};
    table.compare(
        row, kRounds,
        [] {
            return processorTimeOf({VELM_PROGRAM, "--version"});
        },
        nothing);
    row.what = "picture of 4 x 3 pixels, processor time";
    row.target = 80;
    const std::string scene = VELM_SOURCE_DIR "/examples/counter.json";
    const std::string picture = std::filesystem::temp_directory_path() / "velm_bench_start.png";
    table.compare(
        row, kRounds,
        [&] {
            return processorTimeOf({VELM_PROGRAM, "render", scene, "--size", "4x3", "--samples", "1", "--module",
                                    VELM_MODULE_FILE, "-o", picture});
        },
        nothing);
    std::filesystem::remove(picture);
}

// ---- Memory ----

constexpr int kSegments = 3162; // of a sphere: ten million triangles

// The resident memory of this process now.
double residentBytes() {
    malloc_trim(0);
    std::ifstream stream("/proc/self/statm");
    double all = 0, resident = 0;
    stream >> all >> resident;
    return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

// The sphere of the host, written by hand: a grid of points, with two triangles in each cell.
void addSphere(PlainMesh &mesh) {
    const int columns = kSegments, rows = kSegments / 2;
    mesh.points.reserve(static_cast<size_t>(columns + 1) * static_cast<size_t>(rows + 1) * 3 + 1);
    mesh.corners.reserve(static_cast<size_t>(columns) * static_cast<size_t>(rows) * 6);
    for (int row = 0; row <= rows; ++row)
        for (int column = 0; column <= columns; ++column) {
            const double pitch = std::numbers::pi * (0.5 - row * 1.0 / rows);
            const double heading = 2 * std::numbers::pi * column / columns;
            mesh.addPoint(std::cos(pitch) * std::sin(heading), std::sin(pitch), std::cos(pitch) * std::cos(heading));
        }
    const auto at = [](int row, int column) { return static_cast<uint32_t>(row * (columns + 1) + column); };
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column) {
            if (row > 0) mesh.addTriangle(at(row, column), at(row, column + 1), at(row + 1, column + 1));
            if (row < rows - 1) mesh.addTriangle(at(row, column), at(row + 1, column + 1), at(row + 1, column));
        }
}

// The memory in MiB that a new process of this program reports.
double heldBytesOf(const char *which) {
    const std::string command = "exec /proc/" + std::to_string(getpid()) + "/exe --held-bytes " + which;
    FILE *pipe = popen(command.c_str(), "r");
    double bytes = 0;
    const bool told = pipe && std::fscanf(pipe, "%lf", &bytes) == 1;
    if (!pipe || pclose(pipe) != 0 || !told) throw std::runtime_error("cannot measure the memory held");
    return bytes / 1048576;
}

} // namespace

void printHeldBytes(bool ours) {
    const double before = residentBytes();
    if (ours) {
        SceneDescription scene;
        ObjectDescription &sphere = scene.objects.emplace_back();
        sphere.shape = SphereShape{.segments = kSegments};
        sphere.surfaces.push_back({.material = "", .surface = "Clay", .location = {}});
        Surface clay("Clay");
        const RenderScene world(scene, [&clay](const std::string &) { return &clay; });
        std::printf("%.0f\n", residentBytes() - before);
    } else {
        PlainMesh mesh;
        addSphere(mesh);
        mesh.build();
        std::printf("%.0f\n", residentBytes() - before);
    }
}

void compareStart(Table &table) {
    const std::string mesh = meshFileOf(readScene(kScene, makeSearchPath({}, nullptr)));
    table.compare(
        {.what = "start to first ray, bunny",
         .against = "Assimp and Embree's tree alone",
         .unit = "ms",
         .goal = Goal::ratioAtMost,
         .target = 1.15},
        9, [] { return 1000 * secondsOf(startWithNodes); },
        [&] { return 1000 * secondsOf([&] { startPlainly(mesh); }); });
    table.compare(
        {.what = "memory held with ten million triangles",
         .against = "Embree's tree and its buffers",
         .unit = "MiB",
         .goal = Goal::ratioAtMost,
         .target = 1.2},
        1, [] { return heldBytesOf("ours"); }, [] { return heldBytesOf("reference"); });
    compareProgram(table);
}

} // namespace velm::host::bench
