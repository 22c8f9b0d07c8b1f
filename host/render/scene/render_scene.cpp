#include "host/render/scene/render_scene.h"

#include "host/base/names.h"
#include "host/graph/surface.h"
#include "host/render/scene/current_scene.h"
#include "host/render/scene/render_scene_data.h"
#include "host/services/uv_provider.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <new>

namespace velm::host {
namespace {

// The bounds of what carries a surface.
struct Bounds {
    double sides[3][2] = {{INFINITY, -INFINITY}, {INFINITY, -INFINITY}, {INFINITY, -INFINITY}};

    void include(const Vec3 &point) {
        const double values[3] = {point.x, point.y, point.z};
        for (int axis = 0; axis < 3; ++axis) {
            sides[axis][0] = std::min(sides[axis][0], values[axis]);
            sides[axis][1] = std::max(sides[axis][1], values[axis]);
        }
    }
};

// The first step: what services tell of.
class ContentBuilder {
  public:
    ContentBuilder(const SceneDescription &scene, RenderSceneData &data) : scene_(scene), data_(data) {}

    void build() {
        data_.sceneName = scene_.name;
        data_.sceneFile = scene_.file;
        data_.render = scene_.render;
        for (const LightDescription &light : scene_.lights) {
            data_.lights.emplace_back(light, static_cast<int>(data_.lights.size()));
            data_.items.insert(&data_.lights.back().item);
        }
        for (const CameraDescription &camera : scene_.cameras) {
            data_.cameras.push_back(
                {.item = {.type = kItemCamera, .index = static_cast<int>(data_.cameras.size()), .name = camera.name},
                 .description = camera});
            data_.items.insert(&data_.cameras.back().item);
        }
        for (const ObjectDescription &object : scene_.objects) addObject(object);
    }

  private:
    void addObject(const ObjectDescription &description) {
        try {
            checkTransform(description.transform);
            RenderObject &object = data_.objects.emplace_back();
            object.item = {.type = kItemObject,
                           .index = static_cast<int>(data_.objects.size() - 1),
                           .name = description.name,
                           .mesh = &object.mesh};
            data_.items.insert(&object.item);
            object.transform = Transform(description.transform);
            if (const auto *file = std::get_if<MeshFile>(&description.shape)) object.file = file->file;
            object.mesh = makeMesh(description.shape, object.transform);
            for (const UvMap &map : object.mesh.uvMaps) addUvMap(map.name);
        } catch (const InputError &error) {
            throw InputError(description.location, "object \"" + description.name + "\": " + error.what());
        }
    }

    void addUvMap(const std::string &name) {
        std::vector<std::string> &names = data_.uvMapNames;
        if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    }

    static void checkTransform(const TransformDescription &transform) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            if (!std::isfinite(transform.position[axis]) || !std::isfinite(transform.rotation[axis])) {
                throw InputError("its position and rotation have to be finite");
            }
            if (transform.scale[axis] == 0 || !std::isfinite(transform.scale[axis])) {
                throw InputError("its scale must not be 0");
            }
        }
    }

    static Mesh makeMesh(const ShapeDescription &shape, const Transform &transform) {
        if (const auto *file = std::get_if<MeshFile>(&shape)) return readMesh(file->file, transform);
        if (const auto *plane = std::get_if<PlaneShape>(&shape)) return shapeMesh(*plane, transform);
        if (const auto *box = std::get_if<BoxShape>(&shape)) return shapeMesh(*box, transform);
        return shapeMesh(std::get<SphereShape>(shape), transform);
    }

    const SceneDescription &scene_;
    RenderSceneData &data_;
};

// The second step: what rays meet.
class SurfaceBuilder {
  public:
    SurfaceBuilder(const SceneDescription &scene, const SurfaceLookup &surfaceOf, RenderSceneData &data)
        : scene_(scene), surfaceOf_(surfaceOf), data_(data) {}

    void build() {
        data_.backdrop = Backdrop(scene_.backdrop);
        data_.ambient = scene_.render.ambientIntensity * Vec3(scene_.render.ambientColour);
        for (std::size_t i = 0; i < data_.objects.size(); ++i) coverObject(scene_.objects[i], data_.objects[i]);
        finishSurfaces();
        accelerate();
    }

  private:
    void coverObject(const ObjectDescription &description, RenderObject &object) {
        location_ = description.location;
        try {
            assignSurfaces(description, object);
            smooth(object);
        } catch (const InputError &error) {
            throw InputError(location_, "object \"" + description.name + "\": " + error.what());
        }
    }

    // Which surface each material of the mesh gets: its own, or the one that is given for all others.
    void assignSurfaces(const ObjectDescription &description, RenderObject &object) {
        const std::vector<std::string> &materials = object.mesh.materials;
        const SurfaceUse *others = nullptr;
        for (const SurfaceUse &use : description.surfaces) {
            if (use.material.empty()) {
                others = &use;
            } else if (std::find(materials.begin(), materials.end(), use.material) == materials.end()) {
                standAt(use);
                throw InputError("its mesh has no material \"" + use.material + "\"" +
                                 didYouMean(use.material, materials));
            }
        }
        for (const std::string &material : materials) {
            const auto own = std::find_if(description.surfaces.begin(), description.surfaces.end(),
                                          [&](const SurfaceUse &use) { return use.material == material; });
            const SurfaceUse *use = own != description.surfaces.end() ? &*own : others;
            if (!use) {
                throw InputError(material.empty() ? "it has no surface"
                                                  : "there is no surface for its mesh's material \"" + material + "\"");
            }
            standAt(*use);
            object.surfaces.push_back(surfaceNumber(use->surface));
            location_ = description.location;
        }
    }

    // Errors from here on are about this use of a surface.
    void standAt(const SurfaceUse &use) {
        if (!use.location.file.empty()) location_ = use.location;
    }

    std::uint16_t surfaceNumber(const std::string &name) {
        const auto known = std::find(names_.begin(), names_.end(), name);
        if (known != names_.end()) return static_cast<std::uint16_t>(known - names_.begin());
        Surface *surface = surfaceOf_(name);
        if (!surface) {
            std::vector<std::string> all;
            for (const SurfaceDescription &description : scene_.surfaces) all.push_back(description.name);
            throw InputError("there is no surface \"" + name + "\"" + didYouMean(name, all));
        }
        if (names_.size() > std::numeric_limits<std::uint16_t>::max()) throw InputError("more than 65536 surfaces");
        // A surface that is not described has what a description has when nothing is said.
        const auto described = std::find_if(scene_.surfaces.begin(), scene_.surfaces.end(),
                                            [&](const SurfaceDescription &each) { return each.name == name; });
        const SurfaceDescription settings = described != scene_.surfaces.end() ? *described : SurfaceDescription{};
        data_.surfaces.push_back(
            {.surface = surface, .smoothingAngle = settings.smoothingAngle, .doubleSided = settings.doubleSided});
        names_.push_back(name);
        return static_cast<std::uint16_t>(names_.size() - 1);
    }

    void smooth(RenderObject &object) {
        Mesh &mesh = object.mesh;
        std::vector<double> angles;
        for (const std::uint16_t surface : object.surfaces) angles.push_back(data_.surfaces[surface].smoothingAngle);
        if (std::none_of(angles.begin(), angles.end(), [](double angle) { return angle > 0; })) {
            mesh.normals = {};
        } else if (mesh.normals.empty()) {
            smoothNormals(mesh, angles);
        }
    }

    void finishSurfaces() {
        std::vector<Bounds> bounds(data_.surfaces.size());
        for (const RenderObject &object : data_.objects) {
            for (std::uint32_t triangle = 0; triangle < object.mesh.triangles.size(); ++triangle) {
                Bounds &own = bounds[object.surfaces[object.mesh.materialNumber(triangle)]];
                for (int k = 0; k < 3; ++k) own.include(object.mesh.corner(triangle, k));
            }
        }
        for (std::size_t i = 0; i < data_.surfaces.size(); ++i) {
            data_.surfaces[i].surface->setBounds(bounds[i].sides);
            data_.hasSingleSided = data_.hasSingleSided || !data_.surfaces[i].doubleSided;
        }
    }

    void accelerate() {
        std::vector<VisibleMesh> meshes;
        for (std::size_t i = 0; i < scene_.objects.size(); ++i) {
            meshes.push_back({.mesh = &data_.objects[i].mesh,
                              .seenByCamera = scene_.objects[i].seenByCamera,
                              .seenByRays = scene_.objects[i].seenByRays,
                              .castsShadows = scene_.objects[i].castsShadows});
        }
        data_.acceleration = std::make_unique<Acceleration>(meshes);
    }

    const SceneDescription &scene_;
    const SurfaceLookup &surfaceOf_;
    RenderSceneData &data_;
    SourceLocation location_;        // that an error would be about
    std::vector<std::string> names_; // of data_.surfaces
};

template <typename Things>
const HostItem *findItem(const Things &things, const std::string &name) {
    for (const auto &thing : things) {
        if (thing.item.name == name) return &thing.item;
    }
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

} // namespace

RenderScene::RenderScene(const SceneDescription &scene) : data_(std::make_unique<RenderSceneData>()) {
    withinMemory([&] { ContentBuilder(scene, *data_).build(); });
    setUvProvider({.lookup = lookUpUvOf});
    setCurrentScene({.scene = data_.get(), .width = scene.render.width, .height = scene.render.height});
}

void RenderScene::prepare(const SceneDescription &scene, const SurfaceLookup &surfaceOf) {
    withinMemory([&] { SurfaceBuilder(scene, surfaceOf, *data_).build(); });
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
    for (const RenderObject &object : data_->objects) count += object.mesh.triangles.size();
    return count;
}

std::size_t RenderScene::pointCount() const {
    std::size_t count = 0;
    for (const RenderObject &object : data_->objects) count += object.mesh.points.size();
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
