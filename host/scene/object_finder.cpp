#include "host/scene/object_finder.h"

#include "host/base/names.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <iterator>

namespace velm::host {

namespace {

namespace fs = std::filesystem;

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), [](unsigned char letter) { return std::tolower(letter); });
    return lower;
}

constexpr std::ptrdiff_t kMostParts = 64; // of a path; only the last ones of a longer one count

// A path of any system, in parts.
struct ForeignPath {
    bool isAbsolute = false;        // on this system
    std::vector<std::string> parts; // without the drive

    explicit ForeignPath(std::string_view path) : isAbsolute(path.starts_with('/')) {
        const std::size_t drive = path.find(':');
        if (drive != std::string_view::npos && drive < path.find_first_of("/\\")) path.remove_prefix(drive + 1);
        while (!path.empty()) {
            const std::size_t end = std::min(path.find_first_of("/\\"), path.size());
            const std::string_view part = path.substr(0, end);
            if (!part.empty() && part != ".") parts.emplace_back(part);
            path.remove_prefix(std::min(end + 1, path.size()));
        }
        if (std::ssize(parts) > kMostParts) parts.erase(parts.begin(), parts.end() - kMostParts);
    }

    // The parts from that one on.
    std::string from(std::size_t part) const {
        return fmt::format("{}", fmt::join(parts.begin() + static_cast<std::ptrdiff_t>(part), parts.end(), "/"));
    }
};

bool isFile(const fs::path &path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
}

bool isThere(const fs::path &path) {
    std::error_code error;
    return fs::exists(path, error);
}

// The parent of the nearest directory "Scenes" in a path; nothing when there is none.
std::optional<fs::path> aboveScenes(fs::path path) {
    if (!path.has_filename()) path = path.parent_path(); // after a slash at its end
    for (; path.has_filename(); path = path.parent_path())
        if (lowerCase(path.filename().string()) == "scenes") return path.parent_path();
    return std::nullopt;
}

// The directory of a project, which has the directories "Objects", "Scenes" and so on; else the scene's own. Relative
// if the scene's path is relative and names it.
fs::path contentDirectory(const fs::path &sceneDirectory) {
    if (const auto found = aboveScenes(sceneDirectory.lexically_normal())) return *found;
    std::error_code error;
    const fs::path whole = fs::absolute(sceneDirectory.empty() ? "." : sceneDirectory, error).lexically_normal();
    return aboveScenes(whole).value_or(sceneDirectory);
}

} // namespace

ObjectFinder::ObjectFinder(const std::string &sceneFile, const SearchPath &path) {
    const fs::path own = fs::path(sceneFile).parent_path();
    const auto add = [this](const fs::path &directory) {
        const std::string name = directory.empty() ? "." : directory.string();
        if (std::ranges::count(directories_, name) == 0) directories_.push_back(name);
    };
    add(contentDirectory(own));
    add(own);
    for (const std::string &directory : path.directories) add(directory);
}

std::optional<std::string> ObjectFinder::find(std::string_view name) {
    const ForeignPath path(name);
    if (path.isAbsolute && isFile(fs::path(name))) return std::string(name);
    for (std::size_t first = 0; first < path.parts.size(); ++first) {
        const std::vector<std::string> parts(path.parts.begin() + static_cast<std::ptrdiff_t>(first), path.parts.end());
        for (const std::string &directory : directories_)
            if (auto found = findIn(directory, parts)) return found;
    }
    return std::nullopt;
}

// The file at the end of a path below a directory.
std::optional<std::string> ObjectFinder::findIn(const std::string &directory, const std::vector<std::string> &parts) {
    fs::path at = directory == "." ? fs::path() : fs::path(directory);
    for (const std::string &part : parts) {
        fs::path next = at / part;
        if (!isThere(next)) {
            const Names &names = namesIn(at.empty() ? "." : at.string());
            const auto found = names.find(lowerCase(part));
            if (found == names.end()) return std::nullopt;
            next = at / found->second;
        }
        at = std::move(next);
    }
    if (!isFile(at)) return std::nullopt;
    return at.string();
}

const ObjectFinder::Names &ObjectFinder::namesIn(const std::string &directory) {
    const auto [entry, isNew] = names_.try_emplace(directory);
    if (!isNew) return entry->second;
    std::error_code error;
    for (fs::directory_iterator it(directory, error), end; !error && it != end; it.increment(error)) {
        const std::string name = it->path().filename().string();
        std::string &known = entry->second[lowerCase(name)];
        if (known.empty() || name < known) known = name; // independent of the order of the directory
    }
    return entry->second;
}

std::string ObjectFinder::whyNotFound(std::string_view name) const {
    const ForeignPath path(name);
    std::vector<std::string> tried;
    for (std::size_t first = 0; first < path.parts.size(); ++first) tried.push_back(inQuotes(path.from(first)));
    return fmt::format("there is no file {}; looked for {} in {}", inQuotes(name), fmt::join(tried, ", "),
                       fmt::join(directories_, ", "));
}

} // namespace velm::host
