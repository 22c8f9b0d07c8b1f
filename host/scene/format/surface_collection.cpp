#include "host/scene/format/surface_collection.h"

#include "host/io/file_ends.h"
#include "host/scene/format/tables.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fmt/format.h>

namespace velm::host {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char *kFrom = "from";

// A surface may have the name "from", too; its value is an object.
bool isFrom(const JsonMember &member) { return member.key == kFrom && member.value.kind == JsonValue::Kind::text; }

} // namespace

void readSurfaceCollection(const ReadContext &context, const JsonMember &found, SceneDescription &scene) {
    requireObject(context, '"' + found.key + '"', found.value);
    JsonMember described{.key = found.key, .line = found.line, .value = found.value};
    std::erase_if(described.value.members, isFrom);
    readNamed(context, surfaceTable(), described, scene.surfaces);
    const auto from = std::ranges::find_if(found.value.members, isFrom);
    if (from == found.value.members.end()) return;
    scene.surfaceFile = resolveFile(context, from->value);
    scene.surfaceFileLocation = context.at(from->line);
}

std::optional<Json> writeSurfaceCollection(const WriteContext &context, const SceneDescription &scene) {
    Json all = Json::object();
    if (!scene.surfaceFile.empty()) all[kFrom] = context.nameOf(scene.surfaceFile);
    addNamed(context, surfaceTable(), scene.surfaces, all);
    return all;
}

Json surfaceCollectionSchema() {
    Json from = {{"description", "An object file (.lwo) whose surfaces are added."}};
    from["anyOf"] = Json::array({textSchema(), objectSchema(surfaceTable())});
    return {
        {"type", "object"}, {"properties", {{kFrom, from}}}, {"additionalProperties", objectSchema(surfaceTable())}};
}

bool isObjectFile(const std::string &file) {
    std::string ending = std::filesystem::path(file).extension().string();
    std::ranges::transform(ending, ending.begin(), [](unsigned char letter) { return std::tolower(letter); });
    if (ending == ".lwo") return true;
    const FileEnds ends = readFileEnds(file);
    return ends.startsWith("FORM") && (ends.hasAt(8, "LWO2") || ends.hasAt(8, "LWOB") || ends.hasAt(8, "LWLO"));
}

std::string nameInScene(const SavedNetwork &surface, const std::function<bool(const std::string &)> &isTaken) {
    const std::string file = std::filesystem::path(surface.file).filename().string();
    std::string name = surface.name;
    for (int number = 1; isTaken(name); ++number)
        name = number == 1 ? fmt::format("{} ({})", surface.name, file)
                           : fmt::format("{} ({}, {})", surface.name, file, number);
    return name;
}

} // namespace velm::host
