// The directories in which the files of a scene are looked for.
#pragma once

#include "host/base/image_sequence.h"

#include <optional>
#include <string>
#include <vector>

namespace velm::host {

// Directories in the order in which they are searched, after the scene file's own.
struct SearchPath {
    std::vector<std::string> directories;
};

// The named directories, then those of `environment` (the value of VELM_DATA: directories separated by colons; may be
// null), then those system directories that exist on this machine.
SearchPath makeSearchPath(const std::vector<std::string> &named, const char *environment);

// The file that a scene in `sceneDirectory` calls `name`, which may also be an image inside of a file (see
// embedded_images.h). An absolute name is used as it is; any other is looked for in
// the scene's directory and then along the path. Nothing when there is no such regular file.
std::optional<std::string> findFile(const std::string &name, const std::string &sceneDirectory, const SearchPath &path);

// The same for a sequence of images: the path of its pattern in the first directory that has one of its files.
std::optional<std::string> findSequence(const std::string &pattern, const ImageSequence &sequence,
                                        const std::string &sceneDirectory, const SearchPath &path);

// Why findFile or findSequence gives nothing, for people: what the name belongs to instead, such as a directory, or the
// directories that were searched.
std::string whyNotFound(const std::string &name, const std::string &sceneDirectory, const SearchPath &path);

} // namespace velm::host
