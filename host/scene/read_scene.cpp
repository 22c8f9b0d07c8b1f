#include "host/scene/read_scene.h"

#include "host/graph/names.h"
#include "host/scene/nested.h"
#include "host/scene/tables.h"
#include "host/state/files.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>

namespace velm {

namespace {

// A name that something in the scene is called by must be there.
template <class T>
void wantNamed(const std::vector<T> &all, const std::string &name, std::string_view what, const Place &place) {
    if (std::ranges::find(all, name, &T::name) != all.end()) return;
    std::vector<std::string> known;
    known.reserve(all.size());
    for (const T &one : all) known.push_back(one.name);
    throw InputError(place, fmt::format("there is no {} {}{}", what, velm::quoted(name), suggestion(name, known)));
}

void checkNames(const SceneDescription &scene) {
    if (!scene.render.camera.empty()) wantNamed(scene.cameras, scene.render.camera, "camera", scene.render.cameraPlace);
    if (scene.backdrop.kind == BackdropDescription::Kind::image)
        wantNamed(scene.images, scene.backdrop.image, "image", scene.backdrop.place);
    for (const ObjectDescription &object : scene.objects)
        for (const SurfaceUse &use : object.surfaces) wantNamed(scene.surfaces, use.surface, "surface", use.place);
}

} // namespace

SceneDescription readSceneText(std::string_view text, const std::string &file, const SearchPath &path) {
    const std::filesystem::path filePath(file);
    const ReadContext context{.file = file, .directory = filePath.parent_path().string(), .path = path};
    const JsonValue root = parseJson(text, file);
    SceneDescription scene;
    scene.file = file;
    scene.name = filePath.stem().string();
    readObject(context, sceneTable(), root, scene);
    if (scene.cameras.empty()) context.fail(root.find("cameras")->line, "a scene needs at least one camera");
    checkNames(scene);
    return scene;
}

SceneDescription readScene(const std::string &file, const SearchPath &path) {
    return readSceneText(readFile(file), file, path);
}

std::string sceneSchema() {
    nlohmann::ordered_json schema = {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                                     {"title", "A scene of the stand-alone host"}};
    schema.update(objectSchema(sceneTable()));
    schema["$defs"] = {{"settings", settingsDefinition()}, {"node", nodeDefinition()}};
    return schema.dump(2) + '\n';
}

} // namespace velm
