#include "host/render/scene/scene_builders.h"

#include "host/base/angles.h"
#include "host/base/error.h"
#include "host/render/geometry/mesh_cache.h"
#include "host/render/geometry/shared_shapes.h"
#include "host/render/motion/paths.h"
#include "host/render/motion/pose.h"
#include "host/render/motion/values.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <map>
#include <unordered_map>
#include <unordered_set>

namespace velm::host {
namespace {

void requireFinite(const Transform &transform) {
    const Matrix &matrix = transform.toWorld;
    if (!isFinite(transform.position) ||
        !std::all_of(matrix.m, matrix.m + 9, [](double m) { return std::isfinite(m); }))
        throw InputError("its position, rotation and scale have to be finite");
}

// A mesh in object coordinates.
struct Model {
    std::shared_ptr<Mesh> mesh; // null: none
    int number = 0;
};

// Where an item with this pivot is. One with a scale of 0 has no directions, and so no rotation.
ItemPlace placeOf(const Transform &transform, const Vec3 &pivot) {
    ItemPlace place;
    transform.pointToWorld(pivot).store(place.position.data());
    if (transform.isInvertible()) place.rotation = anglesOf(withoutScale(transform.toWorld));
    for (std::size_t i = 0; i < 3; ++i) {
        const double *m = transform.toWorld.m;
        place.rotation[i] *= kRadiansPerDegree;
        place.scale[i] = std::hypot(m[i], m[i + 3], m[i + 6]);
    }
    return place;
}

class ItemBuilder {
  public:
    ItemBuilder(const SceneDescription &scene, double time, const RenderSceneData &former, MeshCache *meshes,
                ItemHandles &handles, RenderSceneData &data)
        : scene_(scene), time_(time), pose_(poseAt(scene, time)),
          shutterPoses_(shutterPoses(scene, time, data.shutter)), counts_(scene.objects), meshes_(meshes),
          handles_(handles), data_(data) {
        for (const RenderObject &object : former.objects) {
            former_[object.item] = &object;
            if (object.model) models_[object.shape] = {.mesh = object.model, .number = object.modelNumber};
        }
        for (const SurfaceDescription &surface : scene.surfaces)
            if (!(surface.smoothingAngle > 0)) flatSurfaces_.insert(surface.name);
    }

    void build() {
        handles_.begin();
        for (std::size_t i = 0; i < scene_.lights.size(); ++i)
            data_.lights.push_back({.item = take(kItemLight, scene_.lights[i].name),
                                    .light = Light(valuesAt(scene_.lights[i], time_), pose_.lights[i])});
        for (std::size_t i = 0; i < scene_.cameras.size(); ++i) {
            data_.cameras.push_back({.item = take(kItemCamera, scene_.cameras[i].name),
                                     .description = valuesAt(scene_.cameras[i], time_),
                                     .transform = pose_.cameras[i],
                                     .later = {}});
            data_.cameras.back().later = laterSteps(i);
        }
        for (std::size_t i = 0; i < scene_.objects.size(); ++i) addObject(i);
        addPlaces(scene_.objects, pose_.objects);
        addPlaces(scene_.nulls, pose_.nulls);
        addPlaces(scene_.lights, pose_.lights);
        addPlaces(scene_.cameras, pose_.cameras);
    }

  private:
    HostItem *take(int type, const std::string &name) {
        HostItem *item = handles_.take(type, name);
        data_.items.insert(item);
        return item;
    }

    template <class Description>
    void addPlaces(const std::vector<Description> &items, const std::vector<Transform> &transforms) {
        for (std::size_t i = 0; i < items.size(); ++i)
            data_.places.push_back(
                {.name = items[i].name, .place = placeOf(transforms[i], Vec3(placeAt(items[i], time_).pivot))});
    }

    void addObject(std::size_t index) {
        const ObjectDescription &description = scene_.objects[index];
        const Transform &transform = pose_.objects[index];
        try {
            requireFinite(transform);
            if (!transform.isInvertible() && !pose_.movingObjects[index]) throw InputError("its scale must not be 0");
            HostItem *item = take(kItemObject, description.name);
            const auto found = former_.find(item);
            const RenderObject *former =
                found != former_.end() && found->second->shape == description.shape ? found->second : nullptr;
            const ItemPath path = objectPath(shutterPoses_, index);
            const Model model = pose_.modelledObjects[index] ? modelOf(index, former) : Model{};
            const bool isInstance = model.mesh && isWorthInstance(index, *model.mesh);
            const bool same = former && former->transform == transform && former->path == path &&
                              former->model == model.mesh && former->isInstance == isInstance;
            data_.objects.push_back(same ? *former : newObject(item, index, model, isInstance));
            RenderObject &object = data_.objects.back();
            object.path = path;
            object.moves = pose_.movingObjects[index];
            object.surfaces.clear();
            object.dissolve = std::max(0.0, valuesAt(description, time_).dissolve);
            const bool isVisible = transform.isInvertible() && object.dissolve < 1;
            data_.hasDissolved = data_.hasDissolved || (isVisible && object.dissolve > 0);
            object.seenByCamera = isVisible && description.seenByCamera;
            object.seenByRays = isVisible && description.seenByRays;
            object.castsShadows = isVisible && description.castsShadows;
            for (const UvMap &map : object.mesh->uvMaps) addUvMap(map.name);
        } catch (const InputError &error) {
            throw InputError(description.location, fmt::format("object \"{}\": {}", description.name, error.what()));
        }
    }

    std::shared_ptr<Mesh> makeMeshOf(std::size_t index) {
        const ShapeDescription &shape = scene_.objects[index].shape;
        std::shared_ptr<Mesh> mesh = meshes_ ? meshes_->take(shape, pose_.ofMesh(index)) : nullptr;
        if (!mesh) mesh = std::make_shared<Mesh>(makeMesh(shape, pose_.ofMesh(index)));
        ++data_.work.meshes;
        return mesh;
    }

    // `former` is the object in the scene before the update if it had the same shape, else null.
    Model modelOf(std::size_t index, const RenderObject *former) {
        if (former && former->model) return {.mesh = former->model, .number = former->modelNumber};
        Model &model = models_[scene_.objects[index].shape];
        if (!model.mesh) {
            model.mesh = makeMeshOf(index);
            model.number = lastNumber();
        }
        return model;
    }

    // Whether the object is to be an instance of its model. Normals are smoothed in world space, so those of an
    // instance that is stretched would differ.
    bool isWorthInstance(std::size_t index, const Mesh &model) const {
        const ObjectDescription &description = scene_.objects[index];
        const auto isSmooth = [this](const SurfaceUse &use) { return !flatSurfaces_.contains(use.surface); };
        const bool stretches = !pose_.objects[index].toWorld.keepsAngles();
        if (stretches && !model.hasOwnNormals() && std::ranges::any_of(description.surfaces, isSmooth)) return false;
        return isWorthInstances(model.triangles.size(), counts_.of(description.shape), pose_.movingObjects[index]);
    }

    // The number of the mesh that was made or placed last.
    int lastNumber() const { return data_.work.meshes + data_.work.placements; }

    RenderObject newObject(HostItem *item, std::size_t index, const Model &model, bool isInstance) {
        const Transform &transform = pose_.objects[index];
        RenderObject object{.item = item,
                            .shape = scene_.objects[index].shape,
                            .model = model.mesh,
                            .modelNumber = model.number,
                            .meshNumber = model.number,
                            .mesh = model.mesh,
                            .isInstance = isInstance,
                            .moves = false,
                            .bounds = {},
                            .transform = transform,
                            .path = {},
                            .motion = nullptr,
                            .surfaces = {},
                            .seenByCamera = true,
                            .seenByRays = true,
                            .castsShadows = true};
        if (!isInstance) {
            object.mesh = model.mesh ? place(*model.mesh, transform) : makeMeshOf(index);
            object.meshNumber = lastNumber();
        }
        object.bounds = isInstance ? boundsByMaterial(*object.mesh, transform) : boundsByMaterial(*object.mesh);
        return object;
    }

    std::shared_ptr<Mesh> place(const Mesh &model, const Transform &transform) {
        ++data_.work.placements;
        if (model.smoothingAngles.empty()) return std::make_shared<Mesh>(placedMesh(model, transform));
        Mesh flat(model);
        smoothNormals(flat, {});
        return std::make_shared<Mesh>(placedMesh(flat, transform));
    }

    std::vector<CameraStep> laterSteps(std::size_t index) const {
        const CameraDescription &camera = scene_.cameras[index];
        std::vector<CameraStep> steps;
        if (!(camera.shutter > 0)) return steps;
        for (std::size_t step = 1; step < shutterPoses_.size(); ++step)
            steps.push_back({.description = valuesAt(camera, timeOfStep(time_, data_.shutter, static_cast<int>(step))),
                             .transform = shutterPoses_[step].cameras[index]});
        const RenderCamera &first = data_.cameras[index];
        const bool isStill = std::ranges::all_of(steps, [&first](const CameraStep &step) {
            return step.description == first.description && step.transform == first.transform;
        });
        return isStill ? std::vector<CameraStep>{} : steps;
    }

    void addUvMap(const std::string &name) {
        std::vector<std::string> &names = data_.uvMapNames;
        if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    }

    const SceneDescription &scene_;
    const double time_; // seconds
    const ScenePose pose_;
    const std::vector<ScenePose> shutterPoses_;
    const ShapeCounts counts_;
    MeshCache *meshes_; // may be null
    ItemHandles &handles_;
    RenderSceneData &data_;
    std::map<const HostItem *, const RenderObject *> former_;
    std::unordered_map<ShapeDescription, Model, ShapeHash> models_;
    std::unordered_set<std::string> flatSurfaces_; // names
};

template <typename Things>
void numberHandles(const Things &things) {
    for (std::size_t i = 0; i < things.size(); ++i) things[i].item->index = static_cast<int>(i);
}

} // namespace

void buildItems(const SceneDescription &scene, double time, const RenderSceneData &former, MeshCache *meshes,
                ItemHandles &handles, RenderSceneData &data) {
    data.sceneName = scene.name;
    data.sceneFile = scene.file;
    data.render = scene.render;
    data.time = time;
    data.shutter = longestShutter(scene);
    data.work = former.work;
    ItemBuilder(scene, time, former, meshes, handles, data).build();
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
