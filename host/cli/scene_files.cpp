#include "host/cli/scene_files.h"

#include "host/io/embedded_images.h"
#include "host/render/geometry/mesh.h"

#include <algorithm>
#include <variant>

namespace velm::host {

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
        else if (const std::string file = fileToOpen(image.file); !isListed(file))
            files.push_back({.kind = SceneFile::Kind::image, .file = file, .others = {}});
    }
    return files;
}

} // namespace velm::host
