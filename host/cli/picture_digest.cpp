#include "host/cli/picture_digest.h"

#include "host/io/files.h"

#include <fmt/format.h>
#include <variant>

namespace velm::host {

PictureDigest::PictureDigest(const SceneDescription &scene, const RenderOptions &options, const RenderJob &job,
                             const std::string &module) {
    digest_.addFile(options.scene);
    for (const SceneOverride &override : options.overrides) digest_.add(override.text);
    for (const ObjectDescription &object : scene.objects)
        if (const auto *mesh = std::get_if<MeshFile>(&object.shape)) digest_.addFile(mesh->file);
    for (const ImageDescription &image : scene.images) digest_.addFile(image.file);
    if (!scene.surfaceFile.empty()) digest_.addFile(scene.surfaceFile);
    digest_.addFile(module);
    const Region region = regionOf(job);
    digest_.add(fmt::format("{}x{} {},{},{},{} {} {} {} {} {} {}", job.width, job.height, region.left, region.top,
                            region.right, region.bottom, job.samples, job.recursionDepth, job.camera,
                            static_cast<int>(job.order), job.seed, job.lockNoise));
    digest_.add(VELM_VERSION);
}

std::string PictureDigest::of(int frame) const {
    Digest digest = digest_;
    digest.add(std::to_string(frame));
    return digest.text();
}

} // namespace velm::host
