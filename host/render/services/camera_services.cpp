// The "LW Camera Evaluation Funcs 2" and "LW Camera Info 5" services: rays, films and shutters of the scene's cameras.
// A camera without a shutter time moves between frames only: its rays are the same at every time fraction. An evaluator
// is ready once it is created, and follows the camera at each new time.
#include "host/base/thread_role.h"
#include "host/render/scene/camera.h"
#include "host/render/scene/current_scene.h"
#include "host/render/services/scene_services.h"

#include <cmath>
#include <exception>

// A camera prepared for evaluating rays. An opaque handle of the plug-in interface; it may outlive its scene.
struct HostCameraEvaluator {
    const HostItem *item;
    velm::host::MovingCamera camera;
    double shutterPart; // of the scene's shutter
};

namespace velm::host {
namespace {

const RenderCamera *cameraOf(const HostItem *item) {
    const HostItem *known = currentItem(item);
    if (!known || known->type != kItemCamera) return nullptr;
    return &currentScene().scene->cameras[static_cast<std::size_t>(known->index)];
}

HostCameraEvaluator evaluatorOf(const HostItem *item, const RenderCamera &camera) {
    const CurrentScene &scene = currentScene();
    return {.item = item,
            .camera = MovingCamera(stepsOf(camera), scene.width, scene.height, scene.scene->render.pixelAspect),
            .shutterPart = scene.scene->shutterPart(camera.description)};
}

// Null for an item that is no camera of the current scene, for a camera with invalid settings, and without memory.
HostCameraEvaluator *create(HostItem *item) {
    assertBetweenFrames();
    const RenderCamera *found = cameraOf(item);
    if (!found) return nullptr;
    try {
        return new HostCameraEvaluator(evaluatorOf(item, *found));
    } catch (const std::exception &) {
        return nullptr; // this service's way to report errors
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

// An evaluator whose camera is no longer in the scene stays as it was.
HostError newTime(HostCameraEvaluator *evaluator, int, double) {
    assertBetweenFrames();
    if (!evaluator) return ready(evaluator);
    const RenderCamera *found = cameraOf(evaluator->item);
    if (!found) return nullptr;
    try {
        *evaluator = evaluatorOf(evaluator->item, *found);
    } catch (const std::exception &) {
        return "the camera has invalid settings";
    }
    return nullptr;
}

// A position beyond the edge of the lens counts as the nearest one on the edge.
DiscPoint onLens(double x, double y) {
    const double distance = std::hypot(x, y);
    return distance > 1 ? DiscPoint{x / distance, y / distance} : DiscPoint{x, y};
}

int evaluate(HostCameraEvaluator *evaluator, double filmX, double filmY, double lensX, double lensY,
             double timeFraction, HostCameraRay *ray) {
    assertRender();
    if (!evaluator || !std::isfinite(filmX) || !std::isfinite(filmY)) return 0;
    const MovingCamera &camera = evaluator->camera;
    if (camera.atOpening().hasLens() && !std::isfinite(std::hypot(lensX, lensY))) return 0;
    if (camera.moves() && !std::isfinite(timeFraction)) return 0;
    const double time = camera.moves() ? timeFraction * evaluator->shutterPart : 0;
    const CameraRay found =
        camera.ray(time, [&](const Camera &step) { return step.filmRay(filmX, filmY, onLens(lensX, lensY)); });
    *ray = {};
    for (int i = 0; i < 3; ++i) ray->filter[i][i] = 1; // a filter that lets everything pass
    found.origin.store(ray->origin);
    found.direction.store(ray->direction);
    camera.forward(time).store(ray->filmNormal);
    return 1;
}

constexpr HostCameraEvaluation kCameraEvaluation = {
    .create = create,
    .destroy = destroy,
    .init = [](HostCameraEvaluator *evaluator, int) { return ready(evaluator); },
    .cleanup = [](HostCameraEvaluator *) {},
    .newTime = newTime,
    .preview = [](HostCameraEvaluator *, int) {},
    .reset = [](HostCameraEvaluator *) {},
    .evaluate = evaluate,
};

// The film of a camera, in metres; 0 by 0 for an item that is no camera of the current scene.
void filmSizeOf(HostItem *camera, double *width, double *height) {
    const CurrentScene &scene = currentScene();
    FilmSize size{.width = 0, .height = 0};
    if (const RenderCamera *found = cameraOf(camera))
        size = filmSize(found->description, scene.width, scene.height, scene.scene->render.pixelAspect);
    *width = size.width;
    *height = size.height;
}

// The shutter opens once, at the frame's time, and stays open for the camera's part of a frame; without one, until the
// next frame's. There are no further intervals, such as those of fields.
void frameTiming(HostItem *camera, int frame, HostFrameTiming *timing) {
    assertBetweenFrames();
    *timing = {};
    const RenderCamera *found = cameraOf(camera);
    if (!found) return;
    const double framesPerSecond = currentScene().scene->render.framesPerSecond;
    const double shutter = found->description.shutter;
    timing->intervals[0] = {.count = 1,
                            .offset = frame / framesPerSecond,
                            .duration = (shutter > 0 ? shutter : 1) / framesPerSecond,
                            .stride = 1 / framesPerSecond};
}

constexpr HostCameraInfo kCameraInfo = {.reserved = {}, .filmSize = filmSizeOf, .frameTiming = frameTiming};

} // namespace

const HostCameraEvaluation *cameraEvaluation() { return &kCameraEvaluation; }
const HostCameraInfo *cameraInfo() { return &kCameraInfo; }

} // namespace velm::host
