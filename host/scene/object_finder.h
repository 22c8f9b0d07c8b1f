// Finds the object files that a LightWave scene names by paths of the machine that wrote the scene.
#pragma once

#include "host/scene/format/search_path.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

class ObjectFinder {
  public:
    // For the objects of that scene file. The directories are, in this order: the content directory, which is the
    // parent of the nearest directory "Scenes" above the scene, if any; the scene's own directory; those of the path.
    ObjectFinder(const std::string &sceneFile, const SearchPath &path);

    // The file that the scene calls `name`. An absolute path is tried first as it is. Then the whole path is tried in
    // each directory, then the path without its first part, and so on down to the file name alone. Slashes and
    // backslashes separate parts; a part that ends with a colon is a drive and ignored. Case is ignored where no name
    // matches exactly. Nothing when there is no such regular file.
    std::optional<std::string> find(std::string_view name);

    // A message for the user when `find` gives nothing: the names and directories that were tried.
    std::string whyNotFound(std::string_view name) const;

  private:
    using Names = std::map<std::string, std::string>; // from the name in lower case to the actual name

    std::optional<std::string> findIn(const std::string &directory, const std::vector<std::string> &parts);
    const Names &namesIn(const std::string &directory);

    std::vector<std::string> directories_;
    std::map<std::string, Names> names_; // by directory; filled on demand
};

} // namespace velm::host
