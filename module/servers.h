// The nodes that the module offers. Each has one row here and one file under nodes/; the descriptor makes the host's
// server table from these rows.
#pragma once

#include "module/node.h"
#include "module/panel.h"

// The name of the node in the code, its server name, and whether it has a panel. The order is that of the server table:
// alphabetical, except that Render Info has always stood before Random. The Render Cam node is deliberately missing: it
// is compiled into the module, and no host can reach it.
#define VELM_SERVERS(PANEL, NO_PANEL)                                                                                  \
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

namespace velm::plugin {

#define DECLARE(Name, server)                                                                                          \
    VELM_DECLARE_TAGS(Name);                                                                                           \
    VELM_DECLARE_NODE(Name);
#define DECLARE_WITH_PANEL(Name, server)                                                                               \
    DECLARE(Name, server)                                                                                              \
    VELM_DECLARE_PANEL(Name);
VELM_SERVERS(DECLARE_WITH_PANEL, DECLARE)
#undef DECLARE_WITH_PANEL
#undef DECLARE

// The server table: a record of class "NodeHandler" and one of class "NodeInterface" for each node, then one of nulls.
extern const HostServer ServerDesc[];

// Gives the host the non-null word that it wants; there is nothing to start. [interface thread]
void *Startup();

// Does nothing: what the module holds lives until it is unloaded. [interface thread]
void Shutdown(void *word);

} // namespace velm::plugin
