#include "tests/module/fake_scene.h"

#include "tests/module/test_node.h"

#include <algorithm>

namespace velm::plugin {
namespace {

FakeScene *currentScene = nullptr;
FakeRays *currentRays = nullptr;

FakeScene &scene() { return *currentScene; }

template <class... Parts>
void note(const Parts &...parts) {
    FakeHost::current().note(parts...);
}

const HostNodeUtilityFuncs kUtilityFuncs = [] {
    HostNodeUtilityFuncs funcs{};
    funcs.uvMapping = [](const char *map, ShadingSample *, double *u, double *v) {
        return scene().uvMapping && scene().uvMapping(map, *u, *v) ? 1 : 0;
    };
    return funcs;
}();

const HostSceneObjects kSceneObjects = [] {
    HostSceneObjects objects{};
    objects.vertexMapCount = [](int type) {
        return type == kVertexMapTxuv ? static_cast<int>(scene().uvMaps.size()) : 0;
    };
    objects.vertexMapName = [](int type, int index) -> const char * {
        const auto number = static_cast<size_t>(index);
        return type == kVertexMapTxuv && number < scene().uvMaps.size() ? scene().uvMaps[number].c_str() : nullptr;
    };
    return objects;
}();

const HostItemInfo kItemInfo = [] {
    HostItemInfo items{};
    items.first = [](int type, HostItem *parent) -> HostItem * {
        return type == kItemCamera && !parent && !scene().cameras.empty() ? &scene().cameras.front() : nullptr;
    };
    items.next = [](HostItem *item) -> HostItem * {
        auto &cameras = scene().cameras;
        const auto found = std::find_if(cameras.begin(), cameras.end(), [=](HostItem &one) { return &one == item; });
        return found + 1 == cameras.end() ? nullptr : &found[1];
    };
    items.name = [](HostItem *item) { return item->name.c_str(); };
    return items;
}();

int askCamera(HostCameraEvaluator *, double filmX, double filmY, double lensX, double lensY, double timeFraction,
              HostCameraRay *ray) {
    scene().cameraQuestions.push_back(
        {.filmX = filmX, .filmY = filmY, .lensX = lensX, .lensY = lensY, .timeFraction = timeFraction});
    if (!scene().cameraHasRay) return 0;
    *ray = scene().cameraRay;
    return 1;
}

const HostCameraEvaluation kCameraEvaluation = [] {
    HostCameraEvaluation cameras{};
    cameras.create = [](HostItem *camera) -> HostCameraEvaluator * {
        note("createEvaluator ", camera->name);
        return scene().evaluatorsFail ? nullptr : &scene().evaluators.emplace_back(HostCameraEvaluator{camera});
    };
    cameras.destroy = [](HostCameraEvaluator *evaluator) {
        note("destroyEvaluator ", evaluator->camera->name, evaluator->destroyed ? " again" : "");
        evaluator->destroyed = true;
    };
    cameras.init = [](HostCameraEvaluator *evaluator, int mode) -> HostError {
        note("initEvaluator ", evaluator->camera->name, " ", mode);
        return nullptr;
    };
    cameras.newTime = [](HostCameraEvaluator *evaluator, int frame, double time) -> HostError {
        note("newTimeEvaluator ", evaluator->camera->name, " ", frame, " ", time);
        return nullptr;
    };
    cameras.reset = [](HostCameraEvaluator *evaluator) { note("resetEvaluator ", evaluator->camera->name); };
    cameras.evaluate = askCamera;
    return cameras;
}();

const HostCameraInfo kCameraInfo = [] {
    HostCameraInfo info{};
    info.filmSize = [](HostItem *camera, double *width, double *height) {
        *width = camera->filmWidth;
        *height = camera->filmHeight;
    };
    info.frameTiming = [](HostItem *camera, int frame, HostFrameTiming *timing) {
        note("frameTiming ", camera->name, " ", frame);
        *timing = camera->timing;
    };
    return info;
}();

FakeRays::Call call(const double position[3], const double direction[3], const double colour[3], double eta, int mode) {
    return {.position = {position[0], position[1], position[2]},
            .direction = {direction[0], direction[1], direction[2]},
            .colour = {colour[0], colour[1], colour[2]},
            .eta = eta,
            .mode = static_cast<unsigned int>(mode)};
}

double answer(double colour[3]) {
    if (currentRays->met) currentRays->met();
    if (currentRays->colour) std::copy(currentRays->colour->begin(), currentRays->colour->end(), colour);
    return currentRays->distance;
}

double shade(const double position[3], const double direction[3], HostRayHit *hit) {
    currentRays->shades.push_back(call(position, direction, hit->colour, 0, 0));
    return answer(hit->colour);
}

double trace(const double position[3], const double direction[3], double colour[3], double eta, int mode) {
    currentRays->traces.push_back(call(position, direction, colour, eta, mode));
    return answer(colour);
}

} // namespace

FakeScene::FakeScene() { currentScene = this; }
FakeScene::~FakeScene() { currentScene = nullptr; }

void *FakeScene::lookup(const char *service, int use) {
    const std::map<std::string, const void *> services = {
        {HOST_SCENE_INFO, &scene().info},
        {HOST_NODE_UTILITY_FUNCS, &kUtilityFuncs},
        {HOST_SCENE_OBJECTS, &kSceneObjects},
        {HOST_ITEM_INFO, &kItemInfo},
        {HOST_CAMERA_EVALUATION, &kCameraEvaluation},
        {HOST_CAMERA_INFO, &kCameraInfo},
    };
    const auto found = services.find(service);
    if (found == services.end()) return FakeHost::lookup(service, use);
    note("lookup ", service, use == kUseTransient ? "" : " not transient");
    return FakeHost::current().missing.count(service) ? nullptr : const_cast<void *>(found->second);
}

FakeRays::FakeRays() { currentRays = this; }
FakeRays::~FakeRays() { currentRays = nullptr; }

ShadingSample FakeRays::sample() const {
    ShadingSample sample = plainSample();
    sample.rayShade = shade;
    sample.rayTraceMode = trace;
    return sample;
}

} // namespace velm::plugin
