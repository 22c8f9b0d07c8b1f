// The texture layers of a surface as a network of nodes.
#include "host/base/four_cc.h"
#include "host/scene/convert/texture_network.h"

#include "module/host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fmt/format.h>
#include <functional>
#include <limits>
#include <memory>
#include <numbers>
#include <stdexcept>

namespace velm::host::test {
namespace {

using Kind = SurfaceTexture::Kind;

SurfaceTexture imageOf(const char (&channel)[5], const std::string &file) {
    SurfaceTexture texture;
    texture.channel = fourCC(channel);
    texture.blend = TextureBlend::normal;
    texture.clip = 1;
    texture.imageFile = file;
    return texture;
}

SurfaceTexture gradientOf(const char (&channel)[5], const std::string &input) {
    SurfaceTexture texture;
    texture.kind = Kind::gradient;
    texture.channel = fourCC(channel);
    texture.input = input;
    texture.keys = {{.at = 0, .colour = {0, 0, 0, 1}}, {.at = 90, .colour = {1, 0.5F, 0, 1}}};
    return texture;
}

struct Described {
    SurfaceDescription surface;
    Losses losses;

    std::vector<std::string> connections() const {
        std::vector<std::string> texts;
        for (const ConnectionDescription &one : surface.network.connections)
            texts.push_back(fmt::format("{}.{} -> {}.{}", one.fromNode, one.output, one.toNode, one.input));
        std::ranges::sort(texts);
        return texts;
    }
    const NodeDescription &node(const std::string &name) const {
        const auto found = std::ranges::find(surface.network.nodes, name, &NodeDescription::name);
        if (found == surface.network.nodes.end()) throw std::runtime_error("there is no node " + name);
        return *found;
    }
    SettingValue setting(const std::string &name, const std::string &label) const {
        const auto &settings = node(name).settings;
        const auto found = std::ranges::find(settings, label, &SettingDescription::label);
        if (found == settings.end()) throw std::runtime_error("there is no setting " + label);
        return found->value;
    }
};

Described describe(const std::vector<SurfaceTexture> &textures, std::vector<SettingDescription> settings = {},
                   const SurfaceChunkValues &values = {}) {
    Described result;
    result.surface.name = "Globe";
    result.surface.settings = std::move(settings);
    describeTextures(textures, values, result.surface, result.losses);
    return result;
}

TEST(TextureNetwork, ALayerIsBlendedWithTheSurfacesValue) {
    const Described result = describe({imageOf("COLR", "C:maps/earth.jpg")},
                                      {{.label = "Color", .value = Double3{0.1, 0.2, 0.3}, .location = {}}});
    EXPECT_EQ(result.connections(), (std::vector<std::string>{"Color Blend 1.Color -> Globe.Color",
                                                              "Color Image 1.Alpha -> Color Blend 1.Coverage",
                                                              "Color Image 1.Color -> Color Blend 1.Layer"}));
    EXPECT_EQ(result.setting("Color Image 1", "Image"), SettingValue(std::string("earth.jpg")));
    EXPECT_EQ(result.setting("Color Blend 1", "Below"), SettingValue(Double3{0.1, 0.2, 0.3}));
    EXPECT_TRUE(result.losses.texts().empty());
    // Without a value in the file, that of a new surface.
    EXPECT_EQ(describe({imageOf("COLR", "a.png")}).setting("Color Blend 1", "Below"),
              SettingValue(Double3{0.78431, 0.78431, 0.78431}));
    EXPECT_EQ(describe({imageOf("GLOS", "a.png")}).setting("Glossiness Blend 1", "Below"), SettingValue(0.4));
}

TEST(TextureNetwork, LayersOfAChannelAreBlendedInTheirOrder) {
    SurfaceTexture above = imageOf("DIFF", "above.png");
    above.blend = TextureBlend::multiply;
    above.opacity = 0.25F;
    const Described result = describe({imageOf("DIFF", "below.png"), imageOf("COLR", "earth.jpg"), above});
    EXPECT_EQ(
        result.connections(),
        (std::vector<std::string>{
            "Color Blend 1.Color -> Globe.Color", "Color Image 1.Alpha -> Color Blend 1.Coverage",
            "Color Image 1.Color -> Color Blend 1.Layer", "Diffuse Blend 1.Out -> Diffuse Blend 2.Below",
            "Diffuse Blend 2.Out -> Globe.Diffuse", "Diffuse Image 1.Alpha -> Diffuse Blend 1.Coverage",
            "Diffuse Image 1.Luminance -> Diffuse Blend 1.Layer", "Diffuse Image 2.Alpha -> Diffuse Blend 2.Coverage",
            "Diffuse Image 2.Luminance -> Diffuse Blend 2.Layer"}));
    EXPECT_EQ(result.setting("Diffuse Image 2", "Image"), SettingValue(std::string("above.png")));
    EXPECT_EQ(result.setting("Diffuse Blend 2", "Mode"), SettingValue(std::string("Multiply")));
    EXPECT_EQ(result.setting("Diffuse Blend 2", "Opacity"), SettingValue(25.0));
}

TEST(TextureNetwork, TheSettingsAreThoseOfTheTextureInTheUnitsOfPanels) {
    SurfaceTexture texture = imageOf("COLR", "earth.jpg");
    texture.projection = 2;
    texture.axis = 1;
    texture.isInWorld = texture.isNegative = true;
    texture.centre = {0.1F, 0, 0};
    texture.rotation = {0, 1.5707964F, 0};
    texture.wrap = {0, 3};
    texture.repeats = {2, 1};
    texture.falloffType = 4;
    texture.antialiasing = 0.5F;
    texture.isBlendingPixels = false;
    const Described result = describe({texture});
    const std::pair<const char *, SettingValue> kExpected[] = {{"Projection", std::string("Spherical")},
                                                               {"Axis", std::string("Y")},
                                                               {"Coordinates", std::string("World")},
                                                               {"Center", Double3{0.1, 0, 0}},
                                                               {"Pitch", 90.0},
                                                               {"Wrap U", std::string("Reset")},
                                                               {"Wrap V", std::string("Edge")},
                                                               {"Repeats U", 2.0},
                                                               {"Falloff Type", std::string("Linear Z")},
                                                               {"Antialiasing", 50.0},
                                                               {"Pixel Blending", std::string("Off")},
                                                               {"Negative", std::string("On")}};
    for (const auto &[label, value] : kExpected) EXPECT_EQ(result.setting("Color Image 1", label), value) << label;
}

// An envelope from 0 at 0 s to `end` at 1 s, in a straight line.
std::shared_ptr<const ObjectEnvelope> lineTo(double end, double endTime = 1) {
    return std::make_shared<ObjectEnvelope>(
        ObjectEnvelope{.keys = {{.time = 0, .value = 0}, {.time = endTime, .value = end, .shape = kShapeLinear}}});
}

double lastKey(const SettingValue &value, std::size_t component = 0) {
    return std::get<KeysDescription>(value).keys.back().value.at(component);
}

TEST(TextureNetwork, EnvelopesOfLayersAreKeysInTheUnitsOfPanels) {
    SurfaceTexture texture = imageOf("COLR", "a.png");
    texture.envelopes = {{TextureNumber::opacity, {lineTo(0.5)}},
                         {TextureNumber::centre, {lineTo(1), nullptr, lineTo(3)}},
                         {TextureNumber::rotation, {nullptr, lineTo(std::numbers::pi), nullptr}},
                         {TextureNumber::repeatsV, {lineTo(7)}},
                         {TextureNumber::size, {lineTo(2), lineTo(3, 5), nullptr}}};
    texture.centre[1] = 0.25F;
    texture.size[2] = 0.5F;
    const Described result = describe({texture});
    EXPECT_EQ(lastKey(result.setting("Color Blend 1", "Opacity")), 50);
    const SettingValue centre = result.setting("Color Image 1", "Center");
    EXPECT_EQ((Double3{lastKey(centre, 0), lastKey(centre, 1), lastKey(centre, 2)}), (Double3{1, 0.25, 3}));
    EXPECT_EQ(lastKey(result.setting("Color Image 1", "Pitch")), 180);
    EXPECT_EQ(result.setting("Color Image 1", "Bank"), SettingValue(0.0));
    EXPECT_EQ(lastKey(result.setting("Color Image 1", "Repeats V")), 7);
    // A setting has the same keys for all three numbers. Others are set apart.
    EXPECT_EQ(std::ranges::count(result.connections(), "Color Image 1 Size.Vector -> Color Image 1.Size"), 1);
    EXPECT_EQ(lastKey(result.setting("Color Image 1 Size", "X")), 2);
    EXPECT_EQ(lastKey(result.setting("Color Image 1 Size", "Y")), 3);
    EXPECT_EQ(result.setting("Color Image 1 Size", "Z"), SettingValue(0.5));
    EXPECT_TRUE(result.losses.texts().empty());
}

TEST(TextureNetwork, ColoursWhoseComponentsHaveDifferentKeysAreMadeOfThem) {
    SurfaceChunkValues values;
    values.colour = {0, 0.5F, 0};
    values.envelopes["COLR"] = {lineTo(1), nullptr, lineTo(1, 2)};
    const Described plain = describe({}, {}, values);
    EXPECT_EQ(plain.connections(), (std::vector<std::string>{"Color Envelope.Color -> Globe.Color"}));
    EXPECT_EQ(plain.node("Color Envelope").server, "Make Color");
    EXPECT_EQ(plain.setting("Color Envelope", "Green"), SettingValue(0.5));
    EXPECT_EQ(std::get<KeysDescription>(plain.setting("Color Envelope", "Blue")).keys.back().time, 2);
    const Described layered = describe({gradientOf("COLR", "Previous Layer")}, {}, values);
    EXPECT_EQ(layered.connections(), (std::vector<std::string>{"Color Blend 1.Color -> Globe.Color",
                                                               "Color Envelope.Color -> Color Blend 1.Below",
                                                               "Color Envelope.Color -> Color Gradient 1.Input",
                                                               "Color Gradient 1.Alpha -> Color Blend 1.Coverage",
                                                               "Color Gradient 1.Color -> Color Blend 1.Layer"}));
    values.envelopes["COLR"] = {lineTo(1), nullptr, lineTo(3)};
    EXPECT_TRUE(describe({}, {}, values).surface.network.nodes.empty()) << "the setting has these";
}

TEST(TextureNetwork, KeysOfTheSurfacesValueAreBelowTheFirstLayer) {
    KeysDescription keys{.components = 3, .keys = {{.value = {0, 0, 0}}, {.time = 1, .value = {0, 1, 0}}}};
    const Described result =
        describe({gradientOf("COLR", "Previous Layer")}, {{.label = "Color", .value = keys, .location = {}}});
    EXPECT_EQ(result.setting("Color Blend 1", "Below"), SettingValue(keys));
    const auto input = std::get<KeysDescription>(result.setting("Color Gradient 1", "Input"));
    EXPECT_EQ(input.components, 1);
    EXPECT_EQ(input.keys.back().value[0], 0.587) << "the luminance of green";
}

TEST(TextureNetwork, AGradientIsARamp) {
    SurfaceTexture negative = gradientOf("COLR", "Incidence Angle");
    negative.isNegative = true;
    negative.keys[1].shape = GradientKey::Shape::spline;
    std::swap(negative.keys[0], negative.keys[1]); // the ramp's ascend
    const Described result = describe({negative, gradientOf("COLR", "Previous Layer")});
    EXPECT_EQ(result.setting("Color Gradient 1", "Source"), SettingValue(std::string("Incidence Angle")));
    EXPECT_EQ(result.setting("Color Gradient 1", "Keys"), SettingValue(2.0));
    EXPECT_EQ(result.setting("Color Gradient 1", "Position 2"), SettingValue(90.0));
    EXPECT_EQ(result.setting("Color Gradient 1", "Color 2"), SettingValue(Double3{0, 0.5, 1}));
    EXPECT_EQ(result.setting("Color Gradient 1", "Shape 2"), SettingValue(std::string("Spline")));
    EXPECT_EQ(result.setting("Color Gradient 2", "Source"), SettingValue(std::string("Input")));
    EXPECT_EQ(std::ranges::count(result.connections(), "Color Blend 1.Color -> Color Gradient 2.Input"), 1);
    // The first layer has the surface's value below it.
    const Described first = describe({gradientOf("COLR", "Previous Layer")},
                                     {{.label = "Color", .value = Double3{0, 1, 0}, .location = {}}});
    EXPECT_EQ(first.setting("Color Gradient 1", "Input"), SettingValue(0.587));
}

TEST(TextureNetwork, BumpsAreHeightsThatTiltTheNormal) {
    SurfaceTexture louder = imageOf("BUMP", "b.png");
    louder.amplitude = 0.5F;
    SurfaceChunkValues values;
    values.bump = 0.25F;
    const Described result = describe({gradientOf("COLR", "Bump"), imageOf("BUMP", "a.png"), louder}, {}, values);
    EXPECT_EQ(
        result.connections(),
        (std::vector<std::string>{
            "Bump Amplitude 2.Out -> Bump Blend 2.Layer", "Bump Blend 1.Out -> Bump Blend 2.Below",
            "Bump Blend 2.Out -> Bump.Height", "Bump Blend 2.Out -> Color Gradient 1.Input",
            "Bump Image 1.Alpha -> Bump Blend 1.Coverage", "Bump Image 1.Height -> Bump Blend 1.Layer",
            "Bump Image 2.Alpha -> Bump Blend 2.Coverage", "Bump Image 2.Height -> Bump Amplitude 2.A",
            "Bump.Normal -> Globe.Normal", "Color Blend 1.Color -> Globe.Color",
            "Color Gradient 1.Alpha -> Color Blend 1.Coverage", "Color Gradient 1.Color -> Color Blend 1.Layer"}));
    EXPECT_EQ(result.setting("Bump", "Strength"), SettingValue(25.0));
    EXPECT_EQ(result.setting("Bump Blend 1", "Below"), SettingValue(0.0));
    EXPECT_EQ(result.setting("Bump Amplitude 2", "B"), SettingValue(0.5));
    EXPECT_EQ(result.setting("Color Gradient 1", "Source"), SettingValue(std::string("Input")));
    EXPECT_TRUE(result.losses.texts().empty());
    values.envelopes["BUMP"] = {lineTo(2)};
    EXPECT_EQ(lastKey(describe({imageOf("BUMP", "a.png")}, {}, values).setting("Bump", "Strength")), 200);
    EXPECT_TRUE(describe({}, {}, values).surface.network.nodes.empty());
}

SurfaceTexture proceduralOf(const char (&channel)[5], const std::string &function) {
    SurfaceTexture texture = imageOf(channel, "");
    texture.kind = Kind::procedural;
    texture.function = function;
    return texture;
}

TEST(TextureNetwork, AlphaLayersMaskTheLayerBelow) {
    SurfaceTexture mask = imageOf("COLR", "mask.png"), disabled = mask, ramp = gradientOf("COLR", "Slope");
    mask.blend = disabled.blend = ramp.blend = TextureBlend::alpha;
    mask.opacity = 0.5F;
    disabled.isEnabled = false;
    const Described result =
        describe({imageOf("COLR", "a.png"), mask, imageOf("DIFF", "a.png"), disabled, ramp, imageOf("COLR", "b.png")});
    EXPECT_EQ(result.connections(),
              (std::vector<std::string>{
                  "Color Blend 1.Color -> Color Blend 2.Below", "Color Blend 2.Color -> Globe.Color",
                  "Color Image 1.Alpha -> Mask Blend 1.Below", "Color Image 1.Color -> Color Blend 1.Layer",
                  "Color Image 2.Alpha -> Color Blend 2.Coverage", "Color Image 2.Color -> Color Blend 2.Layer",
                  "Diffuse Blend 1.Out -> Globe.Diffuse", "Diffuse Image 1.Alpha -> Diffuse Blend 1.Coverage",
                  "Diffuse Image 1.Luminance -> Diffuse Blend 1.Layer", "Mask Blend 1.Out -> Mask Blend 2.Below",
                  "Mask Blend 2.Out -> Color Blend 1.Coverage", "Mask Gradient 2.Color -> Mask Blend 2.Layer",
                  "Mask Image 1.Luminance -> Mask Blend 1.Layer"}));
    EXPECT_EQ(result.setting("Mask Blend 1", "Mode"), SettingValue(std::string("Multiply")));
    EXPECT_EQ(result.setting("Mask Blend 1", "Opacity"), SettingValue(50.0));
    EXPECT_TRUE(result.losses.texts().empty());
    // One above a disabled layer has no effect.
    SurfaceTexture off = imageOf("COLR", "a.png");
    off.isEnabled = false;
    const Described none = describe({off, mask});
    EXPECT_TRUE(none.surface.network.nodes.empty());
    EXPECT_TRUE(none.losses.texts().empty());
}

TEST(TextureNetwork, PatternsMaskTheLayerBelow) {
    SurfaceTexture grid = proceduralOf("BUMP", "Grid");
    grid.blend = TextureBlend::alpha;
    const Described result = describe({proceduralOf("BUMP", "Marble"), grid});
    EXPECT_EQ(
        result.connections(),
        (std::vector<std::string>{"Bump Blend 1.Out -> Bump.Height", "Bump Pattern 1.Height -> Bump Blend 1.Layer",
                                  "Bump.Normal -> Globe.Normal", "Mask Blend 1.Out -> Bump Blend 1.Coverage",
                                  "Mask Pattern 1.Alpha -> Mask Blend 1.Layer"}));
    EXPECT_EQ(result.setting("Mask Blend 1", "Below"), SettingValue(1.0));
}

TEST(TextureNetwork, ProceduralsAreSimilarPatterns) {
    SurfaceTexture texture = proceduralOf("COLR", "LW_FractalNoise");
    texture.value = {1, 0.5F, 0};
    texture.size = {2, 3, 4};
    texture.octaves = 99;
    const Described colour = describe({texture});
    EXPECT_EQ(colour.connections(), (std::vector<std::string>{"Color Blend 1.Color -> Globe.Color",
                                                              "Color Pattern 1.Alpha -> Color Blend 1.Coverage"}));
    EXPECT_EQ(colour.setting("Color Pattern 1", "Pattern"), SettingValue(std::string("Fractal Noise")));
    EXPECT_EQ(colour.setting("Color Pattern 1", "Size"), SettingValue(Double3{2, 3, 4}));
    EXPECT_EQ(colour.setting("Color Pattern 1", "Octaves"), SettingValue(16.0));
    EXPECT_EQ(colour.setting("Color Blend 1", "Layer"), SettingValue(Double3{1, 0.5, 0}));
    EXPECT_EQ(colour.losses.count(Loss::similarPattern), 1U);
    texture.channel = fourCC("DIFF");
    EXPECT_EQ(describe({texture}).setting("Diffuse Blend 1", "Layer"), SettingValue(0.5925)) << "the luminance";
    EXPECT_EQ(describe({proceduralOf("DIFF", "Dots")}).setting("Diffuse Pattern 1", "Thickness"), SettingValue(40.0));
}

TEST(TextureNetwork, ProceduralBumpsHaveTheirValueAsAmplitude) {
    SurfaceTexture texture = proceduralOf("BUMP", "Turbulence");
    texture.value.fill(0.5F);
    const Described result = describe({texture});
    EXPECT_EQ(result.connections(),
              (std::vector<std::string>{"Bump Amplitude 1.Out -> Bump Blend 1.Layer", "Bump Blend 1.Out -> Bump.Height",
                                        "Bump Pattern 1.Height -> Bump Amplitude 1.A", "Bump.Normal -> Globe.Normal"}));
    EXPECT_EQ(result.setting("Bump Amplitude 1", "B"), SettingValue(0.5));
}

TEST(TextureNetwork, GradientsOverWeightsHaveTheNodeOfTheirMap) {
    SurfaceTexture texture = gradientOf("DIFF", "Weight Map");
    texture.item = "Bend";
    const Described result = describe({texture});
    EXPECT_EQ(result.connections(), (std::vector<std::string>{"Diffuse Blend 1.Out -> Globe.Diffuse",
                                                              "Diffuse Gradient 1.Alpha -> Diffuse Blend 1.Coverage",
                                                              "Diffuse Gradient 1.Color -> Diffuse Blend 1.Layer",
                                                              "Diffuse Weight 1.Scalar -> Diffuse Gradient 1.Input"}));
    EXPECT_EQ(result.setting("Diffuse Gradient 1", "Source"), SettingValue(std::string("Input")));
    EXPECT_EQ(result.node("Diffuse Weight 1").server, "Weight Map");
    EXPECT_EQ(result.setting("Diffuse Weight 1", "Weight Map"), SettingValue(std::string("Bend")));
    EXPECT_TRUE(result.losses.texts().empty());
}

TEST(TextureNetwork, VertexColoursTintTheColourBelowTheLayers) {
    SurfaceChunkValues values;
    values.tint = {.intensity = 0.75F, .map = "Paint"};
    const std::vector<SettingDescription> settings = {
        {.label = "Color", .value = Double3{0.1, 0.2, 0.3}, .location = {}}};
    const Described alone = describe({}, settings, values);
    EXPECT_EQ(alone.connections(), (std::vector<std::string>{"Vertex Color Blend.Color -> Globe.Color",
                                                             "Vertex Colors.Color -> Vertex Color Blend.Layer"}));
    EXPECT_EQ(alone.node("Vertex Colors").server, "Vertex Color");
    EXPECT_EQ(alone.setting("Vertex Colors", "Color Map"), SettingValue(std::string("Paint")));
    EXPECT_EQ(alone.setting("Vertex Color Blend", "Mode"), SettingValue(std::string("Multiply")));
    EXPECT_EQ(alone.setting("Vertex Color Blend", "Opacity"), SettingValue(75.0));
    EXPECT_EQ(alone.setting("Vertex Color Blend", "Below"), SettingValue(Double3{0.1, 0.2, 0.3}));
    const Described layered = describe({imageOf("COLR", "a.png")}, settings, values);
    EXPECT_EQ(std::ranges::count(layered.connections(), "Vertex Color Blend.Color -> Color Blend 1.Below"), 1);
}

TEST(TextureNetwork, ANodeDoesNotGetTheNameOfItsSurface) {
    SurfaceDescription surface;
    surface.name = "Color Image 1";
    Losses losses;
    describeTextures({imageOf("COLR", "a.png")}, {}, surface, losses);
    EXPECT_EQ(surface.network.nodes[0].name, "Color Image 1 (2)");
}

TEST(TextureNetwork, NumbersThatAreNotFiniteCountAsZero) {
    SurfaceTexture texture = imageOf("COLR", "a.png");
    texture.opacity = std::numeric_limits<float>::infinity();
    texture.centre[1] = -std::numeric_limits<float>::infinity();
    const Described result = describe({texture});
    EXPECT_EQ(result.setting("Color Blend 1", "Opacity"), SettingValue(0.0));
    EXPECT_EQ(result.setting("Color Image 1", "Center"), SettingValue(Double3{0, 0, 0}));
}

TEST(TextureNetwork, LayersWithoutAnEffectMakeNoNodes) {
    SurfaceTexture disabled = imageOf("COLR", "a.png"), empty = imageOf("COLR", ""),
                   unmapped = imageOf("COLR", "a.png"), keyless = gradientOf("COLR", "Slope");
    disabled.isEnabled = false;
    empty.clip = 0;
    unmapped.projection = 5;
    keyless.keys.clear();
    const Described result = describe({disabled, empty, unmapped, keyless});
    EXPECT_TRUE(result.surface.network.nodes.empty());
    EXPECT_TRUE(result.losses.texts().empty());
}

struct LossRow {
    Loss loss;
    std::function<void(SurfaceTexture &)> change; // of an image of the colour
    bool isLeftOut;                               // or only ignored in part
};

TEST(TextureNetwork, WhatItDoesNotHaveIsCounted) {
    const LossRow kRows[] = {
        {Loss::shader, [](SurfaceTexture &t) { t.kind = Kind::shader; }, true},
        {Loss::procedural, [](SurfaceTexture &t) { t.kind = Kind::procedural; }, true},
        {Loss::otherChannel, [](SurfaceTexture &t) { t.channel = fourCC("TRNL"); }, true},
        {Loss::otherChannel, [](SurfaceTexture &t) { t = gradientOf("BUMP", "Slope"); }, true},
        {Loss::alphaLayer, [](SurfaceTexture &t) { t.blend = TextureBlend::alpha; }, true},
        {Loss::displacementLayer, [](SurfaceTexture &t) { t.blend = TextureBlend::displacement; }, true},
        {Loss::otherImage, [](SurfaceTexture &t) { t.imageFile.clear(); }, true},
        {Loss::gradientInput, [](SurfaceTexture &t) { t = gradientOf("COLR", "Light Incidence"); }, true},
        {Loss::gradientKeys,
         [](SurfaceTexture &t) {
             t = gradientOf("COLR", "Slope");
             t.keys.resize(9);
         },
         false},
        {Loss::imageFilter, [](SurfaceTexture &t) { t.hasImagePlugIn = true; }, false},
        {Loss::filterEnvelope, [](SurfaceTexture &t) { t.hasFilterEnvelope = true; }, false},
        {Loss::alphaImage, [](SurfaceTexture &t) { t.alphaFile = "mask.iff"; }, false},
        {Loss::animatedTexture, [](SurfaceTexture &t) { t.envelopes[TextureNumber::size] = {nullptr}; }, false},
        {Loss::envelopeModifier,
         [](SurfaceTexture &t) {
             t.envelopes[TextureNumber::opacity] = {
                 std::make_shared<ObjectEnvelope>(ObjectEnvelope{.keys = {{.value = 1}}, .isModified = true})};
         },
         false},
        {Loss::animatedTexture, [](SurfaceTexture &t) { t.isMoving = true; }, false},
        {Loss::referenceObject, [](SurfaceTexture &t) { t.reference = "Null"; }, false},
        {Loss::frozenProjection, [](SurfaceTexture &t) { t.isFrozen = true; }, false},
    };
    for (const LossRow &row : kRows) {
        SurfaceTexture texture = imageOf("COLR", "a.png");
        row.change(texture);
        const Described result = describe({texture});
        EXPECT_EQ(result.losses.count(row.loss), 1U) << static_cast<int>(row.loss);
        ASSERT_EQ(result.losses.texts().size(), 1U) << static_cast<int>(row.loss);
        EXPECT_NE(result.losses.texts()[0].message.find("surface \"Globe\""), std::string::npos);
        EXPECT_EQ(result.surface.network.nodes.empty(), row.isLeftOut) << static_cast<int>(row.loss);
    }
}

TEST(TextureNetwork, TexturesBesideNodesAreCountedUnlessNodesReplaceThem) {
    SurfaceTexture shader, disabled = imageOf("COLR", "a.png");
    shader.kind = Kind::shader;
    disabled.isEnabled = false;
    Losses losses;
    noteUnusedTextures({imageOf("COLR", "a.png"), imageOf("DIFF", "a.png"), imageOf("BUMP", "a.png"), shader, disabled},
                       {"Color", "Normal"}, "Globe", losses);
    EXPECT_EQ(losses.count(Loss::layersBesideNodes), 2U);
    EXPECT_EQ(losses.count(Loss::shader), 1U);
}

} // namespace
} // namespace velm::host::test
