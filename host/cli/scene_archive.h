// A scene and all files that it reads, in a directory of their own.
#pragma once

#include "host/cli/scene_files.h"
#include "host/scene/format/description.h"

#include <string>
#include <vector>

namespace velm::host {

// Where the files of a scene are put in its archive, relative to the archive's directory. Files keep their names, since
// the names of surfaces and images that object files bring follow them, and files that a mesh file names keep their
// location relative to it. Files of one name go to numbered directories: "meshes/tree.obj", "meshes-2/tree.obj".
class ArchiveLayout {
  public:
    struct Entry {
        std::string from, to;
    };

    // Files outside of the directory of the mesh that names them are left out, with a warning in `warnings`.
    ArchiveLayout(const std::vector<SceneFile> &files, Warnings &warnings);

    // Each file once, and no two at one location.
    const std::vector<Entry> &entries() const { return entries_; }
    // The location of a file that the scene names; empty for any other name.
    std::string locationOf(const std::string &file) const;

  private:
    // Adds the entries, or none of them and gives false if one of the locations is taken by another file.
    bool add(const std::vector<Entry> &entries);

    std::vector<Entry> entries_;
};

// The scene with the files of `layout` in `directory`. Images that object files bring become the scene's own.
SceneDescription archivedScene(SceneDescription scene, const ArchiveLayout &layout, const std::string &directory);

} // namespace velm::host
