#include "host/render/geometry/acceleration.h"

#include "host/render/geometry/shared_shapes.h"

#include <algorithm>

namespace velm::host {
namespace {

bool isSeen(const VisibleMesh &visible, std::size_t kind) {
    return kind == 0 ? visible.seenByCamera : kind == 1 ? visible.seenByRays : visible.castsShadows;
}

bool isSeenAtAll(const VisibleMesh &visible) {
    return visible.seenByCamera || visible.seenByRays || visible.castsShadows;
}

bool isInstance(const VisibleMesh &visible) { return !visible.instance.empty(); }

bool isStill(const VisibleMesh &visible) { return !isInstance(visible) && !visible.moves; }

EmbreeGeometry newTriangles(const EmbreeDevice &device, const Mesh &mesh, const MeshMotion *motion) {
    EmbreeGeometry geometry = newEmbreeGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
    const auto setPoints = [&](std::size_t step, const HostPoint *points) {
        rtcSetSharedGeometryBuffer(geometry.get(), RTC_BUFFER_TYPE_VERTEX, static_cast<unsigned>(step),
                                   RTC_FORMAT_FLOAT3, points, 0, sizeof(HostPoint), mesh.points.size());
    };
    if (motion) {
        rtcSetGeometryTimeStepCount(geometry.get(), static_cast<unsigned>(motion->steps()));
        for (std::size_t step = 0; step < motion->steps(); ++step) setPoints(step, motion->points(step));
    } else {
        setPoints(0, mesh.points.data());
    }
    rtcSetSharedGeometryBuffer(geometry.get(), RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, mesh.triangles.data(), 0,
                               sizeof(HostPolygon), mesh.triangles.size());
    rtcCommitGeometry(geometry.get());
    return geometry;
}

// The first three columns of the matrix, then the position.
std::array<float, 12> columnsOf(const Transform &transform) {
    std::array<float, 12> columns{};
    for (std::size_t i = 0; i < 9; ++i) columns[3 * (i % 3) + i / 3] = static_cast<float>(transform.toWorld.m[i]);
    const Vec3 &position = transform.position;
    columns[9] = static_cast<float>(position.x);
    columns[10] = static_cast<float>(position.y);
    columns[11] = static_cast<float>(position.z);
    return columns;
}

// An instance of a scene at equal steps of time.
EmbreeGeometry newInstance(const EmbreeDevice &device, RTCScene scene, const std::vector<Transform> &steps) {
    EmbreeGeometry geometry = newEmbreeGeometry(device, RTC_GEOMETRY_TYPE_INSTANCE);
    rtcSetGeometryInstancedScene(geometry.get(), scene);
    rtcSetGeometryTimeStepCount(geometry.get(), static_cast<unsigned>(steps.size()));
    for (std::size_t step = 0; step < steps.size(); ++step)
        rtcSetGeometryTransform(geometry.get(), static_cast<unsigned>(step), RTC_FORMAT_FLOAT3X4_COLUMN_MAJOR,
                                columnsOf(steps[step]).data());
    rtcCommitGeometry(geometry.get());
    return geometry;
}

// Whether both are the same for rays.
bool areAlike(const VisibleMesh &a, const VisibleMesh &b) {
    return a.number == b.number && a.seenByCamera == b.seenByCamera && a.seenByRays == b.seenByRays &&
           a.castsShadows == b.castsShadows;
}

} // namespace

Acceleration::Acceleration(const std::vector<VisibleMesh> &meshes, const Acceleration *former)
    : meshes_(meshes), device_(former ? former->device_ : std::make_shared<EmbreeDevice>()) {
    buildModels(former);
    std::size_t stillTriangles = 0;
    for (const VisibleMesh &visible : meshes_)
        if (isStill(visible)) stillTriangles += visible.mesh->triangles.size();
    const bool isOneLevel = std::ranges::all_of(meshes_, isStill);
    if (!isOneLevel && stillTriangles >= kWorthwhileTriangles) buildStill(former);
    buildTop();
    device_->requireNoError();
}

void Acceleration::buildModels(const Acceleration *former) {
    for (const VisibleMesh &visible : meshes_) {
        if (!isInstance(visible) || !isSeenAtAll(visible) || models_.contains(visible.number)) continue;
        if (former)
            if (const auto known = former->models_.find(visible.number); known != former->models_.end()) {
                models_.insert(*known);
                continue;
            }
        const EmbreeScene scene = newEmbreeScene(device_);
        rtcAttachGeometryByID(scene.get(), newTriangles(*device_, *visible.mesh, nullptr).get(), 0);
        rtcCommitScene(scene.get());
        models_[visible.number] = {.mesh = visible.mesh, .scene = scene};
        ++builtOverTriangles_;
    }
}

void Acceleration::buildStill(const Acceleration *former) {
    auto still = std::make_shared<Still>();
    for (std::size_t i = 0; i < meshes_.size(); ++i) {
        if (!isStill(meshes_[i])) continue;
        still->meshes.push_back(meshes_[i]);
        still->indices.push_back(static_cast<unsigned>(i));
    }
    if (former && former->still_ && former->still_->indices == still->indices &&
        std::ranges::equal(former->still_->meshes, still->meshes, areAlike)) {
        still_ = former->still_;
        return;
    }
    const KindParts parts = trianglesOf(true);
    still->scenes = buildScenes(parts);
    for (std::size_t kind = 0; kind < kKinds; ++kind) still->isEmpty[kind] = parts[kind].empty();
    still_ = std::move(still);
    ++builtOverTriangles_;
}

// The triangles of the meshes in world space: of all that do not move from frame to frame, or of all others.
Acceleration::KindParts Acceleration::trianglesOf(bool areStill) const {
    KindParts parts;
    for (std::size_t i = 0; i < meshes_.size(); ++i) {
        const VisibleMesh &visible = meshes_[i];
        if (isInstance(visible) || isStill(visible) != areStill || !isSeenAtAll(visible)) continue;
        const EmbreeGeometry triangles = newTriangles(*device_, *visible.mesh, visible.motion.get());
        for (std::size_t kind = 0; kind < kKinds; ++kind)
            if (isSeen(visible, kind)) parts[kind].emplace_back(static_cast<unsigned>(i), triangles);
    }
    return parts;
}

// The instances of models, and that of the meshes that do not move.
Acceleration::KindParts Acceleration::instances() const {
    KindParts parts;
    for (std::size_t i = 0; i < meshes_.size(); ++i) {
        const VisibleMesh &visible = meshes_[i];
        if (!isInstance(visible) || !isSeenAtAll(visible)) continue;
        const EmbreeGeometry instance = newInstance(*device_, models_.at(visible.number).scene.get(), visible.instance);
        for (std::size_t kind = 0; kind < kKinds; ++kind)
            if (isSeen(visible, kind)) parts[kind].emplace_back(static_cast<unsigned>(i), instance);
    }
    if (!still_) return parts;
    const auto beyond = static_cast<unsigned>(meshes_.size());
    std::map<EmbreeScene, EmbreeGeometry> stillInstances;
    for (std::size_t kind = 0; kind < kKinds; ++kind) {
        if (still_->isEmpty[kind]) continue;
        EmbreeGeometry &instance = stillInstances[still_->scenes[kind]];
        if (!instance) instance = newInstance(*device_, still_->scenes[kind].get(), {Transform()});
        parts[kind].emplace_back(beyond, instance);
    }
    return parts;
}

void Acceleration::buildTop() {
    KindParts parts = instances();
    const auto areEmpty = [](const KindParts &kinds) {
        return std::ranges::all_of(kinds, [](const Parts &some) { return some.empty(); });
    };
    builtOverInstances_ += areEmpty(parts) ? 0 : 1;
    bool hasTriangles = false;
    for (const bool areStill : {true, false}) {
        if (areStill && still_) continue;
        const KindParts triangles = trianglesOf(areStill);
        hasTriangles = hasTriangles || !areEmpty(triangles);
        for (std::size_t kind = 0; kind < kKinds; ++kind)
            parts[kind].insert(parts[kind].end(), triangles[kind].begin(), triangles[kind].end());
    }
    builtOverTriangles_ += hasTriangles ? 1 : 0;
    seen_ = buildScenes(parts);
}

// One scene for all kinds of rays that see the same parts.
Acceleration::Scenes Acceleration::buildScenes(const KindParts &parts) const {
    Scenes scenes;
    for (std::size_t kind = 0; kind < kKinds; ++kind) {
        const auto same = static_cast<std::size_t>(std::ranges::find(parts, parts[kind]) - parts.begin());
        if (same < kind) {
            scenes[kind] = scenes[same];
            continue;
        }
        scenes[kind] = newEmbreeScene(device_);
        for (const auto &[id, geometry] : parts[kind]) rtcAttachGeometryByID(scenes[kind].get(), geometry.get(), id);
        rtcCommitScene(scenes[kind].get());
    }
    return scenes;
}

} // namespace velm::host
