// The fixture of the tests of Gaussian Reflections and Gaussian Refractions: the facts of the two classes, reference
// computations of the noise and of the bent rays, and a sample that is viewed from the side.
#pragma once

#include "module/servers.h"
#include "tests/module/fake_images.h"
#include "tests/module/fake_scene.h"
#include "tests/module/recorded_state.h"
#include "tests/module/test_node.h"

#include <array>
#include <gtest/gtest.h>
#include <random>

namespace velm::plugin {

using Lines = std::vector<std::string>;
using Vector = std::array<double, 3>;

struct GlossyNodeClass {
    const char *name;
    HostActivate *activate, *interface;
    bool refracts;
    const char *blur;                      // the name of the channel
    unsigned int tint, samples, blurDepth; // controls; the mode is 0x8001, the image 0x8002
};

inline constexpr GlossyNodeClass kReflections = {
    .name = "GaussianReflections",
    .activate = activatedWith<FakeImages::lookup, GaussianReflections_Activate>,
    .interface = activatedWith<FakeImages::lookup, GaussianReflections_Interface>,
    .refracts = false,
    .blur = "Reflection Blur",
    .tint = 0x8004,
    .samples = 0x8007,
    .blurDepth = 0x8008};
inline constexpr GlossyNodeClass kRefractions = {
    .name = "GaussianRefractions",
    .activate = activatedWith<FakeImages::lookup, GaussianRefractions_Activate>,
    .interface = activatedWith<FakeImages::lookup, GaussianRefractions_Interface>,
    .refracts = true,
    .blur = "Refraction Blur",
    .tint = 0x8005,
    .samples = 0x8008,
    .blurDepth = 0x8009};

enum GlossyControl : unsigned int { kMode = 0x8001, kImage = 0x8002 };
enum Mode { kBackdrop, kRays, kMap, kRaysAndMap };

Vector unit(Vector v);
double dotOf(const Vector &a, const Vector &b);

// One value of the module's noise, from the next words of a reference stream.
double noiseOf(std::mt19937 &stream);
// A normal, minus the next three noise values.
Vector jittered(const Vector &normal, double blur, std::mt19937 &stream);

// The mirrored view: the component along the surface stays, the component across it changes its sign.
Vector mirrorOf(const Vector &view, const Vector &normal);
// The bent view, by the angles of Snell's law: the sine is multiplied by the ratio of the indices.
Vector snellOf(const Vector &view, const Vector &normal, double from, double into);

Vector colourOf(const HostNodeValue &value);
void expectNear(const Vector &have, const Vector &wanted, double tolerance = 1e-12);

class Glossy : public testing::Test {
  protected:
    static constexpr Vector kView = {0.6, -0.8, 0}; // of sample()
    static constexpr double kIndex = 1.25;          // the index of refraction on the viewer's side

    FakeHost host;
    FakeImages images;
    FakeRays rays;
    const GlossyNodeClass &tested;
    TestNode node;

    explicit Glossy(const GlossyNodeClass &nodeClass);
    // A sample at (1, 2, 3) with its normal up, seen from the left and above.
    ShadingSample sample() const;
    Vector evaluate(ShadingSample shaded) { return colourOf(node.evaluate("Color", shaded)); }
    Vector evaluate() { return evaluate(sample()); }
    // The expected direction of a ray at a normal, with a refraction index of 1.
    Vector bent(const Vector &normal) const;
};

} // namespace velm::plugin
