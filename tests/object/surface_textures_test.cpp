// The texture layers of surfaces, in objects of both forms.
#include "tests/object/object_bytes.h"

#include "host/base/four_cc.h"
#include "host/object/old_surfaces.h"
#include "host/object/surface_textures.h"

#include <tuple>

namespace velm::host::test {
namespace {

using Kind = SurfaceTexture::Kind;
using Triple = std::array<float, 3>;

const std::string kNoEnvelope = words({0});

std::string header(const std::string &kind, const std::string &ordinal, const std::string &rest) {
    return subChunk(kind, cString(ordinal) + rest);
}
std::string imageBlock(const std::string &ordinal, const std::string &headerRest, const std::string &attributes) {
    return subChunk("BLOK", header("IMAP", ordinal, headerRest) + attributes);
}

// The textures among the sub-chunks of a surface.
std::vector<SurfaceTexture> texturesIn(const std::string &subChunks) {
    const std::string bytes = objectFile(chunk("SURF", subChunks));
    const IffFile file(bytes, "a.lwo");
    EnvelopeList envelopes;
    envelopes.add({.number = 4, .keys = {{.time = 0, .value = 2}, {.time = 1, .value = 3}}});
    return readTextures(file, file.subChunks(file.chunks().front().contents, "the surface"), envelopes);
}

std::vector<std::string> ordinalsOf(const std::vector<SurfaceTexture> &textures) {
    std::vector<std::string> ordinals;
    for (const SurfaceTexture &texture : textures) ordinals.push_back(texture.ordinal);
    return ordinals;
}

TEST(SurfaceTextures, AnImageHasItsHeaderPositionAndAttributes) {
    const std::string position = subChunk("TMAP", subChunk("CNTR", reals({1, 2, 3}) + kNoEnvelope) +
                                                      subChunk("SIZE", reals({4, 5, 6}) + kNoEnvelope) +
                                                      subChunk("ROTA", reals({0.1F, 0.2F, 0.3F}) + kNoEnvelope) +
                                                      subChunk("FALL", words({3}) + reals({7, 8, 9}) + kNoEnvelope) +
                                                      subChunk("OREF", cString("Null")) + subChunk("CSYS", words({1})));
    const std::vector<SurfaceTexture> textures = texturesIn(imageBlock(
        "\x80",
        subChunk("CHAN", "DIFF") + subChunk("OPAC", words({3}) + reals({0.25F}) + kNoEnvelope) +
            subChunk("ENAB", words({0})) + subChunk("NEGA", words({1})) + subChunk("AXIS", words({1})),
        position + subChunk("PROJ", words({5})) + subChunk("AXIS", words({2})) + subChunk("IMAG", words({7})) +
            subChunk("WRAP", words({0, 3})) + subChunk("WRPW", reals({2}) + kNoEnvelope) +
            subChunk("WRPH", reals({3}) + kNoEnvelope) + subChunk("VMAP", cString("Label")) +
            subChunk("TAMP", reals({0.75F}) + kNoEnvelope) + subChunk("AAST", words({1}) + reals({0.5F})) +
            subChunk("PIXB", words({0})) + subChunk("STCK", words({1}) + reals({0}))));
    ASSERT_EQ(textures.size(), 1U);
    const SurfaceTexture &texture = textures[0];
    EXPECT_EQ(texture.kind, Kind::image);
    EXPECT_EQ(texture.channel, fourCC("DIFF"));
    EXPECT_EQ(texture.blend, TextureBlend::multiply);
    EXPECT_EQ(texture.opacity, 0.25F);
    EXPECT_FALSE(texture.isEnabled);
    EXPECT_TRUE(texture.isNegative);
    EXPECT_EQ(texture.centre, (Triple{1, 2, 3}));
    EXPECT_EQ(texture.size, (Triple{4, 5, 6}));
    EXPECT_EQ(texture.rotation, (Triple{0.1F, 0.2F, 0.3F}));
    EXPECT_EQ(texture.falloffType, 3);
    EXPECT_EQ(texture.falloff, (Triple{7, 8, 9}));
    EXPECT_EQ(texture.reference, "Null");
    EXPECT_TRUE(texture.isInWorld);
    EXPECT_EQ(texture.projection, 5);
    EXPECT_EQ(texture.axis, 2) << "not that of the header";
    EXPECT_EQ(texture.clip, 7U);
    EXPECT_EQ(texture.wrap, (std::array<int, 2>{0, 3}));
    EXPECT_EQ(texture.repeats, (std::array<float, 2>{2, 3}));
    EXPECT_EQ(texture.uvMap, "Label");
    EXPECT_EQ(texture.amplitude, 0.75F);
    EXPECT_EQ(texture.antialiasing, 0.5F);
    EXPECT_FALSE(texture.isBlendingPixels);
    EXPECT_TRUE(texture.isFrozen);
    EXPECT_TRUE(texture.envelopes.empty());
}

TEST(SurfaceTextures, WhatAFileLeavesOutHasItsDefault) {
    const SurfaceTexture texture = texturesIn(imageBlock("\x80", subChunk("CHAN", "COLR"), "")).at(0);
    EXPECT_TRUE(texture.isEnabled);
    EXPECT_EQ(texture.blend, TextureBlend::additive);
    EXPECT_EQ(texture.opacity, 1);
    EXPECT_EQ(texture.size, (Triple{1, 1, 1}));
    EXPECT_EQ(texture.wrap, (std::array<int, 2>{1, 1}));
    EXPECT_EQ(texture.repeats, (std::array<float, 2>{1, 1}));
    EXPECT_EQ(texture.antialiasing, 1);
    // Numbers that the format does not define, and names that stand for nothing, are defaults, too.
    const std::string odd =
        subChunk("PROJ", words({99})) + subChunk("AXIS", words({3})) + subChunk("WRAP", words({4, 0xffff})) +
        subChunk("TMAP", subChunk("OREF", cString("(none)")) + subChunk("FALL", words({5}) + reals({0, 0, 0}))) +
        subChunk("AAST", words({0}) + reals({1})) + subChunk("WHAT", "?");
    const SurfaceTexture other = texturesIn(imageBlock("\x80", subChunk("OPAC", words({8}) + reals({1})), odd)).at(0);
    EXPECT_EQ(other.blend, TextureBlend::additive);
    EXPECT_EQ(other.projection, 0);
    EXPECT_EQ(other.axis, 0);
    EXPECT_EQ(other.wrap, (std::array<int, 2>{1, 1}));
    EXPECT_EQ(other.reference, "");
    EXPECT_EQ(other.falloffType, 0);
    EXPECT_EQ(other.antialiasing, 0) << "switched off";
}

TEST(SurfaceTextures, LayersAreInOrderOfTheirOrdinalsAsUnsignedBytes) {
    const auto block = [](const std::string &ordinal) { return imageBlock(ordinal, subChunk("CHAN", "COLR"), ""); };
    EXPECT_EQ(ordinalsOf(texturesIn(block("\xc0") + block("\x7f") + block("\x80\x90") + block("\x80"))),
              (std::vector<std::string>{"\x7f", "\x80", "\x80\x90", "\xc0"}));
    // Equal ones stay in the order of the file.
    const std::vector<SurfaceTexture> equal =
        texturesIn(imageBlock("\x80", subChunk("CHAN", "SPEC"), "") + imageBlock("\x80", subChunk("CHAN", "COLR"), ""));
    EXPECT_EQ(equal[0].channel, fourCC("SPEC"));
}

TEST(SurfaceTextures, AGradientHasKeysAndTheShapesOfItsSpans) {
    const std::string keys = subChunk("FKEY", reals({0, 1, 0, 0, 1}) + reals({90, 0, 0.5F, 1, 0.25F}));
    const std::string shapes = subChunk("IKEY", words({0, 2}));
    const std::string input = subChunk("PNAM", cString("Weight Map")) + subChunk("INAM", cString("Rust"));
    for (const std::string &attributes : {input + keys + shapes, shapes + keys + input}) {
        const SurfaceTexture texture =
            texturesIn(subChunk("BLOK", header("GRAD", "\x80", subChunk("CHAN", "COLR")) + attributes)).at(0);
        EXPECT_EQ(texture.kind, Kind::gradient);
        EXPECT_EQ(texture.input, "Weight Map");
        EXPECT_EQ(texture.item, "Rust");
        ASSERT_EQ(texture.keys.size(), 2U);
        EXPECT_EQ(texture.keys[0].colour, (std::array<float, 4>{1, 0, 0, 1}));
        EXPECT_EQ(texture.keys[1].at, 90);
        EXPECT_EQ(texture.keys[1].colour, (std::array<float, 4>{0, 0.5F, 1, 0.25F}));
        EXPECT_EQ(texture.keys[0].shape, GradientKey::Shape::linear);
        EXPECT_EQ(texture.keys[1].shape, GradientKey::Shape::step);
    }
}

TEST(SurfaceTextures, ProceduralsAndShadersHaveTheNamesOfTheirFunctions) {
    const auto function = [](const char *name) { return subChunk("FUNC", cString(name) + "data"); };
    const std::vector<SurfaceTexture> textures = texturesIn(
        subChunk("BLOK", header("PROC", "\x80", subChunk("CHAN", "BUMP")) + function("Crumple") +
                             subChunk("VALU", reals({0.5F}))) +
        subChunk("BLOK", header("PROC", "\x85", subChunk("CHAN", "COLR")) + subChunk("VALU", reals({1, 0, 0.5F}))) +
        subChunk("BLOK", header("SHDR", "\x90", subChunk("ENAB", words({0}))) + function("Fresnel")) +
        subChunk("BLOK", header("ELSE", "\xa0", "")) + subChunk("BLOK", "") + subChunk("COLR", reals({1, 1, 1})));
    ASSERT_EQ(textures.size(), 3U);
    EXPECT_EQ(textures[0].kind, Kind::procedural);
    EXPECT_EQ(textures[0].function, "Crumple");
    EXPECT_EQ(textures[0].value, (Triple{0.5F, 0.5F, 0.5F}));
    EXPECT_EQ(textures[1].value, (Triple{1, 0, 0.5F}));
    EXPECT_EQ(textures[2].kind, Kind::shader);
    EXPECT_EQ(textures[2].function, "Fresnel");
    EXPECT_FALSE(textures[2].isEnabled);
}

TEST(SurfaceTextures, NumbersHaveTheirEnvelopes) {
    using enum TextureNumber;
    const std::string envelope = words({3}), three = reals({0, 0, 0}) + envelope;
    const std::tuple<std::string, TextureNumber, std::size_t> kRows[] = {
        {subChunk("TMAP", subChunk("CNTR", three)), centre, 3},
        {subChunk("TMAP", subChunk("SIZE", three)), size, 3},
        {subChunk("TMAP", subChunk("ROTA", three)), rotation, 3},
        {subChunk("TMAP", subChunk("FALL", words({0}) + three)), falloff, 3},
        {subChunk("WRPW", reals({1}) + envelope), repeatsU, 1},
        {subChunk("WRPH", reals({1}) + envelope), repeatsV, 1},
        {subChunk("TAMP", reals({1}) + envelope), amplitude, 1}};
    for (const auto &[attributes, number, components] : kRows) {
        const SurfaceTexture texture = texturesIn(imageBlock("\x80", "", attributes)).at(0);
        ASSERT_EQ(texture.envelopes.size(), 1U);
        ASSERT_EQ(texture.envelopes.at(number).size(), components);
        EXPECT_FALSE(texture.envelopes.at(number)[0]) << "the object has no envelope 3";
        if (components == 1) continue;
        ASSERT_TRUE(texture.envelopes.at(number)[1]) << "but it has 4";
        EXPECT_EQ(texture.envelopes.at(number)[1]->keys[1].value, 3);
    }
    const std::string blending = subChunk("OPAC", words({0}) + reals({1}) + words({4}));
    EXPECT_EQ(texturesIn(imageBlock("\x80", blending, "")).at(0).envelopes.at(opacity).at(0)->keys[0].value, 2);
}

TEST(SurfaceTextures, TruncatedTheySayChunkAndByte) {
    const auto refusalOf = [](const std::string &subChunks) { return errorOf([&] { texturesIn(subChunks); }); };
    EXPECT_EQ(refusalOf(subChunk("BLOK", "IM")), "a.lwo: byte 26: the texture ends within the head of a sub-chunk");
    EXPECT_EQ(refusalOf(subChunk("BLOK", subChunk("IMAP", "\x80"))),
              "a.lwo: byte 32: the ordinal of a texture has no end");
    EXPECT_EQ(refusalOf(imageBlock("\x80", subChunk("CHAN", "CO"), "")),
              "a.lwo: byte 40: the chunk CHAN: it ends within a number");
    EXPECT_EQ(refusalOf(imageBlock("\x80", "", subChunk("TMAP", subChunk("SIZE", reals({1, 1}))))),
              "a.lwo: byte 54: the chunk SIZE: it ends within a number");
    EXPECT_EQ(refusalOf(subChunk("BLOK", header("GRAD", "\x80", "") + subChunk("FKEY", reals({1, 2, 3})))),
              "a.lwo: byte 52: the chunk FKEY: it ends within a number");
    EXPECT_EQ(refusalOf(imageBlock("\x80", "", subChunk("VMAP", "UV"))),
              "a.lwo: byte 40: the name of a UV map has no end");
}

// ---- Objects of LightWave 5 ----

std::vector<SurfaceTexture> oldTexturesIn(const std::string &subChunks) {
    return readOldSurfaces(oldObjectFile(chunk("SURF", cString("Old") + subChunks)), "a.lwo").at(0).textures;
}

TEST(OldTextures, BelongToTheChannelThatBeginsThem) {
    constexpr std::size_t kAxisZ = 4, kWorld = 8, kNegative = 16, kBlended = 32;
    const std::vector<SurfaceTexture> textures = oldTexturesIn(
        subChunk("TSIZ", reals({9, 9, 9})) + // of nothing
        subChunk("CTEX", cString("Cylindrical Image Map")) +
        subChunk("TFLG", words({kAxisZ | kWorld | kNegative | kBlended})) + subChunk("TSIZ", reals({1, 2, 3})) +
        subChunk("TCTR", reals({4, 5, 6})) + subChunk("TFAL", reals({0.5F, 0, 0})) +
        subChunk("TVEL", reals({0, 0, 1})) + subChunk("TREF", cString("Null")) +
        subChunk("TIMG", cString("C:\\maps\\label.iff")) + subChunk("TALP", cString("mask.iff")) +
        subChunk("TWRP", words({0, 2})) + subChunk("TFP0", reals({2})) + subChunk("TFP1", reals({0})) +
        subChunk("TOPC", reals({0.75F})) + subChunk("BTEX", cString("Crumple")) + subChunk("TAMP", reals({0.5F})) +
        subChunk("TVAL", words({128})) + subChunk("TFRQ", words({3})) + subChunk("TFP0", reals({5})) +
        subChunk("TIMG", cString("(none)")));
    ASSERT_EQ(textures.size(), 2U);
    const SurfaceTexture &image = textures[0], &bump = textures[1];
    EXPECT_EQ(image.kind, Kind::image);
    EXPECT_EQ(image.channel, fourCC("COLR"));
    EXPECT_EQ(image.blend, TextureBlend::normal);
    EXPECT_EQ(image.opacity, 0.75F);
    EXPECT_EQ(image.projection, 1);
    EXPECT_EQ(image.axis, 2);
    EXPECT_TRUE(image.isInWorld);
    EXPECT_TRUE(image.isNegative);
    EXPECT_TRUE(image.isBlendingPixels);
    EXPECT_EQ(image.antialiasing, 0);
    EXPECT_EQ(image.size, (Triple{1, 2, 3}));
    EXPECT_EQ(image.centre, (Triple{4, 5, 6}));
    EXPECT_EQ(image.falloff, (Triple{0.5F, 0, 0}));
    EXPECT_TRUE(image.isMoving);
    EXPECT_EQ(image.reference, "Null");
    EXPECT_EQ(image.imageFile, "C:\\maps\\label.iff");
    EXPECT_EQ(image.alphaFile, "mask.iff");
    EXPECT_EQ(image.wrap, (std::array<int, 2>{0, 2}));
    EXPECT_EQ(image.repeats, (std::array<float, 2>{2, 1})) << "not at all is once";
    EXPECT_EQ(bump.kind, Kind::procedural);
    EXPECT_EQ(bump.channel, fourCC("BUMP"));
    EXPECT_EQ(bump.amplitude, 0.5F);
    EXPECT_EQ(bump.value, (Triple{0.5F, 0.5F, 0.5F}));
    EXPECT_EQ(bump.octaves, 3);
    const std::string sequence =
        subChunk("CTEX", cString("Planar Image Map")) + subChunk("TIMG", cString("maps/fire.iff (sequence)"));
    EXPECT_EQ(oldTexturesIn(sequence).at(0).imageFile, "") << "it is no still";
    EXPECT_NE(oldTexturesIn(sequence).at(0).clip, 0U);
    const std::string red = subChunk("CTEX", cString("Marble")) + subChunk("TCLR", big(0xff003300, 4));
    EXPECT_EQ(oldTexturesIn(red).at(0).value, (Triple{1, 0, 0.2F}));
    EXPECT_EQ(bump.function, "Crumple");
    EXPECT_EQ(bump.imageFile, "");
    EXPECT_EQ(bump.repeats, (std::array<float, 2>{1, 1}));
}

TEST(OldTextures, HaveTheProjectionsOfTheirKinds) {
    const std::pair<const char *, int> kKinds[] = {{"Planar Image Map", 0},
                                                   {"Cylindrical Image Map", 1},
                                                   {"Spherical Image Map", 2},
                                                   {"Cubic Image Map", 3},
                                                   {"Front Projection Image Map", 4}};
    for (const auto &[kind, projection] : kKinds) {
        const SurfaceTexture texture = oldTexturesIn(subChunk("DTEX", cString(kind))).at(0);
        EXPECT_EQ(texture.kind, Kind::image) << kind;
        EXPECT_EQ(texture.projection, projection) << kind;
        EXPECT_EQ(texture.antialiasing, 1) << kind;
    }
}

} // namespace
} // namespace velm::host::test
