// A whole picture: the demonstration scene with the Ambient Occlusion node of the module, against the same picture
// written by hand straight on Embree. The two in turn, several times; what counts is the ratio of rays per second.
#include "bench/plain_occlusion.h"
#include "host/graph/server_list.h"
#include "host/load/module.h"
#include "host/scene/build_scene.h"
#include "host/scene/read_scene.h"
#include "host/services/time.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <numbers>
#include <string>
#include <vector>

namespace {

using namespace velm;
using bench::OcclusionSettings;

constexpr int kRounds = 7;
constexpr char kServer[] = "Velm Ambient Occlusion";

// What the scene sets on its occlusion node, in the units of its panel.
OcclusionSettings settingsOf(const SceneDescription &scene) {
    OcclusionSettings settings;
    for (const SurfaceDescription &surface : scene.surfaces)
        for (const NodeDescription &node : surface.nodes)
            if (node.server == kServer)
                for (const SettingDescription &setting : node.settings) {
                    const double *value = std::get_if<double>(&setting.value);
                    if (!value) continue;
                    if (setting.label == "Samples") settings.samples = static_cast<int>(*value);
                    if (setting.label == "Cone Angle") settings.coneAngle = *value * std::numbers::pi / 180;
                    if (setting.label == "Max") settings.max = *value;
                }
    return settings;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void compare(const World &world, const SceneDescription &scene, RenderJob job, int threads) {
    job.threads = threads;
    const OcclusionSettings settings = settingsOf(scene);
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
    std::printf("%d thread%s: node %.3f, by hand %.3f million rays/s; ratio %.3f (from %.3f to %.3f)\n", threads,
                threads == 1 ? "" : "s", median(node), median(plain), median(ratios),
                *std::min_element(ratios.begin(), ratios.end()), *std::max_element(ratios.begin(), ratios.end()));
    std::printf("   rays of one picture: node %llu, by hand %llu\n", static_cast<unsigned long long>(nodeRays),
                static_cast<unsigned long long>(plainRays));
}

int run() {
    const SceneDescription scene = readScene(VELM_SOURCE_DIR "/examples/occlusion.json", makeSearchPath({}, nullptr));
    const Module module = Module::open(VELM_MODULE_FILE);
    serverList().add(module.servers(), module.path());
    {
        BuiltScene built(scene, serverList());
        const World world(scene, [&built](const std::string &name) { return built.surface(name); });
        RenderJob job = renderJob(scene.render);
        job.width /= 2; // a quarter of the pixels is enough to measure by
        job.height /= 2;
        built.init(kInitRender);
        setTime(job.frame, job.time);
        built.newTime(job.frame, job.time);
        std::printf("%d x %d pixels, %d samples each, %d rounds\n", job.width, job.height, job.samples, kRounds);
        for (const int threads : {1, 2}) compare(world, scene, job, threads);
        built.cleanup();
    }
    serverList().remove(module.path());
    return 0;
}

} // namespace

int main() {
    try {
        return run();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
