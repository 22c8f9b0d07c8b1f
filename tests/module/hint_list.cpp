#include "tests/module/hint_list.h"

#include "tests/module/fake_host.h"

#include <array>
#include <cstdio>
#include <stdexcept>

namespace velm::plugin {
namespace {

struct Form {
    HostWord tag;
    int arguments;
    bool list; // identifiers follow, ended by 0
};

constexpr std::array kForms = {
    Form{.tag = kHintLabel, .arguments = 3, .list = false},
    Form{.tag = kHintAddControl, .arguments = 3, .list = false},
    Form{.tag = kHintChangeNotify, .arguments = 1, .list = false},
    Form{.tag = kHintDestroyNotify, .arguments = 2, .list = false},
    Form{.tag = kHintMinimum, .arguments = 2, .list = false},
    Form{.tag = kHintMaximum, .arguments = 2, .list = false},
    Form{.tag = kHintStep, .arguments = 2, .list = false},
    Form{.tag = kHintRange, .arguments = 4, .list = false},
    Form{.tag = kHintStringList, .arguments = 3, .list = false},
    Form{.tag = kHintEnforceLimits, .arguments = 3, .list = false},
    Form{.tag = kHintButton, .arguments = 2, .list = false},
    Form{.tag = kHintPopupFunctions, .arguments = 3, .list = false},
    Form{.tag = kHintValueTransform, .arguments = 3, .list = false},
    Form{.tag = kHintDraw, .arguments = 2, .list = false},
    Form{.tag = kHintEnable, .arguments = 4, .list = true},
    Form{.tag = kHintGroup, .arguments = 1, .list = true},
    Form{.tag = kHintStack, .arguments = 3, .list = true},
    Form{.tag = kHintTabs, .arguments = 1, .list = true},
    Form{.tag = kHintLeftAlign, .arguments = 0, .list = true},
    Form{.tag = kHintNarrow, .arguments = 0, .list = true},
    Form{.tag = kHintDividerAfter, .arguments = 0, .list = true},
};

const Form &formOf(HostWord tag) {
    for (const Form &form : kForms)
        if (form.tag == tag) return form;
    throw std::runtime_error("there is no hint " + std::to_string(tag));
}

} // namespace

std::vector<Hint> hintsOf(const HostHint *words) {
    std::vector<Hint> hints;
    while (words->word != kHintEnd) {
        const Form &form = formOf(words->word);
        Hint hint = {.tag = form.tag, .arguments = {}, .ids = {}};
        ++words;
        for (int i = 0; i < form.arguments; ++i) hint.arguments.push_back(*words++);
        while (form.list && words->word != 0) hint.ids.push_back(static_cast<unsigned int>((words++)->word));
        if (form.list) ++words;
        hints.push_back(hint);
    }
    return hints;
}

std::vector<Hint> hintsWith(HostWord tag, const HostHint *words) {
    std::vector<Hint> found;
    for (Hint &hint : hintsOf(words))
        if (hint.tag == tag) found.push_back(std::move(hint));
    return found;
}

std::vector<std::string> limitsOf(const HostHint *words) {
    std::vector<std::string> lines;
    for (const Hint &hint : hintsOf(words)) {
        const char *name = hint.tag == kHintMinimum         ? "minimum"
                           : hint.tag == kHintMaximum       ? "maximum"
                           : hint.tag == kHintStep          ? "step"
                           : hint.tag == kHintRange         ? "range"
                           : hint.tag == kHintEnforceLimits ? "enforce"
                                                            : nullptr;
        if (!name) continue;
        std::array<char, 64> line{};
        std::snprintf(line.data(), line.size(), "%x %s", static_cast<unsigned int>(hint.arguments[0].word), name);
        std::string text = line.data();
        for (size_t i = 1; i < hint.arguments.size(); ++i)
            text += " " + std::to_string(static_cast<int>(hint.arguments[i].word));
        lines.push_back(text);
    }
    return lines;
}

std::vector<std::string> entriesOf(const HostPanel &panel, unsigned int id) {
    std::vector<std::string> entries;
    for (const Hint &hint : hintsWith(kHintStringList, panel.hints))
        if (hint.arguments[0].word == id)
            for (const char *const *text = hint.arguments[1].texts; *text; ++text) entries.emplace_back(*text);
    return entries;
}

} // namespace velm::plugin
