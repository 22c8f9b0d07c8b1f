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
    if (parm) parm->setUp(channelName ? channelName : "", group, event, userData);
}

HostError copy(HostVParm *to, HostVParm *from) {
    if (!to || !from) return kNone;
    if (to->components() != from->components()) return "the parameters have different numbers of components";
    to->assign(*from);
    return nullptr;
}

HostError load(HostVParm *parm, const HostLoadState *state) { return parm && state ? parm->load(state) : kNone; }

HostError save(HostVParm *parm, const HostSaveState *state) { return parm && state ? parm->save(state) : kNone; }

double getValue(HostVParm *parm, double time, ShadingSample *, double value[3]) {
    double room[3] = {};
    return parm ? parm->value(time, value ? value : room) : 0;
}

int setValue(HostVParm *parm, const double *value) {
    if (!parm || !value) return 0;
    return parm->setConstant(value) ? parm->components() : 0;
}

int state(HostVParm *parm) { return parm && parm->hasEnvelopes() ? kParmHasEnvelope : 0; }

void setState(HostVParm *parm, int wanted) {
    if (!parm) return;
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
HostError init(HostVParm *parm) { return parm ? nullptr : kNone; }

int envelopes(HostVParm *parm, HostEnvelope *handles[3]) {
    int count = 0;
    for (int i = 0; i < 3; ++i) {
        HostEnvelope *envelope = parm ? parm->envelope(i) : nullptr;
        if (handles) handles[i] = envelope;
        if (envelope) ++count;
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
