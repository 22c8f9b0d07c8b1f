#include "host/render/geometry/acceleration.h"

#include "host/base/error.h"

#include <string>
#include <sys/types.h>
#include <utility>

namespace velm::host {
namespace {

// Called by Embree from its building threads.
bool countMemory(void *bytes, ssize_t change, bool) {
    *static_cast<std::atomic<long> *>(bytes) += change;
    return true;
}

RTCGeometry makeGeometry(RTCDevice device, const VisibleMesh &visible) {
    const Mesh &mesh = *visible.mesh;
    RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
    const auto setPoints = [&](std::size_t step, const HostPoint *points) {
        rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, static_cast<unsigned>(step), RTC_FORMAT_FLOAT3,
                                   points, 0, sizeof(HostPoint), mesh.points.size());
    };
    if (visible.motion) {
        rtcSetGeometryTimeStepCount(geometry, static_cast<unsigned>(visible.motion->steps()));
        for (std::size_t step = 0; step < visible.motion->steps(); ++step)
            setPoints(step, visible.motion->points(step));
    } else {
        setPoints(0, mesh.points.data());
    }
    rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, mesh.triangles.data(), 0,
                               sizeof(HostPolygon), mesh.triangles.size());
    rtcCommitGeometry(geometry);
    return geometry;
}

} // namespace

Acceleration::Acceleration(const std::vector<VisibleMesh> &meshes) {
    device_ = rtcNewDevice(nullptr);
    if (!device_) throw MachineError("cannot start the ray tracing library Embree");
    try {
        build(meshes);
    } catch (...) {
        release();
        throw;
    }
}

Acceleration::~Acceleration() { release(); }

void Acceleration::release() {
    for (const RTCScene scene : owned_) rtcReleaseScene(scene);
    rtcReleaseDevice(device_);
}

void Acceleration::build(const std::vector<VisibleMesh> &meshes) {
    rtcSetDeviceMemoryMonitorFunction(device_, countMemory, &bytes_);
    std::vector<RTCGeometry> geometries;
    std::vector<bool> camera, rays, shadows;
    meshes_ = meshes;
    for (const VisibleMesh &visible : meshes) {
        geometries.push_back(makeGeometry(device_, visible));
        camera.push_back(visible.seenByCamera);
        rays.push_back(visible.seenByRays);
        shadows.push_back(visible.castsShadows);
    }
    rays_ = buildScene(geometries, rays);
    camera_ = camera == rays ? rays_ : buildScene(geometries, camera);
    shadows_ = shadows == rays ? rays_ : shadows == camera ? camera_ : buildScene(geometries, shadows);
    for (const RTCGeometry geometry : geometries) rtcReleaseGeometry(geometry); // the scenes keep references
    requireNoError();
}

RTCScene Acceleration::buildScene(const std::vector<RTCGeometry> &geometries, const std::vector<bool> &seen) {
    RTCScene scene = rtcNewScene(device_);
    owned_.push_back(scene);
    // Rays must not slip through the edge between two triangles.
    rtcSetSceneFlags(scene, RTC_SCENE_FLAG_ROBUST);
    for (std::size_t i = 0; i < geometries.size(); ++i)
        if (seen[i]) rtcAttachGeometryByID(scene, geometries[i], static_cast<unsigned>(i));
    rtcCommitScene(scene);
    return scene;
}

void Acceleration::requireNoError() const {
    switch (const RTCError error = rtcGetDeviceError(device_)) {
    case RTC_ERROR_NONE: return;
    case RTC_ERROR_OUT_OF_MEMORY:
        throw MachineError("not enough memory for the acceleration structure of the scene's geometry");
    case RTC_ERROR_UNSUPPORTED_CPU:
        throw MachineError("the ray tracing library Embree does not support this processor");
    default: throw MachineError("the ray tracing library Embree failed with error " + std::to_string(error));
    }
}

} // namespace velm::host
