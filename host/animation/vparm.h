// Animatable parameters of one or three components: the "LWVParmFuncs 2" service and the record behind its handles.
#pragma once

#include "host/animation/channel.h"
#include "module/host.h"

#include <array>
#include <memory>
#include <string>

namespace velm::host {

// Events of a parameter's callback.
enum {
    kParmEventValue = 1,    /* a value was set, or keys changed */
    kParmEventEnvelope = 2, /* envelopes were created or removed */
    kParmEventReplaced = 3, /* all of it, by copy or load */
};

} // namespace velm::host

// A parameter: a constant value, or one envelope for each component. The envelopes are in the channel group that the
// parameter was set up with, or in a group of its own without one, and are destroyed with the parameter. If they are
// destroyed from outside, the parameter gets its constant value back. [interface thread] except for `value`.
struct HostVParm final : velm::host::ChannelUser {
    explicit HostVParm(int typeCode); // one for which `isType` is true
    HostVParm(const HostVParm &) = delete;
    HostVParm &operator=(const HostVParm &) = delete;
    ~HostVParm();

    static bool isType(int typeCode);
    int type() const { return type_; }
    int components() const { return (type_ & 1) != 0 ? 3 : 1; }
    const std::string &channelName() const { return channelName_; }

    // Moves existing envelopes to the new group.
    void setUp(const std::string &channelName, HostChannelGroup *group, HostParmEvent *event, void *userData);

    // Writes `components()` values for a time in seconds and returns the first. Allocates nothing. [between frames]
    double value(double time, double result[3]) const;
    // Sets the constant. Returns false, without effect, while there are envelopes.
    bool setConstant(const double *values);

    bool hasEnvelopes() const { return envelopes_[0] != nullptr; }
    // Creates the envelopes, each with one key of the current value at time 0; no effect if they exist.
    void createEnvelopes();
    // Removes the envelopes; the constant becomes their value at time 0.
    void removeEnvelopes();
    // Null without envelopes; `component` is less than `components()`.
    HostEnvelope *envelope(int component) const { return envelopes_[static_cast<std::size_t>(component)]; }

    // Copies the constant and the envelopes of a parameter with as many components; names, group and callback stay.
    void assign(const HostVParm &other);

    HostError save(const HostSaveState *state) const;
    HostError load(const HostLoadState *state); // unchanged on failure

    // Calls the callback, if there is one.
    void changed(int event);

    void envelopeGone(HostEnvelope &envelope) override;
    void groupGone(HostChannelGroup &group) override;

  private:
    HostChannelGroup &home();
    void addEnvelopes();
    void dropEnvelopes();
    void leaveGroup();

    int type_;
    std::array<double, 3> constant_{};
    std::array<HostEnvelope *, 3> envelopes_{};
    std::string channelName_;
    HostChannelGroup *group_ = nullptr;
    std::unique_ptr<HostChannelGroup> ownGroup_; // for envelopes of a parameter without a group
    HostParmEvent *event_ = nullptr;
    void *userData_ = nullptr;
};

namespace velm::host {

// The "LWVParmFuncs 2" table. With a null handle, operations return null or 0 and have no effect; copy, load and save
// return a message. create returns null for an unknown type code. Bit 0 of setState creates or removes envelopes; bit 1
// has no effect, since this host has no textures, and the texture operation returns null. The edit operations ask
// Dialogs (host/load/dialogs.h), and return 1 if an editor was opened, else 0. `envelopes` fills in three handles, null
// where there is no envelope, and returns their number.
const HostVParmFuncs *vparmFuncs();

} // namespace velm::host
