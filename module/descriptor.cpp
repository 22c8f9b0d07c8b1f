// What the host finds when it opens the module: the descriptor, which leads to the table of servers. A node is listed
// here once, and appears in the table twice: its shading, and its panel.
#include "module/node.h"
#include "module/panel.h"

// Each node: its unit's name, its server name, and the activation of its panel. The order is the table's.
#define VELM_NODES(NODE)                                                                                               \
    NODE(AmbientOcclusion, "Velm Ambient Occlusion", AmbientOcclusion_Interface)                                       \
    NODE(Counter, "Velm Counter", Counter_Interface)

#define DECLARE(Unit, serverName, interface)                                                                           \
    VELM_DECLARE_NODE(Unit);                                                                                           \
    VELM_DECLARE_PANEL(Unit);
VELM_NODES(DECLARE)
#undef DECLARE

#define SERVERS(Unit, serverName, interface)                                                                           \
    {.className = HOST_CLASS_NODE_HANDLER,                                                                             \
     .name = (serverName),                                                                                             \
     .activate = Unit##_Activate,                                                                                      \
     .tags = Unit##_ServerTags},                                                                                       \
        {.className = HOST_CLASS_NODE_INTERFACE,                                                                       \
         .name = (serverName),                                                                                         \
         .activate = (interface),                                                                                      \
         .tags = Unit##_ServerTags},
extern const HostServer ServerDesc[] = {
    VELM_NODES(SERVERS){.className = nullptr, .name = nullptr, .activate = nullptr, .tags = nullptr}};
#undef SERVERS

// Gives the host the non-null word that it wants; there is nothing to start.
void *Startup() { return reinterpret_cast<void *>(4); }

// Releases nothing: what the module keeps lives until it is unloaded.
void Shutdown(void *) {}

// A build for Windows carries Windows's code; every other build carries the Macintosh's.
#ifdef _WIN32
static constexpr unsigned int kPlatform = kPlatformWindows;
#else
static constexpr unsigned int kPlatform = kPlatformMacintosh;
#endif

#ifdef _WIN32
#define VELM_EXPORT __declspec(dllexport)
#else
#define VELM_EXPORT __attribute__((visibility("default")))
#endif

extern "C" {
VELM_EXPORT extern const HostModuleDescriptor _mod_descrip;
const HostModuleDescriptor _mod_descrip = {
    .syncWord = kModuleSyncWord,
    .version = kModuleVersion,
    .platform = kPlatform,
    .startup = Startup,
    .shutdown = Shutdown,
    .servers = ServerDesc,
};
}
