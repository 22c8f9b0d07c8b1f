// Channel groups, envelopes and keys: the "Animation Envelopes" service and the records behind its handles.
#pragma once

#include "module/host.h"

#include <array>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

namespace velm::host {

// Implemented by owners of pointers to channels that they do not own: called while the channel is being destroyed.
class ChannelUser {
  public:
    virtual void envelopeGone(HostEnvelope &envelope) = 0;
    virtual void groupGone(HostChannelGroup &group) = 0;

  protected:
    ~ChannelUser() = default;
};

// Events of an envelope's callback; `data` is the key that the event is about, or null.
enum {
    kEnvelopeDestroyed = 0,
    kEnvelopeKeyCreated = 1,
    kEnvelopeKeyDestroyed = 2, /* before the key goes */
    kEnvelopeKeyChanged = 3,
    kEnvelopeBehaviourChanged = 4,
    kEnvelopeReplaced = 5, /* all keys and behaviours, by copy or load */
};

// How an envelope's values are shown, and the type argument of create.
enum { kChannelFloat = 2, kChannelDistance = 3, kChannelPercent = 4, kChannelAngle = 5 };

} // namespace velm::host

// A key. Its shape is that of the span which ends at the key; its tangents on both sides depend on it, too. TCB uses
// tension, continuity and bias. Of the four parameters, Hermite and Bezier 1D, which are the same, use [0] as the
// incoming and [1] as the outgoing tangent: the change of value, at the key's slope, over the time from the previous
// key to the next one, or to the only neighbour of the first and last key. Bezier 2D uses [0], [1] as time and value of
// the incoming handle and [2], [3] as those of the outgoing one, relative to the key.
struct HostKey {
    double time = 0; // seconds
    double value = 0;
    int shape = kShapeTcb;
    double tension = 0, continuity = 0, bias = 0;
    std::array<double, 4> parameters{};
};

// An animated channel: keys in order of time, no two at the same time, and its behaviour before and after them. Its
// group owns it.
struct HostEnvelope {
    std::string name; // unique among the group's envelopes
    HostChannelGroup *group = nullptr;
    int type = velm::host::kChannelFloat;
    std::vector<std::unique_ptr<HostKey>> keys; // pointers, so that handles of keys stay valid while others move
    int before = kBehaveConstant, after = kBehaveConstant;
    int age = 0; // the number of changes so far

    velm::host::ChannelUser *user = nullptr; // notified when the envelope is destroyed; may be null
    struct Listener {
        HostEnvelopeEvent *call;
        void *userData;
    };
    std::vector<Listener> listeners;

    HostEnvelope() = default;
    HostEnvelope(const HostEnvelope &) = delete;
    HostEnvelope &operator=(const HostEnvelope &) = delete;
    ~HostEnvelope();

    // The value at a time in seconds; 0 without keys, and that of a single key at any time. Allocates nothing.
    double evaluate(double time) const;

    // The key at that time, created if there is none; gets that value.
    HostKey &putKey(double time, double value);
    void removeKey(HostKey &key);
    void clearKeys();
    // Copies the other's keys and behaviours; name, group and type stay.
    void assign(const HostEnvelope &other);
    // Counts a change and calls the listeners.
    void changed(int event, HostKey *key);
};

// A folder of envelopes and further groups.
struct HostChannelGroup {
    std::string name; // unique among the parent's groups; never changes
    HostChannelGroup *parent = nullptr;
    std::vector<std::unique_ptr<HostEnvelope>> envelopes;
    std::vector<std::unique_ptr<HostChannelGroup>> groups;
    std::vector<velm::host::ChannelUser *> users; // notified when the group is destroyed

    HostChannelGroup() = default;
    HostChannelGroup(const HostChannelGroup &) = delete;
    HostChannelGroup &operator=(const HostChannelGroup &) = delete;
    ~HostChannelGroup();

    // The new one gets the wanted name, followed by " (2)", " (3)" and so on if it is taken.
    HostEnvelope &addEnvelope(const std::string &wantedName, int type);
    HostChannelGroup &addGroup(const std::string &wantedName);
    void removeEnvelope(HostEnvelope &envelope);
    void removeGroup(HostChannelGroup &group);
    HostEnvelope *findEnvelope(const std::string &wantedName) const; // null when there is none

  private:
    std::unordered_set<std::string> groupNames_, envelopeNames_;
};

namespace velm::host {

// A group without a parent, as for a scene or a network. It owns everything in it.
std::unique_ptr<HostChannelGroup> makeRootGroup(const std::string &name);

// The "Animation Envelopes" table. With a null handle, operations return null or 0 and have no effect; copy, load and
// save return a message. Creating in a null group returns null. Root groups, which have no parent, cannot be destroyed
// through the table. The edit operation asks Dialogs (host/load/dialogs.h), and returns 1 if an editor was opened, else
// 0. findKey finds a key within a microsecond. createKey at the time of an existing key gives that key the new value.
// nextKey after null is the first key, and previousKey before null the last. setKey returns 0 and changes nothing for
// the time of another key, a shape out of range, or a number that is not finite. setEvent adds a callback; the same
// pair of function and data is added once.
const HostEnvelopeFuncs *envelopeFuncs();

// Saves and loads an envelope as a block "ENVL" / `{ Envelope`. `component` (0 to 2) is the index of the channel in its
// parameter. Both return null, or a static message. loadEnvelope reads the next such block into `envelope`, which is
// unchanged on failure; its name is never changed.
HostError saveEnvelope(const HostEnvelope &envelope, const HostSaveState *state, int component);
HostError loadEnvelope(HostEnvelope &envelope, const HostLoadState *state);

} // namespace velm::host
