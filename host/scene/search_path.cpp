#include "host/scene/search_path.h"

#include <filesystem>
#include <string_view>

namespace velm {

namespace {

namespace fs = std::filesystem;

// Where packages of the system keep models and panoramas: the examples use those of glmark2-data and blender-data.
constexpr const char *kSystemDirectories[] = {"/usr/share/glmark2/models",
                                              "/usr/share/blender/datafiles/studiolights/world"};

bool isFile(const fs::path &path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
}

} // namespace

SearchPath makeSearchPath(const std::vector<std::string> &named, const char *environment) {
    SearchPath path{.directories = named};
    std::string_view rest = environment ? environment : "";
    while (!rest.empty()) {
        const auto colon = rest.find(':');
        if (const auto directory = rest.substr(0, colon); !directory.empty()) path.directories.emplace_back(directory);
        rest = colon == std::string_view::npos ? std::string_view{} : rest.substr(colon + 1);
    }
    for (const char *directory : kSystemDirectories) {
        std::error_code error;
        if (fs::is_directory(directory, error)) path.directories.emplace_back(directory);
    }
    return path;
}

std::optional<std::string> findFile(const std::string &name, const std::string &sceneDirectory,
                                    const SearchPath &path) {
    if (fs::path(name).is_absolute()) return isFile(name) ? std::optional(name) : std::nullopt;
    if (const fs::path beside = fs::path(sceneDirectory) / name; isFile(beside)) return beside.string();
    for (const std::string &directory : path.directories)
        if (const fs::path candidate = fs::path(directory) / name; isFile(candidate)) return candidate.string();
    return std::nullopt;
}

} // namespace velm
