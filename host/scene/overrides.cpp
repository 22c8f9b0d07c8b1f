#include "host/scene/overrides.h"

#include "host/base/names.h"

#include <algorithm>
#include <cctype>
#include <fmt/format.h>
#include <iterator>

namespace velm::host {

namespace {

int lineOf(std::size_t index) { return -1 - static_cast<int>(index); }

void setLines(JsonValue &value, int line) {
    value.line = line;
    for (JsonValue &element : value.list) setLines(element, line);
    for (JsonMember &member : value.members) {
        member.line = line;
        setLines(member.value, line);
    }
}

// Takes the part up to the next dot or equals sign from the front of the text, both outside quotes.
std::string takePart(std::string_view &text) {
    const bool isQuoted = text.starts_with('"');
    std::size_t end = text.find_first_of(".=");
    if (isQuoted) { // a name may contain quotes: the last one is followed by a separator
        end = std::min(text.find("\".", 1), text.find("\"=", 1));
        if (end != std::string_view::npos) ++end;
    }
    end = std::min(end, text.size());
    std::string_view part = text.substr(0, end);
    text.remove_prefix(end);
    if (isQuoted && part.size() > 1) part = part.substr(1, part.size() - 2);
    return std::string(part);
}

JsonValue parseValue(std::string_view text) {
    constexpr std::string_view kStarts = "{[\"-0123456789";
    const bool isJson = (!text.empty() && kStarts.find(text.front()) != std::string_view::npos) || text == "true" ||
                        text == "false" || text == "null";
    if (isJson) return parseJson(text, {});
    JsonValue value;
    value.kind = JsonValue::Kind::text;
    value.text = text;
    return value;
}

// Whether the children of a key have names that the scene's author chose. `depth` counts from the top of the file.
bool holdsNames(std::size_t depth, const std::string &key) {
    constexpr std::string_view kCollections[] = {"cameras", "lights", "images", "objects", "nulls", "surfaces"};
    return depth == 0 ? std::ranges::count(kCollections, key) > 0 : key == "nodes";
}

[[noreturn]] void failUnknownName(const JsonValue &parent, const std::string &collection, const std::string &name,
                                  const SourceLocation &location) {
    std::vector<std::string> known;
    std::ranges::transform(parent.members, std::back_inserter(known), &JsonMember::key);
    throw InputError(location, fmt::format("\"{}\" has no {}{}", collection, inQuotes(name), suggestion(name, known)));
}

void overrideValue(const SceneOverride &override, const SourceLocation &location, JsonValue &root) {
    JsonValue *at = &root;
    bool isName = false; // of the part: otherwise it is a key of the format
    for (std::size_t depth = 0; depth < override.path.size(); ++depth) {
        const std::string &part = override.path[depth];
        if (at->kind != JsonValue::Kind::object)
            throw InputError(location, fmt::format("there is no {} in {}", inQuotes(part), at->shown()));
        auto found = std::ranges::find(at->members, part, &JsonMember::key);
        const bool isAdditionalFile = depth == 1 && override.path[0] == "surfaces" && part == "from";
        if (found == at->members.end()) {
            if (isName && !isAdditionalFile) failUnknownName(*at, override.path[depth - 1], part, location);
            JsonMember &added = at->members.emplace_back();
            added.key = part;
            added.value.kind = JsonValue::Kind::object;
            setLines(added.value, location.line);
            found = std::prev(at->members.end());
        }
        found->line = location.line;
        isName = !isName && holdsNames(depth, part);
        at = &found->value;
    }
    *at = override.value;
    setLines(*at, location.line);
}

} // namespace

SceneOverride parseOverride(const std::string &text) {
    SceneOverride override{.text = text, .path = {}, .value = {}};
    std::string_view rest = text;
    for (bool more = true; more;) {
        const std::size_t position = text.size() - rest.size() + 1;
        override.path.push_back(takePart(rest));
        if (override.path.back().empty())
            throw InputError(fmt::format("the path of {} has an empty part (character {})", inQuotes(text), position));
        if (rest.empty())
            throw InputError(fmt::format("{} is not a path and a value such as render.samples=4", inQuotes(text)));
        more = rest.front() == '.';
        rest.remove_prefix(1);
    }
    try {
        override.value = parseValue(rest);
    } catch (const InputError &error) {
        throw InputError(fmt::format("the value of {} is not JSON: {}", inQuotes(text), error.message()));
    }
    return override;
}

bool isSetting(const SceneOverride &override, OverriddenSetting &setting) {
    const std::vector<std::string> &path = override.path;
    constexpr std::size_t kShortest = 4; // surfaces.NAME.settings.LABEL
    if (path.size() < kShortest || path[0] != "surfaces") return false;
    std::vector<std::string> nodes;
    std::size_t at = 2;
    while (at + 1 < path.size() && path[at] == "nodes") {
        nodes.push_back(path[at + 1]);
        at += 2;
        if (at + 1 < path.size() && path[at] == "network" && path[at + 1] == "nodes") ++at;
    }
    if (at + 2 != path.size() || path[at] != "settings") return false;
    setting = {.surface = path[1], .nodes = std::move(nodes), .label = path.back()};
    return true;
}

void overrideValues(std::span<const SceneOverride> overrides, const std::string &file, JsonValue &root) {
    OverriddenSetting setting;
    for (std::size_t i = 0; i < overrides.size(); ++i)
        if (!isSetting(overrides[i], setting)) overrideValue(overrides[i], {.file = file, .line = lineOf(i)}, root);
}

const SceneOverride *overrideAt(std::span<const SceneOverride> overrides, const SourceLocation &location) {
    for (std::size_t i = 0; i < overrides.size(); ++i)
        if (location.line == lineOf(i)) return &overrides[i];
    return nullptr;
}

} // namespace velm::host
