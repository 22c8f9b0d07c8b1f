#include "host/cli/scene_facts.h"

#include "host/services/scene_info.h"

#include <algorithm>
#include <iterator>
#include <thread>

namespace velm {

namespace {

// The service asks by a function without a context. Written between frames, read on render threads.
HostItem *currentCamera = nullptr;

HostItem *renderCamera(double) { return currentCamera; }

// As the wall has them when nothing is set.
const HostSceneInfo &emptyFacts() {
    static const HostSceneInfo facts = *sceneInfo();
    return facts;
}

} // namespace

SceneFacts::SceneFacts(const SceneDescription &scene, const World &world, const RenderJob &job, FrameRange frames) {
    HostSceneInfo facts = emptyFacts();
    facts.name = scene.name.c_str();
    facts.fileName = scene.file.c_str();
    facts.points = static_cast<int>(world.pointCount());
    facts.polygons = static_cast<int>(world.triangleCount());
    facts.firstFrame = frames.first;
    facts.lastFrame = frames.last;
    facts.frameStep = scene.render.frameStep;
    facts.framesPerSecond = scene.render.framesPerSecond;
    facts.width = job.width;
    facts.height = job.height;
    facts.pixelAspect = 1;
    facts.minSamplesPerPixel = job.samples;
    facts.maxSamplesPerPixel = job.samples;
    const int region[4] = {job.region.left, job.region.top, job.region.right, job.region.bottom};
    std::copy(std::begin(region), std::end(region), facts.limitedRegion);
    facts.recursionDepth = job.recursionDepth;
    // The wall's handles are not const, though nobody but their owner can look into them.
    const std::string &camera = job.camera.empty() ? scene.cameras.front().name : job.camera;
    currentCamera = const_cast<HostItem *>(world.item(kItemCamera, camera));
    facts.renderCamera = renderCamera;
    facts.threads = job.threads > 0 ? job.threads
                                    : std::min<int>(kMaxThreads, static_cast<int>(std::thread::hardware_concurrency()));
    setSceneInfo(facts);
}

SceneFacts::~SceneFacts() {
    setSceneInfo(emptyFacts());
    currentCamera = nullptr;
}

} // namespace velm
