// A settings panel as a model that any view can show: its controls, values, rules for enabling, and callbacks. Plug-ins
// build it through the "LWXPanel" service. A view reads it, asks for the layout (layout.h) and edits values as the hand
// of a person does. [interface thread; not while rendering]
#pragma once

#include "host/base/observers.h"
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

// Everything that hints say of one identifier: a control, or a group, stack or set of tabs with its members. Hints may
// refer to an identifier before the hint that declares it.
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
    std::vector<std::string> entries; // of a choice with a fixed list
    HostPopupCount *popupCount = nullptr;
    HostPopupName *popupName = nullptr;
    std::vector<int> transform; // of a transform: the value for each entry
    std::vector<std::string> vectorLabels;
    HostPanelButton *button = nullptr;
    HostPanelDraw *draw = nullptr;
    unsigned int options = 0; // kThumbSmall and so on
    bool leftAligned = false, narrow = false, dividerAfter = false;

    // Of groups, stacks and tabs
    std::vector<unsigned int> members;
    const int *map =
        nullptr; // of a stack, which valueId drives: the member to show for each entry of the driving control
};

// Controls (or whole groups) that are enabled only for some values of another control.
struct EnableRule {
    unsigned int valueId = 0; // of the driving control
    std::string message;      // to show when a disabled control is touched; may be empty
    const int *map =
        nullptr; // the element at the value enables when it is non-zero; without a map, any non-zero value does
    std::vector<unsigned int> ids;
};

// A row of the value description.
struct ValueRow {
    std::string label, type;
    Storage storage = Storage::none;
};

// A value that the panel stores itself.
struct OwnValue {
    int integer = 0;
    double real[3] = {};
    std::string text;
};

// What a panel tells those who watch it, such as the window that shows it. Register it with HostPanel::observers(). The
// default implementations do nothing. Rules for the functions: see ObserverList.
class PanelObserver {
  public:
    // Values, enabling or availability may have changed: the plug-in refreshes the view, or a setter or change callback
    // returns kSetRedraw.
    virtual void redraw(HostPanel & /*panel*/) {}
    // The controls, their labels or entries may have changed as well: a setter or change callback returns kSetRebuild.
    virtual void rebuild(HostPanel & /*panel*/) {}
    // The panel is about to be destroyed.
    virtual void panelDestroyed(HostPanel & /*panel*/) {}

  protected:
    PanelObserver() = default;
    ~PanelObserver() = default;
    PanelObserver(const PanelObserver &) = default;
    PanelObserver &operator=(const PanelObserver &) = default;
};

} // namespace velm::host

class HintReader; // hints.cpp

// The plug-in interface's handle of a panel. Pointers that plug-ins hand in (maps, functions) must outlive the panel,
// as static tables do; texts and lists are copied.
struct HostPanel {
    using PanelItem = velm::host::PanelItem;
    using EnableRule = velm::host::EnableRule;
    using ValueRow = velm::host::ValueRow;

    explicit HostPanel(int panelKind) : kind(panelKind) {} // kPanelForm or kPanelOwn
    HostPanel(const HostPanel &) = delete;
    HostPanel &operator=(const HostPanel &) = delete;
    ~HostPanel(); // tells the observers, then calls the destroy callback with the data of id 0

    // In bytes, without the terminating zero. Plug-ins copy texts into buffers of their own without checking the
    // length.
    static constexpr std::size_t kLongestText = 255;

    const int kind;
    // The server that created the panel, by its number in the call record. The panel's callbacks are its functions.
    const int owningServer = velm::host::serverInCall();

    // Watches the panel.
    velm::host::ObserverList<velm::host::PanelObserver> &observers() { return observers_; }

    // Building. Mistakes (unknown tags, lists without an end) are remembered for `check`.
    void addHints(const HostHint *list);
    void describe(const HostPanelValue *rows, HostPanelGetter *get, HostPanelSetter *set);
    // InputError with the first mistake in the hints and the description, if there is one.
    void check() const;

    // Reading. `find` returns null unless the identifier is a control's; `item` finds anything that a hint mentions.
    const PanelItem *find(unsigned int controlId) const;
    const PanelItem *item(unsigned int id) const;
    // The controls, and the groups, stacks and tabs, in the order in which they were added.
    const std::vector<unsigned int> &controls() const { return order_; }
    const std::vector<unsigned int> &containers() const { return containerOrder_; }
    // The label to show: from a hint, or else from the value's description.
    std::string label(const PanelItem &labelled) const;
    // The label, with a number where several controls have it ("Clamp", "Clamp 2"); empty for a control without a
    // label.
    std::string uniqueLabel(const PanelItem &control) const;
    // The description of a value; null for a value without one.
    const ValueRow *row(unsigned int valueId) const;
    // The texts of a choice or transform. Calls the popup functions with the viewed instance.
    std::vector<std::string> entries(const PanelItem &control) const;
    // The index of the current entry; -1 for a value without an entry; nothing when the control is unavailable.
    std::optional<int> chosenEntry(const PanelItem &control);

    // The address of the value (Storage tells its type). Null when the control is unavailable because a connection
    // feeds its input, and for a control without a value.
    void *value(unsigned int valueId);
    bool isAvailable(const PanelItem &control);
    // Whether all rules for the control, or for a group around it, enable it; `message` receives the text of the first
    // one that does not. A rule whose driving value is fed by a connection enables.
    bool isEnabled(const PanelItem &control, std::string *message = nullptr);
    std::vector<const EnableRule *> rulesFor(const PanelItem &control) const;
    // The groups, stacks and tabs that contain an item, at any depth.
    std::set<unsigned int> around(unsigned int id) const;
    // The index of the member that a stack shows; -1 for none; nothing when the driving value is fed by a connection.
    std::optional<int> shownMember(const PanelItem &stack);
    // The same for a given value of the driving control.
    int shownFor(const PanelItem &stack, int driving) const;

    // Sets a value as the hand of a person does: calls the setter with the value (an int, doubles, characters, or the
    // HostVParm that was edited), and then the change callback with kEventSet. While the setter runs, getValue of the
    // service returns this value. False when the setter does not know the value or the control is unavailable.
    bool edit(const PanelItem &control, void *newValue);
    // The same without the change callback.
    bool store(const PanelItem &control, void *newValue);
    // Presses a button; does nothing for a button without a function.
    void press(const PanelItem &control);
    // Calls the change callback with kEventChanging and so on; returns its result, 0 without a callback.
    int notify(const PanelItem &control, int event);
    // The result of the service's getValue: the value being set while a setter runs, else `value`.
    void *pendingValue(unsigned int controlId);

    void viewInstance(void *viewed) { instance_ = viewed; }
    void *instance() const { return instance_; }
    void setData(unsigned int id, void *data) { data_[id] = data; }
    void *data(unsigned int id) const;
    void refresh();                        // asks the observers to redraw
    void problem(const std::string &text); // remembers the first one

  private:
    friend class ::HintReader;

    struct Pending {
        unsigned int controlId = 0;
        void *value = nullptr;
    };
    PanelItem &itemFor(unsigned int id);
    std::optional<int> integerValue(unsigned int valueId);
    int mapLength(unsigned int valueId) const;
    void checkControl(const PanelItem &control) const;
    void checkRules() const;
    void checkDriver(unsigned int valueId, bool mapped) const;
    void *ownValue(unsigned int valueId);
    void storeOwn(const PanelItem &control, const void *newValue);
    int entryCount(const PanelItem &control) const;
    void tellObservers(int result); // of a setter or change callback

    std::map<unsigned int, PanelItem> items_;
    std::vector<unsigned int> order_, containerOrder_;
    std::vector<EnableRule> rules_;
    std::map<unsigned int, ValueRow> rows_;
    std::map<unsigned int, velm::host::OwnValue> own_;
    std::map<unsigned int, void *> data_;
    HostPanelGetter *get_ = nullptr;
    HostPanelSetter *set_ = nullptr;
    HostPanelChange *change_ = nullptr;
    HostPanelDestroyed *destroyed_ = nullptr;
    void *instance_ = nullptr;
    Pending pending_;
    std::string problem_;
    velm::host::ObserverList<velm::host::PanelObserver> observers_;
};

namespace velm::host {

// The "LWXPanel" table. Null panels give null, 0 or no effect.
//   create            null for an unknown kind; a non-null list of controls is a mistake, since hints add the controls
//   hint              ignores the identifier
//   getValue          the value that is being set while a setter runs, else the getter's; for an animated control, its
//                     HostVParm
//   setValue          sets a value through the setter, without the change callback, which may itself call setValue;
//                     for an animated control, copies the given HostVParm into the control's
//   post, open        ask Dialogs (host/load/dialogs.h); 0 where nothing is shown
const HostPanelFuncs *panelFuncs();

} // namespace velm::host
