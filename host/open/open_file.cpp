#include "host/open/open_file.h"

#include "host/base/error.h"
#include "host/base/names.h"
#include "host/scene/format/write_scene.h"
#include "host/scene/read_scene.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fmt/format.h>

namespace velm::host {

namespace {

// The name, with a number where something has it already.
template <class T>
std::string freeName(const std::vector<T> &all, const std::string &wanted) {
    std::string name = wanted;
    for (int number = 2; std::ranges::count(all, name, &T::name) > 0; ++number)
        name = fmt::format("{} {}", wanted, number);
    return name;
}

// Values are replaced in the scene that the file becomes, as if that were a scene file.
SceneDescription withOverrides(const SceneDescription &scene, const OpenRequest &request) {
    const std::string directory = std::filesystem::path(request.file).parent_path().string();
    return readSceneText(writeScene(scene, directory), request.file, request.path, request.overrides,
                         Cameras::optional);
}

const Mesh &meshOf(const ObjectDescription &object, MeshCache &meshes) {
    try {
        return meshes.get(object.shape, object.transform);
    } catch (const InputError &error) {
        if (object.location.line == 0) throw; // the object is the file, which the error names
        throw InputError(object.location, fmt::format("object {}: {}", inQuotes(object.name), error.what()));
    }
}

std::string addSurface(SceneDescription &scene, const std::string &wanted, const Double3 &colour) {
    SurfaceDescription &surface = scene.surfaces.emplace_back();
    surface.name = freeName(scene.surfaces, wanted);
    surface.settings = {{.label = "Color", .value = colour, .location = {}}};
    surface.location.file = scene.file;
    return surface.name;
}

std::string addNeutralSurface(SceneDescription &scene) { return addSurface(scene, "Neutral", {0.6, 0.6, 0.6}); }

// Gives objects without surfaces a neutral one.
void coverObjects(SceneDescription &scene) {
    std::string neutral;
    for (ObjectDescription &object : scene.objects) {
        if (!object.surfaces.empty()) continue;
        if (neutral.empty()) neutral = addNeutralSurface(scene);
        object.surfaces.push_back({.material = "", .surface = neutral, .location = object.location});
    }
}

// Gives the materials of a mesh that have no surface a neutral one, where others have their own.
void coverMaterials(SceneDescription &scene, MeshCache &meshes) {
    std::string neutral;
    for (ObjectDescription &object : scene.objects) {
        std::vector<SurfaceUse> &uses = object.surfaces;
        if (std::ranges::count(uses, "", &SurfaceUse::material) > 0) continue;
        for (const std::string &material : meshOf(object, meshes).materials) {
            if (std::ranges::count(uses, material, &SurfaceUse::material) > 0) continue;
            if (neutral.empty()) neutral = addNeutralSurface(scene);
            const SurfaceUse use{.material = material, .surface = neutral, .location = object.location};
            uses.insert(material.empty() ? uses.begin() : uses.end(), use);
        }
    }
}

// A scene without its planes, which are usually wide floors and walls, unless it has nothing else.
SceneDescription withoutFloors(SceneDescription scene) {
    const auto isFloor = [](const ObjectDescription &object) {
        return std::holds_alternative<PlaneShape>(object.shape);
    };
    if (!std::ranges::all_of(scene.objects, isFloor)) std::erase_if(scene.objects, isFloor);
    return scene;
}

void addCamera(SceneDescription &scene, const Bounds &bounds, View view) {
    CameraDescription camera = framed(bounds, view, double(scene.render.width) / scene.render.height);
    camera.name = freeName(scene.cameras, "View");
    camera.location.file = scene.file;
    scene.render.camera = camera.name;
    scene.cameras.push_back(std::move(camera));
}

const CameraDescription &renderCamera(const SceneDescription &scene) {
    const auto named = std::ranges::find(scene.cameras, scene.render.camera, &CameraDescription::name);
    return named == scene.cameras.end() ? scene.cameras.front() : *named;
}

void addGround(SceneDescription &scene, const Bounds &bounds, const Double3 &colour) {
    ObjectDescription ground = groundBelow(bounds);
    ground.name = freeName(scene.objects, "Ground");
    ground.location.file = scene.file;
    const std::string surface = addSurface(scene, "Ground", colour);
    ground.surfaces.push_back({.material = "", .surface = surface, .location = ground.location});
    scene.objects.push_back(std::move(ground));
}

void addLights(const OpenedFile &opened, const Bounds &bounds, SceneDescription &scene) {
    const CameraDescription camera = renderCamera(scene);
    Lighting lighting = lightingOf(*opened.rig, bounds, camera);
    for (LightDescription &light : lighting.lights) light.location.file = scene.file;
    scene.lights = std::move(lighting.lights);
    scene.render.ambientColour = lighting.ambientColour;
    scene.render.ambientIntensity = lighting.ambientIntensity;
    if (opened.reader->isScene) return; // which has a backdrop, and a ground if it wants one
    scene.backdrop = lighting.backdrop;
    scene.backdrop.location.file = scene.file;
    if (*opened.rig != Rig::none && !looksUpwards(camera)) addGround(scene, bounds, lighting.groundColour);
}

// What the file holds and a scene that names it would have itself; Session warns of the rest.
void warnOfLeftOut(const OpenedFile &opened, MeshCache &meshes, Warnings &warnings) {
    for (const ObjectDescription &object : opened.scene.objects)
        for (const MeshWarning &warning : meshOf(object, meshes).warnings)
            if (warning.isBesideMesh)
                warnings.add({.location = {.file = opened.scene.file, .line = 0},
                              .path = "",
                              .brief = warning.brief + " that are not read",
                              .message = warning.message});
}

const char *nameOf(View view) {
    switch (view) {
    case View::front: return "front view";
    case View::back: return "back view";
    case View::left: return "left view";
    case View::right: return "right view";
    case View::top: return "top view";
    case View::bottom: return "bottom view";
    case View::threeQuarter: return "three-quarter view";
    }
    return "";
}

} // namespace

OpenedFile openFile(const OpenRequest &request) {
    const FileReader &reader = readerOf(request.file);
    OpenedFile opened{.scene = reader.read({.reader = reader,
                                            .file = request.file,
                                            .path = request.path,
                                            .overrides = request.overrides,
                                            .cameras = request.view ? Cameras::optional : Cameras::required}),
                      .reader = &reader,
                      .view = request.view,
                      .rig = request.rig};
    if (reader.workflow) opened.scene.render.workflow = *reader.workflow;
    if (!reader.isScene) coverObjects(opened.scene);
    if (!reader.isScene && !request.overrides.empty()) opened.scene = withOverrides(opened.scene, request);
    if (request.workflow) opened.scene.render.workflow = *request.workflow;
    if (reader.isScene) return opened;
    if (!opened.view && opened.scene.cameras.empty()) opened.view = View::threeQuarter;
    if (!opened.rig && opened.scene.lights.empty()) opened.rig = Rig::studio;
    return opened;
}

Bounds boundsOf(const SceneDescription &scene, MeshCache &meshes) {
    Bounds all;
    for (const ObjectDescription &object : scene.objects)
        for (const Bounds &bounds : boundsByMaterial(meshOf(object, meshes))) all.include(bounds);
    for (const auto &side : all.sides)
        if (!std::isfinite(side[1] - side[0]))
            throw InputError({.file = scene.file},
                             scene.objects.empty() ? "there is no object to frame" : "the objects have no finite size");
    return all;
}

SceneDescription completeFile(const OpenedFile &opened, MeshCache &meshes, Warnings &warnings) {
    SceneDescription scene = opened.scene;
    if (!opened.isIncomplete()) return scene;
    const Bounds bounds = boundsOf(withoutFloors(scene), meshes);
    if (!opened.reader->isScene) {
        warnOfLeftOut(opened, meshes, warnings);
        coverMaterials(scene, meshes);
    }
    if (opened.view) addCamera(scene, bounds, *opened.view);
    if (opened.rig) addLights(opened, bounds, scene);
    return scene;
}

std::string additionsText(const OpenedFile &opened, const SceneDescription &completed) {
    if (opened.reader->isScene) return {};
    std::string text;
    const auto add = [&text](const std::string &what) { text += (text.empty() ? "" : ", ") + what; };
    if (opened.view) add(fmt::format("a camera ({})", nameOf(*opened.view)));
    if (opened.rig == Rig::studio) add("lights (studio)");
    if (opened.rig == Rig::outdoor) add("the sun and a sky (outdoor)");
    if (completed.objects.size() > opened.scene.objects.size()) add("a ground");
    if (opened.rig) add("a backdrop");
    const auto objects = std::span(completed.objects).first(opened.scene.objects.size());
    if (std::ranges::any_of(objects, [](const ObjectDescription &object) {
            return std::ranges::count(object.surfaces, false, &SurfaceUse::fromObject) > 0;
        }))
        add("a neutral surface");
    return text;
}

} // namespace velm::host
