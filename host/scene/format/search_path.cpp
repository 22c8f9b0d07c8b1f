#include "host/scene/format/search_path.h"

#include "host/base/names.h"
#include "host/io/embedded_images.h"
#include "host/io/files.h"

#include <cerrno>
#include <filesystem>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <string_view>
#include <sys/stat.h>

namespace velm::host {

namespace {

namespace fs = std::filesystem;

// Where system packages install models and panoramas: the examples use those of glmark2-data and blender-data.
constexpr const char *kSystemDirectories[] = {"/usr/share/glmark2/models",
                                              "/usr/share/blender/datafiles/studiolights/world"};

bool isFile(const fs::path &path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
}

// Whether there is no file or directory of that name, as far as this process can see.
bool isAbsent(const std::string &path) {
    struct stat found {};
    return ::stat(path.c_str(), &found) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

// The paths at which a name is looked for, in order.
std::vector<std::string> candidates(const std::string &name, const std::string &sceneDirectory,
                                    const SearchPath &path) {
    if (fs::path(name).is_absolute()) return {name};
    std::vector<std::string> all{(fs::path(sceneDirectory) / name).string()};
    for (const std::string &directory : path.directories) all.push_back((fs::path(directory) / name).string());
    return all;
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
    for (const std::string &candidate : candidates(name, sceneDirectory, path))
        if (isFile(fileToOpen(candidate))) return candidate;
    return std::nullopt;
}

std::optional<std::string> findSequence(const std::string &pattern, const ImageSequence &sequence,
                                        const std::string &sceneDirectory, const SearchPath &path) {
    for (const std::string &candidate : candidates(pattern, sceneDirectory, path)) {
        const fs::path directory = fs::path(candidate).parent_path(), name = fs::path(candidate).filename();
        std::error_code error;
        for (fs::directory_iterator it(directory.empty() ? "." : directory, error), end; !error && it != end;
             it.increment(error)) {
            const auto number = numberOfFile(name.string(), it->path().filename().string());
            if (number && sequence.has(*number) && isFile(it->path())) return candidate;
        }
    }
    return std::nullopt;
}

std::string whyNotFound(const std::string &name, const std::string &sceneDirectory, const SearchPath &path) {
    for (const std::string &candidate : candidates(name, sceneDirectory, path)) {
        if (isAbsent(candidate)) continue;
        if (const auto reason = whyUnreadable(candidate))
            return fmt::format("cannot read {}: {}", inQuotes(candidate), *reason);
    }
    if (fs::path(name).is_absolute()) return fmt::format("there is no file {}", inQuotes(name));
    return fmt::format("there is no file {}; looked in {}{}{}", inQuotes(name),
                       sceneDirectory.empty() ? "." : sceneDirectory, path.directories.empty() ? "" : ", ",
                       fmt::join(path.directories, ", "));
}

} // namespace velm::host
