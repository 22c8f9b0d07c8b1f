#include "host/cli/panel_json.h"

#include "host/cli/panel_text.h"
#include "host/panel/settings.h"

#include <variant>

namespace velm::host {

namespace {

// The value as scene files give it. Keys and unavailable values are null.
Json jsonOfValue(HostPanel &panel, const ControlInfo &control) {
    struct Value {
        Json operator()(bool on) const { return on; }
        Json operator()(double number) const { return jsonNumber(number); }
        Json operator()(const Double3 &numbers) const {
            return {jsonNumber(numbers[0]), jsonNumber(numbers[1]), jsonNumber(numbers[2])};
        }
        Json operator()(const std::string &text) const { return text; }
        Json operator()(const KeysDescription &) const { return {}; }
    };
    if (control.value.empty()) return {};
    return std::visit(Value{}, readSetting(panel, control.name));
}

Json jsonOfStacks(const ControlInfo &control) {
    Json all = Json::array();
    for (const StackPosition &stack : control.stacks)
        all.push_back({{"control", stack.drivenBy}, {"is", stack.shownFor}});
    return all;
}

Json jsonOfControl(HostPanel &panel, const ControlInfo &control, const HelpSentences &sentences) {
    Json json = {{"label", control.label}, {"kind", controlKindText(control)}};
    const auto add = [&json](const char *key, const auto &value) {
        if (!value.empty()) json[key] = value;
    };
    const auto addNumber = [&json](const char *key, const std::optional<int> &number) {
        if (number) json[key] = *number;
    };
    if (isSetting(control)) {
        json["setting"] = control.name;
        json["default"] = jsonOfValue(panel, control);
    }
    add("unit", control.unit);
    addNumber("minimum", control.minimum);
    addNumber("maximum", control.maximum);
    addNumber("step", control.step);
    add("entries", control.entries);
    add("enabledBy", control.enabledBy);
    add("groups", control.groups);
    add("shownWhile", jsonOfStacks(control));
    add("help", std::string(findSentence(sentences, control.name)));
    return json;
}

} // namespace

Json jsonOfPanel(HostPanel &panel, const HelpSentences &sentences) {
    Json all = Json::array();
    for (const ControlInfo &control : describeControls(panel)) all.push_back(jsonOfControl(panel, control, sentences));
    return all;
}

} // namespace velm::host
