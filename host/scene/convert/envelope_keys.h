// The envelopes of object files as values of settings.
#pragma once

#include "host/object/envelopes.h"
#include "host/scene/format/description.h"

#include <array>
#include <optional>

namespace velm::host {

// Whether any component has an envelope with keys.
bool isAnimated(const ComponentEnvelopes &envelopes);
// Whether a plug-in changes the values of any of them.
bool isModified(const ComponentEnvelopes &envelopes);

// The value of a setting with one component: the keys of its envelope, the value of an envelope that is constant, or
// `constant` for null and for an envelope without keys. Values are multiplied by `factor`, which converts them to the
// unit that the panel shows.
SettingValue animatedNumber(const std::shared_ptr<const ObjectEnvelope> &envelope, float constant, double factor);

// The same for a setting with three components. Returns nothing if the keys of the components differ in more than their
// values: the components of a setting have common keys.
std::optional<SettingValue> animatedTriple(const ComponentEnvelopes &envelopes, const std::array<float, 3> &constants,
                                           double factor);

} // namespace velm::host
