// The threads of a pass: they take tiles from a common counter, and the calling thread reports finished tiles.
#include "host/render/frame_renderer.h"

#include "host/base/thread_role.h"
#include "host/guard/call_record.h"
#include "host/render/frame_tiles.h"
#include "host/render/scene/render_scene_data.h"
#include "host/render/services/scene_services.h"

#include <pmmintrin.h>
#include <sys/resource.h>
#include <unistd.h>
#include <xmmintrin.h>

#include <algorithm>
#include <atomic>
#include <cassert>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace velm::host {
namespace {

int threadsFor(const RenderJob &job, int tiles) {
    const int cores = std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, int{kMaxThreads});
    return std::min(job.threads > 0 ? job.threads : cores, tiles);
}

RenderJob checked(const RenderJob &job) {
    checkJob(job);
    return job;
}

// Nice values belong to threads on Linux. A system that refuses leaves the thread at its priority, which is harmless.
void addNiceness(int niceness) {
    if (niceness == 0) return;
    const auto thread = static_cast<id_t>(systemThread());
    setpriority(PRIO_PROCESS, thread, getpriority(PRIO_PROCESS, thread) + niceness);
}

// What the threads of one pass share.
class PassRender {
  public:
    PassRender(const TileRenderer &renderer, const RenderPass &pass, FrameTiles &tiles, Picture &picture)
        : renderer_(renderer), pass_(pass), tiles_(tiles), picture_(picture) {
        finishedTiles_.reserve(static_cast<std::size_t>(tiles.count()));
    }

    void run(int threads, int niceness, ProgressSink *sink, const std::stop_token &stop) {
        const std::stop_callback cancel(stop, [this] { stop_ = true; });
        std::vector<std::jthread> workers; // joined also when the sink throws
        workers.reserve(static_cast<std::size_t>(threads));
        const StopScope scope{stop_};
        for (int index = 0; index < threads; ++index)
            workers.emplace_back([this, index, niceness] { work(index, niceness); });
        watch(threads, sink);
        workers.clear();
    }

    bool isComplete() const { return tilesDone() == tiles_.count(); }
    const RayCounts &rays() const { return rays_; }
    std::uint64_t samples() const { return samples_; }

  private:
    // Stops the threads when the scope ends, also early.
    struct StopScope {
        std::atomic<bool> &stop;
        ~StopScope() { stop = true; }
    };

    int tilesDone() const { return static_cast<int>(finishedTiles_.size()); }

    // Reports tiles soon after they are finished, but sleeps in between: waking up for every tile would cost more than
    // many a tile takes, and would take a core from the render threads.
    void watch(int threads, ProgressSink *sink) {
        constexpr std::chrono::milliseconds kRest{50};
        const auto allEnded = [this, threads] { return endedThreads_ == threads; };
        std::unique_lock lock(mutex_);
        for (int told = 0; sink;) {
            tileAwaited_ = true;
            changed_.wait(lock, [&] { return tilesDone() > told || allEnded(); });
            const int done = tilesDone();
            if (done == told) return;
            lock.unlock();
            // The vector does not move, and the elements up to `done` do not change.
            for (; told < done; ++told)
                sink->tile(tiles_.region(finishedTiles_[static_cast<std::size_t>(told)]), picture_);
            if (!sink->progress(done, tiles_.count())) stop_ = true;
            lock.lock();
            changed_.wait_for(lock, kRest, allEnded);
        }
        changed_.wait(lock, allEnded);
    }

    void endTile(int tile) {
        const std::lock_guard lock(mutex_);
        finishedTiles_.push_back(tile);
        if (!tileAwaited_) return;
        tileAwaited_ = false;
        changed_.notify_one();
    }

    // Catches nothing: an exception of a node has to end the program while the stack still shows whose evaluation it
    // was.
    void work(int threadIndex, int niceness) {
        addNiceness(niceness);
        const RoleScope role(ThreadRole::render);
        SlotScope slot(threadIndex);
        // As Embree recommends: denormal numbers are slow and do not matter here.
        _MM_SET_FLUSH_ZERO_MODE(_MM_FLUSH_ZERO_ON);
        _MM_SET_DENORMALS_ZERO_MODE(_MM_DENORMALS_ZERO_ON);
        RayState &state = rayState;
        state = renderer_.initialState(threadIndex);
        slot.run([&] {
            for (int tile = next_++; tile < tiles_.count() && !stop_; tile = next_++)
                if (renderTile(state, slot, tile)) endTile(tile);
        });
        const std::lock_guard lock(mutex_);
        rays_ += state.counts;
        samples_ += state.samples;
        ++endedThreads_;
        changed_.notify_one();
    }

    // False when it was stopped in the middle.
    bool renderTile(RayState &state, SlotScope &slot, int tile) {
        PixelSum *sums = tiles_.sums(tile);
        if (!sums) return true;
        const bool whole = renderer_.renderTile(state, slot, tiles_.region(tile), pass_, sums, stop_);
        tiles_.show(tile, pass_.step, picture_);
        return whole;
    }

    const TileRenderer &renderer_;
    const RenderPass &pass_;
    FrameTiles &tiles_;
    Picture &picture_;          // each pixel is written by one thread only
    std::atomic<int> next_ = 0; // tile to begin
    std::atomic<bool> stop_ = false;

    std::mutex mutex_; // for the members below
    std::condition_variable changed_;
    std::vector<int> finishedTiles_; // in the order in which they were finished
    bool tileAwaited_ = false;
    int endedThreads_ = 0;
    RayCounts rays_;
    std::uint64_t samples_ = 0;
};

} // namespace

struct FrameRenderer::Work {
    const RenderScene &scene;
    const RenderJob job;
    const int updates; // of the scene when the frame was begun
    const TileRenderer renderer;
    FrameTiles tiles;
    const int threads;
    Picture picture;
    int samplesDone = 0;
    RenderStatistics statistics;

    Work(const RenderScene &renderScene, const RenderJob &wanted)
        : scene(renderScene), job(checked(wanted)), updates(scene.updates()), renderer(scene.data(), job),
          tiles(regionOf(job), job.samples), threads(threadsFor(job, tiles.count())),
          picture(job.width, job.height), statistics{.threads = threads,
                                                     .rays = {},
                                                     .triangles = scene.triangleCount(),
                                                     .accelerationBytes = scene.accelerationBytes()} {}
};

FrameRenderer::FrameRenderer(const RenderScene &scene, const RenderJob &job) {
    assert(scene.data().acceleration && "prepare the scene first");
    work_ = std::make_unique<Work>(scene, job);
}

FrameRenderer::~FrameRenderer() = default;

bool FrameRenderer::renderPass(const RenderPass &pass, ProgressSink *sink, const std::stop_token &stop) {
    assert(pass.samples >= 1 && pass.step >= 1 && kTileSize % pass.step == 0);
    assert(work_->updates == work_->scene.updates() && "the scene was updated");
    const auto begin = std::chrono::steady_clock::now();
    const RoleScope role(ThreadRole::controller);
    PassRender render(work_->renderer, pass, work_->tiles, work_->picture);
    {
        const SceneServices services(work_->scene.data(), work_->job, regionOf(work_->job), work_->threads,
                                     work_->renderer.cameraItem(), work_->renderer.camera());
        render.run(work_->threads, work_->job.niceness, sink, stop);
    }
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    RenderStatistics &statistics = work_->statistics;
    statistics.seconds += taken.count();
    statistics.rays += render.rays();
    statistics.samples += render.samples();
    if (!render.isComplete()) return false;
    if (pass.step == 1) work_->samplesDone = std::max(work_->samplesDone, std::min(pass.samples, work_->job.samples));
    return true;
}

int FrameRenderer::samplesDone() const { return work_->samplesDone; }
const Picture &FrameRenderer::picture() const { return work_->picture; }
Picture FrameRenderer::takePicture() { return std::move(work_->picture); }
RenderStatistics FrameRenderer::statistics() const { return work_->statistics; }

} // namespace velm::host
