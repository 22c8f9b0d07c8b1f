// What a render thread keeps between the rays that it casts. The ray functions of a sample are given no context, so
// each thread has one, in its thread-local storage.
#pragma once

#include "host/render/geometry/vector.h"
#include "host/render/scene/render_scene_data.h"
#include "host/render/tracing/ray_counts.h"

#include <array>
#include <cstdint>

namespace velm::host {

// What casts rays: the sample that is being shaded, or the camera.
struct Caster {
    static constexpr std::uint32_t kNone = 0xffffffffu;

    Vec3 position, normal; // of the sample; the geometric normal on the side that its ray came from
    double margin = 0;     // how near to the sample's plane counts as on it; 0 without a sample
    // Rays that start at the position itself, as most do: their origin moved off the surface to the side to which they
    // go. `start` is the position, or not a number where no ray can start.
    Vec3 start;
    std::array<float, 3> front{}, back{};
    std::uint32_t object = kNone, polygon = kNone;
    const std::uint32_t *polygonNumbers = nullptr; // by triangle of the object; null: each is a polygon of its own
    int depth = -1;                                // bounces before the sample
    bool sampled = false;
    double refractionIndex = 1;     // of the medium that the sample's ray came through
    double spotSize = 0;            // footprint there
    const HostItem *item = nullptr; // of the object, or the camera
};

struct RayState {
    const RenderSceneData *world = nullptr; // null while the thread renders nothing
    RTCScene rayScene = nullptr, shadowScene = nullptr;
    RTCIntersectContext context{};
    Caster caster;
    RayCounts counts;
    std::uint64_t samples = 0; // shaded for the camera
    int recursionDepth = 0;
    bool allOpaque = false; // no surface of the scene can let light through in this frame
    int threadIndex = 0;
    int pixelX = 0, pixelY = 0;
    double spread = 0;           // of the footprint, for each metre of path
    std::uint32_t seed = 0;      // of the camera sample that is being computed
    std::uint32_t drawnSets = 0; // sets of light points drawn for it
};

inline constinit thread_local RayState rayState;

// Puts another caster in place for as long as its sample is being shaded.
class CasterScope {
  public:
    CasterScope(RayState &state, const Caster &caster) : state_(state), previous_(state.caster) {
        state.caster = caster;
    }
    ~CasterScope() { state_.caster = previous_; }
    CasterScope(const CasterScope &) = delete;
    CasterScope &operator=(const CasterScope &) = delete;

  private:
    RayState &state_;
    Caster previous_;
};

} // namespace velm::host
