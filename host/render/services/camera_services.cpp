// The "LW Camera Evaluation Funcs 2" and "LW Camera Info 5" services: rays, films and shutters of the scene's cameras.
// They are pinhole cameras that do not move: their rays are the same at every point of the lens and at every moment,
// so that an evaluator is ready from its creation on and keeps nothing from frame to frame.
#include "host/base/thread_role.h"
#include "host/render/scene/camera.h"
#include "host/render/scene/current_scene.h"
#include "host/render/services/scene_services.h"

#include <cmath>
#include <exception>

// A camera made ready to give rays. The opaque handle of the wall; it may outlive its scene.
struct HostCameraEvaluator {
    velm::host::Camera camera;
};

namespace velm::host {
namespace {

const RenderCamera *cameraOf(const HostItem *item) {
    const HostItem *known = currentItem(item);
    if (!known || known->type != kItemCamera) return nullptr;
    return &currentScene().world->cameras[static_cast<std::size_t>(known->index)];
}

// Null also for a camera that no picture could be taken with, and without memory.
HostCameraEvaluator *create(HostItem *item) {
    assertBetweenFrames();
    const RenderCamera *found = cameraOf(item);
    if (!found) return nullptr;
    try {
        return new HostCameraEvaluator{Camera(found->description, currentScene().width, currentScene().height)};
    } catch (const std::exception &) {
        return nullptr; // how this service tells of it
    }
}

void destroy(HostCameraEvaluator *evaluator) {
    assertBetweenFrames();
    delete evaluator;
}

HostError ready(const HostCameraEvaluator *evaluator) {
    assertBetweenFrames();
    return evaluator ? nullptr : "there is no camera evaluator";
}

int evaluate(HostCameraEvaluator *evaluator, double filmX, double filmY, double, double, double, HostCameraRay *ray) {
    assertRender();
    if (!evaluator || !std::isfinite(filmX) || !std::isfinite(filmY)) return 0;
    const Camera &camera = evaluator->camera;
    const CameraRay found = camera.filmRay(filmX, filmY);
    *ray = {};
    for (int i = 0; i < 3; ++i) ray->filter[i][i] = 1; // clear glass
    found.origin.store(ray->origin);
    found.direction.store(ray->direction);
    camera.forward().store(ray->filmNormal);
    return 1;
}

constexpr HostCameraEvaluation kCameraEvaluation = {
    .create = create,
    .destroy = destroy,
    .init = [](HostCameraEvaluator *evaluator, int) { return ready(evaluator); },
    .cleanup = [](HostCameraEvaluator *) {},
    .newTime = [](HostCameraEvaluator *evaluator, int, double) { return ready(evaluator); },
    .preview = [](HostCameraEvaluator *, int) {},
    .reset = [](HostCameraEvaluator *) {},
    .evaluate = evaluate,
};

// What is no camera has no film.
void filmSizeOf(HostItem *camera, double *width, double *height) {
    const CurrentScene &scene = currentScene();
    const FilmSize size = cameraOf(camera) ? filmSize(scene.width, scene.height) : FilmSize{.width = 0, .height = 0};
    *width = size.width;
    *height = size.height;
}

// The shutter opens once, at the frame's own time, and stays open until the next frame's. No frame has further
// intervals, as of fields.
void frameTiming(HostItem *camera, int frame, HostFrameTiming *timing) {
    assertBetweenFrames();
    *timing = {};
    if (!cameraOf(camera)) return;
    const double framesPerSecond = currentScene().world->render.framesPerSecond;
    timing->intervals[0] = {
        .count = 1, .offset = frame / framesPerSecond, .duration = 1 / framesPerSecond, .stride = 1 / framesPerSecond};
}

constexpr HostCameraInfo kCameraInfo = {.reserved = {}, .filmSize = filmSizeOf, .frameTiming = frameTiming};

} // namespace

const HostCameraEvaluation *cameraEvaluation() { return &kCameraEvaluation; }
const HostCameraInfo *cameraInfo() { return &kCameraInfo; }

} // namespace velm::host
