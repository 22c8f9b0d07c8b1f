#include "host/render/tile_worker.h"

#include "host/graph/surface.h"

#include <algorithm>
#include <cstdint>

namespace velm::host {

// ---- Classic order ----

bool ClassicWorker::renderTile(RayState &state, SlotScope &slot, const Tile &tile, const TileSums &sums,
                               const std::atomic<bool> &stop) {
    const RenderJob &job = renderer_.job();
    const auto samples = static_cast<std::uint32_t>(std::min(pass_.samples, samplesOf(job)));
    const auto first = static_cast<std::uint32_t>(job.firstSample);
    for (int y = tile.inWindow.top; y < tile.inWindow.bottom; ++y) {
        for (int x = tile.inWindow.left; x < tile.inWindow.right; ++x) {
            if (x % pass_.step != 0 || y % pass_.step != 0) continue;
            const std::size_t pixel = pixelInTile(x - tile.left, y - tile.top);
            for (const PixelSum &sum = sums.pixels[pixel]; sum.samples < samples; slot.step()) {
                if (stop.load(std::memory_order_relaxed)) return false;
                Vec3 colour;
                layers_.begin(state, 0);
                const double alpha = renderer_.render(state, x, y, first + sum.samples, colour);
                sums.add(pixel, colour, alpha, layers_.values(0), layers_.rules());
            }
        }
    }
    return true;
}

// ---- Repeatable order ----

UnitWorker::UnitWorker(const SampleRenderer &renderer, const RenderPass &pass, const NodeTraits &traits)
    : renderer_(renderer), pass_(pass), haveMemory_(traits.haveMemory), layers_(renderer.layers()) {
    if (traits.draw) noise_.emplace(*traits.restarter);
}

bool UnitWorker::renderTile(RayState &state, SlotScope &slot, const Tile &tile, const TileSums &sums,
                            const std::atomic<bool> &stop) {
    const RenderJob &job = renderer_.job();
    const int end = job.firstSample + std::min(pass_.samples, samplesOf(job));
    // Where results depend on what was evaluated before, a unit is always evaluated whole.
    const Region &pixels = noise_ || haveMemory_ ? tile.inPicture : tile.inWindow;
    const Region area = {.left = pixels.left - tile.left,
                         .top = pixels.top - tile.top,
                         .right = pixels.right - tile.left,
                         .bottom = pixels.bottom - tile.top};
    for (int sample = job.firstSample; sample < end; ++sample) {
        const int levels = sample == 0 ? static_cast<int>(kLevelSteps.size()) : 1;
        for (int level = 0; level < levels; ++level) {
            if (sample == 0 && kLevelSteps[static_cast<std::size_t>(level)] < pass_.step) break;
            const UnitOfWork unit = {.seed = job.seed,
                                     .frame = job.lockNoise ? 0 : job.frame,
                                     .column = tile.column,
                                     .row = tile.row,
                                     .sample = sample,
                                     .level = level};
            if (!renderUnit(state, slot, unit, area, sums, stop)) return false;
        }
    }
    return true;
}

bool UnitWorker::renderUnit(RayState &state, SlotScope &slot, const UnitOfWork &unit, const Region &area,
                            const TileSums &sums, const std::atomic<bool> &stop) {
    // A node with memory, such as a counter, makes a pattern of the order that artists know: row by row.
    const auto by = noise_ && !haveMemory_ ? PixelOrder::By::hash : PixelOrder::By::rows;
    const auto done = static_cast<std::uint32_t>(unit.sample - renderer_.job().firstSample);
    if (unit.sample > 0 && sums.pixels[pixelInTile(area.left, area.top)].samples > done) return true;
    const std::span<const std::uint16_t> pixels = order_.arrange(unit, area, by);
    if (pixels.empty() || sums.pixels[pixels.front()].samples > done) return true;
    if (stop.load(std::memory_order_relaxed)) return false;

    begin(unit, pixels.size());
    const RoleScope role(ThreadRole::render);
    const DenormalsAreZero denormals;
    const int left = unit.column * kTileSize, top = unit.row * kTileSize;
    Result *result = results_.data();
    std::size_t index = 0;
    for (const int pixel : pixels) {
        if (stop.load(std::memory_order_relaxed)) return false;
        layers_.begin(state, index++);
        result->alpha = renderSample(state, left + pixel % kTileSize, top + pixel / kTileSize,
                                     static_cast<std::uint32_t>(unit.sample), result->colour);
        ++result;
        slot.step();
    }
    for (std::size_t i = 0; i < pixels.size(); ++i)
        sums.add(pixels[i], results_[i].colour, results_[i].alpha, layers_.values(i), layers_.rules());
    return true;
}

// Sets the state from which a unit begins.
void UnitWorker::begin(const UnitOfWork &unit, std::size_t pixels) {
    const RenderJob &job = renderer_.job();
    if (haveMemory_) {
        for (const RenderSurface &each : renderer_.scene().surfaces) {
            each.surface->cleanup();
            each.surface->init(job.initMode);
            each.surface->newTime(job.frame, job.time);
        }
    }
    if (noise_) noise_->place(wordsToSkip(unit.hash(), pixels));
}

} // namespace velm::host
