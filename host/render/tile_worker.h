// The two ways in which a worker renders a tile.
#pragma once

#include "host/base/thread_role.h"
#include "host/guard/call_record.h"
#include "host/render/frame_tiles.h"
#include "host/render/order/choose_order.h"
#include "host/render/order/noise_stream.h"
#include "host/render/sample_renderer.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <optional>
#include <vector>

namespace velm::host {

// Records the layers of one sample after the other, if there are any.
class SampleLayers {
  public:
    explicit SampleLayers(const LayerPlan &plan)
        : recorder_(plan), channels_(plan.channels().size()), rules_(plan.rules()), values_(channels_ * kTilePixels) {}

    // Begins sample `index` of up to kTilePixels that are recorded together.
    void begin(RayState &state, std::size_t index) {
        if (channels_ == 0) return;
        state.layers = &recorder_;
        recorder_.begin(&values_[index * channels_]);
    }
    const double *values(std::size_t index) const { return values_.data() + index * channels_; }
    const std::vector<LayerRule> &rules() const { return rules_; }

  private:
    LayerRecorder recorder_;
    const std::size_t channels_; // of a sample
    const std::vector<LayerRule> &rules_;
    std::vector<double> values_;
};

// Renders the tiles of one worker in a pass.
class TileWorker {
  public:
    virtual ~TileWorker() = default;
    // Adds the samples of the pass that a tile does not have yet to the sums of its pixels. Looks at `stop` before each
    // sample, and returns false as soon as it is set. Counts finished samples as steps of `slot`.
    virtual bool renderTile(RayState &state, SlotScope &slot, const Tile &tile, const TileSums &sums,
                            const std::atomic<bool> &stop) = 0;
};

// In classic order: pixel by pixel, each with all its samples, without setting any state.
class ClassicWorker final : public TileWorker {
  public:
    ClassicWorker(const SampleRenderer &renderer, const RenderPass &pass)
        : renderer_(renderer), pass_(pass), layers_(renderer.layers()) {}
    bool renderTile(RayState &state, SlotScope &slot, const Tile &tile, const TileSums &sums,
                    const std::atomic<bool> &stop) override;

  private:
    const SampleRenderer &renderer_;
    const RenderPass pass_;
    SampleLayers layers_;
    const RoleScope role_{ThreadRole::render};
    const DenormalsAreZero denormals_;
};

// In repeatable order: unit of work by unit of work. A unit that was stopped in the middle leaves no trace in the sums.
class UnitWorker : public TileWorker {
  public:
    UnitWorker(const SampleRenderer &renderer, const RenderPass &pass, const NodeTraits &traits);
    bool renderTile(RayState &state, SlotScope &slot, const Tile &tile, const TileSums &sums,
                    const std::atomic<bool> &stop) override;

  protected:
    // Evaluates sample `index` of a pixel: the camera's, unless a derived class has others. Returns the alpha.
    virtual double renderSample(RayState &state, int x, int y, std::uint32_t index, Vec3 &colour) {
        return renderer_.render(state, x, y, index, colour);
    }

  private:
    struct Result {
        Vec3 colour;
        double alpha;
    };
    bool renderUnit(RayState &state, SlotScope &slot, const UnitOfWork &unit, const Region &area, const TileSums &sums,
                    const std::atomic<bool> &stop);
    void begin(const UnitOfWork &unit, std::size_t pixels);

    const SampleRenderer &renderer_;
    const RenderPass pass_;
    const bool haveMemory_;
    std::optional<NoiseStream> noise_; // where nodes draw
    PixelOrder order_;
    std::array<Result, kTilePixels> results_; // of a unit, in its order
    SampleLayers layers_;                     // likewise
};

} // namespace velm::host
