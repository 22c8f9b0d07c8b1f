#include "host/bake/bake_points.h"

#include "host/guard/workers.h"
#include "host/render/frame_pass.h"
#include "host/render/scene/render_scene_data.h"
#include "host/render/services/scene_services.h"

#include <algorithm>
#include <chrono>

namespace velm::host {
namespace {

class PointWorker final : public UnitWorker {
  public:
    PointWorker(const SampleRenderer &renderer, const RenderPass &pass, const NodeTraits &traits,
                const PointEvaluator &evaluator, std::unique_ptr<PointSource> source)
        : UnitWorker(renderer, pass, traits), job_(renderer.job()), evaluator_(evaluator), source_(std::move(source)) {}

  private:
    double renderSample(RayState &state, int x, int y, std::uint32_t index, Vec3 &colour) override {
        const std::uint32_t seed = pixelSeed(job_, x, y);
        const bool isOnly = job_.samples == 1;
        SurfacePoint point;
        const double alpha =
            source_->find(x, y, isOnly ? UnitSquare{0.5, 0.5} : stratifiedPoint(index, seed), isOnly, point);
        colour = {};
        if (!(alpha > 0)) return 0;
        state.pixelX = x;
        state.pixelY = y;
        state.seed = combine(seed, index);
        state.drawnSets = 0;
        colour = source_->convert(point, evaluator_.evaluate(state, point));
        return alpha;
    }

    const RenderJob &job_;
    const PointEvaluator &evaluator_;
    const std::unique_ptr<PointSource> source_;
};

RenderJob repeatable(RenderJob job) {
    job.order = RenderOrder::repeatable;
    return job;
}

} // namespace

BakedPoints bakePoints(const RenderScene &scene, const RenderJob &wanted, const PointEvaluator &evaluator,
                       const std::function<std::unique_ptr<PointSource>()> &makeSource, ProgressSink *sink) {
    checkJob(wanted);
    const auto begin = std::chrono::steady_clock::now();
    const RenderJob job = repeatable(wanted);
    const NodeTraits traits = traitsOf(scene.data());
    const SampleRenderer renderer(scene.data(), job);
    const Region whole = {.left = 0, .top = 0, .right = job.width, .bottom = job.height};
    FrameTiles tiles(job.width, job.height, whole, job.samples, renderer.layers().rules());
    const int workers =
        std::min({job.threads > 0 ? job.threads : usableProcessors(), int{kMostWorkers}, tiles.count()});
    BakedPoints baked{.picture = Picture(job.width, job.height), .statistics = {}};
    const FramePass::MakeTileWorker makeWorker = [&]() -> std::unique_ptr<TileWorker> {
        return std::make_unique<PointWorker>(renderer, RenderPass{.samples = job.samples}, traits, evaluator,
                                             makeSource());
    };
    FramePass pass(renderer, tiles, baked.picture, 1, makeWorker);
    {
        const SceneServices services = servicesFor(renderer, 1);
        pass.run(workers == 1 ? Workers::In::threads : Workers::In::processes, workers, sink, {});
    }
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    const WorkerResult result = pass.result();
    baked.complete = pass.isComplete();
    baked.statistics = {.seconds = taken.count(),
                        .threads = workers,
                        .order = job.order,
                        .orderReason = {},
                        .rays = result.rays,
                        .samples = result.samples,
                        .triangles = scene.triangleCount(),
                        .accelerationBytes = scene.accelerationBytes()};
    return baked;
}

} // namespace velm::host
