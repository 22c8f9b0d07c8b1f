#include "host/render/geometry/texture_placing.h"

#include <assimp/material.h>

#include <cmath>

namespace velm::host {

namespace {

// The extension has coordinates (x, y) with y downwards, and maps them to
//   offset + (cos(r) sx x + sin(r) sy y, -sin(r) sx x + cos(r) sy y)
// for a rotation r and a scale s. The importer stores the rotation -r, and a translation from which the offset follows.
// The step has coordinates p with y upwards, and maps them to c + L S (p + t - c) with c = (1/2, 1/2), the rotation
// matrix L, the scale matrix S and the translation t.
aiUVTransform corrected(const aiUVTransform &from) {
    const double rotation = -static_cast<double>(from.mRotation), cosine = std::cos(rotation),
                 sine = std::sin(rotation);
    const double scaleX = static_cast<double>(from.mScaling.x), scaleY = static_cast<double>(from.mScaling.y);
    const double offsetX = static_cast<double>(from.mTranslation.x) - 0.5 * scaleX * (1 - cosine + sine);
    const double offsetY = 1 - scaleY + 0.5 * scaleY * (sine + cosine - 1) - static_cast<double>(from.mTranslation.y);
    // The point to which p = (0, 0) is mapped, relative to c.
    const double x = offsetX + sine * scaleY - 0.5, y = 0.5 - offsetY - cosine * scaleY;
    aiUVTransform to;
    to.mScaling = from.mScaling;
    to.mRotation = static_cast<float>(rotation);
    to.mTranslation.x = static_cast<float>((cosine * x + sine * y) / scaleX + 0.5);
    to.mTranslation.y = static_cast<float>((cosine * y - sine * x) / scaleY + 0.5);
    return to;
}

} // namespace

void correctTexturePlacing(const aiScene &scene) {
    for (unsigned i = 0; i < scene.mNumMaterials; ++i) {
        aiMaterial &material = *scene.mMaterials[i];
        for (unsigned type = aiTextureType_DIFFUSE; type <= AI_TEXTURE_TYPE_MAX; ++type) {
            const auto own = static_cast<aiTextureType>(type);
            for (unsigned index = 0; index < material.GetTextureCount(own); ++index) {
                aiUVTransform transform;
                if (material.Get(AI_MATKEY_UVTRANSFORM(own, index), transform) != aiReturn_SUCCESS) continue;
                if (transform.mScaling.x == 0 || transform.mScaling.y == 0)
                    continue; // no inverse: the whole mesh has one colour
                transform = corrected(transform);
                material.RemoveProperty(AI_MATKEY_UVTRANSFORM(own, index));
                material.AddProperty(&transform, 1, AI_MATKEY_UVTRANSFORM(own, index));
            }
        }
    }
}

} // namespace velm::host
