#include "tests/nodes/ray_script.h"

#include <algorithm>

namespace velm::plugin {
namespace {

RayScript *current = nullptr;

SentRay &record(bool traced, const double *origin, const double *direction) {
    SentRay &ray = current->rays.emplace_back();
    ray.traced = traced;
    std::copy(origin, origin + 3, ray.origin);
    std::copy(direction, direction + 3, ray.direction);
    return ray;
}

double cast(const double *origin, const double *direction) {
    record(false, origin, direction);
    return current->distance(origin, direction);
}

double trace(const double *origin, const double *direction, double *colour, double eta, int mode) {
    SentRay &ray = record(true, origin, direction);
    std::copy(colour, colour + 3, ray.colour);
    ray.eta = eta;
    ray.mode = mode;
    if (current->colour) current->colour(direction, colour);
    return current->distance(origin, direction);
}

} // namespace

RayScript::RayScript() : distance([](const double *, const double *) { return HOST_RAY_MISS; }) { current = this; }
RayScript::~RayScript() { current = nullptr; }

void RayScript::attach(ShadingSample &sample) const {
    sample.rayCast = cast;
    sample.rayTraceMode = trace;
}

} // namespace velm::plugin
