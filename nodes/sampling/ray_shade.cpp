// RayShade: fires one ray from any position in any direction, has the host shade what it hits, and gives the colour and
// the distance.
//
// Odd on purpose: nothing is normalised or offset, so that the artist's own network decides; each output that is read
// fires a ray of its own; and "Position" is shown as lengths though its parameter holds plain numbers.
#include "module/rows.h"
#include "module/servers.h"
#include "shading/rays.h"

namespace velm::plugin {

static NodeServices services;
static constexpr int nodeColor[3] = {164, 50, 10};

namespace {

struct RayShade {
    Vec3Parameter position, direction;
    HostChannelGroup *group;
    HostPanel *panel;
    HostNode *node;
    HostInput *positionInput, *directionInput;
    HostOutput *colourOutput, *lengthOutput;
};

enum Control : unsigned int { kPosition = kFirstControl, kDirection };

#define AT(field) offsetof(RayShade, field)
constexpr Parameter parameters[] = {
    position(kPosition, "Position").at(AT(position)).input(AT(positionInput)),
    direction(kDirection, "Direction").at(AT(direction)).input(AT(directionInput)),
};

constexpr Output outputs[] = {
    {.name = "Color", .type = kConnectColour, .field = AT(colourOutput)},
    {.name = "Length", .type = kConnectScalar, .field = AT(lengthOutput)},
};

constexpr NodeClass nodeClass = {
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
    const Inputs inputs(services, sample);
    double position[3], direction[3];
    inputs.read(self.position, self.positionInput, position);
    inputs.read(self.direction, self.directionInput, direction);
    HostRayHitRoom room;
    for (double &component : room.hit.colour) component = 0;
    const double length = shadeRay(*sample, position, direction, &room.hit);
    if (output == self.colourOutput)
        services.nodeOutputFunc->setValue(value, room.hit.colour);
    else
        services.nodeOutputFunc->setValue(value, &length);
}

VELM_DEFINE_TAGS(RayShade, nodeClass, "Velm's Nodes/Surfacing")
VELM_DEFINE_NODE(RayShade, nodeClass)
VELM_DEFINE_PANEL(RayShade, nodeClass, parameters, kPlainLayout)

} // namespace velm::plugin
