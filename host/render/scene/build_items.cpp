#include "host/render/scene/scene_builders.h"

#include "host/base/error.h"
#include "host/render/geometry/mesh_cache.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <map>

namespace velm::host {
namespace {

void requireUsable(const TransformDescription &transform) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (!std::isfinite(transform.position[axis]) || !std::isfinite(transform.rotation[axis]))
            throw InputError("its position and rotation have to be finite");
        if (transform.scale[axis] == 0 || !std::isfinite(transform.scale[axis]))
            throw InputError("its scale must not be 0");
    }
}

class ItemBuilder {
  public:
    ItemBuilder(const SceneDescription &scene, const RenderSceneData &former, MeshCache *meshes, ItemHandles &handles,
                RenderSceneData &data)
        : scene_(scene), meshes_(meshes), handles_(handles), data_(data) {
        for (const RenderObject &object : former.objects) former_[object.item] = &object;
    }

    void build() {
        handles_.begin();
        for (const LightDescription &light : scene_.lights)
            data_.lights.push_back({.item = take(kItemLight, light.name), .light = Light(light)});
        for (const CameraDescription &camera : scene_.cameras)
            data_.cameras.push_back({.item = take(kItemCamera, camera.name), .description = camera});
        for (const ObjectDescription &object : scene_.objects) addObject(object);
    }

  private:
    HostItem *take(int type, const std::string &name) {
        HostItem *item = handles_.take(type, name);
        data_.items.insert(item);
        return item;
    }

    void addObject(const ObjectDescription &description) {
        try {
            requireUsable(description);
            HostItem *item = take(kItemObject, description.name);
            const auto former = former_.find(item);
            const bool same = former != former_.end() && former->second->shape == description.shape &&
                              former->second->placement == description;
            data_.objects.push_back(same ? *former->second : newObject(item, description));
            RenderObject &object = data_.objects.back();
            object.surfaces.clear();
            object.seenByCamera = description.seenByCamera;
            object.seenByRays = description.seenByRays;
            object.castsShadows = description.castsShadows;
            for (const UvMap &map : object.mesh->uvMaps) addUvMap(map.name);
        } catch (const InputError &error) {
            throw InputError(description.location, fmt::format("object \"{}\": {}", description.name, error.what()));
        }
    }

    RenderObject newObject(HostItem *item, const ObjectDescription &description) {
        const Transform transform(description);
        std::shared_ptr<Mesh> mesh = meshes_ ? meshes_->take(description.shape, description) : nullptr;
        if (!mesh) mesh = std::make_shared<Mesh>(makeMesh(description.shape, transform));
        std::vector<Bounds> bounds = boundsByMaterial(*mesh);
        return {.item = item,
                .shape = description.shape,
                .placement = description,
                .meshNumber = data_.work.meshes++,
                .mesh = std::move(mesh),
                .bounds = std::move(bounds),
                .transform = transform,
                .surfaces = {},
                .seenByCamera = true,
                .seenByRays = true,
                .castsShadows = true};
    }

    void addUvMap(const std::string &name) {
        std::vector<std::string> &names = data_.uvMapNames;
        if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    }

    const SceneDescription &scene_;
    MeshCache *meshes_; // may be null
    ItemHandles &handles_;
    RenderSceneData &data_;
    std::map<const HostItem *, const RenderObject *> former_;
};

template <typename Things>
void numberHandles(const Things &things) {
    for (std::size_t i = 0; i < things.size(); ++i) things[i].item->index = static_cast<int>(i);
}

} // namespace

void buildItems(const SceneDescription &scene, const RenderSceneData &former, MeshCache *meshes, ItemHandles &handles,
                RenderSceneData &data) {
    data.sceneName = scene.name;
    data.sceneFile = scene.file;
    data.render = scene.render;
    data.work = former.work;
    ItemBuilder(scene, former, meshes, handles, data).build();
}

void attachHandles(ItemHandles &handles, const RenderSceneData &data) {
    handles.forEach([](HostItem &item) {
        item.index = -1;
        item.mesh = nullptr;
    });
    numberHandles(data.objects);
    numberHandles(data.lights);
    numberHandles(data.cameras);
    for (const RenderObject &object : data.objects) object.item->mesh = object.mesh.get();
}

} // namespace velm::host
