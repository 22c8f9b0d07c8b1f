// Two types with one name in one namespace would share their implicit functions, such as destructors: the linker keeps
// one of them for both, without a warning.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

// The types that a file of the host defines outside unnamed namespaces, each with its namespace. Definitions begin in
// the first column, since the contents of namespaces are not indented.
std::vector<std::string> typesIn(const fs::path &file) {
    static const std::regex begin(R"(^namespace ([\w:]+) \{)"),
        definition(R"(^(?:struct|class|union) (\w+)\b(?!::).*\{)");
    std::ifstream stream(file);
    std::vector<std::string> types;
    std::string space;
    bool isUnnamed = false;
    for (std::string line; std::getline(stream, line);) {
        std::smatch match;
        if (line == "namespace {" || line == "} // namespace")
            isUnnamed = line == "namespace {";
        else if (std::regex_search(line, match, begin))
            space = match[1];
        else if (line.starts_with("} // namespace "))
            space.clear();
        else if (!isUnnamed && std::regex_search(line, match, definition))
            types.push_back(space + "::" + match[1].str());
    }
    return types;
}

TEST(TypeNames, AreDefinedOnceInTheHost) {
    std::map<std::string, std::string> files; // by type
    for (const auto &entry : fs::recursive_directory_iterator(fs::path(VELM_SOURCE_DIR) / "host")) {
        const std::string file = entry.path().string();
        if (!file.ends_with(".h") && !file.ends_with(".cpp")) continue;
        for (const std::string &type : typesIn(entry.path())) {
            const auto [other, isNew] = files.emplace(type, file);
            EXPECT_TRUE(isNew || other->second == file)
                << file << " defines " << type << ", as " << other->second << " does";
        }
    }
    EXPECT_GT(files.size(), 100U) << "the definitions were not found";
}

} // namespace
