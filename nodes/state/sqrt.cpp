// Sqrt: the square root of the magnitude of a number.
//
// Odd on purpose: a negative number gives the root of its magnitude, never a NaN, so that no stray sign upstream can
// blacken a picture. The parameter is "Input" on the panel and "In" as an input, as saved scenes have it.
#include "module/panel.h"
#include "module/rows.h"

#include <cmath>

VELM_DECLARE_TAGS(Sqrt);
VELM_DECLARE_NODE(Sqrt);
VELM_DECLARE_PANEL(Sqrt);

static velm::NodeServices services;
static constexpr int nodeColor[3] = {164, 50, 10};

namespace {

struct Sqrt {
    velm::ScalarParameter operand;
    HostChannelGroup *group;
    HostPanel *panel;
    HostNode *node;
    HostInput *in;
    HostOutput *out;
};

#define AT(field) offsetof(Sqrt, field)
constexpr velm::Parameter parameters[] = {
    velm::number(velm::kFirstControl, "Input").at(AT(operand)).starting(1.0).input(AT(in), "In"),
};

constexpr velm::Output outputs[] = {{.name = "Out", .type = kConnectScalar, .field = AT(out)}};

constexpr velm::NodeUnit unit = {
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
    const double operand = velm::Inputs(services, sample).read(self.operand, self.in);
    const double root = std::sqrt(std::fabs(operand));
    services.nodeOutputFunc->setValue(value, &root);
}

VELM_DEFINE_TAGS(Sqrt, unit, "Velm's Nodes/Math")
VELM_DEFINE_NODE(Sqrt, unit)
VELM_DEFINE_PANEL(Sqrt, unit, parameters, velm::kPlainLayout)
