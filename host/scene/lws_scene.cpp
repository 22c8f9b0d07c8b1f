#include "host/scene/lws_scene.h"

#include "host/base/limits.h"
#include "host/base/names.h"
#include "host/io/files.h"
#include "host/lws/scene_record.h"
#include "host/object/layer_list.h"
#include "host/scene/lws_items.h"
#include "host/scene/object_finder.h"
#include "host/scene/own_surfaces.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <map>
#include <unordered_map>
#include <utility>

namespace velm::host {

namespace {

// The object files of a scene, each read once.
class ObjectLayers {
  public:
    struct File {
        std::string path; // as found
        std::vector<LayerSummary> layers;
    };

    ObjectLayers(const std::string &sceneFile, const SearchPath &path) : finder_(sceneFile, path) {}

    const File &of(const std::string &name) {
        const auto [entry, isNew] = files_.try_emplace(name);
        if (!isNew) return entry->second;
        const std::optional<std::string> path = finder_.find(name);
        if (!path) throw InputError(finder_.whyNotFound(name));
        entry->second = {.path = *path, .layers = layersOfObject(readFile(*path), *path)};
        return entry->second;
    }

  private:
    ObjectFinder finder_;
    std::map<std::string, File> files_; // by the name in the scene
};

class Converter {
  public:
    Converter(const lws::Scene &from, const std::string &file, const SearchPath &path)
        : from_(from), file_(file), layers_(file, path) {
        scene_.file = file;
        scene_.name = std::filesystem::path(file).stem().string();
    }

    SceneDescription convert() {
        nameItems();
        convertSettings();
        convertBackdrop();
        convertFog();
        for (const lws::Object &object : from_.objects) convertObject(object);
        convertBones();
        for (const lws::Light &light : from_.lights) addLight(light);
        for (const lws::Camera &camera : from_.cameras) addCamera(camera);
        return std::move(scene_);
    }

  private:
    void nameItems() {
        for (const lws::Object &object : from_.objects)
            names_.add(object, object.layer > 1 ? fmt::format("{}:{}", object.name, object.layer) : object.name);
        for (const lws::Item &bone : from_.bones) names_.add(bone, bone.name);
        for (const lws::Light &light : from_.lights) names_.add(light, light.name);
        for (const lws::Camera &camera : from_.cameras) names_.add(camera, camera.name);
    }

    // The camera that renders the picture; null without cameras.
    const lws::Camera *renderCamera() const {
        if (from_.cameras.empty()) return nullptr;
        const auto current = static_cast<std::size_t>(from_.currentCamera);
        return &from_.cameras[current < from_.cameras.size() ? current : 0];
    }

    static int pixels(double size, double multiplier) {
        return static_cast<int>(std::lround(std::clamp(size * multiplier, 1.0, double{kLargestSide})));
    }

    void convertSettings() {
        constexpr int kSamples = 8; // where the scene has no anti-aliasing
        const auto frame = [](int number) { return std::clamp(number, -kLastFrameNumber, kLastFrameNumber); };
        RenderDescription &render = scene_.render;
        int samples = from_.antialiasingSamples;
        if (const lws::Camera *camera = renderCamera()) {
            render.camera = names_[camera->id];
            render.cameraLocation = {.file = file_, .line = camera->line};
            render.width = pixels(camera->width, camera->multiplier);
            render.height = pixels(camera->height, camera->multiplier);
            render.region = regionOf(*camera);
            render.pixelAspect = std::clamp(camera->pixelAspect, kLeastPixelAspect, kLargestPixelAspect);
            samples = std::max(samples, camera->samples);
        }
        render.samples = samples > 1 ? std::min(samples, kMostSamples) : kSamples;
        if (from_.recursionLimit) render.recursionDepth = std::clamp(*from_.recursionLimit, 0, kMaxRecursionDepth);
        render.firstFrame = frame(from_.firstFrame);
        render.lastFrame = std::max(frame(from_.lastFrame), render.firstFrame);
        render.frameStep = std::clamp(from_.frameStep, 1, kLastFrameNumber);
        render.framesPerSecond = from_.framesPerSecond;
        render.ambientColour = colour(from_.ambientColour);
        render.ambientIntensity = std::max(from_.ambientIntensity, 0.0);
    }

    static Double3 colour(Double3 values) {
        for (double &value : values) value = std::max(value, 0.0);
        return values;
    }

    void convertBackdrop() {
        constexpr double kLeastSqueeze = 1e-3;
        BackdropDescription &backdrop = scene_.backdrop;
        backdrop.location.file = file_;
        if (from_.solidBackdrop) {
            backdrop.colour = colour(from_.backdrop);
            return;
        }
        backdrop.kind = BackdropDescription::Kind::gradient;
        backdrop.zenith = colour(from_.zenith);
        backdrop.sky = colour(from_.sky);
        backdrop.ground = colour(from_.ground);
        backdrop.nadir = colour(from_.nadir);
        backdrop.skySqueeze = std::max(from_.skySqueeze, kLeastSqueeze);
        backdrop.groundSqueeze = std::max(from_.groundSqueeze, kLeastSqueeze);
    }

    // The curves of the types 2 and 3 are not published. Both grow faster near the camera than the linear one.
    void convertFog() {
        constexpr double kLeastDepth = 1e-3, kFarthest = 1e9; // metres
        constexpr FogDescription::Kind kKinds[] = {FogDescription::Kind::linear, FogDescription::Kind::quadratic,
                                                   FogDescription::Kind::cubic};
        if (from_.fogType <= 0) return;
        FogDescription &fog = scene_.fog;
        fog.kind = kKinds[std::min(static_cast<std::size_t>(from_.fogType), std::size(kKinds)) - 1];
        fog.colour = colour(from_.fogColour);
        fog.backdropColour = from_.fogHasBackdropColour;
        fog.minDistance = std::clamp(from_.fogMinDistance, 0.0, kFarthest);
        fog.maxDistance = std::clamp(from_.fogMaxDistance, fog.minDistance + kLeastDepth, 2 * kFarthest);
        fog.minAmount = std::clamp(from_.fogMinAmount, 0.0, 1.0);
        fog.maxAmount = std::clamp(from_.fogMaxAmount, 0.0, 1.0);
    }

    void addNull(const lws::Item &from) { convertPlace(from, names_, file_, scene_.nulls.emplace_back()); }

    void convertObject(const lws::Object &from) {
        if (from.path.empty()) return addNull(from);
        try {
            convertFile(from, layers_.of(from.path));
        } catch (const InputError &error) {
            throw InputError({.file = file_, .line = from.line}, error.what());
        }
    }

    void convertFile(const lws::Object &from, const ObjectLayers::File &file) {
        const LayerSummary *layer = nullptr;
        if (from.layer > 0) layer = &layerOf(from, file);
        const bool isDrawn = layer ? layer->hasPolygons : std::ranges::any_of(file.layers, [](const LayerSummary &one) {
            return one.hasPolygons && !one.isHidden;
        });
        // An empty layer, and an object that a constant scale makes flat, become nulls: they only move their children.
        const bool isFlat =
            std::any_of(from.motion.begin() + lws::kScaleChannel, from.motion.end(),
                        [](const lws::Value &scale) { return !scale.isAnimated() && scale.constant == 0; });
        ItemDescription &item = isDrawn && !isFlat ? static_cast<ItemDescription &>(scene_.objects.emplace_back())
                                                   : scene_.nulls.emplace_back();
        convertPlace(from, names_, file_, item);
        if (!from.pivot && layer) item.pivot = {layer->pivot[0], layer->pivot[1], layer->pivot[2]};
        if (!isDrawn || isFlat) return;
        ObjectDescription &object = scene_.objects.back();
        object.shape = MeshFile{.file = file.path,
                                .layer = layer && file.layers.size() > 1 ? std::optional(layer->number) : std::nullopt,
                                .subdivision = from.segments ? subdivisionOf(*from.segments) : kDefaultSubdivision};
        object.seenByCamera = from.seenByCamera;
        object.seenByRays = from.seenByRays;
        object.castsShadows = from.castsShadows;
        convertDissolve(from, object);
    }

    static const LayerSummary &layerOf(const lws::Object &from, const ObjectLayers::File &file) {
        if (const LayerSummary *layer = findSceneLayer(file.layers, static_cast<std::uint32_t>(from.layer)))
            return *layer;
        std::vector<std::uint32_t> numbers;
        for (const LayerSummary &layer : file.layers) numbers.push_back(layer.number + 1);
        throw InputError({.file = file.path},
                         fmt::format("the object has no layer {}; its layers are {}", from.layer,
                                     numbers.empty() ? "none" : fmt::format("{}", fmt::join(numbers, ", "))));
    }

    // Converts bones to nulls if other items refer to them, directly or through further bones.
    void convertBones() {
        std::unordered_map<std::uint32_t, const lws::Item *> bones;
        for (const lws::Item &bone : from_.bones) bones.emplace(bone.id, &bone);
        std::vector<std::uint32_t> open;
        const auto follow = [&open](const lws::Item &item) {
            for (const auto &link : {item.parent, item.target})
                if (link) open.push_back(*link);
        };
        for (const lws::Object &object : from_.objects) follow(object);
        for (const lws::Light &light : from_.lights) follow(light);
        for (const lws::Camera &camera : from_.cameras) follow(camera);
        while (!open.empty()) {
            const auto bone = bones.find(open.back());
            open.pop_back();
            if (bone == bones.end()) continue;
            follow(*bone->second);
            addNull(*bone->second);
            bones.erase(bone);
        }
    }

    void addLight(const lws::Light &from) {
        if (from.kind == lws::Light::Kind::none) return addNull(from); // other items may refer to it
        LightDescription &light = scene_.lights.emplace_back();
        convertPlace(from, names_, file_, light);
        convertLight(from, from_, light);
    }

    void addCamera(const lws::Camera &from) {
        constexpr double kLeastFilm = 1e-6, kWidestFilm = 1e3; // metres
        constexpr int kMostZoomSteps = 10000,
                      kMostZoomStepsOfAll = 1000000; // bounds the memory of scenes with many cameras
        CameraDescription &camera = scene_.cameras.emplace_back();
        convertPlace(from, names_, file_, camera);
        convertLens(from, camera);
        convertShutter(from, camera);
        convertMask(from, camera);
        const double aspect = pictureAspect(scene_.render);
        camera.filmWidth = std::clamp(from.apertureHeight * aspect, kLeastFilm, kWidestFilm);
        convertZoom(
            from,
            {.aspect = aspect,
             .framesPerSecond = from_.framesPerSecond,
             .mostSteps = std::min(kMostZoomSteps, kMostZoomStepsOfAll / static_cast<int>(from_.cameras.size()))},
            camera);
    }

    const lws::Scene &from_;
    const std::string &file_;
    ObjectLayers layers_;
    LwsNames names_;
    SceneDescription scene_;
};

void addWarnings(const lws::Scene &scene, const std::string &file, std::vector<Warning> &warnings) {
    if (scene.version > lws::kLastVersion)
        warnings.push_back(
            {.location = {.file = file, .line = 2},
             .path = "",
             .brief = "a later version of scene files",
             .message = fmt::format("the scene has version {}; it is read as version {}, the last one that is known",
                                    scene.version, lws::kLastVersion)});
    for (lws::Losses::Text &loss : scene.losses.texts())
        warnings.push_back({.location = {.file = file, .line = loss.line},
                            .path = "",
                            .brief = std::move(loss.brief),
                            .message = std::move(loss.message)});
}

bool isAboveZero(const SettingDescription &setting) {
    const auto *number = std::get_if<double>(&setting.value);
    return std::holds_alternative<KeysDescription>(setting.value) || (number && *number > 0);
}

// LightWave's surfaces reflect only the backdrop where the scene does not trace reflections.
void warnOfReflections(const SceneDescription &scene, std::vector<Warning> &warnings) {
    for (const SurfaceDescription &surface : scene.surfaces)
        for (const SettingDescription &setting : surface.settings) {
            if (setting.label != "Reflection" || !isAboveZero(setting)) continue;
            warnings.push_back({.location = {.file = scene.file, .line = 0},
                                .path = "",
                                .brief = "reflections",
                                .message = fmt::format("reflections are traced although the scene switches them off "
                                                       "(the first surface: {})",
                                                       inQuotes(surface.name))});
            return;
        }
}

} // namespace

SceneDescription readLwsScene(const std::string &file, const SearchPath &path, std::vector<Warning> &warnings) {
    const lws::Scene record = lws::readScene(readFile(file), file);
    SceneDescription scene = Converter(record, file, path).convert();
    addOwnSurfaces(path, scene);
    addWarnings(record, file, warnings);
    if (!record.tracesReflections) warnOfReflections(scene, warnings);
    return scene;
}

} // namespace velm::host
