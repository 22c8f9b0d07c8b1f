// Ambient occlusion as a plain loop.
#include "bench/plain_picture.h"

#include <cmath>
#include <numbers>

namespace velm::host::bench {
namespace {

constexpr int kSamples = 27, kRings = 3, kPerRing = 9;
constexpr double kCone = std::numbers::pi / 2, kJitter = std::numbers::pi / 9, kMax = 5;

// The rotation that takes +X to a normal.
struct Turn {
    double cosHeading, sinHeading, cosPitch, sinPitch;

    explicit Turn(const Vec3 &normal) {
        const double level = std::sqrt(normal.x * normal.x + normal.z * normal.z);
        const double heading = std::atan2(normal.z, normal.x), pitch = std::atan2(normal.y, level);
        cosHeading = std::cos(heading), sinHeading = std::sin(heading);
        cosPitch = std::cos(pitch), sinPitch = std::sin(pitch);
    }
    Vec3 direction(double theta, double phi) const {
        const double x = std::cos(theta), y = std::sin(theta) * std::sin(phi), z = std::sin(theta) * std::cos(phi);
        const double flat = x * cosPitch - y * sinPitch;
        return {flat * cosHeading - z * sinHeading, x * sinPitch + y * cosPitch, flat * sinHeading + z * cosHeading};
    }
};

template <bool polar, bool colours>
Vec3 shade(PlainTracer &tracer, const PlainHit &hit) {
    const Vec3 normal = tracer.normalAt(hit.ray);
    const Turn turn(normal);
    const Vec3 origin = hit.position + 16.0 / 16777216.0 * (largest(hit.position) + 1) * normal;
    double closed = 0;
    Vec3 seen;
    const auto send = [&](const Vec3 &direction) {
        RTCRayHit ray;
        double weight = 0;
        if (tracer.trace(origin, direction, ray)) {
            const double distance = static_cast<double>(ray.ray.tfar);
            if (distance <= kMax) weight = 1 - distance / kMax;
        }
        closed += weight;
        if constexpr (colours) {
            const double towards[3] = {direction.x, direction.y, direction.z};
            double colour[3];
            tracer.scene.backdrop.evaluate(towards, colour);
            seen += (1 - weight) * Vec3(colour);
        }
    };
    int count = kSamples;
    if constexpr (polar) {
        send(normal);
        for (int ring = 1; ring < kRings; ++ring)
            for (int i = 0; i < kPerRing; ++i) {
                const double phi =
                    2 * std::numbers::pi / kPerRing * i - kJitter + 2 * kJitter * tracer.twister.closed();
                send(turn.direction(kCone / (kRings - 1) * ring - kJitter * tracer.twister.closed(), phi));
            }
        count = 1 + (kRings - 1) * kPerRing;
    } else {
        for (int i = 0; i < kSamples; ++i) {
            const double phi = tracer.twister.closed() * 2 * std::numbers::pi;
            send(turn.direction(tracer.twister.closed() * kCone, phi));
        }
    }
    if constexpr (colours) return 1.0 / count * seen;
    const double open = 1 - closed / count;
    return {open, open, open};
}

} // namespace

PlainShader plainOcclusion(const OcclusionSettings &settings) {
    if (settings.polar) return settings.colours ? shade<true, true> : shade<true, false>;
    return settings.colours ? shade<false, true> : shade<false, false>;
}

} // namespace velm::host::bench
