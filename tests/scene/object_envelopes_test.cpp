// The envelopes of object files in scenes: as keys of settings, and in networks.
#include "tests/object/object_bytes.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include "host/scene/convert/envelope_keys.h"
#include "host/scene/convert/object_surfaces.h"
#include "host/scene/convert/write_surfaces.h"

namespace velm::host::test {
namespace {

// From `start` at 0 s to `end` at `endTime`, in a straight line.
std::string lineChunk(std::size_t number, float start, float end, float endTime) {
    return chunk("ENVL", words({number}) + subChunk("KEY ", reals({0, start})) +
                             subChunk("KEY ", reals({endTime, end})) + subChunk("SPAN", "LINE"));
}
std::string surfaceChunk(const std::string &subChunks) {
    return chunk("SURF", cString("Lamp") + cString("") + subChunks);
}
std::string numberChunk(const std::string &id, float number, std::size_t envelope) {
    return subChunk(id, reals({number}) + words({envelope}));
}

constexpr double kTolerance = 1e-6; // single precision of the file

// The surface's values at a time in seconds.
SurfaceValues valuesAt(SceneSurfaces &surfaces, double time) {
    surfaces.newTime(0, time);
    ShadingSample sample{};
    sample.shadingNormal[1] = 1;
    return surfaces.surface("Lamp")->evaluate(&sample);
}

// The values at 0.5 s of an object's only surface.
SurfaceValues halfway(const std::string &chunks) {
    const TemporaryDirectory directory;
    directory.write("a.lwo", triangleObject("Lamp", chunks));
    const SceneDescription scene = readSceneText(
        R"({"cameras": {"C": {}}, "objects": {"A": {"mesh": {"file": "a.lwo"}}}})", directory / "scene.json", {});
    EXPECT_TRUE(scene.notes.empty());
    SceneSurfaces built(scene, serverList());
    return valuesAt(built, 0.5);
}

TEST(ObjectEnvelopes, DriveEveryValueOfASurface) {
    const std::string numbers = numberChunk("LUMI", 9, 1) + numberChunk("DIFF", 9, 2) + numberChunk("SPEC", 9, 1) +
                                numberChunk("GLOS", 9, 2) + numberChunk("REFL", 9, 1) + numberChunk("TRAN", 9, 2) +
                                numberChunk("RIND", 9, 1);
    const SurfaceValues values = halfway(lineChunk(1, 0, 1, 1) + lineChunk(2, 1, 0.5F, 1) + surfaceChunk(numbers));
    EXPECT_NEAR(values.luminosity, 0.5, kTolerance);
    EXPECT_NEAR(values.diffuse, 0.75, kTolerance);
    EXPECT_NEAR(values.specular, 0.5, kTolerance);
    EXPECT_NEAR(values.glossiness, 0.75, kTolerance);
    EXPECT_NEAR(values.reflection, 0.5, kTolerance);
    EXPECT_NEAR(values.transparency, 0.75, kTolerance);
    EXPECT_NEAR(values.refractionIndex, 0.5, kTolerance);
}

TEST(ObjectEnvelopes, DriveTheColourWithAndWithoutCommonKeys) {
    const std::string colour = subChunk("COLR", reals({9, 9, 0.125F}) + words({1}));
    for (const float endTime : {1.0F, 2.0F}) {
        SCOPED_TRACE(endTime);
        const SurfaceValues values =
            halfway(lineChunk(1, 0, 1, 1) + lineChunk(2, 0, 1, endTime) + surfaceChunk(colour));
        EXPECT_NEAR(values.colour[0], 0.5, kTolerance);
        EXPECT_NEAR(values.colour[1], 0.5 / static_cast<double>(endTime), kTolerance);
        EXPECT_NEAR(values.colour[2], 0.125, kTolerance) << "there is no third envelope";
    }
}

TEST(ObjectEnvelopes, ThatAreMissingAreCounted) {
    const ObjectFile object(objectFile(surfaceChunk(numberChunk("DIFF", 0.5F, 7))), "a.lwo");
    const ObjectSurfaces found = surfacesOf(object);
    EXPECT_EQ(found.losses.count(Loss::animatedValue), 1U);
    ASSERT_EQ(found.animated.size(), 1U);
    EXPECT_EQ(found.animated[0].what, "the value DIFF of the surface \"Lamp\"");
    EXPECT_EQ(found.surfaces[0].settings[0].value, SettingValue(0.5));
}

TEST(ObjectEnvelopes, OfAColourWithSeparateKeysAreCountedBesideNodes) {
    const std::string rain = networkBlock(nodeBlocks("Surface", "Root", "") + nodeBlocks("Weather", "Rain", ""), "");
    const std::string colour = subChunk("COLR", reals({1, 1, 1}) + words({1}));
    const std::string envelopes = lineChunk(1, 0, 1, 1) + lineChunk(2, 0, 1, 2);
    const ObjectSurfaces beside = surfacesOf(ObjectFile(objectFile(envelopes + surfaceChunk(colour + rain)), "a.lwo"));
    EXPECT_EQ(beside.losses.count(Loss::animatedValue), 1U);
    EXPECT_TRUE(beside.surfaces[0].network.nodes.empty());
    const ObjectSurfaces alone = surfacesOf(ObjectFile(objectFile(envelopes + surfaceChunk(colour)), "a.lwo"));
    EXPECT_EQ(alone.losses.count(Loss::animatedValue), 0U);
    EXPECT_TRUE(alone.animated.at(0).isInNetwork);
}

TEST(ObjectEnvelopes, ChangedByAPlugInAreCounted) {
    const std::string noise =
        chunk("ENVL", words({1}) + subChunk("KEY ", reals({0, 1})) + subChunk("CHAN", cString("Noise") + words({0})));
    const ObjectFile object(objectFile(noise + surfaceChunk(numberChunk("DIFF", 0, 1))), "a.lwo");
    EXPECT_EQ(surfacesOf(object).losses.count(Loss::envelopeModifier), 1U);
}

TEST(ObjectEnvelopes, SurviveUnpackingAndPacking) {
    const std::string root =
        networkBlock(nodeBlocks("Surface", "Surface", "") + nodeBlocks("Weather", "Rain", "wet!"), "");
    const std::string bytes = objectFile(lineChunk(1, 0, 0.3F, 0.1F) +
                                         surfaceChunk(numberChunk("LUMI", 0, 1) + numberChunk("DIFF", 1, 0) + root));
    const ObjectFile object(bytes, "a.lwo");
    Warnings warnings(Warnings::Policy::goOn);
    UnpackedSurfaces found = unpackSurfaces(object, {}, serverList(), warnings);
    while (completeUnpacked(found, serverList())) {
    }
    const std::string text = writeSurfaces(found.images, found.surfaces);
    EXPECT_NE(text.find("\"keys\""), std::string::npos) << text;
    EXPECT_NE(text.find("0.3"), std::string::npos) << text;
    const TemporaryDirectory directory;
    const SceneDescription scene = readSurfaces(directory.write("scene.json", text), {});
    ObjectFile packed(bytes, "a.lwo");
    const SceneSurfaces built(scene, serverList(), &warnings);
    packSurfaces(packed, scene, built, DefaultSettings(serverList()));
    EXPECT_EQ(packed.write(), bytes) << "the network does not store the values that the object has itself";
}

TEST(ObjectEnvelopes, WithTooManyKeysAreRefused) {
    std::string keys;
    for (int i = 0; i < 1500; ++i) keys += subChunk("KEY ", reals({static_cast<float>(i), 0}));
    std::string surfaces;
    for (int i = 0; i < 1000; ++i) surfaces += surfaceChunk(numberChunk("DIFF", 0, 1));
    const std::string bytes = objectFile(chunk("ENVL", words({1}) + keys) + surfaces);
    EXPECT_EQ(errorOf([&] { surfacesOf(ObjectFile(bytes, "a.lwo")); }),
              "a.lwo: the envelopes of the surfaces have more than 1000000 keys");
}

// ---- Values ----

using Envelope = std::shared_ptr<const ObjectEnvelope>;

Envelope envelopeOf(std::vector<EnvelopeKey> keys, int before = kBehaveConstant) {
    return std::make_shared<ObjectEnvelope>(ObjectEnvelope{.before = before, .keys = std::move(keys)});
}

TEST(EnvelopeKeys, AreInTheUnitOfThePanel) {
    const Envelope envelope =
        envelopeOf({{.time = 0, .value = 0.5, .numbers = {0.25, 1, -1}},
                    {.time = 1, .value = 1, .shape = kShapeHermite, .numbers = {0.1, 0.2}},
                    {.time = 2, .value = 0, .shape = kShapeBezier2, .numbers = {-0.5, 0.1, 0.5, 0.2}}},
                   kBehaveReset);
    const auto keys = std::get<KeysDescription>(animatedNumber(envelope, 9, 100));
    EXPECT_EQ(keys.components, 1);
    EXPECT_EQ(keys.before, kBehaveReset);
    EXPECT_EQ(keys.keys, (std::vector<KeyDescription>{
                             {.time = 0, .value = {50}, .tension = 0.25, .continuity = 1, .bias = -1},
                             {.time = 1, .value = {100}, .shape = kShapeHermite, .parameters = {10, 20}},
                             {.time = 2, .value = {0}, .shape = kShapeBezier2, .parameters = {-0.5, 10, 0.5, 20}}}));
}

TEST(EnvelopeKeys, ThatGiveOneValueAreANumber) {
    EXPECT_EQ(animatedNumber(nullptr, 0.5F, 100), SettingValue(50.0));
    EXPECT_EQ(animatedNumber(envelopeOf({}), 0.5F, 1), SettingValue(0.5));
    EXPECT_EQ(animatedNumber(envelopeOf({{.value = 2}}), 0.5F, 1), SettingValue(2.0));
    EXPECT_EQ(animatedNumber(envelopeOf({{.value = 2}, {.time = 1, .value = 2}}), 0.5F, 1), SettingValue(2.0));
    // A spline with tangents leaves the value of its keys, and a reset leaves it before the first one.
    EXPECT_TRUE(std::holds_alternative<KeysDescription>(animatedNumber(
        envelopeOf({{.value = 2}, {.time = 1, .value = 2, .shape = kShapeHermite, .numbers = {1, 0}}}), 0, 1)));
    EXPECT_TRUE(std::holds_alternative<KeysDescription>(
        animatedNumber(envelopeOf({{.value = 2}, {.time = 1, .value = 2}}, kBehaveReset), 0, 1)));
}

TEST(EnvelopeKeys, OfThreeComponentsAreCommonOnes) {
    const EnvelopeKey start{.value = 1}, end{.time = 1, .value = 3},
        tilted{.time = 1, .shape = kShapeHermite, .numbers = {1, 0}};
    const auto isCommon = [](const ComponentEnvelopes &envelopes) {
        return animatedTriple(envelopes, {7, 8, 9}, 1).has_value();
    };
    const auto value = animatedTriple({envelopeOf({start, end}), nullptr, envelopeOf({start})}, {7, 8, 9}, 1);
    EXPECT_EQ(std::get<KeysDescription>(*value).keys,
              (std::vector<KeyDescription>{{.value = {1, 8, 1}}, {.time = 1, .value = {3, 8, 1}}}));
    EXPECT_EQ(animatedTriple({nullptr, envelopeOf({start}), nullptr}, {7, 8, 9}, 2), SettingValue(Double3{14, 2, 18}));
    EXPECT_FALSE(isCommon({envelopeOf({start, end}), envelopeOf({end, tilted}), nullptr}));
    EXPECT_FALSE(isCommon({envelopeOf({start, tilted}), nullptr, nullptr})) << "tangents move a constant";
    EXPECT_FALSE(isCommon({envelopeOf({start, end}, kBehaveReset), nullptr, nullptr})) << "so does a reset";
    EXPECT_FALSE(isCommon({envelopeOf({start, end}), envelopeOf({start, end}, kBehaveRepeat), nullptr}));
    EXPECT_TRUE(isCommon({}));
}

} // namespace
} // namespace velm::host::test
