// What the host finds when it opens the module: the descriptor, which leads to the table of servers. A node is listed
// here once, and appears in the table twice: its shading, and its panel.
#include "module/node.h"
#include "module/panel.h"

// Each node: its unit's name, its server name, and whether it has a panel. The order is the table's, in which Render
// Info stands before Random, as it always has. The Render Cam unit is deliberately not among them: it is part of the
// module, and no host can reach it.
#define VELM_NODES(PANEL, NO_PANEL)                                                                                    \
    PANEL(AdvRayTrace, "Velm Advanced RayTrace")                                                                       \
    PANEL(AmbientOcclusion, "Velm Ambient Occlusion")                                                                  \
    PANEL(Counter, "Velm Counter")                                                                                     \
    PANEL(ExpDecayColor, "Velm Exponential Decay (Color)")                                                             \
    PANEL(ExpDecayScalar, "Velm Exponential Decay (Scalar)")                                                           \
    PANEL(GaussianReflections, "Velm Gaussian Reflections")                                                            \
    PANEL(GaussianRefractions, "Velm Gaussian Refractions")                                                            \
    PANEL(GetMaterial, "Velm Get Material")                                                                            \
    PANEL(GroupNode, "Velm Group Node")                                                                                \
    PANEL(HoldValue, "Velm Hold Value")                                                                                \
    PANEL(PixelImage, "Velm Pixel Image")                                                                              \
    NO_PANEL(RenderInfo, "Velm Render Info")                                                                           \
    PANEL(Random, "Velm Random")                                                                                       \
    PANEL(RayShade, "Velm RayShade")                                                                                   \
    PANEL(Sqrt, "Velm Sqrt")                                                                                           \
    PANEL(StoreMaterial, "Velm Store Material")                                                                        \
    PANEL(TakeSamples, "Velm Take Samples")

#define DECLARE(Unit, server)                                                                                          \
    VELM_DECLARE_TAGS(Unit);                                                                                           \
    VELM_DECLARE_NODE(Unit);
#define DECLARE_WITH_PANEL(Unit, server)                                                                               \
    DECLARE(Unit, server)                                                                                              \
    VELM_DECLARE_PANEL(Unit);
VELM_NODES(DECLARE_WITH_PANEL, DECLARE)
#undef DECLARE_WITH_PANEL
#undef DECLARE

// A node without a panel has its second record all the same, with nothing to activate: the host then lists an interface
// for the node, yet opens no panel.
#define RECORDS(Unit, server, interface)                                                                               \
    {.className = HOST_CLASS_NODE_HANDLER, .name = (server), .activate = Unit##_Activate, .tags = Unit##_ServerTags},  \
        {.className = HOST_CLASS_NODE_INTERFACE,                                                                       \
         .name = (server),                                                                                             \
         .activate = (interface),                                                                                      \
         .tags = Unit##_ServerTags},
#define WITH_PANEL(Unit, server) RECORDS(Unit, server, Unit##_Interface)
#define WITHOUT_PANEL(Unit, server) RECORDS(Unit, server, nullptr)
extern const HostServer ServerDesc[];
const HostServer ServerDesc[] = {
    VELM_NODES(WITH_PANEL, WITHOUT_PANEL){.className = nullptr, .name = nullptr, .activate = nullptr, .tags = nullptr}};
#undef WITHOUT_PANEL
#undef WITH_PANEL
#undef RECORDS

void *Startup();
void Shutdown(void *word);

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
