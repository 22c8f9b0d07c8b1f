// Reading large mesh files until rays can be traced, against reading their bytes and building Embree's tree alone.
#include "bench/compare.h"
#include "bench/mesh_files.h"
#include "bench/plain_mesh.h"
#include "host/graph/surface.h"
#include "host/io/files.h"
#include "host/render/geometry/acceleration.h"
#include "host/render/scene/render_scene.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

namespace velm::host::bench {
namespace {

constexpr int kRounds = 5;

double millisecondsOf(const std::function<void()> &act) {
    const auto begin = std::chrono::steady_clock::now();
    act();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

std::shared_ptr<Mesh> meshIn(const std::string &file) { return std::make_shared<Mesh>(readMesh(file, Transform())); }

void readAndBuild(const std::string &file) {
    const Acceleration tree(
        {{.mesh = meshIn(file), .seenByCamera = true, .seenByRays = true, .castsShadows = true, .motion = nullptr}});
    keep(tree);
}

// As for rendering: with smooth normals where the file has none, bounds, and all else.
void prepareScene(const std::string &file) {
    SceneDescription scene;
    ObjectDescription &object = scene.objects.emplace_back();
    object.shape = MeshFile{file};
    object.surfaces.push_back({.material = "", .surface = "Clay", .location = {}});
    scene.surfaces.emplace_back().name = "Clay";
    Surface clay("Clay");
    const RenderScene world(scene, [&clay](const std::string &) { return &clay; });
    keep(world);
}

PlainMesh &fill(PlainMesh &plain, const Mesh &mesh) {
    for (const HostPoint &point : mesh.points)
        plain.points.insert(plain.points.end(), std::begin(point.position), std::end(point.position));
    for (const HostPolygon &triangle : mesh.triangles)
        plain.corners.insert(plain.corners.end(), std::begin(triangle.corners), std::end(triangle.corners));
    return plain;
}

// The time to read the bytes and to build the tree over the mesh, which is made before.
double plainMilliseconds(const std::string &file, const Mesh &mesh) {
    PlainMesh plain;
    fill(plain, mesh);
    return millisecondsOf([&] {
        keep(readFile(file));
        plain.build();
    });
}

void compareFormat(Table &table, const std::string &format, const std::string &file, double target) {
    const std::string ofFormat = " a million triangles of " + format;
    const std::shared_ptr<Mesh> mesh = meshIn(file);
    const auto reference = [&] { return plainMilliseconds(file, *mesh); };
    table.compare(
        {.what = "read" + ofFormat + ", build",
         .against = "reading the bytes, Embree's tree",
         .unit = "ms",
         .goal = Goal::ratioAtMost,
         .target = target},
        kRounds, [&] { return millisecondsOf([&] { readAndBuild(file); }); }, reference);
    table.compare(
        {.what = "prepare" + ofFormat,
         .against = "reading the bytes, Embree's tree",
         .unit = "ms",
         .goal = Goal::ratioAtMost,
         .target = target},
        kRounds, [&] { return millisecondsOf([&] { prepareScene(file); }); }, reference);
}

} // namespace

void compareMeshes(Table &table) {
    constexpr std::size_t kTriangles = 1'000'000;
    std::string directory = (std::filesystem::temp_directory_path() / "velm-bench-XXXXXX").string();
    if (!::mkdtemp(directory.data())) throw std::runtime_error("cannot create a temporary directory");
    const std::unique_ptr<const std::string, void (*)(const std::string *)> removed(
        &directory, [](const std::string *path) { std::filesystem::remove_all(*path); });
    const SampleMesh sphere = bumpySphere(kTriangles);
    for (const std::string format : kSampleFormats) {
        const double target = format == "glb" ? 4.0 : 2.0; // GLB is read by the mesh library
        compareFormat(table, format, writeSample(sphere, directory, format), target);
    }
}

} // namespace velm::host::bench
