// Samples and the scene that their rays meet: a floor, and a ball above it. Both are functions of the ray alone.
#include "host/check/stage.h"

#include <algorithm>
#include <cmath>

namespace velm::host {

namespace {

struct Vector {
    double x, y, z;
};

double dot(const Vector &a, const Vector &b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Vector unit(const Vector &a) {
    const double length = std::sqrt(dot(a, a));
    return length > 0 ? Vector{a.x / length, a.y / length, a.z / length} : Vector{0, 1, 0};
}

constexpr Vector kBallCentre{0, 1.5, 0};
constexpr double kBallRadius = 1, kLeast = 1e-6;

// The distance to what a ray hits, below 0 for nothing.
double hitDistance(const double from[3], const double along[3]) {
    const Vector origin{from[0], from[1], from[2]}, direction = unit({along[0], along[1], along[2]});
    double nearest = HOST_RAY_MISS;
    if (direction.y < 0 && origin.y > kLeast) nearest = -origin.y / direction.y;
    const Vector to{origin.x - kBallCentre.x, origin.y - kBallCentre.y, origin.z - kBallCentre.z};
    const double half = dot(to, direction), rest = half * half - dot(to, to) + kBallRadius * kBallRadius;
    const double distance = rest > 0 ? -half - std::sqrt(rest) : HOST_RAY_MISS;
    if (distance > kLeast && (nearest < 0 || distance < nearest)) nearest = distance;
    return std::isfinite(nearest) ? nearest : HOST_RAY_MISS;
}

void hitColour(const double along[3], double colour[3]) {
    const Vector direction = unit({along[0], along[1], along[2]});
    colour[0] = 0.5 + 0.5 * direction.x;
    colour[1] = 0.5 + 0.5 * direction.y;
    colour[2] = 0.5 + 0.5 * direction.z;
}

double castRay(const double from[3], const double along[3]) { return hitDistance(from, along); }

double traceRay(const double from[3], const double along[3], double colour[3]) {
    const double distance = hitDistance(from, along);
    if (distance >= 0) hitColour(along, colour);
    return distance;
}

double traceByMode(const double from[3], const double along[3], double colour[3], double, int) {
    return traceRay(from, along, colour);
}

// Fills the record as far as this host knows it.
double shadeRay(const double from[3], const double along[3], HostRayHit *hit) {
    const double distance = hitDistance(from, along);
    if (distance < 0) return distance;
    const Vector direction = unit({along[0], along[1], along[2]});
    *hit = {};
    hit->position[0] = from[0] + distance * direction.x;
    hit->position[1] = from[1] + distance * direction.y;
    hit->position[2] = from[2] + distance * direction.z;
    hit->geometricNormal[1] = hit->shadingNormal[1] = 1;
    hit->rayLength = distance;
    hitColour(along, hit->colour);
    hit->rayCast = castRay;
    hit->rayShade = shadeRay;
    hit->rayTrace = traceRay;
    return distance;
}

int illuminate(HostItem *, const double[3], double direction[3], double colour[3]) {
    direction[0] = direction[2] = 0;
    direction[1] = -1;
    colour[0] = colour[1] = colour[2] = 1;
    return 1;
}

Vector randomUnit(Dice &dice) { return unit({dice.real(-1, 1), dice.real(-1, 1), dice.real(-1, 1)}); }

void put(double (&to)[3], const Vector &from) {
    to[0] = from.x;
    to[1] = from.y;
    to[2] = from.z;
}

} // namespace

ShadingSample makeSample(Dice &dice, int threadIndex) {
    ShadingSample sample{};
    sample.pixelX = dice.between(0, 639);
    sample.pixelY = dice.between(0, 479);
    const Vector position{dice.real(-3, 3), dice.real(0, 3), dice.real(-3, 3)}, normal = randomUnit(dice);
    put(sample.position, position);
    put(sample.objectPosition, position);
    put(sample.geometricNormal, normal);
    put(sample.shadingNormal, normal);
    put(sample.unbumpedNormal, normal);
    const Vector away = randomUnit(dice);
    sample.rayLength = dice.real(0.5, 8);
    put(sample.raySource, {position.x + away.x * sample.rayLength, position.y + away.y * sample.rayLength,
                           position.z + away.z * sample.rayLength});
    sample.spotSize = dice.real(0.0001, 0.01);
    sample.cosine = std::abs(dot(normal, away));
    for (const int diagonal : {0, 4, 8}) sample.objectToWorld[diagonal] = sample.worldToObject[diagonal] = 1;
    sample.illuminate = illuminate;
    sample.rayTrace = traceRay;
    sample.rayCast = castRay;
    sample.rayShade = shadeRay;
    sample.rayTraceMode = traceByMode;
    sample.rayDepth = dice.between(0, 2);
    sample.polygonNumber = dice.between(0, 1000);
    for (float &weight : sample.vertexWeights) weight = 0.25F;
    sample.refractionIndex = 1;
    sample.threadIndex = threadIndex;
    return sample;
}

void withoutRays(ShadingSample &sample) {
    sample.illuminate = nullptr;
    sample.illuminateSampled = nullptr;
    sample.rayTrace = nullptr;
    sample.rayCast = nullptr;
    sample.rayShade = nullptr;
    sample.rayTraceMode = nullptr;
}

} // namespace velm::host
