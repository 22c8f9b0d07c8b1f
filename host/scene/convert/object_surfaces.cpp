#include "host/scene/convert/object_surfaces.h"

#include "host/base/four_cc.h"
#include "host/base/names.h"
#include "host/files/network_outline.h"
#include "host/files/same_network.h"
#include "host/object/old_surfaces.h"
#include "host/scene/convert/envelope_keys.h"
#include "host/scene/convert/surface_chunk.h"
#include "host/scene/convert/texture_network.h"
#include "host/scene/format/shortest.h"
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

// Copies of keys need much more memory than the file, and many values may have the same envelope.
constexpr std::size_t kMostEnvelopeKeys = 1'000'000;

std::size_t countOfKeys(const ComponentEnvelopes &envelopes) {
    std::size_t keys = 0;
    for (const auto &envelope : envelopes)
        if (envelope) keys += envelope->keys.size();
    return keys;
}

// Adds the keys of a surface to `keys`, and throws for too many of them.
void countKeys(const ObjectFile &object, const SurfaceChunkValues &values, const std::vector<SurfaceTexture> &textures,
               std::size_t &keys) {
    for (const auto &[chunk, envelopes] : values.envelopes) keys += countOfKeys(envelopes);
    for (const SurfaceTexture &texture : textures)
        for (const auto &[number, envelopes] : texture.envelopes) keys += countOfKeys(envelopes);
    if (keys > kMostEnvelopeKeys)
        throw InputError(
            fmt::format("{}: the envelopes of the surfaces have more than {} keys", object.name(), kMostEnvelopeKeys));
}

// Notes the envelopes of the last surface's values that its settings do not have. `hasLayers`: its network is made
// from its texture layers, and computes a colour whose components have different keys.
void noteEnvelopes(const SurfaceChunkValues &values, bool hasLayers, ObjectSurfaces &result) {
    const std::string surface = inQuotes(result.surfaces.back().name);
    for (const auto &[chunk, envelopes] : values.envelopes) {
        const bool isApart = chunk == "COLR" && !animatedTriple(envelopes, *values.colour, 1);
        const bool isLost = !isAnimated(envelopes) || (isApart && !hasLayers);
        if (isLost || isApart)
            result.animated.push_back(
                {.what = fmt::format("the value {} of the surface {}", chunk, surface), .isInNetwork = !isLost});
        const std::string place = fmt::format("surface {}, {}", surface, chunk);
        if (isLost) result.losses.add(Loss::animatedValue, place);
        if (isModified(envelopes)) result.losses.add(Loss::envelopeModifier, place);
    }
}

} // namespace

ObjectSurfaces surfacesOf(const ObjectFile &object) {
    ObjectSurfaces result;
    std::size_t keys = 0;
    for (std::size_t i = 0; i < object.surfaces().size(); ++i) {
        const ObjectSurface &inFile = object.surfaces()[i];
        const SurfaceChunkValues values = object.values(i);
        const std::vector<SurfaceTexture> textures = object.textures(i);
        countKeys(object, values, textures, keys);
        SurfaceDescription &surface = result.surfaces.emplace_back(describe(inFile.name, object.name(), values));
        NetworkOutline outline;
        if (const auto block = object.network(i)) {
            surface.saved.block = *block;
            surface.saved.offset = object.networkOffset(i);
            outline = outlineOf(*block);
        }
        if (outline.nodes == 0)
            describeTextures(textures, values, surface, result.losses);
        else
            noteUnusedTextures(textures, outline.rootInputs, surface.name, result.losses);
        const bool hasNetworkColour = std::ranges::count(outline.rootInputs, "Color") > 0;
        if (std::ranges::count(inFile.subChunks, fourCC("VCOL"), &Chunk::id) > 0 &&
            !(outline.nodes == 0 ? values.tint.has_value() : hasNetworkColour))
            result.losses.add(Loss::vertexColours, fmt::format("surface {}", inQuotes(surface.name)));
        noteEnvelopes(values, outline.nodes == 0, result);
    }
    return result;
}

ObjectSurfaces surfacesOfOldObject(std::string_view bytes, const std::string &file) {
    ObjectSurfaces result;
    for (const OldSurface &inFile : readOldSurfaces(bytes, file)) {
        SurfaceDescription &surface = result.surfaces.emplace_back(describe(inFile.name, file, inFile.values));
        describeTextures(inFile.textures, inFile.values, surface, result.losses);
    }
    return result;
}

SurfaceDescription undescribedSurface(const std::string &name, const std::string &file) {
    constexpr float kGrey = 200.0F / 255; // of new surfaces in LightWave
    SurfaceChunkValues values;
    values.colour = {kGrey, kGrey, kGrey};
    return describe(name, file, values);
}

namespace {

// Adds an image of an object to the descriptions, unless they have it already.
void describeImage(const ObjectImage &image, const std::string &object, const SearchPath &path,
                   std::vector<ImageDescription> &images) {
    const std::string directory = std::filesystem::path(object).parent_path().string();
    const std::string &inObject = image.file, last = lastPart(inObject),
                      name = sceneNameOfImage(inObject, image.variant);
    const auto find = [&](const std::string &file) {
        return image.sequence ? findSequence(file, *image.sequence, directory, path) : findFile(file, directory, path);
    };
    if (last.empty() || std::ranges::count(images, name, &ImageDescription::name) > 0) return;
    ImageDescription &description = images.emplace_back();
    description.name = name;
    description.file = inObject;
    description.sequence = image.sequence;
    for (const ImageFilter &filter : image.filters)
        description.filters.push_back({.kind = filter.kind, .amount = shortest(filter.amount, 1)});
    description.objectFile = object;
    description.location.file = description.fileLocation.file = object;
    auto found = find(inObject);
    if (!found) found = find(last);
    if (found)
        description.file = *found;
    else if (inObject == last)
        description.notFound = whyNotFound(last, directory, path);
    else
        description.notFound =
            fmt::format("there is no file {}; and {}", inQuotes(inObject), whyNotFound(last, directory, path));
}

} // namespace

std::vector<ImageDescription> imagesOf(const ObjectFile &object, const SearchPath &path) {
    std::vector<ImageDescription> images;
    for (const ObjectImage &image : object.images()) describeImage(image, object.name(), path, images);
    return images;
}

std::vector<ImageDescription> imagesOfOldObject(std::string_view bytes, const std::string &file,
                                                const SearchPath &path) {
    std::vector<ImageDescription> images;
    for (const OldSurface &surface : readOldSurfaces(bytes, file))
        for (const SurfaceTexture &texture : surface.textures)
            describeImage({.file = texture.imageFile}, file, path, images);
    return images;
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
