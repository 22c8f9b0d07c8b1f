// Objects that a scene file describes as instances of others.
#pragma once

#include "host/scene/format/description.h"

#include <vector>

namespace velm::host {

// Adds the objects that the `instances` of each object describe, right behind it. Their names are that of the object
// with a number, such as "Tree (2)", that no other object has.
void addInstances(std::vector<ObjectDescription> &objects);

// The objects from which addInstances makes these: without those that it added. If any of these has changed, all
// objects, none of which is an instance.
std::vector<ObjectDescription> withoutInstances(const std::vector<ObjectDescription> &objects);

} // namespace velm::host
