// Who may include whom. The wall stands only as long as nobody looks over it.
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

// A node's own directory is not among what nodes may include: no node knows another.
const std::vector<Rule> rules = {
    {"nodes/", {"module/", "random/", "share/"}},
    {"random/", {"random/", "module/host.h"}},
    {"share/", {"share/", "module/host.h"}},
    {"module/", {"module/", "random/random.h"}}, // what glossy nodes share draws noise
    {"host/", {"host/", "module/host.h"}},
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

// The layers of the stand-alone host, lowest first; a layer may include itself and those before it.
const std::vector<std::vector<std::string>> hostLayers = {
    {"host/guard/", "host/error.h", "host/one_line.h", "host/one_line.cpp"},
    {"host/state/", "host/thread_role.h", "host/suggest.h", "host/suggest.cpp", "host/warnings.h", "host/warnings.cpp"},
    {"host/services/", "host/panel/", "host/image/", "host/scene/description.h"},
    {"host/graph/"},
    {"host/files/"},
    {"host/load/", "host/scene/", "host/render/"},
    {"host/check/"},
    {"host/cli/"},
};

int layerOf(const std::string &path) {
    int layer = -1;
    size_t longest = 0;
    for (size_t i = 0; i < hostLayers.size(); ++i)
        for (const std::string &prefix : hostLayers[i])
            if (path.starts_with(prefix) && prefix.size() > longest) {
                longest = prefix.size();
                layer = static_cast<int>(i);
            }
    return layer;
}

TEST(IncludeRules, EveryDirectoryIncludesOnlyWhatItMay) {
    const fs::path root = VELM_SOURCE_DIR;
    for (const Rule &rule : rules) {
        const auto includes = includesBelow(root, rule.from);
        if (rule.from != "share/") {
            EXPECT_FALSE(includes.empty()) << "nothing was read below " << rule.from;
        }
        for (const Include &include : includes)
            EXPECT_TRUE(isAllowed(rule, include.included))
                << include.file << ":" << include.line << " includes " << include.included;
    }
}

TEST(IncludeRules, NoLayerOfTheHostIncludesALayerAboveIt) {
    // The services of nodes are tables over the graph, and stand with the other services all the same.
    static const std::regex aboveTheGraph(R"(^host/services/(lookup|node_\w+)\.(h|cpp)$)");
    for (const Include &include : includesBelow(VELM_SOURCE_DIR, "host/")) {
        if (include.included == "module/host.h" || std::regex_match(include.file, aboveTheGraph)) continue;
        const int from = layerOf(include.file), to = layerOf(include.included);
        EXPECT_GE(from, 0) << include.file << " belongs to no layer";
        if (std::regex_match(include.included, aboveTheGraph)) {
            EXPECT_GE(from, layerOf("host/graph/")) << include.file << " includes " << include.included;
            continue;
        }
        EXPECT_LE(to, from) << include.file << ":" << include.line << " includes " << include.included;
    }
}

TEST(IncludeRules, NoHeaderOfANodeIsThere) {
    for (const auto &entry : fs::recursive_directory_iterator(fs::path(VELM_SOURCE_DIR) / "nodes"))
        EXPECT_NE(entry.path().extension(), ".h") << entry.path() << ": one node, one file";
}

} // namespace
