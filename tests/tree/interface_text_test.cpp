// Checks of the plug-in interface's headers that no compiler makes: that every callback is documented, and that no code
// and no record is missing from the assertions that pin them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace fs = std::filesystem;

namespace {

const fs::path root = VELM_SOURCE_DIR;

std::string read(const fs::path &file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<fs::path> interfaceHeaders() {
    std::vector<fs::path> headers;
    for (const auto &entry : fs::directory_iterator(root / "module/interface")) headers.push_back(entry.path());
    return headers;
}

// A declaration up to its semicolon or brace, and the comment that belongs to it: on the lines directly above it, or
// behind it on its own line.
struct Declaration {
    std::string code, comment;
};

// Splits the text of a C header into its declarations; preprocessor directives are left out.
class Splitter {
  public:
    explicit Splitter(const std::string &text) : text_(text) {}

    std::vector<Declaration> split() {
        while (at_ < text_.size()) step();
        return std::move(found_);
    }

  private:
    bool isAt(const char *what) const { return text_.compare(at_, std::string(what).size(), what) == 0; }
    bool isBlankBefore(std::size_t at) const { // on the same line
        while (at > 0 && text_[at - 1] == ' ') --at;
        return at == 0 || text_[at - 1] == '\n';
    }

    void step() {
        if (isAt("/*")) return takeComment();
        const char next = text_[at_];
        if (next == '#' && isBlankBefore(at_)) return skipDirective();
        ++at_;
        if (next == '\n') {
            if (code_.empty() && ++newLines_ > 1)
                above_.clear(); // a comment above a blank line is about something else
            isBehind_ = false;
        } else if (next == ';' || next == '{' || next == '}') {
            finish(next == ';');
        } else if (next != ' ' || !code_.empty()) {
            code_ += next;
        }
    }

    void takeComment() {
        const bool isAbove = isBlankBefore(at_);
        const std::size_t end = text_.find("*/", at_ + 2) + 2;
        const std::string comment = text_.substr(at_, end - at_);
        at_ = end;
        if (isAbove) {
            above_ = comment;
            newLines_ = 0;
        } else if (isBehind_) {
            found_.back().comment = comment;
        }
    }

    void skipDirective() {
        for (; at_ < text_.size() && text_[at_] != '\n'; ++at_) {
            if (isAt("\\\n")) ++at_;
            if (isAt("/*")) at_ = text_.find("*/", at_ + 2) + 1;
        }
        above_.clear();
    }

    void finish(bool isDeclaration) {
        if (isDeclaration) found_.push_back({.code = code_, .comment = above_});
        isBehind_ = isDeclaration;
        code_.clear();
        above_.clear();
    }

    const std::string &text_;
    std::size_t at_ = 0;
    std::string code_, above_;
    int newLines_ = 0;
    bool isBehind_ = false; // a comment on this line would be about the last declaration
    std::vector<Declaration> found_;
};

std::vector<Declaration> declarationsOf(const std::string &text) { return Splitter(text).split(); }

// The name of the function type that a declaration defines, as HostLookup; empty for any other declaration.
std::string functionType(const std::string &code) {
    static const std::regex pattern(R"(^typedef\s[^(]*?(\w+)\([^*])");
    std::smatch match;
    return std::regex_search(code, match, pattern) ? match[1].str() : "";
}

// The name of a pointer to a function that a declaration makes a member of its record; empty for any other.
std::string functionMember(const std::string &code, const std::set<std::string> &types) {
    static const std::regex direct(R"(\(\*(\w+)(\[\w+\])?\)\()"), byType(R"(^(\w+) \*(\w+)$)");
    std::smatch match;
    if (std::regex_search(code, match, direct)) return match[1];
    return std::regex_search(code, match, byType) && types.contains(match[1]) ? match[2].str() : "";
}

bool endsWithThread(const std::string &comment) {
    static const std::regex pattern(
        R"([\s\S]*\w[\s\S]*\[(interface thread; not while rendering|)"
        R"(interface thread; while drawing|between frames|render threads|any thread)\] \*/)");
    return std::regex_match(comment, pattern);
}

struct Callbacks {
    int count = 0;
    std::vector<std::string> undocumented; // without a comment that ends with a thread
};

Callbacks callbacksOf(const std::vector<std::string> &texts) {
    std::set<std::string> types;
    for (const std::string &text : texts)
        for (const Declaration &each : declarationsOf(text)) types.insert(functionType(each.code));
    Callbacks result;
    for (const std::string &text : texts)
        for (const Declaration &each : declarationsOf(text)) {
            const std::string type = functionType(each.code);
            const std::string name = type.empty() ? functionMember(each.code, types) : type;
            if (name.empty()) continue;
            ++result.count;
            if (!endsWithThread(each.comment)) result.undocumented.push_back(name);
        }
    return result;
}

using Names = std::vector<std::string>;

Names undocumentedIn(const std::string &text) { return callbacksOf({text}).undocumented; }

TEST(InterfaceText, FindsCallbacksWithoutAComment) {
    const std::string documentation = "/* Does it. [any thread] */\n";
    EXPECT_EQ(undocumentedIn(documentation + "typedef int HostA(int a,\n    int b);"), Names{});
    EXPECT_EQ(undocumentedIn("typedef int HostA(int a,\n    int b);"), Names{"HostA"});
    EXPECT_EQ(undocumentedIn("struct A {\n    void (*run)(void);\n};"), Names{"run"});
    EXPECT_EQ(undocumentedIn("struct A {\n    void (*run[3])(void);\n};"), Names{"run"});
    EXPECT_EQ(undocumentedIn("struct A {\n    const char *const *(*run)(int); /* It runs. [between frames] */\n};"),
              Names{});
    EXPECT_EQ(undocumentedIn(documentation +
                             "typedef int HostA(int a);\nstruct B {\n    HostA *member;\n    int *other;\n};"),
              Names{"member"});
}

TEST(InterfaceText, DoesNotTakeTheCommentOfSomethingElse) {
    const std::string member = "    void (*run)(void);\n";
    EXPECT_EQ(undocumentedIn("struct A {\n    int a; /* About something else. [any thread] */\n" + member),
              Names{"run"});
    EXPECT_EQ(undocumentedIn("struct A { /* About something else. [any thread] */\n" + member), Names{"run"});
    EXPECT_EQ(undocumentedIn("/* About something else. [any thread] */\nstruct A {\n" + member), Names{"run"});
    EXPECT_EQ(undocumentedIn("    /* About something else. [any thread] */\n\n" + member), Names{"run"});
    EXPECT_EQ(undocumentedIn("    /* Runs both. [any thread] */\n" + member + "    void (*walk)(void);\n"),
              Names{"walk"});
    EXPECT_EQ(undocumentedIn("    /* Has no thread. */\n" + member), Names{"run"});
    EXPECT_EQ(undocumentedIn("    /* [any thread] The thread is not at the end. */\n" + member), Names{"run"});
    EXPECT_EQ(undocumentedIn("    /* Names no known thread. [my thread] */\n" + member), Names{"run"});
    EXPECT_EQ(undocumentedIn("    /* [any thread] */\n" + member), Names{"run"});
}

TEST(InterfaceText, EveryCallbackHasACommentThatEndsWithItsThread) {
    std::vector<std::string> texts;
    for (const fs::path &header : interfaceHeaders()) texts.push_back(read(header));
    const Callbacks callbacks = callbacksOf(texts);
    EXPECT_EQ(callbacks.undocumented, Names{});
    EXPECT_GT(callbacks.count, 200);
}

TEST(InterfaceText, EveryHeaderBeginsWithAnExplanationAndAGuard) {
    for (const fs::path &header : interfaceHeaders()) {
        std::string guard = "VELM_MODULE_INTERFACE_";
        for (const char letter : header.stem().string()) guard += static_cast<char>(std::toupper(letter));
        guard += "_H";
        const std::string text = read(header);
        EXPECT_TRUE(text.starts_with("/*\n")) << header;
        std::string opening = " */\n#ifndef ";
        opening.append(guard).append("\n#define ").append(guard).append("\n");
        EXPECT_NE(text.find(opening), std::string::npos) << header;
        EXPECT_LT(std::count(text.begin(), text.end(), '\n'), 400) << header;
    }
}

TEST(InterfaceText, HostHeaderIncludesEveryHeader) {
    const std::string text = read(root / "module/host.h");
    for (const fs::path &header : interfaceHeaders())
        EXPECT_NE(text.find("#include \"module/interface/" + header.filename().string() + "\"\n"), std::string::npos)
            << header;
}

// The words of a text that match the pattern's first group.
std::set<std::string> wordsOf(const std::string &text, const char *pattern) {
    const std::regex expression(pattern);
    std::set<std::string> words;
    for (std::sregex_iterator at(text.begin(), text.end(), expression), end; at != end; ++at) words.insert((*at)[1]);
    return words;
}

std::string withoutComments(const std::string &text) {
    static const std::regex comment(R"(/\*([^*]|\*(?!/))*\*/)");
    return std::regex_replace(text, comment, "");
}

TEST(InterfaceText, EveryCodeAndEveryRecordIsPinned) {
    const auto inCodes = wordsOf(read(root / "tests/module/interface_codes.cpp"), R"((\w+))");
    const auto inSlots = wordsOf(read(root / "tests/module/interface_slots.cpp"), R"((\w+))");
    std::size_t codes = 0, records = 0;
    for (const fs::path &header : interfaceHeaders()) {
        if (header.filename() == "layout.h") continue; // has assertions of its own, and macros for them
        const std::string text = withoutComments(read(header));
        for (const std::string &code : wordsOf(text, R"((?:#define |[{,]\s*)(k[A-Z]\w*|HOST_\w+))")) {
            ++codes;
            EXPECT_TRUE(inCodes.contains(code)) << code << " of " << header << " is not in interface_codes.cpp";
        }
        for (const std::string &record : wordsOf(text, R"((?:struct|union) (\w+) \{)")) {
            ++records;
            EXPECT_TRUE(inSlots.contains(record)) << record << " of " << header << " is not in interface_slots.cpp";
        }
    }
    EXPECT_GT(codes, 150u);
    EXPECT_GT(records, 35u);
}

} // namespace
