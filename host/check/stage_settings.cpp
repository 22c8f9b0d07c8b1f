// Settings, as a hand that knows nothing of them would make them.
#include "host/animation/channel.h"
#include "host/animation/vparm.h"
#include "host/check/blackboard.h"
#include "host/check/stage.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velm::host {

namespace {

constexpr int kFreeWhole = 12;    // where no limit is told; counts of samples make an evaluation long
constexpr double kFreeNumber = 4; // in the setting's own unit

double lowest(const PanelItem &control, double otherwise) {
    return control.minimum.value_or(static_cast<int>(otherwise));
}
double highest(const PanelItem &control, double otherwise) {
    return control.maximum.value_or(static_cast<int>(otherwise));
}

// The number in the unit that the value is held in; one that files keep to the last digit, as a float.
double randomNumber(const PanelItem &control, Dice &dice) {
    const double factor = shownFactor(control.type->unit);
    const double low = lowest(control, -kFreeNumber * factor), high = highest(control, kFreeNumber * factor);
    return static_cast<float>(dice.real(low, std::max(low, high)) / factor);
}

void randomKeys(HostVParm &parameter, const PanelItem &control, Dice &dice) {
    parameter.createEnvelopes();
    for (int i = 0; i < parameter.components(); ++i)
        for (int key = 0; key < 3; ++key)
            parameter.envelope(i)->putKey(key * 0.5, randomNumber(control, dice)).shape =
                dice.between(kShapeTcb, kShapeStepped);
}

void randomParameter(HostPanel &panel, const PanelItem &control, Dice &dice, bool keys) {
    auto *parameter = static_cast<HostVParm *>(panel.value(control.valueId));
    if (!parameter) return;
    parameter->removeEnvelopes();
    double numbers[3];
    for (double &number : numbers) number = randomNumber(control, dice);
    parameter->setConstant(numbers);
    if (keys && dice.chance(0.3)) randomKeys(*parameter, control, dice);
    panel.edit(control, parameter);
}

void randomText(HostPanel &panel, const PanelItem &control, Dice &dice) {
    std::string text;
    static constexpr char kCharacters[] = "abc XYZ019_-\"\\{}\n\xc3\xa9";
    for (int left = dice.between(0, 40); left > 0; --left) text += kCharacters[dice.below(sizeof kCharacters - 1)];
    text.resize(std::min(text.size(), HostPanel::kLongestText));
    panel.edit(control, text.data());
}

void randomWhole(HostPanel &panel, const PanelItem &control, Dice &dice) {
    int value = 0;
    switch (control.type->kind) {
    case ControlKind::flag: value = dice.between(0, 1); break;
    case ControlKind::choice: value = dice.below(std::max<std::size_t>(1, panel.entries(control).size())); break;
    case ControlKind::transform:
        value = control.transform.empty()
                    ? 0
                    : control.transform[static_cast<std::size_t>(dice.below(control.transform.size()))];
        break;
    default: {
        const int low = static_cast<int>(lowest(control, 0));
        const int high = std::min(static_cast<int>(highest(control, kFreeWhole)), std::max(low, 0) + kFreeWhole);
        value = dice.between(low, std::max(low, high));
    }
    }
    panel.edit(control, &value);
}

} // namespace

void randomSetting(HostPanel &panel, const PanelItem &control, Dice &dice, bool keys) {
    if (!control.type || !panel.isAvailable(control)) return;
    switch (control.type->storage) {
    case Storage::none: return;
    case Storage::animated: return randomParameter(panel, control, dice, keys);
    case Storage::text: return randomText(panel, control, dice);
    case Storage::integer: return randomWhole(panel, control, dice);
    case Storage::real: {
        double numbers[3];
        for (double &number : numbers) number = randomNumber(control, dice);
        panel.edit(control, numbers);
    }
    }
}

void randomSettings(HostNode &node, int server, Dice &dice, bool keys) {
    HostPanel *panel = panelOf(node);
    if (!panel) return;
    for (const unsigned int id : panel->controls()) {
        const CallScope noted(server, "a change on the panel");
        randomSetting(*panel, *panel->find(id), dice, keys);
    }
}

void readPanel(HostNode &node, int server) {
    const CallScope noted(server, "reading the panel");
    HostPanel *panel = panelOf(node);
    if (!panel) return;
    panel->check();
    for (const unsigned int id : panel->controls()) {
        const PanelItem &control = *panel->find(id);
        panel->value(control.valueId);
        panel->isEnabled(control);
        if (control.type && control.type->kind == ControlKind::choice) panel->entries(control);
        panel->pendingValue(id);
    }
}

void setNumber(HostPanel &panel, const PanelItem &control, double number) {
    if (!control.type || !panel.isAvailable(control)) return;
    double numbers[3] = {number, number, number};
    const double inRange = std::clamp<double>(number, std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
    int whole = std::isnan(number) ? 0 : static_cast<int>(inRange);
    switch (control.type->storage) {
    case Storage::integer: panel.edit(control, &whole); return;
    case Storage::real: panel.edit(control, numbers); return;
    case Storage::animated:
        if (auto *parameter = static_cast<HostVParm *>(panel.value(control.valueId))) {
            parameter->removeEnvelopes();
            parameter->setConstant(numbers);
            panel.edit(control, parameter);
        }
        return;
    default: return;
    }
}

} // namespace velm::host
