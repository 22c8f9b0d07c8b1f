// The minimum for tracing rays: points, triangles, and Embree's tree over them.
#pragma once

#include "bench/compare.h"

#include <embree3/rtcore.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace velm::host::bench {

class PlainMesh {
  public:
    std::vector<float> points;
    std::vector<std::uint32_t> corners;

    PlainMesh() = default;
    PlainMesh(const PlainMesh &) = delete;
    PlainMesh &operator=(const PlainMesh &) = delete;
    ~PlainMesh() {
        if (scene_) rtcReleaseScene(scene_);
        if (device_) rtcReleaseDevice(device_);
    }

    void addPoint(double x, double y, double z) {
        for (const double each : {x, y, z}) points.push_back(static_cast<float>(each));
    }
    void addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c) { corners.insert(corners.end(), {a, b, c}); }

    // To be called once.
    void build() {
        device_ = rtcNewDevice(nullptr);
        const RTCGeometry geometry = rtcNewGeometry(device_, RTC_GEOMETRY_TYPE_TRIANGLE);
        constexpr std::size_t kTriple = 3 * sizeof(float);
        points.resize(points.size() + 1); // Embree may read four floats at the last point
        rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, points.data(), 0, kTriple,
                                   points.size() / 3);
        rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, corners.data(), 0, kTriple,
                                   corners.size() / 3);
        rtcCommitGeometry(geometry);
        scene_ = rtcNewScene(device_);
        rtcSetSceneFlags(scene_, RTC_SCENE_FLAG_ROBUST);
        rtcAttachGeometry(scene_, geometry);
        rtcReleaseGeometry(geometry);
        rtcCommitScene(scene_);
    }

    void castOneRay() const {
        RTCIntersectContext context;
        rtcInitIntersectContext(&context);
        RTCRayHit ray{};
        ray.ray.org_z = -5;
        ray.ray.dir_z = 1;
        ray.ray.tfar = std::numeric_limits<float>::infinity();
        ray.ray.mask = ~0u;
        ray.hit.geomID = RTC_INVALID_GEOMETRY_ID;
        rtcIntersect1(scene_, &context, &ray);
        keep(ray.hit.geomID);
    }

  private:
    RTCDevice device_ = nullptr;
    RTCScene scene_ = nullptr;
};

} // namespace velm::host::bench
