#include "host/scene/convert/texture_network.h"

#include "host/base/names.h"
#include "host/files/object_images.h"
#include "host/graph/surface.h"
#include "host/scene/convert/envelope_keys.h"
#include "host/scene/convert/texture_layers.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fmt/format.h>
#include <map>
#include <optional>

namespace velm::host {

namespace {

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

// The nodes of masks are made and named as those of a channel.
constexpr TextureChannel kMaskChannel{.id = 0, .label = "Mask"};

// A layer, and the layers that mask it.
struct MaskedLayer {
    const SurfaceTexture *texture;
    std::vector<const SurfaceTexture *> masks;
};

// A layer of the type "alpha" masks the next layer below it in its channel. If there is none, it is returned like any
// other layer.
std::vector<MaskedLayer> maskedLayers(const std::vector<SurfaceTexture> &textures) {
    std::vector<MaskedLayer> layers;
    std::map<std::uint32_t, std::size_t> lowers; // by channel: the index of its last layer so far
    for (const SurfaceTexture &texture : textures) {
        const auto lower = lowers.find(texture.channel);
        if (texture.blend == TextureBlend::alpha && lower != lowers.end()) {
            if (texture.isEnabled) layers[lower->second].masks.push_back(&texture);
            continue;
        }
        if (texture.blend != TextureBlend::alpha) lowers[texture.channel] = layers.size();
        layers.push_back({.texture = &texture, .masks = {}});
    }
    return layers;
}

// Builds the network of one surface.
class TextureNetwork {
  public:
    TextureNetwork(SurfaceDescription &surface, Losses &losses)
        : surface_(surface), writer_(surface), layers_(writer_, surface.name, losses) {}

    // Adds a node for a colour whose components have different keys, which a setting cannot have.
    void addColourKeys(const SurfaceChunkValues &values) {
        const ComponentEnvelopes envelopes = values.envelopesOf("COLR");
        if (envelopes.empty() || animatedTriple(envelopes, *values.colour, 1)) return;
        tops_[&kColourChannel] = writer_.addComponents("Color Envelope", true, *values.colour, envelopes);
    }

    // Multiplies the colour by that of the vertices, as far as the tint's intensity says.
    void addTint(const SurfaceChunkValues &values) {
        if (!values.tint) return;
        NetworkWriter::Node colours = writer_.add("Vertex Colors", "Vertex Color", NetworkWriter::kLayerColumn);
        colours.set("Color Map", values.tint->map.substr(0, kLongestNodeText));
        const NodeOutput layer{.node = colours.name(), .output = "Color"};
        NetworkWriter::Node blend = writer_.add("Vertex Color Blend", "Blend Color", NetworkWriter::kBlendColumn);
        blend.set("Opacity", values.tint->intensity, values.envelopesOf("VCOL"), kPercentPerFraction);
        blend.set("Mode", std::string(modeOf(TextureBlend::multiply)));
        layOver({.top = topOf(kColourChannel), .base = base(kColourChannel), .bump = {}}, blend);
        blend.connect(layer, "Layer");
        tops_[&kColourChannel] = {.node = blend.name(), .output = "Color"};
    }

    void add(const MaskedLayer &masked) {
        const SurfaceTexture &texture = *masked.texture;
        const TextureChannel *channel = findTextureChannel(texture.channel);
        if (!texture.isEnabled || layers_.isLeftOut(texture, channel)) return;
        const int number = ++numbers_[channel];
        // The layers below may also feed the layer itself, so the layer is made before its blend node.
        const LayersBelow below{.top = topOf(*channel), .base = base(*channel), .bump = topOf(kBumpChannel)};
        LayerOutputs layer = layers_.add(texture, *channel, number, below);
        for (const SurfaceTexture *mask : masked.masks) addMask(*mask, below, layer);
        NetworkWriter::Node blend = addBlend(texture, *channel, number, below);
        if (layer.value)
            blend.connect(*layer.value, "Layer");
        else
            blend.set("Layer", layer.constant);
        if (layer.coverage) blend.connect(*layer.coverage, "Coverage");
        tops_[channel] = {.node = blend.name(), .output = channel->isColour ? "Color" : "Out"};
    }

    void finish(const SurfaceChunkValues &values) {
        for (const TextureChannel &channel : kTextureChannels)
            if (const auto top = topOf(channel)) writer_.connectToSurface(*top, channel.label);
        if (const auto height = topOf(kBumpChannel)) addBump(*height, values);
    }

  private:
    std::optional<NodeOutput> topOf(const TextureChannel &channel) const {
        const auto top = tops_.find(&channel);
        return top == tops_.end() ? std::nullopt : std::optional(top->second);
    }

    NetworkWriter::Node addBlend(const SurfaceTexture &texture, const TextureChannel &channel, int number,
                                 const LayersBelow &below) {
        NetworkWriter::Node node =
            writer_.add(fmt::format("{} Blend {}", channel.label, number),
                        channel.isColour ? "Blend Color" : "Blend Scalar", NetworkWriter::kBlendColumn);
        node.set("Opacity", texture.opacity, layers_.envelopesOf(texture, TextureNumber::opacity), kPercentPerFraction);
        node.set("Mode", std::string(modeOf(texture.blend)));
        layOver(below, node);
        return node;
    }

    // Feeds a blend node with the layers below it.
    static void layOver(const LayersBelow &below, NetworkWriter::Node &blend) {
        if (below.top)
            blend.connect(*below.top, "Below");
        else
            blend.set("Below", below.base);
    }

    // Multiplies the coverage of a layer by 1 + o (t - 1), with the mask's value t and opacity o.
    void addMask(const SurfaceTexture &texture, const LayersBelow &below, LayerOutputs &layer) {
        SurfaceTexture mask = texture;
        mask.blend = TextureBlend::multiply;
        if (layers_.isLeftOut(mask, &kMaskChannel)) return;
        const int number = ++numbers_[&kMaskChannel];
        const LayerOutputs outputs = layers_.add(mask, kMaskChannel, number, below);
        const LayersBelow coverage{.top = layer.coverage, .base = 1.0, .bump = {}};
        NetworkWriter::Node blend = addBlend(mask, kMaskChannel, number, coverage);
        blend.connect(outputs.value ? *outputs.value : *outputs.coverage, "Layer"); // a pattern has only a coverage
        layer.coverage = {.node = blend.name(), .output = "Out"};
    }

    // Adds the node that makes a normal of the heights, and feeds the surface's input "Normal".
    void addBump(const NodeOutput &height, const SurfaceChunkValues &values) {
        writer_.startRow();
        NetworkWriter::Node node = writer_.add("Bump", "Bump", NetworkWriter::kBlendColumn);
        node.set("Strength", values.bump.value_or(1.0F), values.envelopesOf("BUMP"), kPercentPerFraction);
        node.connect(height, "Height");
        writer_.connectToSurface({.node = node.name(), .output = "Normal"}, "Normal");
    }

    // The surface's own value of a channel; 0 for the bump, which is the height of the mesh.
    SettingValue base(const TextureChannel &channel) const {
        const auto setting =
            std::ranges::find(surface_.settings, std::string_view(channel.label), &SettingDescription::label);
        if (setting != surface_.settings.end()) return setting->value;
        const std::array<double, 3> initial = newSurfaceValue(channel.label);
        return channel.isColour ? SettingValue(initial) : SettingValue(initial[0]);
    }

    SurfaceDescription &surface_;
    NetworkWriter writer_;
    LayerNodes layers_;
    std::map<const TextureChannel *, int> numbers_;     // of the layers so far
    std::map<const TextureChannel *, NodeOutput> tops_; // the result of the layers so far
};

} // namespace

void describeTextures(const std::vector<SurfaceTexture> &textures, const SurfaceChunkValues &values,
                      SurfaceDescription &surface, Losses &losses) {
    TextureNetwork network(surface, losses);
    network.addColourKeys(values);
    network.addTint(values);
    const std::vector<MaskedLayer> layers = maskedLayers(textures);
    // Gradients of other channels may depend on the bump, so its layers come first.
    for (const bool bumpsAreAdded : {true, false})
        for (const MaskedLayer &layer : layers)
            if ((layer.texture->channel == kBumpChannel.id) == bumpsAreAdded) network.add(layer);
    network.finish(values);
}

void noteUnusedTextures(const std::vector<SurfaceTexture> &textures, const std::vector<std::string> &fedInputs,
                        const std::string &surface, Losses &losses) {
    const std::string place = fmt::format("surface {}", inQuotes(surface));
    for (const SurfaceTexture &texture : textures) {
        if (!texture.isEnabled) continue;
        const TextureChannel *channel = findTextureChannel(texture.channel);
        if (texture.kind == SurfaceTexture::Kind::shader)
            losses.add(Loss::shader, place);
        else if (!channel || std::ranges::count(fedInputs, channel->label) == 0)
            losses.add(Loss::layersBesideNodes, place);
    }
}

std::string sceneNameOfImage(std::string_view file, int variant) {
    const std::string last = lastPart(file);
    return last.empty() || variant == 1 ? last : fmt::format("{} ({})", last, variant);
}

} // namespace velm::host
