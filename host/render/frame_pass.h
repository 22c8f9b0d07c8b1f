// A pass over a frame: its workers take tiles from a common counter, and the thread that started them reports the tiles
// that they have finished.
#pragma once

#include "host/base/shared_memory.h"
#include "host/guard/call_record.h"
#include "host/guard/shared_record.h"
#include "host/guard/workers.h"
#include "host/render/frame_tiles.h"
#include "host/render/progress_sink.h"
#include "host/render/tile_worker.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <stop_token>

namespace velm::host {

// What a worker has done when it ends.
struct WorkerResult {
    RayCounts rays;
    std::uint64_t samples = 0; // camera samples that hit something and were shaded
};

class FramePass {
  public:
    using MakeTileWorker = std::function<std::unique_ptr<TileWorker>()>;

    // `makeWorker` is called in each worker. All of these have to outlive the pass.
    FramePass(const SampleRenderer &renderer, FrameTiles &tiles, Picture &picture, int step,
              const MakeTileWorker &makeWorker);

    // Renders with this many workers, and returns when they have ended. Rethrows what the sink throws, and throws what
    // Workers throws when one fails; in both cases the others are ended before. The sink may be null.
    void run(Workers::In in, int workers, ProgressSink *sink, const std::stop_token &stop);

    bool isComplete() const { return progress_->finished.load() == tiles_.count(); }
    WorkerResult result() const; // of all workers together

  private:
    struct Progress {
        std::atomic<int> next = 0;     // tile to begin
        std::atomic<int> finished = 0; // tiles
        std::atomic<bool> stop = false;
        std::atomic<bool> wentTooDeep = false; // evaluations were cut off
    };
    struct StopScope;

    void work(int index, int threadIndex);
    bool renderTile(TileWorker &worker, RayState &state, SlotScope &slot, int number);
    void noteFinished(int tile);
    int report(int reported, ProgressSink &sink);

    const SampleRenderer &renderer_;
    FrameTiles &tiles_;
    Picture &picture_; // each pixel is written by one worker only
    const int step_;
    const MakeTileWorker &makeWorker_;
    // Shared with the workers' processes.
    SharedRecord<Progress> progress_;
    SharedArray<std::atomic<int>> finishedTiles_; // one more than a tile's number, in the order of finishing
    SharedArray<WorkerResult> results_;           // by worker
};

} // namespace velm::host
