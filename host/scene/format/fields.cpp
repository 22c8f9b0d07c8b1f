#include "host/scene/format/fields.h"

#include "host/base/names.h"
#include "host/scene/format/quoted_list.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>

namespace velm::host {

void requireObject(const ReadContext &context, std::string_view what, const JsonValue &value) {
    if (value.kind != JsonValue::Kind::object)
        context.fail(value.line, fmt::format("{} must be an object in braces; found {}", what, value.shown()));
}

void failUnknownKey(const ReadContext &context, const JsonMember &member, std::string_view what,
                    const std::vector<std::string> &known) {
    context.fail(member.line,
                 fmt::format("{} has no key {}{}", what, inQuotes(member.key), suggestion(member.key, known)));
}

void failWrongKind(const ReadContext &context, const JsonValue &value, const char *key, const char *kind) {
    context.fail(value.line, fmt::format("\"{}\" does not go with the kind \"{}\"", key, kind));
}

void failMissingKey(const ReadContext &context, const JsonValue &object, const char *what, const char *key) {
    context.fail(object.line, fmt::format("{} needs \"{}\"", what, key));
}

void requireOneOf(const ReadContext &context, std::string_view what, const JsonValue &object,
                  std::span<const char *const> oneOf) {
    const char *first = nullptr;
    for (const JsonMember &member : object.members)
        for (const char *key : oneOf) {
            if (member.key != key) continue;
            if (first) context.fail(member.line, fmt::format("{} cannot be both \"{}\" and \"{}\"", what, first, key));
            first = key;
        }
    if (!first) context.fail(object.line, fmt::format("{} needs one of {}", what, quotedList(oneOf)));
}

void checkName(const ReadContext &context, const JsonMember &member, std::string_view what) {
    const auto &name = member.key;
    if (name.empty()) context.fail(member.line, fmt::format("{} has an empty name", what));
    if (name.front() == ' ' || name.back() == ' ')
        context.fail(member.line, fmt::format("the name \"{}\" starts or ends with a blank", name));
    if (name.find("->") != std::string::npos)
        context.fail(member.line,
                     fmt::format("the name \"{}\" contains \"->\", which separates the ends of connections", name));
}

std::string WriteContext::nameOf(const std::string &file) const {
    namespace fs = std::filesystem;
    if (!directory) return file;
    // Without "." and empty parts, but with "..", which symbolic links make ambiguous.
    const auto parts = [](const fs::path &path) {
        std::vector<fs::path> all;
        for (const fs::path &part : fs::absolute(path))
            if (!part.empty() && part != ".") all.push_back(part);
        return all;
    };
    const std::vector<fs::path> above = parts(directory->empty() ? fs::path(".") : fs::path(*directory));
    const std::vector<fs::path> whole = parts(file);
    const auto [end, rest] = std::ranges::mismatch(above, whole);
    const bool isBelow = end == above.end() && rest != whole.end() && std::find(rest, whole.end(), "..") == whole.end();
    if (!isBelow) return fs::absolute(file).string();
    fs::path name;
    for (auto part = rest; part != whole.end(); ++part) name /= *part;
    return name.string();
}

} // namespace velm::host
