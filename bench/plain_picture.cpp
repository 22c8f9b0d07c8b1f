#include "bench/plain_picture.h"

#include "host/render/geometry/sampling.h"
#include "host/render/scene/camera.h"

#include <pmmintrin.h>
#include <xmmintrin.h>

#include <atomic>
#include <chrono>
#include <limits>
#include <mutex>
#include <thread>
#include <vector>

namespace velm::host::bench {
namespace {

constexpr int kTileSize = 16;

Vec3 pixel(PlainTracer &tracer, const Camera &camera, const RenderJob &job, const PlainShader &shader, int x, int y) {
    const uint32_t seed = combine(scramble(static_cast<uint32_t>(x)), static_cast<uint32_t>(y));
    Vec3 sum;
    for (int i = 0; i < job.samples; ++i) {
        const UnitSquare middle = {0.5, 0.5};
        const UnitSquare point = job.samples == 1 ? middle : stratifiedPoint(static_cast<uint32_t>(i), seed);
        const CameraRay view = camera.ray(x + point.x, y + point.y);
        RTCRayHit ray;
        if (!tracer.trace(view.origin, view.direction, ray)) continue;
        const Vec3 position = view.origin + static_cast<double>(ray.ray.tfar) * view.direction;
        sum += shader(tracer, {.ray = ray, .position = position, .view = view.direction});
    }
    return 1.0 / job.samples * sum;
}

} // namespace

PlainTracer::PlainTracer(const RenderSceneData &sceneData, uint32_t seed) : scene(sceneData), twister(seed) {
    rtcInitIntersectContext(&context);
}

bool PlainTracer::trace(const Vec3 &origin, const Vec3 &direction, RTCRayHit &ray) {
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
    rtcIntersect1(scene.acceleration->rayScene(), &context, &ray);
    nameMeshOf(ray.hit, static_cast<uint32_t>(scene.objects.size()));
    return ray.hit.geomID != RTC_INVALID_GEOMETRY_ID;
}

Vec3 PlainTracer::normalAt(const RTCRayHit &ray) const {
    const RenderObject &object = scene.objects[ray.hit.geomID];
    const Mesh &mesh = *object.mesh;
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
    if (object.isInstance) normal = normalised(object.transform.normalToWorld(normal));
    return dot(normal, {ray.ray.dir_x, ray.ray.dir_y, ray.ray.dir_z}) > 0 ? -normal : normal;
}

PlainPicture renderPlain(const RenderScene &scene, const RenderJob &job, int threads, const PlainShader &shader) {
    const RenderCamera &first = scene.data().cameras.front();
    const Camera camera(first.description, first.transform, job.width, job.height);
    const int columns = (job.width + kTileSize - 1) / kTileSize, rows = (job.height + kTileSize - 1) / kTileSize;
    PlainPicture result;
    std::vector<Vec3> pixels(static_cast<size_t>(job.width) * static_cast<size_t>(job.height));
    std::atomic<int> next = 0;
    std::mutex mutex;
    const auto work = [&](int thread) {
        _MM_SET_FLUSH_ZERO_MODE(_MM_FLUSH_ZERO_ON);
        _MM_SET_DENORMALS_ZERO_MODE(_MM_DENORMALS_ZERO_ON);
        PlainTracer tracer(scene.data(), static_cast<uint32_t>(3 + thread));
        for (int tile = next++; tile < columns * rows; tile = next++) {
            const int left = tile % columns * kTileSize, top = tile / columns * kTileSize;
            for (int y = top; y < std::min(top + kTileSize, job.height); ++y)
                for (int x = left; x < std::min(left + kTileSize, job.width); ++x)
                    pixels[static_cast<size_t>(y) * static_cast<size_t>(job.width) + static_cast<size_t>(x)] =
                        pixel(tracer, camera, job, shader, x, y);
        }
        const std::lock_guard lock(mutex);
        result.rays += tracer.rays;
    };
    const auto begin = std::chrono::steady_clock::now();
    std::vector<std::thread> pool;
    for (int thread = 0; thread < threads; ++thread) pool.emplace_back(work, thread);
    for (std::thread &thread : pool) thread.join();
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    for (const Vec3 &each : pixels) result.mean += 1.0 / static_cast<double>(pixels.size()) * each;
    return result;
}

} // namespace velm::host::bench
