#include "host/render/services/scene_services.h"

#include "host/base/thread_role.h"
#include "host/load/lookup.h"
#include "host/services/scene_info.h"

namespace velm::host {
namespace {

HostItem *renderingCamera = nullptr;

HostItem *renderCamera(double) { return renderingCamera; }

HostSceneInfo factsOf(const RenderSceneData &world, const RenderJob &job, const Region &region, int threads) {
    std::size_t points = 0, polygons = 0;
    for (const RenderObject &object : world.objects) {
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

void offerSceneServices() {
    static constexpr Service kServices[] = {
        {.name = HOST_SCENE_OBJECTS, .give = tableService<sceneObjects>},
        {.name = HOST_ITEM_INFO, .give = tableService<itemInfo>},
        {.name = HOST_CAMERA_EVALUATION, .give = tableService<cameraEvaluation>},
        {.name = HOST_CAMERA_INFO, .give = tableService<cameraInfo>},
    };
    offerServices(kServices);
}

SceneServices::SceneServices(const RenderSceneData &world, const RenderJob &job, const Region &region, int threads,
                             const RenderCamera &cameraItem, const Camera &camera)
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

} // namespace velm::host
