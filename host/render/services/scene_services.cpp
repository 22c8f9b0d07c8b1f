#include "host/render/services/scene_services.h"

#include "host/base/thread_role.h"
#include "host/load/lookup.h"
#include "host/services/scene_info.h"

namespace velm::host {
namespace {

HostItem *renderingCamera = nullptr;

HostItem *renderCamera(double) { return renderingCamera; }

HostSceneInfo factsOf(const RenderSceneData &scene, const RenderJob &job, const Region &region, int threads) {
    std::size_t points = 0, polygons = 0;
    for (const RenderObject &object : scene.objects) {
        points += object.mesh->points.size();
        polygons += object.mesh->polygonCount;
    }
    const RenderDescription &render = scene.render;
    return {.name = scene.sceneName.c_str(),
            .fileName = scene.sceneFile.c_str(),
            .points = static_cast<int>(points),
            .polygons = static_cast<int>(polygons),
            .renderType = 2, // fully shaded
            .renderOptions = 0,
            .firstFrame = render.firstFrame,
            .lastFrame = render.lastFrame,
            .frameStep = render.frameStep,
            .framesPerSecond = render.framesPerSecond,
            .width = job.width,
            .height = job.height,
            .pixelAspect = render.pixelAspect,
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

SceneServices::SceneServices(const RenderSceneData &scene, const RenderJob &job, const Region &region, int threads,
                             const RenderCamera &cameraItem, const Camera &camera)
    : previousScene_(setCurrentScene({.scene = &scene, .width = job.width, .height = job.height})),
      previousFacts_(*sceneInfo()), previousView_(cameraView()) {
    renderingCamera = cameraItem.item;
    setSceneInfo(factsOf(scene, job, region, threads));
    setCameraView(camera.view());
    setBackdrop(&scene.backdrop);
}

SceneServices::~SceneServices() {
    setBackdrop(nullptr);
    setCameraView(previousView_);
    setSceneInfo(previousFacts_);
    setCurrentScene(previousScene_);
    renderingCamera = nullptr;
}

} // namespace velm::host
