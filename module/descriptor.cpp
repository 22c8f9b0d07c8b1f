// What the host finds when it opens the module: the descriptor, which leads to the server table.
#include "module/servers.h"

namespace velm::plugin {

// A node without a panel has its interface record all the same, with a null activation: the host then lists an
// interface for the node and opens no panel.
#define RECORDS(Name, server, interface)                                                                               \
    {.className = HOST_CLASS_NODE_HANDLER, .name = (server), .activate = Name##_Activate, .tags = Name##_ServerTags},  \
        {.className = HOST_CLASS_NODE_INTERFACE,                                                                       \
         .name = (server),                                                                                             \
         .activate = (interface),                                                                                      \
         .tags = Name##_ServerTags},
#define WITH_PANEL(Name, server) RECORDS(Name, server, Name##_Interface)
#define WITHOUT_PANEL(Name, server) RECORDS(Name, server, nullptr)
const HostServer ServerDesc[] = {VELM_SERVERS(WITH_PANEL, WITHOUT_PANEL){
    .className = nullptr, .name = nullptr, .activate = nullptr, .tags = nullptr}};
#undef WITHOUT_PANEL
#undef WITH_PANEL
#undef RECORDS

void *Startup() { return reinterpret_cast<void *>(4); }

void Shutdown(void *) {}

} // namespace velm::plugin

// The platform code: a build for Windows carries Windows's, every other build the Macintosh's.
#ifdef _WIN32
static constexpr unsigned int kPlatform = kPlatformWindows;
#define VELM_EXPORT __declspec(dllexport)
#else
static constexpr unsigned int kPlatform = kPlatformMacintosh;
#define VELM_EXPORT __attribute__((visibility("default")))
#endif

extern "C" {
VELM_EXPORT extern const HostModuleDescriptor _mod_descrip;
const HostModuleDescriptor _mod_descrip = {
    .syncWord = kModuleSyncWord,
    .version = kModuleVersion,
    .platform = kPlatform,
    .startup = velm::plugin::Startup,
    .shutdown = velm::plugin::Shutdown,
    .servers = velm::plugin::ServerDesc,
};
}
