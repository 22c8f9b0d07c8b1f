#include "host/cli/scene_files.h"

#include "host/base/names.h"
#include "host/io/embedded_images.h"
#include "host/io/files.h"
#include "host/render/geometry/mesh.h"

#include <algorithm>
#include <cstdint>
#include <fmt/format.h>
#include <iterator>
#include <set>
#include <utility>
#include <variant>

namespace velm::host {

namespace {

// Adds the files of a sequence of images to `files`, and warns of those that cannot be read.
void addSequence(const ImageDescription &image, const RenderDescription &render, std::vector<SceneFile> &files,
                 Warnings &warnings) {
    SceneFile together{.kind = SceneFile::Kind::image, .file = {}, .others = {}};
    for (std::string &file : filesOfImage(image, render)) {
        if (const auto why = whyUnreadable(file))
            warnings.add({.location = image.fileLocation,
                          .path = pathTo(pathTo("images", image.name), "file"),
                          .brief = fmt::format("no file for a frame of the image {}", inQuotes(image.name)),
                          .message = fmt::format("{}: {}", file, *why)});
        else if (together.file.empty())
            together.file = std::move(file);
        else
            together.others.push_back(std::move(file));
    }
    if (!together.file.empty()) files.push_back(std::move(together));
}

// The buffers of the glTF file `file`, if that is the file with the image inside; nothing for all other images. Warns
// of a file that cannot be read.
std::vector<std::string> othersOf(const ImageDescription &image, const std::string &file, Warnings &warnings) {
    if (file == image.file) return {}; // the image is not inside of another file
    try {
        std::vector<std::string> opened = filesOfEmbeddedImages(file);
        opened.erase(opened.begin());
        return opened;
    } catch (const InputError &error) {
        warnings.add({.location = image.fileLocation,
                      .path = pathTo(pathTo("images", image.name), "file"),
                      .brief = fmt::format("an image that cannot be read: {}", inQuotes(image.name)),
                      .message = error.what()});
        return {};
    }
}

} // namespace

std::vector<std::string> filesOfImage(const ImageDescription &image, const RenderDescription &render) {
    if (!image.sequence) return {fileToOpen(image.file)};
    std::set<int> numbers;
    const std::int64_t count = std::int64_t{image.sequence->last} - image.sequence->first + 1;
    for (std::int64_t frame = render.firstFrame; frame <= render.lastFrame && std::ssize(numbers) < count;
         frame += render.frameStep)
        numbers.insert(image.sequence->numberAt(static_cast<int>(frame)));
    std::vector<std::string> files;
    for (const int number : numbers) files.push_back(numberedFile(image.file, number));
    return files;
}

std::vector<SceneFile> filesOfScene(const SceneDescription &scene, Warnings &warnings) {
    std::vector<SceneFile> files;
    const auto isListed = [&files](const std::string &file) {
        return std::ranges::count(files, file, &SceneFile::file) > 0;
    };
    for (const ObjectDescription &object : scene.objects) {
        const auto *mesh = std::get_if<MeshFile>(&object.shape);
        if (!mesh || isListed(mesh->file)) continue;
        std::vector<std::string> opened = filesOfMesh(mesh->file);
        opened.erase(opened.begin());
        files.push_back({.kind = SceneFile::Kind::mesh, .file = mesh->file, .others = std::move(opened)});
    }
    if (!scene.surfaceFile.empty() && !isListed(scene.surfaceFile))
        files.push_back({.kind = SceneFile::Kind::object, .file = scene.surfaceFile, .others = {}});
    for (const ImageDescription &image : scene.images) {
        if (!image.notFound.empty())
            warnings.add({.location = image.fileLocation,
                          .path = pathTo(pathTo("images", image.name), "file"),
                          .brief = "no image " + image.name,
                          .message = image.notFound});
        else if (image.sequence)
            addSequence(image, scene.render, files, warnings);
        else if (const std::string file = fileToOpen(image.file); !isListed(file))
            files.push_back({.kind = SceneFile::Kind::image, .file = file, .others = othersOf(image, file, warnings)});
    }
    return files;
}

} // namespace velm::host
