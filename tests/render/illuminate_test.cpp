// The illuminate functions of samples.
#include "tests/render/test_scene.h"

namespace velm::host::test {
namespace {

constexpr double kTolerance = 1e-6;
using Kind = LightDescription::Kind;

struct Light3 {
    int result;
    Vec3 direction, colour;
};

struct IlluminateTest : testing::Test {
    void add(const char *name, Kind kind, const Double3 &position, const Double3 &target = {}) {
        LightDescription light;
        light.name = name;
        light.kind = kind;
        light.position = position;
        light.target = target;
        light.colour = {1, 0.5, 0.25};
        scene.description.lights.push_back(light);
    }
    Light3 ask(const ShadingSample &sample, const char *name, const Vec3 &place = {}, bool sampled = false) {
        auto *item = const_cast<HostItem *>(scene.item(kItemLight, name));
        const double position[3] = {place.x, place.y, place.z};
        double direction[3] = {9, 9, 9}, colour[3] = {9, 9, 9};
        const int result = sampled ? sample.illuminateSampled(item, position, direction, colour, nullptr)
                                   : sample.illuminate(item, position, direction, colour);
        return {result, Vec3(direction), Vec3(colour)};
    }
    TestScene scene;
};

TEST_F(IlluminateTest, GivesDirectionAndColour) {
    add("Point", Kind::point, {0, 2, 0});
    add("Sun", Kind::distant, {0, 7, 0});
    add("Area", Kind::area, {0, 2, 0});
    scene.description.lights[2].width = scene.description.lights[2].height = 0.001;
    probeAtOrigin(scene, [this](ShadingSample &sample, double *) {
        for (const bool sampled : {false, true}) {
            const Light3 point = ask(sample, "Point", {}, sampled);
            EXPECT_EQ(point.result, 1);
            expectNear(point.direction, {0, -1, 0}, kTolerance, "from the light");
            expectNear(point.colour, {0.25, 0.125, 0.0625}, kTolerance);
            const Light3 sun = ask(sample, "Sun", {3, 3, 3}, sampled);
            expectNear(sun.direction, {0, -1, 0}, kTolerance);
            expectNear(sun.colour, {1, 0.5, 0.25}, kTolerance);
            const Light3 area = ask(sample, "Area", {}, sampled);
            EXPECT_EQ(area.result, 1);
            expectNear(area.direction, {0, -1, 0}, 1e-3);
            expectNear(area.colour, {0.25, 0.125, 0.0625}, 1e-5);
        }
        expectNear(ask(sample, "Point", {0, 1, 0}).colour, {1, 0.5, 0.25}, kTolerance, "nearer");
    });
}

TEST_F(IlluminateTest, HeedsShadows) {
    scene.surface("Half", {{"Transparency", 0.5}});
    scene.object("Half", PlaneShape{}, "Half", {0, 1, 0});
    add("Point", Kind::point, {0, 2, 0});
    probeAtOrigin(scene, [this](ShadingSample &sample, double *) {
        expectNear(ask(sample, "Point").colour, {0.125, 0.0625, 0.03125}, kTolerance);
        EXPECT_EQ(ask(sample, "Point").result, 1);
        expectNear(ask(sample, "Point", {0, 1.5, 0}).colour, {4, 2, 1}, 1e-5, "above the pane");
    });
}

TEST_F(IlluminateTest, NothingArrives) {
    add("Area", Kind::area, {0, 2, 0}, {0, 5, 0}); // shines up
    probeAtOrigin(scene, [this](ShadingSample &sample, double *) {
        const Light3 averted = ask(sample, "Area");
        EXPECT_EQ(averted.result, 0);
        expectNear(averted.direction, {0, 0, 0}, 0);
        expectNear(averted.colour, {0, 0, 0}, 0);
        EXPECT_EQ(ask(sample, "No such light").result, 0) << "the null item";
        double direction[3], colour[3];
        auto *camera = const_cast<HostItem *>(scene.item(kItemCamera, "Camera"));
        EXPECT_EQ(sample.illuminate(camera, sample.position, direction, colour), 0);
        EXPECT_EQ(ask(sample, "Area", {NAN, 0, 0}).result, 0);
    });
}

} // namespace
} // namespace velm::host::test
