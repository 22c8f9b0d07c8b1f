// Chooses the order of evaluation and who renders, and keeps what passes have in common.
#include "host/render/frame_renderer.h"

#include "host/base/thread_role.h"
#include "host/render/frame_pass.h"
#include "host/render/order/choose_order.h"
#include "host/render/scene/render_scene_data.h"
#include "host/render/services/scene_services.h"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <optional>
#include <span>

namespace velm::host {
namespace {

int workersFor(const RenderJob &job, int tiles) {
    const int most = job.order == RenderOrder::classic ? int{kMaxThreads} : kMostWorkers;
    return std::min({job.threads > 0 ? job.threads : usableProcessors(), most, tiles});
}

// Whether nodes have a memory: whether a small picture that is rendered twice, from the same place in the random
// stream, comes out differently. It is rendered in another process, so that the nodes of this one are as before.
bool showMemory(const RenderSceneData &scene, RenderJob job, const NodeTraits &traits) {
    job.width = job.height = kTileSize;
    job.region = job.part = {};
    job.layers.clear();
    job.samples = 1;
    job.firstSample = job.endSample = 0;
    const SampleRenderer renderer(scene, job);
    const SceneServices services = servicesFor(renderer, 1);
    const Region whole = {.left = 0, .top = 0, .right = kTileSize, .bottom = kTileSize};
    SharedArray<PixelSum> sums(std::size_t{2} * kTilePixels);
    const std::function<void(int)> work = [&](int) {
        SlotScope slot(0);
        RayState &state = rayState;
        state = renderer.initialState(0);
        UnitWorker worker(renderer, {.samples = 1}, traits);
        const std::atomic<bool> stop = false;
        for (const std::size_t time : {0u, 1u})
            worker.renderTile(state, slot,
                              {.column = 0, .row = 0, .left = 0, .top = 0, .inPicture = whole, .inWindow = whole},
                              {.pixels = &sums[time * kTilePixels]}, stop);
    };
    Workers crew(1, Workers::In::processes, work);
    crew.waitForAll();
    const auto bytes = [&](std::size_t first) { return std::as_bytes(std::span(&sums[first], kTilePixels)); };
    return !std::ranges::equal(bytes(0), bytes(kTilePixels)); // bit for bit, so that a NaN is like itself
}

OrderChoice decide(const RenderSceneData &scene, const RenderJob &job, const NodeTraits &traits) {
    checkJob(job);
    OrderChoice choice = chooseOrder(job.order, traits);
    if (choice.needsProbe && showMemory(scene, job, traits)) {
        choice.order = RenderOrder::classic;
        choice.reason = reasonOfProbe(traits);
    }
    choice.needsProbe = false;
    return choice;
}

RenderJob withOrder(RenderJob job, RenderOrder order) {
    job.order = order;
    return job;
}

} // namespace

struct FrameRenderer::Work {
    const RenderScene &scene;
    const NodeTraits traits;
    const OrderChoice choice;
    const RenderJob job;
    const int updates; // of the scene when the frame was begun
    const SampleRenderer renderer;
    FrameTiles tiles;
    const int workers;
    Picture picture;
    int samplesDone = 0;
    RenderStatistics statistics;

    Work(const RenderScene &renderScene, const RenderJob &wanted)
        : scene(renderScene), traits(traitsOf(scene.data())), choice(decide(scene.data(), wanted, traits)),
          job(withOrder(wanted, choice.order)), updates(scene.updates()), renderer(scene.data(), job),
          tiles(job.width, job.height, windowOf(job), samplesOf(job), renderer.layers().rules(),
                isClassic() ? kClassicTileSize : kTileSize),
          workers(workersFor(job, tiles.count())),
          picture(job.width, job.height, windowOf(job), renderer.layers().channels()),
          statistics{.threads = workers,
                     .order = job.order,
                     .orderReason = choice.reason,
                     .rays = {},
                     .triangles = scene.triangleCount(),
                     .accelerationBytes = scene.accelerationBytes()} {}

    bool isClassic() const { return job.order == RenderOrder::classic; }
};

OrderChoice decideOrder(const RenderScene &scene, const RenderJob &job) {
    return decide(scene.data(), job, traitsOf(scene.data()));
}

FrameRenderer::FrameRenderer(const RenderScene &scene, const RenderJob &job) {
    assert(scene.data().acceleration && "prepare the scene first");
    work_ = std::make_unique<Work>(scene, job);
}

FrameRenderer::~FrameRenderer() = default;

bool FrameRenderer::renderPass(const RenderPass &pass, ProgressSink *sink, const std::stop_token &stop) {
    assert(pass.samples >= 1 && std::ranges::find(kLevelSteps, pass.step) != kLevelSteps.end());
    assert((pass.step == 1 || (pass.samples == 1 && work_->job.firstSample == 0)) && "coarse passes come first");
    assert(work_->updates == work_->scene.updates() && "the scene was updated");
    const auto begin = std::chrono::steady_clock::now();
    const FramePass::MakeTileWorker makeWorker = [&]() -> std::unique_ptr<TileWorker> {
        if (work_->isClassic()) return std::make_unique<ClassicWorker>(work_->renderer, pass);
        return std::make_unique<UnitWorker>(work_->renderer, pass, work_->traits);
    };
    FramePass render(work_->renderer, work_->tiles, work_->picture, pass.step, makeWorker);
    {
        // Each process has its instances to itself, which see one thread. Workers set the state of nodes themselves,
        // which is for the interface thread.
        const SceneServices services = servicesFor(work_->renderer, work_->isClassic() ? work_->workers : 1);
        std::optional<RoleScope> role;
        if (work_->isClassic()) role.emplace(ThreadRole::controller);
        const bool oneProcess = work_->isClassic() || work_->workers == 1;
        render.run(oneProcess ? Workers::In::threads : Workers::In::processes, work_->workers, sink, stop);
    }
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    const WorkerResult result = render.result();
    RenderStatistics &statistics = work_->statistics;
    statistics.seconds += taken.count();
    statistics.rays += result.rays;
    statistics.samples += result.samples;
    if (!render.isComplete()) return false;
    if (pass.step == 1)
        work_->samplesDone = std::max(work_->samplesDone, std::min(pass.samples, samplesOf(work_->job)));
    return true;
}

int FrameRenderer::samplesDone() const { return work_->samplesDone; }
NotFinitePixels FrameRenderer::notFinite() const { return findNotFinite(work_->picture, work_->renderer); }
const Picture &FrameRenderer::picture() const { return work_->picture; }
Picture FrameRenderer::takePicture() { return std::move(work_->picture); }
RenderStatistics FrameRenderer::statistics() const { return work_->statistics; }

} // namespace velm::host
