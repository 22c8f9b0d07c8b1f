#include "tests/nodes/glossy_fixture.h"

#include <algorithm>
#include <cmath>

namespace velm::plugin {

double dotOf(const Vector &a, const Vector &b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

Vector unit(Vector v) {
    const double length = std::sqrt(dotOf(v, v));
    for (double &component : v) component /= length;
    return v;
}

double noiseOf(std::mt19937 &stream) {
    double sum = 0;
    for (int i = 0; i < 3; ++i) sum += static_cast<double>(stream()) / 4294967296.0;
    return (2 * 10923 * sum - 32766) / 32767;
}

Vector jittered(const Vector &normal, double blur, std::mt19937 &stream) {
    Vector result = normal;
    for (double &component : result) component -= noiseOf(stream) * blur;
    return unit(result);
}

Vector mirrorOf(const Vector &view, const Vector &normal) {
    const double across = dotOf(view, normal);
    Vector result{};
    for (size_t i = 0; i < 3; ++i) result[i] = (view[i] - across * normal[i]) - across * normal[i];
    return result;
}

Vector snellOf(const Vector &view, const Vector &normal, double from, double into) {
    const double across = dotOf(view, normal);
    const double side = across < 0 ? -1 : 1; // the view may come from either side of the normal
    Vector along{};
    for (size_t i = 0; i < 3; ++i) along[i] = view[i] - across * normal[i];
    const double sine = std::sqrt(dotOf(along, along)), bentSine = sine * from / into;
    const double bentCosine = std::sqrt(std::max(0.0, 1 - bentSine * bentSine));
    Vector result{};
    for (size_t i = 0; i < 3; ++i)
        result[i] = (sine > 0 ? along[i] / sine * bentSine : 0) + side * bentCosine * normal[i];
    return result;
}

Vector colourOf(const HostNodeValue &value) {
    EXPECT_EQ(value.timesSet, 1);
    return {value.numbers[0], value.numbers[1], value.numbers[2]};
}

void expectNear(const Vector &have, const Vector &wanted, double tolerance) {
    for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(have[i], wanted[i], tolerance) << "component " << i;
}

Glossy::Glossy(const GlossyNodeClass &nodeClass)
    : tested(nodeClass), node(host, nodeClass.activate, nodeClass.interface) {
    rays.distance = 5;
    rays.colour = {0.5, 0.25, 0.125};
}

ShadingSample Glossy::sample() const {
    ShadingSample made = rays.sample();
    const double position[3] = {1, 2, 3}, source[3] = {-2, 6, 3};
    std::copy_n(position, 3, made.position);
    std::copy_n(source, 3, made.raySource);
    made.spotSize = 0.375;
    made.refractionIndex = kIndex;
    return made;
}

Vector Glossy::bent(const Vector &normal) const {
    if (!tested.refracts) return mirrorOf(kView, normal);
    const double cosine = -dotOf(kView, normal);
    const bool leaves = std::sqrt(1 - cosine * cosine) * kIndex <= 1 && cosine > 0;
    return leaves ? snellOf(kView, normal, kIndex, 1) : mirrorOf(kView, normal);
}

} // namespace velm::plugin
