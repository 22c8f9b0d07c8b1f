#include "host/scene/format/instances.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <string>
#include <unordered_set>
#include <utility>

namespace velm::host {
namespace {

bool isOfTransform(const ChannelDescription &channel) {
    switch (channel.channel) {
    case Channel::position:
    case Channel::rotation:
    case Channel::scale:
    case Channel::target: return true;
    default: return false;
    }
}

ObjectDescription instanceOf(const ObjectDescription &object, const InstanceDescription &instance) {
    ObjectDescription result = object;
    result.instances.clear();
    result.isInstance = true;
    result.position = instance.position;
    result.rotation = instance.rotation;
    result.scale = instance.scale;
    result.hasTarget = false;
    result.targetItem.clear();
    std::erase_if(result.channels, isOfTransform);
    result.location = instance.location;
    return result;
}

} // namespace

void addInstances(std::vector<ObjectDescription> &objects) {
    std::unordered_set<std::string> names;
    for (const ObjectDescription &object : objects) names.insert(object.name);
    std::vector<ObjectDescription> all;
    for (ObjectDescription &object : objects) {
        const std::size_t owner = all.size();
        all.push_back(std::move(object));
        int number = 2;
        for (std::size_t i = 0; i < all[owner].instances.size(); ++i) {
            ObjectDescription added = instanceOf(all[owner], all[owner].instances[i]);
            do added.name = fmt::format("{} ({})", all[owner].name, number++);
            while (!names.insert(added.name).second);
            all.push_back(std::move(added));
        }
    }
    objects = std::move(all);
}

std::vector<ObjectDescription> withoutInstances(const std::vector<ObjectDescription> &objects) {
    std::vector<ObjectDescription> owners;
    std::ranges::copy_if(objects, std::back_inserter(owners),
                         [](const ObjectDescription &object) { return !object.isInstance; });
    std::vector<ObjectDescription> all = owners;
    addInstances(all);
    if (all == objects) return owners;
    all = objects;
    for (ObjectDescription &object : all) {
        object.instances.clear();
        object.isInstance = false;
    }
    return all;
}

} // namespace velm::host
