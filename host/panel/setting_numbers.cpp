#include "host/panel/setting_numbers.h"

#include "host/animation/channel.h"
#include "host/animation/vparm.h"
#include "host/base/error.h"
#include "host/base/names.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace velm::host {

namespace {

// The parameter behind an animated control, which must have as many components as the control shows.
HostVParm &parameterOf(HostPanel &panel, const PanelItem &control, const SourceLocation &location,
                       const std::string &about) {
    auto *parm = static_cast<HostVParm *>(panel.value(control.valueId));
    if (!parm || parm->components() != control.type->components)
        throw InputError(location, about + "the panel shows a parameter with another number of components");
    return *parm;
}

void storeEdited(HostPanel &panel, const PanelItem &control, void *value, const SourceLocation &location,
                 const std::string &about) {
    if (!panel.edit(control, value)) throw InputError(location, about + "the node refused the value");
}

// True for those of the four parameters that have the value's unit; the others are times.
bool isValue(int shape, std::size_t parameter) { return shape != kShapeBezier2 || parameter % 2 == 1; }

void checkKeyValues(const PanelItem &control, const KeysDescription &keys, const SourceLocation &location,
                    const std::string &about) {
    const auto fail = [&](const std::string &what) { throw InputError(location, about + what); };
    const int components = control.type->components;
    if (control.type->storage != Storage::animated) fail("this setting cannot have keys");
    if (keys.components != components)
        fail(fmt::format("the keys have {} numbers each, the setting has {}", keys.components, components));
    if (keys.keys.empty()) fail("there are no keys");
    for (const int behaviour : {keys.before, keys.after})
        if (behaviour < kBehaveReset || behaviour > kBehaveLinear) fail("a behaviour beyond the keys is unknown");
    std::vector<double> times;
    for (const KeyDescription &key : keys.keys) {
        if (key.shape < kShapeTcb || key.shape > kShapeBezier2) fail("the shape of a key is unknown");
        std::vector<double> numbers = {key.time, key.tension, key.continuity, key.bias};
        numbers.insert(numbers.end(), key.parameters.begin(), key.parameters.end());
        if (!std::all_of(numbers.begin(), numbers.end(), [](double number) { return std::isfinite(number); }))
            fail("a number of a key is not finite");
        for (int i = 0; i < components; ++i)
            checkLimits(control, key.value[static_cast<std::size_t>(i)], location, about);
        times.push_back(key.time);
    }
    std::sort(times.begin(), times.end());
    const auto twice = std::adjacent_find(times.begin(), times.end());
    if (twice != times.end()) fail(fmt::format("there are two keys at {} seconds", numberText(*twice)));
}

void giveKey(HostEnvelope &envelope, const KeyDescription &from, double shownValue, double factor) {
    const HostEnvelopeFuncs &funcs = *envelopeFuncs();
    HostKey *key = funcs.createKey(&envelope, from.time, shownValue / factor);
    funcs.setKey(&envelope, key, kKeyShape, &from.shape);
    funcs.setKey(&envelope, key, kKeyTension, &from.tension);
    funcs.setKey(&envelope, key, kKeyContinuity, &from.continuity);
    funcs.setKey(&envelope, key, kKeyBias, &from.bias);
    for (std::size_t i = 0; i < from.parameters.size(); ++i) {
        const double number = isValue(from.shape, i) ? from.parameters[i] / factor : from.parameters[i];
        funcs.setKey(&envelope, key, kKeyParameter0 + static_cast<int>(i), &number);
    }
}

KeyDescription describeKey(const HostKey &key, double factor) {
    KeyDescription result{.time = key.time,
                          .value = {key.value * factor},
                          .shape = key.shape,
                          .tension = key.tension,
                          .continuity = key.continuity,
                          .bias = key.bias,
                          .parameters = key.parameters};
    for (std::size_t i = 0; i < result.parameters.size(); ++i)
        if (isValue(key.shape, i)) result.parameters[i] *= factor;
    return result;
}

bool alike(const HostKey &a, const HostKey &b) {
    return a.time == b.time && a.shape == b.shape && a.tension == b.tension && a.continuity == b.continuity &&
           a.bias == b.bias && a.parameters == b.parameters;
}

KeysDescription describeKeys(const HostVParm &parm, double factor) {
    const HostEnvelope &first = *parm.envelope(0);
    KeysDescription result{.components = parm.components(), .keys = {}, .before = first.before, .after = first.after};
    for (const auto &key : first.keys) result.keys.push_back(describeKey(*key, factor));
    for (int i = 1; i < parm.components(); ++i) {
        const HostEnvelope &other = *parm.envelope(i);
        const bool same = other.before == first.before && other.after == first.after &&
                          std::equal(first.keys.begin(), first.keys.end(), other.keys.begin(), other.keys.end(),
                                     [](const auto &a, const auto &b) { return alike(*a, *b); });
        if (!same) throw InputError(inQuotes(parm.channelName()) + ": the components have different keys");
        for (std::size_t k = 0; k < result.keys.size(); ++k)
            result.keys[k].value[static_cast<std::size_t>(i)] = other.keys[k]->value * factor;
    }
    return result;
}

} // namespace

std::string numberText(double number) {
    constexpr int kDigits = 10;
    std::array<char, 32> text{};
    const double shown = number == 0 ? 0 : number; // no "-0"
    const auto written =
        std::to_chars(text.data(), text.data() + text.size(), shown, std::chars_format::general, kDigits);
    return {text.data(), written.ptr};
}

void checkLimits(const PanelItem &control, double shown, const SourceLocation &location, const std::string &about) {
    if (!std::isfinite(shown)) throw InputError(location, about + "the number is not finite");
    const bool low = control.minimum && shown < *control.minimum;
    const bool high = control.maximum && shown > *control.maximum;
    if (!low && !high) return;
    std::string limits;
    if (control.minimum && control.maximum)
        limits = fmt::format("from {} to {}", *control.minimum, *control.maximum);
    else
        limits = low ? fmt::format("at least {}", *control.minimum) : fmt::format("at most {}", *control.maximum);
    const std::string unit = unitName(control.type->unit);
    throw InputError(location, fmt::format("{}{} is beyond the limits: {}{}{}", about, numberText(shown), limits,
                                           unit.empty() ? "" : " ", unit));
}

void checkNumbers(HostPanel &panel, const PanelItem &control, const Double3 &shown, const SourceLocation &location,
                  const std::string &about) {
    for (int i = 0; i < control.type->components; ++i)
        checkLimits(control, shown[static_cast<std::size_t>(i)], location, about);
    if (control.type->storage != Storage::real) parameterOf(panel, control, location, about);
}

void checkKeys(HostPanel &panel, const PanelItem &control, const KeysDescription &keys, const SourceLocation &location,
               const std::string &about) {
    checkKeyValues(control, keys, location, about);
    parameterOf(panel, control, location, about);
}

void applyNumbers(HostPanel &panel, const PanelItem &control, const Double3 &shown, const SourceLocation &location,
                  const std::string &about) {
    checkNumbers(panel, control, shown, location, about);
    const double factor = shownFactor(control.type->unit);
    double values[3] = {};
    for (int i = 0; i < control.type->components; ++i) values[i] = shown[static_cast<std::size_t>(i)] / factor;
    if (control.type->storage == Storage::real) return storeEdited(panel, control, values, location, about);
    HostVParm &parm = parameterOf(panel, control, location, about);
    const HostVParmFuncs &funcs = *vparmFuncs();
    funcs.setState(&parm, funcs.state(&parm) & ~kParmHasEnvelope);
    funcs.setValue(&parm, values);
    storeEdited(panel, control, &parm, location, about);
}

void applyKeys(HostPanel &panel, const PanelItem &control, const KeysDescription &keys, const SourceLocation &location,
               const std::string &about) {
    checkKeys(panel, control, keys, location, about);
    HostVParm &parm = parameterOf(panel, control, location, about);
    const HostVParmFuncs &funcs = *vparmFuncs();
    funcs.setState(&parm, funcs.state(&parm) | kParmHasEnvelope);
    HostEnvelope *envelopes[3] = {};
    const int count = funcs.envelopes(&parm, envelopes);
    for (int i = 0; i < count; ++i) {
        HostEnvelope &envelope = *envelopes[i];
        envelope.clearKeys();
        for (const KeyDescription &key : keys.keys)
            giveKey(envelope, key, key.value[static_cast<std::size_t>(i)], shownFactor(control.type->unit));
        envelopeFuncs()->set(&envelope, kEnvelopePreBehaviour, &keys.before);
        envelopeFuncs()->set(&envelope, kEnvelopePostBehaviour, &keys.after);
    }
    storeEdited(panel, control, &parm, location, about);
}

SettingValue readNumbers(HostPanel &panel, const PanelItem &control) {
    const double factor = shownFactor(control.type->unit);
    double values[3] = {};
    if (control.type->storage == Storage::real) {
        std::copy_n(static_cast<const double *>(panel.value(control.valueId)), control.type->components, values);
    } else {
        const HostVParm &parm = parameterOf(panel, control, {}, "");
        if (parm.hasEnvelopes()) return describeKeys(parm, factor);
        parm.value(0, values);
    }
    if (control.type->components == 1) return values[0] * factor;
    return Double3{values[0] * factor, values[1] * factor, values[2] * factor};
}

} // namespace velm::host
