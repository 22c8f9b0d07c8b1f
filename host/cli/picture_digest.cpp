#include "host/cli/picture_digest.h"

#include "host/image/picture.h"
#include "host/io/embedded_images.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <unordered_set>
#include <variant>

namespace velm::host {

namespace {

// The contents of the files that a scene names, each once, in the scene's order.
void addFiles(const SceneDescription &scene, Digest &digest) {
    std::unordered_set<std::string> added;
    const auto add = [&](const std::string &file) {
        if (added.insert(file).second) digest.addFile(file);
    };
    for (const ObjectDescription &object : scene.objects)
        if (const auto *mesh = std::get_if<MeshFile>(&object.shape)) add(mesh->file);
    for (const ImageDescription &image : scene.images)
        if (!image.sequence) add(fileToOpen(image.file));
    if (!scene.surfaceFile.empty()) add(scene.surfaceFile);
}

} // namespace

PictureDigest::PictureDigest(const std::string &file, const SceneDescription &scene, const RenderOptions &options,
                             const RenderJob &job, const std::string &module) {
    if (!hasDigest(file)) return;
    Digest &digest = digest_.emplace();
    digest.addFile(options.scene);
    for (const SceneOverride &override : options.overrides) digest.add(override.text);
    if (options.view) digest.add(fmt::format("view {}", static_cast<int>(*options.view)));
    if (options.rig) digest.add(fmt::format("rig {}", static_cast<int>(*options.rig)));
    if (options.subdivision) digest.add(fmt::format("subdivision {}", *options.subdivision));
    if (scene.render.workflow != Workflow::linear) digest.add("workflow " + workflowText(scene.render.workflow));
    addFiles(scene, digest);
    std::ranges::copy_if(scene.images, std::back_inserter(sequences_),
                         [](const ImageDescription &image) { return image.sequence.has_value(); });
    digest.addFile(module);
    const Region region = regionOf(job);
    digest.add(fmt::format("{}x{} {},{},{},{} {} {} {} {} {} {}", job.width, job.height, region.left, region.top,
                           region.right, region.bottom, job.samples, job.recursionDepth, job.camera,
                           static_cast<int>(job.order), job.seed, job.lockNoise));
    if (job.filter != FilterDescription{})
        digest.add(fmt::format("filter {} {}", static_cast<int>(job.filter.shape), job.filter.width));
    if (job.backdropLeftOut) digest.add("alpha");
    for (const std::string &layer : job.layers) digest.add("layer " + layer);
    if (const std::string files = digestText(options.files); !files.empty()) digest.add(files);
    digest.add(VELM_VERSION);
}

std::string PictureDigest::of(int frame) const {
    if (!digest_) return {};
    Digest digest = *digest_;
    digest.add(std::to_string(frame));
    for (const ImageDescription &image : sequences_)
        digest.addFile(numberedFile(image.file, image.sequence->numberAt(frame)));
    return digest.text();
}

} // namespace velm::host
