// Parameters in saved states: a block "VPRM" / `{ VariantParameter`: two integers, 3 and 0, and a block "VPVL" /
// `{ ParameterValue`: the value at time 0, 1 or 0 for envelopes or none, and the envelopes of the components in order.

#include "host/animation/vparm.h"

#include <algorithm>

namespace {

constexpr HostBlockId kParameterTable[] = {{.id = 0x5650524d, .token = "VariantParameter"},
                                           {.id = 0, .token = nullptr}};
constexpr HostBlockId kValueTable[] = {{.id = 0x5650564c, .token = "ParameterValue"}, {.id = 0, .token = nullptr}};

constexpr const char *kMissing = "a parameter is missing in the file";
constexpr const char *kDamaged = "a parameter in the file is damaged";

// The contents of the value block.
HostError loadValue(const HostLoadState &state, HostVParm &parm) {
    float numbers[3] = {};
    const int components = parm.components();
    if (state.readFP(state.data, numbers, components) != components) return kDamaged;
    const double values[3] = {numbers[0], numbers[1], numbers[2]};
    parm.setConstant(values);
    short animated = 0;
    if (state.readI2(state.data, &animated, 1) != 1) return kDamaged;
    if (animated == 0) return nullptr;
    parm.createEnvelopes();
    for (int i = 0; i < components; ++i)
        if (const HostError error = velm::host::loadEnvelope(*parm.envelope(i), &state)) return error;
    return nullptr;
}

} // namespace

HostError HostVParm::save(const HostSaveState *state) const {
    const int words[] = {3, 0};
    const auto animated = static_cast<short>(hasEnvelopes() ? 1 : 0);
    double values[3] = {};
    value(0, values);
    const float numbers[] = {static_cast<float>(values[0]), static_cast<float>(values[1]),
                             static_cast<float>(values[2])};
    state->beginBlock(state->data, &kParameterTable[0], 0);
    state->writeI4(state->data, &words[0], 1); // one line each in text form
    state->writeI4(state->data, &words[1], 1);
    state->beginBlock(state->data, &kValueTable[0], 0);
    state->writeFP(state->data, numbers, components());
    state->writeI2(state->data, &animated, 1);
    HostError error = nullptr;
    for (int i = 0; i < components() && hasEnvelopes() && !error; ++i)
        error = velm::host::saveEnvelope(*envelope(i), state, i);
    state->endBlock(state->data);
    state->endBlock(state->data);
    return error;
}

HostError HostVParm::load(const HostLoadState *state) {
    if (state->findBlock(state->data, kParameterTable) == 0) return kMissing;
    HostVParm loaded(type_);
    HostError error = kDamaged;
    if (state->findBlock(state->data, kValueTable) != 0) {
        error = loadValue(*state, loaded);
        state->endBlock(state->data);
    }
    state->endBlock(state->data);
    if (!error) assign(loaded);
    return error;
}
