// A checkerboard of two colours: cubes in space, or squares on a UV map. "Size" is the edge of a cell: in metres in
// space, and as a fraction of the map (1 m is the whole map) on a UV map. "Mask" is 0 in the first colour and 1 in the
// second.
#include "host/graph/builtin/cells.h"
#include "host/graph/builtin/definitions.h"

namespace velm::host::builtin {

namespace {

enum { kFirst, kSecond, kCoordinates, kSize };
enum { kColourOut, kMaskOut };
enum { kObject, kWorld, kMap };

constexpr const char *kCoordinateTexts[] = {"Object", "World", "UV", nullptr};

bool inSecond(const Evaluation &evaluation) {
    const double size = evaluation.scalar(kSize);
    if (!(size > 0)) return false;
    const int coordinates = evaluation.choice(kCoordinates);
    const ShadingSample &sample = evaluation.sample();
    double sum = 0;
    if (coordinates == kMap) {
        double u = 0, v = 0;
        evaluation.uv(u, v);
        sum = cellAt(u / size) + cellAt(v / size);
    } else {
        const double *position = coordinates == kWorld ? sample.position : sample.objectPosition;
        for (int i = 0; i < 3; ++i) sum += cellAt(position[i] / size);
    }
    return isOdd(sum);
}

void give(const Evaluation &evaluation, int output) {
    const bool second = inSecond(evaluation);
    if (output == kMaskOut) return evaluation.set(second ? 1.0 : 0.0);
    evaluation.set(evaluation.triple(second ? kSecond : kFirst));
}

} // namespace

constinit const Definition checker{
    .name = "Checker",
    .colour = kTextureColour,
    .parameters = {{{.label = "Color 1", .kind = Kind::colour, .initial = {0.8, 0.8, 0.8}},
                    {.label = "Color 2", .kind = Kind::colour, .initial = {0.2, 0.2, 0.2}},
                    {.label = "Coordinates", .kind = Kind::choice, .texts = kCoordinateTexts},
                    {.label = "Size", .kind = Kind::distance, .initial = {0.5}},
                    {.label = "UV Map", .kind = Kind::text}}},
    .outputs = {{{"Color", kConnectColour}, {"Mask", kConnectScalar}}},
    .evaluate = give,
};

} // namespace velm::host::builtin
