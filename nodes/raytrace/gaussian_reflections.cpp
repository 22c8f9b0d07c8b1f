// Gaussian Reflections: what does this surface mirror, if it is not perfectly smooth?
//
// Gives a blurred reflection. The view is mirrored at the normal, which noise scaled by "Reflection Blur" jitters, and
// looked up by ray tracing, in the backdrop, in an environment image, or in the image where rays miss.
//
// Odd on purpose: the "Normal" parameter has no effect, only the input of that name has; a miss is looked up in the
// image only if the host reports it as exactly -1; and without blur a single ray still draws its noise, since scenes
// rely on the state of the module's random stream.
#include "module/servers.h"
#include "shading/glossy.h"

namespace velm::plugin {
namespace {

NodeServices services;
const HostImageList *imglist;
const HostNodeUtilityFuncs *nodeutilf;
HostFileRequestFunc *filereq;
const HostBackdropInfo *bkdropinfo;
const HostTimeInfo *timeinfo;
ImageRequest imageRequest;
constexpr int nodeColor[3] = {164, 50, 10};

struct GaussianReflections {
    GlossyLook look;
    GlossySpread spread;
};

int GaussianReflections_getImageCount(void *instance);
const char *GaussianReflections_getImageName(void *instance, int index);

#define AT(field) offsetof(GaussianReflections, field)
constexpr Parameter parameters[] = {
    glossyModeRow(AT(look)),
    glossyImageRow(AT(look), GaussianReflections_getImageCount, GaussianReflections_getImageName),
    glossySeamRow(AT(look)),
    checkBox(AT(look.tint), "Tint Reflections"),
    glossyColourRow(AT(look)),
    glossyBlurRow(AT(spread), "Reflection Blur"),
    glossySamplesRow(AT(spread)),
    glossyDepthRow(AT(spread)),
    glossyNormalRow(AT(spread)),
};

constexpr Output outputs[] = {{.name = "Color", .type = kConnectColour, .field = offsetof(GlossyConnections, output)}};

using Instance = InstanceRecord<GaussianReflections, inputCount(parameters), GlossyConnections>;

#define ID(field) controlOf(parameters, AT(field))
constexpr auto layout = joinHints(minimumHint(ID(spread.samples), 1), minimumHint(ID(spread.blurDepth), 0),
                                  enableHint(ID(look.tint), nullptr, nullptr, ID(look.colour)));

constexpr ImagePopup imagePopup = {.services = services,
                                   .imglist = imglist,
                                   .filereq = filereq,
                                   .request = imageRequest,
                                   .control = ID(look.image.index),
                                   .choice = AT(look.image),
                                   .panel = offsetof(Instance, panel)};

int GaussianReflections_getImageCount(void *instance) { return getImageCount(imagePopup, instance); }
const char *GaussianReflections_getImageName(void *instance, int index) {
    return getImageName(imagePopup, instance, index);
}

constexpr NodeClass nodeClass = glossyClass<imagePopup>({
    .name = "Gaussian Reflections",
    .colour = nodeColor,
    .services = &services,
    .furtherServices = glossyServiceRows<imglist, nodeutilf, filereq, bkdropinfo, timeinfo>,
    .parameters = parameters,
    .outputs = outputs,
    .record = layoutOf<Instance>,
});

constexpr GlossyServices glossy = {imglist, nodeutilf, bkdropinfo, timeinfo};

void GaussianReflections_Evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    const auto &self = *static_cast<const GaussianReflections *>(instance);
    Vec3 result = {};
    if (!(sample->rayFlags & kRayShadow)) {
        const ParameterInputs<nodeClass> inputs(instance, sample);
        GlossySettings settings;
        settings.colour = inputs.read<AT(look.colour)>();
        settings.seamAngle = inputs.read<AT(look.seamAngle)>();
        readSpread<AT(spread)>(inputs, settings);
        const Vec3 normal = inputs.readOr<AT(spread.normal)>(sample->shadingNormal);
        const auto bend = [sample](const double view[3], const double jittered[3]) {
            return mirrored(view, jittered, sample->refractionIndex);
        };
        result = gatherGlossy(glossy, self.look, settings, normal, kTraceReflection, *sample, bend);
    }
    services.nodeOutputFunc->setValue(value, result.c);
}

} // namespace

VELM_DEFINE_TAGS(GaussianReflections, nodeClass, "Velm's Nodes/Surfacing")
VELM_DEFINE_NODE(GaussianReflections, nodeClass)
VELM_DEFINE_PANEL(GaussianReflections, nodeClass, parameters, layout)

} // namespace velm::plugin
