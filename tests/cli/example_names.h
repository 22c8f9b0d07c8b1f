// The names of the scenes in examples/.
#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace velm::host::test {

// The names of the files in a directory that have this ending, without it, in order.
inline std::vector<std::string> stemsIn(const std::filesystem::path &directory, const char *ending) {
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(directory))
        if (entry.path().extension() == ending) names.push_back(entry.path().stem());
    std::ranges::sort(names);
    return names;
}

inline std::string exampleFile(const std::string &name) { return VELM_SOURCE_DIR "/examples/" + name + ".json"; }
inline std::vector<std::string> exampleNames() { return stemsIn(VELM_SOURCE_DIR "/examples", ".json"); }

} // namespace velm::host::test
