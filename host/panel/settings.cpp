#include "host/panel/settings.h"

#include "host/animation/vparm.h"
#include "host/base/error.h"
#include "host/base/names.h"
#include "host/panel/setting_numbers.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace velm::host {

namespace {

const PanelItem &findSetting(const HostPanel &panel, const std::string &label, const SourceLocation &location) {
    panel.check();
    for (const unsigned int id : panel.controls()) {
        const PanelItem &control = *panel.find(id);
        if (!label.empty() && panel.uniqueLabel(control) == label) return control;
    }
    throw InputError(location,
                     fmt::format("there is no setting {}{}", inQuotes(label), didYouMean(label, settingLabels(panel))));
}

// The text without spaces around it, which entries may have for their appearance.
std::string trimmed(const std::string &text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// Applies one setting to one control.
class Application {
  public:
    // `stores`: whether the value is set; otherwise it is only checked.
    Application(HostPanel &panel, const PanelItem &control, const SettingDescription &setting, bool stores)
        : panel_(panel), control_(control), setting_(setting), stores_(stores), about_(inQuotes(setting.label) + ": ") {
    }

    void apply() {
        const ControlKind kind = control_.type->kind;
        if (kind == ControlKind::button || kind == ControlKind::drawing) fail("this control holds no value");
        if (!panel_.isAvailable(control_)) fail("this setting is fed by a connection");
        switch (kind) {
        case ControlKind::integer: return applyInteger();
        case ControlKind::choice:
        case ControlKind::transform: return applyEntry();
        case ControlKind::flag: return store(expect<bool>("true or false") ? 1 : 0);
        case ControlKind::text: return applyText();
        default: return applyNumber();
        }
    }

  private:
    [[noreturn]] void fail(const std::string &what) const { throw InputError(setting_.location, about_ + what); }

    template <typename Value>
    const Value &expect(const char *what) const {
        const Value *value = std::get_if<Value>(&setting_.value);
        if (!value) fail("expected " + std::string(what));
        return *value;
    }

    void store(int value) {
        if (stores_ && !panel_.edit(control_, &value)) fail("the node refused the value");
    }

    void applyInteger() {
        const double number = expect<double>("a whole number");
        checkLimits(control_, number, setting_.location, about_);
        if (number != std::trunc(number) || number < std::numeric_limits<int>::min() ||
            number > std::numeric_limits<int>::max())
            fail("expected a whole number, not " + numberText(number));
        store(static_cast<int>(number));
    }

    void applyEntry() {
        const std::string text = trimmed(expect<std::string>("the text of one of the entries"));
        std::vector<std::string> entries = panel_.entries(control_);
        for (std::string &entry : entries) entry = trimmed(entry);
        const auto found = std::find(entries.begin(), entries.end(), text);
        if (found == entries.end()) {
            std::string known;
            for (const std::string &entry : entries) known += (known.empty() ? "" : ", ") + inQuotes(entry);
            const std::string near = didYouMean(text, entries);
            fail(fmt::format("there is no entry {}{}", inQuotes(text), near.empty() ? "; there are " + known : near));
        }
        if (std::count(found, entries.end(), text) > 1) fail("several entries are called " + inQuotes(text));
        const auto index = static_cast<std::size_t>(found - entries.begin());
        if (control_.type->kind == ControlKind::choice) return store(static_cast<int>(index));
        if (index >= control_.transform.size()) fail(fmt::format("the entry {} has no value", inQuotes(text)));
        store(control_.transform[index]);
    }

    void applyText() {
        std::string text = expect<std::string>("a text");
        if (text.size() > HostPanel::kLongestText)
            fail(fmt::format("the text has {} bytes; it may have at most {}", text.size(), HostPanel::kLongestText));
        if (text.find('\0') != std::string::npos) fail("the text has a zero character in it");
        if (stores_ && !panel_.edit(control_, text.data())) fail("the node refused the value");
    }

    void applyNumber() {
        const bool isVector = control_.type->components == 3;
        if (const auto *keys = std::get_if<KeysDescription>(&setting_.value))
            return stores_ ? applyKeys(panel_, control_, *keys, setting_.location, about_)
                           : checkKeys(panel_, control_, *keys, setting_.location, about_);
        const Double3 numbers =
            isVector ? expect<Double3>("three numbers or keys") : Double3{expect<double>("a number or keys"), 0, 0};
        stores_ ? applyNumbers(panel_, control_, numbers, setting_.location, about_)
                : checkNumbers(panel_, control_, numbers, setting_.location, about_);
    }

    HostPanel &panel_;
    const PanelItem &control_;
    const SettingDescription &setting_;
    const bool stores_;
    std::string about_;
};

std::string textOf(const SettingValue &value) {
    struct Text {
        std::string operator()(bool on) const { return on ? "on" : "off"; }
        std::string operator()(double number) const { return numberText(number); }
        std::string operator()(const Double3 &numbers) const {
            return fmt::format("{} {} {}", numberText(numbers[0]), numberText(numbers[1]), numberText(numbers[2]));
        }
        std::string operator()(const std::string &text) const { return text; }
        std::string operator()(const KeysDescription &keys) const {
            const std::size_t count = keys.keys.size();
            return fmt::format("{} {}", count, count == 1 ? "key" : "keys");
        }
    };
    return std::visit(Text{}, value);
}

SettingValue readValue(HostPanel &panel, const PanelItem &control, int entry) {
    const void *held = panel.value(control.valueId);
    switch (control.type->kind) {
    case ControlKind::integer: return static_cast<double>(*static_cast<const int *>(held));
    case ControlKind::flag: return *static_cast<const int *>(held) != 0;
    case ControlKind::text: return std::string(static_cast<const char *>(held));
    case ControlKind::number: return readNumbers(panel, control);
    default: return trimmed(panel.entries(control)[static_cast<std::size_t>(entry)]);
    }
}

bool isEntry(const PanelItem &control) {
    return control.type->kind == ControlKind::choice || control.type->kind == ControlKind::transform;
}

// The index of the current entry; -1 for none, and for a control without entries.
int entryOf(HostPanel &panel, const PanelItem &control) {
    const int entry = isEntry(control) ? panel.chosenEntry(control).value_or(-1) : -1;
    return entry < static_cast<int>(panel.entries(control).size()) ? entry : -1;
}

} // namespace

void applySetting(HostPanel &panel, const SettingDescription &setting) {
    Application(panel, findSetting(panel, setting.label, setting.location), setting, true).apply();
}

void checkSetting(HostPanel &panel, const SettingDescription &setting) {
    Application(panel, findSetting(panel, setting.label, setting.location), setting, false).apply();
}

std::vector<std::string> settingLabels(const HostPanel &panel) {
    std::vector<std::string> all;
    for (const unsigned int id : panel.controls()) {
        const PanelItem &control = *panel.find(id);
        const bool settable = control.type->storage != Storage::none;
        if (settable && !panel.label(control).empty()) all.push_back(panel.uniqueLabel(control));
    }
    return all;
}

SettingValue readSetting(HostPanel &panel, const std::string &label) {
    const PanelItem &control = findSetting(panel, label, {});
    const std::string about = inQuotes(label) + ": ";
    if (control.type->storage == Storage::none) throw InputError(about + "this control holds no value");
    if (!panel.isAvailable(control)) throw InputError(about + "this setting is fed by a connection");
    const int entry = entryOf(panel, control);
    if (isEntry(control) && entry < 0) throw InputError(about + "the value is none of the entries");
    return readValue(panel, control, entry);
}

std::string describeValue(HostPanel &panel, const PanelItem &control) {
    if (control.type->storage == Storage::none || !panel.isAvailable(control)) return "";
    const int entry = entryOf(panel, control);
    if (isEntry(control) && entry < 0)
        return fmt::format("({})", *static_cast<const int *>(panel.value(control.valueId)));
    if (control.type->storage == Storage::animated) {
        // Only the count is needed: KeysDescription cannot hold all keys that a parameter may have.
        const auto &parm = *static_cast<const HostVParm *>(panel.value(control.valueId));
        if (parm.hasEnvelopes()) {
            KeysDescription keys;
            keys.keys.resize(parm.envelope(0)->keys.size());
            return textOf(keys);
        }
    }
    const std::string text = textOf(readValue(panel, control, entry));
    return control.type->kind == ControlKind::text ? inQuotes(text) : text;
}

} // namespace velm::host
