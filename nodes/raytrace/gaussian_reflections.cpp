// Gaussian Reflections: a blurred reflection. The view is mirrored at the normal, jittered by noise that "Reflection
// Blur" scales, and looked up by ray tracing, in the backdrop, in an environment image, or in the image where rays
// miss.
//
// Odd on purpose: the "Normal" parameter is created and takes part in nothing, only the input of that name does; a
// miss sends the map to work only when the host reports it as exactly -1; and without blur a single ray still draws its
// noise, so that the module's random stream runs as it always has.
#include "module/servers.h"
#include "shading/glossy.h"

namespace velm::plugin {

static NodeServices services;
static const HostImageList *imglist;
static const HostNodeUtilityFuncs *nodeutilf;
static HostFileRequestFunc *filereq;
static const HostBackdropInfo *bkdropinfo;
static const HostTimeInfo *timeinfo;
static ImageRequest imageRequest;
static constexpr int nodeColor[3] = {164, 50, 10};

namespace {

struct GaussianReflections {
    GlossyLook look;
    GlossySpread spread;
    GlossyHandles handles;
};

enum Control : unsigned int {
    kMode = kFirstControl,
    kImage,
    kSeamAngle,
    kTint,
    kColour,
    kBlur,
    kSamples,
    kBlurDepth,
};

#define AT(field) offsetof(GaussianReflections, field)
constexpr ImagePopup imagePopup = {.services = services,
                                   .imglist = imglist,
                                   .filereq = filereq,
                                   .request = imageRequest,
                                   .control = kImage,
                                   .choice = AT(look.image),
                                   .panel = AT(handles.panel)};

int GaussianReflections_getImageCount(void *instance) { return getImageCount(imagePopup, instance); }
const char *GaussianReflections_getImageName(void *instance, int index) {
    return getImageName(imagePopup, instance, index);
}

constexpr Parameter parameters[] = {
    glossyModeRow(kMode, AT(look)),
    glossyImageRow(kImage, AT(look), GaussianReflections_getImageCount, GaussianReflections_getImageName),
    glossySeamRow(kSeamAngle, AT(look), AT(handles)),
    checkBox(kTint, "Tint Reflections").at(AT(look.tint)),
    glossyColourRow(kColour, AT(look), AT(handles)),
    glossyBlurRow(kBlur, "Reflection Blur", AT(spread), AT(handles)),
    glossySamplesRow(kSamples, AT(spread), AT(handles)),
    glossyDepthRow(kBlurDepth, AT(spread), AT(handles)),
    glossyNormalRow(AT(spread), AT(handles)),
};

constexpr Output outputs[] = {{.name = "Color", .type = kConnectColour, .field = AT(handles.output)}};

constexpr auto layout =
    joinHints(minimumHint(kSamples, 1), minimumHint(kBlurDepth, 0), enableHint(kTint, nullptr, nullptr, kColour));

constexpr NodeClass nodeClass = glossyClass<imagePopup>({
    .name = "Gaussian Reflections",
    .size = sizeof(GaussianReflections),
    .colour = nodeColor,
    .services = &services,
    .furtherServices = glossyServiceRows<imglist, nodeutilf, filereq, bkdropinfo, timeinfo>,
    .parameters = parameters,
    .outputs = outputs,
    .node = AT(handles.node),
    .panel = AT(handles.panel),
    .group = AT(handles.group),
});
#undef AT

constexpr GlossyServices glossy = {imglist, nodeutilf, bkdropinfo, timeinfo};

} // namespace

static void GaussianReflections_Evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    const auto &self = *static_cast<const GaussianReflections *>(instance);
    double result[3] = {0, 0, 0};
    if (!(sample->rayFlags & kRayShadow)) {
        GlossySettings settings;
        const Inputs inputs(services, sample);
        inputs.read(self.look.colour, self.handles.colourInput, settings.colour);
        settings.seamAngle = readSeamAngle(inputs, self.look, self.handles);
        readSpread(inputs, self.spread, self.handles, settings);
        const auto bend = [sample](const double view[3], const double normal[3]) {
            return mirrored(view, normal, sample->refractionIndex);
        };
        gatherGlossy(glossy, self.look, settings, self.handles, kTraceReflection, inputs, bend, result);
    }
    services.nodeOutputFunc->setValue(value, result);
}

VELM_DEFINE_TAGS(GaussianReflections, nodeClass, "Velm's Nodes/Surfacing")
VELM_DEFINE_NODE(GaussianReflections, nodeClass)
VELM_DEFINE_PANEL(GaussianReflections, nodeClass, parameters, layout)

} // namespace velm::plugin
