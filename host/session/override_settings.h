// Settings that replace those of an open scene.
#pragma once

#include "host/scene/overrides.h"
#include "host/session/session.h"

namespace velm::host {

// Applies an override of a setting; does nothing for all others, which were applied when the scene was read. InputError
// with the nearest name for a surface, a node or a setting that the scene does not have, for a value that the setting
// cannot have, and for a setting that a connection feeds. [interface thread; not while rendering]
void applySettingOverride(Session &session, const SceneOverride &override);

} // namespace velm::host
