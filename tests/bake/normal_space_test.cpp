// Normals in the coordinates of the surface, the object and the world.
#include "host/bake/normal_space.h"
#include "tests/bake/bake_scene.h"

#include <cmath>

namespace velm::host::test {
namespace {

constexpr double kSingle = 1e-6;

// The normals of a plane that is turned a quarter about +Y, whose normals a node bends towards the world's +X.
Vec3 normalIn(NormalSpace space) {
    BakeScene scene(PlaneShape{.width = 2, .depth = 2});
    scene.description.objects[0].rotation = {90, 0, 0};
    scene.probe("Skin", "Normal", [](const ShadingSample &, double value[3]) { Vec3{0.6, 0.8, 0}.store(value); });
    scene.bake.output = "Normal";
    scene.bake.space = space;
    return texelOf(scene.bakeIt().picture, 5, 5);
}

TEST(NormalSpace, WorldIsThatOfTheNode) { expectNear(normalIn(NormalSpace::world), {0.6, 0.8, 0}, kSingle); }

TEST(NormalSpace, ObjectTurnsWithTheObject) {
    // A heading of 90 degrees turns +Z to +X.
    expectNear(normalIn(NormalSpace::object), {0, 0.8, 0.6}, kSingle);
}

TEST(NormalSpace, TangentHasXAlongUAndYAlongV) {
    // On the plane, u grows along the object's +X and v along its +Z.
    expectNear(normalIn(NormalSpace::tangent), {0, 0.6, 0.8}, kSingle);
}

TEST(NormalSpace, AnUnbentNormalIsZ) {
    for (const double smoothing : {0.0, 89.5}) {
        BakeScene scene(SphereShape{}, {}, 64);
        scene.description.surfaces[0].smoothingAngle = smoothing;
        scene.bake.output = "Normal";
        const Picture picture = scene.bakeIt().picture;
        for (int y = 8; y < 56; ++y)
            for (int x = 0; x < 64; ++x) expectNear(texelOf(picture, x, y), {0, 0, 1}, kSingle);
    }
}

TEST(NormalSpace, TheFrameOfASphereFollowsItsCoordinates) {
    BakeScene scene(SphereShape{.radius = 1, .segments = 64});
    const RenderSceneData &data = scene.renderScene().data();
    const Mesh &mesh = *data.objects[0].mesh;
    const std::vector<bool> isFlat(mesh.triangles.size());
    const Tangents tangents(mesh, mesh.uvMaps[0], isFlat);
    constexpr double kFacet = 0.06; // radians: more than half the angle of a segment
    for (std::uint32_t triangle = 64 * 20; triangle < 64 * 40; ++triangle) { // away from the poles
        const Tangents::Frame frame = tangents.at(triangle, {1.0 / 3, 1.0 / 3, 1.0 / 3});
        const Vec3 p = mesh.corner(triangle, 0) + mesh.corner(triangle, 1) + mesh.corner(triangle, 2);
        expectNear(normalised(frame.normal), normalised(p), kFacet);
        expectNear(normalised(frame.tangent), normalised(Vec3{-p.z, 0, p.x}),
                   kFacet); // to the right as seen from outside
        expectNear(normalised(frame.bitangent), normalised(Vec3{0, 1, 0} - normalised(p).y * normalised(p)), kFacet);
    }
}

TEST(NormalSpace, RestoresTheNormalFromTheFrame) {
    const Tangents::Frame frame{.tangent = {0.9, 0.1, 0}, .bitangent = {0, -0.2, 0.8}, .normal = {0.1, 0.95, 0.1}};
    const Vec3 normal = normalised({0.3, 0.8, -0.2});
    const Vec3 found = toTangentSpace(frame, normal);
    expectNear(normalised(found.x * frame.tangent + found.y * frame.bitangent + found.z * frame.normal), normal, 1e-12);
}

TEST(NormalSpace, EncodesForFilesWithoutNegativeNumbers) {
    BakeScene scene(PlaneShape{.width = 2, .depth = 2});
    scene.bake.output = "Normal";
    Picture picture = scene.bakeIt().picture;
    encodeNormals(picture);
    expectNear(texelOf(picture, 5, 5), {0.5, 0.5, 1}, kSingle);
}

} // namespace
} // namespace velm::host::test
