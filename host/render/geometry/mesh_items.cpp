#include "host/render/geometry/mesh_items.h"

#include "host/base/angles.h"
#include "host/io/files.h"
#include "host/render/geometry/assimp_names.h"
#include "host/render/geometry/items_3ds.h"
#include "host/render/geometry/transform.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>
#include <optional>
#include <string_view>

namespace velm::host {
namespace {

// How assimp represents the cameras and lights of a format. In all of these formats, they are at the origin of a node
// of the same name. The positions in aiCamera and aiLight are not used: some repeat the node's translation.
struct ItemFormat {
    std::string_view ending;
    bool multipliesView; // mHorizontalFOV is the vertical angle times the aspect ratio
    double coneAngles;   // multiplies the angles of cones, to make them angles from the axis
    // False if assimp computes the outer cone from an exponent. Then the inner cone is the whole cone.
    bool hasOuterCone;
};

constexpr ItemFormat kItemFormats[] = {
    {.ending = "glb", .multipliesView = true, .coneAngles = 1, .hasOuterCone = true},
    {.ending = "gltf", .multipliesView = true, .coneAngles = 1, .hasOuterCone = true},
    {.ending = "fbx", .multipliesView = false, .coneAngles = 0.5, .hasOuterCone = true},
    {.ending = "dae", .multipliesView = false, .coneAngles = 0.5, .hasOuterCone = false},
};

constexpr double kWidestView = 1e4; // half the width or height of what a camera sees: less than 180 degrees

const ItemFormat *itemFormatOf(const MeshFormat &format) {
    const auto *const found = std::ranges::find(kItemFormats, format.ending, &ItemFormat::ending);
    return found == std::end(kItemFormats) ? nullptr : found;
}

// From the coordinates of the node of that name to those of the file.
aiMatrix4x4 toFileOf(const aiScene &scene, const aiString &name) {
    aiMatrix4x4 toFile;
    for (const aiNode *node = scene.mRootNode->FindNode(name); node; node = node->mParent)
        toFile = node->mTransformation * toFile;
    return toFile;
}

Double3 leftHanded(double x, double y, double z) { return {x, y, 0 - z}; } // not -0 for 0

Vec3 turned(const aiMatrix4x4 &toFile, const aiVector3D &direction) {
    const aiVector3D inFile = aiMatrix3x3(toFile) * direction;
    return Vec3(leftHanded(inFile.x, inFile.y, inFile.z));
}

Double3 positionIn(const aiMatrix4x4 &toFile) { return leftHanded(toFile.a4, toFile.b4, toFile.c4); }

// Sets the field of view from aiCamera's horizontal angle and aspect ratio.
void setView(const aiCamera &from, const ItemFormat &format, MeshCamera &camera) {
    // 0: that of the picture.
    const double aspect = from.mAspect > 0 && std::isfinite(from.mAspect) ? static_cast<double>(from.mAspect) : 0;
    const double angle = static_cast<double>(from.mHorizontalFOV);
    // assimp's default for cameras without an angle, which it converts to radians twice. Collada's cameras also have it
    // if they have no name, or only a vertical angle.
    constexpr double kNotRead = std::numbers::pi / 4 * kRadiansPerDegree;
    if (aspect == 0 && std::abs(angle - kNotRead) < 1e-6) return;
    const auto halfOf = [](double whole) {
        return whole > 0 && whole < std::numbers::pi ? std::min(std::tan(whole / 2), kWidestView) : 0;
    };
    if (format.multipliesView) {
        camera.halfHeight = halfOf(aspect > 0 ? angle / aspect : angle);
        camera.halfWidth = std::min(camera.halfHeight * aspect, kWidestView);
    } else {
        camera.halfWidth = halfOf(angle);
        camera.halfHeight = aspect > 0 ? std::min(camera.halfWidth / aspect, kWidestView) : 0;
    }
}

// False for orthographic cameras.
bool hasPerspective(const aiCamera &camera) { return camera.mHorizontalFOV > 0 && camera.mOrthographicWidth == 0; }

MeshCamera cameraOf(const aiScene &scene, const aiCamera &from, const ItemFormat &format) {
    const aiMatrix4x4 toFile = toFileOf(scene, from.mName);
    MeshCamera camera{};
    camera.name = from.mName.C_Str();
    camera.position = positionIn(toFile);
    camera.rotation = anglesOf(lookAlong(turned(toFile, from.mLookAt), turned(toFile, from.mUp)));
    setView(from, format, camera);
    return camera;
}

// Nothing for area lights, which no importer reads completely, and for lights that assimp does not know.
std::optional<MeshLight::Kind> kindOf(aiLightSourceType type) {
    switch (type) {
    case aiLightSource_POINT: return MeshLight::Kind::point;
    case aiLightSource_DIRECTIONAL: return MeshLight::Kind::distant;
    case aiLightSource_SPOT: return MeshLight::Kind::spot;
    case aiLightSource_AMBIENT: return MeshLight::Kind::ambient;
    default: return std::nullopt;
    }
}

double atLeast0(double number) { return std::isfinite(number) ? std::max(0.0, number) : 0; }

// Divides assimp's product of colour and intensity into both.
void setColour(const aiColor3D &from, MeshLight &light) {
    const Vec3 product{atLeast0(from.r), atLeast0(from.g), atLeast0(from.b)};
    light.intensity = largest(product);
    light.colour = {1, 1, 1};
    if (light.intensity > 0)
        light.colour = {product.x / light.intensity, product.y / light.intensity, product.z / light.intensity};
}

void setCone(const aiLight &from, const ItemFormat &format, MeshLight &light) {
    const double factor = format.coneAngles * kDegreesPerRadian;
    const double inner = atLeast0(factor * from.mAngleInnerCone), outer = atLeast0(factor * from.mAngleOuterCone);
    constexpr double kNarrowest = 0.01;
    light.cone = std::clamp(format.hasOuterCone ? outer : inner, kNarrowest, 180.0);
    light.edge = format.hasOuterCone ? std::max(0.0, light.cone - inner) : 0;
}

MeshLight lightOf(const aiScene &scene, const aiLight &from, MeshLight::Kind kind, const ItemFormat &format) {
    const aiMatrix4x4 toFile = toFileOf(scene, from.mName);
    MeshLight light{};
    light.name = from.mName.C_Str();
    light.kind = kind;
    light.position = positionIn(toFile);
    light.rotation = anglesOf(lookAlong(turned(toFile, from.mDirection)));
    setColour(kind == MeshLight::Kind::ambient ? from.mColorAmbient : from.mColorDiffuse, light);
    light.attenuation = {atLeast0(from.mAttenuationConstant), atLeast0(from.mAttenuationLinear),
                         atLeast0(from.mAttenuationQuadratic)};
    setCone(from, format, light);
    return light;
}

} // namespace

MeshItems itemsOf(const aiScene &scene, const std::string &file, const MeshFormat &format, Losses &losses) {
    // assimp reads neither the direction nor the angle of these cameras. The root's scale is the unit of the file.
    if (format.ending == std::string_view("3ds"))
        return itemsOf3ds(readFile(file), static_cast<double>(scene.mRootNode->mTransformation.a1));
    const ItemFormat *const known = itemFormatOf(format);
    MeshItems items;
    for (unsigned i = 0; i < scene.mNumCameras; ++i) {
        const aiCamera &from = *scene.mCameras[i];
        const auto camera = known && hasPerspective(from) ? std::optional(cameraOf(scene, from, *known)) : std::nullopt;
        if (camera && isFinite(Vec3(camera->position)))
            items.cameras.push_back(*camera);
        else
            losses.add(Loss::camera, nameOrNumber(from.mName, i));
        if (camera && camera->halfWidth == 0 && camera->halfHeight == 0)
            losses.add(Loss::fieldOfView, nameOrNumber(from.mName, i));
    }
    for (unsigned i = 0; i < scene.mNumLights; ++i) {
        const aiLight &from = *scene.mLights[i];
        const auto kind = kindOf(from.mType);
        const auto light = known && kind ? std::optional(lightOf(scene, from, *kind, *known)) : std::nullopt;
        if (light && isFinite(Vec3(light->position)))
            items.lights.push_back(*light);
        else
            losses.add(Loss::light, nameOrNumber(from.mName, i));
    }
    return items;
}

} // namespace velm::host
