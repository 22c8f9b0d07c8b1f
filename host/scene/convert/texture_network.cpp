#include "host/scene/convert/texture_network.h"

#include "host/base/angles.h"
#include "host/base/four_cc.h"
#include "host/base/names.h"
#include "host/graph/surface.h"
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

SettingValue shown(float number, double factor) { return shortest(finite(number) * factor, factor); }
SettingValue shown(const std::array<float, 3> &numbers) {
    return shortest(SettingValue(Double3{finite(numbers[0]), finite(numbers[1]), finite(numbers[2])}), 1);
}

constexpr double kPercent = 100;

// Builds the network of one surface.
class TextureNetwork {
  public:
    TextureNetwork(SurfaceDescription &surface, Losses &losses)
        : surface_(surface), network_(surface.network), losses_(losses) {}

    void add(const SurfaceTexture &texture) {
        const TextureChannel *channel = channelOf(texture);
        if (!texture.isEnabled || isLeftOut(texture, channel)) return;
        const int number = ++numbers_[channel];
        const bool isImage = texture.kind == SurfaceTexture::Kind::image;
        // What is below the layer may feed the layer, so the layer is made first.
        const std::string layer = isImage ? addImage(texture, *channel, number) : addRamp(texture, *channel, number);
        const char *output = isImage && !channel->isColour ? "Luminance" : "Color";
        const std::string blend = addBlend(texture, *channel, number);
        connect(layer, output, blend, "Layer");
        connect(layer, "Alpha", blend, "Coverage");
        tops_[channel] = blend;
    }

    void finish() {
        for (const TextureChannel &channel : kChannels)
            if (const auto top = tops_.find(&channel); top != tops_.end())
                connect(top->second, blendOutput(channel), surface_.name, channel.label);
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

    NodeDescription &addNode(const TextureChannel &channel, const char *what, int number, const char *server) {
        constexpr int kWide = 240, kHigh = 200;
        NodeDescription &node = network_.nodes.emplace_back();
        node.name = fmt::format("{} {} {}", channel.label, what, number);
        if (node.name == surface_.name) node.name += " (2)"; // a network's owner has its name in it
        node.server = server;
        node.location = surface_.location;
        const bool isBlend = std::string_view(what) == kBlend;
        node.look.at = {isBlend ? -kWide : -2 * kWide, kHigh * (rows_ - (isBlend ? 1 : 0))};
        if (!isBlend) ++rows_;
        return node;
    }

    void set(NodeDescription &node, std::string label, SettingValue value) const {
        node.settings.push_back({std::move(label), std::move(value), surface_.location});
    }

    void connect(const std::string &from, const char *output, const std::string &to, const char *input) {
        network_.connections.push_back(
            {.fromNode = from, .output = output, .toNode = to, .input = input, .location = surface_.location});
    }

    std::string addImage(const SurfaceTexture &texture, const TextureChannel &channel, int number) {
        noteImageLosses(texture);
        NodeDescription &node = addNode(channel, "Image", number, "Image Projection");
        const auto chosen = [&](const char *label, const auto &texts, int index) {
            set(node, label, std::string(texts[index]));
        };
        const auto isOn = [&](const char *label, bool on) { set(node, label, std::string(on ? "On" : "Off")); };
        set(node, "Image", sceneNameOfImage(texture.imageFile));
        chosen("Projection", kProjections, texture.projection);
        chosen("Axis", kAxes, texture.axis);
        set(node, "Coordinates", std::string(texture.isInWorld ? "World" : "Object"));
        set(node, "Center", shown(texture.centre));
        set(node, "Size", shown(texture.size));
        set(node, "Heading", shown(texture.rotation[0], kDegreesPerRadian));
        set(node, "Pitch", shown(texture.rotation[1], kDegreesPerRadian));
        set(node, "Bank", shown(texture.rotation[2], kDegreesPerRadian));
        if (texture.projection == kUvProjection) set(node, "UV Map", texture.uvMap.substr(0, kLongestName));
        chosen("Wrap U", kWraps, texture.wrap[0]);
        chosen("Wrap V", kWraps, texture.wrap[1]);
        set(node, "Repeats U", shown(texture.repeats[0], 1));
        set(node, "Repeats V", shown(texture.repeats[1], 1));
        chosen("Falloff Type", kFalloffs, texture.falloffType);
        set(node, "Falloff", shown(texture.falloff));
        set(node, "Antialiasing", shown(texture.antialiasing, kPercent));
        isOn("Pixel Blending", texture.isBlendingPixels);
        isOn("Negative", texture.isNegative);
        return node.name;
    }

    void noteImageLosses(const SurfaceTexture &texture) {
        if (texture.isAnimated || texture.isMoving) lose(Loss::animatedTexture);
        if (!texture.reference.empty()) lose(Loss::referenceObject, inQuotes(texture.reference));
        if (texture.isFrozen) lose(Loss::frozenProjection);
        if (texture.isFiltered) lose(Loss::imageFilter, inQuotes(texture.imageFile));
        if (!texture.alphaFile.empty()) lose(Loss::alphaImage, inQuotes(texture.alphaFile));
    }

    std::string addRamp(const SurfaceTexture &texture, const TextureChannel &channel, int number) {
        if (texture.isAnimated) lose(Loss::animatedTexture);
        std::vector<GradientKey> keys = texture.keys;
        std::ranges::stable_sort(keys, {}, [](const GradientKey &key) { return finite(key.at); });
        if (keys.size() > kMostKeys) {
            losses_.add(Loss::gradientKeys, fmt::format("surface {}", inQuotes(surface_.name)),
                        keys.size() - kMostKeys);
            keys.resize(kMostKeys);
        }
        NodeDescription &node = addNode(channel, "Gradient", number, "Color Ramp");
        std::string name = node.name;
        set(node, "Source", texture.input == kPreviousLayer ? std::string("Input") : texture.input);
        set(node, "Keys", static_cast<double>(keys.size()));
        for (std::size_t i = 0; i < keys.size(); ++i) addKey(keys[i], i + 1, texture.isNegative, node);
        if (texture.input != kPreviousLayer) return name;
        if (const auto top = tops_.find(&channel); top != tops_.end())
            connect(top->second, blendOutput(channel), name, "Input");
        else
            set(node, "Input", luminanceBelow(channel));
        return name;
    }

    void addKey(const GradientKey &key, std::size_t number, bool isNegative, NodeDescription &node) const {
        std::array<float, 3> colour{key.colour[0], key.colour[1], key.colour[2]};
        if (isNegative)
            for (float &component : colour) component = 1 - component;
        set(node, fmt::format("Position {}", number), shown(key.at, 1));
        set(node, fmt::format("Color {}", number), shown(colour));
        set(node, fmt::format("Alpha {}", number), shown(key.colour[3], kPercent));
        set(node, fmt::format("Shape {}", number), std::string(kShapes[static_cast<int>(key.shape)]));
    }

    std::string addBlend(const SurfaceTexture &texture, const TextureChannel &channel, int number) {
        NodeDescription &node = addNode(channel, kBlend, number, channel.isColour ? "Blend Color" : "Blend Scalar");
        std::string name = node.name;
        set(node, "Opacity", shown(texture.opacity, kPercent));
        set(node, "Mode", std::string(modeOf(texture.blend)));
        if (const auto top = tops_.find(&channel); top != tops_.end())
            connect(top->second, blendOutput(channel), name, "Below");
        else
            set(node, "Below", base(channel));
        return name;
    }

    static const char *blendOutput(const TextureChannel &channel) { return channel.isColour ? "Color" : "Out"; }

    // The surface's own value.
    SettingValue base(const TextureChannel &channel) const {
        const auto setting =
            std::ranges::find(surface_.settings, std::string_view(channel.label), &SettingDescription::label);
        if (setting != surface_.settings.end()) return setting->value;
        const std::array<double, 3> initial = newSurfaceValue(channel.label);
        return channel.isColour ? SettingValue(initial) : SettingValue(initial[0]);
    }

    double luminanceBelow(const TextureChannel &channel) const {
        const SettingValue value = base(channel);
        if (const auto *colour = std::get_if<Double3>(&value))
            return shortest(0.299 * (*colour)[0] + 0.587 * (*colour)[1] + 0.114 * (*colour)[2], 1);
        return std::get<double>(value);
    }

    static constexpr const char *kBlend = "Blend";

    SurfaceDescription &surface_;
    NetworkDescription &network_;
    Losses &losses_;
    std::map<const TextureChannel *, int> numbers_;      // of the layers so far
    std::map<const TextureChannel *, std::string> tops_; // the blend nodes of the topmost layers
    int rows_ = 0;                                       // of nodes in an editor
};

} // namespace

void describeTextures(const std::vector<SurfaceTexture> &textures, SurfaceDescription &surface, Losses &losses) {
    TextureNetwork network(surface, losses);
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
