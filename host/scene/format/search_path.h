// Where the files that a scene names are looked for.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace velm::host {

// Directories in the order in which they are searched, after the scene file's own.
struct SearchPath {
    std::vector<std::string> directories;
};

// The named directories, then those of `environment` (the value of VELM_DATA: directories parted by colons; may be
// null), then the system's own that exist on this machine.
SearchPath makeSearchPath(const std::vector<std::string> &named, const char *environment);

// The file that `name` stands for, seen from a scene in `sceneDirectory`: an absolute name is taken as it is, another
// is looked for beside the scene and then along the path. Nothing when there is no such regular file.
std::optional<std::string> findFile(const std::string &name, const std::string &sceneDirectory, const SearchPath &path);

// Why that is nothing, for people: what stands there instead, such as a directory, or the places that were looked in.
std::string whyNotFound(const std::string &name, const std::string &sceneDirectory, const SearchPath &path);

} // namespace velm::host
