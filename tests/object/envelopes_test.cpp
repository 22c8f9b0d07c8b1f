// The envelopes of LWO2 objects.
#include "tests/object/object_bytes.h"

#include "host/object/envelopes.h"
#include "module/host.h"

#include <limits>

namespace velm::host::test {
namespace {

ObjectEnvelope envelopeIn(const std::string &contents) {
    const std::string bytes = objectFile(chunk("ENVL", contents));
    const IffFile file(bytes, "a.lwo");
    return readEnvelope(file, file.chunks().front());
}

std::string key(float time, float value) { return subChunk("KEY ", reals({time, value})); }
std::string span(const std::string &shape, const std::vector<float> &numbers = {}) {
    return subChunk("SPAN", shape + reals(numbers));
}

TEST(Envelopes, HaveKeysWithShapesAndBehaviours) {
    const ObjectEnvelope envelope =
        envelopeIn(words({5}) + subChunk("TYPE", words({0x0204})) + subChunk("PRE ", words({2})) + key(0, 1) +
                   span("LINE") + key(0.5F, 2) + span("TCB ", {0.25F, -1, 1}) + key(1, 3) + span("HERM", {4, 5}) +
                   key(2, 4) + span("BEZI", {6, 7}) + key(3, 5) + span("BEZ2", {-1, -2, 1, 2}) + key(4, 6) +
                   span("STEP") + subChunk("POST", words({5})) + subChunk("NAME", cString("Color.R")));
    EXPECT_EQ(envelope.number, 5U);
    EXPECT_EQ(envelope.before, kBehaveRepeat);
    EXPECT_EQ(envelope.after, kBehaveLinear);
    EXPECT_FALSE(envelope.isModified);
    const std::vector<EnvelopeKey> expected = {
        {.time = 0, .value = 1, .shape = kShapeLinear},
        {.time = 0.5, .value = 2, .shape = kShapeTcb, .numbers = {0.25, -1, 1, 0}},
        {.time = 1, .value = 3, .shape = kShapeHermite, .numbers = {4, 5, 0, 0}},
        {.time = 2, .value = 4, .shape = kShapeBezier1, .numbers = {6, 7, 0, 0}},
        {.time = 3, .value = 5, .shape = kShapeBezier2, .numbers = {-1, -2, 1, 2}},
        {.time = 4, .value = 6, .shape = kShapeStepped}};
    EXPECT_EQ(envelope.keys, expected);
}

TEST(Envelopes, WhatIsOddIsMadeUsable) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const ObjectEnvelope envelope =
        envelopeIn(big(0xff001234, 4) + subChunk("PRE ", words({99})) + span("STEP") + key(2, 1) + span("WHAT", {1}) +
                   key(1, 5) + span("TCB ", {0.5F}) + key(2, 3) + key(kInfinity, 1) + key(1.5F, kInfinity));
    EXPECT_EQ(envelope.number, 0x1234U);
    EXPECT_EQ(envelope.before, kBehaveConstant);
    EXPECT_EQ(envelope.keys,
              (std::vector<EnvelopeKey>{{.time = 1, .value = 5, .numbers = {0.5, 0, 0, 0}}, {.time = 2, .value = 3}}));
}

TEST(Envelopes, PlugInsAreNoticedUnlessTheyAreDisabled) {
    EXPECT_TRUE(envelopeIn(words({1}) + subChunk("CHAN", cString("Noise") + words({0}))).isModified);
    EXPECT_FALSE(envelopeIn(words({1}) + subChunk("CHAN", cString("Noise") + words({1}))).isModified);
}

TEST(Envelopes, TruncatedTheySayChunkAndByte) {
    const auto refusalOf = [](const std::string &contents) { return errorOf([&] { envelopeIn(contents); }); };
    EXPECT_EQ(refusalOf("\1"), "a.lwo: byte 20: the chunk ENVL: it ends within a number");
    EXPECT_EQ(refusalOf(words({1}) + "KE"), "a.lwo: byte 22: the envelope ends within the head of a sub-chunk");
    EXPECT_EQ(refusalOf(words({1}) + subChunk("KEY ", reals({1}))),
              "a.lwo: byte 32: the chunk KEY : it ends within a number");
}

TEST(Envelopes, AreFoundByTheirNumbers) {
    EnvelopeList envelopes;
    envelopes.add({.number = 2, .keys = {{.value = 20}}});
    envelopes.add({.number = 4, .keys = {{.value = 40}}});
    envelopes.add({.number = 4, .keys = {{.value = 41}}});
    EXPECT_TRUE(envelopes.from(0, 3).empty());
    const ComponentEnvelopes found = envelopes.from(2, 3);
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(found[0]->keys[0].value, 20);
    EXPECT_FALSE(found[1]);
    EXPECT_EQ(found[2]->keys[0].value, 40) << "the first one of the number";
}

} // namespace
} // namespace velm::host::test
