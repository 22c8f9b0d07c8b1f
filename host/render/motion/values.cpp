#include "host/render/motion/values.h"

#include "host/panel/keys.h"

#include <algorithm>

namespace velm::host {
namespace {

// The member whose values a channel replaces, or its first component if it is a vector. Null for a channel that items
// of this kind do not have.
double *memberOf(ItemDescription &item, Channel channel) {
    switch (channel) {
    case Channel::position: return item.position.data();
    case Channel::rotation: return item.rotation.data();
    case Channel::scale: return item.scale.data();
    case Channel::pivot: return item.pivot.data();
    case Channel::target: return item.target.data();
    default: return nullptr;
    }
}

double *memberOf(ObjectDescription &object, Channel channel) {
    if (channel == Channel::dissolve) return &object.dissolve;
    return memberOf(static_cast<ItemDescription &>(object), channel);
}

double *memberOf(LightDescription &light, Channel channel) {
    switch (channel) {
    case Channel::colour: return light.colour.data();
    case Channel::intensity: return &light.intensity;
    case Channel::range: return &light.range;
    case Channel::cone: return &light.cone;
    case Channel::edge: return &light.edge;
    case Channel::width: return &light.width;
    case Channel::height: return &light.height;
    case Channel::length: return &light.length;
    default: return memberOf(static_cast<ItemDescription &>(light), channel);
    }
}

double *memberOf(CameraDescription &camera, Channel channel) {
    switch (channel) {
    case Channel::fieldOfView: return &camera.fieldOfView;
    case Channel::aperture: return &camera.aperture;
    case Channel::focusDistance: return &camera.focusDistance;
    default: return memberOf(static_cast<ItemDescription &>(camera), channel);
    }
}

template <class Item>
Item itemAt(const Item &item, double time) {
    Item result = item;
    for (const ChannelDescription &each : item.channels)
        if (double *member = memberOf(result, each.channel)) member[each.component] = valueOf(each.keys, time);
    result.channels.clear();
    return result;
}

} // namespace

double valueOf(const KeysDescription &keys, double time) {
    HostEnvelope envelope;
    setKeys(keys, envelope);
    return envelope.evaluate(time);
}

ObjectDescription valuesAt(const ObjectDescription &object, double time) { return itemAt(object, time); }
NullDescription valuesAt(const NullDescription &item, double time) { return itemAt(item, time); }
LightDescription valuesAt(const LightDescription &light, double time) {
    LightDescription result = itemAt(light, time);
    // A curve may be negative between keys that are not.
    for (const ChannelDescription &each : light.channels)
        if (each.channel == Channel::width || each.channel == Channel::height || each.channel == Channel::length) {
            double &size = *memberOf(result, each.channel);
            size = std::max(0.0, size);
        }
    return result;
}
CameraDescription valuesAt(const CameraDescription &camera, double time) { return itemAt(camera, time); }
ItemDescription placeAt(const ItemDescription &item, double time) { return itemAt(item, time); }

bool hasMotion(const ItemDescription &item) {
    return std::ranges::any_of(item.channels, [&item](const ChannelDescription &each) {
        ItemDescription place;
        const bool isUsed = each.channel != (item.hasTarget ? Channel::rotation : Channel::target);
        return isUsed && memberOf(place, each.channel);
    });
}

bool hasKeys(const SceneDescription &scene) {
    const auto haveKeys = [](const auto &items) {
        return std::ranges::any_of(items, [](const ItemDescription &item) { return !item.channels.empty(); });
    };
    return haveKeys(scene.objects) || haveKeys(scene.nulls) || haveKeys(scene.lights) || haveKeys(scene.cameras);
}

} // namespace velm::host
