// Finding the object files that a LightWave scene names: by paths of the machine that wrote it.
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
    // For the objects of that scene file. They are looked for in the content directory, which is the parent of a
    // directory "Scenes" that has the scene, else the scene's own; in the scene's own directory; along the path.
    ObjectFinder(const std::string &sceneFile, const SearchPath &path);

    // The file that the scene calls `name`: an absolute path as it is, then in each directory the whole path and what
    // remains of it without its first parts, down to the file's name alone. Backslashes separate parts, too; the part
    // before a colon is a drive. Upper and lower case may differ where no name fits exactly. Nothing when there is no
    // such regular file.
    std::optional<std::string> find(std::string_view name);

    // Why find gives nothing, for people: what was looked for, and where.
    std::string whyNotFound(std::string_view name) const;

  private:
    using Names = std::map<std::string, std::string>; // in lower case, to the name as it is

    std::optional<std::string> findIn(const std::string &directory, const std::vector<std::string> &parts);
    const Names &namesIn(const std::string &directory);

    std::vector<std::string> directories_;
    std::map<std::string, Names> names_; // by directory, as far as they were needed
};

} // namespace velm::host
