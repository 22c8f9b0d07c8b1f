// The cameras and lights that are read from mesh files.
#include "host/render/geometry/mesh.h"
#include "tests/files/gltf_file.h"
#include "tests/render/test_scene.h"
#include "tests/temporary_directory.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace velm::host::test {
namespace {

constexpr double kTolerance = 1e-5; // the files and the mesh library have floats

// A triangle with cameras and lights; the elements are added to the file's libraries and to its scene.
std::string daeTriangle(const std::string &cameras, const std::string &lights, const std::string &nodes) {
    const std::string points =
        R"(<source id="p"><float_array id="a" count="9">0 0 0 1 0 0 0 1 0</float_array><technique_common>
           <accessor source="#a" count="3" stride="3"><param name="X" type="float"/><param name="Y" type="float"/>
           <param name="Z" type="float"/></accessor></technique_common></source>)";
    return R"(<COLLADA version="1.4.1"><asset><up_axis>Y_UP</up_axis></asset><library_cameras>)" + cameras +
           "</library_cameras><library_lights>" + lights +
           R"(</library_lights><library_geometries><geometry id="g"><mesh>)" + points +
           R"(<vertices id="v"><input semantic="POSITION" source="#p"/></vertices><triangles count="1">
              <input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></triangles></mesh></geometry>
              </library_geometries><library_visual_scenes><visual_scene id="s"><node id="n" name="Mesh">
              <instance_geometry url="#g"/></node>)" +
           nodes +
           R"(</visual_scene></library_visual_scenes><scene><instance_visual_scene url="#s"/></scene></COLLADA>)";
}

class MeshItems : public testing::Test {
  protected:
    Mesh read(const std::string &name, const std::string &text) const {
        return readMesh(directory_.write(name, text), Transform());
    }
    TemporaryDirectory directory_;
};

template <class Item>
const Item &named(const std::vector<Item> &all, const std::string &name) {
    const auto found = std::ranges::find(all, name, &Item::name);
    if (found == all.end()) throw std::out_of_range(name);
    return *found;
}

template <class Item>
Vec3 forwardOf(const Item &item) {
    return rotationMatrix(item.rotation) * Vec3{0, 0, 1};
}

template <class Item>
Vec3 upOf(const Item &item) {
    return rotationMatrix(item.rotation) * Vec3{0, 1, 0};
}

// Cameras of glTF look along -Z of their node with +Y up. Mirroring turns -Z to +Z.
TEST_F(MeshItems, PlaceTheCamerasOfGltf) {
    const std::string camera = R"({"type": "perspective", "perspective": {"yfov": 0.8, "znear": 0.1}})";
    const Mesh mesh = read("a.gltf", gltfSquare({R"({"name": "Plain", "camera": 0, "translation": [1, 2, 3]})",
                                                 // 90 degrees about Y: looks along -X
                                                 R"({"name": "Side", "camera": 1, "scale": [2, 2, 2],
                                                     "rotation": [0, 0.70710678, 0, 0.70710678]})",
                                                 // 90 degrees about Z: the left side is up
                                                 R"({"name": "Tilted", "camera": 2,
                                                     "rotation": [0, 0, 0.70710678, 0.70710678]})"},
                                                camera + ", " + camera + ", " + camera, ""));
    ASSERT_EQ(mesh.cameras.size(), 3U);
    expectNear(Vec3(named(mesh.cameras, "Plain").position), {1, 2, -3}, kTolerance);
    expectNear(Vec3(named(mesh.cameras, "Plain").rotation), {0, 0, 0}, kTolerance);
    expectNear(forwardOf(named(mesh.cameras, "Side")), {-1, 0, 0}, kTolerance);
    expectNear(upOf(named(mesh.cameras, "Side")), {0, 1, 0}, kTolerance);
    expectNear(forwardOf(named(mesh.cameras, "Tilted")), {0, 0, 1}, kTolerance);
    expectNear(upOf(named(mesh.cameras, "Tilted")), {-1, 0, 0}, kTolerance);
}

TEST_F(MeshItems, HaveTheViewOfGltf) {
    const Mesh mesh = read("a.gltf", gltfSquare({R"({"name": "Wide", "camera": 0})", R"({"name": "Free", "camera": 1})",
                                                 R"({"name": "Flat", "camera": 2})"},
                                                R"({"type": "perspective", "perspective":
                                                     {"yfov": 1.2, "aspectRatio": 2, "znear": 0.1}},
                                                   {"type": "perspective", "perspective": {"yfov": 1.2, "znear": 0.1}},
                                                   {"type": "orthographic", "orthographic":
                                                     {"xmag": 3, "ymag": 2, "zfar": 9, "znear": 0.1}})",
                                                ""));
    ASSERT_EQ(mesh.cameras.size(), 2U);
    EXPECT_NEAR(named(mesh.cameras, "Wide").halfHeight, std::tan(0.6), kTolerance);
    EXPECT_NEAR(named(mesh.cameras, "Wide").halfWidth, 2 * std::tan(0.6), kTolerance);
    EXPECT_NEAR(named(mesh.cameras, "Free").halfHeight, std::tan(0.6), kTolerance);
    EXPECT_EQ(named(mesh.cameras, "Free").halfWidth, 0) << "that of the picture";
    ASSERT_EQ(mesh.warnings.size(), 1U);
    EXPECT_EQ(mesh.warnings[0].message, "a camera is not read (\"Flat\")");
    EXPECT_TRUE(mesh.warnings[0].isBesideMesh);
}

TEST_F(MeshItems, AreTheLightsOfGltf) {
    const Mesh mesh = read(
        "a.gltf", gltfSquare({R"({"name": "Sun", "rotation": [-0.70710678, 0, 0, 0.70710678], )" + gltfLight(0) + "}",
                              R"({"name": "Bulb", "translation": [1, 2, 3], )" + gltfLight(1) + "}",
                              R"({"name": "Beam", )" + gltfLight(2) + "}"},
                             "", R"({"type": "directional", "intensity": 3, "color": [0.5, 1, 0.25]},
                                                   {"type": "point", "intensity": 800},
                                                   {"type": "spot", "intensity": 20,
                                                    "spot": {"innerConeAngle": 0.2, "outerConeAngle": 0.5}})"));
    ASSERT_EQ(mesh.lights.size(), 3U);
    const MeshLight &sun = named(mesh.lights, "Sun"), &bulb = named(mesh.lights, "Bulb"),
                    &beam = named(mesh.lights, "Beam");
    EXPECT_EQ(sun.kind, MeshLight::Kind::distant);
    EXPECT_EQ(sun.intensity, 3);
    EXPECT_EQ(sun.colour, (Double3{0.5, 1, 0.25}));
    expectNear(forwardOf(sun), {0, -1, 0}, kTolerance, "the light from above");
    EXPECT_EQ(bulb.kind, MeshLight::Kind::point);
    EXPECT_EQ(bulb.intensity, 800);
    EXPECT_EQ(bulb.attenuation, (Double3{0, 0, 1}));
    expectNear(Vec3(bulb.position), {1, 2, -3}, kTolerance);
    EXPECT_EQ(beam.kind, MeshLight::Kind::spot);
    EXPECT_NEAR(beam.cone, 0.5 * 180 / kPi, kTolerance);
    EXPECT_NEAR(beam.edge, 0.3 * 180 / kPi, kTolerance);
    expectNear(forwardOf(beam), {0, 0, 1}, kTolerance);
}

TEST_F(MeshItems, AreThoseOfCollada) {
    const auto camera = [](const std::string &id, const std::string &angles) {
        return "<camera id=\"" + id + "\" name=\"" + id + "\"><optics><technique_common><perspective>" + angles +
               "</perspective></technique_common></optics></camera>";
    };
    const auto node = [](const std::string &name, const std::string &contents) {
        return "<node id=\"" + name + "\" name=\"" + name + "\">" + contents + "</node>";
    };
    const std::string spot = "<light id=\"spot\"><technique_common><spot><color>0.5 2 1</color>"
                             "<constant_attenuation>1</constant_attenuation>"
                             "<quadratic_attenuation>0.25</quadratic_attenuation><falloff_angle>60</falloff_angle>"
                             "<falloff_exponent>2</falloff_exponent></spot></technique_common></light>";
    const std::string ambient = "<light id=\"sky\"><technique_common><ambient><color>0.1 0.2 0.1</color></ambient>"
                                "</technique_common></light>";
    const Mesh mesh =
        read("a.dae", daeTriangle(camera("wide", "<xfov>90</xfov><aspect_ratio>2</aspect_ratio>") +
                                      camera("tall", "<yfov>50</yfov>"),
                                  spot + ambient,
                                  node("Wide", "<translate>1 2 3</translate><instance_camera url=\"#wide\"/>") +
                                      node("Tall", "<instance_camera url=\"#tall\"/>") +
                                      node("Beam", "<rotate>1 0 0 -90</rotate><instance_light url=\"#spot\"/>") +
                                      node("Sky", "<instance_light url=\"#sky\"/>")));
    ASSERT_EQ(mesh.cameras.size(), 2U);
    expectNear(Vec3(named(mesh.cameras, "Wide").position), {1, 2, -3}, kTolerance);
    EXPECT_NEAR(named(mesh.cameras, "Wide").halfWidth, 1, kTolerance);
    EXPECT_NEAR(named(mesh.cameras, "Wide").halfHeight, 0.5, kTolerance);
    EXPECT_EQ(named(mesh.cameras, "Tall").halfWidth, 0) << "the mesh library does not read it";
    EXPECT_EQ(named(mesh.cameras, "Tall").halfHeight, 0);
    ASSERT_EQ(mesh.warnings.size(), 1U);
    EXPECT_EQ(mesh.warnings[0].message, "the field of view of a camera is not read; it is 40 degrees here (\"Tall\")");
    ASSERT_EQ(mesh.lights.size(), 2U);
    const MeshLight &beam = named(mesh.lights, "Beam"), &sky = named(mesh.lights, "Sky");
    EXPECT_EQ(beam.kind, MeshLight::Kind::spot);
    EXPECT_EQ(beam.intensity, 2);
    EXPECT_EQ(beam.colour, (Double3{0.25, 1, 0.5}));
    EXPECT_EQ(beam.attenuation, (Double3{1, 0, 0.25}));
    EXPECT_NEAR(beam.cone, 30, kTolerance) << "the file has the whole angle";
    EXPECT_EQ(beam.edge, 0);
    expectNear(forwardOf(beam), {0, -1, 0}, kTolerance);
    EXPECT_EQ(sky.kind, MeshLight::Kind::ambient);
    EXPECT_NEAR(sky.intensity, 0.2, kTolerance);
}

// Cameras of FBX look along +X of their node, lights along -Y. This one is that of Blender's first scene, in
// centimetres: the camera at (7.48, 5.34, 6.51) metres looks down to the origin.
TEST_F(MeshItems, AreThoseOfFbx) {
    const Mesh mesh = readMesh("/usr/share/assimp/models/FBX/spider.fbx", Transform());
    ASSERT_EQ(mesh.cameras.size(), 1U);
    const MeshCamera &camera = mesh.cameras[0];
    expectNear(Vec3(camera.position), {748.1, 534.4, -650.8}, 0.1);
    expectNear(forwardOf(camera), {-0.6549, -0.4452, 0.6107}, 1e-3, "to the left, down and to the back");
    EXPECT_GT(upOf(camera).y, 0.8);
    EXPECT_NEAR(camera.halfWidth, std::tan(49.134 / 2 * kPi / 180), 1e-4);
    EXPECT_NEAR(camera.halfHeight, camera.halfWidth * 9 / 16, 1e-4);
    ASSERT_EQ(mesh.lights.size(), 1U);
    EXPECT_EQ(mesh.lights[0].kind, MeshLight::Kind::point);
    EXPECT_EQ(mesh.lights[0].colour, (Double3{1, 1, 1}));
}

TEST_F(MeshItems, LeaveThePartsTheirNames) {
    const Mesh mesh = read(
        "a.gltf",
        gltfSquare({R"({"name": "Lid", "mesh": 0})", R"({"name": "Empty"})", R"({"name": "Lid", "mesh": 0})"}, "", ""));
    EXPECT_EQ(mesh.parts, (std::vector<std::string>{"Square", "Lid"}));
}

TEST(AnglesOf, AreThoseOfTheRotation) {
    for (const Double3 &angles : {Double3{30, -50, 80}, {-170, 20, -100}, {60, 90, 0}, {-45, -90, 0}, {0, 0, 180}})
        expectNear(Vec3(anglesOf(rotationMatrix(angles))), Vec3(angles), 1e-9);
}

TEST(LookAlong, KeepsTheUpwardDirection) {
    const Matrix tilted = lookAlong({0, 0, 2}, {1, 1, 5});
    expectNear(tilted * Vec3{0, 0, 1}, {0, 0, 1}, 1e-12);
    expectNear(tilted * Vec3{0, 1, 0}, {std::sqrt(0.5), std::sqrt(0.5), 0}, 1e-12);
    EXPECT_EQ(lookAlong({1, 2, 3}, {2, 4, 6}), lookAlong({1, 2, 3}))
        << "parallel directions do not determine a rotation";
}

} // namespace
} // namespace velm::host::test
