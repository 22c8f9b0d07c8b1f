#include "host/scene/convert/envelope_keys.h"

#include "host/scene/format/shortest.h"
#include "module/host.h"

#include <algorithm>

namespace velm::host {

namespace {

using Envelope = std::shared_ptr<const ObjectEnvelope>;

bool isKeyed(const Envelope &envelope) { return envelope && !envelope->keys.empty(); }

// Whether one of the four numbers of a key has the unit of the key's value.
bool isValue(int shape, std::size_t number) {
    if (shape == kShapeHermite || shape == kShapeBezier1) return true;
    return shape == kShapeBezier2 && number % 2 == 1;
}

bool hasFlatTangents(const EnvelopeKey &key) {
    for (std::size_t i = 0; i < key.numbers.size(); ++i)
        if (isValue(key.shape, i) && key.numbers[i] != 0) return false;
    return true;
}

// Whether a value that is the same at all of the envelope's keys stays constant between and beyond them.
bool keepsConstant(const ObjectEnvelope &envelope) {
    return envelope.before != kBehaveReset && envelope.after != kBehaveReset &&
           std::ranges::all_of(envelope.keys, hasFlatTangents);
}

// The value of an envelope that is constant; nothing for others.
std::optional<double> constantOf(const Envelope &envelope, float constant) {
    if (!isKeyed(envelope)) return static_cast<double>(constant);
    const std::vector<EnvelopeKey> &keys = envelope->keys;
    const bool isFlat = std::ranges::all_of(keys, [&](const EnvelopeKey &key) { return key.value == keys[0].value; });
    if (keys.size() == 1 || (isFlat && keepsConstant(*envelope))) return keys[0].value;
    return std::nullopt;
}

KeyDescription keyOf(const EnvelopeKey &key, double factor) {
    KeyDescription result{.time = key.time, .value = {key.value * factor}, .shape = key.shape};
    if (key.shape == kShapeTcb) {
        result.tension = key.numbers[0];
        result.continuity = key.numbers[1];
        result.bias = key.numbers[2];
        return result;
    }
    result.parameters = key.numbers;
    for (std::size_t i = 0; i < key.numbers.size(); ++i)
        if (isValue(key.shape, i)) result.parameters[i] *= factor;
    return result;
}

KeysDescription keysOf(const ObjectEnvelope &envelope, int components, double factor) {
    KeysDescription result{.components = components, .keys = {}, .before = envelope.before, .after = envelope.after};
    for (const EnvelopeKey &key : envelope.keys) result.keys.push_back(keyOf(key, factor));
    return result;
}

bool haveSameTiming(const ObjectEnvelope &a, const ObjectEnvelope &b) {
    return a.before == b.before && a.after == b.after &&
           std::ranges::equal(a.keys, b.keys, [](const EnvelopeKey &one, const EnvelopeKey &other) {
               return one.time == other.time && one.shape == other.shape && one.numbers == other.numbers;
           });
}

} // namespace

bool isAnimated(const ComponentEnvelopes &envelopes) { return std::ranges::any_of(envelopes, isKeyed); }

bool isModified(const ComponentEnvelopes &envelopes) {
    return std::ranges::any_of(envelopes, [](const Envelope &envelope) { return envelope && envelope->isModified; });
}

SettingValue animatedNumber(const Envelope &envelope, float constant, double factor) {
    const std::optional<double> value = constantOf(envelope, constant);
    return shortest(value ? SettingValue(*value * factor) : SettingValue(keysOf(*envelope, 1, factor)), factor);
}

std::optional<SettingValue> animatedTriple(const ComponentEnvelopes &envelopes, const std::array<float, 3> &constants,
                                           double factor) {
    const auto envelopeOf = [&](std::size_t i) { return i < envelopes.size() ? envelopes[i] : nullptr; };
    Envelope timing; // of the first component whose value changes
    Double3 values{};
    for (std::size_t i = 3; i-- > 0;)
        if (const auto value = constantOf(envelopeOf(i), constants[i]))
            values[i] = *value * factor;
        else
            timing = envelopeOf(i);
    if (!timing) return shortest(SettingValue(values), factor);
    KeysDescription keys = keysOf(*timing, 3, factor);
    for (std::size_t i = 0; i < 3; ++i) {
        const bool isConstant = constantOf(envelopeOf(i), constants[i]).has_value();
        if (isConstant ? !keepsConstant(*timing) : !haveSameTiming(*timing, *envelopeOf(i))) return std::nullopt;
        for (std::size_t k = 0; k < keys.keys.size(); ++k)
            keys.keys[k].value[i] = isConstant ? values[i] : envelopeOf(i)->keys[k].value * factor;
    }
    return shortest(SettingValue(keys), factor);
}

} // namespace velm::host
