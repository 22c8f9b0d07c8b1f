// Constant values. All but the integer can be animated. A connected input overrides the value.
#include "host/graph/builtin/definitions.h"

namespace velm::host::builtin {

namespace {

void giveScalar(const Evaluation &evaluation, int) { evaluation.set(evaluation.scalar(0)); }
void giveTriple(const Evaluation &evaluation, int) { evaluation.set(evaluation.triple(0)); }
void giveInteger(const Evaluation &evaluation, int) { evaluation.set(evaluation.integer(0)); }

} // namespace

constinit const Definition constantColour{
    .name = "Constant Color",
    .colour = kConstantColour,
    .parameters = {{{.label = "Color", .kind = Kind::colour, .initial = {1, 1, 1}}}},
    .outputs = {{{"Color", kConnectColour}}},
    .evaluate = giveTriple,
};

constinit const Definition constantScalar{
    .name = "Constant Scalar",
    .colour = kConstantColour,
    .parameters = {{{.label = "Scalar", .kind = Kind::scalar, .initial = {1}}}},
    .outputs = {{{"Scalar", kConnectScalar}}},
    .evaluate = giveScalar,
};

constinit const Definition constantVector{
    .name = "Constant Vector",
    .colour = kConstantColour,
    .parameters = {{{.label = "Vector", .kind = Kind::vector}}},
    .outputs = {{{"Vector", kConnectVector}}},
    .evaluate = giveTriple,
};

constinit const Definition constantInteger{
    .name = "Constant Integer",
    .colour = kConstantColour,
    .parameters = {{{.label = "Integer", .kind = Kind::integer, .initial = {1}}}},
    .outputs = {{{"Integer", kConnectInteger}}},
    .evaluate = giveInteger,
};

} // namespace velm::host::builtin
