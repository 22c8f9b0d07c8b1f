#include "host/render/frame_pass.h"

#include "host/graph/node.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>

namespace velm::host {

namespace {

using std::chrono::milliseconds;

// Nice values belong to threads on Linux. A system that refuses leaves the thread at its priority, which is harmless.
void addNiceness(int niceness) {
    if (niceness == 0) return;
    const auto thread = static_cast<id_t>(systemThread());
    setpriority(PRIO_PROCESS, thread, getpriority(PRIO_PROCESS, thread) + niceness);
}

} // namespace

// Stops the workers when the scope ends, also early.
struct FramePass::StopScope {
    std::atomic<bool> &stop;
    ~StopScope() { stop = true; }
};

FramePass::FramePass(const SampleRenderer &renderer, FrameTiles &tiles, Picture &picture, int step,
                     const MakeTileWorker &makeWorker)
    : renderer_(renderer), tiles_(tiles), picture_(picture), step_(step), makeWorker_(makeWorker),
      finishedTiles_(static_cast<std::size_t>(tiles.count())) {}

void FramePass::run(Workers::In in, int workers, ProgressSink *sink, const std::stop_token &stop) {
    // Sleeping for a while between reports costs less than waking up for every tile. The first one comes soon.
    constexpr milliseconds kShortestRest{2}, kLongestRest{50};
    results_ = SharedArray<WorkerResult>(static_cast<std::size_t>(workers));
    const std::stop_callback cancel(stop, [this] { progress_->stop = true; });
    const bool ownThreads = in == Workers::In::threads;
    const std::function<void(int)> work = [this, ownThreads](int index) { this->work(index, ownThreads ? index : 0); };
    Workers crew(workers, in, work);
    const StopScope scope{progress_->stop};
    int reported = 0;
    milliseconds rest = sink ? kShortestRest : kLongestRest;
    for (bool ended = false; !ended; rest = std::min(2 * rest, kLongestRest)) {
        ended = crew.wait(rest);
        if (sink) reported = report(reported, *sink);
    }
    if (progress_->wentTooDeep) detail::evaluationTooDeep();
}

WorkerResult FramePass::result() const {
    WorkerResult sum;
    for (std::size_t i = 0; i < results_.size(); ++i) {
        sum.rays += results_[i].rays;
        sum.samples += results_[i].samples;
    }
    return sum;
}

// Reports the tiles that were finished since `reported` of them were reported, and gives the new number of these.
int FramePass::report(int reported, ProgressSink &sink) {
    const int finished = progress_->finished.load();
    const int before = reported;
    for (; reported < finished; ++reported) {
        const int tile = finishedTiles_[static_cast<std::size_t>(reported)].load();
        if (tile == 0) break; // is just being noted
        sink.tile(tiles_.tile(tile - 1).inWindow, picture_);
    }
    if (reported > before && !sink.progress(reported, tiles_.count())) progress_->stop = true;
    return reported;
}

// Catches nothing: an exception of a node has to end the process while the stack still shows whose evaluation it was.
void FramePass::work(int index, int threadIndex) {
    addNiceness(renderer_.job().niceness);
    SlotScope slot(index);
    RayState &state = rayState;
    state = renderer_.initialState(threadIndex);
    const std::unique_ptr<TileWorker> worker = makeWorker_();
    Progress &progress = *progress_;
    slot.run([&] {
        for (int tile = progress.next++; tile < tiles_.count() && !progress.stop; tile = progress.next++)
            if (renderTile(*worker, state, slot, tile)) noteFinished(tile);
    });
    results_[static_cast<std::size_t>(index)] = {.rays = state.counts, .samples = state.samples};
    if (detail::wasEvaluationTooDeep()) progress.wentTooDeep = true;
}

// False when it was stopped in the middle.
bool FramePass::renderTile(TileWorker &worker, RayState &state, SlotScope &slot, int number) {
    const TileSums sums = tiles_.sums(number);
    if (!sums.pixels) return true;
    const bool isWhole = worker.renderTile(state, slot, tiles_.tile(number), sums, progress_->stop);
    tiles_.show(number, step_, picture_);
    return isWhole;
}

void FramePass::noteFinished(int tile) {
    const int index = progress_->finished++;
    finishedTiles_[static_cast<std::size_t>(index)] = tile + 1;
}

} // namespace velm::host
