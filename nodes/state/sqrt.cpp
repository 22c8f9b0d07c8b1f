// Sqrt: the square root of the magnitude of a number.
//
// Odd on purpose: a negative number gives the root of its magnitude, never a NaN, so that no stray sign upstream can
// blacken a picture. The parameter is "Input" on the panel and "In" as an input, as saved scenes have it.
#include "module/rows.h"
#include "module/servers.h"

#include <cmath>

namespace velm::plugin {

static NodeServices services;
static constexpr int nodeColor[3] = {164, 50, 10};

namespace {

struct Sqrt {
    ScalarParameter operand;
    HostChannelGroup *group;
    HostPanel *panel;
    HostNode *node;
    HostInput *in;
    HostOutput *out;
};

#define AT(field) offsetof(Sqrt, field)
constexpr Parameter parameters[] = {
    number(kFirstControl, "Input").at(AT(operand)).starting(1.0).input(AT(in), "In"),
};

constexpr Output outputs[] = {{.name = "Out", .type = kConnectScalar, .field = AT(out)}};

constexpr NodeClass nodeClass = {
    .name = "Sqrt",
    .size = sizeof(Sqrt),
    .colour = nodeColor,
    .previewType = kPreviewOff,
    .services = &services,
    .parameters = parameters,
    .outputs = outputs,
    .node = AT(node),
    .panel = AT(panel),
    .group = AT(group),
};
#undef AT

} // namespace

static void Sqrt_Evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    const auto &self = *static_cast<const Sqrt *>(instance);
    const double operand = Inputs(services, sample).read(self.operand, self.in);
    const double root = std::sqrt(std::fabs(operand));
    services.nodeOutputFunc->setValue(value, &root);
}

VELM_DEFINE_TAGS(Sqrt, nodeClass, "Velm's Nodes/Math")
VELM_DEFINE_NODE(Sqrt, nodeClass)
VELM_DEFINE_PANEL(Sqrt, nodeClass, parameters, kPlainLayout)

} // namespace velm::plugin
