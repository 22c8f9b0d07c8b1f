// Smoothstep: a soft threshold. 0 up to one edge, 1 from the other on, and a smooth rise between them.
//
// Edges in reverse order make the curve fall, and edges that coincide make it a step. An input that is no number counts
// as one before the first edge, so that the result is always from 0 to 1.
#include "module/inputs.h"
#include "module/rows.h"
#include "module/servers.h"

namespace velm::plugin {
namespace {

NodeServices services;
constexpr int nodeColor[3] = {164, 50, 10};

struct Smoothstep {
    ScalarParameter input, low, high;
};
struct Connections {
    HostOutput *out;
};

#define AT(field) offsetof(Smoothstep, field)
constexpr Parameter parameters[] = {
    number(AT(input), "Input").input(),
    number(AT(low), "Low").input(),
    number(AT(high), "High").starting(1.0).input(),
};

constexpr Output outputs[] = {{.name = "Out", .type = kConnectScalar, .field = offsetof(Connections, out)}};

using Instance = InstanceRecord<Smoothstep, inputCount(parameters), Connections>;

constexpr NodeClass nodeClass = {
    .name = "Smoothstep",
    .colour = nodeColor,
    .previewType = kPreviewOff,
    .services = &services,
    .parameters = parameters,
    .outputs = outputs,
    .record = layoutOf<Instance>,
};

// The fraction of the way from one edge to the other, clamped to [0, 1]; 0 for a NaN.
double fractionBetween(double low, double high, double x) {
    const double t = (x - low) / (high - low);
    return t > 0 ? t < 1 ? t : 1 : 0;
}

void Smoothstep_Evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    const ParameterInputs<nodeClass> inputs(instance, sample);
    const double low = inputs.read<AT(low)>();
    const double high = inputs.read<AT(high)>();
    const double t = fractionBetween(low, high, inputs.read<AT(input)>());
    const double result = t * t * (3 - 2 * t);
    services.nodeOutputFunc->setValue(value, &result);
}

} // namespace

VELM_DEFINE_TAGS(Smoothstep, nodeClass, "Velm's Nodes/Math")
VELM_DEFINE_NODE(Smoothstep, nodeClass)
VELM_DEFINE_PANEL(Smoothstep, nodeClass, parameters, kPlainLayout)

} // namespace velm::plugin
