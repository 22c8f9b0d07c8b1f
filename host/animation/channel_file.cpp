// Envelopes in saved states. Binary, "ENVL": the index of the channel (from 1, two bytes, or four with the first 0xff),
// then sub-blocks NAME (string), TYPE (kind of value, component), "PRE " (behaviour), for each key "KEY " (time, value)
// and SPAN (shape identifier and its numbers), and POST (behaviour). Text, `{ Envelope`: the number of keys, a line
// `Key value time shape p1 ... p6` for each, and `Behaviors pre post`. Of the six numbers the first three are tension,
// continuity and bias and the next two the tangents of Hermite and Bezier 1D; the first four of Bezier 2D are its
// handles. A file stores only the numbers that a key's shape uses.

#include "host/animation/channel.h"
#include "host/base/four_cc.h"

#include <array>
#include <cmath>

namespace velm::host {

namespace {

constexpr HostBlockId kEnvelope = {.id = fourCC("ENVL"), .token = "Envelope"};
constexpr HostBlockId kName = {.id = fourCC("NAME"), .token = "Name"};
constexpr HostBlockId kType = {.id = fourCC("TYPE"), .token = "Type"};
constexpr HostBlockId kBefore = {.id = fourCC("PRE "), .token = "Pre"};
constexpr HostBlockId kKey = {.id = fourCC("KEY "), .token = "Key"};
constexpr HostBlockId kSpan = {.id = fourCC("SPAN"), .token = "Span"};
constexpr HostBlockId kAfter = {.id = fourCC("POST"), .token = "Post"};
constexpr HostBlockId kBehaviours = {.id = fourCC("BEHV"), .token = "Behaviors"};
constexpr HostBlockId kEnd = {.id = 0, .token = nullptr};

// In the order of the shape codes, with as many numbers as each has in binary form.
constexpr std::array<HostBlockId, 7> kShapes = {{{.id = fourCC("TCB "), .token = "TCB"},
                                                 {.id = fourCC("HERM"), .token = "HERM"},
                                                 {.id = fourCC("BEZI"), .token = "BEZI"},
                                                 {.id = fourCC("LINE"), .token = "LINE"},
                                                 {.id = fourCC("STEP"), .token = "STEP"},
                                                 {.id = fourCC("BEZ2"), .token = "BEZ2"},
                                                 kEnd}};
constexpr std::array<int, 6> kShapeNumbers = {3, 2, 2, 0, 0, 4};

constexpr const char *kDamaged = "an envelope in the file is damaged";
constexpr const char *kMissing = "an envelope is missing in the file";

// The numbers of a key's shape, in the order of the binary form.
std::array<double *, 4> shapeNumbers(HostKey &key) {
    if (key.shape == kShapeTcb) return {&key.tension, &key.continuity, &key.bias, nullptr};
    auto &p = key.parameters;
    return {&p[0], &p[1], &p[2], &p[3]};
}

// ---- Binary ----

void saveBinary(const HostEnvelope &envelope, const HostSaveState &state, int component) {
    const auto leaf = [&state](const HostBlockId &id, auto write) {
        state.beginBlock(state.data, &id, 1);
        write();
        state.endBlock(state.data);
    };
    const auto behaviour = [&state](int code) {
        const auto word = static_cast<unsigned short>(code);
        state.writeU2(state.data, &word, 1);
    };
    const auto index = static_cast<unsigned short>(component + 1);
    state.writeU2(state.data, &index, 1);
    leaf(kName, [&] { state.writeString(state.data, envelope.name.c_str()); });
    leaf(kType, [&] {
        const std::array<unsigned char, 2> type = {static_cast<unsigned char>(envelope.type),
                                                   static_cast<unsigned char>(component)};
        state.writeU1(state.data, type.data(), 2);
    });
    leaf(kBefore, [&] { behaviour(envelope.before); });
    for (const auto &each : envelope.keys) {
        HostKey key = *each;
        leaf(kKey, [&] {
            const std::array<float, 2> numbers = {static_cast<float>(key.time), static_cast<float>(key.value)};
            state.writeFP(state.data, numbers.data(), 2);
        });
        leaf(kSpan, [&] {
            const auto shape = static_cast<std::size_t>(key.shape);
            state.writeId(state.data, &kShapes[shape]);
            const std::array<double *, 4> numbers = shapeNumbers(key);
            for (int i = 0; i < kShapeNumbers[shape]; ++i) {
                const auto number = static_cast<float>(*numbers[static_cast<std::size_t>(i)]);
                state.writeFP(state.data, &number, 1);
            }
        });
    }
    leaf(kAfter, [&] { behaviour(envelope.after); });
}

HostError loadBehaviour(const HostLoadState &state, int &behaviour) {
    unsigned short code = 0;
    if (state.readU2(state.data, &code, 1) != 1 || code > kBehaveLinear) return kDamaged;
    behaviour = code;
    return nullptr;
}

HostError loadBinaryKey(const HostLoadState &state, HostEnvelope &envelope, HostKey *&key) {
    std::array<float, 2> numbers{};
    if (state.readFP(state.data, numbers.data(), 2) != 2) return kDamaged;
    if (!std::isfinite(numbers[0]) || !std::isfinite(numbers[1])) return kDamaged;
    key = &envelope.putKey(numbers[0], numbers[1]);
    return nullptr;
}

HostError loadSpan(const HostLoadState &state, HostKey *key) {
    const unsigned int id = state.readId(state.data, kShapes.data());
    if (!key || id == 0) return kDamaged;
    for (std::size_t shape = 0; shape + 1 < kShapes.size(); ++shape)
        if (kShapes[shape].id == id) key->shape = static_cast<int>(shape);
    for (double *number : shapeNumbers(*key)) {
        float read = 0; // other programs write fewer or more of them
        if (!number || state.readFP(state.data, &read, 1) != 1) break;
        if (!std::isfinite(read)) return kDamaged;
        *number = read;
    }
    return nullptr;
}

HostError loadBinary(const HostLoadState &state, HostEnvelope &envelope) {
    static constexpr std::array<HostBlockId, 5> known = {kBefore, kKey, kSpan, kAfter, kEnd};
    unsigned short index = 0;
    if (state.readU2(state.data, &index, 1) != 1) return kDamaged;
    if (index >= 0xff00 && state.readU2(state.data, &index, 1) != 1) return kDamaged;
    HostKey *key = nullptr;
    while (const unsigned int id = state.findBlock(state.data, known.data())) {
        HostError error = nullptr;
        switch (id) {
        case kBefore.id: error = loadBehaviour(state, envelope.before); break;
        case kAfter.id: error = loadBehaviour(state, envelope.after); break;
        case kKey.id: error = loadBinaryKey(state, envelope, key); break;
        default: error = loadSpan(state, key); break;
        }
        state.endBlock(state.data);
        if (error) return error;
    }
    return nullptr;
}

// ---- Text ----

void saveText(const HostEnvelope &envelope, const HostSaveState &state) {
    const auto count = static_cast<int>(envelope.keys.size());
    state.writeI4(state.data, &count, 1);
    for (const auto &key : envelope.keys) {
        const auto &p = key->parameters;
        const bool handles = key->shape == kShapeHermite || key->shape == kShapeBezier1;
        std::array<double, 6> numbers = {key->tension,         key->continuity,      key->bias,
                                         handles ? p[0] : 0.0, handles ? p[1] : 0.0, 0.0};
        if (key->shape == kShapeBezier2) numbers = {p[0], p[1], p[2], p[3], 0, 0};
        state.beginBlock(state.data, &kKey, 1);
        const std::array<double, 2> valueAndTime = {key->value, key->time};
        state.writeDP(state.data, valueAndTime.data(), 2);
        state.writeI4(state.data, &key->shape, 1);
        state.writeDP(state.data, numbers.data(), 6);
        state.endBlock(state.data);
    }
    const std::array<int, 2> behaviours = {envelope.before, envelope.after};
    state.beginBlock(state.data, &kBehaviours, 1);
    state.writeI4(state.data, behaviours.data(), 2);
    state.endBlock(state.data);
}

HostError loadTextKey(const HostLoadState &state, HostEnvelope &envelope) {
    std::array<double, 2> valueAndTime{};
    int shape = 0;
    if (state.readDP(state.data, valueAndTime.data(), 2) != 2 || state.readI4(state.data, &shape, 1) != 1)
        return kDamaged;
    if (shape < kShapeTcb || shape > kShapeBezier2) return kDamaged;
    if (!std::isfinite(valueAndTime[0]) || !std::isfinite(valueAndTime[1])) return kDamaged;
    std::array<double, 6> numbers{};
    state.readDP(state.data, numbers.data(), 6); // missing numbers stay 0
    for (const double number : numbers)
        if (!std::isfinite(number)) return kDamaged;
    HostKey &key = envelope.putKey(valueAndTime[1], valueAndTime[0]);
    key.shape = shape;
    if (shape == kShapeBezier2) {
        key.parameters = {numbers[0], numbers[1], numbers[2], numbers[3]};
        return nullptr;
    }
    key.tension = numbers[0];
    key.continuity = numbers[1];
    key.bias = numbers[2];
    // Other programs also write the tangents of other shapes there; they follow from the keys.
    if (shape == kShapeHermite || shape == kShapeBezier1) key.parameters = {numbers[3], numbers[4], 0, 0};
    return nullptr;
}

HostError loadText(const HostLoadState &state, HostEnvelope &envelope) {
    static constexpr std::array<HostBlockId, 3> known = {kKey, kBehaviours, kEnd};
    int count = 0;
    if (state.readI4(state.data, &count, 1) != 1) return kDamaged;
    int found = 0;
    while (const unsigned int id = state.findBlock(state.data, known.data())) {
        HostError error = nullptr;
        if (id == kKey.id) {
            error = loadTextKey(state, envelope);
            ++found;
        } else {
            std::array<int, 2> codes{};
            if (state.readI4(state.data, codes.data(), 2) != 2) error = kDamaged;
            for (const int code : codes)
                if (code < kBehaveReset || code > kBehaveLinear) error = kDamaged;
            envelope.before = codes[0];
            envelope.after = codes[1];
        }
        state.endBlock(state.data);
        if (error) return error;
    }
    return found == count ? nullptr : kDamaged;
}

} // namespace

HostError saveEnvelope(const HostEnvelope &envelope, const HostSaveState *state, int component) {
    state->beginBlock(state->data, &kEnvelope, 0);
    if (state->mode == kStateText)
        saveText(envelope, *state);
    else
        saveBinary(envelope, *state, component);
    state->endBlock(state->data);
    return nullptr;
}

HostError loadEnvelope(HostEnvelope &envelope, const HostLoadState *state) {
    static constexpr std::array<HostBlockId, 2> known = {kEnvelope, kEnd};
    if (state->findBlock(state->data, known.data()) == 0) return kMissing;
    HostEnvelope loaded;
    const HostError error = state->mode == kStateText ? loadText(*state, loaded) : loadBinary(*state, loaded);
    state->endBlock(state->data);
    if (!error) envelope.assign(loaded);
    return error;
}

} // namespace velm::host
