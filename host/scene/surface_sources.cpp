#include "host/scene/surface_sources.h"

#include "host/scene/object_surfaces.h"
#include "host/scene/tables.h"
#include "host/state/files.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fmt/format.h>
#include <map>

namespace velm {

namespace {

constexpr std::string_view kFrom = "from";

bool isFrom(const JsonMember &member) { return member.key == kFrom && member.value.kind == JsonValue::Kind::text; }

SurfaceDescription *findSurface(SceneDescription &scene, const std::string &name) {
    const auto found = std::ranges::find(scene.surfaces, name, &SurfaceDescription::name);
    return found == scene.surfaces.end() ? nullptr : &*found;
}

// The surfaces of object files on their way into a scene; each file is read once.
class Sources {
  public:
    Sources(const ReadContext &context, SceneDescription &scene) : context_(context), scene_(scene) {}

    const std::vector<SurfaceDescription> &surfacesIn(const std::string &file, const Place &place) {
        const auto known = files_.find(file);
        if (known != files_.end()) return known->second;
        try {
            const ObjectFile object(readFile(file), file);
            for (ImageDescription &image : imagesOf(object, context_.path))
                if (std::ranges::count(scene_.images, image.name, &ImageDescription::name) == 0)
                    scene_.images.push_back(std::move(image));
            return files_[file] = surfacesOf(object);
        } catch (const InputError &error) {
            throw InputError(place, error.what());
        }
    }

    // The name by which the scene has that surface of a file; added where it is not there yet.
    std::string nameOf(const SurfaceDescription &surface) {
        for (const SurfaceDescription &one : scene_.surfaces)
            if (one.saved.file == surface.saved.file && one.saved.name == surface.saved.name) return one.name;
        const std::string file = std::filesystem::path(surface.saved.file).filename().string();
        std::string name = surface.name;
        for (int number = 1; findSurface(scene_, name); ++number)
            name = number == 1 ? fmt::format("{} ({})", surface.name, file)
                               : fmt::format("{} ({}, {})", surface.name, file, number);
        scene_.surfaces.push_back(surface);
        scene_.surfaces.back().name = name;
        return name;
    }

  private:
    const ReadContext &context_;
    SceneDescription &scene_;
    std::map<std::string, std::vector<SurfaceDescription>> files_;
};

} // namespace

void readSurfaceCollection(const ReadContext &context, const JsonMember &found, SceneDescription &scene) {
    wantObject(context, '"' + found.key + '"', found.value);
    JsonMember described{.key = found.key, .line = found.line, .value = found.value};
    std::erase_if(described.value.members, isFrom);
    readNamed(context, surfaceTable(), described, scene.surfaces);
    const auto from = std::ranges::find_if(found.value.members, isFrom);
    if (from == found.value.members.end()) return;
    const std::string file = resolveFile(context, from->value);
    Sources sources(context, scene);
    for (const SurfaceDescription &surface : sources.surfacesIn(file, context.at(from->line)))
        if (!findSurface(scene, surface.name)) scene.surfaces.push_back(surface);
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

void addOwnSurfaces(const ReadContext &context, SceneDescription &scene) {
    Sources sources(context, scene);
    for (ObjectDescription &object : scene.objects) {
        if (std::ranges::count(object.surfaces, "", &SurfaceUse::material) > 0) continue;
        const std::string &file = std::get<MeshFile>(object.shape).file;
        for (const SurfaceDescription &surface : sources.surfacesIn(file, object.place))
            if (std::ranges::count(object.surfaces, surface.saved.name, &SurfaceUse::material) == 0)
                object.surfaces.push_back(
                    {.material = surface.saved.name, .surface = sources.nameOf(surface), .place = object.place});
    }
}

} // namespace velm
