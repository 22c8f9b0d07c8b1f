// A whole picture: the bunny of the demonstration, lit by the Ambient Occlusion node of the module alone, against the
// same picture written by hand straight on Embree. The two in turn, several times; what counts is the ratio of rays per
// second.
#include "bench/plain_occlusion.h"
#include "host/graph/server_list.h"
#include "host/load/module.h"
#include "host/scene/build_scene.h"
#include "host/scene/read_scene.h"
#include "host/services/time.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace {

using namespace velm;

constexpr int kRounds = 7;

// Leaves the geometry, the camera and the backdrop, and the occlusion nodes at their defaults: random rays. Everything
// else that would cast rays or cost time is taken out, as the picture made by hand has none of it.
SceneDescription occlusionOnly(SceneDescription scene, const char *output) {
    scene.lights.clear();
    for (SurfaceDescription &surface : scene.surfaces) {
        surface.settings = {{.label = "Luminosity", .value = 1.0, .place = {}},
                            {.label = "Diffuse", .value = 0.0, .place = {}}};
        for (NodeDescription &node : surface.network.nodes) node.settings.clear();
        for (ConnectionDescription &connection : surface.network.connections) connection.output = output;
    }
    return scene;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void compare(const World &world, RenderJob job, const char *output, int threads) {
    job.threads = threads;
    const bench::OcclusionSettings settings; // the node's defaults
    std::vector<double> node, plain, ratios;
    uint64_t nodeRays = 0, plainRays = 0;
    for (int round = 0; round <= kRounds; ++round) {
        const RenderStatistics statistics = renderFrame(world, job).statistics;
        const bench::PlainResult byHand = bench::renderPlainOcclusion(world, job, settings, threads);
        if (round == 0) continue; // to warm up
        nodeRays = statistics.rays.total();
        plainRays = byHand.rays;
        node.push_back(static_cast<double>(nodeRays) / statistics.seconds / 1e6);
        plain.push_back(static_cast<double>(plainRays) / byHand.seconds / 1e6);
        ratios.push_back(node.back() / plain.back());
    }
    std::printf("%s, %d thread%s: node %.3f, by hand %.3f million rays/s; ratio %.3f (from %.3f to %.3f)\n", output,
                threads, threads == 1 ? "" : "s", median(node), median(plain), median(ratios),
                *std::min_element(ratios.begin(), ratios.end()), *std::max_element(ratios.begin(), ratios.end()));
    std::printf("   rays of one picture: node %llu, by hand %llu\n", static_cast<unsigned long long>(nodeRays),
                static_cast<unsigned long long>(plainRays));
}

void compareOutput(const SceneDescription &demonstration, const char *output) {
    const SceneDescription scene = occlusionOnly(demonstration, output);
    BuiltScene built(scene, serverList());
    const World world(scene, [&built](const std::string &name) { return built.surface(name); });
    RenderJob job = renderJob(scene.render);
    job.width /= 2; // a quarter of the pixels is enough to measure by
    job.height /= 2;
    built.init(kInitRender);
    setTime(job.frame, job.time);
    built.newTime(job.frame, job.time);
    for (const int threads : {1, 2}) compare(world, job, output, threads);
    built.cleanup();
}

void run() {
    const SceneDescription scene = readScene(VELM_SOURCE_DIR "/examples/occlusion.json", makeSearchPath({}, nullptr));
    const Module module = Module::open(VELM_MODULE_FILE);
    serverList().add(module.servers(), module.path());
    for (const char *output : {"Scalar", "Color"}) compareOutput(scene, output);
    serverList().remove(module.path());
}

} // namespace

int main() {
    try {
        run();
        return 0;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
