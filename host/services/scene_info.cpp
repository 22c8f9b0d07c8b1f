#include "host/services/scene_info.h"

namespace velm::host {

namespace {

HostItem *noCamera(double) { return nullptr; }

HostSceneInfo currentInfo = {
    .name = "",
    .fileName = "",
    .points = 0,
    .polygons = 0,
    .renderType = 0,
    .renderOptions = 0,
    .firstFrame = 1,
    .lastFrame = 1,
    .frameStep = 1,
    .framesPerSecond = 30,
    .width = 0,
    .height = 0,
    .pixelAspect = 1,
    .minSamplesPerPixel = 1,
    .maxSamplesPerPixel = 1,
    .limitedRegion = {0, 0, 0, 0},
    .recursionDepth = 0,
    .renderCamera = noCamera,
    .threads = 1,
    .animationFile = "",
    .rgbPrefix = "",
    .alphaPrefix = "",
};

} // namespace

const HostSceneInfo *sceneInfo() { return &currentInfo; }

void setSceneInfo(const HostSceneInfo &facts) { currentInfo = facts; }

} // namespace velm::host
