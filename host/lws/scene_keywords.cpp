// Settings of the whole scene.
#include "host/lws/keywords.h"

#include <algorithm>

namespace velm::host::lws {

namespace {

constexpr double kLeastRate = 0.001;

bool readFramesPerSecond(Statement &statement, Scene &scene) {
    const std::optional<double> rate = statement.words.number();
    if (!rate || *rate < kLeastRate) return false;
    scene.framesPerSecond = *rate;
    return true;
}

bool readRayTraceEffects(Statement &statement, Scene &scene) {
    constexpr int kShadowBit = 1, kReflectionBit = 2;
    const std::optional<int> bits = statement.words.integer();
    if (!bits) return false;
    scene.tracesShadows = (*bits & kShadowBit) != 0;
    scene.tracesReflections = (*bits & kReflectionBit) != 0;
    return true;
}

bool readRecursionLimit(Statement &statement, Scene &scene) {
    scene.recursionLimit = statement.words.integer();
    return scene.recursionLimit.has_value();
}

// The number of one of the levels of anti-aliasing.
bool readAntialiasing(Statement &statement, Scene &scene) {
    constexpr std::array<int, 5> kPasses = {1, 5, 9, 17, 33};
    const std::optional<int> level = statement.words.integer();
    if (!level || *level < 0) return false;
    scene.antialiasingSamples = kPasses[std::min(static_cast<std::size_t>(*level), kPasses.size() - 1)];
    return true;
}

bool readGlobalSize(Statement &statement, Scene &scene) { return readFrameSize(statement, scene.globalCamera); }

bool readGlobalMultiplier(Statement &statement, Scene &scene) { return readMultiplier(statement, scene.globalCamera); }

bool readGlobalPixelAspect(Statement &statement, Scene &scene) {
    return readPixelAspect(statement, scene.globalCamera);
}

bool readGlobalBlur(Statement &statement, Scene &scene) { return readMotionBlur(statement, scene.globalCamera); }

bool readGlobalMask(Statement &statement, Scene &scene) { return readMask(statement, scene.globalCamera); }

bool readGlobalFilmHeight(Statement &statement, Scene &scene) { return readFilmHeight(statement, scene.globalCamera); }

constexpr Keyword<Scene> kSceneKeywords[] = {
    {.name = "FirstFrame", .read = integer<&Scene::firstFrame>},
    {.name = "LastFrame", .read = integer<&Scene::lastFrame>},
    {.name = "FrameStep", .read = integer<&Scene::frameStep>},
    {.name = "FramesPerSecond", .read = readFramesPerSecond},
    {.name = "RenderRangeType", .read = leftOutUnless<Loss::renderRange, 0>},
    {.name = "AmbientColor", .read = constant<&Scene::ambientColour>},
    {.name = "AmbientIntensity", .read = constant<&Scene::ambientIntensity>},
    {.name = "AmbIntensity", .read = constant<&Scene::ambientIntensity>},
    {.name = "SolidBackdrop", .read = flag<&Scene::solidBackdrop>},
    {.name = "BackdropColor", .read = constant<&Scene::backdrop>},
    {.name = "ZenithColor", .read = constant<&Scene::zenith>},
    {.name = "SkyColor", .read = constant<&Scene::sky>},
    {.name = "GroundColor", .read = constant<&Scene::ground>},
    {.name = "NadirColor", .read = constant<&Scene::nadir>},
    {.name = "SkySqueezeAmount", .read = constant<&Scene::skySqueeze>},
    {.name = "GroundSqueezeAmount", .read = constant<&Scene::groundSqueeze>},
    {.name = "RayTraceEffects", .read = readRayTraceEffects},
    {.name = "RayRecursionLimit", .read = readRecursionLimit},
    {.name = "EnableShadowMaps", .read = flag<&Scene::hasShadowMaps>},
    {.name = "Antialiasing", .read = readAntialiasing},
    {.name = "CurrentCamera", .read = integer<&Scene::currentCamera>},
    {.name = "GlobalFrameSize", .read = readGlobalSize},
    {.name = "GlobalMultiplier", .read = readGlobalMultiplier},
    {.name = "GlobalPixelAspect", .read = readGlobalPixelAspect},
    {.name = "GlobalMotionBlur", .read = readGlobalBlur},
    {.name = "GlobalMaskPosition", .read = readGlobalMask},
    {.name = "GlobalFilmHeight", .read = readGlobalFilmHeight},
    {.name = "EnableRadiosity", .read = leftOutUnless<Loss::globalIllumination, 0>},
    {.name = "EnableCaustics", .read = leftOutUnless<Loss::caustics, 0>},
    {.name = "FogType", .read = integer<&Scene::fogType>},
    {.name = "FogColor", .read = constant<&Scene::fogColour>},
    {.name = "BackdropFog", .read = flag<&Scene::fogHasBackdropColour>},
    {.name = "FogMinDistance", .read = constant<&Scene::fogMinDistance>},
    {.name = "FogMaxDistance", .read = constant<&Scene::fogMaxDistance>},
    {.name = "FogMinAmount", .read = constant<&Scene::fogMinAmount>},
    {.name = "FogMaxAmount", .read = constant<&Scene::fogMaxAmount>},
    {.name = "FogMinDist", .read = constant<&Scene::fogMinDistance>},
    {.name = "FogMaxDist", .read = constant<&Scene::fogMaxDistance>},
    {.name = "FogMinAmt", .read = constant<&Scene::fogMinAmount>},
    {.name = "FogMaxAmt", .read = constant<&Scene::fogMaxAmount>},
    {.name = "BGImage", .read = leftOutFile<Loss::compositing>},
    {.name = "FGImage", .read = leftOutFile<Loss::compositing>},
    {.name = "FGAlphaImage", .read = leftOutFile<Loss::compositing>},
};

} // namespace

std::span<const Keyword<Scene>> sceneKeywords() { return kSceneKeywords; }

} // namespace velm::host::lws
