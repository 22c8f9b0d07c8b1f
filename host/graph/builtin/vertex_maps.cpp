// The values of vertex maps: the colours that are painted on a mesh, and its weights. Between the vertices they are
// interpolated. Where the mesh has no such map, the colour is white and the weight 0.
#include "host/graph/builtin/definitions.h"

namespace velm::host::builtin {

namespace {

enum { kColourOut, kAlphaOut };

void giveColour(const Evaluation &evaluation, int output) {
    const std::array<double, 4> colour = evaluation.vertexColour();
    if (output == kAlphaOut) return evaluation.set(colour[3]);
    evaluation.set(colour.data());
}

void giveWeight(const Evaluation &evaluation, int) { evaluation.set(evaluation.vertexWeight()); }

} // namespace

constinit const Definition vertexColour{
    .name = "Vertex Color",
    .colour = kInfoColour,
    .parameters = {{{.label = "Color Map", .kind = Kind::text}}},
    .outputs = {{{"Color", kConnectColour}, {"Alpha", kConnectScalar}}},
    .evaluate = giveColour,
};

constinit const Definition weightMap{
    .name = "Weight Map",
    .colour = kInfoColour,
    .parameters = {{{.label = "Weight Map", .kind = Kind::text}}},
    .outputs = {{{"Scalar", kConnectScalar}}},
    .evaluate = giveWeight,
};

} // namespace velm::host::builtin
