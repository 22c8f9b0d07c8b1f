#include "host/scene/convert/texture_network.h"

#include "host/base/angles.h"
#include "host/base/four_cc.h"
#include "host/base/names.h"
#include "host/graph/surface.h"
#include "host/scene/convert/envelope_keys.h"
#include "host/scene/convert/network_writer.h"
#include "host/scene/format/shortest.h"
#include "host/state/blocks.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <iterator>
#include <map>
#include <utility>

namespace velm::host {

namespace {

// A channel of textures, and the input of a surface that it drives.
struct TextureChannel {
    std::uint32_t id;
    const char *label;
    bool isColour = false;
};
constexpr TextureChannel kChannels[] = {
    {.id = fourCC("COLR"), .label = "Color", .isColour = true},
    {.id = fourCC("LUMI"), .label = "Luminosity"},
    {.id = fourCC("DIFF"), .label = "Diffuse"},
    {.id = fourCC("SPEC"), .label = "Specular"},
    {.id = fourCC("GLOS"), .label = "Glossiness"},
    {.id = fourCC("REFL"), .label = "Reflection"},
    {.id = fourCC("TRAN"), .label = "Transparency"},
    {.id = fourCC("RIND"), .label = "Refraction Index"},
};

// The entries of the nodes' popups, by the numbers of the files.
constexpr const char *kProjections[] = {"Planar", "Cylindrical", "Spherical", "Cubic", "Front", "UV"};
constexpr const char *kAxes[] = {"X", "Y", "Z"};
constexpr const char *kWraps[] = {"Reset", "Repeat", "Mirror", "Edge"};
constexpr const char *kFalloffs[] = {"Cubic", "Spherical", "Linear X", "Linear Y", "Linear Z"};
constexpr const char *kShapes[] = {"Linear", "Spline", "Step"};
constexpr int kUvProjection = 5;

// The inputs of gradients that the ramp's source has, by LightWave's names, which are also the entries.
constexpr const char *kSources[] = {"Incidence Angle", "Slope", "Distance to Camera", "Bump"};
constexpr const char *kPreviousLayer = "Previous Layer";
constexpr std::size_t kMostKeys = 8;

constexpr std::size_t kLongestName = 255; // that a node's text holds

const char *modeOf(TextureBlend blend) {
    switch (blend) {
    case TextureBlend::additive: return "Additive";
    case TextureBlend::subtractive: return "Subtractive";
    case TextureBlend::difference: return "Difference";
    case TextureBlend::multiply: return "Multiply";
    case TextureBlend::divide: return "Divide";
    default: return "Normal";
    }
}

const TextureChannel *channelOf(const SurfaceTexture &texture) {
    const auto *found = std::ranges::find(kChannels, texture.channel, &TextureChannel::id);
    return found == std::end(kChannels) ? nullptr : found;
}

double finite(float number) { return std::isfinite(number) ? static_cast<double>(number) : 0; }

constexpr double kPercent = 100;

// Luminance by the weights of Rec. 601. That of keys has keys, too: they depend on the values in a linear way.
double luminance(const Double3 &colour) {
    return shortest(0.299 * colour[0] + 0.587 * colour[1] + 0.114 * colour[2], 1);
}

SettingValue luminance(SettingValue value) {
    if (const auto *colour = std::get_if<Double3>(&value)) return luminance(*colour);
    if (auto *keys = std::get_if<KeysDescription>(&value); keys && keys->components == 3) {
        keys->components = 1;
        for (KeyDescription &key : keys->keys) key.value = {luminance(key.value)};
    }
    return value;
}

// Builds the network of one surface.
class TextureNetwork {
  public:
    TextureNetwork(SurfaceDescription &surface, Losses &losses)
        : surface_(surface), writer_(surface), losses_(losses) {}

    // Lets nodes compute a colour whose components have different keys; a setting cannot have them.
    void addColourKeys(const SurfaceChunkValues &values) {
        const auto envelopes = values.envelopes.find("COLR");
        if (envelopes == values.envelopes.end() || animatedTriple(envelopes->second, *values.colour, 1)) return;
        tops_[&kChannels[0]] = writer_.addComponents("Color Envelope", true, *values.colour, envelopes->second);
    }

    void add(const SurfaceTexture &texture) {
        const TextureChannel *channel = channelOf(texture);
        if (!texture.isEnabled || isLeftOut(texture, channel)) return;
        const int number = ++numbers_[channel];
        const bool isImage = texture.kind == SurfaceTexture::Kind::image;
        // What is below the layer may feed the layer, so the layer is made first.
        const std::string layer = isImage ? addImage(texture, *channel, number) : addRamp(texture, *channel, number);
        const char *output = isImage && !channel->isColour ? "Luminance" : "Color";
        NetworkWriter::Node blend = addBlend(texture, *channel, number);
        blend.connect({.node = layer, .output = output}, "Layer");
        blend.connect({.node = layer, .output = "Alpha"}, "Coverage");
        tops_[channel] = {.node = blend.name(), .output = channel->isColour ? "Color" : "Out"};
    }

    void finish() {
        for (const TextureChannel &channel : kChannels)
            if (const auto top = tops_.find(&channel); top != tops_.end())
                writer_.connectToSurface(top->second, channel.label);
    }

  private:
    void lose(Loss kind, const std::string &detail = {}) {
        losses_.add(kind, fmt::format("surface {}{}{}", inQuotes(surface_.name), detail.empty() ? "" : ", ", detail));
    }

    // Whether the layer has no effect or is not supported; counts the loss of the latter.
    bool isLeftOut(const SurfaceTexture &texture, const TextureChannel *channel) {
        using Kind = SurfaceTexture::Kind;
        const auto because = [&](Loss kind, const std::string &detail) {
            lose(kind, detail);
            return true;
        };
        const std::string function = texture.function.empty() ? "" : inQuotes(texture.function);
        if (texture.kind == Kind::shader) return because(Loss::shader, function);
        if (texture.kind == Kind::procedural) return because(Loss::procedural, function);
        if (!channel) return because(Loss::otherChannel, blockName(texture.channel));
        if (texture.blend == TextureBlend::alpha) return because(Loss::alphaLayer, channel->label);
        if (texture.blend == TextureBlend::displacement) return because(Loss::displacementLayer, channel->label);
        if (texture.kind == Kind::gradient) {
            if (texture.keys.empty()) return true;
            const bool isKnown = texture.input == kPreviousLayer || std::ranges::count(kSources, texture.input) > 0;
            return !isKnown && because(Loss::gradientInput, inQuotes(texture.input));
        }
        const bool hasNoMap = texture.projection == kUvProjection && texture.uvMap.empty();
        if (hasNoMap || (texture.imageFile.empty() && texture.clip == 0)) return true;
        return sceneNameOfImage(texture.imageFile).empty() && because(Loss::imageSequence, channel->label);
    }

    NetworkWriter::Node addNode(const TextureChannel &channel, const char *what, int number, const char *server,
                                int column) {
        return writer_.add(fmt::format("{} {} {}", channel.label, what, number), server, column);
    }

    // The envelopes of one of a texture's numbers; counts the loss of those that the object does not have, and of
    // plug-ins that change them.
    ComponentEnvelopes envelopesOf(const SurfaceTexture &texture, TextureNumber number) {
        const auto found = texture.envelopes.find(number);
        if (found == texture.envelopes.end()) return {};
        if (!isAnimated(found->second)) lose(Loss::animatedTexture);
        if (isModified(found->second)) lose(Loss::envelopeModifier);
        return found->second;
    }

    std::string addImage(const SurfaceTexture &texture, const TextureChannel &channel, int number) {
        noteImageLosses(texture);
        NetworkWriter::Node node = addNode(channel, "Image", number, "Image Projection", NetworkWriter::kLayerColumn);
        const auto chosen = [&](const char *label, const auto &texts, int index) {
            node.set(label, std::string(texts[index]));
        };
        const auto isOn = [&](const char *label, bool on) { node.set(label, std::string(on ? "On" : "Off")); };
        node.set("Image", sceneNameOfImage(texture.imageFile));
        chosen("Projection", kProjections, texture.projection);
        chosen("Axis", kAxes, texture.axis);
        setPosition(texture, node);
        if (texture.projection == kUvProjection) node.set("UV Map", texture.uvMap.substr(0, kLongestName));
        chosen("Wrap U", kWraps, texture.wrap[0]);
        chosen("Wrap V", kWraps, texture.wrap[1]);
        node.set("Repeats U", texture.repeats[0], envelopesOf(texture, TextureNumber::repeatsU), 1);
        node.set("Repeats V", texture.repeats[1], envelopesOf(texture, TextureNumber::repeatsV), 1);
        setFalloff(texture, node);
        node.set("Antialiasing", texture.antialiasing, {}, kPercent);
        isOn("Pixel Blending", texture.isBlendingPixels);
        isOn("Negative", texture.isNegative);
        return node.name();
    }

    // Where the texture is.
    void setPosition(const SurfaceTexture &texture, NetworkWriter::Node &node) {
        node.set("Coordinates", std::string(texture.isInWorld ? "World" : "Object"));
        node.set("Center", texture.centre, envelopesOf(texture, TextureNumber::centre));
        node.set("Size", texture.size, envelopesOf(texture, TextureNumber::size));
        const ComponentEnvelopes rotation = envelopesOf(texture, TextureNumber::rotation);
        constexpr const char *kLabels[] = {"Heading", "Pitch", "Bank"};
        for (std::size_t i = 0; i < std::size(kLabels); ++i)
            node.set(kLabels[i], texture.rotation[i], rotation, kDegreesPerRadian, i);
    }

    void setFalloff(const SurfaceTexture &texture, NetworkWriter::Node &node) {
        node.set("Falloff Type", std::string(kFalloffs[texture.falloffType]));
        node.set("Falloff", texture.falloff, envelopesOf(texture, TextureNumber::falloff));
    }

    void noteImageLosses(const SurfaceTexture &texture) {
        if (texture.isMoving) lose(Loss::animatedTexture);
        if (!texture.reference.empty()) lose(Loss::referenceObject, inQuotes(texture.reference));
        if (texture.isFrozen) lose(Loss::frozenProjection);
        if (texture.isFiltered) lose(Loss::imageFilter, inQuotes(texture.imageFile));
        if (!texture.alphaFile.empty()) lose(Loss::alphaImage, inQuotes(texture.alphaFile));
    }

    std::string addRamp(const SurfaceTexture &texture, const TextureChannel &channel, int number) {
        std::vector<GradientKey> keys = texture.keys;
        std::ranges::stable_sort(keys, {}, [](const GradientKey &key) { return finite(key.at); });
        if (keys.size() > kMostKeys) {
            losses_.add(Loss::gradientKeys, fmt::format("surface {}", inQuotes(surface_.name)),
                        keys.size() - kMostKeys);
            keys.resize(kMostKeys);
        }
        NetworkWriter::Node node = addNode(channel, "Gradient", number, "Color Ramp", NetworkWriter::kLayerColumn);
        node.set("Source", texture.input == kPreviousLayer ? std::string("Input") : texture.input);
        node.set("Keys", static_cast<double>(keys.size()));
        for (std::size_t i = 0; i < keys.size(); ++i) addKey(keys[i], i + 1, texture.isNegative, node);
        if (texture.input != kPreviousLayer) return node.name();
        if (const auto top = tops_.find(&channel); top != tops_.end())
            node.connect(top->second, "Input");
        else
            node.set("Input", luminance(base(channel)));
        return node.name();
    }

    static void addKey(const GradientKey &key, std::size_t number, bool isNegative, NetworkWriter::Node &node) {
        std::array<float, 3> colour{key.colour[0], key.colour[1], key.colour[2]};
        if (isNegative)
            for (float &component : colour) component = 1 - component;
        node.set(fmt::format("Position {}", number), key.at, {}, 1);
        node.set(fmt::format("Color {}", number), colour, {});
        node.set(fmt::format("Alpha {}", number), key.colour[3], {}, kPercent);
        node.set(fmt::format("Shape {}", number), std::string(kShapes[static_cast<int>(key.shape)]));
    }

    NetworkWriter::Node addBlend(const SurfaceTexture &texture, const TextureChannel &channel, int number) {
        NetworkWriter::Node node = addNode(channel, "Blend", number, channel.isColour ? "Blend Color" : "Blend Scalar",
                                           NetworkWriter::kBlendColumn);
        node.set("Opacity", texture.opacity, envelopesOf(texture, TextureNumber::opacity), kPercent);
        node.set("Mode", std::string(modeOf(texture.blend)));
        if (const auto top = tops_.find(&channel); top != tops_.end())
            node.connect(top->second, "Below");
        else
            node.set("Below", base(channel));
        return node;
    }

    // The surface's own value.
    SettingValue base(const TextureChannel &channel) const {
        const auto setting =
            std::ranges::find(surface_.settings, std::string_view(channel.label), &SettingDescription::label);
        if (setting != surface_.settings.end()) return setting->value;
        const std::array<double, 3> initial = newSurfaceValue(channel.label);
        return channel.isColour ? SettingValue(initial) : SettingValue(initial[0]);
    }

    SurfaceDescription &surface_;
    NetworkWriter writer_;
    Losses &losses_;
    std::map<const TextureChannel *, int> numbers_;     // of the layers so far
    std::map<const TextureChannel *, NodeOutput> tops_; // what computes a channel so far
};

} // namespace

void describeTextures(const std::vector<SurfaceTexture> &textures, const SurfaceChunkValues &values,
                      SurfaceDescription &surface, Losses &losses) {
    TextureNetwork network(surface, losses);
    network.addColourKeys(values);
    for (const SurfaceTexture &texture : textures) network.add(texture);
    network.finish();
}

void noteUnusedTextures(const std::vector<SurfaceTexture> &textures, const std::vector<std::string> &fedInputs,
                        const std::string &surface, Losses &losses) {
    const std::string place = fmt::format("surface {}", inQuotes(surface));
    for (const SurfaceTexture &texture : textures) {
        if (!texture.isEnabled) continue;
        const TextureChannel *channel = channelOf(texture);
        if (texture.kind == SurfaceTexture::Kind::shader)
            losses.add(Loss::shader, place);
        else if (!channel || std::ranges::count(fedInputs, channel->label) == 0)
            losses.add(Loss::layersBesideNodes, place);
    }
}

std::string sceneNameOfImage(std::string_view file) { return std::string(file.substr(file.find_last_of("/\\:") + 1)); }

} // namespace velm::host
