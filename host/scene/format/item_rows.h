// The rows that objects, nulls, lights and cameras have in common: their transforms.
#pragma once

#include "host/scene/format/keyed_values.h"
#include "host/scene/format/nested.h"

#include <array>
#include <fmt/format.h>

namespace velm::host {

inline constexpr ValueRule kVectorRule = vec3Rule();
inline constexpr ValueRule kScaleRule = scaleRule();

// A point, which may have keys, or the name of an item.
template <class T>
inline constexpr CustomValue<T> kTargetValue{
    .read =
        [](const ReadContext &context, const JsonMember &found, T &item) {
            item.hasTarget = true;
            item.targetLocation = context.at(found.value.line);
            if (found.value.kind == JsonValue::Kind::text)
                item.targetItem = readText(context, found.key, found.value, textRule());
            else
                keyed<T, Channel::target, &T::target, kVectorRule>.read(context, found, item);
        },
    .write = [](const WriteContext &context, const T &item) -> std::optional<nlohmann::ordered_json> {
        if (!item.hasTarget) return std::nullopt;
        if (!item.targetItem.empty()) return item.targetItem;
        // A light has a target by default.
        if (T{}.hasTarget) return keyed<T, Channel::target, &T::target, kVectorRule>.write(context, item);
        return keyed<T, Channel::target, &T::target, kVectorRule, true>.write(context, item);
    },
    .schema =
        [] {
            nlohmann::ordered_json schema = keyedSchema(kVectorRule);
            schema["anyOf"].push_back(textSchema());
            return schema;
        }};

// An item has a target or a rotation.
template <class T>
inline constexpr CustomValue<T> kRotationValue{
    .read =
        [](const ReadContext &context, const JsonMember &found, T &item) {
            keyed<T, Channel::rotation, &T::rotation, kVectorRule>.read(context, found, item);
            item.hasTarget = false;
        },
    .write = [](const WriteContext &context, const T &item) -> std::optional<nlohmann::ordered_json> {
        if (item.hasTarget) return std::nullopt;
        if (T{}.hasTarget) return keyed<T, Channel::rotation, &T::rotation, kVectorRule, true>.write(context, item);
        return keyed<T, Channel::rotation, &T::rotation, kVectorRule>.write(context, item);
    },
    .schema = [] { return keyedSchema(kVectorRule); }};

// A row of a vector that may have keys.
template <class T, Channel channel, auto member, const ValueRule &rule = kVectorRule>
constexpr Field<T> keyedVector(const char *key, const char *help) {
    return {.key = key, .help = help, .target = keyed<T, channel, member, rule>};
}

template <class T>
inline constexpr auto kPositionField = keyedVector<T, Channel::position, &T::position>(
    "position", "Position of the item's pivot, in metres, relative to the parent.");
template <class T>
inline constexpr Field<T> kTargetField{
    .key = "target",
    .help = "What the item's +Z points at, instead of a rotation: a point of the scene, in metres, or an item's name.",
    .target = kTargetValue<T>};
template <class T>
inline constexpr Field<T> kRotationField{.key = "rotation",
                                         .help = "Heading, pitch and bank, in degrees, relative to the parent.",
                                         .target = kRotationValue<T>};
template <class T>
inline constexpr auto kScaleField = keyedVector<T, Channel::scale, &T::scale, kScaleRule>(
    "scale", "Factor by which the item and its children are scaled: one number, or one along each axis.");
template <class T>
inline constexpr auto kPivotField = keyedVector<T, Channel::pivot, &T::pivot>(
    "pivot", "The point of the item, in metres, that is at its position, and about which it turns and scales.");
template <class T>
inline constexpr Field<T> kParentField{
    .key = "parent",
    .help = "Name of the item that this one moves with: an object, null, light or camera.",
    .target = locatedText<&T::parent, &T::parentLocation, T>};

template <class T, std::size_t... sizes>
constexpr auto joined(const std::array<Field<T>, sizes> &...parts) {
    std::array<Field<T>, (sizes + ...)> all{};
    std::size_t next = 0;
    const auto append = [&](const auto &part) {
        for (const Field<T> &field : part) all[next++] = field;
    };
    (append(parts), ...);
    return all;
}

// Throws InputError for an item with both a target and a rotation, and for one whose position is its target. `kind` is
// "light" and so on, for the message.
template <class T>
void checkAim(const ReadContext &context, const JsonValue &object, const T &item, const char *kind) {
    const JsonValue *target = object.find("target");
    const JsonValue *rotation = object.find("rotation");
    if (target && rotation)
        context.fail(rotation->line, fmt::format("{} {} that has a \"target\" cannot have a \"rotation\" too",
                                                 *kind == 'o' ? "an" : "a", kind));
    const bool isFixed = item.parent.empty() && item.targetItem.empty() && !hasKeys(item.channels, Channel::position) &&
                         !hasKeys(item.channels, Channel::target);
    if (item.hasTarget && isFixed && item.target == item.position)
        context.fail(target ? target->line : object.line, fmt::format("the position of the {} is its target", kind));
}

} // namespace velm::host
