#include "bench/plain_occlusion.h"

#include "host/render/camera.h"
#include "host/render/sampling.h"
#include "host/render/world_data.h"

#include <pmmintrin.h>
#include <xmmintrin.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <limits>
#include <numbers>
#include <thread>

namespace velm::bench {
namespace {

constexpr int kTileSize = 16;

struct Worker {
    const WorldData &world;
    const Camera &camera;
    const RenderJob &job;
    const OcclusionSettings &settings;
    ReferenceTwister twister;
    RTCIntersectContext context{};
    uint64_t rays = 0;

    bool trace(const Vec3 &origin, const Vec3 &direction, RTCRayHit &ray) {
        ray.ray.org_x = static_cast<float>(origin.x);
        ray.ray.org_y = static_cast<float>(origin.y);
        ray.ray.org_z = static_cast<float>(origin.z);
        ray.ray.dir_x = static_cast<float>(direction.x);
        ray.ray.dir_y = static_cast<float>(direction.y);
        ray.ray.dir_z = static_cast<float>(direction.z);
        ray.ray.tnear = 0;
        ray.ray.tfar = std::numeric_limits<float>::infinity();
        ray.ray.time = 0;
        ray.ray.mask = ~0u;
        ray.ray.id = 0;
        ray.ray.flags = 0;
        ray.hit.geomID = RTC_INVALID_GEOMETRY_ID;
        ray.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
        ++rays;
        rtcIntersect1(world.acceleration->rayScene(), &context, &ray);
        return ray.hit.geomID != RTC_INVALID_GEOMETRY_ID;
    }

    // The smooth normal at a hit, on the side of the viewer.
    Vec3 normalAt(const RTCRayHit &ray) const {
        const Mesh &mesh = world.objects[ray.hit.geomID].mesh;
        Vec3 normal = normalised({ray.hit.Ng_x, ray.hit.Ng_y, ray.hit.Ng_z});
        if (!mesh.normals.empty()) {
            const double u = static_cast<double>(ray.hit.u), v = static_cast<double>(ray.hit.v);
            const double weights[3] = {1 - u - v, u, v};
            Vec3 sum;
            for (int k = 0; k < 3; ++k) {
                const auto &n = mesh.normals[mesh.triangles[ray.hit.primID].corners[k]];
                sum += weights[k] * Vec3{n[0], n[1], n[2]};
            }
            normal = normalised(sum, normal);
        }
        return dot(normal, {ray.ray.dir_x, ray.ray.dir_y, ray.ray.dir_z}) > 0 ? -normal : normal;
    }

    double opennessAt(const RTCRayHit &hit, const Vec3 &place) {
        const Vec3 normal = normalAt(hit);
        const double level = std::sqrt(normal.x * normal.x + normal.z * normal.z);
        const double heading = std::atan2(normal.z, normal.x), pitch = std::atan2(normal.y, level);
        const double cosHeading = std::cos(heading), sinHeading = std::sin(heading);
        const double cosPitch = std::cos(pitch), sinPitch = std::sin(pitch);
        const Vec3 origin = place + 16.0 / 16777216.0 * (largest(place) + 1) * normal;
        double sum = 0;
        for (int i = 0; i < settings.samples; ++i) {
            const double phi = twister.closed() * 2 * std::numbers::pi;
            const double theta = twister.closed() * settings.coneAngle;
            const double x = std::cos(theta), y = std::sin(theta) * std::sin(phi), z = std::sin(theta) * std::cos(phi);
            const double flat = x * cosPitch - y * sinPitch;
            const Vec3 direction = {flat * cosHeading - z * sinHeading, x * sinPitch + y * cosPitch,
                                    flat * sinHeading + z * cosHeading};
            RTCRayHit ray;
            if (!trace(origin, direction, ray)) continue;
            const double distance = static_cast<double>(ray.ray.tfar);
            if (distance <= settings.max) sum += 1 - distance / settings.max;
        }
        return 1 - sum / settings.samples;
    }

    double pixel(int x, int y) {
        const uint32_t seed = combine(scramble(static_cast<uint32_t>(x)), static_cast<uint32_t>(y));
        double sum = 0;
        for (int i = 0; i < job.samples; ++i) {
            const UnitSquare point = stratifiedPoint(static_cast<uint32_t>(i), seed);
            const CameraRay view = camera.ray(x + point.x, y + point.y);
            RTCRayHit ray;
            if (!trace(view.origin, view.direction, ray)) continue;
            sum += opennessAt(ray, view.origin + static_cast<double>(ray.ray.tfar) * view.direction);
        }
        return sum / job.samples;
    }
};

} // namespace

PlainResult renderPlainOcclusion(const World &world, const RenderJob &job, const OcclusionSettings &settings,
                                 int threads) {
    const Camera camera(world.data().cameras.front().description, job.width, job.height);
    const int columns = (job.width + kTileSize - 1) / kTileSize, rows = (job.height + kTileSize - 1) / kTileSize;
    PlainResult result;
    result.openness.resize(static_cast<size_t>(job.width) * static_cast<size_t>(job.height));
    std::atomic<int> next = 0;
    std::atomic<uint64_t> rays = 0;
    const auto work = [&](int thread) {
        _MM_SET_FLUSH_ZERO_MODE(_MM_FLUSH_ZERO_ON);
        _MM_SET_DENORMALS_ZERO_MODE(_MM_DENORMALS_ZERO_ON);
        Worker worker{.world = world.data(),
                      .camera = camera,
                      .job = job,
                      .settings = settings,
                      .twister = ReferenceTwister(static_cast<uint32_t>(3 + thread))};
        rtcInitIntersectContext(&worker.context);
        for (int tile = next++; tile < columns * rows; tile = next++) {
            const int left = tile % columns * kTileSize, top = tile / columns * kTileSize;
            for (int y = top; y < std::min(top + kTileSize, job.height); ++y)
                for (int x = left; x < std::min(left + kTileSize, job.width); ++x)
                    result.openness[static_cast<size_t>(y) * static_cast<size_t>(job.width) + static_cast<size_t>(x)] =
                        static_cast<float>(worker.pixel(x, y));
        }
        rays += worker.rays;
    };
    const auto begin = std::chrono::steady_clock::now();
    std::vector<std::thread> pool;
    for (int thread = 0; thread < threads; ++thread) pool.emplace_back(work, thread);
    for (std::thread &thread : pool) thread.join();
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    result.rays = rays;
    return result;
}

} // namespace velm::bench
