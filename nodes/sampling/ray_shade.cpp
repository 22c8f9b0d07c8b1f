// RayShade: fires one ray from any position in any direction, has the host shade what it hits, and gives the colour and
// the distance.
//
// Odd on purpose: nothing is normalised or offset, so that the artist's own network decides; each output that is read
// fires a ray of its own; and "Position" is shown as lengths though its parameter holds plain numbers.
#include "module/panel.h"
#include "module/rays.h"
#include "module/rows.h"

VELM_DECLARE_TAGS(RayShade);
VELM_DECLARE_NODE(RayShade);
VELM_DECLARE_PANEL(RayShade);

static velm::NodeServices services;
static constexpr int nodeColor[3] = {164, 50, 10};

namespace {

struct RayShade {
    velm::TripleParameter position, direction;
    HostChannelGroup *group;
    HostPanel *panel;
    HostNode *node;
    HostInput *positionInput, *directionInput;
    HostOutput *colorOutput, *lengthOutput;
};

enum Control : unsigned int { kPosition = velm::kFirstControl, kDirection };

#define AT(field) offsetof(RayShade, field)
constexpr velm::Parameter parameters[] = {
    velm::position(kPosition, "Position").at(AT(position)).input(AT(positionInput)),
    velm::direction(kDirection, "Direction").at(AT(direction)).input(AT(directionInput)),
};

constexpr velm::Output outputs[] = {
    {.name = "Color", .type = kConnectColour, .field = AT(colorOutput)},
    {.name = "Length", .type = kConnectScalar, .field = AT(lengthOutput)},
};

constexpr velm::NodeUnit unit = {
    .name = "RayShade",
    .size = sizeof(RayShade),
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

static void RayShade_Evaluate(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value) {
    const auto &self = *static_cast<const RayShade *>(instance);
    const velm::Inputs inputs(services, sample);
    double position[3], direction[3];
    inputs.read(self.position, self.positionInput, position);
    inputs.read(self.direction, self.directionInput, direction);
    HostRayHitRoom room;
    for (double &component : room.hit.colour) component = 0;
    const double length = velm::shadeRay(*sample, position, direction, &room.hit);
    if (output == self.colorOutput)
        services.nodeOutputFunc->setValue(value, room.hit.colour);
    else
        services.nodeOutputFunc->setValue(value, &length);
}

VELM_DEFINE_TAGS(RayShade, unit, "Velm's Nodes/Surfacing")
VELM_DEFINE_NODE(RayShade, unit)
VELM_DEFINE_PANEL(RayShade, unit, parameters, velm::kPlainLayout)
