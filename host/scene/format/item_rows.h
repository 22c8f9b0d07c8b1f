// The rows that objects, nulls, lights and cameras have in common: where they are.
#pragma once

#include "host/scene/format/keyed_values.h"
#include "host/scene/format/nested.h"

#include <array>
#include <fmt/format.h>

namespace velm::host {

inline constexpr ValueRule kVectorRule = vec3Rule();
inline constexpr ValueRule kScaleRule = scaleRule();

// A point, with keys or without, or the name of an item.
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

template <class T>
inline constexpr Field<T> kPositionField{.key = "position",
                                         .help = "Position of the item's pivot, in metres, relative to the parent.",
                                         .target = keyed<T, Channel::position, &T::position, kVectorRule>};
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
inline constexpr Field<T> kScaleField{.key = "scale",
                                      .help = "Factor by which the item and its children are scaled: one number, or "
                                              "one along each axis.",
                                      .target = keyed<T, Channel::scale, &T::scale, kScaleRule>};
template <class T>
inline constexpr Field<T> kPivotField{
    .key = "pivot",
    .help = "The point of the item, in metres, that is at its position, and about which it turns and scales.",
    .target = keyed<T, Channel::pivot, &T::pivot, kVectorRule>};
template <class T>
inline constexpr Field<T> kParentField{
    .key = "parent",
    .help = "Name of the item that this one moves with: an object, null, light or camera.",
    .target = CustomValue<T>{.read =
                                 [](const ReadContext &context, const JsonMember &found, T &item) {
                                     item.parent = readText(context, found.key, found.value, textRule());
                                     item.parentLocation = context.at(found.value.line);
                                 },
                             .write = [](const WriteContext &, const T &item) -> std::optional<nlohmann::ordered_json> {
                                 if (item.parent.empty()) return std::nullopt;
                                 return item.parent;
                             },
                             .schema = textSchema}};

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

// Throws InputError for an item with both a target and a rotation, and for one that is at its own target. `kind` is
// "light" and so on.
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
