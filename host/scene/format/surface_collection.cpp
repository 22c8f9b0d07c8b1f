#include "host/scene/format/surface_collection.h"

#include "host/scene/format/tables.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace velm::host {

namespace {

constexpr std::string_view kFrom = "from";

bool isFrom(const JsonMember &member) { return member.key == kFrom && member.value.kind == JsonValue::Kind::text; }

} // namespace

void readSurfaceCollection(const ReadContext &context, const JsonMember &found, SceneDescription &scene) {
    wantObject(context, '"' + found.key + '"', found.value);
    JsonMember described{.key = found.key, .line = found.line, .value = found.value};
    std::erase_if(described.value.members, isFrom);
    readNamed(context, surfaceTable(), described, scene.surfaces);
    const auto from = std::ranges::find_if(found.value.members, isFrom);
    if (from == found.value.members.end()) return;
    scene.surfaceFile = resolveFile(context, from->value);
    scene.surfaceFileLocation = context.at(from->line);
}

nlohmann::ordered_json surfaceCollectionSchema() {
    nlohmann::ordered_json from = {{"description", "An object file (.lwo) whose surfaces come in addition."}};
    from["anyOf"] = nlohmann::ordered_json::array({formSchema(textForm()), objectSchema(surfaceTable())});
    return {{"type", "object"},
            {"properties", {{std::string(kFrom), from}}},
            {"additionalProperties", objectSchema(surfaceTable())}};
}

bool isObjectFile(const std::string &file) {
    std::string ending = std::filesystem::path(file).extension().string();
    std::ranges::transform(ending, ending.begin(), [](unsigned char letter) { return std::tolower(letter); });
    return ending == ".lwo";
}

} // namespace velm::host
