#include "host/open/open_file.h"

#include "host/base/error.h"
#include "host/base/names.h"
#include "host/open/mesh_bounds.h"
#include "host/open/mesh_scene.h"
#include "host/open/new_names.h"
#include "host/render/motion/pose.h"
#include "host/scene/format/write_scene.h"
#include "host/scene/read_scene.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fmt/format.h>
#include <set>

namespace velm::host {

namespace {

// The wanted name, followed by a number if one of `all` has it already.
template <class T>
std::string freeName(const std::vector<T> &all, const std::string &wanted) {
    return unusedNamesBeside(all, " ", "").take(wanted);
}

// Whether an item has this name as its parent or target.
bool isReferredTo(const SceneDescription &scene, const std::string &name) {
    const auto refers = [&name](const ItemDescription &item) { return item.parent == name || item.targetItem == name; };
    return std::ranges::any_of(scene.objects, refers) || std::ranges::any_of(scene.nulls, refers) ||
           std::ranges::any_of(scene.lights, refers) || std::ranges::any_of(scene.cameras, refers);
}

// A name for a new item that no item has as its parent or target, so that such references keep their meaning.
template <class T>
std::string freeItemName(const SceneDescription &scene, const std::vector<T> &all, const std::string &wanted) {
    std::string name = freeName(all, wanted);
    while (isReferredTo(scene, name)) name = freeName(all, fmt::format("{} (added)", name));
    return name;
}

// Values are replaced in the scene that the file becomes, as if that were a scene file.
SceneDescription withOverrides(const SceneDescription &scene, const OpenRequest &request) {
    const std::string directory = std::filesystem::path(request.file).parent_path().string();
    return readSceneText(writeScene(scene, directory), request.file, request.path, request.overrides,
                         Cameras::optional);
}

ScenePose startPose(const SceneDescription &scene) { return poseAt(scene, startTime(scene.render)); }

// The mesh of an object, made with the transform that ScenePose::ofMesh gives.
const Mesh &meshOf(const SceneDescription &scene, const ScenePose &pose, std::size_t index, MeshCache &meshes) {
    const ObjectDescription &object = scene.objects[index];
    try {
        return meshes.get(object.shape, pose.ofMesh(index));
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

// Gives objects that have no surface for some material, and whose file has none for it either, a neutral one. Returns
// its name; empty if none was needed.
std::string coverObjects(SceneDescription &scene) {
    std::string neutral;
    for (ObjectDescription &object : scene.objects) {
        if (std::ranges::count(object.surfaces, "", &SurfaceUse::material) > 0 ||
            std::ranges::count(object.surfaces, true, &SurfaceUse::fromObject) > 0)
            continue;
        if (neutral.empty()) neutral = addNeutralSurface(scene);
        object.surfaces.insert(object.surfaces.begin(),
                               {.material = "", .surface = neutral, .location = object.location});
    }
    return neutral;
}

// Gives the materials of objects that have no surface a neutral one, unless the object has one for all others.
void coverMaterials(SceneDescription &scene, MeshCache &meshes) {
    const ScenePose pose = startPose(scene);
    std::string neutral;
    for (std::size_t i = 0; i < scene.objects.size(); ++i) {
        const ObjectDescription &object = scene.objects[i];
        std::vector<SurfaceUse> &uses = scene.objects[i].surfaces;
        std::set<std::string> covered;
        for (const SurfaceUse &use : uses) covered.insert(use.material);
        if (covered.contains("")) continue;
        for (const std::string &material : meshOf(scene, pose, i, meshes).materials) {
            if (!covered.insert(material).second) continue;
            if (neutral.empty()) neutral = addNeutralSurface(scene);
            const SurfaceUse use{.material = material, .surface = neutral, .location = object.location};
            uses.insert(material.empty() ? uses.begin() : uses.end(), use);
        }
    }
}

// Planes are usually wide floors and walls.
bool isFloor(const ObjectDescription &object) { return std::holds_alternative<PlaneShape>(object.shape); }

Bounds boundsOfMesh(const SceneDescription &scene, const ScenePose &pose, std::size_t index, MeshCache &meshes) {
    const Mesh &mesh = meshOf(scene, pose, index, meshes);
    return pose.modelledObjects[index] ? boundsOf(mesh, pose.objects[index]) : boundsOf(mesh);
}

// The bounds of the objects for which `counts` is true.
template <class Counts>
Bounds boundsIf(const SceneDescription &scene, MeshCache &meshes, Counts counts) {
    const ScenePose pose = startPose(scene);
    Bounds all;
    for (std::size_t i = 0; i < scene.objects.size(); ++i)
        if (counts(scene.objects[i])) all.include(boundsOfMesh(scene, pose, i, meshes));
    for (const auto &side : all.sides)
        if (!std::isfinite(side[1] - side[0]))
            throw InputError({.file = scene.file},
                             scene.objects.empty() ? "there is no object to frame" : "the objects have no finite size");
    return all;
}

// The bounds of what a picture should show: without the planes, unless there is nothing else.
Bounds framedBounds(const SceneDescription &scene, MeshCache &meshes) {
    const bool hasOnlyFloors = std::ranges::all_of(scene.objects, isFloor);
    return boundsIf(scene, meshes, [&](const ObjectDescription &object) { return hasOnlyFloors || !isFloor(object); });
}

void addCamera(SceneDescription &scene, const Bounds &bounds, View view) {
    CameraDescription camera = framed(bounds, view, pictureAspect(scene.render));
    camera.name = freeItemName(scene, scene.cameras, "View");
    camera.location.file = scene.file;
    scene.render.camera = camera.name;
    scene.cameras.push_back(std::move(camera));
}

// The camera that renders the picture, as it is at the first frame, without a parent, a target item or keys.
CameraDescription renderCamera(const SceneDescription &scene) {
    auto found = std::ranges::find(scene.cameras, scene.render.camera, &CameraDescription::name);
    if (found == scene.cameras.end()) found = scene.cameras.begin();
    const bool isByItself = found->parent.empty() && found->targetItem.empty() && found->channels.empty();
    if (isByItself) return *found;
    const Transform transform = startPose(scene).cameras[static_cast<std::size_t>(found - scene.cameras.begin())];
    const Vec3 target = transform.position + withoutScale(transform.toWorld) * Vec3{0, 0, 1};
    CameraDescription camera;
    camera.name = found->name;
    camera.location = found->location;
    transform.position.store(camera.position.data());
    camera.hasTarget = true;
    target.store(camera.target.data());
    return camera;
}

void addGround(SceneDescription &scene, const Bounds &bounds, const Double3 &colour) {
    ObjectDescription ground = groundBelow(bounds);
    ground.name = freeItemName(scene, scene.objects, "Ground");
    ground.location.file = scene.file;
    const std::string surface = addSurface(scene, "Ground", colour);
    ground.surfaces.push_back({.material = "", .surface = surface, .location = ground.location});
    scene.objects.push_back(std::move(ground));
}

// Lights that others have as their parent or target become nulls.
void replaceLights(std::vector<LightDescription> lights, SceneDescription &scene) {
    for (const LightDescription &light : scene.lights) {
        if (!isReferredTo(scene, light.name)) continue;
        NullDescription &stays = scene.nulls.emplace_back();
        static_cast<ItemDescription &>(stays) = light;
        stays.hasTarget = light.hasTarget && light.isAimed();
    }
    scene.lights.clear();
    for (LightDescription &light : lights) {
        light.name = freeItemName(scene, scene.lights, light.name);
        light.location.file = scene.file;
        scene.lights.push_back(std::move(light));
    }
}

// The backdrop of the rig without lights, for files that have lights of their own.
BackdropDescription neutralBackdrop(const SceneDescription &scene) {
    BackdropDescription backdrop = lightingOf(Rig::none, {}, {}, scene.render.workflow).backdrop;
    backdrop.location.file = scene.file;
    return backdrop;
}

void addLights(const OpenedFile &opened, const Bounds &bounds, SceneDescription &scene) {
    const CameraDescription camera = renderCamera(scene);
    Lighting lighting = lightingOf(*opened.rig, bounds, camera, scene.render.workflow);
    replaceLights(std::move(lighting.lights), scene);
    scene.render.ambientColour = lighting.ambientColour;
    scene.render.ambientIntensity = lighting.ambientIntensity;
    if (opened.reader->isScene) return; // which has a backdrop, and a ground if it wants one
    scene.backdrop = lighting.backdrop;
    scene.backdrop.location.file = scene.file;
    const bool isAboveGround = camera.position[1] > groundBelow(bounds).position[1];
    if (*opened.rig != Rig::none && isAboveGround && !looksUpwards(camera))
        addGround(scene, bounds, lighting.groundColour);
}

// Warns of parts of the file that a scene which names it would describe itself. Session warns of all others.
void warnOfLeftOut(const OpenedFile &opened, MeshCache &meshes, Warnings &warnings) {
    const ScenePose pose = startPose(opened.scene);
    for (std::size_t i = 0; i < opened.scene.objects.size(); ++i)
        for (const MeshWarning &warning : meshOf(opened.scene, pose, i, meshes).warnings)
            if (warning.isBesideMesh)
                warnings.add({.location = opened.scene.objects[i].location,
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
    MeshCache ownMeshes;
    MeshCache &meshes = request.meshes ? *request.meshes : ownMeshes;
    OpenedFile opened{.scene = {}, .reader = &reader, .view = request.view, .rig = request.rig};
    opened.scene = reader.read({.reader = reader,
                                .file = request.file,
                                .path = request.path,
                                .overrides = request.overrides,
                                .cameras = request.view ? Cameras::optional : Cameras::required,
                                .warnings = opened.warnings,
                                .meshes = meshes});
    if (reader.workflow) opened.scene.render.workflow = *reader.workflow;
    if (!reader.isScene && !request.rig && !opened.scene.lights.empty())
        opened.exposure = exposeLights(boundsOf(opened.scene, meshes), opened.scene);
    if (!reader.isComplete) opened.neutral = coverObjects(opened.scene);
    if (!reader.isComplete && !request.overrides.empty()) opened.scene = withOverrides(opened.scene, request);
    if (request.workflow) opened.scene.render.workflow = *request.workflow;
    if (request.subdivision) setSubdivision(*request.subdivision, opened.scene);
    if (reader.isComplete) return opened;
    if (!opened.view && opened.scene.cameras.empty()) opened.view = View::threeQuarter;
    if (!opened.rig && opened.scene.lights.empty()) opened.rig = Rig::studio;
    return opened;
}

void setSubdivision(int level, SceneDescription &scene) {
    for (ObjectDescription &object : scene.objects)
        if (auto *mesh = std::get_if<MeshFile>(&object.shape)) mesh->subdivision = level;
}

Bounds boundsOf(const SceneDescription &scene, MeshCache &meshes) {
    return boundsIf(scene, meshes, [](const ObjectDescription &) { return true; });
}

SceneDescription completeFile(const OpenedFile &opened, MeshCache &meshes, Warnings &warnings) {
    SceneDescription scene = opened.scene;
    for (const Warning &warning : opened.warnings) warnings.add(warning);
    if (!opened.reader->isComplete) {
        warnOfLeftOut(opened, meshes, warnings);
        coverMaterials(scene, meshes);
    }
    if (!opened.rig && !opened.reader->isScene) scene.backdrop = neutralBackdrop(scene);
    if (!opened.view && !opened.rig) return scene;
    const Bounds bounds = framedBounds(scene, meshes);
    if (opened.view) addCamera(scene, bounds, *opened.view);
    if (opened.rig) addLights(opened, bounds, scene);
    return scene;
}

std::string additionsText(const OpenedFile &opened, const SceneDescription &completed) {
    if (opened.reader->isComplete) return {};
    std::string text;
    const auto add = [&text](const std::string &what) { text += (text.empty() ? "" : ", ") + what; };
    if (opened.view) add(fmt::format("a camera ({})", nameOf(*opened.view)));
    if (opened.rig == Rig::studio) add("lights (studio)");
    if (opened.rig == Rig::outdoor) add("the sun and a sky (outdoor)");
    if (completed.objects.size() > opened.scene.objects.size()) add("a ground");
    if (!opened.reader->isScene) add("a backdrop");
    if (opened.exposure != 1) add(fmt::format("an exposure (the intensities of lights times {:.3g})", opened.exposure));
    std::set<std::string> others; // surfaces of the file
    for (const SurfaceDescription &surface : opened.scene.surfaces)
        if (surface.name != opened.neutral) others.insert(surface.name);
    const auto isNeutral = [&others](const SurfaceUse &use) { return !others.contains(use.surface); };
    const auto objects = std::span(completed.objects).first(opened.scene.objects.size());
    if (std::ranges::any_of(
            objects, [&](const ObjectDescription &object) { return std::ranges::any_of(object.surfaces, isNeutral); }))
        add("a neutral surface");
    return text;
}

} // namespace velm::host
