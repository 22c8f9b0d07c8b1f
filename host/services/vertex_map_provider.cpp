#include "host/services/vertex_map_provider.h"

namespace velm::host {

namespace {

VertexMapFuncs currentProvider;

bool colourOf(const char *mapName, const ShadingSample *sample, double result[4]) {
    return currentProvider.colour && currentProvider.colour(mapName, sample, result);
}

bool weightOf(const char *mapName, const ShadingSample *sample, double *result) {
    return currentProvider.weight && currentProvider.weight(mapName, sample, result);
}

} // namespace

void setVertexMapProvider(VertexMapFuncs provider) { currentProvider = provider; }

const VertexMapFuncs *vertexMapFuncs() {
    static constexpr VertexMapFuncs kTable = {.colour = colourOf, .weight = weightOf};
    return &kTable;
}

} // namespace velm::host
