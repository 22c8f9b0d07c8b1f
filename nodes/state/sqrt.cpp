// Sqrt: the square root of the magnitude of a number.
//
// Odd on purpose: a negative number gives the root of its magnitude, never a NaN, so that a stray sign in the network
// cannot blacken a picture. The parameter is "Input" on the panel and "In" as an input, as saved scenes have it.
#include "module/inputs.h"
#include "module/rows.h"
#include "module/servers.h"

#include <cmath>

namespace velm::plugin {
namespace {

NodeServices services;
constexpr int nodeColor[3] = {164, 50, 10};

struct Sqrt {
    ScalarParameter operand;
};
struct Connections {
    HostOutput *out;
};

#define AT(field) offsetof(Sqrt, field)
constexpr Parameter parameters[] = {
    number(AT(operand), "Input").starting(1.0).input("In"),
};

constexpr Output outputs[] = {{.name = "Out", .type = kConnectScalar, .field = offsetof(Connections, out)}};

using Instance = InstanceRecord<Sqrt, inputCount(parameters), Connections>;

constexpr NodeClass nodeClass = {
    .name = "Sqrt",
    .colour = nodeColor,
    .previewType = kPreviewOff,
    .services = &services,
    .parameters = parameters,
    .outputs = outputs,
    .record = layoutOf<Instance>,
};

void Sqrt_Evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    const double operand = ParameterInputs<nodeClass>(instance, sample).read<AT(operand)>();
    const double root = std::sqrt(std::fabs(operand));
    services.nodeOutputFunc->setValue(value, &root);
}

} // namespace

VELM_DEFINE_TAGS(Sqrt, nodeClass, "Velm's Nodes/Math")
VELM_DEFINE_NODE(Sqrt, nodeClass)
VELM_DEFINE_PANEL(Sqrt, nodeClass, parameters, kPlainLayout)

} // namespace velm::plugin
