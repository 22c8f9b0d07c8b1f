// Vectors and colours from their components, and components from vectors and colours.
#include "host/graph/builtin/definitions.h"

namespace velm::host::builtin {

namespace {

void join(const Evaluation &evaluation, int) {
    evaluation.set(std::array<double, 3>{evaluation.scalar(0), evaluation.scalar(1), evaluation.scalar(2)});
}

void split(const Evaluation &evaluation, int output) {
    evaluation.set(evaluation.triple(0)[static_cast<std::size_t>(output)]);
}

} // namespace

constinit const Definition makeVector{
    .name = "Make Vector",
    .colour = kMathColour,
    .parameters = {{{.label = "X"}, {.label = "Y"}, {.label = "Z"}}},
    .outputs = {{{"Vector", kConnectVector}}},
    .evaluate = join,
};

constinit const Definition splitVector{
    .name = "Split Vector",
    .colour = kMathColour,
    .parameters = {{{.label = "Vector", .kind = Kind::vector}}},
    .outputs = {{{"X", kConnectScalar}, {"Y", kConnectScalar}, {"Z", kConnectScalar}}},
    .evaluate = split,
};

constinit const Definition makeColour{
    .name = "Make Color",
    .colour = kMathColour,
    .parameters = {{{.label = "Red"}, {.label = "Green"}, {.label = "Blue"}}},
    .outputs = {{{"Color", kConnectColour}}},
    .evaluate = join,
};

constinit const Definition splitColour{
    .name = "Split Color",
    .colour = kMathColour,
    .parameters = {{{.label = "Color", .kind = Kind::colour}}},
    .outputs = {{{"Red", kConnectScalar}, {"Green", kConnectScalar}, {"Blue", kConnectScalar}}},
    .evaluate = split,
};

} // namespace velm::host::builtin
