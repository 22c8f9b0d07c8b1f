// Channel groups, envelopes and keys: the "Animation Envelopes" service and the records behind its handles.
#pragma once

#include "module/host.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace velm::host {

// What holds on to channels that it does not own is told when they go. Called while the channel is being destroyed.
class ChannelUser {
  public:
    virtual void envelopeGone(HostEnvelope &envelope) = 0;
    virtual void groupGone(HostChannelGroup &group) = 0;

  protected:
    ~ChannelUser() = default;
};

// Events of an envelope's callback; `data` is the key where there is one, else null.
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

// A key. The shape is that of the span which ends here. Tension, continuity and bias serve TCB. Of the four parameters
// Hermite uses [0] as the incoming and [1] as the outgoing tangent, in value per span; Bezier 1D [0] and [1] as the
// values of the incoming and outgoing handles, relative to the key; Bezier 2D [0], [1] as time and value of the
// incoming handle and [2], [3] as those of the outgoing one, relative to the key.
struct HostKey {
    double time = 0; // seconds
    double value = 0;
    int shape = kShapeTcb;
    double tension = 0, continuity = 0, bias = 0;
    std::array<double, 4> parameters{};
};

// An animated channel: keys in order of time, no two at the same time, and what it does before and after them. It lives
// in its group and is destroyed with it.
struct HostEnvelope {
    std::string name; // unique among the group's envelopes
    HostChannelGroup *group = nullptr;
    int type = velm::host::kChannelFloat;
    std::vector<std::unique_ptr<HostKey>> keys; // behind pointers, since handles to them stay valid while others move
    int before = kBehaveConstant, after = kBehaveConstant;
    int age = 0; // counts changes

    velm::host::ChannelUser *user = nullptr; // told when the envelope goes
    struct Listener {
        HostEnvelopeEvent *call;
        void *userData;
    };
    std::vector<Listener> listeners;

    HostEnvelope() = default;
    HostEnvelope(const HostEnvelope &) = delete;
    HostEnvelope &operator=(const HostEnvelope &) = delete;
    ~HostEnvelope();

    // The value at a time in seconds; 0 without keys. Allocates nothing.
    double evaluate(double time) const;

    // The key at that time, created where there is none, with that value.
    HostKey &putKey(double time, double value);
    void removeKey(HostKey &key);
    void clearKeys();
    // Takes over the other's keys and behaviours; name, group and type stay.
    void assign(const HostEnvelope &other);
    // Counts a change and tells the listeners.
    void changed(int event, HostKey *key);
};

// A folder of envelopes and further groups.
struct HostChannelGroup {
    std::string name; // unique among the parent's groups
    HostChannelGroup *parent = nullptr;
    std::vector<std::unique_ptr<HostEnvelope>> envelopes;
    std::vector<std::unique_ptr<HostChannelGroup>> groups;
    std::vector<velm::host::ChannelUser *> users; // told when the group goes

    HostChannelGroup() = default;
    HostChannelGroup(const HostChannelGroup &) = delete;
    HostChannelGroup &operator=(const HostChannelGroup &) = delete;
    ~HostChannelGroup();

    // New ones get the name, with " (2)", " (3)" and so on after it where the name is taken.
    HostEnvelope &addEnvelope(const std::string &wantedName, int type);
    HostChannelGroup &addGroup(const std::string &wantedName);
    void removeEnvelope(HostEnvelope &envelope);
    void removeGroup(HostChannelGroup &group);
    HostEnvelope *findEnvelope(const std::string &wantedName) const; // null when there is none
};

namespace velm::host {

// A group without a parent, as for a scene or a network. Whoever holds it owns everything in it.
std::unique_ptr<HostChannelGroup> makeRootGroup(const std::string &name);

// The "Animation Envelopes" table. Null handles give null, 0 or no effect; copy, load and save give a message. A create
// with a null group gives null. Groups that the table did not create under a parent (root groups) cannot be destroyed
// through it. The edit operation asks Dialogs (host/load/dialogs.h) and gives 1 when an editor was opened, else 0.
// findKey finds a key within a millionth of a second. createKey at the time of a key gives that key with the new value.
// nextKey after null gives the first key, previousKey before null the last. setKey of a time where another key stands,
// of a shape out of range or of a number that is not finite gives 0 and changes nothing. setEvent adds a callback; the
// same pair again is kept once.
const HostEnvelopeFuncs *envelopeFuncs();

// The saved form of an envelope: a block "ENVL" / `{ Envelope`. `component` (0 to 2) is the place among the channels of
// one parameter. Both give null or a message that is never freed. load reads the next such block into `envelope`, which
// stays as it was on failure; its name stays in any case.
HostError saveEnvelope(const HostEnvelope &envelope, const HostSaveState *state, int component);
HostError loadEnvelope(HostEnvelope &envelope, const HostLoadState *state);

} // namespace velm::host
