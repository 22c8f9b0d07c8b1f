// Which order of evaluation a scene's nodes allow.
#pragma once

#include "host/graph/server_list.h"
#include "host/render/scene/render_job.h"
#include "host/render/scene/render_scene_data.h"

#include <string>

namespace velm::host {

// What the nodes of a scene's surfaces do, those in nested networks included.
struct NodeTraits {
    bool draw = false;                // some take words from a module's random stream
    bool haveMemory = false;          // the results of some depend on earlier evaluations
    ServerClass *restarter = nullptr; // restarts that stream; null where none is needed
    std::string memoryNode;           // the name of the first node with memory
    std::string unknownNode;          // that of the first node, of a module, that nothing is known of; empty: none
    std::string unplaceableModule;    // the first module of such a node without a server that restarts its stream
};

// [between frames]
NodeTraits traitsOf(const RenderSceneData &scene);

struct OrderChoice {
    RenderOrder order;  // not automatic
    bool needsProbe;    // repeatable, unless a test render shows that nodes have memory after all
    std::string reason; // for choosing classic order by itself; else empty
};

// The order of a job, which `wanted` may have decided.
OrderChoice chooseOrder(RenderOrder wanted, const NodeTraits &traits);

// The reason where a probe has shown that nodes have memory.
std::string reasonOfProbe(const NodeTraits &traits);

} // namespace velm::host
