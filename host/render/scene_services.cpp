#include "host/render/scene_services.h"

#include "host/services/lookup.h"
#include "host/services/scene_info.h"
#include "host/thread_role.h"

#include <utility>

namespace velm {
namespace {

CurrentScene current;

HostItem *renderingCamera = nullptr;

HostItem *renderCamera(double) { return renderingCamera; }

HostSceneInfo factsOf(const WorldData &world, const RenderJob &job, const Region &region, int threads) {
    std::size_t points = 0, polygons = 0;
    for (const WorldObject &object : world.objects) {
        points += object.mesh.points.size();
        polygons += object.mesh.polygonCount;
    }
    const RenderDescription &scene = world.render;
    return {.name = world.sceneName.c_str(),
            .fileName = world.sceneFile.c_str(),
            .points = static_cast<int>(points),
            .polygons = static_cast<int>(polygons),
            .renderType = 2, // fully shaded
            .renderOptions = 0,
            .firstFrame = scene.firstFrame,
            .lastFrame = scene.lastFrame,
            .frameStep = scene.frameStep,
            .framesPerSecond = scene.framesPerSecond,
            .width = job.width,
            .height = job.height,
            .pixelAspect = 1,
            .minSamplesPerPixel = job.samples,
            .maxSamplesPerPixel = job.samples,
            .limitedRegion = {region.left, region.top, region.right, region.bottom},
            .recursionDepth = job.recursionDepth,
            .renderCamera = renderCamera,
            .threads = threads,
            .animationFile = "",
            .rgbPrefix = "",
            .alphaPrefix = ""};
}

} // namespace

const CurrentScene &currentScene() { return current; }

CurrentScene setCurrentScene(const CurrentScene &scene) {
    assertBetweenFrames();
    return std::exchange(current, scene);
}

const HostItem *currentItem(const HostItem *item) {
    return current.world && current.world->items.contains(item) ? item : nullptr;
}

void offerSceneServices() {
    const auto offer = [](const char *name, const auto *table) {
        // The lookup's type is older than const; servers do not write to what they get.
        offerService(name, const_cast<void *>(static_cast<const void *>(table)));
    };
    offer(HOST_SCENE_OBJECTS, sceneObjects());
    offer(HOST_ITEM_INFO, itemInfo());
    offer(HOST_CAMERA_EVALUATION, cameraEvaluation());
    offer(HOST_CAMERA_INFO, cameraInfo());
}

SceneServices::SceneServices(const WorldData &world, const RenderJob &job, const Region &region, int threads,
                             const WorldCamera &cameraItem, const Camera &camera)
    : previousScene_(setCurrentScene({.world = &world, .width = job.width, .height = job.height})),
      previousFacts_(*sceneInfo()), previousView_(cameraView()) {
    // Handles are for handing back; nobody writes through them.
    renderingCamera = const_cast<HostItem *>(&cameraItem.item);
    setSceneInfo(factsOf(world, job, region, threads));
    setCameraView(camera.view());
    setBackdrop(&world.backdrop);
}

SceneServices::~SceneServices() {
    setBackdrop(nullptr);
    setCameraView(previousView_);
    setSceneInfo(previousFacts_);
    setCurrentScene(previousScene_);
    renderingCamera = nullptr;
}

} // namespace velm
