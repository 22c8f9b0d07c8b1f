#include "host/cli/panel_text.h"

#include "host/cli/wrapped_text.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <map>
#include <ostream>

namespace velm::host {

namespace {

constexpr std::size_t kLongestLine = 100;

const char *kindText(ControlKind kind) {
    switch (kind) {
    case ControlKind::number: return "number";
    case ControlKind::integer: return "whole number";
    case ControlKind::choice:
    case ControlKind::transform: return "choice";
    case ControlKind::flag: return "true or false";
    case ControlKind::text: return "text";
    case ControlKind::button: return "button";
    case ControlKind::drawing: return "drawing";
    }
    return "";
}

std::string valueText(const ControlInfo &control) {
    if (control.unit.empty() || control.value.empty()) return control.value;
    return control.value + ' ' + control.unit;
}

std::string limitsText(const ControlInfo &control) {
    std::string text;
    if (control.minimum && control.maximum)
        text = fmt::format("{} to {}", *control.minimum, *control.maximum);
    else if (control.minimum)
        text = fmt::format("at least {}", *control.minimum);
    else if (control.maximum)
        text = fmt::format("at most {}", *control.maximum);
    if (control.step) text += fmt::format("{}step {}", text.empty() ? "" : ", ", *control.step);
    return text;
}

void printSettings(const std::vector<ControlInfo> &controls, const HelpSentences &sentences, std::ostream &out) {
    using SettingRow = std::array<std::string, 4>;
    std::vector<SettingRow> rows{{"Name", "Default", "Kind", "Limits"}};
    for (const ControlInfo &control : controls)
        if (isSetting(control))
            rows.push_back({control.name, valueText(control), controlKindText(control), limitsText(control)});
    out << "\nSettings\n";
    std::array<std::size_t, 4> widths{};
    for (const SettingRow &row : rows)
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    for (const SettingRow &row : rows) {
        std::string line = fmt::format("  {:<{}}  {:<{}}  {:<{}}  {}", row[0], widths[0], row[1], widths[1], row[2],
                                       widths[2], row[3]);
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
        if (&row != &rows.front()) printWrapped(findSentence(sentences, row[0]), kIndent + kHelpIndent, out);
    }
}

// "Mode: (Random) | Polar", with the chosen entry in parentheses.
std::string entriesText(const ControlInfo &control) {
    std::vector<std::string> entries;
    for (const std::string &entry : control.entries)
        entries.push_back(entry == control.value ? '(' + entry + ')' : entry);
    return fmt::format("{}: {}", control.label, fmt::join(entries, " | "));
}

std::string controlText(const ControlInfo &control) {
    const ControlType *type = findControlType(control.type);
    const ControlKind kind = type ? type->kind : ControlKind::drawing;
    if (kind == ControlKind::button) return fmt::format("<{}>", control.label);
    if (kind == ControlKind::drawing)
        return control.label.empty() ? "(drawing)" : fmt::format("(drawing) {}", control.label);
    if (kind == ControlKind::flag) return fmt::format("[{}] {}", control.value == "on" ? 'x' : ' ', control.label);
    return control.entries.empty() ? fmt::format("{}: {}", control.label, valueText(control)) : entriesText(control);
}

std::string rulesText(const ControlInfo &control) {
    if (control.enabledBy.empty()) return {};
    std::string text = fmt::format("   enabled by {}", fmt::join(control.enabledBy, " and "));
    if (!control.message.empty()) text += fmt::format(" (\"{}\")", control.message);
    return text;
}

class LayoutPrinter {
  public:
    LayoutPrinter(const std::vector<ControlInfo> &controls, const HelpSentences &sentences, std::ostream &out)
        : sentences_(sentences), out_(out) {
        for (const ControlInfo &control : controls) controls_[control.id] = &control;
    }

    void printItems(const LayoutItem &item, std::size_t depth, std::size_t stacks) {
        for (const LayoutItem &child : item.items) {
            if (item.kind == ItemKind::stack) {
                line(depth, shownFor(child, stacks));
                print(child, depth + 1, stacks + 1);
            } else if (item.kind == ItemKind::tabs) {
                line(depth, fmt::format("tab \"{}\"", child.label));
                printItems(child, depth + 1, stacks);
            } else {
                print(child, depth, stacks);
            }
        }
    }

  private:
    void print(const LayoutItem &item, std::size_t depth, std::size_t stacks) {
        if (item.kind != ItemKind::control) {
            const bool titled = item.kind == ItemKind::group && !item.label.empty();
            if (titled) line(depth, fmt::format("group \"{}\"", item.label));
            printItems(item, titled ? depth + 1 : depth, stacks);
            return;
        }
        const ControlInfo &control = *controls_.at(item.id);
        const std::string text = controlText(control);
        if (text.size() > kLongestLine && !control.entries.empty())
            printLongChoice(control, depth);
        else
            line(depth, text + rulesText(control));
        // That of a setting is in the table.
        if (!isSetting(control))
            printWrapped(findSentence(sentences_, control.name), indentOf(depth) + kHelpIndent, out_);
        if (control.dividerAfter) line(depth, "----");
    }

    // A popup with many entries: one line each.
    void printLongChoice(const ControlInfo &control, std::size_t depth) {
        line(depth, control.label + ':' + rulesText(control));
        for (const std::string &entry : control.entries)
            line(depth + 1, entry == control.value ? '(' + entry + ')' : entry);
    }

    // When a member of a stack is shown, which every control in it knows; `stacks` are the stacks around it.
    std::string shownFor(const LayoutItem &member, std::size_t stacks) const {
        const LayoutItem *item = &member;
        while (item->kind != ItemKind::control && !item->items.empty()) item = &item->items.front();
        const auto found = controls_.find(item->id);
        if (found == controls_.end() || found->second->stacks.size() <= stacks) return "never shown";
        const StackPosition &position = found->second->stacks[stacks];
        return fmt::format("shown while {} is {}", position.drivenBy, fmt::join(position.shownFor, " or "));
    }

    static std::size_t indentOf(std::size_t depth) { return kIndent * (depth + 1); }

    void line(std::size_t depth, const std::string &text) { out_ << std::string(indentOf(depth), ' ') << text << '\n'; }

    const HelpSentences &sentences_;
    std::ostream &out_;
    std::map<unsigned int, const ControlInfo *> controls_;
};

} // namespace

std::string controlKindText(const ControlInfo &control) {
    const ControlType *type = findControlType(control.type);
    if (!type) return control.type;
    std::string text = type->unit == Unit::colour ? "colour" : kindText(type->kind);
    if (type->components == 3 && type->unit != Unit::colour) text = "three numbers";
    if (type->storage == Storage::animated) text += ", with keys";
    return text;
}

bool isSetting(const ControlInfo &control) {
    const ControlType *type = findControlType(control.type);
    return !control.name.empty() && type && type->storage != Storage::none;
}

void printPanel(HostPanel &panel, const HelpSentences &sentences, std::ostream &out) {
    const std::vector<ControlInfo> controls = describeControls(panel);
    printSettings(controls, sentences, out);
    out << "\nPanel\n";
    LayoutPrinter(controls, sentences, out).printItems(layout(panel), 0, 0);
}

} // namespace velm::host
