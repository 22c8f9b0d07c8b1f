// The values of items at one time.
#pragma once

#include "host/scene/format/description.h"

namespace velm::host {

// The value of one component's keys at a time in seconds.
double valueOf(const KeysDescription &keys, double time);

// A copy of an item whose members have the values of that time; it has no channels. [any thread]
ObjectDescription valuesAt(const ObjectDescription &object, double time);
NullDescription valuesAt(const NullDescription &item, double time);
LightDescription valuesAt(const LightDescription &light, double time);
CameraDescription valuesAt(const CameraDescription &camera, double time);

// The same for the members that all kinds of items have.
ItemDescription placeAt(const ItemDescription &item, double time);

// Whether the item has keys of its own that change its transform: not those of a light's colour, nor those of a
// rotation that a target replaces.
bool hasMotion(const ItemDescription &item);

// Whether any item of the scene has keys. Settings of nodes do not count.
bool hasKeys(const SceneDescription &scene);

} // namespace velm::host
