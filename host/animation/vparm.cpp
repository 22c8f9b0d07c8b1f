#include "host/animation/vparm.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int kLargestBaseType = 80; // base types are the multiples of 16 up to here
constexpr int kColourBase = 80;

// The display type of a parameter's channels. Colours are shown like percentages.
int channelType(int type) {
    switch (type & ~1) {
    case kParmPercent:
    case kColourBase: return velm::host::kChannelPercent;
    case kParmDistance: return velm::host::kChannelDistance;
    case kParmAngle: return velm::host::kChannelAngle;
    default: return velm::host::kChannelFloat;
    }
}

const char *componentSuffix(int type, int component) {
    static constexpr const char *axes[] = {".X", ".Y", ".Z"};
    static constexpr const char *colours[] = {".R", ".G", ".B"};
    if ((type & 1) == 0) return "";
    return (type & ~1) == kColourBase ? colours[component] : axes[component];
}

} // namespace

HostVParm::HostVParm(int typeCode) : type_(typeCode) {}

HostVParm::~HostVParm() {
    dropEnvelopes();
    leaveGroup();
}

bool HostVParm::isType(int typeCode) {
    const int base = typeCode & ~1;
    return typeCode > 0 && base <= kLargestBaseType && base % 16 == 0;
}

void HostVParm::setUp(const std::string &channelName, HostChannelGroup *group, HostParmEvent *event, void *userData) {
    HostVParm before(type_);
    before.assign(*this);
    dropEnvelopes();
    leaveGroup();
    channelName_ = channelName;
    group_ = group;
    if (group_) group_->users.push_back(this);
    event_ = nullptr; // moving envelopes does not change the parameter
    assign(before);
    event_ = event;
    userData_ = userData;
}

double HostVParm::value(double time, double result[3]) const {
    for (int i = 0; i < components(); ++i) {
        const auto component = static_cast<std::size_t>(i);
        const HostEnvelope *envelope = envelopes_[component];
        const bool animated = envelope && !envelope->keys.empty();
        result[i] = animated ? envelope->evaluate(time) : constant_[component];
    }
    return result[0];
}

bool HostVParm::setConstant(const double *values) {
    if (hasEnvelopes()) return false;
    std::copy_n(values, components(), constant_.begin());
    changed(velm::host::kParmEventValue);
    return true;
}

HostChannelGroup &HostVParm::home() {
    if (group_) return *group_;
    if (!ownGroup_) ownGroup_ = velm::host::makeRootGroup(channelName_);
    return *ownGroup_;
}

namespace {

// Passes changes of an envelope on as changes of its parameter. ChannelUser handles the end of an envelope.
int keysChanged(void *userData, HostEnvelope *, int event, void *) {
    if (event != velm::host::kEnvelopeDestroyed)
        static_cast<HostVParm *>(userData)->changed(velm::host::kParmEventValue);
    return 1;
}

} // namespace

void HostVParm::addEnvelopes() {
    for (int i = 0; i < components(); ++i) {
        const std::string name = channelName_ + componentSuffix(type_, i);
        HostEnvelope &envelope = home().addEnvelope(name, channelType(type_));
        envelope.user = this;
        envelopes_[static_cast<std::size_t>(i)] = &envelope;
    }
}

void HostVParm::dropEnvelopes() {
    for (HostEnvelope *&each : envelopes_) {
        HostEnvelope *envelope = std::exchange(each, nullptr);
        if (!envelope) continue;
        envelope->user = nullptr;
        std::erase_if(envelope->listeners, [this](const auto &listener) { return listener.userData == this; });
        envelope->group->removeEnvelope(*envelope);
    }
}

void HostVParm::leaveGroup() {
    if (group_) std::erase(group_->users, this);
    group_ = nullptr;
}

void HostVParm::createEnvelopes() {
    if (hasEnvelopes()) return;
    addEnvelopes();
    for (int i = 0; i < components(); ++i) {
        const auto component = static_cast<std::size_t>(i);
        envelopes_[component]->putKey(0, constant_[component]);
        envelopes_[component]->listeners.push_back({.call = keysChanged, .userData = this});
    }
    changed(velm::host::kParmEventEnvelope);
}

void HostVParm::removeEnvelopes() {
    if (!hasEnvelopes()) return;
    value(0, constant_.data());
    dropEnvelopes();
    changed(velm::host::kParmEventEnvelope);
}

void HostVParm::assign(const HostVParm &other) {
    if (&other == this) return;
    constant_ = other.constant_;
    dropEnvelopes();
    if (other.hasEnvelopes()) {
        addEnvelopes();
        for (int i = 0; i < components(); ++i) {
            const auto component = static_cast<std::size_t>(i);
            envelopes_[component]->assign(*other.envelopes_[component]);
            envelopes_[component]->listeners.push_back({.call = keysChanged, .userData = this});
        }
    }
    changed(velm::host::kParmEventReplaced);
}

void HostVParm::changed(int event) {
    if (event_) event_(userData_, this, event);
}

// When one envelope is destroyed from outside, the others are destroyed, too: a parameter has envelopes for all
// components or for none.
void HostVParm::envelopeGone(HostEnvelope &envelope) {
    for (HostEnvelope *&each : envelopes_)
        if (each == &envelope) each = nullptr;
    dropEnvelopes();
    changed(velm::host::kParmEventEnvelope);
}

void HostVParm::groupGone(HostChannelGroup &) {
    group_ = nullptr;
    // The group destroys the envelopes; they must not call back one by one.
    const bool had = hasEnvelopes();
    if (had) value(0, constant_.data());
    dropEnvelopes();
    if (had) changed(velm::host::kParmEventEnvelope);
}
