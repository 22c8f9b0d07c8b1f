// Reads hint lists into a panel. A list does not say its length, nor a tag how many words follow it. Reading therefore
// stops, with a mistake, at an unknown tag and after the largest number of words.
#include "host/base/hex.h"
#include "host/panel/panel.h"

#include <fmt/format.h>

#include <utility>

using namespace velm::host;

namespace {

constexpr std::size_t kMostWords = 65536;
constexpr int kMostNested = 16;
constexpr std::size_t kMostTexts = 4096;

} // namespace

class HintReader {
  public:
    HintReader(HostPanel &panel, const HostHint *list, int nested) : panel_(panel), next_(list), nested_(nested) {}

    void readAll() {
        while (!stopped_) {
            const HostWord tag = word();
            if (tag == kHintEnd || stopped_) return;
            if (!readLayout(tag) && !readLimits(tag) && !readControl(tag) && !readGlobal(tag))
                stop("the hint list has an unknown tag, " + hex(tag));
        }
    }

  private:
    void stop(const std::string &why) {
        panel_.problem(why);
        stopped_ = true;
    }
    HostHint hint() {
        if (++words_ > kMostWords) stop("a hint list has no end");
        return stopped_ ? HostHint{.word = 0} : *next_++;
    }
    HostWord word() { return hint().word; }
    unsigned int id() { return static_cast<unsigned int>(word()); }
    int number() { return static_cast<int>(static_cast<unsigned int>(word())); }
    PanelItem &item() { return panel_.itemFor(id()); }
    // Calls `take` with the item whose identifier comes next; it reads the words after it. (In `item().x = word()`, the
    // right side would be evaluated first.)
    template <class Take>
    bool withItem(Take take) {
        take(item());
        return true;
    }
    std::vector<unsigned int> ids() {
        std::vector<unsigned int> all;
        while (const unsigned int each = id()) all.push_back(each);
        return all;
    }
    std::vector<std::string> texts(const char *const *list, std::size_t most) {
        std::vector<std::string> all;
        for (; list && *list && all.size() < most; ++list) all.emplace_back(*list);
        if (all.size() == kMostTexts) stop("a list of texts has no end");
        return all;
    }
    void mark(bool PanelItem::*flag) {
        for (const unsigned int each : ids()) panel_.itemFor(each).*flag = true;
    }

    void addControl();
    void addContainer(ItemKind kind);
    void readRange();
    void readTransform();
    void readEnable();
    bool readLayout(HostWord tag);
    bool readLimits(HostWord tag);
    bool readControl(HostWord tag);
    bool readGlobal(HostWord tag);

    HostPanel &panel_;
    const HostHint *next_;
    int nested_;
    std::size_t words_ = 0;
    bool stopped_ = false;
};

void HintReader::addControl() {
    PanelItem &control = item();
    const char *name = hint().text;
    const unsigned int valueId = id();
    if (stopped_) return;
    if (control.kind != ItemKind::unknown) stop(fmt::format("{} is added to the panel twice", hex(control.id)));
    control.type = name ? findControlType(name) : nullptr;
    if (!control.type)
        return stop(fmt::format("the control {} has the unknown type \"{}\"", hex(control.id), name ? name : ""));
    control.kind = ItemKind::control;
    control.valueId = valueId;
    panel_.order_.push_back(control.id);
}

void HintReader::addContainer(ItemKind kind) {
    PanelItem &container = item();
    if (container.kind != ItemKind::unknown)
        return stop(fmt::format("{} is added to the panel twice", hex(container.id)));
    container.kind = kind;
    if (kind == ItemKind::stack) {
        container.valueId = id();
        container.map = hint().numbers;
    }
    container.members = ids();
    panel_.containerOrder_.push_back(container.id);
}

void HintReader::readRange() {
    PanelItem &control = item();
    control.minimum = number();
    control.maximum = number();
    control.step = number();
}

void HintReader::readTransform() {
    PanelItem &control = item();
    const HostWord count = word();
    const int *numbers = hint().numbers;
    if (stopped_) return;
    if (count > kMostTexts || !numbers)
        return stop(fmt::format("the control {} has no list of values", hex(control.id)));
    control.transform.assign(numbers, numbers + count);
}

void HintReader::readEnable() {
    EnableRule rule;
    rule.valueId = id();
    if (const char *message = hint().text) rule.message = message;
    word(); // reserved
    rule.map = hint().numbers;
    rule.ids = ids();
    panel_.rules_.push_back(std::move(rule));
}

bool HintReader::readLayout(HostWord tag) {
    switch (tag) {
    case kHintAddControl: addControl(); return true;
    case kHintGroup: addContainer(ItemKind::group); return true;
    case kHintStack: addContainer(ItemKind::stack); return true;
    case kHintTabs: addContainer(ItemKind::tabs); return true;
    case kHintLeftAlign: mark(&PanelItem::leftAligned); return true;
    case kHintNarrow: mark(&PanelItem::narrow); return true;
    case kHintDividerAfter: mark(&PanelItem::dividerAfter); return true;
    case kHintEnable: readEnable(); return true;
    default: return false;
    }
}

bool HintReader::readLimits(HostWord tag) {
    switch (tag) {
    case kHintMinimum: return withItem([&](PanelItem &control) { control.minimum = number(); });
    case kHintMaximum: return withItem([&](PanelItem &control) { control.maximum = number(); });
    case kHintStep: return withItem([&](PanelItem &control) { control.step = number(); });
    case kHintRange: readRange(); return true;
    case kHintSensitivity: return withItem([&](PanelItem &control) { control.sensitivity = number(); });
    case kHintEnforceLimits: {
        PanelItem &control = item();
        control.minimumEnforced = word() != 0;
        control.maximumEnforced = word() != 0;
        return true;
    }
    default: return false;
    }
}

bool HintReader::readControl(HostWord tag) {
    switch (tag) {
    case kHintLabel:
    case kHintStringList: {
        PanelItem &labelled = item();
        const HostHint argument = hint();
        word(); // the closing 0
        if (tag == kHintStringList)
            labelled.entries = texts(argument.texts, kMostTexts);
        else
            labelled.label = argument.text ? argument.text : "";
        return true;
    }
    case kHintPopupFunctions: {
        PanelItem &control = item();
        control.popupCount = hint().popupCount;
        control.popupName = hint().popupName;
        return true;
    }
    case kHintValueTransform: readTransform(); return true;
    case kHintButton: return withItem([&](PanelItem &control) { control.button = hint().button; });
    case kHintDraw: return withItem([&](PanelItem &control) { control.draw = hint().draw; });
    case kHintVectorLabels: return withItem([&](PanelItem &control) { control.vectorLabels = texts(hint().texts, 3); });
    case kHintControlOptions: {
        PanelItem &control = item();
        word(); // reserved
        control.options = id();
        return true;
    }
    default: return false;
    }
}

bool HintReader::readGlobal(HostWord tag) {
    switch (tag) {
    case kHintChangeNotify: panel_.change_ = hint().change; return true;
    case kHintDestroyNotify:
        panel_.destroyed_ = hint().destroyed;
        word(); // the closing 0
        return true;
    case kHintNestedList: {
        word(); // reserved
        const HostHint *list = hint().list;
        if (nested_ >= kMostNested)
            stop("hint lists are nested too deeply");
        else if (list)
            HintReader(panel_, list, nested_ + 1).readAll();
        return true;
    }
    default: return false;
    }
}

void HostPanel::addHints(const HostHint *list) {
    if (list) HintReader(*this, list, 0).readAll();
}
