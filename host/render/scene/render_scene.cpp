#include "host/render/scene/render_scene.h"

#include "host/base/error.h"
#include "host/base/thread_role.h"
#include "host/render/motion/pose.h"
#include "host/render/motion/values.h"
#include "host/render/scene/current_scene.h"
#include "host/render/scene/render_scene_data.h"
#include "host/render/scene/scene_builders.h"
#include "host/services/item_place_provider.h"
#include "host/services/uv_provider.h"
#include "host/services/vertex_map_provider.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstring>
#include <new>
#include <span>

namespace velm::host {
namespace {

template <typename Things>
const HostItem *findItem(const Things &things, const std::string &name) {
    for (const auto &thing : things)
        if (thing.item->name == name) return thing.item;
    return nullptr;
}

template <typename Build>
void withinMemory(const Build &build) {
    try {
        build();
    } catch (const std::bad_alloc &) {
        throw MachineError("not enough memory for the scene");
    }
}

bool lookUpUvOf(const ShadingSample *sample, const char *mapName, double *u, double *v) {
    return sampleUv(*sample, mapName, u, v);
}

// The map of that name, or the first one if the name is null or empty, of the mesh that a sample is on; null for none.
const VertexMap *findVertexMap(const ShadingSample &sample, const char *name, bool isOfWeights) {
    if (!sample.objectItem || !sample.polygon || !sample.objectItem->mesh) return nullptr;
    const std::vector<VertexMap> &maps = sample.objectItem->mesh->vertexMaps;
    const auto found = std::find_if(maps.begin(), maps.end(), [&](const VertexMap &map) {
        return map.isWeight() == isOfWeights && (!name || !*name || std::strcmp(map.name.c_str(), name) == 0);
    });
    return found == maps.end() ? nullptr : &*found;
}

// Stores the `map.size` numbers of a map at a sample. False, with `result` unchanged, if one of them is not finite.
bool interpolate(const VertexMap &map, const ShadingSample &sample, double *result) {
    std::array<double, 4> sums{};
    for (std::size_t k = 0; k < 3; ++k) {
        const std::span<const float> value = map.valueOf(sample.polygon->corners[k]);
        for (std::size_t i = 0; i < value.size(); ++i)
            sums[i] += static_cast<double>(sample.vertexWeights[k]) * static_cast<double>(value[i]);
    }
    if (!std::isfinite(sums[0] + sums[1] + sums[2] + sums[3])) return false;
    std::copy_n(sums.begin(), map.size, result);
    return true;
}

bool vertexColourOf(const char *mapName, const ShadingSample *sample, double result[4]) {
    const VertexMap *map = findVertexMap(*sample, mapName, false);
    if (!map || !interpolate(*map, *sample, result)) return false;
    if (map->size == 3) result[3] = 1;
    return true;
}

bool itemPlaceOf(const char *name, ItemPlace &place) {
    const RenderSceneData *scene = currentScene().scene;
    if (!scene) return false;
    const auto found = std::ranges::find(scene->places, name, &NamedPlace::name);
    if (found == scene->places.end()) return false;
    place = found->place;
    return true;
}

bool vertexWeightOf(const char *mapName, const ShadingSample *sample, double *result) {
    const VertexMap *map = findVertexMap(*sample, mapName, true);
    return map && interpolate(*map, *sample, result);
}

} // namespace

RenderScene::RenderScene(const SceneDescription &scene, MeshCache *meshes)
    : handles_(std::make_unique<ItemHandles>()), data_(std::make_unique<RenderSceneData>()) {
    withinMemory([&] { buildItems(scene, startTime(scene.render), {}, meshes, *handles_, *data_); });
    attachHandles(*handles_, *data_);
    setUvProvider({.lookup = lookUpUvOf});
    setVertexMapProvider({.colour = vertexColourOf, .weight = vertexWeightOf});
    setItemPlaceProvider(itemPlaceOf);
    setCurrentScene({.scene = data_.get(), .width = scene.render.width, .height = scene.render.height});
}

void RenderScene::prepare(const SceneDescription &scene, const SurfaceLookup &surfaceOf) {
    withinMemory([&] { buildSurfaces(scene, surfaceOf, {}, *data_); });
    attachHandles(*handles_, *data_); // objects with the same mesh file may get different normals
    attachSurfaces(*data_);
}

SceneWork RenderScene::update(const SceneDescription &scene, const SurfaceLookup &surfaceOf) {
    return rebuild(scene, data_->time, surfaceOf);
}

SceneWork RenderScene::setTime(const SceneDescription &scene, double time, const SurfaceLookup &surfaceOf) {
    if (time == data_->time || !hasKeys(scene)) return {};
    return rebuild(scene, time, surfaceOf);
}

SceneWork RenderScene::rebuild(const SceneDescription &scene, double time, const SurfaceLookup &surfaceOf) {
    assertInterface();
    assert(data_->acceleration && "prepare the scene first");
    RenderSceneData next;
    withinMemory([&] {
        buildItems(scene, time, *data_, nullptr, *handles_, next);
        buildSurfaces(scene, surfaceOf, *data_, next);
    });
    const SceneWork done = next.work - data_->work;
    *data_ = std::move(next);
    attachHandles(*handles_, *data_);
    attachSurfaces(*data_);
    if (currentScene().scene == data_.get())
        setCurrentScene({.scene = data_.get(), .width = scene.render.width, .height = scene.render.height});
    ++updates_;
    return done;
}

void RenderScene::renewPanoramas() {
    withinMemory([&] {
        for (RenderLight &each : data_->lights)
            if (const auto &panorama = each.light.panorama(); panorama && !panorama->isCurrent())
                each.light.setPanorama(panorama->renewed());
    });
}

RenderScene::~RenderScene() {
    if (currentScene().scene == data_.get()) setCurrentScene({});
}

const HostItem *RenderScene::item(int type, const std::string &name) const {
    switch (type) {
    case kItemObject: return findItem(data_->objects, name);
    case kItemLight: return findItem(data_->lights, name);
    case kItemCamera: return findItem(data_->cameras, name);
    default: return nullptr;
    }
}

std::size_t RenderScene::triangleCount() const {
    std::size_t count = 0;
    for (const RenderObject &object : data_->objects) count += object.mesh->triangles.size();
    return count;
}

std::size_t RenderScene::pointCount() const {
    std::size_t count = 0;
    for (const RenderObject &object : data_->objects) count += object.mesh->points.size();
    return count;
}

std::size_t RenderScene::accelerationBytes() const { return data_->acceleration->bytes(); }

bool sampleUv(const ShadingSample &sample, const char *mapName, double *u, double *v) {
    if (!sample.objectItem || !sample.polygon || !sample.objectItem->mesh) return false;
    const Mesh &mesh = *sample.objectItem->mesh;
    const auto map = std::find_if(mesh.uvMaps.begin(), mesh.uvMaps.end(), [&](const UvMap &each) {
        return !mapName || std::strcmp(each.name.c_str(), mapName) == 0;
    });
    if (map == mesh.uvMaps.end()) return false;
    double sum[2] = {0, 0};
    for (int k = 0; k < 3; ++k) {
        const std::array<float, 2> &value = map->values[sample.polygon->corners[k]];
        for (std::size_t i = 0; i < 2; ++i) sum[i] += static_cast<double>(sample.vertexWeights[k]) * value[i];
    }
    if (!std::isfinite(sum[0] + sum[1])) return false;
    *u = sum[0];
    *v = sum[1];
    return true;
}

} // namespace velm::host
