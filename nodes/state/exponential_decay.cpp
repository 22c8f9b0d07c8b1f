// Exponential Decay: what is left of a quantity after a distance, as of light absorbed through a medium. Two nodes of
// one design: one for a number, one for a colour.
//
// Odd on purpose: the two read their quantity in opposite senses. "Scalar" is what the value is divided by per nominal
// distance, so that 2 halves it; "Color" is the fraction kept per nominal distance, so that after one the colour is the
// colour itself. Both are how artists have learnt to dial them in. A nominal distance or a power that is zero or a NaN
// is replaced by a tiny number before it divides, so that neither node ever gives a NaN. An infinity it may give where
// it does not clamp, for a power so small that one over it is infinite.
#include "module/rows.h"
#include "module/servers.h"
#include "shading/compare.h"

#include <cmath>

namespace velm::plugin {

static NodeServices scalarServices, colourServices; // each node keeps its own
static constexpr int nodeColor[3] = {164, 50, 10};

namespace {

template <class Quantity>
struct ExpDecay {
    ScalarParameter distance, nominalDistance;
    Quantity quantity;
    int clamp;
    HostChannelGroup *group;
    HostPanel *panel;
    HostNode *node;
    HostInput *distanceInput, *nominalDistanceInput, *quantityInput;
    HostOutput *output;
};
using ExpDecayScalar = ExpDecay<ScalarParameter>;
using ExpDecayColor = ExpDecay<Vec3Parameter>;

enum Control : unsigned int { kDistance = kFirstControl, kNominalDistance, kQuantity, kClamp };

#define AT(field) offsetof(Node, field)
template <class Node>
struct Tables {
    static constexpr Row quantityRow() {
        if constexpr (std::is_same_v<Node, ExpDecayScalar>)
            return number(kQuantity, "Scalar").starting(2.0);
        else
            return colour(kQuantity, "Color").starting(0.78431);
    }
    static constexpr Parameter parameters[] = {
        distance(kDistance, "Distance").at(AT(distance)).starting(1.0).input(AT(distanceInput)),
        distance(kNominalDistance, "Nominal Distance")
            .at(AT(nominalDistance))
            .starting(1.0)
            .input(AT(nominalDistanceInput)),
        quantityRow().at(AT(quantity)).input(AT(quantityInput)),
        checkBox(kClamp, "Clamp").at(AT(clamp)).starting(1),
    };
    // The output is named like the third input.
    static constexpr Output outputs[] = {
        {.name = quantityRow().label, .type = parameters[2].input, .field = AT(output)}};

    static constexpr NodeClass unit(const char *name, NodeServices &services) {
        return {
            .name = name,
            .size = sizeof(Node),
            .colour = nodeColor,
            .previewType = kPreviewOff,
            .services = &services,
            .parameters = parameters,
            .outputs = outputs,
            .node = AT(node),
            .panel = AT(panel),
            .group = AT(group),
        };
    }
};
#undef AT

constexpr NodeClass scalarClass = Tables<ExpDecayScalar>::unit("Exponential Decay (Scalar)", scalarServices);
constexpr NodeClass colourClass = Tables<ExpDecayColor>::unit("Exponential Decay (Color)", colourServices);

// The guard: what stands in for a zero, or a NaN, below a fraction line.
double guarded(double divisor) {
    constexpr double guard = 1e-12;
    return related(divisor, Relation::equal, 0) ? guard : divisor;
}

// The distance in nominal distances: the exponent of both nodes.
template <class Node>
double exponent(const Node &self, const Inputs &inputs) {
    const double distance = inputs.read(self.distance, self.distanceInput);
    const double nominal = inputs.read(self.nominalDistance, self.nominalDistanceInput);
    return 1.0 / guarded(nominal) * distance;
}

// One over the power, clamped to [0, 1] where that is asked for; a NaN becomes 0.
double decayed(double power, bool clamp) {
    const double rest = 1.0 / guarded(power);
    if (!clamp) return rest;
    if (related(rest, Relation::less, 0)) return 0;
    return rest > 1.0 ? 1.0 : rest;
}

} // namespace

static void ExpDecayScalar_Evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    const auto &self = *static_cast<const ExpDecayScalar *>(instance);
    const Inputs inputs(scalarServices, sample);
    const double e = exponent(self, inputs);
    const double scalar = inputs.read(self.quantity, self.quantityInput);
    const double result = decayed(std::pow(scalar, e), self.clamp != 0);
    scalarServices.nodeOutputFunc->setValue(value, &result);
}

static void ExpDecayColor_Evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    const auto &self = *static_cast<const ExpDecayColor *>(instance);
    const Inputs inputs(colourServices, sample);
    const double e = exponent(self, inputs);
    double colour[3];
    inputs.read(self.quantity, self.quantityInput, colour);
    for (double &component : colour) component = decayed(std::pow(1.0 / component, e), self.clamp != 0);
    colourServices.nodeOutputFunc->setValue(value, colour);
}

VELM_DEFINE_TAGS(ExpDecayScalar, scalarClass, "Velm's Nodes/Math")
VELM_DEFINE_NODE(ExpDecayScalar, scalarClass)
VELM_DEFINE_PANEL(ExpDecayScalar, scalarClass, Tables<ExpDecayScalar>::parameters, kPlainLayout)
VELM_DEFINE_TAGS(ExpDecayColor, colourClass, "Velm's Nodes/Math")
VELM_DEFINE_NODE(ExpDecayColor, colourClass)
VELM_DEFINE_PANEL(ExpDecayColor, colourClass, Tables<ExpDecayColor>::parameters, kPlainLayout)

} // namespace velm::plugin
