#include "host/render/tile_renderer.h"

#include "host/base/error.h"
#include "host/base/names.h"
#include "host/graph/surface.h"
#include "host/render/geometry/sampling.h"
#include "host/render/tracing/shade.h"

#include <algorithm>
#include <fmt/format.h>
#include <string>
#include <vector>

namespace velm::host {
namespace {

const RenderCamera &findCamera(const RenderSceneData &scene, const std::string &name) {
    const SourceLocation location{.file = scene.sceneFile};
    if (scene.cameras.empty()) throw InputError(location, "the scene has no camera");
    if (name.empty()) return scene.cameras.front();
    std::vector<std::string> names;
    for (const RenderCamera &camera : scene.cameras) {
        if (camera.item->name == name) return camera;
        names.push_back(camera.item->name);
    }
    throw InputError(location, fmt::format("the scene has no camera \"{}\"{}", name, didYouMean(name, names)));
}

// Whether no surface of the scene is transparent anywhere in this frame: none has anything connected to its
// Transparency, and its own value, which is then the same everywhere, is 0.
bool isOpaque(const RenderSceneData &scene) {
    return std::all_of(scene.surfaces.begin(), scene.surfaces.end(), [](const RenderSurface &each) {
        const HostInput *input = each.surface->network().root().findInput("Transparency");
        if (!input || input->source) return false;
        ShadingSample nowhere{};
        return each.surface->evaluateTransparency(&nowhere) <= 0;
    });
}

} // namespace

TileRenderer::TileRenderer(const RenderSceneData &scene, const RenderJob &job)
    : scene_(scene), job_(job), cameraItem_(findCamera(scene, job.camera)),
      camera_(cameraItem_.description, job.width, job.height), allOpaque_(isOpaque(scene)) {}

RayState TileRenderer::initialState(int threadIndex) const {
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

bool TileRenderer::renderTile(RayState &state, SlotScope &slot, const Region &region, const RenderPass &pass,
                              PixelSum *sums, const std::atomic<bool> &stop) const {
    const auto samples = static_cast<std::uint32_t>(std::min(pass.samples, job_.samples));
    for (int y = region.top; y < region.bottom; y += pass.step) {
        for (int x = region.left; x < region.right; x += pass.step) {
            state.pixelX = x;
            state.pixelY = y;
            PixelSum &pixel = sums[pixelInTile(x - region.left, y - region.top)];
            if (!renderPixel(state, slot, samples, pixel, stop)) return false;
        }
    }
    return true;
}

bool TileRenderer::renderPixel(RayState &state, SlotScope &slot, std::uint32_t samples, PixelSum &pixel,
                               const std::atomic<bool> &stop) const {
    const int x = state.pixelX, y = state.pixelY;
    const std::uint32_t pixelSeed =
        combine(combine(scramble(static_cast<std::uint32_t>(x)), static_cast<std::uint32_t>(y)),
                static_cast<std::uint32_t>(job_.frame));
    PixelSum sum = pixel;
    for (; sum.samples < samples && !stop.load(std::memory_order_relaxed); ++sum.samples) {
        const UnitSquare middle = {0.5, 0.5};
        const UnitSquare point = job_.samples == 1 ? middle : stratifiedPoint(sum.samples, pixelSeed);
        state.seed = combine(pixelSeed, sum.samples);
        state.drawnSets = 0;
        if (renderSample(state, camera_.ray(x + point.x, y + point.y), sum.colour)) ++sum.covered;
        slot.step();
    }
    pixel = sum;
    return sum.samples >= samples;
}

// Adds the colour that a camera ray sees; true when that is an object's.
bool TileRenderer::renderSample(RayState &state, const CameraRay &view, Vec3 &sum) const {
    state.origin = {};
    state.origin.item = cameraItem_.item;
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

} // namespace velm::host
