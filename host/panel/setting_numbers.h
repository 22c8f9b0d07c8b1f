// Numbers and keys of settings: setting and reading a panel's values.
#pragma once

#include "host/panel/panel.h"
#include "host/panel/setting.h"

#include <string>

namespace velm::host {

// A number as people read it, with at most 10 significant digits.
std::string numberText(double number);

// Sets as many numbers, in the shown unit, as the control has components, and removes a parameter's keys. InputError,
// whose message begins with `about`, for a number beyond the limits.
void applyNumbers(HostPanel &panel, const PanelItem &control, const Double3 &shown, const SourceLocation &location,
                  const std::string &about);

// Replaces the keys of the control's parameter. Their values, tangents and handles are in the shown unit. InputError as
// above for keys that the control cannot have.
void applyKeys(HostPanel &panel, const PanelItem &control, const KeysDescription &keys, const SourceLocation &location,
               const std::string &about);

// Throw what applyNumbers and applyKeys would throw, except for a refusal by the node itself. Change nothing.
void checkNumbers(HostPanel &panel, const PanelItem &control, const Double3 &shown, const SourceLocation &location,
                  const std::string &about);
void checkKeys(HostPanel &panel, const PanelItem &control, const KeysDescription &keys, const SourceLocation &location,
               const std::string &about);

// The control's numbers or keys in the shown unit. InputError when the components' keys differ in anything but their
// values, which KeysDescription cannot hold.
SettingValue readNumbers(HostPanel &panel, const PanelItem &control);

// InputError for a number that is beyond the control's limits or not finite.
void checkLimits(const PanelItem &control, double shown, const SourceLocation &location, const std::string &about);

} // namespace velm::host
