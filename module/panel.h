// The frame of a panel. The value table and the hint list that the host wants are made from a unit's parameter rows at
// compile time; what a unit adds is its layout: limits, enabling, groups. Getter, setter and notifications walk the
// same rows.
//
// A panel is built when it is first asked for, and kept for the life of its instance. The interface thread only, and
// never while rendering.
#pragma once

#include "module/node.h"

#include <array>
#include <string_view>

namespace velm::plugin {

// ---- Layout: what a unit adds to its rows ------------------------------------------------------------------------
// Each of these is a short run of hint words; joinHints strings them together.

template <size_t count>
using HintRun = std::array<HostHint, count>;

constexpr HostHint word(HostWord value) { return {.word = value}; }
constexpr HostHint idOrLimit(int value) { return {.word = static_cast<HostWord>(static_cast<intptr_t>(value))}; }

// A limit of a number, whole and in the control's shown unit.
constexpr HintRun<3> minimumHint(unsigned int id, int limit) {
    return {word(kHintMinimum), word(id), idOrLimit(limit)};
}
constexpr HintRun<3> stepHint(unsigned int id, int step) { return {word(kHintStep), word(id), idOrLimit(step)}; }
constexpr HintRun<5> rangeHint(unsigned int id, int low, int high, int step) {
    return {word(kHintRange), word(id), idOrLimit(low), idOrLimit(high), idOrLimit(step)};
}
// The panel refuses values beyond the low or the high limit.
constexpr HintRun<4> enforceHint(unsigned int id, bool low, bool high) {
    return {word(kHintEnforceLimits), word(id), word(low), word(high)};
}

// A map from the entries of a popup to whether others are enabled, 1, or not, 0. Panels look a few entries further than
// the popup's list is long, and are to find zeros there: every map has the same room, whatever the length of its list.
using EnableStates = int[16];

// `ids` are enabled only while the value of `controlling` is non-zero or, with a map, has a 1 in it; a message is shown
// when a disabled one is touched. The message and the map may be null.
template <class... Ids>
constexpr auto enableHint(unsigned int controlling, const char *message, const EnableStates *map, Ids... ids) {
    return HintRun<6 + sizeof...(ids)>{word(kHintEnable),
                                       word(controlling),
                                       HostHint{.text = message},
                                       word(0),
                                       HostHint{.numbers = map ? *map : nullptr},
                                       word(ids)...,
                                       word(0)};
}

// Gathers controls and groups under a new id; tabs show groups one at a time.
template <class... Ids>
constexpr auto groupHint(unsigned int group, Ids... ids) {
    return HintRun<3 + sizeof...(ids)>{word(kHintGroup), word(group), word(ids)..., word(0)};
}
template <class... Ids>
constexpr auto tabsHint(unsigned int group, Ids... ids) {
    return HintRun<3 + sizeof...(ids)>{word(kHintTabs), word(group), word(ids)..., word(0)};
}
// Shows the member whose position is the value of `controlling`.
template <class... Ids>
constexpr auto stackHint(unsigned int group, unsigned int controlling, Ids... ids) {
    return HintRun<5 + sizeof...(ids)>{word(kHintStack), word(group), word(controlling), HostHint{.numbers = nullptr},
                                       word(ids)...,     word(0)};
}
constexpr HintRun<4> labelHint(unsigned int id, const char *text) {
    return {word(kHintLabel), word(id), HostHint{.text = text}, word(0)};
}
template <class... Ids>
constexpr auto listHint(HostWord tag, Ids... ids) { // narrow, left-align, divider after
    return HintRun<2 + sizeof...(ids)>{word(tag), word(ids)..., word(0)};
}

template <size_t... counts>
constexpr auto joinHints(const HintRun<counts> &...runs) {
    HintRun<(counts + ... + 0)> all{};
    size_t next = 0;
    const auto append = [&](const auto &run) {
        for (const HostHint &hint : run) all[next++] = hint;
    };
    (append(runs), ...);
    return all;
}

inline constexpr HintRun<0> kPlainLayout{}; // controls one below the other, nothing more

// ---- Tables made from the rows -----------------------------------------------------------------------------------

inline constexpr unsigned int kFirstControl = 0x8001;

// The type of the value behind a control; null for a control without one.
constexpr const char *valueType(const char *control) {
    const std::string_view type = control;
    if (type == "vButton" || type == "dThumbnail") return nullptr;
    if (type == "iPopChoice" || type == "iChoice" || type == "iBoolean" || type == "iPopTransform") return "integer";
    return control;
}

// The rows that are on the panel number from 0x8001 in row order.
template <size_t rows>
constexpr bool idsAscend(const Parameter (&parameters)[rows]) {
    unsigned int next = kFirstControl;
    for (const Parameter &row : parameters)
        if (row.control && row.id != next++) return false;
    return true;
}

// One row for each value, and a row of zeros.
template <size_t rows>
constexpr auto panelValues(const Parameter (&parameters)[rows]) {
    std::array<HostPanelValue, rows + 1> values{};
    size_t next = 0;
    for (const Parameter &row : parameters)
        if (row.control && valueType(row.control))
            values[next++] = {.id = row.id, .label = row.label, .type = valueType(row.control)};
    return values;
}

inline constexpr size_t kMostWordsOfARow = 32; // of the hints that a parameter row gives

// Writes the hints of one row from `words` on, and gives how many.
constexpr size_t rowHints(const Parameter &row, HostHint *words) {
    size_t n = 0;
    const auto put = [&](HostHint hint) { words[n++] = hint; };
    put(word(kHintAddControl)), put(word(row.id)), put({.text = row.control});
    put(word(valueType(row.control) ? row.id : 0));
    if (row.label) put(word(kHintLabel)), put(word(row.id)), put({.text = row.label}), put(word(0));
    if (row.texts) put(word(kHintStringList)), put(word(row.id)), put({.texts = row.texts}), put(word(0));
    if (row.popupCount) {
        put(word(kHintPopupFunctions)), put(word(row.id));
        put({.popupCount = row.popupCount}), put({.popupName = row.popupName});
    }
    if (!row.transform.empty()) {
        put(word(kHintValueTransform)), put(word(row.id));
        put(word(row.transform.size())), put({.numbers = row.transform.data()});
    }
    if (row.button) put(word(kHintButton)), put(word(row.id)), put({.button = row.button});
    if (row.draw) put(word(kHintDraw)), put(word(row.id)), put({.draw = row.draw});
    return n;
}

// Change notification, the rows' hints, the unit's layout, destruction notification, end.
template <size_t rows, size_t layoutWords>
constexpr auto panelHints(const Parameter (&parameters)[rows], const HintRun<layoutWords> &layout,
                          HostPanelChange *change, HostPanelDestroyed *destroyed) {
    HintRun<6 + rows * kMostWordsOfARow + layoutWords> words{};
    size_t n = 0;
    words[n++] = word(kHintChangeNotify);
    words[n++] = {.change = change};
    for (const Parameter &row : parameters)
        if (row.control) n += rowHints(row, words.data() + n);
    for (const HostHint &hint : layout) words[n++] = hint;
    words[n++] = word(kHintDestroyNotify);
    words[n++] = {.destroyed = destroyed};
    words[n++] = word(0);
    words[n] = word(kHintEnd);
    return words;
}

// ---- What the callbacks of a unit hand on to ---------------------------------------------------------------------

struct PanelTables {
    const HostPanelValue *values;
    const HostHint *hints;
    HostPanelGetter *get;
    HostPanelSetter *set;
};

int activateInterface(const NodeClass &nodeClass, HostPanel *(*getPanel)(void *instance), int version,
                      HostLookup *lookup, void *local);
HostPanel *getPanel(const NodeClass &nodeClass, const PanelTables &tables, void *instance);
void *getPanelValue(const NodeClass &nodeClass, void *instance, unsigned int id);
int setPanelValue(const NodeClass &nodeClass, void *instance, unsigned int id, void *value);
int panelChanged(const NodeClass &nodeClass, HostPanel *panel, unsigned int control, int event);

} // namespace velm::plugin

#define VELM_DECLARE_PANEL(Name)                                                                                       \
    int Name##_Interface(int version, HostLookup *lookup, void *local, void *serverData);                              \
    HostPanel *Name##_get_xPanel(void *instance);                                                                      \
    void *Name##_ui_get(void *instance, unsigned int id);                                                              \
    int Name##_ui_set(void *instance, unsigned int id, void *value);                                                   \
    int Name##_ui_chgnotify(HostPanel *panel, unsigned int control, unsigned int value, int event)

// Defines a unit's panel under its outside names, from its parameter rows and its layout. Nothing is done when the host
// destroys a panel: the instance keeps its handle, as it always has.
#define VELM_DEFINE_PANEL(Name, nodeClass, parameters, layout)                                                         \
    static_assert(idsAscend(parameters), "controls number from 0x8001 in row order");                                  \
    void *Name##_ui_get(void *instance, unsigned int id) { return getPanelValue(nodeClass, instance, id); }            \
    int Name##_ui_set(void *instance, unsigned int id, void *value) {                                                  \
        return setPanelValue(nodeClass, instance, id, value);                                                          \
    }                                                                                                                  \
    int Name##_ui_chgnotify(HostPanel *panel, unsigned int control, unsigned int, int event) {                         \
        return panelChanged(nodeClass, panel, control, event);                                                         \
    }                                                                                                                  \
    static void Name##_ui_destroynotify(void *) {}                                                                     \
    static constexpr auto Name##_xdata = panelValues(parameters);                                                      \
    static constexpr auto Name##_xhint = panelHints(parameters, layout, Name##_ui_chgnotify, Name##_ui_destroynotify); \
    HostPanel *Name##_get_xPanel(void *instance) {                                                                     \
        static constexpr PanelTables tables = {                                                                        \
            .values = Name##_xdata.data(), .hints = Name##_xhint.data(), .get = Name##_ui_get, .set = Name##_ui_set};  \
        return getPanel(nodeClass, tables, instance);                                                                  \
    }                                                                                                                  \
    int Name##_Interface(int version, HostLookup *lookup, void *local, void *) {                                       \
        return activateInterface(nodeClass, Name##_get_xPanel, version, lookup, local);                                \
    }
