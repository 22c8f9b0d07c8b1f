#include "host/scene/read_scene.h"

#include "host/base/names.h"
#include "host/io/files.h"
#include "host/scene/format/item_tree.h"
#include "host/scene/format/keyed_values.h"
#include "host/scene/format/nested.h"
#include "host/scene/format/tables.h"
#include "host/scene/own_surfaces.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>

namespace velm::host {

namespace {

// Throws InputError unless something in the scene has the name that is used at `location`.
template <class T>
void requireNamed(const std::vector<T> &all, const std::string &name, std::string_view what,
                  const SourceLocation &location) {
    if (std::ranges::find(all, name, &T::name) != all.end()) return;
    std::vector<std::string> known;
    known.reserve(all.size());
    for (const T &one : all) known.push_back(one.name);
    throw InputError(location, fmt::format("there is no {} {}{}", what, inQuotes(name), suggestion(name, known)));
}

void checkNames(const SceneDescription &scene) {
    if (!scene.render.camera.empty())
        requireNamed(scene.cameras, scene.render.camera, "camera", scene.render.cameraLocation);
    if (scene.backdrop.kind == BackdropDescription::Kind::image)
        requireNamed(scene.images, scene.backdrop.image, "image", scene.backdrop.location);
    for (const LightDescription &light : scene.lights)
        if (!light.image.empty()) requireNamed(scene.images, light.image, "image", light.location);
    for (const ObjectDescription &object : scene.objects)
        for (const SurfaceUse &use : object.surfaces)
            requireNamed(scene.surfaces, use.surface, "surface", use.location);
    ItemTree{scene}; // throws if a parent or target is not an item, or if they lead in a circle
}

} // namespace

SceneDescription readSceneText(std::string_view text, const std::string &file, const SearchPath &path,
                               std::span<const SceneOverride> overrides, Cameras cameras) {
    const std::filesystem::path filePath(file);
    const ReadContext context{.file = file, .directory = filePath.parent_path().string(), .path = path};
    JsonValue root = parseJson(text, file);
    overrideValues(overrides, file, root);
    SceneDescription scene;
    scene.file = file;
    scene.name = filePath.stem().string();
    readObject(context, sceneTable(), root, scene);
    if (cameras == Cameras::required && scene.cameras.empty()) {
        const JsonValue *found = root.find("cameras");
        if (!found) context.fail(root.line, "a scene needs \"cameras\"");
        context.fail(found->line, "a scene needs at least one camera");
    }
    addOwnSurfaces(path, scene);
    checkNames(scene);
    return scene;
}

SceneDescription readScene(const std::string &file, const SearchPath &path, std::span<const SceneOverride> overrides,
                           Cameras cameras) {
    return readSceneText(readFile(file), file, path, overrides, cameras);
}

SceneDescription readSurfaces(const std::string &file, const SearchPath &path) {
    return readScene(file, path, {}, Cameras::optional);
}

std::string sceneSchema() {
    nlohmann::ordered_json schema = {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                                     {"title", "A scene of the stand-alone host"}};
    schema.update(objectSchema(sceneTable()));
    schema["required"] = {"cameras"}; // for rendering, unless it is framed
    schema["$defs"] = {{"settings", settingsDefinition()},
                       {"node", nodeDefinition()},
                       {"numberKeys", numberKeysDefinition()},
                       {"vectorKeys", vectorKeysDefinition()}};
    return schema.dump(2) + '\n';
}

} // namespace velm::host
