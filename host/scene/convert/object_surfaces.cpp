#include "host/scene/convert/object_surfaces.h"

#include "host/base/names.h"
#include "host/files/same_network.h"
#include "host/object/old_surfaces.h"
#include "host/scene/convert/surface_chunk.h"
#include "host/state/save_state.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace velm::host {

namespace {

// A surface without its network.
SurfaceDescription describe(const std::string &name, const std::string &file, const SurfaceChunkValues &values) {
    SurfaceDescription surface;
    surface.name = surface.saved.name = name;
    surface.location.file = surface.saved.file = file;
    describeValues(values, surface);
    surface.saved.settings = surface.settings;
    surface.saved.smoothingAngle = surface.smoothingAngle;
    surface.saved.doubleSided = surface.doubleSided;
    return surface;
}

} // namespace

std::vector<SurfaceDescription> surfacesOf(const ObjectFile &object, std::vector<std::string> *animated) {
    std::vector<SurfaceDescription> result;
    for (std::size_t i = 0; i < object.surfaces().size(); ++i) {
        const SurfaceChunkValues values = object.values(i);
        SurfaceDescription &surface = result.emplace_back(describe(object.surfaces()[i].name, object.name(), values));
        if (const auto block = object.network(i)) {
            surface.saved.block = *block;
            surface.saved.offset = object.networkOffset(i);
        }
        if (!animated) continue;
        for (const std::string &chunk : values.animated)
            animated->push_back(fmt::format("the value {} of the surface {}", chunk, inQuotes(surface.name)));
    }
    return result;
}

std::vector<SurfaceDescription> surfacesOfOldObject(std::string_view bytes, const std::string &file) {
    std::vector<SurfaceDescription> result;
    for (const OldSurface &surface : readOldSurfaces(bytes, file))
        result.push_back(describe(surface.name, file, surface.values));
    return result;
}

SurfaceDescription undescribedSurface(const std::string &name, const std::string &file) {
    constexpr float kGrey = 200.0F / 255; // of new surfaces in LightWave
    SurfaceChunkValues values;
    values.colour = {kGrey, kGrey, kGrey};
    return describe(name, file, values);
}

std::vector<ImageDescription> imagesOf(const ObjectFile &object, const SearchPath &path) {
    const std::string directory = std::filesystem::path(object.name()).parent_path().string();
    std::vector<ImageDescription> result;
    for (const ObjectImage &image : object.images()) {
        // The last part of the name, after slashes or backslashes, or after the colon of a drive.
        const std::string last = image.file.substr(image.file.find_last_of("/\\:") + 1);
        if (last.empty() || std::ranges::count(result, last, &ImageDescription::name) > 0) continue;
        ImageDescription &description = result.emplace_back();
        description.name = last;
        description.file = image.file;
        description.objectFile = object.name();
        description.location.file = description.fileLocation.file = object.name();
        auto found = findFile(image.file, directory, path);
        if (!found) found = findFile(last, directory, path);
        if (found)
            description.file = *found;
        else if (image.file == last)
            description.notFound = whyNotFound(last, directory, path);
        else
            description.notFound =
                fmt::format("there is no file {}; and {}", inQuotes(image.file), whyNotFound(last, directory, path));
    }
    return result;
}

namespace {

// The network as a block of an object file.
std::string networkBlock(Surface &surface) {
    StateWriter writer(kStateBinary);
    surface.save(*writer.state());
    try {
        return writer.finish();
    } catch (const InputError &error) {
        throw InputError(fmt::format("surface {}: {}", inQuotes(surface.name()), error.what()));
    }
}

} // namespace

std::vector<PackedSurface> packSurfaces(ObjectFile &object, const SceneDescription &scene,
                                        const SceneSurfaces &surfaces, const DefaultSettings &defaults) {
    std::vector<PackedSurface> result;
    for (const SurfaceDescription &description : scene.surfaces) {
        Surface &surface = *surfaces.surface(description.name);
        HostNode &root = surface.network().root();
        const auto index = object.findSurface(description.name);
        PackedSurface packed{.name = description.name, .nodes = surface.network().nodes().size()};
        const bool hasKeys = std::ranges::any_of(description.settings, [](const SettingDescription &setting) {
            return std::holds_alternative<KeysDescription>(setting.value);
        });
        if (index) {
            root.savesData = !hasValues(description, object.values(*index), defaults);
            const std::string block = networkBlock(surface);
            packed.bytes = block.size();
            const auto old = object.network(*index);
            packed.isUnchanged = old && sameNetwork(*old, block);
            if (!packed.isUnchanged) object.setNetwork(*index, block);
        } else {
            root.savesData = hasKeys;
            const std::string block = networkBlock(surface);
            packed.isNew = true;
            packed.bytes = block.size();
            object.addSurface(description.name, subChunksOf(description, defaults), block);
        }
        result.push_back(std::move(packed));
    }
    return result;
}

} // namespace velm::host
