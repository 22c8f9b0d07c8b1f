#include "host/render/order/known_nodes.h"

#include <algorithm>
#include <iterator>

namespace velm::host {
namespace {

// Take Samples and Get Material evaluate other nodes, which are in the scene, too.
constexpr KnownNode kKnownNodes[] = {
    {.server = "Velm Advanced RayTrace", .draws = false, .hasMemory = false, .restarts = false},
    {.server = "Velm Ambient Occlusion", .draws = true, .hasMemory = false, .restarts = false},
    {.server = "Velm Counter", .draws = false, .hasMemory = true, .restarts = false},
    {.server = "Velm Exponential Decay (Color)", .draws = false, .hasMemory = false, .restarts = false},
    {.server = "Velm Exponential Decay (Scalar)", .draws = false, .hasMemory = false, .restarts = false},
    {.server = "Velm Gaussian Reflections", .draws = true, .hasMemory = false, .restarts = false},
    {.server = "Velm Gaussian Refractions", .draws = true, .hasMemory = false, .restarts = false},
    {.server = "Velm Get Material", .draws = false, .hasMemory = false, .restarts = false},
    {.server = "Velm Group Node", .draws = false, .hasMemory = false, .restarts = false},
    {.server = "Velm Hold Value", .draws = false, .hasMemory = true, .restarts = false},
    {.server = "Velm Pixel Image", .draws = false, .hasMemory = false, .restarts = false},
    {.server = "Velm Random", .draws = true, .hasMemory = false, .restarts = true},
    {.server = "Velm RayShade", .draws = false, .hasMemory = false, .restarts = false},
    {.server = "Velm Render Info", .draws = false, .hasMemory = false, .restarts = false},
    {.server = "Velm Sqrt", .draws = false, .hasMemory = false, .restarts = false},
    {.server = "Velm Store Material", .draws = false, .hasMemory = false, .restarts = false},
    {.server = "Velm Take Samples", .draws = false, .hasMemory = false, .restarts = false},
};

} // namespace

const KnownNode *knownNode(std::string_view server) {
    const auto *found = std::ranges::find(kKnownNodes, server, &KnownNode::server);
    return found == std::end(kKnownNodes) ? nullptr : found;
}

} // namespace velm::host
