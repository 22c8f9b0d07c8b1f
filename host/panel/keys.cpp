#include "host/panel/keys.h"

namespace velm::host {

void setKeys(const KeysDescription &keys, HostEnvelope &envelope) {
    for (const KeyDescription &each : keys.keys) {
        HostKey &key = envelope.putKey(each.time, each.value[0]);
        key.shape = each.shape;
        key.tension = each.tension;
        key.continuity = each.continuity;
        key.bias = each.bias;
        key.parameters = each.parameters;
    }
    envelope.before = keys.before;
    envelope.after = keys.after;
}

} // namespace velm::host
