// RayShade: what does a ray from here in that direction see, and how far away is it?
//
// Sends one ray from any position in any direction, has the host shade the surface that it hits, and gives the colour
// and the distance.
//
// Odd on purpose: nothing is normalised or offset, so that the artist's network decides; each output that is read sends
// a ray of its own; and "Position" is shown as lengths though its parameter holds plain numbers.
#include "module/inputs.h"
#include "module/rows.h"
#include "module/servers.h"
#include "shading/rays.h"

namespace velm::plugin {
namespace {

NodeServices services;
constexpr int nodeColor[3] = {164, 50, 10};

struct RayShade {
    Vec3Parameter position, direction;
};
struct Connections {
    HostOutput *colour, *length;
};

#define AT(field) offsetof(RayShade, field)
constexpr Parameter parameters[] = {
    position(AT(position), "Position").input(),
    direction(AT(direction), "Direction").input(),
};

constexpr Output outputs[] = {
    {.name = "Color", .type = kConnectColour, .field = offsetof(Connections, colour)},
    {.name = "Length", .type = kConnectScalar, .field = offsetof(Connections, length)},
};

using Instance = InstanceRecord<RayShade, inputCount(parameters), Connections>;

constexpr NodeClass nodeClass = {
    .name = "RayShade",
    .colour = nodeColor,
    .previewType = kPreviewOff,
    .services = &services,
    .parameters = parameters,
    .outputs = outputs,
    .record = layoutOf<Instance>,
};

void RayShade_Evaluate(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value) {
    const ParameterInputs<nodeClass> inputs(instance, sample);
    const Vec3 position = inputs.read<AT(position)>();
    const Vec3 direction = inputs.read<AT(direction)>();
    HostRayHitRoom room;
    for (double &component : room.hit.colour) component = 0;
    const double length = shadeRay(*sample, position.c, direction.c, &room.hit);
    if (output == static_cast<const Instance *>(instance)->connections.colour)
        services.nodeOutputFunc->setValue(value, room.hit.colour);
    else
        services.nodeOutputFunc->setValue(value, &length);
}

} // namespace

VELM_DEFINE_TAGS(RayShade, nodeClass, "Velm's Nodes/Surfacing")
VELM_DEFINE_NODE(RayShade, nodeClass)
VELM_DEFINE_PANEL(RayShade, nodeClass, parameters, kPlainLayout)

} // namespace velm::plugin
