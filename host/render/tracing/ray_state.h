// The state of a render thread. The ray functions of a shading sample take no context argument, so each render thread
// keeps its state in thread-local storage.
#pragma once

#include "host/render/geometry/vector.h"
#include "host/render/scene/render_scene_data.h"
#include "host/render/tracing/ray_counts.h"

#include <array>
#include <cstdint>
#include <string>

namespace velm::host {

// Where rays come from: the sample that is being shaded, or the camera.
struct RayOrigin {
    static constexpr std::uint32_t kNone = 0xffffffffu;

    Vec3 position, normal; // of the sample; the geometric normal on the side that its ray came from
    double margin = 0;     // points nearer than this to the sample's plane count as on it; 0 for the camera
    // Most rays start at the sample's position itself. Their start is computed once for both sides of the surface:
    // `front` and `back` are the position moved off the surface by the margin. `start` is the position, or NaN where no
    // ray can start.
    Vec3 start;
    std::array<float, 3> front{}, back{};
    std::uint32_t object = kNone, polygon = kNone;
    const std::uint32_t *polygonNumbers = nullptr; // by triangle of the object; null: every triangle is a polygon
    int depth = -1;                                // bounces before the sample; -1 for the camera
    bool sampled = false;
    double refractionIndex = 1;     // of the medium that the sample's ray travelled in
    double spotSize = 0;            // footprint of a pixel at the sample, in metres
    double travelled = 0;           // metres from the camera to the sample, along the path of its rays
    float time = 0;                 // of the rays while the scene's shutter is open, from 0 to 1
    const HostItem *item = nullptr; // the object or the camera
};

// Where a colour that is NaN or infinite comes from.
struct NotFiniteSource {
    std::string surface, node; // names; empty if no node makes the value
    bool isBackdrop = false;

    bool isKnown() const { return isBackdrop || !node.empty(); }
};

class LayerRecorder;

struct RayState {
    const RenderSceneData *scene = nullptr; // null while the thread is not rendering
    RTCScene rayScene = nullptr, shadowScene = nullptr;
    std::uint32_t objects = 0; // of the scene
    RTCIntersectContext context{};
    RayOrigin origin;
    RayCounts counts;
    std::uint64_t samples = 0; // camera samples that hit something and were shaded
    int recursionDepth = 0;
    bool allOpaque = false; // no surface of the scene is transparent anywhere in this frame
    int threadIndex = 0;
    int pixelX = 0, pixelY = 0;
    double spread = 0;                    // growth of the footprint per metre of path
    std::uint32_t seed = 0;               // of the current camera sample
    std::uint32_t drawnSets = 0;          // sets of light points drawn for the current camera sample
    NotFiniteSource *notFinite = nullptr; // set at the first such value; null if it is not looked for
    LayerRecorder *layers = nullptr;      // null if the picture has no layers
};

inline constinit thread_local RayState rayState;

// Makes a sample the origin of the thread's rays while that sample is being shaded.
class RayOriginScope {
  public:
    RayOriginScope(RayState &state, const RayOrigin &origin) : state_(state), previous_(state.origin) {
        state.origin = origin;
    }
    ~RayOriginScope() { state_.origin = previous_; }
    RayOriginScope(const RayOriginScope &) = delete;
    RayOriginScope &operator=(const RayOriginScope &) = delete;

  private:
    RayState &state_;
    RayOrigin previous_;
};

} // namespace velm::host
