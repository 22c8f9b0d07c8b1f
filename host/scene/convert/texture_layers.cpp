#include "host/scene/convert/texture_layers.h"

#include "host/base/angles.h"
#include "host/base/colour.h"
#include "host/base/names.h"
#include "host/scene/convert/envelope_keys.h"
#include "host/scene/convert/texture_network.h"
#include "host/scene/format/shortest.h"
#include "host/state/blocks.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <iterator>
#include <string_view>
#include <utility>

namespace velm::host {

namespace {

// The entries of the nodes' popups, by the numbers of the files.
constexpr const char *kProjections[] = {"Planar", "Cylindrical", "Spherical", "Cubic", "Front", "UV"};
constexpr const char *kAxes[] = {"X", "Y", "Z"};
constexpr const char *kFalloffs[] = {"Cubic", "Spherical", "Linear X", "Linear Y", "Linear Z"};
constexpr const char *kShapes[] = {"Linear", "Spline", "Step"};
constexpr int kUvProjection = 5;

// The inputs of gradients that the ramp's source has, by LightWave's names, which are also the entries.
constexpr const char *kSources[] = {"Incidence Angle", "Slope", "Distance to Camera", "Bump"};
constexpr const char *kPreviousLayer = "Previous Layer";
constexpr const char *kBumpInput = "Bump";
constexpr const char *kWeightInput = "Weight Map";
constexpr std::size_t kMostKeys = 8;

double luminance(const Double3 &colour) { return shortest(host::luminance(colour[0], colour[1], colour[2]), 1); }

// The luminance of a colour with keys has keys, too: it is linear in the components.
SettingValue luminance(SettingValue value) {
    if (const auto *colour = std::get_if<Double3>(&value)) return luminance(*colour);
    if (auto *keys = std::get_if<KeysDescription>(&value); keys && keys->components == 3) {
        keys->components = 1;
        for (KeyDescription &key : keys->keys) key.value = {luminance(key.value)};
    }
    return value;
}

double orZero(float number) { return std::isfinite(number) ? static_cast<double>(number) : 0; }

// A procedural texture of LightWave, and the pattern that replaces it.
struct Pattern {
    const char *function; // its letters, in lower case
    const char *entry;    // of the popup
    double thickness = 0; // in percent; 0 for the node's default
};
constexpr Pattern kPatterns[] = {
    {.function = "checkerboard", .entry = "Checkerboard"},
    {.function = "grid", .entry = "Grid", .thickness = 10},
    {.function = "dots", .entry = "Dots", .thickness = 40},
    {.function = "fractalnoise", .entry = "Fractal Noise"},
    {.function = "fbm", .entry = "Fractal Noise"},
    {.function = "turbulence", .entry = "Turbulence"},
    {.function = "turbulentnoise", .entry = "Turbulence"},
    {.function = "marble", .entry = "Marble"},
    {.function = "wood", .entry = "Wood"},
};
constexpr int kMostOctaves = 16; // of the node

// Null for a procedural texture without a similar pattern. Versions of LightWave spell the names in different ways:
// "Fractal Noise", "FractalNoise", "LW_FractalNoise".
const Pattern *patternOf(std::string_view function) {
    constexpr std::string_view kVendor = "LW_";
    if (function.starts_with(kVendor)) function.remove_prefix(kVendor.size());
    std::string letters;
    for (const char c : function) {
        const bool isUpper = c >= 'A' && c <= 'Z';
        if (isUpper || (c >= 'a' && c <= 'z')) letters += isUpper ? static_cast<char>(c - 'A' + 'a') : c;
    }
    const auto *found = std::ranges::find(kPatterns, letters, &Pattern::function);
    return found == std::end(kPatterns) ? nullptr : found;
}

bool isKnownInput(const std::string &input) {
    return input == kPreviousLayer || input == kWeightInput || std::ranges::count(kSources, input) > 0;
}

} // namespace

void LayerNodes::lose(Loss kind, const std::string &detail, std::size_t count) {
    losses_.add(kind, fmt::format("surface {}{}{}", inQuotes(surface_), detail.empty() ? "" : ", ", detail), count);
}

bool LayerNodes::isLeftOut(const SurfaceTexture &texture, const TextureChannel *channel) {
    using Kind = SurfaceTexture::Kind;
    const auto because = [&](Loss kind, const std::string &detail) {
        lose(kind, detail);
        return true;
    };
    const std::string function = texture.function.empty() ? "" : inQuotes(texture.function);
    if (texture.kind == Kind::shader) return because(Loss::shader, function);
    if (texture.kind == Kind::procedural && !patternOf(texture.function)) return because(Loss::procedural, function);
    const bool isHeight = channel == &kBumpChannel && texture.kind == Kind::gradient; // in an unknown unit
    if (!channel || isHeight) return because(Loss::otherChannel, blockName(texture.channel));
    if (texture.blend == TextureBlend::alpha) return because(Loss::alphaLayer, channel->label);
    if (texture.blend == TextureBlend::displacement) return because(Loss::displacementLayer, channel->label);
    if (texture.kind == Kind::gradient) {
        if (texture.keys.empty()) return true;
        return !isKnownInput(texture.input) && because(Loss::gradientInput, inQuotes(texture.input));
    }
    if (texture.kind == Kind::procedural) return false;
    const bool hasNoMap = texture.projection == kUvProjection && texture.uvMap.empty();
    if (hasNoMap || (texture.imageFile.empty() && texture.clip == 0)) return true;
    return sceneNameOfImage(texture.imageFile).empty() && because(Loss::otherImage, channel->label);
}

LayerOutputs LayerNodes::add(const SurfaceTexture &texture, const TextureChannel &channel, int number,
                             const LayersBelow &below) {
    if (texture.kind == SurfaceTexture::Kind::gradient) return addRamp(texture, channel, number, below);
    if (texture.kind == SurfaceTexture::Kind::procedural) return addPattern(texture, channel, number);
    return addImage(texture, channel, number);
}

NetworkWriter::Node LayerNodes::addNode(const TextureChannel &channel, const char *what, int number,
                                        const char *server) {
    return writer_.add(fmt::format("{} {} {}", channel.label, what, number), server, NetworkWriter::kLayerColumn);
}

ComponentEnvelopes LayerNodes::envelopesOf(const SurfaceTexture &texture, TextureNumber number) {
    const auto found = texture.envelopes.find(number);
    if (found == texture.envelopes.end()) return {};
    if (!isAnimated(found->second)) lose(Loss::animatedTexture);
    if (isModified(found->second)) lose(Loss::envelopeModifier);
    return found->second;
}

LayerOutputs LayerNodes::addImage(const SurfaceTexture &texture, const TextureChannel &channel, int number) {
    noteImageLosses(texture);
    NetworkWriter::Node node = addNode(channel, "Image", number, "Image Projection");
    const auto chosen = [&](const char *label, const auto &texts, int index) {
        node.set(label, std::string(texts[index]));
    };
    const auto isOn = [&](const char *label, bool on) { node.set(label, std::string(on ? "On" : "Off")); };
    node.set("Image", sceneNameOfImage(texture.imageFile, texture.imageVariant));
    chosen("Projection", kProjections, texture.projection);
    chosen("Axis", kAxes, texture.axis);
    setPosition(texture, node);
    if (texture.projection == kUvProjection) node.set("UV Map", texture.uvMap.substr(0, kLongestNodeText));
    chosen("Wrap U", kImageWraps, texture.wrap[0]);
    chosen("Wrap V", kImageWraps, texture.wrap[1]);
    node.set("Repeats U", texture.repeats[0], envelopesOf(texture, TextureNumber::repeatsU), 1);
    node.set("Repeats V", texture.repeats[1], envelopesOf(texture, TextureNumber::repeatsV), 1);
    setFalloff(texture, node);
    node.set("Antialiasing", texture.antialiasing, {}, kPercentPerFraction);
    isOn("Pixel Blending", texture.isBlendingPixels);
    isOn("Negative", texture.isNegative);
    const char *output = channel.isColour ? "Color" : &channel == &kBumpChannel ? "Height" : "Luminance";
    NodeOutput value{.node = node.name(), .output = output};
    if (&channel == &kBumpChannel) value = amplified(std::move(value), texture, number);
    return {.value = value, .constant = {}, .coverage = NodeOutput{.node = node.name(), .output = "Alpha"}};
}

LayerOutputs LayerNodes::addPattern(const SurfaceTexture &texture, const TextureChannel &channel, int number) {
    lose(Loss::similarPattern, inQuotes(texture.function));
    notePositionLosses(texture);
    const Pattern &pattern = *patternOf(texture.function);
    NetworkWriter::Node node = addNode(channel, "Pattern", number, "Procedural Pattern");
    node.set("Pattern", std::string(pattern.entry));
    setPosition(texture, node);
    node.set("Axis", std::string(kAxes[texture.axis]));
    if (texture.octaves > 0) node.set("Octaves", static_cast<double>(std::min(texture.octaves, kMostOctaves)));
    if (pattern.thickness > 0) node.set("Thickness", pattern.thickness);
    setFalloff(texture, node);
    node.set("Negative", std::string(texture.isNegative ? "On" : "Off"));
    const Double3 value{orZero(texture.value[0]), orZero(texture.value[1]), orZero(texture.value[2])};
    LayerOutputs outputs;
    if (&channel == &kBumpChannel) {
        outputs.value = amplified({.node = node.name(), .output = "Height"}, texture, number);
        return outputs;
    }
    outputs.constant = channel.isColour ? shortest(SettingValue(value), 1) : SettingValue(luminance(value));
    outputs.coverage = NodeOutput{.node = node.name(), .output = "Alpha"};
    return outputs;
}

NodeOutput LayerNodes::amplified(NodeOutput height, const SurfaceTexture &texture, int number) {
    const ComponentEnvelopes envelopes = envelopesOf(texture, TextureNumber::amplitude);
    // The value of a procedural texture is the amplitude of its bump.
    const float amplitude = texture.amplitude * texture.value[0];
    if (amplitude == 1 && envelopes.empty()) return height;
    NetworkWriter::Node product =
        writer_.add(fmt::format("Bump Amplitude {}", number), "Multiply Scalar", NetworkWriter::kValueColumn);
    product.connect(height, "A");
    product.set("B", amplitude, envelopes, 1);
    return {.node = product.name(), .output = "Out"};
}

void LayerNodes::setPosition(const SurfaceTexture &texture, NetworkWriter::Node &node) {
    node.set("Coordinates", std::string(texture.isInWorld ? "World" : "Object"));
    node.set("Center", texture.centre, envelopesOf(texture, TextureNumber::centre));
    node.set("Size", texture.size, envelopesOf(texture, TextureNumber::size));
    const ComponentEnvelopes rotation = envelopesOf(texture, TextureNumber::rotation);
    constexpr const char *kLabels[] = {"Heading", "Pitch", "Bank"};
    for (std::size_t i = 0; i < std::size(kLabels); ++i)
        node.set(kLabels[i], texture.rotation[i], rotation, kDegreesPerRadian, i);
}

void LayerNodes::setFalloff(const SurfaceTexture &texture, NetworkWriter::Node &node) {
    node.set("Falloff Type", std::string(kFalloffs[texture.falloffType]));
    node.set("Falloff", texture.falloff, envelopesOf(texture, TextureNumber::falloff));
}

void LayerNodes::notePositionLosses(const SurfaceTexture &texture) {
    if (texture.isMoving) lose(Loss::animatedTexture);
    if (!texture.reference.empty()) lose(Loss::referenceObject, inQuotes(texture.reference));
}

void LayerNodes::noteImageLosses(const SurfaceTexture &texture) {
    notePositionLosses(texture);
    if (texture.isFrozen) lose(Loss::frozenProjection);
    if (texture.hasImagePlugIn) lose(Loss::imageFilter, inQuotes(texture.imageFile));
    if (texture.hasFilterEnvelope) lose(Loss::filterEnvelope, inQuotes(texture.imageFile));
    if (!texture.alphaFile.empty()) lose(Loss::alphaImage, inQuotes(texture.alphaFile));
}

LayerOutputs LayerNodes::addRamp(const SurfaceTexture &texture, const TextureChannel &channel, int number,
                                 const LayersBelow &below) {
    NetworkWriter::Node node = addNode(channel, "Gradient", number, "Color Ramp");
    const bool isPrevious = texture.input == kPreviousLayer;
    // The sample has no bump height of its own.
    const bool isBump = texture.input == kBumpInput && below.bump, isWeight = texture.input == kWeightInput;
    node.set("Source", isPrevious || isBump || isWeight ? std::string("Input") : texture.input);
    addKeys(texture, node);
    if (isWeight)
        node.connect(addWeight(texture, channel, number), "Input");
    else if (isBump)
        node.connect(*below.bump, "Input");
    else if (isPrevious && below.top)
        node.connect(*below.top, "Input");
    else if (isPrevious)
        node.set("Input", luminance(below.base));
    return {.value = NodeOutput{.node = node.name(), .output = "Color"},
            .constant = {},
            .coverage = NodeOutput{.node = node.name(), .output = "Alpha"}};
}

NodeOutput LayerNodes::addWeight(const SurfaceTexture &texture, const TextureChannel &channel, int number) {
    NetworkWriter::Node node =
        writer_.add(fmt::format("{} Weight {}", channel.label, number), "Weight Map", NetworkWriter::kValueColumn);
    node.set("Weight Map", texture.item.substr(0, kLongestNodeText));
    return {.node = node.name(), .output = "Scalar"};
}

// The keys of the ramp, in order of their positions.
void LayerNodes::addKeys(const SurfaceTexture &texture, NetworkWriter::Node &node) {
    std::vector<GradientKey> keys = texture.keys;
    std::ranges::stable_sort(keys, {}, [](const GradientKey &key) { return std::isfinite(key.at) ? key.at : 0; });
    if (keys.size() > kMostKeys) {
        lose(Loss::gradientKeys, {}, keys.size() - kMostKeys);
        keys.resize(kMostKeys);
    }
    node.set("Keys", static_cast<double>(keys.size()));
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const std::size_t number = i + 1;
        std::array<float, 3> colour{keys[i].colour[0], keys[i].colour[1], keys[i].colour[2]};
        if (texture.isNegative)
            for (float &component : colour) component = 1 - component;
        node.set(fmt::format("Position {}", number), keys[i].at, {}, 1);
        node.set(fmt::format("Color {}", number), colour, {});
        node.set(fmt::format("Alpha {}", number), keys[i].colour[3], {}, kPercentPerFraction);
        node.set(fmt::format("Shape {}", number), std::string(kShapes[static_cast<int>(keys[i].shape)]));
    }
}

} // namespace velm::host
