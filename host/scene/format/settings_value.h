// "settings" of surfaces and nodes.
#pragma once

#include "host/scene/format/nested.h"

namespace velm::host {

// The value of one setting. InputError for JSON that no setting can have.
SettingValue readSettingValue(const ReadContext &context, const JsonMember &setting);
void readSettings(const ReadContext &context, const JsonMember &found, std::vector<SettingDescription> &settings);
// Nothing where there are no settings.
std::optional<nlohmann::ordered_json> writeSettings(const WriteContext &context,
                                                    const std::vector<SettingDescription> &settings);
// A reference to the definition of settings in the schema; see settingsDefinition.
nlohmann::ordered_json settingsReference();

template <auto member>
inline constexpr CustomValue<OwnerOf<member>> settingsValue{
    .read = [](const ReadContext &context, const JsonMember &found,
               OwnerOf<member> &result) { readSettings(context, found, result.*member); },
    .write = [](const WriteContext &context,
                const OwnerOf<member> &object) { return writeSettings(context, object.*member); },
    .schema = settingsReference};

} // namespace velm::host
