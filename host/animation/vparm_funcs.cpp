// The "LWVParmFuncs 2" table.

#include "host/animation/vparm.h"
#include "host/load/dialogs.h"

namespace velm::host {

namespace {

constexpr const char *kNone = "there is no parameter";

HostVParm *create(int type, int) { return HostVParm::isType(type) ? new HostVParm(type) : nullptr; }

void destroy(HostVParm *parm) { delete parm; }

void setUp(HostVParm *parm, const char *channelName, HostChannelGroup *group, void *, HostParmEvent *event,
           const char *, void *userData) {
    if (parm != nullptr) parm->setUp(channelName != nullptr ? channelName : "", group, event, userData);
}

HostError copy(HostVParm *to, HostVParm *from) {
    if (to == nullptr || from == nullptr) return kNone;
    if (to->components() != from->components()) return "the parameters have different numbers of components";
    to->assign(*from);
    return nullptr;
}

HostError load(HostVParm *parm, const HostLoadState *state) {
    return parm != nullptr && state != nullptr ? parm->load(state) : kNone;
}

HostError save(HostVParm *parm, const HostSaveState *state) {
    return parm != nullptr && state != nullptr ? parm->save(state) : kNone;
}

double getValue(HostVParm *parm, double time, ShadingSample *, double value[3]) {
    double room[3] = {};
    return parm != nullptr ? parm->value(time, value != nullptr ? value : room) : 0;
}

int setValue(HostVParm *parm, const double *value) {
    if (parm == nullptr || value == nullptr) return 0;
    return parm->setConstant(value) ? parm->components() : 0;
}

int state(HostVParm *parm) { return parm != nullptr && parm->hasEnvelopes() ? kParmHasEnvelope : 0; }

void setState(HostVParm *parm, int wanted) {
    if (parm == nullptr) return;
    if ((wanted & kParmHasEnvelope) != 0)
        parm->createEnvelopes();
    else
        parm->removeEnvelopes();
}

int editEnvelope(HostVParm *parm) {
    return parm && showDialog([&](Dialogs &dialogs) { return dialogs.editEnvelopes(*parm); }) ? 1 : 0;
}

int editTexture(HostVParm *parm) {
    return parm && showDialog([&](Dialogs &dialogs) { return dialogs.editTexture(*parm); }) ? 1 : 0;
}

// Parameters need no preparation in this host. Textures would, but are not offered.
HostError init(HostVParm *parm) { return parm != nullptr ? nullptr : kNone; }

int envelopes(HostVParm *parm, HostEnvelope *handles[3]) {
    int count = 0;
    for (int i = 0; i < 3; ++i) {
        HostEnvelope *envelope = parm != nullptr ? parm->envelope(i) : nullptr;
        if (handles != nullptr) handles[i] = envelope;
        if (envelope != nullptr) ++count;
    }
    return count;
}

HostTexture *texture(HostVParm *) { return nullptr; }

} // namespace

const HostVParmFuncs *vparmFuncs() {
    static const HostVParmFuncs funcs = {
        .create = create,
        .destroy = destroy,
        .setUp = setUp,
        .copy = copy,
        .load = load,
        .save = save,
        .getValue = getValue,
        .setValue = setValue,
        .state = state,
        .setState = setState,
        .editEnvelope = editEnvelope,
        .editTexture = editTexture,
        .init = init,
        .envelopes = envelopes,
        .texture = texture,
    };
    return &funcs;
}

} // namespace velm::host
