// Which directories may include which. Above all, the module and the host share nothing but the plug-in interface.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

struct Rule {
    std::string from;                 // files below this directory ...
    std::vector<std::string> allowed; // ... may include these of ours: directories end in a slash, files do not
};

// nodes/ does not list itself: no node may include another.
const std::vector<Rule> rules = {
    {"nodes/", {"module/", "shading/", "random/", "share/"}},
    {"shading/", {"shading/", "module/", "random/"}},
    {"random/", {"random/", "module/host.h", "module/interface/"}},
    {"share/", {"share/", "module/host.h", "module/interface/"}},
    {"module/", {"module/"}},
    {"host/", {"host/", "module/host.h", "module/interface/"}},
};

struct Include {
    std::string file, included;
    int line;
};

bool isSource(const fs::path &path) {
    const auto ending = path.extension();
    return ending == ".h" || ending == ".cpp" || ending == ".c";
}

std::vector<Include> includesBelow(const fs::path &root, const std::string &directory) {
    static const std::regex pattern(R"(^\s*#\s*include\s*"([^"]+)\")");
    std::vector<Include> found;
    if (!fs::exists(root / directory)) return found;
    for (const auto &entry : fs::recursive_directory_iterator(root / directory)) {
        if (!entry.is_regular_file() || !isSource(entry.path())) continue;
        std::ifstream stream(entry.path());
        std::string text;
        for (int line = 1; std::getline(stream, text); ++line) {
            std::smatch match;
            if (std::regex_search(text, match, pattern))
                found.push_back({fs::relative(entry.path(), root).string(), match[1], line});
        }
    }
    return found;
}

bool isAllowed(const Rule &rule, const std::string &included) {
    for (const std::string &allowed : rule.allowed)
        if (allowed.ends_with('/') ? included.starts_with(allowed) : included == allowed) return true;
    return false;
}

TEST(IncludeRules, EveryDirectoryIncludesOnlyWhatItsRuleAllows) {
    const fs::path root = VELM_SOURCE_DIR;
    for (const Rule &rule : rules) {
        const auto includes = includesBelow(root, rule.from);
        if (rule.from != "share/") {
            EXPECT_FALSE(includes.empty()) << "found no includes below " << rule.from;
        }
        for (const Include &include : includes)
            EXPECT_TRUE(isAllowed(rule, include.included))
                << include.file << ":" << include.line << " includes " << include.included;
    }
}

TEST(IncludeRules, NodesHaveNoHeaders) {
    for (const auto &entry : fs::recursive_directory_iterator(fs::path(VELM_SOURCE_DIR) / "nodes"))
        EXPECT_NE(entry.path().extension(), ".h") << entry.path() << ": one node, one file";
}

} // namespace
