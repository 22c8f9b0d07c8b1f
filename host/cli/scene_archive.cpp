#include "host/cli/scene_archive.h"

#include "host/io/embedded_images.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <variant>

namespace velm::host {

namespace {

namespace fs = std::filesystem;

const char *directoryOf(SceneFile::Kind kind) {
    switch (kind) {
    case SceneFile::Kind::mesh: return "meshes";
    case SceneFile::Kind::object: return "objects";
    case SceneFile::Kind::image: return "images";
    }
    return "";
}

bool isBelow(const fs::path &relative) {
    return !relative.empty() && !relative.is_absolute() && *relative.begin() != "..";
}

} // namespace

ArchiveLayout::ArchiveLayout(const std::vector<SceneFile> &files, Warnings &warnings) {
    for (const SceneFile &file : files) {
        const fs::path path = fs::absolute(file.file).lexically_normal();
        std::vector<Entry> together{{.from = file.file, .to = path.filename()}};
        for (const std::string &other : file.others) {
            const fs::path relative = fs::absolute(other).lexically_normal().lexically_relative(path.parent_path());
            if (isBelow(relative))
                together.push_back({.from = other, .to = relative});
            else
                warnings.add({.location = {.file = file.file, .line = 0},
                              .path = "",
                              .brief = "files beside the archive",
                              .message = fmt::format(
                                  "the file {} is not below the directory of the mesh; it is left out", other)});
        }
        for (int number = 1;; ++number) {
            std::vector<Entry> entries = together;
            const std::string directory = number == 1 ? std::string(directoryOf(file.kind))
                                                      : fmt::format("{}-{}", directoryOf(file.kind), number);
            for (Entry &entry : entries) entry.to = directory + '/' + entry.to;
            if (add(entries)) break;
        }
    }
}

bool ArchiveLayout::add(const std::vector<Entry> &entries) {
    const auto isTaken = [this](const Entry &entry) {
        return std::ranges::any_of(entries_,
                                   [&entry](const Entry &one) { return one.to == entry.to && one.from != entry.from; });
    };
    if (std::ranges::any_of(entries, isTaken)) return false;
    for (const Entry &entry : entries)
        if (std::ranges::count(entries_, entry.to, &Entry::to) == 0) entries_.push_back(entry);
    return true;
}

std::string ArchiveLayout::locationOf(const std::string &file) const {
    const auto found = std::ranges::find(entries_, file, &Entry::from);
    return found == entries_.end() ? std::string() : found->to;
}

SceneDescription archivedScene(SceneDescription scene, const ArchiveLayout &layout, const std::string &directory) {
    const auto move = [&](std::string &file) {
        if (const std::string to = layout.locationOf(file); !to.empty()) file = (fs::path(directory) / to).string();
    };
    // The archive has all files of a sequence in one directory, that of the first file that is not missing.
    const auto moveSequence = [&](ImageDescription &image) {
        for (const std::string &file : filesOfImage(image, scene.render)) {
            const std::string to = layout.locationOf(file);
            if (to.empty()) continue;
            image.file =
                (fs::path(directory) / fs::path(to).replace_filename(fs::path(image.file).filename())).string();
            return;
        }
    };
    for (ObjectDescription &object : scene.objects)
        if (auto *mesh = std::get_if<MeshFile>(&object.shape)) move(mesh->file);
    for (SurfaceDescription &surface : scene.surfaces) move(surface.saved.file);
    for (ImageDescription &image : scene.images) {
        if (!image.notFound.empty()) {
            move(image.objectFile);
            continue;
        }
        image.objectFile.clear(); // so that the scene names it
        if (image.sequence) {
            moveSequence(image);
            continue;
        }
        std::string file = fileToOpen(image.file);
        const std::string inside = image.file.substr(file.size()); // the image's name in that file; may be empty
        move(file);
        image.file = file + inside;
    }
    move(scene.surfaceFile);
    scene.schema.clear(); // names a file by its location relative to the old scene
    return scene;
}

} // namespace velm::host
