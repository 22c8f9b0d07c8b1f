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
#include <unordered_set>
#include <utility>

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

// Describes the images of one object, each once.
class ImageDescriptions {
  public:
    // The references have to outlive the object.
    ImageDescriptions(const std::string &object, const SearchPath &path)
        : object_(object), path_(path), directory_(std::filesystem::path(object).parent_path().string()) {}

    void add(const ObjectImage &image) {
        const std::string &inObject = image.file, last = lastPart(inObject);
        std::string name = sceneNameOfImage(inObject, image.variant);
        if (last.empty() || !names_.insert(name).second) return;
        ImageDescription &description = images_.emplace_back();
        description.name = std::move(name);
        description.file = inObject;
        description.sequence = image.sequence;
        for (const ImageFilter &filter : image.filters)
            description.filters.push_back({.kind = filter.kind, .amount = shortest(filter.amount, 1)});
        description.objectFile = object_;
        description.location.file = description.fileLocation.file = object_;
        auto found = find(inObject, image.sequence);
        if (!found) found = find(last, image.sequence);
        if (found)
            description.file = *found;
        else if (inObject == last)
            description.notFound = whyNotFound(last, directory_, path_);
        else
            description.notFound =
                fmt::format("there is no file {}; and {}", inQuotes(inObject), whyNotFound(last, directory_, path_));
    }

    std::vector<ImageDescription> take() && { return std::move(images_); }

  private:
    std::optional<std::string> find(const std::string &file, const std::optional<ImageSequence> &sequence) const {
        return sequence ? findSequence(file, *sequence, directory_, path_) : findFile(file, directory_, path_);
    }

    const std::string &object_;
    const SearchPath &path_;
    std::string directory_;
    std::vector<ImageDescription> images_;
    std::unordered_set<std::string> names_; // of images_
};

} // namespace

std::vector<ImageDescription> imagesOf(const ObjectFile &object, const SearchPath &path) {
    ImageDescriptions images(object.name(), path);
    for (const ObjectImage &image : object.images()) images.add(image);
    return std::move(images).take();
}

std::vector<ImageDescription> imagesOfOldObject(std::string_view bytes, const std::string &file,
                                                const SearchPath &path) {
    ImageDescriptions images(file, path);
    for (const OldSurface &surface : readOldSurfaces(bytes, file))
        for (const SurfaceTexture &texture : surface.textures) images.add({.file = texture.imageFile});
    return std::move(images).take();
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
