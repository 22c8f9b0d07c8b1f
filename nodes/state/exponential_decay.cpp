// Exponential Decay: how much of a quantity is left after a distance, as of light that a medium absorbs? Two nodes of
// one design: one for a number, one for a colour.
//
// Odd on purpose: the two read their quantity in opposite senses. "Scalar" is what the value is divided by per nominal
// distance, so that 2 halves it; "Color" is the fraction that is left after one nominal distance, so that the result
// there is the colour itself. Both are how artists have learnt to set them. A nominal distance or a power that is zero
// or a NaN is replaced by a tiny number before dividing by it, so that neither node gives a NaN. Without "Clamp" the
// result may be infinite, for a power so small that one over it overflows.
#include "module/inputs.h"
#include "module/rows.h"
#include "module/servers.h"
#include "shading/compare.h"

#include <cmath>

namespace velm::plugin {
namespace {

NodeServices scalarServices, colourServices;
constexpr int nodeColor[3] = {164, 50, 10};

template <class Quantity>
struct ExpDecay {
    ScalarParameter distance, nominalDistance;
    Quantity quantity;
    int clamp;
};
struct Connections {
    HostOutput *output;
};

// The tables of both nodes.
template <class Quantity>
struct Tables {
    using Fields = ExpDecay<Quantity>;

    static constexpr Row quantityRow() {
        constexpr size_t field = offsetof(Fields, quantity);
        if constexpr (std::is_same_v<Quantity, ScalarParameter>)
            return number(field, "Scalar").starting(2.0).input();
        else
            return colour(field, "Color").starting(0.78431).input();
    }
    static constexpr Parameter parameters[] = {
        distance(offsetof(Fields, distance), "Distance").starting(1.0).input(),
        distance(offsetof(Fields, nominalDistance), "Nominal Distance").starting(1.0).input(),
        quantityRow(),
        checkBox(offsetof(Fields, clamp), "Clamp").starting(1),
    };
    // The output is named like the third input.
    static constexpr Output outputs[] = {
        {.name = quantityRow().label, .type = quantityRow().Parameter::input, .field = offsetof(Connections, output)}};

    using Instance = InstanceRecord<Fields, inputCount(parameters), Connections>;

    static constexpr NodeClass nodeClass(const char *name, NodeServices &services) {
        return {
            .name = name,
            .colour = nodeColor,
            .previewType = kPreviewOff,
            .services = &services,
            .parameters = parameters,
            .outputs = outputs,
            .record = layoutOf<Instance>,
        };
    }
};
using ScalarTables = Tables<ScalarParameter>;
using ColourTables = Tables<Vec3Parameter>;

constexpr NodeClass scalarClass = ScalarTables::nodeClass("Exponential Decay (Scalar)", scalarServices);
constexpr NodeClass colourClass = ColourTables::nodeClass("Exponential Decay (Color)", colourServices);

// A divisor, replaced by a tiny number if it is zero or a NaN.
double guarded(double divisor) {
    constexpr double guard = 1e-12;
    return related(divisor, Relation::equal, 0) ? guard : divisor;
}

// The distance in nominal distances: the exponent of both nodes.
template <class Fields, const NodeClass &nodeClass>
double exponent(const ParameterInputs<nodeClass> &inputs) {
    const double distance = inputs.template read<offsetof(Fields, distance)>();
    const double nominal = inputs.template read<offsetof(Fields, nominalDistance)>();
    return 1.0 / guarded(nominal) * distance;
}

// One over the power, clamped to [0, 1] if asked for; then a NaN becomes 0.
double decayed(double power, bool clamp) {
    const double rest = 1.0 / guarded(power);
    if (!clamp) return rest;
    if (related(rest, Relation::less, 0)) return 0;
    return rest > 1.0 ? 1.0 : rest;
}

void ExpDecayScalar_Evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    using Fields = ScalarTables::Fields;
    const ParameterInputs<scalarClass> inputs(instance, sample);
    const double e = exponent<Fields>(inputs);
    const double scalar = inputs.read<offsetof(Fields, quantity)>();
    const bool clamp = static_cast<const Fields *>(instance)->clamp != 0;
    const double result = decayed(std::pow(scalar, e), clamp);
    scalarServices.nodeOutputFunc->setValue(value, &result);
}

void ExpDecayColor_Evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    using Fields = ColourTables::Fields;
    const ParameterInputs<colourClass> inputs(instance, sample);
    const double e = exponent<Fields>(inputs);
    Vec3 colour = inputs.read<offsetof(Fields, quantity)>();
    const bool clamp = static_cast<const Fields *>(instance)->clamp != 0;
    for (double &component : colour.c) component = decayed(std::pow(1.0 / component, e), clamp);
    colourServices.nodeOutputFunc->setValue(value, colour.c);
}

} // namespace

VELM_DEFINE_TAGS(ExpDecayScalar, scalarClass, "Velm's Nodes/Math")
VELM_DEFINE_NODE(ExpDecayScalar, scalarClass)
VELM_DEFINE_PANEL(ExpDecayScalar, scalarClass, ScalarTables::parameters, kPlainLayout)
VELM_DEFINE_TAGS(ExpDecayColor, colourClass, "Velm's Nodes/Math")
VELM_DEFINE_NODE(ExpDecayColor, colourClass)
VELM_DEFINE_PANEL(ExpDecayColor, colourClass, ColourTables::parameters, kPlainLayout)

} // namespace velm::plugin
