// The "Animation Envelopes" table.

#include "host/animation/channel.h"
#include "host/load/dialogs.h"

#include <algorithm>
#include <cmath>

namespace velm::host {

namespace {

constexpr double kSameTime = 1e-6;

bool isShape(int shape) { return shape >= kShapeTcb && shape <= kShapeBezier2; }
bool isBehaviour(int behaviour) { return behaviour >= kBehaveReset && behaviour <= kBehaveLinear; }

HostEnvelope *create(HostChannelGroup *group, const char *name, int type) {
    return group ? &group->addEnvelope(name ? name : "", type) : nullptr;
}

void destroy(HostEnvelope *envelope) {
    if (envelope) envelope->group->removeEnvelope(*envelope);
}

HostChannelGroup *createGroup(HostChannelGroup *parent, const char *name) {
    return parent ? &parent->addGroup(name ? name : "") : nullptr;
}

void destroyGroup(HostChannelGroup *group) {
    if (group && group->parent) group->parent->removeGroup(*group);
}

HostError copy(HostEnvelope *to, HostEnvelope *from) {
    if (!to || !from) return "there is no envelope to copy";
    to->assign(*from);
    return nullptr;
}

HostError load(HostEnvelope *envelope, const HostLoadState *state) {
    if (!envelope || !state) return "there is no envelope to load";
    return loadEnvelope(*envelope, state);
}

HostError save(HostEnvelope *envelope, const HostSaveState *state) {
    if (!envelope || !state) return "there is no envelope to save";
    return saveEnvelope(*envelope, state, 0);
}

double evaluate(HostEnvelope *envelope, double time) { return envelope ? envelope->evaluate(time) : 0; }

int edit(HostEnvelope *envelope) {
    return envelope && showDialog([&](Dialogs &dialogs) { return dialogs.editEnvelope(*envelope); }) ? 1 : 0;
}

int age(HostEnvelope *envelope) { return envelope ? envelope->age : 0; }

// The index of the key; the number of keys if it is not one of this envelope.
std::size_t indexOf(const HostEnvelope &envelope, const HostKey *key) {
    const auto found =
        std::find_if(envelope.keys.begin(), envelope.keys.end(), [key](const auto &each) { return each.get() == key; });
    return static_cast<std::size_t>(found - envelope.keys.begin());
}

bool owns(const HostEnvelope *envelope, const HostKey *key) {
    return envelope && key && indexOf(*envelope, key) < envelope->keys.size();
}

HostKey *createKey(HostEnvelope *envelope, double time, double value) {
    if (!envelope || !std::isfinite(time) || !std::isfinite(value)) return nullptr;
    return &envelope->putKey(time, value);
}

void destroyKey(HostEnvelope *envelope, HostKey *key) {
    if (owns(envelope, key)) envelope->removeKey(*key);
}

HostKey *findKey(HostEnvelope *envelope, double time) {
    if (!envelope) return nullptr;
    HostKey *best = nullptr;
    for (const auto &key : envelope->keys) {
        const double distance = std::fabs(key->time - time);
        if (distance <= kSameTime && (!best || distance < std::fabs(best->time - time))) best = key.get();
    }
    return best;
}

HostKey *nextKey(HostEnvelope *envelope, HostKey *key) {
    if (!envelope) return nullptr;
    const std::size_t index = !key ? 0 : indexOf(*envelope, key) + 1;
    return index < envelope->keys.size() ? envelope->keys[index].get() : nullptr;
}

HostKey *previousKey(HostEnvelope *envelope, HostKey *key) {
    if (!envelope) return nullptr;
    const std::size_t count = envelope->keys.size();
    const std::size_t index = !key ? count : indexOf(*envelope, key);
    if (index == 0 || (key && index == count)) return nullptr;
    return envelope->keys[index - 1].get();
}

bool moveKey(HostEnvelope &envelope, HostKey &key, double time) {
    const bool taken = std::any_of(envelope.keys.begin(), envelope.keys.end(),
                                   [&](const auto &each) { return each.get() != &key && each->time == time; });
    if (taken) return false;
    key.time = time;
    std::sort(envelope.keys.begin(), envelope.keys.end(),
              [](const auto &a, const auto &b) { return a->time < b->time; });
    return true;
}

// The number that a tag addresses, other than time and shape; null for an unknown tag.
double *numberOf(HostKey &key, int tag) {
    switch (tag) {
    case kKeyValue: return &key.value;
    case kKeyTension: return &key.tension;
    case kKeyContinuity: return &key.continuity;
    case kKeyBias: return &key.bias;
    case kKeyParameter0:
    case kKeyParameter0 + 1:
    case kKeyParameter0 + 2:
    case kKeyParameter0 + 3: return &key.parameters[static_cast<std::size_t>(tag - kKeyParameter0)];
    default: return nullptr;
    }
}

bool setKeyMember(HostEnvelope &envelope, HostKey &key, int tag, const void *value) {
    if (tag == kKeyShape) {
        const int shape = *static_cast<const int *>(value);
        if (!isShape(shape)) return false;
        key.shape = shape;
        return true;
    }
    double *number = numberOf(key, tag);
    if (!number && tag != kKeyTime) return false;
    const double wanted = *static_cast<const double *>(value);
    if (!std::isfinite(wanted)) return false;
    if (!number) return moveKey(envelope, key, wanted);
    *number = wanted;
    return true;
}

int setKey(HostEnvelope *envelope, HostKey *key, int tag, const void *value) {
    if (!owns(envelope, key) || !value || !setKeyMember(*envelope, *key, tag, value)) return 0;
    envelope->changed(kEnvelopeKeyChanged, key);
    return 1;
}

int getKey(HostEnvelope *envelope, HostKey *key, int tag, void *value) {
    if (!owns(envelope, key) || !value) return 0;
    if (tag == kKeyShape) {
        *static_cast<int *>(value) = key->shape;
        return 1;
    }
    const double *number = tag == kKeyTime ? &key->time : numberOf(*key, tag);
    if (!number) return 0;
    *static_cast<double *>(value) = *number;
    return 1;
}

int setEvent(HostEnvelope *envelope, HostEnvelopeEvent *event, void *userData) {
    if (!envelope || !event) return 0;
    const bool known = std::any_of(envelope->listeners.begin(), envelope->listeners.end(), [=](const auto &listener) {
        return listener.call == event && listener.userData == userData;
    });
    if (!known) envelope->listeners.push_back({.call = event, .userData = userData});
    return 1;
}

int *behaviourOf(HostEnvelope *envelope, int tag) {
    if (!envelope) return nullptr;
    if (tag == kEnvelopePreBehaviour) return &envelope->before;
    return tag == kEnvelopePostBehaviour ? &envelope->after : nullptr;
}

int set(HostEnvelope *envelope, int tag, const void *value) {
    int *behaviour = behaviourOf(envelope, tag);
    if (!behaviour || !value || !isBehaviour(*static_cast<const int *>(value))) return 0;
    *behaviour = *static_cast<const int *>(value);
    envelope->changed(kEnvelopeBehaviourChanged, nullptr);
    return 1;
}

int get(HostEnvelope *envelope, int tag, void *value) {
    const int *behaviour = behaviourOf(envelope, tag);
    if (!behaviour || !value) return 0;
    *static_cast<int *>(value) = *behaviour;
    return 1;
}

} // namespace

const HostEnvelopeFuncs *envelopeFuncs() {
    static const HostEnvelopeFuncs funcs = {
        .create = create,
        .destroy = destroy,
        .createGroup = createGroup,
        .destroyGroup = destroyGroup,
        .copy = copy,
        .load = load,
        .save = save,
        .evaluate = evaluate,
        .edit = edit,
        .age = age,
        .createKey = createKey,
        .destroyKey = destroyKey,
        .findKey = findKey,
        .nextKey = nextKey,
        .previousKey = previousKey,
        .setKey = setKey,
        .getKey = getKey,
        .setEvent = setEvent,
        .set = set,
        .get = get,
    };
    return &funcs;
}

} // namespace velm::host
