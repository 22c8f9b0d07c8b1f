// Settings by label, in the units that panels show. Files and commands use them to do what a person does on a panel.
#pragma once

#include "host/panel/panel.h"
#include "host/panel/setting.h"

#include <string>
#include <vector>

namespace velm::host {

// Sets one control through the panel's getter and setter, and then calls the change callback. The label is as shown;
// the second of two controls with the same label has " 2" after it. The value is one or three numbers in the shown unit
// (degrees, per cent, metres), keys for a control with envelopes, an entry's text for a choice (spaces around it are
// ignored), true or false for a check box, or a text. Numbers remove the keys. A control that a rule disables can be
// set, so that the order of settings does not matter. InputError, with the setting's location and the nearest name, for
// an unknown label or entry, an ambiguous entry, a value of the wrong kind or beyond the limits, a button or drawing,
// and a control that a connection feeds; nothing is changed then. [interface thread; not while rendering]
void applySetting(HostPanel &panel, const SettingDescription &setting);

// Throws what applySetting would throw, but for a refusal by the node itself, which only its setter can tell. Changes
// nothing.
void checkSetting(HostPanel &panel, const SettingDescription &setting);

// The labels that applySetting takes, in the order in which the controls were added.
std::vector<std::string> settingLabels(const HostPanel &panel);

// The current value of a control in the shown unit, as applySetting takes it. InputError for an unknown label, a
// control without a value, an entry that is not in the list, and an unavailable control.
// [interface thread; not while rendering]
SettingValue readSetting(HostPanel &panel, const std::string &label);

// The value of a control as people read it: "20", "1 0.5 0", "Custom", "on", "\"text\"", "3 keys". An integer without
// an entry of the choice reads "(-25536)". Empty for an unavailable control and one without a value.
// [interface thread; not while rendering]
std::string describeValue(HostPanel &panel, const PanelItem &control);

} // namespace velm::host
