// A normal that is tilted by bumps. "Height" is the height of the surface above the mesh, in metres. It is evaluated at
// the sample and at two positions beside it, at right angles along the surface, half of the sample's footprint away.
// After J. F. Blinn, "Simulation of Wrinkled Surfaces", SIGGRAPH 1978: a surface with the normal n that is raised by
// the height h has the normal n - grad h, where grad is the gradient along the surface.
#include "host/graph/builtin/definitions.h"
#include "host/graph/builtin/vectors.h"

#include <cmath>

namespace velm::host::builtin {

namespace {

enum { kHeight, kStrength };

constexpr double kUsualStep = 0.0005; // metres; used if the sample's footprint is not known

// A unit vector at right angles to a unit vector.
Vector perpendicular(const Vector &normal) {
    return normalised(std::fabs(normal[0]) < 0.5 ? cross({1, 0, 0}, normal) : cross({0, 1, 0}, normal));
}

// Moves the barycentric coordinates of a sample on a triangle. The plane of the triangle is extended beyond its edges.
void moveWeights(ShadingSample &sample, const Vector &offset) {
    if (sample.vertices[3]) return;
    const auto edge = [&](int to) {
        const float *const end = sample.vertexPositions[to], *const start = sample.vertexPositions[0];
        return Vector{double{end[0]} - double{start[0]}, double{end[1]} - double{start[1]},
                      double{end[2]} - double{start[2]}};
    };
    const Vector first = edge(1), second = edge(2);
    const double a = dot(first, first), b = dot(first, second), c = dot(second, second);
    const double along = dot(first, offset), across = dot(second, offset), area = a * c - b * b;
    if (!(area > 0)) return;
    const double one = (c * along - b * across) / area, two = (a * across - b * along) / area;
    sample.vertexWeights[0] -= static_cast<float>(one + two);
    sample.vertexWeights[1] += static_cast<float>(one);
    sample.vertexWeights[2] += static_cast<float>(two);
}

// The height at a position beside the sample.
double heightAt(const Evaluation &evaluation, const Vector &offset) {
    ShadingSample moved = evaluation.sample();
    const double *matrix = moved.worldToObject;
    for (std::size_t i = 0; i < 3; ++i) {
        moved.position[i] += offset[i];
        for (std::size_t j = 0; j < 3; ++j) moved.objectPosition[i] += matrix[3 * i + j] * offset[j];
    }
    moveWeights(moved, offset);
    return evaluation.scalarAt(kHeight, moved);
}

void give(const Evaluation &evaluation, int) {
    const ShadingSample &sample = evaluation.sample();
    Vector normal{sample.shadingNormal[0], sample.shadingNormal[1], sample.shadingNormal[2]};
    const double strength = evaluation.isConnected(kHeight) ? evaluation.scalar(kStrength) : 0;
    if (strength == 0 || !(dot(normal, normal) > 0)) return evaluation.set(normal);
    const double step = sample.spotSize > 0 ? sample.spotSize / 2 : kUsualStep;
    // A bump on the front is a dent on the back.
    const double slope = ((sample.rayFlags & kRayBackSide) != 0 ? -strength : strength) / step;
    const Vector along = perpendicular(normal), across = cross(normal, along);
    const double height = evaluation.scalar(kHeight);
    Vector bumped = normal;
    for (const Vector &direction : {along, across}) {
        const Vector offset{step * direction[0], step * direction[1], step * direction[2]};
        const double rise = slope * (heightAt(evaluation, offset) - height);
        for (std::size_t i = 0; i < 3; ++i) bumped[i] -= rise * direction[i];
    }
    const double length = std::hypot(bumped[0], bumped[1], bumped[2]);
    evaluation.set(std::isfinite(length) ? normalised(bumped) : normal);
}

} // namespace

constinit const Definition bump{
    .name = "Bump",
    .colour = kTextureColour,
    .parameters = {{{.label = "Height", .kind = Kind::distance},
                    {.label = "Strength", .kind = Kind::percent, .initial = {1}}}},
    .outputs = {{{"Normal", kConnectVector}}},
    .evaluate = give,
};

} // namespace velm::host::builtin
