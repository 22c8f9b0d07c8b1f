// Advanced RayTrace: what does a ray of this kind bring, and how far does it go?
//
// Traces one ray with every choice that the host offers: its kind, its refraction index, the colour that it starts
// with, and five switches. Gives the colour that the trace leaves, and the distance. The node gives the switches no
// meaning of its own: they are the high bits of the host's mode word. The settings are saved in tagged blocks, so that
// a file may hold any of them, in any order.
//
// Odd on purpose: nothing is normalised or offset, and each output that is read traces a ray of its own; the refraction
// index is "IOR" as an input and in files; and a mode that is in a file but not in the list is passed on unchanged.
#include "module/inputs.h"
#include "module/rows.h"
#include "module/servers.h"
#include "shading/rays.h"

namespace velm::plugin {
namespace {

NodeServices services;
constexpr int nodeColor[3] = {164, 50, 10};

struct AdvRayTrace {
    Vec3Parameter position, direction;
    int mode;
    ScalarParameter ior;
    Vec3Parameter colour;
    int backshade, backdrop, object, sampledRay, noPolygon;
};
struct Connections {
    HostOutput *colour, *length;
};

constexpr const char *modeStrings[] = {"Distance", "Reflection", "Refraction", "Dissolve",
                                       "Shadow",   "Occlusion",  "Backdrop",   nullptr};
constexpr int modeValues[] = {kTraceDistance, kTraceReflection, kTraceRefraction, kTraceDissolve,
                              kTraceShadow,   kTraceOcclusion,  kTraceBackdrop};

// A block identifier: four characters, the first in the high byte.
constexpr unsigned int tag(const char (&text)[5]) {
    unsigned int id = 0;
    for (int i = 0; i < 4; ++i) id = id << 8 | static_cast<unsigned char>(text[i]);
    return id;
}

#define AT(field) offsetof(AdvRayTrace, field)
constexpr Parameter parameters[] = {
    position(AT(position), "Position").input().inBlock(tag("RPOS"), "Position"),
    direction(AT(direction), "Direction").input().inBlock(tag("RDIR"), "Direction"),
    popup(AT(mode), "Mode", modeStrings).storing(modeValues).inBlock(tag("MODE"), "Mode"),
    number(AT(ior), "Refraction Index").starting(1.0).input("IOR").inBlock(tag("RIOR"), "IOR"),
    colour(AT(colour), "Color").starting(0.78431).input().inBlock(tag("COLO"), "Color"),
    checkBox(AT(backshade), "Backshade").inBlock(tag("BSHA"), "Backshade"),
    checkBox(AT(backdrop), "Backdrop").inBlock(tag("BDRO"), "Backdrop"),
    checkBox(AT(object), "Object").inBlock(tag("OBJE"), "Object"),
    checkBox(AT(sampledRay), "Sampled Ray").inBlock(tag("SRAY"), "Sampled Ray"),
    checkBox(AT(noPolygon), "No Polygon").inBlock(tag("POLY"), "No Polygon"),
};

constexpr Output outputs[] = {
    {.name = "Color", .type = kConnectColour, .field = offsetof(Connections, colour)},
    {.name = "Length", .type = kConnectScalar, .field = offsetof(Connections, length)},
};

using Instance = InstanceRecord<AdvRayTrace, inputCount(parameters), Connections>;

enum Group : unsigned int { kSettingsGroup = 0x9001, kAdvancedGroup, kTabs };
#define ID(field) controlOf(parameters, AT(field))
constexpr auto layout =
    joinHints(groupHint(kSettingsGroup, ID(position), ID(direction)), labelHint(kSettingsGroup, "Settings"),
              groupHint(kAdvancedGroup, ID(mode), ID(ior), ID(colour), ID(backshade), ID(backdrop), ID(object),
                        ID(sampledRay), ID(noPolygon)),
              labelHint(kAdvancedGroup, "Advanced"), tabsHint(kTabs, kSettingsGroup, kAdvancedGroup));

constexpr NodeClass nodeClass = {
    .name = "Advanced RayTrace",
    .colour = nodeColor,
    .previewType = kPreviewOff,
    .services = &services,
    .parameters = parameters,
    .outputs = outputs,
    .record = layoutOf<Instance>,
    .savesBlocks = true,
};

unsigned int modeWord(const AdvRayTrace &self) {
    return static_cast<unsigned int>(self.mode) | (self.backshade ? kTraceShadeBackSides : 0) |
           (self.backdrop ? kTraceUseBackdropColour : 0) | (self.object ? kTraceOwnObjectOnly : 0) |
           (self.sampledRay ? kTraceSampled : 0) | (self.noPolygon ? kTraceMayHitOwnPolygon : 0);
}

void AdvRayTrace_Evaluate(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value) {
    const ParameterInputs<nodeClass> inputs(instance, sample);
    const Vec3 position = inputs.read<AT(position)>();
    const Vec3 direction = inputs.read<AT(direction)>();
    const double eta = inputs.read<AT(ior)>();
    Vec3 colour = inputs.read<AT(colour)>();
    const auto &self = *static_cast<const Instance *>(instance);
    const double length = traceRay(*sample, position.c, direction.c, colour.c, eta, modeWord(self.fields));
    if (output == self.connections.colour)
        services.nodeOutputFunc->setValue(value, colour.c);
    else
        services.nodeOutputFunc->setValue(value, &length);
}

} // namespace

VELM_DEFINE_TAGS(AdvRayTrace, nodeClass, "Velm's Nodes/Surfacing")
VELM_DEFINE_NODE(AdvRayTrace, nodeClass)
VELM_DEFINE_PANEL(AdvRayTrace, nodeClass, parameters, layout)

} // namespace velm::plugin
