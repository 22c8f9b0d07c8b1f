// The values of items at one time.
#pragma once

#include "host/scene/format/description.h"

namespace velm::host {

// The value of keys of one component at a time in seconds.
double valueOf(const KeysDescription &keys, double time);

// A copy of an item whose members have the values of that time; it has no channels. [any thread]
ObjectDescription valuesAt(const ObjectDescription &object, double time);
NullDescription valuesAt(const NullDescription &item, double time);
LightDescription valuesAt(const LightDescription &light, double time);
CameraDescription valuesAt(const CameraDescription &camera, double time);

// The part that all items have in common.
ItemDescription placeAt(const ItemDescription &item, double time);

// Whether keys change where the item is relative to its parent and its target.
bool hasMotion(const ItemDescription &item);

// Whether anything in the scene has keys; settings of nodes do not count.
bool hasKeys(const SceneDescription &scene);

} // namespace velm::host
