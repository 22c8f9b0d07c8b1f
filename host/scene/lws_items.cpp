#include "host/scene/lws_items.h"

#include "host/base/angles.h"
#include "host/base/limits.h"
#include "host/panel/keys.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <limits>

namespace velm::host {

namespace {

constexpr std::size_t kComponents = 3;
constexpr double kUnlimited = std::numeric_limits<double>::infinity();

// Sets a component of an item's value, or its keys, clamped to the range.
void setValue(ItemDescription &item, Channel channel, int component, const lws::Value &value, double &member,
              double least = -kUnlimited, double most = kUnlimited) {
    if (!value.isAnimated()) {
        member = std::clamp(value.constant, least, most);
        return;
    }
    KeysDescription keys = value.keys;
    for (KeyDescription &key : keys.keys) key.value[0] = std::clamp(key.value[0], least, most);
    item.channels.push_back({.channel = channel, .component = component, .keys = std::move(keys)});
}

void setValues(ItemDescription &item, Channel channel, const lws::Value *values, Double3 &member,
               double least = -kUnlimited) {
    for (std::size_t i = 0; i < kComponents; ++i)
        setValue(item, channel, static_cast<int>(i), values[i], member[i], least);
}

// The horizontal field of view, in degrees.
double fieldOfView(double zoom, double aspect) {
    constexpr double kLeastZoom = 1e-4; // a field of view near 180 degrees
    return 2 * std::atan(aspect / std::max(zoom, kLeastZoom)) * kDegreesPerRadian;
}

// Sets a key of the field of view for each frame of the zoom's keys, so that it is exact there.
void setAngleKeys(const KeysDescription &zoom, const ZoomSampling &sampling, CameraDescription &to) {
    HostEnvelope envelope;
    setKeys(zoom, envelope);
    const double first = zoom.keys.front().time, length = zoom.keys.back().time - first;
    const double frames = length * sampling.framesPerSecond;
    const auto steps = static_cast<int>(std::ceil(std::clamp(frames, 1.0, static_cast<double>(sampling.mostSteps))));
    KeysDescription keys{.components = 1, .keys = {}, .before = zoom.before, .after = zoom.after};
    for (int i = 0; i <= steps; ++i) {
        KeyDescription &key = keys.keys.emplace_back();
        key.time = first + length * i / steps;
        key.value[0] = fieldOfView(envelope.evaluate(key.time), sampling.aspect);
        key.shape = kShapeLinear;
    }
    to.channels.push_back({.channel = Channel::fieldOfView, .component = 0, .keys = std::move(keys)});
}

// The picture's part of a rectangle; the whole picture if they have nothing in common.
Part partOf(Part rectangle) {
    for (double &edge : rectangle) edge = std::clamp(edge, 0.0, 1.0);
    const bool isEmpty = rectangle[0] >= rectangle[2] || rectangle[1] >= rectangle[3];
    return isEmpty ? kWholePicture : rectangle;
}

LightDescription::Kind kindOf(lws::Light::Kind kind) {
    switch (kind) {
    case lws::Light::Kind::point:
    case lws::Light::Kind::otherPoint: return LightDescription::Kind::point;
    case lws::Light::Kind::spot: return LightDescription::Kind::spot;
    case lws::Light::Kind::area: return LightDescription::Kind::area;
    case lws::Light::Kind::linear: return LightDescription::Kind::linear;
    case lws::Light::Kind::dome: return LightDescription::Kind::dome;
    default: return LightDescription::Kind::distant;
    }
}

LightDescription::Falloff falloffOf(lws::Light::Falloff falloff) {
    switch (falloff) {
    case lws::Light::Falloff::none: return LightDescription::Falloff::none;
    case lws::Light::Falloff::linear: return LightDescription::Falloff::linear;
    case lws::Light::Falloff::inverseDistance: return LightDescription::Falloff::inverseDistance;
    case lws::Light::Falloff::inverseSquare: return LightDescription::Falloff::inverseSquare;
    }
    return {};
}

bool hasShadows(const lws::Light &light, const lws::Scene &scene) {
    switch (light.shadows) {
    case lws::Light::Shadows::none: return false;
    case lws::Light::Shadows::traced: return scene.tracesShadows;
    case lws::Light::Shadows::mapped: return scene.hasShadowMaps;
    }
    return true;
}

} // namespace

void LwsNames::add(const lws::Item &item, const std::string &wanted) {
    // Names in scene descriptions have no arrows, which are for connections, and no blanks at their ends.
    std::string name = wanted;
    if (name.find("->") != std::string::npos) std::erase(name, '>');
    name.erase(name.find_last_not_of(' ') + 1);
    if (name.empty()) name = "Item";
    const std::string plain = name;
    while (!taken_.insert(name).second)
        name = fmt::format("{} ({})", plain, ++next_.try_emplace(plain, 1).first->second);
    names_[item.id] = std::move(name);
}

void convertPlace(const lws::Item &from, const LwsNames &names, const std::string &file, ItemDescription &to) {
    to.name = names[from.id];
    to.location = to.parentLocation = to.targetLocation = {.file = file, .line = from.line};
    if (from.parent) to.parent = names[*from.parent];
    to.hasTarget = from.aims && from.target;
    if (to.hasTarget) to.targetItem = names[*from.target];
    setValues(to, Channel::position, &from.motion[lws::kPositionChannel], to.position);
    if (!to.hasTarget) setValues(to, Channel::rotation, &from.motion[lws::kRotationChannel], to.rotation);
    if (lws::kindOf(from.id) != lws::ItemKind::camera)
        setValues(to, Channel::scale, &from.motion[lws::kScaleChannel], to.scale);
    if (from.pivot) to.pivot = *from.pivot;
}

int subdivisionOf(int segments) {
    int level = 0;
    while (level < kMostSubdivision && 1 << level < segments) ++level;
    return level;
}

void convertDissolve(const lws::Object &from, ObjectDescription &to) {
    if (from.active)
        setValue(to, Channel::dissolve, 0, from.dissolve, to.dissolve, 0, 1);
    else
        to.dissolve = 1;
}

void convertLight(const lws::Light &from, const lws::Scene &scene, LightDescription &to) {
    constexpr double kLeastRange = 1e-6, kLeastCone = 1e-3, kMostCone = 180;
    constexpr double kUnitLine = 2; // the length of a linear light with a scale of 1, in metres
    to.kind = kindOf(from.kind);
    if (to.kind == LightDescription::Kind::linear) to.length = kUnitLine;
    to.hemisphere = to.kind == LightDescription::Kind::dome;
    to.falloff = falloffOf(from.falloff);
    to.shadows = hasShadows(from, scene);
    if (from.quality) {
        const int side = std::clamp(*from.quality, 1, 64); // of a square of samples
        to.samples = std::min(side * side, kMostSamples);
    }
    setValues(to, Channel::colour, from.colour.data(), to.colour, 0);
    if (from.active)
        setValue(to, Channel::intensity, 0, from.intensity, to.intensity, 0);
    else
        to.intensity = 0;
    const bool hasRange = to.kind != LightDescription::Kind::distant && to.kind != LightDescription::Kind::dome;
    if (hasRange) setValue(to, Channel::range, 0, from.range, to.range, kLeastRange);
    if (to.kind != LightDescription::Kind::spot) return;
    setValue(to, Channel::cone, 0, from.cone, to.cone, kLeastCone, kMostCone);
    setValue(to, Channel::edge, 0, from.edge, to.edge, 0);
}

Part regionOf(const lws::Camera &camera) {
    const auto &[left, right, top, bottom] = camera.region;
    return camera.hasRegion ? partOf({left, top, right, bottom}) : kWholePicture;
}

void convertMask(const lws::Camera &from, CameraDescription &to) {
    const auto &[left, top, width, height] = from.mask;
    if (!from.hasMask) return;
    to.mask = partOf({left / from.width, top / from.height, (left + width) / from.width, (top + height) / from.height});
    for (std::size_t i = 0; i < to.maskColour.size(); ++i) to.maskColour[i] = std::max(from.maskColour[i], 0.0);
}

void convertShutter(const lws::Camera &from, CameraDescription &to) {
    if (from.hasMotionBlur) to.shutter = std::clamp(from.blurLength, 0.0, kLongestShutter);
}

void convertLens(const lws::Camera &from, CameraDescription &to) {
    constexpr double kLeastFNumber = 1e-3, kLeastDistance = 1e-3;
    if (!from.hasDepthOfField) return;
    setValue(to, Channel::aperture, 0, from.fNumber, to.aperture, kLeastFNumber);
    setValue(to, Channel::focusDistance, 0, from.focusDistance, to.focusDistance, kLeastDistance);
    to.blades = from.blades >= 3 ? std::min(from.blades, kMostBlades) : 0;
    to.bladeRotation = from.bladeRotation;
}

void convertZoom(const lws::Camera &from, const ZoomSampling &sampling, CameraDescription &to) {
    if (from.zoom.isAnimated())
        setAngleKeys(from.zoom.keys, sampling, to);
    else
        to.fieldOfView = fieldOfView(from.zoom.constant, sampling.aspect);
}

} // namespace velm::host
