// Advanced RayTrace: traces one ray with every choice that the host offers: its kind, its refraction index, the colour
// it starts with, and five switches. Gives the colour that the trace leaves, and the distance.
//
// The node gives the switches no meaning of its own: they are the high bits of the host's mode word. Its settings are
// saved in tagged blocks, so that a file may hold any of them in any order.
//
// Odd on purpose: nothing is normalised or offset, and each output that is read traces a ray of its own; the refraction
// index is "IOR" as an input and in files; a mode that a file holds and the list does not is handed on as it is.
#include "module/rows.h"
#include "module/servers.h"
#include "shading/rays.h"

namespace velm::plugin {

static NodeServices services;
static constexpr int nodeColor[3] = {164, 50, 10};

namespace {

struct AdvRayTrace {
    Vec3Parameter position, direction;
    int mode;
    ScalarParameter ior;
    Vec3Parameter colour;
    int backshade, backdrop, object, sampledRay, noPolygon;
    HostChannelGroup *group;
    HostPanel *panel;
    HostNode *node;
    HostInput *positionInput, *directionInput, *iorInput, *colourInput;
    HostOutput *colourOutput, *lengthOutput;
};

constexpr const char *modeStrings[] = {"Distance", "Reflection", "Refraction", "Dissolve",
                                       "Shadow",   "Occlusion",  "Backdrop",   nullptr};
constexpr int modeValues[] = {kTraceDistance, kTraceReflection, kTraceRefraction, kTraceDissolve,
                              kTraceShadow,   kTraceOcclusion,  kTraceBackdrop};

enum Control : unsigned int {
    kPosition = kFirstControl,
    kDirection,
    kMode,
    kRefractionIndex,
    kColour,
    kBackshade,
    kBackdrop,
    kObject,
    kSampledRay,
    kNoPolygon,
};
enum Group : unsigned int { kSettingsGroup = 0x9001, kAdvancedGroup, kTabs };

// Block identifiers: four characters, the first in the high byte.
enum Block : unsigned int {
    kBlockPosition = 0x52504f53,   // "RPOS"
    kBlockDirection = 0x52444952,  // "RDIR"
    kBlockMode = 0x4d4f4445,       // "MODE"
    kBlockIor = 0x52494f52,        // "RIOR"
    kBlockColour = 0x434f4c4f,     // "COLO"
    kBlockBackshade = 0x42534841,  // "BSHA"
    kBlockBackdrop = 0x4244524f,   // "BDRO"
    kBlockObject = 0x4f424a45,     // "OBJE"
    kBlockSampledRay = 0x53524159, // "SRAY"
    kBlockNoPolygon = 0x504f4c59,  // "POLY"
};

#define AT(field) offsetof(AdvRayTrace, field)
constexpr Parameter parameters[] = {
    position(kPosition, "Position").at(AT(position)).input(AT(positionInput)).inBlock(kBlockPosition, "Position"),
    direction(kDirection, "Direction")
        .at(AT(direction))
        .input(AT(directionInput))
        .inBlock(kBlockDirection, "Direction"),
    popup(kMode, "Mode", modeStrings).storing(modeValues).at(AT(mode)).inBlock(kBlockMode, "Mode"),
    number(kRefractionIndex, "Refraction Index")
        .at(AT(ior))
        .starting(1.0)
        .input(AT(iorInput), "IOR")
        .inBlock(kBlockIor, "IOR"),
    colour(kColour, "Color").at(AT(colour)).starting(0.78431).input(AT(colourInput)).inBlock(kBlockColour, "Color"),
    checkBox(kBackshade, "Backshade").at(AT(backshade)).inBlock(kBlockBackshade, "Backshade"),
    checkBox(kBackdrop, "Backdrop").at(AT(backdrop)).inBlock(kBlockBackdrop, "Backdrop"),
    checkBox(kObject, "Object").at(AT(object)).inBlock(kBlockObject, "Object"),
    checkBox(kSampledRay, "Sampled Ray").at(AT(sampledRay)).inBlock(kBlockSampledRay, "Sampled Ray"),
    checkBox(kNoPolygon, "No Polygon").at(AT(noPolygon)).inBlock(kBlockNoPolygon, "No Polygon"),
};

constexpr Output outputs[] = {
    {.name = "Color", .type = kConnectColour, .field = AT(colourOutput)},
    {.name = "Length", .type = kConnectScalar, .field = AT(lengthOutput)},
};

constexpr auto layout =
    joinHints(groupHint(kSettingsGroup, kPosition, kDirection), labelHint(kSettingsGroup, "Settings"),
              groupHint(kAdvancedGroup, kMode, kRefractionIndex, kColour, kBackshade, kBackdrop, kObject, kSampledRay,
                        kNoPolygon),
              labelHint(kAdvancedGroup, "Advanced"), tabsHint(kTabs, kSettingsGroup, kAdvancedGroup));

constexpr NodeClass nodeClass = {
    .name = "Advanced RayTrace",
    .size = sizeof(AdvRayTrace),
    .colour = nodeColor,
    .previewType = kPreviewOff,
    .services = &services,
    .parameters = parameters,
    .outputs = outputs,
    .node = AT(node),
    .panel = AT(panel),
    .group = AT(group),
    .savesBlocks = true,
};
#undef AT

unsigned int modeWord(const AdvRayTrace &self) {
    return static_cast<unsigned int>(self.mode) | (self.backshade ? kTraceShadeBackSides : 0) |
           (self.backdrop ? kTraceUseBackdropColour : 0) | (self.object ? kTraceOwnObjectOnly : 0) |
           (self.sampledRay ? kTraceSampled : 0) | (self.noPolygon ? kTraceMayHitOwnPolygon : 0);
}

} // namespace

static void AdvRayTrace_Evaluate(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value) {
    const auto &self = *static_cast<const AdvRayTrace *>(instance);
    const Inputs inputs(services, sample);
    double position[3], direction[3], colour[3];
    inputs.read(self.position, self.positionInput, position);
    inputs.read(self.direction, self.directionInput, direction);
    const double eta = inputs.read(self.ior, self.iorInput);
    inputs.read(self.colour, self.colourInput, colour);
    const double length = traceRay(*sample, position, direction, colour, eta, modeWord(self));
    if (output == self.colourOutput)
        services.nodeOutputFunc->setValue(value, colour);
    else
        services.nodeOutputFunc->setValue(value, &length);
}

VELM_DEFINE_TAGS(AdvRayTrace, nodeClass, "Velm's Nodes/Surfacing")
VELM_DEFINE_NODE(AdvRayTrace, nodeClass)
VELM_DEFINE_PANEL(AdvRayTrace, nodeClass, parameters, layout)

} // namespace velm::plugin
