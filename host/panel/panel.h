// A settings panel as a model that any view can show: its controls, values, rules for enabling, and callbacks. Plug-ins
// build it through the "LWXPanel" service; a view reads it, asks for the layout (layout.h) and edits values as a
// person's hand would. Everything here is for the interface thread, not while rendering.
#pragma once

#include "host/guard/call_record.h"
#include "host/panel/control_type.h"
#include "module/host.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace velm::host {

enum class ItemKind { unknown, control, group, stack, tabs };

// All that hints said of one identifier: a control, or a group, stack or set of tabs with its members. Hints may speak
// of an identifier before the one that declares it.
struct PanelItem {
    unsigned int id = 0;
    ItemKind kind = ItemKind::unknown;
    std::string label;

    // Of controls
    const ControlType *type = nullptr;
    unsigned int valueId = 0;
    std::optional<int> minimum, maximum, step; // in the shown unit
    bool minimumEnforced = false, maximumEnforced = false;
    std::optional<int> sensitivity;
    std::vector<std::string> entries; // of a choice, when they are fixed
    HostPopupCount *popupCount = nullptr;
    HostPopupName *popupName = nullptr;
    std::vector<int> transform; // the values of a transform's entries
    std::vector<std::string> vectorLabels;
    HostPanelButton *button = nullptr;
    HostPanelDraw *draw = nullptr;
    unsigned int options = 0; // kThumbSmall and so on
    bool leftAligned = false, narrow = false, dividerAfter = false;

    // Of groups, stacks and tabs
    std::vector<unsigned int> members;
    const int *map = nullptr; // of a stack; its length is that of the driving control's list; valueId drives it
};

// Controls (or whole groups) that are enabled only while a value is as it should be.
struct EnableRule {
    unsigned int valueId = 0;
    std::string message;      // shown when a disabled control is touched; may be empty
    const int *map = nullptr; // non-zero at the value's place enables; without a map any non-zero value does
    std::vector<unsigned int> ids;
};

// A row of the value description.
struct ValueRow {
    std::string label, type;
    Storage storage = Storage::none;
};

// A value that a panel keeps itself.
struct OwnValue {
    int whole = 0;
    double real[3] = {};
    std::string text;
};

} // namespace velm::host

// Pointers that plug-ins hand in (maps, functions) are kept and must outlive the panel, as static tables do; texts and
// lists are copied.
class HintReader; // hints.cpp

struct HostPanel {
    explicit HostPanel(int panelKind) : kind(panelKind) {}
    HostPanel(const HostPanel &) = delete;
    HostPanel &operator=(const HostPanel &) = delete;
    ~HostPanel(); // calls the destroy notification with the data of id 0

    // Bytes of a text without its end. Plug-ins copy texts into buffers of their own without looking at the length.
    static constexpr std::size_t kLongestText = 255;

    const int kind; // kPanelForm or kPanelOwn
    // The server in whose call it was made, by its number on the call board: its functions are the server's.
    const int maker = velm::host::serverInCall();

    // Building. Mistakes (unknown tags, lists without an end) are kept for `check`.
    void addHints(const HostHint *list);
    void describe(const HostPanelValue *rows, HostPanelGetter *get, HostPanelSetter *set);
    // Throws InputError with the first mistake in what hints and description say, if there is one.
    void check() const;

    // Reading. `find` gives null for what is no control.
    const velm::host::PanelItem *find(unsigned int controlId) const;
    const velm::host::PanelItem *item(unsigned int id) const;            // anything a hint spoke of
    const std::vector<unsigned int> &controls() const { return order_; } // in the order in which they were added
    const std::vector<unsigned int> &containers() const { return containerOrder_; } // groups and so on, likewise
    // What is shown: the label that a hint gave, else that of the value's description.
    std::string label(const velm::host::PanelItem &labelled) const;
    // The label, numbered where several controls have it ("Clamp", "Clamp 2"); empty for one without a label.
    std::string uniqueLabel(const velm::host::PanelItem &control) const;
    // Null for a value that is not described.
    const velm::host::ValueRow *row(unsigned int valueId) const;
    // The texts of a choice or transform; calls the popup functions with the viewed instance.
    std::vector<std::string> entries(const velm::host::PanelItem &control) const;
    // The place of the current entry, -1 for a value that stands for none, nothing when the control is unavailable.
    std::optional<int> chosenEntry(const velm::host::PanelItem &control);

    // Where the value is (Storage tells what it points to). Null when the control is unavailable, since a connection
    // feeds its input, and for a control without a value.
    void *value(unsigned int valueId);
    bool isAvailable(const velm::host::PanelItem &control);
    // Whether every rule that speaks of the control, or of a group around it, enables it; `message` receives the text
    // of the first one that does not. A rule whose own value is fed by a connection enables.
    bool isEnabled(const velm::host::PanelItem &control, std::string *message = nullptr);
    std::vector<const velm::host::EnableRule *> rulesFor(const velm::host::PanelItem &control) const;
    // The groups, stacks and tabs around something, at any distance.
    std::set<unsigned int> around(unsigned int id) const;
    // Which member of a stack shows: its place, -1 for none; nothing when the driving value is fed by a connection.
    std::optional<int> shownMember(const velm::host::PanelItem &stack);
    int shownFor(const velm::host::PanelItem &stack, int driving) const; // for a value of the driving control

    // Editing as a person does: the setter takes the value (an int, doubles, characters, or the HostVParm that was
    // edited) and then the change callback hears event 2. While the setter runs, slot 8 of the service gives this
    // value. False when the setter does not know the value or the control is unavailable.
    bool edit(const velm::host::PanelItem &control, void *newValue);
    // The same without the change callback.
    bool store(const velm::host::PanelItem &control, void *newValue);
    // Presses a button; does nothing for one without a function.
    void press(const velm::host::PanelItem &control);
    // Calls the change callback.
    int notify(const velm::host::PanelItem &control, int event);
    // What slot 8 gives: the value being set while a setter runs, else `value`.
    void *pendingValue(unsigned int controlId);

    void viewInstance(void *viewed) { instance_ = viewed; }
    void *instance() const { return instance_; }
    void setData(unsigned int id, void *data) { data_[id] = data; }
    void *data(unsigned int id) const;
    // Counts what asks for redrawing: refresh, and setters and change callbacks that give 2 or 3.
    void refresh() { ++refreshes_; }
    long refreshes() const { return refreshes_; }
    void problem(const std::string &text); // keeps the first

  private:
    friend class ::HintReader;

    struct Pending {
        unsigned int controlId = 0;
        void *value = nullptr;
    };
    velm::host::PanelItem &itemFor(unsigned int id);
    std::optional<int> wholeValue(unsigned int valueId);
    int mapLength(unsigned int valueId) const;
    void checkControl(const velm::host::PanelItem &control) const;
    void checkRules() const;
    void checkDriver(unsigned int valueId, bool mapped) const;
    void *ownValue(unsigned int valueId);
    void storeOwn(const velm::host::PanelItem &control, const void *newValue);
    int entryCount(const velm::host::PanelItem &control) const;

    std::map<unsigned int, velm::host::PanelItem> items_;
    std::vector<unsigned int> order_, containerOrder_;
    std::vector<velm::host::EnableRule> rules_;
    std::map<unsigned int, velm::host::ValueRow> rows_;
    std::map<unsigned int, velm::host::OwnValue> own_;
    std::map<unsigned int, void *> data_;
    HostPanelGetter *get_ = nullptr;
    HostPanelSetter *set_ = nullptr;
    HostPanelChange *change_ = nullptr;
    HostPanelDestroyed *destroyed_ = nullptr;
    void *instance_ = nullptr;
    Pending pending_;
    long refreshes_ = 0;
    std::string problem_;
};

namespace velm::host {

// The "LWXPanel" table. create gives null for an unknown kind; a non-null list of controls is a mistake that the panel
// keeps, since controls are added by hints. Null panels give null, 0 or no effect. hint takes the same hints whatever
// its id. getValue (slot 8) gives the value that is being set while a setter runs, else what the getter gives; setValue
// (slot 9) sets a control's value through the setter, and does not call the change callback: it is itself called from
// change and popup callbacks. For an animated control both pass the HostVParm, and setting copies the one given. post
// and open give 0: this host has no windows.
const HostPanelFuncs *panelFuncs();

} // namespace velm::host
