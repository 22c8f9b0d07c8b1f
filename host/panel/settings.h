// Settings by label, in the units that panels show: what a person's hand does on a panel, for files and commands.
#pragma once

#include "host/panel/panel.h"
#include "host/panel/setting.h"

#include <string>
#include <vector>

namespace velm::host {

// Sets one control, through the panel's getter and setter, with the change callback after it. The label is as shown,
// the second of two equal ones with " 2" after it. Values: numbers in the shown unit (degrees, per cent, metres), one
// or three as the control has; keys for controls with envelopes; an entry's text for choices (blanks around it do not
// matter); true or false for check boxes; text. A plain value removes the keys. A control that rules disable can be
// set all the same, so that settings may come in any order. Throws InputError, with the setting's place and the nearest
// right name, for an unknown label or entry, an entry's text that several have, a value of the wrong kind or beyond the
// limits, a button or drawing, and a control that a connection feeds; then nothing was changed.
void applySetting(HostPanel &panel, const SettingDescription &setting);

// Throws what applySetting would throw, but for a refusal by the node itself, which only its setter can tell. Changes
// nothing.
void checkSetting(HostPanel &panel, const SettingDescription &setting);

// The labels that applySetting takes, in the order in which the controls were added.
std::vector<std::string> settingLabels(const HostPanel &panel);

// The current value of a control in shown units, as applySetting takes it. Throws InputError for an unknown label, a
// control without a value, an entry that is not in the list, and an unavailable control.
SettingValue readSetting(HostPanel &panel, const std::string &label);

// A setting's value as people read it: "20", "1 0.5 0", "Custom", "on", "\"text\"", "3 keys". An integer that stands
// for no entry of a choice reads "(-25536)"; an unavailable control and one without a value give an empty text.
std::string describeValue(HostPanel &panel, const PanelItem &control);

} // namespace velm::host
