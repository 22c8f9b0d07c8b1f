#include "host/render/sample_renderer.h"

#include "host/base/error.h"
#include "host/base/names.h"
#include "host/graph/surface.h"
#include "host/render/geometry/sampling.h"
#include "host/render/tracing/shade.h"

#include <pmmintrin.h>
#include <xmmintrin.h>

#include <algorithm>
#include <fmt/format.h>
#include <optional>
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

std::uint32_t pixelSeed(const RenderJob &job, int x, int y) {
    const std::uint32_t seed = combine(combine(scramble(static_cast<std::uint32_t>(x)), static_cast<std::uint32_t>(y)),
                                       job.lockNoise ? 0 : static_cast<std::uint32_t>(job.frame));
    return job.seed == 0 ? seed : combine(seed, job.seed);
}

SampleRenderer::SampleRenderer(const RenderSceneData &scene, const RenderJob &job)
    : scene_(scene), job_(job), cameraItem_(findCamera(scene, job.camera)),
      camera_(stepsOf(cameraItem_), job.width, job.height, scene.render.pixelAspect),
      shutterPart_(scene.shutterPart(cameraItem_.description)),
      mask_(pixelsOfPicture(cameraItem_.description.mask, job.width, job.height)), allOpaque_(isOpaque(scene)),
      filter_(job.filter), layers_(scene, job.layers) {}

RayState SampleRenderer::initialState(int threadIndex) const {
    RayState state;
    state.scene = &scene_;
    state.rayScene = scene_.acceleration->rayScene();
    state.shadowScene = scene_.acceleration->shadowScene();
    state.objects = static_cast<std::uint32_t>(scene_.objects.size());
    rtcInitIntersectContext(&state.context);
    state.recursionDepth = job_.recursionDepth;
    state.allOpaque = allOpaque_;
    state.threadIndex = threadIndex;
    return state;
}

CameraRay SampleRenderer::cameraRay(const PicturePoint &point, double time, std::uint32_t index,
                                    std::uint32_t pixelSeed) const {
    return camera_.ray(time, [&](const Camera &camera) {
        if (!camera.hasLens()) return camera.ray(point.x, point.y);
        return camera.ray(point.x, point.y, camera.lensPoint(samplePoint(index, pixelSeed, SamplePurpose::lens)));
    });
}

double SampleRenderer::render(RayState &state, int x, int y, std::uint32_t index, Vec3 &colour) const {
    if (!mask_.contains(x, y)) [[unlikely]] {
        colour = Vec3(cameraItem_.description.maskColour);
        return 1;
    }
    const std::uint32_t pixelSeed = velm::host::pixelSeed(job_, x, y);
    PicturePoint point = {0.5, 0.5}; // from the upper left corner of the pixel
    if (job_.samples > 1) {
        const UnitSquare stratified = stratifiedPoint(index, pixelSeed);
        point = {filter_.coordinate(stratified.x), filter_.coordinate(stratified.y)};
    }
    state.pixelX = x;
    state.pixelY = y;
    state.seed = combine(pixelSeed, index);
    state.drawnSets = 0;

    // As a fraction of the scene's shutter. Without motion blur, all rays are at its opening.
    const double time = shutterPart_ > 0 ? shutterPart_ * samplePoint(index, pixelSeed, SamplePurpose::time).x : 0;
    const CameraRay view = cameraRay({x + point.x, y + point.y}, time, index, pixelSeed);
    state.origin = {};
    state.origin.time = static_cast<float>(time);
    state.origin.item = cameraItem_.item;
    state.spread = view.spread;
    ++state.counts.camera;
    RTCRayHit ray;
    Vec3 unit;
    if (!spawnRay(state.origin, view.origin, view.direction, ray, unit) ||
        !findHit(state, scene_.acceleration->cameraScene(), ray, {})) {
        colour = job_.backdropLeftOut ? Vec3{} : backdropAlong(state, view.direction);
        return 0;
    }
    ++state.samples;
    if (state.layers) [[unlikely]]
        state.layers->setForward(camera_.forward(time));
    const SeenColour seen = shadeRay(state, scene_.acceleration->cameraScene(), {}, ray,
                                     {.direction = unit, .refractionIndex = 1, .flags = 0},
                                     job_.backdropLeftOut ? std::optional(Vec3{}) : std::nullopt);
    colour = seen.colour;
    return seen.opacity;
}

SceneServices servicesFor(const SampleRenderer &renderer, int threads) {
    const RenderJob &job = renderer.job();
    return {renderer.scene(), job, regionOf(job), threads, renderer.cameraItem(), renderer.camera()};
}

DenormalsAreZero::DenormalsAreZero() : previous_(_mm_getcsr()) {
    _mm_setcsr(previous_ | _MM_FLUSH_ZERO_ON | _MM_DENORMALS_ZERO_ON);
}

DenormalsAreZero::~DenormalsAreZero() { _mm_setcsr(previous_); }

} // namespace velm::host
