// The frame of a panel. The host wants a table of values and a list of hints; both are made from a node class's
// parameter rows at compile time. The class adds its layout: limits, enabling, groups. The getter, the setter and the
// notifications walk the same rows.
//
// A panel is built when it is first asked for, and lives as long as its instance. [interface thread; not while
// rendering]
#pragma once

#include "module/node.h"

#include <array>
#include <string_view>

namespace velm::plugin {

// ---- Control identifiers -----------------------------------------------------------------------------------------

inline constexpr unsigned int kFirstControl = 0x8001;

// The control of the row at `index`: controls are numbered in row order.
constexpr unsigned int controlId(std::span<const Parameter> parameters, size_t index) {
    unsigned int id = kFirstControl;
    for (size_t i = 0; i < index; ++i)
        if (parameters[i].control) ++id;
    return id;
}

// The control of the row whose field is at an offset. Does not compile if there is no such row on the panel.
consteval unsigned int controlOf(std::span<const Parameter> parameters, size_t field) {
    const size_t index = rowWithField(parameters, field);
    if (!parameters[index].control) noRowHasThisField();
    return controlId(parameters, index);
}

// ---- Layout: what a node class adds to its rows ------------------------------------------------------------------
// Each of these functions gives a short run of hint words. joinHints puts the runs together.

template <size_t count>
using HintRun = std::array<HostHint, count>;

constexpr HostHint word(HostWord value) { return {.word = value}; }
constexpr HostHint signedWord(int value) { return {.word = static_cast<HostWord>(static_cast<intptr_t>(value))}; }

// Limits of a number, as integers in the unit that the panel shows.
constexpr HintRun<3> minimumHint(unsigned int id, int limit) {
    return {word(kHintMinimum), word(id), signedWord(limit)};
}
constexpr HintRun<3> stepHint(unsigned int id, int step) { return {word(kHintStep), word(id), signedWord(step)}; }
constexpr HintRun<5> rangeHint(unsigned int id, int low, int high, int step) {
    return {word(kHintRange), word(id), signedWord(low), signedWord(high), signedWord(step)};
}
// The panel refuses values beyond the low limit, the high limit, or both.
constexpr HintRun<4> enforceHint(unsigned int id, bool low, bool high) {
    return {word(kHintEnforceLimits), word(id), word(low), word(high)};
}

// Maps each entry of a popup to 1 if the controls that depend on it are enabled, and 0 if not. Panels read a few
// entries beyond the popup's list and must find zeros there, so all maps have the same length.
using EnableStates = int[16];

// The controls `ids` are enabled while the value of `controlling` is non-zero or, with a map, while the map has a 1 for
// it. The message is shown when the user touches a disabled control. The message and the map may be null.
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

// Gathers controls and groups into a group with an identifier of its own; tabs show one group at a time.
template <class... Ids>
constexpr auto groupHint(unsigned int group, Ids... ids) {
    return HintRun<3 + sizeof...(ids)>{word(kHintGroup), word(group), word(ids)..., word(0)};
}
template <class... Ids>
constexpr auto tabsHint(unsigned int group, Ids... ids) {
    return HintRun<3 + sizeof...(ids)>{word(kHintTabs), word(group), word(ids)..., word(0)};
}
// Shows the one of `ids` whose index, from 0, is the value of `controlling`.
template <class... Ids>
constexpr auto stackHint(unsigned int group, unsigned int controlling, Ids... ids) {
    return HintRun<5 + sizeof...(ids)>{word(kHintStack), word(group), word(controlling), HostHint{.numbers = nullptr},
                                       word(ids)...,     word(0)};
}
constexpr HintRun<4> labelHint(unsigned int id, const char *text) {
    return {word(kHintLabel), word(id), HostHint{.text = text}, word(0)};
}
// A hint about several controls: kHintNarrow, kHintLeftAlign or kHintDividerAfter.
template <class... Ids>
constexpr auto listHint(HostWord tag, Ids... ids) {
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

inline constexpr HintRun<0> kPlainLayout{}; // controls one below the other, and nothing more

// ---- Tables made from the rows -----------------------------------------------------------------------------------

// The type of the value behind a control; null for a control without a value.
constexpr const char *valueType(const char *control) {
    const std::string_view type = control;
    if (type == "vButton" || type == "dThumbnail") return nullptr;
    if (type == "iPopChoice" || type == "iChoice" || type == "iBoolean" || type == "iPopTransform") return "integer";
    return control;
}

// The value table: a row for each value, and a row of zeros.
template <size_t rows>
constexpr auto panelValues(const Parameter (&parameters)[rows]) {
    std::array<HostPanelValue, rows + 1> values{};
    size_t next = 0;
    for (size_t i = 0; i < rows; ++i)
        if (const Parameter &row = parameters[i]; row.control && valueType(row.control))
            values[next++] = {.id = controlId(parameters, i), .label = row.label, .type = valueType(row.control)};
    return values;
}

inline constexpr size_t kMostWordsOfARow = 32; // of hints

// Writes the hints of one row to `words`, and returns their number.
constexpr size_t rowHints(const Parameter &row, unsigned int id, HostHint *words) {
    size_t n = 0;
    const auto put = [&](HostHint hint) { words[n++] = hint; };
    put(word(kHintAddControl)), put(word(id)), put({.text = row.control});
    put(word(valueType(row.control) ? id : 0));
    if (row.label) put(word(kHintLabel)), put(word(id)), put({.text = row.label}), put(word(0));
    if (row.texts) put(word(kHintStringList)), put(word(id)), put({.texts = row.texts}), put(word(0));
    if (row.popupCount) {
        put(word(kHintPopupFunctions)), put(word(id));
        put({.popupCount = row.popupCount}), put({.popupName = row.popupName});
    }
    if (!row.transform.empty()) {
        put(word(kHintValueTransform)), put(word(id));
        put(word(row.transform.size())), put({.numbers = row.transform.data()});
    }
    if (row.button) put(word(kHintButton)), put(word(id)), put({.button = row.button});
    if (row.draw) put(word(kHintDraw)), put(word(id)), put({.draw = row.draw});
    return n;
}

// The hint list: the change notification, the rows' hints, the layout, the destruction notification, the end.
template <size_t rows, size_t layoutWords>
constexpr auto panelHints(const Parameter (&parameters)[rows], const HintRun<layoutWords> &layout,
                          HostPanelChange *change, HostPanelDestroyed *destroyed) {
    HintRun<6 + rows * kMostWordsOfARow + layoutWords> words{};
    size_t n = 0;
    words[n++] = word(kHintChangeNotify);
    words[n++] = {.change = change};
    for (size_t i = 0; i < rows; ++i)
        if (parameters[i].control) n += rowHints(parameters[i], controlId(parameters, i), words.data() + n);
    for (const HostHint &hint : layout) words[n++] = hint;
    words[n++] = word(kHintDestroyNotify);
    words[n++] = {.destroyed = destroyed};
    words[n++] = word(0);
    words[n] = word(kHintEnd);
    return words;
}

// ---- What the callbacks of a node class call ---------------------------------------------------------------------

struct PanelTables {
    const HostPanelValue *values;
    const HostHint *hints;
    HostPanelGetter *get;
    HostPanelSetter *set;
};

int activateInterface(const NodeClass &nodeClass, HostPanel *(*getPanel)(void *instance), int version,
                      HostLookup *lookup, void *local);
// The panel of an instance, built if it has none yet. Null if the instance is null or the host cannot create a panel.
HostPanel *getPanel(const NodeClass &nodeClass, const PanelTables &tables, void *instance);
// The value behind a control: the address of an integer or a text, or a host parameter. Null if there is none, or if a
// connection to the input overrides it.
void *getPanelValue(const NodeClass &nodeClass, void *instance, unsigned int id);
int setPanelValue(const NodeClass &nodeClass, void *instance, unsigned int id, void *value);
int panelChanged(const NodeClass &nodeClass, HostPanel *panel, unsigned int control, int event);

} // namespace velm::plugin

// The functions of a panel that are visible to the rest of the module.
#define VELM_DECLARE_PANEL(Name)                                                                                       \
    int Name##_Interface(int version, HostLookup *lookup, void *local, void *serverData);                              \
    HostPanel *Name##_get_xPanel(void *instance);                                                                      \
    void *Name##_ui_get(void *instance, unsigned int id);                                                              \
    int Name##_ui_set(void *instance, unsigned int id, void *value);                                                   \
    int Name##_ui_chgnotify(HostPanel *panel, unsigned int control, unsigned int value, int event)

// Defines the panel of a node class under its outside names, from its rows and its layout. The destruction notification
// does nothing: the instance keeps its handle of the panel.
#define VELM_DEFINE_PANEL(Name, nodeClass, parameters, layout)                                                         \
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
