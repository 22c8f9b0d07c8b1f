// Cameras and lights of 3DS files.
#include "host/render/geometry/items_3ds.h"
#include "host/render/geometry/mesh.h"
#include "tests/render/test_scene.h"

#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace velm::host::test {
namespace {

constexpr double kTolerance = 1e-5; // the files have floats

template <class Number>
std::string bytesOf(Number number) {
    return {reinterpret_cast<const char *>(&number), sizeof number};
}

std::string floats(const std::vector<float> &numbers) {
    std::string bytes;
    for (const float number : numbers) bytes += bytesOf(number);
    return bytes;
}

std::string chunk3ds(std::uint16_t type, const std::string &contents) {
    return bytesOf(type) + bytesOf(static_cast<std::uint32_t>(6 + contents.size())) + contents;
}

std::string file3ds(const std::string &editor) { return chunk3ds(0x4d4d, chunk3ds(0x3d3d, editor)); }

std::string named3ds(const std::string &name, const std::string &contents) {
    return chunk3ds(0x4000, name + '\0' + contents);
}

Vec3 towards(const Double3 &rotation, const Vec3 &axis) { return rotationMatrix(rotation) * axis; }

// At (1, 2, 3) with +Z up, looking along +Y, with a roll of 90 degrees clockwise.
TEST(Items3ds, HaveCameras) {
    const std::string camera = chunk3ds(0x4700, floats({1, 2, 3, 1, 7, 3, 90, 2400.0F / 60}));
    const MeshItems items = itemsOf3ds(file3ds(named3ds("Eye", camera)), 2);
    ASSERT_EQ(items.cameras.size(), 1U);
    const MeshCamera &found = items.cameras[0];
    EXPECT_EQ(found.name, "Eye");
    EXPECT_EQ(found.position, (Double3{2, 6, 4})) << "twice the size, +Y up";
    expectNear(towards(found.rotation, {0, 0, 1}), {0, 0, 1}, kTolerance);
    expectNear(towards(found.rotation, {0, 1, 0}), {1, 0, 0}, kTolerance, "up points to the right");
    EXPECT_NEAR(found.halfWidth, std::tan(30 * kPi / 180), kTolerance);
    EXPECT_EQ(found.halfHeight, 0) << "follows from the picture";
}

TEST(Items3ds, HaveLights) {
    const std::string bright = chunk3ds(0x0010, floats({0.5F, 1, 0})) + chunk3ds(0x465b, floats({3}));
    const std::string spot = chunk3ds(0x0011, "\xff\xff\x33") + chunk3ds(0x4610, floats({0, 0, 0, 40, 60}));
    const MeshItems items =
        itemsOf3ds(file3ds(chunk3ds(0x2100, chunk3ds(0x0010, floats({0.25F, 0, 0}))) +
                           named3ds("Bulb", chunk3ds(0x4600, floats({1, 2, 3}) + bright)) +
                           named3ds("Beam", chunk3ds(0x4600, floats({0, 0, 5}) + spot)) +
                           named3ds("Dark", chunk3ds(0x4600, floats({0, 0, 5}) + chunk3ds(0x4620, "")))),
                   1);
    ASSERT_EQ(items.lights.size(), 3U) << "one is switched off";
    const MeshLight &sky = items.lights[0], &bulb = items.lights[1], &beam = items.lights[2];
    EXPECT_EQ(sky.kind, MeshLight::Kind::ambient);
    EXPECT_EQ(sky.intensity, 0.25);
    EXPECT_EQ(sky.colour, (Double3{1, 0, 0}));
    EXPECT_EQ(bulb.kind, MeshLight::Kind::point);
    EXPECT_EQ(bulb.position, (Double3{1, 3, 2}));
    EXPECT_EQ(bulb.intensity, 3);
    EXPECT_EQ(bulb.colour, (Double3{0.5, 1, 0}));
    EXPECT_EQ(beam.kind, MeshLight::Kind::spot);
    EXPECT_NEAR(beam.colour[2], 0.2, kTolerance);
    EXPECT_EQ(beam.cone, 30) << "the file has the whole angle";
    EXPECT_EQ(beam.edge, 10);
    expectNear(towards(beam.rotation, {0, 0, 1}), {0, -1, 0}, kTolerance);
}

TEST(Items3ds, AreLeftOutWhereTheFileIsDamaged) {
    const std::string camera = chunk3ds(0x4700, floats({1, 2, 3, 1, 7, 3, 90, 40}));
    const std::string whole = file3ds(named3ds("Eye", camera));
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_TRUE(itemsOf3ds(whole.substr(0, size), 1).cameras.empty()) << size;
    const std::string endless = chunk3ds(0x4700, floats({INFINITY, 2, 3, 1, 7, 3, 90, 40}));
    EXPECT_TRUE(itemsOf3ds(file3ds(named3ds("Eye", endless)), 1).cameras.empty());
    EXPECT_TRUE(itemsOf3ds(file3ds(named3ds("Eye", chunk3ds(0x4700, floats({1, 2})))), 1).cameras.empty());
    EXPECT_TRUE(itemsOf3ds(file3ds(chunk3ds(0x4000, "no end")), 1).cameras.empty());
    for (const std::string &multiplier : {floats({INFINITY}), floats({NAN}), std::string("ab")}) {
        const std::string light = chunk3ds(0x4600, floats({1, 2, 3}) + chunk3ds(0x465b, multiplier));
        EXPECT_EQ(itemsOf3ds(file3ds(named3ds("Bulb", light)), 1).lights.at(0).intensity, 1) << "the default";
    }
}

// A camera of 45 degrees that looks along +X at a box around the origin.
TEST(Items3ds, AreInTheMesh) {
    const Mesh mesh = readMesh("/usr/share/assimp/models/3DS/CameraRollAnim.3ds", Transform());
    ASSERT_EQ(mesh.cameras.size(), 1U);
    expectNear(Vec3(mesh.cameras[0].position), {-153.077, 22.778, 3.272}, 1e-2);
    expectNear(towards(mesh.cameras[0].rotation, {0, 0, 1}), {0.9995, 0, -0.0301}, 1e-3);
    EXPECT_NEAR(mesh.cameras[0].halfWidth, std::tan(22.5 * kPi / 180), 1e-4);
    ASSERT_EQ(mesh.warnings.size(), 1U) << "of the animation";
}

} // namespace
} // namespace velm::host::test
