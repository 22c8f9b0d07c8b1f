// How a surface is seen: the angle between its normal and the viewing ray, and the fraction of the light that a smooth
// surface reflects at that angle. "Normal" is the normal that counts, such as the result of Bump; where it is 0, the
// surface's own shading normal counts. A ray that comes from behind the surface sees it from the inside.
#include "host/base/angles.h"
#include "host/graph/builtin/definitions.h"
#include "host/graph/builtin/vectors.h"

#include <algorithm>
#include <cmath>

namespace velm::host::builtin {

namespace {

// The magnitude of the cosine of the angle between the normal and the ray: 1 head-on, 0 at a grazing angle.
double incidenceCosine(const Evaluation &evaluation, int normalParameter) {
    const ShadingSample &sample = evaluation.sample();
    Vector normal = normalised(evaluation.triple(normalParameter)), ray{};
    for (std::size_t i = 0; i < 3; ++i) ray[i] = sample.raySource[i] - sample.position[i];
    if (normal == Vector{}) normal = {sample.shadingNormal[0], sample.shadingNormal[1], sample.shadingNormal[2]};
    return std::min(std::fabs(dot(normal, normalised(ray))), 1.0);
}

// ---- Incidence ----

enum { kNormal, kExponent };
enum { kCosineOut, kAngleOut, kEdgeOut };

void giveIncidence(const Evaluation &evaluation, int output) {
    const double cosine = incidenceCosine(evaluation, kNormal);
    switch (output) {
    case kCosineOut: return evaluation.set(cosine);
    case kAngleOut: return evaluation.set(std::asin(cosine) * kDegreesPerRadian);
    case kEdgeOut: return evaluation.set(std::pow(1 - cosine, std::max(0.0, evaluation.scalar(kExponent))));
    default: return;
    }
}

// ---- Fresnel ----

enum { kMethod, kIndex, kFresnelNormal };
enum { kReflectionOut, kTransmissionOut };
enum { kDielectric, kSchlick };

constexpr const char *kMethodTexts[] = {"Dielectric", "Schlick", nullptr};

double squared(double x) { return x * x; }

// Fresnel's equations for unpolarised light: the mean of the reflectances of both polarisations. `index` is the index
// behind the surface divided by that before it.
double dielectricReflectance(double cosine, double behind, double index) {
    const double parallel = (index * cosine - behind) / (index * cosine + behind);
    const double perpendicular = (cosine - index * behind) / (cosine + index * behind);
    return (squared(parallel) + squared(perpendicular)) / 2;
}

// C. Schlick, "An Inexpensive BRDF Model for Physically-based Rendering", Eurographics 1994. The cosine is that on the
// side with the lower index.
double schlickReflectance(double cosine, double behind, double index) {
    const double headOn = squared((index - 1) / (index + 1)), rest = 1 - (index < 1 ? behind : cosine);
    return headOn + (1 - headOn) * squared(squared(rest)) * rest;
}

// From 0 to 1; 1 for total internal reflection. An index of 0 or less belongs to no medium and counts as 1.
double reflectance(const Evaluation &evaluation) {
    const double given = evaluation.scalar(kIndex), positive = given > 0 && std::isfinite(given) ? given : 1;
    const double index = (evaluation.sample().rayFlags & kRayBackSide) != 0 ? 1 / positive : positive;
    if (index == 1) return 0;
    const double cosine = incidenceCosine(evaluation, kFresnelNormal);
    const double behindSquared = 1 - (1 - cosine * cosine) / (index * index); // by Snell's law
    if (cosine == 0 || behindSquared <= 0) return 1;
    const double behind = std::sqrt(behindSquared);
    return evaluation.choice(kMethod) == kSchlick ? schlickReflectance(cosine, behind, index)
                                                  : dielectricReflectance(cosine, behind, index);
}

void giveFresnel(const Evaluation &evaluation, int output) {
    const double reflected = reflectance(evaluation);
    evaluation.set(output == kTransmissionOut ? 1 - reflected : reflected);
}

} // namespace

constinit const Definition incidence{
    .name = "Incidence",
    .colour = kInfoColour,
    .parameters = {{{.label = "Normal", .kind = Kind::vector}, {.label = "Exponent", .initial = {1}}}},
    .outputs = {{{"Cosine", kConnectScalar}, {"Angle", kConnectScalar}, {"Edge", kConnectScalar}}},
    .evaluate = giveIncidence,
};

constinit const Definition fresnel{
    .name = "Fresnel",
    .colour = kInfoColour,
    .parameters = {{{.label = "Method", .kind = Kind::choice, .texts = kMethodTexts},
                    {.label = "Refraction Index", .initial = {1.5}},
                    {.label = "Normal", .kind = Kind::vector}}},
    .outputs = {{{"Reflection", kConnectScalar}, {"Transmission", kConnectScalar}}},
    .evaluate = giveFresnel,
};

} // namespace velm::host::builtin
