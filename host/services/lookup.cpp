#include "host/services/lookup.h"

#include "host/image/image.h"
#include "host/panel/panel.h"
#include "host/services/backdrop.h"
#include "host/services/channel.h"
#include "host/services/file_request.h"
#include "host/services/instance_update.h"
#include "host/services/scene_info.h"
#include "host/services/system.h"
#include "host/services/time.h"
#include "host/services/vparm.h"
#include "host/thread_role.h"

#include <map>
#include <string>

namespace velm {

namespace {

// The lookup's type is older than const; servers do not write to what they get.
template <const auto *(*table)()>
void *tableOf() {
    return const_cast<void *>(static_cast<const void *>(table()));
}

template <auto *(*function)()>
void *functionOf() {
    return reinterpret_cast<void *>(function());
}

struct Service {
    const char *name;
    void *(*give)();
};

constexpr Service kServices[] = {
    {HOST_NODE_FUNCS, tableOf<nodeFuncs>},
    {HOST_NODE_INPUT_FUNCS, tableOf<nodeInputFuncs>},
    {HOST_NODE_OUTPUT_FUNCS, tableOf<nodeOutputFuncs>},
    {HOST_NODE_EDITOR_FUNCS, tableOf<nodeEditorFuncs>},
    {HOST_NODE_UTILITY_FUNCS, tableOf<nodeUtilityFuncs>},
    {HOST_VPARM_FUNCS, tableOf<vparmFuncs>},
    {HOST_ENVELOPE_FUNCS, tableOf<envelopeFuncs>},
    {HOST_PANEL_FUNCS, tableOf<panelFuncs>},
    {HOST_INSTANCE_UPDATE, functionOf<instanceUpdate>},
    {HOST_SYSTEM_ID, systemId},
    {HOST_IMAGE_LIST, tableOf<imageListFuncs>},
    {HOST_FILE_REQUEST, functionOf<fileRequest>},
    {HOST_BACKDROP_INFO, tableOf<backdropInfo>},
    {HOST_TIME_INFO, tableOf<timeInfo>},
    {HOST_SCENE_INFO, tableOf<sceneInfo>},
};

std::map<std::string, void *, std::less<>> &offered() {
    static std::map<std::string, void *, std::less<>> services;
    return services;
}

thread_local std::string missing;

} // namespace

void *lookup(const char *service, int) {
    const std::string_view wanted = service ? service : "";
    if (const auto found = offered().find(wanted); found != offered().end()) return found->second;
    for (const Service &known : kServices)
        if (wanted == known.name) return known.give();
    missing = wanted;
    return nullptr;
}

void offerService(const char *service, void *pointer) {
    assertInterface();
    if (pointer)
        offered()[service] = pointer;
    else
        offered().erase(service);
}

const char *lastMissingService() { return missing.empty() ? nullptr : missing.c_str(); }

void clearMissingService() { missing.clear(); }

} // namespace velm
