#include "host/session/override_settings.h"

#include "host/scene/format/settings_value.h"

namespace velm::host {

void applySettingOverride(Session &session, const SceneOverride &override) {
    OverriddenSetting setting;
    if (!isSetting(override, setting)) return;
    const SettingValue value =
        readSettingValue(ReadContext{}, {.key = setting.label, .line = override.value.line, .value = override.value});
    if (setting.nodes.empty()) return session.setSurfaceValue(setting.surface, setting.label, value);
    const std::string node = setting.nodes.back();
    setting.nodes.pop_back();
    session.setSetting({.network = {.surface = setting.surface, .nodes = setting.nodes}, .node = node}, setting.label,
                       value);
}

} // namespace velm::host
