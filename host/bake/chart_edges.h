// The edges of the parts into which a UV map cuts a mesh.
#pragma once

#include "host/bake/texel_raster.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace velm::host {

// An edge of a triangle beyond which the map does not go on: at a seam or at the end of the mesh.
struct ChartEdge {
    static constexpr std::uint32_t kNone = 0xffffffff;

    std::uint32_t triangle;
    std::uint8_t first; // the edge runs from this corner of the triangle to the next one
    // The triangle that has the same edge of the mesh elsewhere in the map, and its corners at the points at which this
    // edge begins and ends. kNone if there is none.
    std::uint32_t partner;
    std::uint8_t partnerFirst, partnerLast;
};

// All such edges of the wanted triangles, in their order. Triangles without coordinates or area in the map count as
// unwanted. [any thread]
std::vector<ChartEdge> findChartEdges(const TexelMap &map, const std::function<bool(std::uint32_t triangle)> &isWanted);

} // namespace velm::host
