// Small scenes for tests, whose surfaces have set values or run a piece of the test as a node.
#pragma once

#include "host/graph/network.h"
#include "host/graph/surface.h"
#include "host/render/geometry/vector.h"
#include "host/render/renderer.h"
#include "host/render/scene/render_scene.h"

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace velm::host::test {

// Runs as a node, once for each sample of its surface that asks for the value.
using Probe = std::function<void(ShadingSample &sample, double value[3])>;

constexpr double kPi = 3.14159265358979323846;

// The scene starts with one camera "Camera" at (0, 0, -5) that looks along +Z with a field of view of 40 degrees, and a
// plain backdrop of (0.25, 0.5, 0.75). A picture is one pixel, of the ray straight ahead.
class TestScene {
  public:
    TestScene();

    SceneDescription description;
    RenderJob job;

    // Values of the root by name, "Color" as a triple. Surfaces start black and matt: no value but those given is above
    // 0, apart from the refraction index of 1.
    using Values = std::initializer_list<std::pair<const char *, double>>;
    SurfaceDescription &surface(const std::string &name, Values values = {}, const Double3 &colour = {1, 1, 1});
    // Feeds an input of a surface's root, "Color" or a number (of which value[0] counts), from a piece of the test.
    void probe(const std::string &surface, const std::string &input, Probe probe);

    ObjectDescription &object(const std::string &name, const ShapeDescription &shape, const std::string &surface,
                              const Double3 &position = {});

    Surface *surfaceOf(const std::string &name); // null when there is none
    RenderScene &renderScene();                  // built at the first call
    Frame render();
    // The colour of a picture of one pixel.
    Vec3 pixel();
    const HostItem *item(int type, const std::string &name) { return renderScene().item(type, name); }

  private:
    std::map<std::string, std::unique_ptr<Surface>> surfaces_;
    std::unique_ptr<RenderScene> renderScene_;
};

// Renders with a glowing surface "Probe" on a sphere of radius 0.001 at the origin, which is all that the camera sees
// and which nothing else sees, runs `probe` there once, and gives what the probe left as its colour.
Vec3 probeAtOrigin(TestScene &scene, const Probe &probe);

inline void expectNear(const Vec3 &found, const Vec3 &expected, double tolerance, const std::string &what = "") {
    EXPECT_NEAR(found.x, expected.x, tolerance) << what;
    EXPECT_NEAR(found.y, expected.y, tolerance) << what;
    EXPECT_NEAR(found.z, expected.z, tolerance) << what;
}

} // namespace velm::host::test
