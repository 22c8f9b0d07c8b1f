// Glossy reflections as a plain loop, with an environment image that OpenImageIO looks up.
#include "bench/plain_picture.h"
#include "host/image/image.h"

#include <OpenImageIO/imagebuf.h>

#include <cmath>
#include <memory>
#include <stdexcept>

namespace velm::host::bench {
namespace {

constexpr int kRays = 8;

Vec3 lookUp(const OIIO::ImageBuf &image, const Vec3 &direction) {
    const double towards[3] = {direction.x, direction.y, direction.z};
    double u, v;
    directionToImage(0, towards, &u, &v);
    float colour[3];
    image.interppixel_NDC(static_cast<float>(u), static_cast<float>(v), colour, OIIO::ImageBuf::WrapPeriodic);
    return {colour[0], colour[1], colour[2]};
}

} // namespace

PlainShader plainReflections(double blur, const std::string &file) {
    auto image = std::make_shared<OIIO::ImageBuf>(file);
    if (!image->read(0, 0, true, OIIO::TypeDesc::FLOAT) || image->nchannels() != 3)
        throw std::runtime_error("cannot read the environment image " + file);
    return [blur, image](PlainTracer &tracer, const PlainHit &hit) {
        const Vec3 normal = tracer.normalAt(hit.ray);
        const Vec3 origin = hit.position + 16.0 / 16777216.0 * (largest(hit.position) + 1) * normal;
        Vec3 sum;
        for (int i = 0; i < kRays; ++i) {
            const double x = tracer.twister.noise(), y = tracer.twister.noise(), z = tracer.twister.noise();
            const Vec3 jittered = normalised(normal - blur * Vec3{x, y, z});
            const Vec3 direction = hit.view - 2 * dot(hit.view, jittered) * jittered;
            RTCRayHit ray;
            if (!tracer.trace(origin, direction, ray)) sum += lookUp(*image, direction);
        }
        return 1.0 / kRays * sum;
    };
}

} // namespace velm::host::bench
