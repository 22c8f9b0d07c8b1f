// Frames: tiles, threads and the samples of a pixel.
#include "host/render/renderer.h"

#include "host/base/error.h"
#include "host/base/names.h"
#include "host/base/thread_role.h"
#include "host/graph/surface.h"
#include "host/guard/call_record.h"
#include "host/render/geometry/sampling.h"
#include "host/render/scene/camera.h"
#include "host/render/services/scene_services.h"
#include "host/render/tracing/shade.h"

#include <pmmintrin.h>
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

constexpr int kTileSize = 16;

Region regionOf(const RenderJob &job) {
    const Region &region = job.region;
    const bool whole = region.left == 0 && region.top == 0 && region.right == 0 && region.bottom == 0;
    return whole ? Region{.left = 0, .top = 0, .right = job.width, .bottom = job.height} : region;
}

void checkJob(const RenderJob &job) {
    const auto require = [](bool holds, const std::string &what) {
        if (!holds) throw InputError(what);
    };
    require(job.width >= 1 && job.height >= 1 && job.width <= kLargestSide && job.height <= kLargestSide,
            "a picture has to be 1 to " + std::to_string(kLargestSide) + " pixels wide and high");
    require(job.samples >= 1, "a pixel has to have at least 1 sample");
    require(job.threads >= 0 && job.threads <= kMaxThreads,
            "there can be 1 to " + std::to_string(kMaxThreads) + " render threads");
    require(job.recursionDepth >= 0 && job.recursionDepth <= kMaxRecursionDepth,
            "the recursion depth has to be 0 to " + std::to_string(kMaxRecursionDepth));
    const Region region = regionOf(job);
    require(region.left >= 0 && region.top >= 0 && region.left < region.right && region.top < region.bottom &&
                region.right <= job.width && region.bottom <= job.height,
            "the region to be rendered does not lie in the picture of " + std::to_string(job.width) + " by " +
                std::to_string(job.height) + " pixels");
}

const RenderCamera &findCamera(const RenderSceneData &scene, const std::string &name) {
    if (scene.cameras.empty()) throw InputError(SourceLocation{.file = scene.sceneFile}, "the scene has no camera");
    if (name.empty()) return scene.cameras.front();
    std::vector<std::string> names;
    for (const RenderCamera &camera : scene.cameras) {
        if (camera.item.name == name) return camera;
        names.push_back(camera.item.name);
    }
    throw InputError(SourceLocation{.file = scene.sceneFile},
                     "the scene has no camera \"" + name + "\"" + didYouMean(name, names));
}

// Whether nothing in the scene can let light through in this frame: no surface has anything connected to its
// Transparency, and its own value, which is then the same everywhere, is 0.
bool isOpaque(const RenderSceneData &scene) {
    return std::all_of(scene.surfaces.begin(), scene.surfaces.end(), [](const RenderSurface &each) {
        const HostInput *input = each.surface->editor().root().findInput("Transparency");
        if (!input || input->source) return false;
        ShadingSample nowhere{};
        return each.surface->evaluateTransparency(&nowhere) <= 0;
    });
}

// One frame under way: shared by the threads that render it and the one that waits for them.
class FrameRender {
  public:
    FrameRender(const RenderSceneData &scene, const RenderJob &job)
        : scene_(scene), job_(job), region_(regionOf(job)), cameraItem_(findCamera(scene, job.camera)),
          camera_(cameraItem_.description, job.width, job.height), picture_(job.width, job.height),
          allOpaque_(isOpaque(scene)), columns_((region_.right - region_.left + kTileSize - 1) / kTileSize),
          rows_((region_.bottom - region_.top + kTileSize - 1) / kTileSize) {}

    void run(int threads, ProgressSink *sink) {
        const SceneServices services(scene_, job_, region_, threads, cameraItem_, camera_);
        std::vector<std::jthread> workers; // joined also when the sink throws, after the tiles under way
        workers.reserve(static_cast<std::size_t>(threads));
        const CancelScope cancel{next_, tileCount()};
        for (int index = 0; index < threads; ++index) workers.emplace_back([this, index] { work(index); });
        watch(threads, sink);
        workers.clear();
    }

    int tileCount() const { return columns_ * rows_; }
    Picture takePicture() { return std::move(picture_); }
    bool isComplete() const { return done_ == tileCount(); }
    const RayCounts &rays() const { return rays_; }
    std::uint64_t samples() const { return samples_; }

  private:
    // Leaves no tile to be begun when the scope ends early.
    struct CancelScope {
        std::atomic<int> &next;
        int count;
        ~CancelScope() { next.store(count); }
    };

    // Tells the sink of tiles soon after they are done, but sleeps in between: being woken for every tile would cost
    // more than many a tile, and render threads a core.
    void watch(int threads, ProgressSink *sink) {
        constexpr std::chrono::milliseconds kRest{50};
        const auto allFinished = [this, threads] { return finishedThreads_ == threads; };
        std::unique_lock lock(mutex_);
        for (int told = 0; sink;) {
            tileAwaited_ = true;
            changed_.wait(lock, [&] { return done_ > told || allFinished(); });
            if (done_ == told) return;
            told = done_;
            lock.unlock();
            if (!sink->progress(told, tileCount())) next_.store(tileCount());
            lock.lock();
            changed_.wait_for(lock, kRest, allFinished);
        }
        changed_.wait(lock, allFinished);
    }

    void endTile() {
        ++done_;
        if (!tileAwaited_.exchange(false)) return;
        const std::lock_guard lock(mutex_); // not between the waiting thread's look at done_ and its sleep
        changed_.notify_one();
    }

    // Catches nothing: what a node throws is to end the program while the stack still tells whose evaluation it was.
    void work(int threadIndex) {
        const RoleScope role(ThreadRole::render);
        SlotScope slot(threadIndex);
        // As Embree asks for: denormal numbers are slow and tell nothing here.
        _MM_SET_FLUSH_ZERO_MODE(_MM_FLUSH_ZERO_ON);
        _MM_SET_DENORMALS_ZERO_MODE(_MM_DENORMALS_ZERO_ON);
        RayState &state = rayState;
        state = initialState(threadIndex);
        for (int tile = next_++; tile < tileCount(); tile = next_++) {
            renderTile(state, slot, tile);
            endTile();
        }
        const std::lock_guard lock(mutex_);
        rays_ += state.counts;
        samples_ += state.samples;
        ++finishedThreads_;
        changed_.notify_one();
    }

    RayState initialState(int threadIndex) const {
        RayState state;
        state.scene = &scene_;
        state.rayScene = scene_.acceleration->rayScene();
        state.shadowScene = scene_.acceleration->shadowScene();
        rtcInitIntersectContext(&state.context);
        state.recursionDepth = job_.recursionDepth;
        state.allOpaque = allOpaque_;
        state.threadIndex = threadIndex;
        return state;
    }

    void renderTile(RayState &state, SlotScope &slot, int tile) {
        const int left = region_.left + tile % columns_ * kTileSize, top = region_.top + tile / columns_ * kTileSize;
        for (int y = top; y < std::min(top + kTileSize, region_.bottom); ++y) {
            for (int x = left; x < std::min(left + kTileSize, region_.right); ++x) renderPixel(state, slot, x, y);
        }
    }

    void renderPixel(RayState &state, SlotScope &slot, int x, int y) {
        state.pixelX = x;
        state.pixelY = y;
        const std::uint32_t pixelSeed =
            combine(combine(scramble(static_cast<std::uint32_t>(x)), static_cast<std::uint32_t>(y)),
                    static_cast<std::uint32_t>(job_.frame));
        Vec3 sum;
        int covered = 0;
        for (int i = 0; i < job_.samples; ++i) {
            const auto index = static_cast<std::uint32_t>(i);
            const UnitSquare middle = {0.5, 0.5};
            const UnitSquare point = job_.samples == 1 ? middle : stratifiedPoint(index, pixelSeed);
            state.seed = combine(pixelSeed, index);
            state.drawnSets = 0;
            if (renderSample(state, camera_.ray(x + point.x, y + point.y), sum)) ++covered;
            slot.step();
        }
        float *pixel = picture_.pixel(x, y);
        const double weight = 1.0 / job_.samples;
        pixel[0] = static_cast<float>(weight * sum.x);
        pixel[1] = static_cast<float>(weight * sum.y);
        pixel[2] = static_cast<float>(weight * sum.z);
        pixel[3] = static_cast<float>(weight * covered);
    }

    // Adds what a camera ray sees; true when that is an object.
    bool renderSample(RayState &state, const CameraRay &view, Vec3 &sum) const {
        state.origin = {};
        state.origin.item = &cameraItem_.item;
        state.spread = view.spread;
        ++state.counts.camera;
        RTCRayHit ray;
        Vec3 unit;
        if (!spawnRay(state.origin, view.origin, view.direction, ray, unit) ||
            !findHit(state, scene_.acceleration->cameraScene(), ray, {})) {
            double colour[3];
            const double direction[3] = {view.direction.x, view.direction.y, view.direction.z};
            scene_.backdrop.evaluate(direction, colour);
            sum += Vec3(colour);
            return false;
        }
        ++state.samples;
        ShadingSample sample;
        SurfaceValues values;
        sum += shadeHit(state, ray, {.direction = unit, .refractionIndex = 1, .flags = 0}, sample, values);
        return true;
    }

    const RenderSceneData &scene_;
    const RenderJob &job_;
    const Region region_;
    const RenderCamera &cameraItem_;
    const Camera camera_;
    Picture picture_; // every pixel is written by one thread only
    const bool allOpaque_;
    const int columns_, rows_;
    std::atomic<int> next_ = 0; // tile to be begun
    std::atomic<int> done_ = 0; // tiles
    std::atomic<bool> tileAwaited_ = false;

    std::mutex mutex_; // for what follows
    std::condition_variable changed_;
    int finishedThreads_ = 0;
    RayCounts rays_;
    std::uint64_t samples_ = 0;
};

int threadsFor(const RenderJob &job) {
    if (job.threads > 0) return job.threads;
    return std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, static_cast<int>(kMaxThreads));
}

} // namespace

Frame renderFrame(const RenderScene &scene, const RenderJob &job, ProgressSink *sink) {
    assert(scene.data().acceleration && "the World is prepared first");
    checkJob(job);
    const auto begin = std::chrono::steady_clock::now();
    const RoleScope role(ThreadRole::controller);
    FrameRender render(scene.data(), job);
    const int threads = std::min(threadsFor(job), render.tileCount());
    render.run(threads, sink);

    Frame frame;
    frame.picture = render.takePicture();
    frame.complete = render.isComplete();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    frame.statistics = {.seconds = taken.count(),
                        .threads = threads,
                        .rays = render.rays(),
                        .samples = render.samples(),
                        .triangles = scene.triangleCount(),
                        .accelerationBytes = scene.accelerationBytes()};
    return frame;
}

} // namespace velm::host
