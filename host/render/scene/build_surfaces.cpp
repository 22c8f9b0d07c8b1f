#include "host/render/scene/scene_builders.h"

#include "host/base/error.h"
#include "host/base/names.h"
#include "host/graph/surface.h"
#include "host/image/image.h"
#include "host/render/scene/panorama.h"

#include <algorithm>
#include <fmt/format.h>
#include <limits>
#include <map>
#include <memory>
#include <unordered_set>
#include <utility>

namespace velm::host {
namespace {

bool hasMaterial(const Mesh &mesh, const std::string &name) {
    return std::find(mesh.materials.begin(), mesh.materials.end(), name) != mesh.materials.end();
}

class SurfaceBuilder {
  public:
    SurfaceBuilder(const SceneDescription &scene, const SurfaceLookup &surfaceOf, const RenderSceneData &former,
                   RenderSceneData &data)
        : scene_(scene), surfaceOf_(surfaceOf), former_(former), data_(data), isNew_(!former.acceleration) {}

    void build() {
        data_.backdrop = Backdrop(scene_.backdrop);
        for (std::size_t i = 0; i < data_.lights.size(); ++i) fillDome(scene_.lights[i], data_.lights[i].light);
        data_.fog = Fog(scene_.fog);
        data_.ambient = scene_.render.ambientIntensity * Vec3(scene_.render.ambientColour);
        for (const RenderObject &object : data_.objects)
            if (object.isInstance)
                smoothed_.try_emplace({object.modelNumber, object.mesh->smoothingAngles}, object.mesh);
        for (std::size_t i = 0; i < data_.objects.size(); ++i) coverObject(scene_.objects[i], data_.objects[i]);
        for (const RenderSurface &surface : data_.surfaces)
            data_.hasSingleSided = data_.hasSingleSided || !surface.doubleSided;
        accelerate();
    }

  private:
    void fillDome(const LightDescription &description, Light &light) const {
        if (description.image.empty()) return;
        const HostImage *image = imageNamed(description.image, "the light's image", description.location);
        if (image) light.setPanorama(panoramaOf(*image, description.hemisphere));
    }

    // Making a panorama takes time, so an equal one of the former contents is used again.
    std::shared_ptr<const Panorama> panoramaOf(const HostImage &image, bool upperHalf) const {
        for (const RenderLight &each : former_.lights)
            if (const auto &panorama = each.light.panorama(); panorama && panorama->isOf(image, upperHalf))
                return panorama;
        return std::make_shared<const Panorama>(image, upperHalf);
    }

    void coverObject(const ObjectDescription &description, RenderObject &object) {
        location_ = description.location;
        try {
            assignSurfaces(description, object);
            smooth(object);
            move(object);
        } catch (const InputError &error) {
            throw InputError(location_, fmt::format("object \"{}\": {}", description.name, error.what()));
        }
    }

    // Gives each material of the mesh its surface: its own, or the one for all materials that are not named. An object
    // file may bring surfaces that none of its polygons has.
    void assignSurfaces(const ObjectDescription &description, RenderObject &object) {
        const std::vector<std::string> &materials = object.mesh->materials;
        const SurfaceUse *others = nullptr;
        for (const SurfaceUse &use : description.surfaces) {
            if (use.material.empty()) {
                others = &use;
            } else if (!use.fromObject && !hasMaterial(*object.mesh, use.material)) {
                locateErrorsAt(use);
                throw InputError(fmt::format("its mesh has no material \"{}\"{}", use.material,
                                             didYouMean(use.material, materials)));
            }
        }
        for (std::size_t i = 0; i < materials.size(); ++i) {
            const auto own = std::find_if(description.surfaces.begin(), description.surfaces.end(),
                                          [&](const SurfaceUse &use) { return use.material == materials[i]; });
            const SurfaceUse *use = own != description.surfaces.end() ? &*own : others;
            if (!use)
                throw InputError(materials[i].empty()
                                     ? "it has no surface"
                                     : fmt::format("there is no surface for its mesh's material \"{}\"", materials[i]));
            locateErrorsAt(*use);
            object.surfaces.push_back(surfaceNumber(use->surface));
            data_.surfaces[object.surfaces.back()].bounds.include(object.bounds[i]);
            location_ = description.location;
        }
    }

    void locateErrorsAt(const SurfaceUse &use) {
        if (!use.location.file.empty()) location_ = use.location;
    }

    std::uint16_t surfaceNumber(const std::string &name) {
        const auto known = std::find(names_.begin(), names_.end(), name);
        if (known != names_.end()) return static_cast<std::uint16_t>(known - names_.begin());
        Surface *surface = surfaceOf_(name);
        if (!surface) {
            std::vector<std::string> all;
            for (const SurfaceDescription &description : scene_.surfaces) all.push_back(description.name);
            throw InputError(fmt::format("there is no surface \"{}\"{}", name, didYouMean(name, all)));
        }
        if (names_.size() > std::numeric_limits<std::uint16_t>::max()) throw InputError("more than 65536 surfaces");
        // A surface without a description has a description's defaults.
        const auto described = std::find_if(scene_.surfaces.begin(), scene_.surfaces.end(),
                                            [&](const SurfaceDescription &each) { return each.name == name; });
        const SurfaceDescription settings = described != scene_.surfaces.end() ? *described : SurfaceDescription{};
        data_.surfaces.push_back({.surface = surface,
                                  .smoothingAngle = settings.smoothingAngle,
                                  .doubleSided = settings.doubleSided,
                                  .bounds = {}});
        names_.push_back(name);
        return static_cast<std::uint16_t>(names_.size() - 1);
    }

    void smooth(RenderObject &object) {
        if (object.mesh->hasOwnNormals()) return;
        std::vector<double> angles;
        for (const std::uint16_t surface : object.surfaces) angles.push_back(data_.surfaces[surface].smoothingAngle);
        if (std::none_of(angles.begin(), angles.end(), [](double angle) { return angle > 0; })) angles.clear();
        if (angles == object.mesh->smoothingAngles) {
            finished_.insert(object.mesh.get());
            return;
        }
        if (object.isInstance) return smoothModel(object, angles);
        // The acceleration structure and the former contents still use a mesh that is kept: change a copy of it.
        if (object.mesh.use_count() > 1) object.mesh = std::make_shared<Mesh>(*object.mesh);
        smoothNormals(*object.mesh, angles);
        ++data_.work.smoothings;
    }

    // Objects with the same model and the same angles share the smoothed model.
    void smoothModel(RenderObject &object, const std::vector<double> &angles) {
        const auto found = smoothed_.find({object.modelNumber, angles});
        std::shared_ptr<Mesh> smoothed = found != smoothed_.end() ? found->second : nullptr;
        if (!smoothed) {
            smoothed = object.model;
            if (isNew_ && !finished_.contains(smoothed.get()))
                smoothed_.erase({object.modelNumber, smoothed->smoothingAngles});
            else
                smoothed = std::make_shared<Mesh>(*smoothed);
            smoothNormals(*smoothed, angles);
            ++data_.work.smoothings;
            smoothed_[{object.modelNumber, angles}] = smoothed;
        }
        object.model = object.mesh = smoothed;
        finished_.insert(smoothed.get());
    }

    // Once the mesh has its last points.
    static void move(RenderObject &object) {
        if (object.path.empty() || object.isInstance)
            object.motion = nullptr;
        else if (!object.motion || object.motion->mesh() != object.mesh)
            object.motion = std::make_shared<const MeshMotion>(object.mesh, object.path);
    }

    // Meshes that differ only in normals and split vertices have the same geometry for rays.
    static bool sameGeometry(const RenderObject &a, const RenderObject &b) {
        const bool areAtSamePlaces =
            a.isInstance == b.isInstance && (!a.isInstance || (a.transform == b.transform && a.path == b.path));
        return a.meshNumber == b.meshNumber && areAtSamePlaces && a.seenByCamera == b.seenByCamera &&
               a.seenByRays == b.seenByRays && a.castsShadows == b.castsShadows;
    }

    void accelerate() {
        if (former_.acceleration && std::equal(data_.objects.begin(), data_.objects.end(), former_.objects.begin(),
                                               former_.objects.end(), sameGeometry)) {
            data_.acceleration = former_.acceleration;
            return;
        }
        std::vector<VisibleMesh> meshes;
        for (const RenderObject &object : data_.objects) {
            VisibleMesh &visible = meshes.emplace_back();
            visible = {.mesh = object.mesh,
                       .seenByCamera = object.seenByCamera,
                       .seenByRays = object.seenByRays,
                       .castsShadows = object.castsShadows,
                       .motion = object.motion,
                       .number = object.meshNumber,
                       .moves = object.moves};
            if (!object.isInstance) continue;
            visible.instance = object.path;
            if (object.path.empty()) visible.instance.push_back(object.transform);
        }
        const auto acceleration = std::make_shared<Acceleration>(meshes, former_.acceleration.get());
        data_.work.accelerations += acceleration->builtOverTriangles();
        data_.work.instanceLevels += acceleration->builtOverInstances();
        data_.acceleration = acceleration;
    }

    const SceneDescription &scene_;
    const SurfaceLookup &surfaceOf_;
    const RenderSceneData &former_;
    RenderSceneData &data_;
    SourceLocation location_;                                                       // that an error is reported at
    std::vector<std::string> names_;                                                // of data_.surfaces
    std::map<std::pair<int, std::vector<double>>, std::shared_ptr<Mesh>> smoothed_; // by number and angles
    const bool isNew_;                                                              // nothing uses the meshes yet
    std::unordered_set<const Mesh *> finished_; // that have the normals of an object already
};

} // namespace

void buildSurfaces(const SceneDescription &scene, const SurfaceLookup &surfaceOf, const RenderSceneData &former,
                   RenderSceneData &data) {
    SurfaceBuilder(scene, surfaceOf, former, data).build();
}

void attachSurfaces(const RenderSceneData &data) {
    for (const RenderSurface &surface : data.surfaces) surface.surface->setBounds(surface.bounds.sides);
}

} // namespace velm::host
