// Numbers and keys of settings, on their way to and from a panel's values.
#pragma once

#include "host/panel/panel.h"
#include "host/panel/setting.h"

#include <string>

namespace velm::host {

// A number as people read it, without needless digits.
std::string numberText(double number);

// Stores numbers in the shown unit, of as many components as the control has, through the panel; a parameter's keys go.
// Throws InputError, starting with `about`, beyond the limits.
void applyNumbers(HostPanel &panel, const PanelItem &control, const Double3 &shown, const SourceLocation &location,
                  const std::string &about);

// Gives the control's parameter these keys, whose values (and tangents and handles) are in the shown unit.
void applyKeys(HostPanel &panel, const PanelItem &control, const KeysDescription &keys, const SourceLocation &location,
               const std::string &about);

// Throw what applyNumbers and applyKeys would throw, but for a refusal by the node itself. Change nothing.
void checkNumbers(HostPanel &panel, const PanelItem &control, const Double3 &shown, const SourceLocation &location,
                  const std::string &about);
void checkKeys(HostPanel &panel, const PanelItem &control, const KeysDescription &keys, const SourceLocation &location,
               const std::string &about);

// The control's numbers or keys in the shown unit. Throws InputError when the components' keys differ in anything but
// their values, which no description can hold.
SettingValue readNumbers(HostPanel &panel, const PanelItem &control);

// Throws InputError for a number beyond the control's limits or one that is not finite.
void checkLimits(const PanelItem &control, double shown, const SourceLocation &location, const std::string &about);

} // namespace velm::host
