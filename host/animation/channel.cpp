#include "host/animation/channel.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

// Takes the name, with a number from 2 on if it is taken.
std::string takeName(const std::string &wanted, std::unordered_set<std::string> &taken) {
    std::string name = wanted;
    for (int number = 2; !taken.insert(name).second; ++number) name = wanted + " (" + std::to_string(number) + ")";
    return name;
}

template <typename Member>
void remove(std::vector<std::unique_ptr<Member>> &members, const Member &member) {
    // From the end, since a network destroys the newest node first.
    const auto found =
        std::find_if(members.rbegin(), members.rend(), [&member](const auto &each) { return each.get() == &member; });
    if (found == members.rend()) return;
    // Removed from the list first, since destroying it calls back.
    const std::unique_ptr<Member> gone = std::move(*found);
    members.erase(std::next(found).base());
}

} // namespace

HostEnvelope::~HostEnvelope() {
    changed(velm::host::kEnvelopeDestroyed, nullptr);
    if (user) user->envelopeGone(*this);
}

HostKey &HostEnvelope::putKey(double time, double value) {
    const auto at = std::lower_bound(keys.begin(), keys.end(), time,
                                     [](const auto &key, double wanted) { return key->time < wanted; });
    if (at != keys.end() && (*at)->time == time) {
        (*at)->value = value;
        HostKey &key = **at;
        changed(velm::host::kEnvelopeKeyChanged, &key);
        return key;
    }
    auto created = std::make_unique<HostKey>();
    created->time = time;
    created->value = value;
    HostKey &key = **keys.insert(at, std::move(created));
    changed(velm::host::kEnvelopeKeyCreated, &key);
    return key;
}

void HostEnvelope::removeKey(HostKey &key) {
    changed(velm::host::kEnvelopeKeyDestroyed, &key);
    remove(keys, key);
}

void HostEnvelope::clearKeys() {
    while (!keys.empty()) removeKey(*keys.back());
}

void HostEnvelope::assign(const HostEnvelope &other) {
    if (&other == this) return;
    keys.clear();
    for (const auto &key : other.keys) keys.push_back(std::make_unique<HostKey>(*key));
    before = other.before;
    after = other.after;
    changed(velm::host::kEnvelopeReplaced, nullptr);
}

void HostEnvelope::changed(int event, HostKey *key) {
    ++age;
    // A listener may add listeners, which are called from the next change on.
    const std::vector<Listener> told = listeners;
    for (const Listener &listener : told) listener.call(listener.userData, this, event, key);
}

HostChannelGroup::~HostChannelGroup() {
    // While the envelopes still exist, since their users move or drop them.
    const std::vector<velm::host::ChannelUser *> told = std::move(users);
    for (velm::host::ChannelUser *user : told) user->groupGone(*this);
}

HostEnvelope &HostChannelGroup::addEnvelope(const std::string &wantedName, int type) {
    auto envelope = std::make_unique<HostEnvelope>();
    envelope->name = takeName(wantedName, envelopeNames_);
    envelope->group = this;
    envelope->type = type;
    return *envelopes.emplace_back(std::move(envelope));
}

HostChannelGroup &HostChannelGroup::addGroup(const std::string &wantedName) {
    auto group = std::make_unique<HostChannelGroup>();
    group->name = takeName(wantedName, groupNames_);
    group->parent = this;
    return *groups.emplace_back(std::move(group));
}

void HostChannelGroup::removeEnvelope(HostEnvelope &envelope) {
    envelopeNames_.erase(envelope.name);
    remove(envelopes, envelope);
}

void HostChannelGroup::removeGroup(HostChannelGroup &group) {
    groupNames_.erase(group.name);
    remove(groups, group);
}

HostEnvelope *HostChannelGroup::findEnvelope(const std::string &wantedName) const {
    const auto found = std::find_if(envelopes.begin(), envelopes.end(),
                                    [&wantedName](const auto &envelope) { return envelope->name == wantedName; });
    return found == envelopes.end() ? nullptr : found->get();
}

namespace velm::host {

std::unique_ptr<HostChannelGroup> makeRootGroup(const std::string &name) {
    auto group = std::make_unique<HostChannelGroup>();
    group->name = name;
    return group;
}

} // namespace velm::host
