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

inline const std::string kExamples = VELM_SOURCE_DIR "/examples/";
inline std::string exampleFile(const std::string &name) {
    const std::string json = kExamples + name + ".json";
    return std::filesystem::exists(json) ? json : kExamples + name + ".lws";
}
// In order.
inline std::vector<std::string> exampleNames() {
    std::vector<std::string> names = stemsIn(kExamples, ".json"), others = stemsIn(kExamples, ".lws");
    names.insert(names.end(), others.begin(), others.end());
    std::ranges::sort(names);
    return names;
}

} // namespace velm::host::test
