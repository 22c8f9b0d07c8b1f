// The "Scene Objects 6" service: the objects of the current scene and the vertex maps of their meshes. An object has
// one layer, whose pivot is the object's origin. Of the vertex maps, only UV maps are listed.
#include "host/base/thread_role.h"
#include "host/render/scene/current_scene.h"
#include "host/render/services/scene_services.h"

#include <algorithm>
#include <variant>

namespace velm::host {
namespace {

const RenderObject *objectAt(int index) {
    const RenderSceneData *scene = currentScene().scene;
    const auto number = static_cast<std::size_t>(index); // a negative index becomes one beyond the end
    return scene && number < scene->objects.size() ? &scene->objects[number] : nullptr;
}

// The object that has the layer.
const RenderObject *layerAt(int object, int layer) { return layer == 0 ? objectAt(object) : nullptr; }

const std::string *mapAt(int type, int index) {
    const RenderSceneData *scene = currentScene().scene;
    const auto number = static_cast<std::size_t>(index);
    const bool exists = scene && type == kVertexMapTxuv && number < scene->uvMapNames.size();
    return exists ? &scene->uvMapNames[number] : nullptr;
}

int objectCount() {
    assertInterface();
    const RenderSceneData *scene = currentScene().scene;
    return scene ? static_cast<int>(scene->objects.size()) : 0;
}

const char *fileName(int object) {
    assertInterface();
    const RenderObject *found = objectAt(object);
    if (!found) return nullptr;
    const auto *mesh = std::get_if<MeshFile>(&found->shape);
    return mesh ? mesh->file.c_str() : "";
}

int layerCount(int object) {
    assertInterface();
    return objectAt(object) ? 1 : 0;
}

int layerExists(int object, int layer) {
    assertInterface();
    return layerAt(object, layer) ? 1 : 0;
}

void pivot(int, int, double pivot[3]) { std::fill_n(pivot, 3, 0.0); }

HostMesh *layerMesh(int object, int layer) {
    assertInterface();
    const RenderObject *found = layerAt(object, layer);
    // An opaque handle; nobody writes through it.
    return found ? reinterpret_cast<HostMesh *>(found->mesh.get()) : nullptr;
}

int vertexMapCount(int type) {
    assertInterface();
    const RenderSceneData *scene = currentScene().scene;
    return scene && type == kVertexMapTxuv ? static_cast<int>(scene->uvMapNames.size()) : 0;
}

const char *vertexMapName(int type, int index) {
    assertInterface();
    const std::string *found = mapAt(type, index);
    return found ? found->c_str() : nullptr;
}

int vertexMapDimension(int type, int index) {
    assertInterface();
    return mapAt(type, index) ? 2 : 0;
}

int vertexMapType(int index) {
    assertInterface();
    return mapAt(kVertexMapTxuv, index) ? kVertexMapTxuv : 0;
}

constexpr HostSceneObjects kSceneObjects = {
    .objectCount = objectCount,
    .fileName = fileName,
    .layerCount = layerCount,
    .layerExists = layerExists,
    .pivot = pivot,
    .layerMesh = layerMesh,
    .vertexMapCount = vertexMapCount,
    .vertexMapName = vertexMapName,
    .vertexMapDimension = vertexMapDimension,
    .vertexMapType = vertexMapType,
};

} // namespace

const HostSceneObjects *sceneObjects() { return &kSceneObjects; }

} // namespace velm::host
