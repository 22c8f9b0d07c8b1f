// Small scenes for tests, with surfaces that have constant values or run a function of the test as a node.
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

// A function of a test that runs as a node, once for each evaluation of the value that it is connected to.
using Probe = std::function<void(ShadingSample &sample, double value[3])>;

constexpr double kPi = 3.14159265358979323846;

// A scene with one camera "Camera" at (0, 0, -5), which looks along +Z with a field of view of 40 degrees, and a plain
// backdrop of (0.25, 0.5, 0.75). The picture is one pixel, whose ray goes straight ahead.
class TestScene {
  public:
    TestScene();

    SceneDescription description;
    RenderJob job;

    // Adds a surface with these values of its root, by name. Values that are not given are 0, except for the colour and
    // the refraction index of 1.
    using Values = std::initializer_list<std::pair<const char *, double>>;
    SurfaceDescription &surface(const std::string &name, Values values = {}, const Double3 &colour = {1, 1, 1});
    // Connects a probe to an input of a surface's root: "Color", "Normal" or a number, which is value[0].
    void probe(const std::string &surface, const std::string &input, Probe probe);

    ObjectDescription &object(const std::string &name, const ShapeDescription &shape, const std::string &surface,
                              const Double3 &position = {});

    Surface *surfaceOf(const std::string &name); // null when there is none
    SurfaceLookup lookup() {
        return [this](const std::string &name) { return surfaceOf(name); };
    }
    SceneWork update() { return renderScene().update(description, lookup()); }
    RenderScene &renderScene(); // built at the first call
    Frame render();
    // The colour of a picture of one pixel.
    Vec3 pixel();
    const HostItem *item(int type, const std::string &name) { return renderScene().item(type, name); }

  private:
    std::map<std::string, std::unique_ptr<Surface>> surfaces_;
    std::unique_ptr<RenderScene> renderScene_;
};

// A plane of 20 by 20 metres at z = 0, with the surface "Plane". Its normal is -Z, towards the camera, which sees its
// centre.
TestScene facingPlane(const TestScene::Values &values, const Double3 &colour = {1, 1, 1});

// The same, white and diffuse, with one light.
TestScene litPlane(const LightDescription &light);

// A picture of 50 by 40 pixels with 3 samples, of a lit, reflecting ball "Ball" on a floor "Floor", both with the
// surface "Ball": with everything that draws sample points.
TestScene litBall();

// Whether two pictures have the same pixels in a region, bit for bit.
bool samePixels(const Picture &a, const Picture &b, const Region &region);

// Renders one sample of a luminous surface "Probe" on a sphere of radius 0.001 at the origin, which is all that the
// camera sees and which no other ray hits. Runs `probe` once, for that sample, and returns the colour that it set.
Vec3 probeAtOrigin(TestScene &scene, const Probe &probe);

inline void expectNear(const Vec3 &found, const Vec3 &expected, double tolerance, const std::string &what = "") {
    EXPECT_NEAR(found.x, expected.x, tolerance) << what;
    EXPECT_NEAR(found.y, expected.y, tolerance) << what;
    EXPECT_NEAR(found.z, expected.z, tolerance) << what;
}

} // namespace velm::host::test
