// Rows whose values may have keys: position, colour, field of view and so on. In the file, such a value is one of
// these:
//
//   2, [0, 1, 0]                         a constant
//   {"keys": [...]}                      keys; those of a vector hold three numbers each
//   [0, {"keys": [...]}, 0]              a vector whose components have keys of their own, or none
#pragma once

#include "host/scene/format/fields.h"

#include <nlohmann/json.hpp>
#include <span>
#include <type_traits>

namespace velm::host {

// Where a value of one or three components is read to: constants, and keys of components.
struct KeyedValue {
    const char *key; // of the row
    Channel channel;
    const ValueRule &rule;
    std::span<double> constants; // 1 or 3
    std::vector<ChannelDescription> &channels;
};

// Replaces the constants, or adds channels and leaves the constants. InputError for anything that the rule or the keys'
// table does not allow. Values of keys obey the rule's limits, but a scale may be 0 there.
void readKeyed(const ReadContext &context, const JsonMember &found, const KeyedValue &value);
nlohmann::ordered_json writeKeyed(const WriteContext &context, const ValueRule &rule, Channel channel,
                                  std::span<const double> constants, std::span<const ChannelDescription> channels);
// Whether a component of the value has keys.
bool hasKeys(std::span<const ChannelDescription> channels, Channel channel);
nlohmann::ordered_json keyedSchema(const ValueRule &rule);

// The schemas of {"keys": [...]} for one and for three components, to which keyedSchema refers as "#/$defs/numberKeys"
// and "#/$defs/vectorKeys".
nlohmann::ordered_json numberKeysDefinition();
nlohmann::ordered_json vectorKeysDefinition();

// A member that is a number or a Double3. `isAlways`: it is written even where it has its default.
template <class T, Channel channel, auto member, const ValueRule &rule, bool isAlways = false>
inline constexpr CustomValue<T> keyed{
    .read =
        [](const ReadContext &context, const JsonMember &found, T &result) {
            auto &constant = result.*member;
            const auto read = [&](std::span<double> constants) {
                readKeyed(context, found,
                          {.key = found.key.c_str(),
                           .channel = channel,
                           .rule = rule,
                           .constants = constants,
                           .channels = result.channels});
            };
            if constexpr (std::is_same_v<std::remove_cvref_t<decltype(constant)>, double>)
                read({&constant, 1});
            else
                read(constant);
        },
    .write = [](const WriteContext &context, const T &object) -> std::optional<nlohmann::ordered_json> {
        const auto &constant = object.*member;
        if (!isAlways && constant == T{}.*member && !hasKeys(object.channels, channel)) return std::nullopt;
        if constexpr (std::is_same_v<std::remove_cvref_t<decltype(constant)>, double>)
            return writeKeyed(context, rule, channel, {&constant, 1}, object.channels);
        else
            return writeKeyed(context, rule, channel, constant, object.channels);
    },
    .schema = [] { return keyedSchema(rule); }};

} // namespace velm::host
