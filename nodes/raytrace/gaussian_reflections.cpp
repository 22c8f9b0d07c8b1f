// Gaussian Reflections: a blurred reflection. The view is mirrored at the normal, jittered by noise that "Reflection
// Blur" scales, and looked up by ray tracing, in the backdrop, in an environment image, or in the image where rays
// miss.
//
// Odd on purpose: the "Normal" parameter is created and takes part in nothing, only the input of that name does; a
// miss sends the map to work only when the host reports it as exactly -1; and without blur a single ray still draws its
// noise, so that the module's random stream runs as it always has.
#include "module/glossy.h"

VELM_DECLARE_TAGS(GaussianReflections);
VELM_DECLARE_NODE(GaussianReflections);
VELM_DECLARE_PANEL(GaussianReflections);

static velm::NodeServices services;
static const HostImageList *imglist;
static const HostNodeUtilityFuncs *nodeutilf;
static HostFileRequestFunc *filereq;
static const HostBackdropInfo *bkdropinfo;
static const HostTimeInfo *timeinfo;
static velm::ImageRequest imageRequest;
static constexpr int nodeColor[3] = {164, 50, 10};

namespace {

struct GaussianReflections {
    velm::GlossyLook look;
    velm::GlossySpread spread;
    velm::GlossyHandles handles;
};

enum Control : unsigned int {
    kMode = velm::kFirstControl,
    kImage,
    kSeamAngle,
    kTint,
    kColor,
    kBlur,
    kSamples,
    kBlurDepth,
};

#define AT(field) offsetof(GaussianReflections, field)
constexpr velm::ImagePopup imagePopup = {.services = services,
                                         .imglist = imglist,
                                         .filereq = filereq,
                                         .request = imageRequest,
                                         .control = kImage,
                                         .choice = AT(look.image),
                                         .panel = AT(handles.panel)};

int GaussianReflections_getImageCount(void *instance) { return velm::getImageCount(imagePopup, instance); }
const char *GaussianReflections_getImageName(void *instance, int index) {
    return velm::getImageName(imagePopup, instance, index);
}

constexpr velm::Parameter parameters[] = {
    velm::glossyModeRow(kMode, AT(look)),
    velm::glossyImageRow(kImage, AT(look), GaussianReflections_getImageCount, GaussianReflections_getImageName),
    velm::glossySeamRow(kSeamAngle, AT(look), AT(handles)),
    velm::checkBox(kTint, "Tint Reflections").at(AT(look.tint)),
    velm::glossyColourRow(kColor, AT(look), AT(handles)),
    velm::glossyBlurRow(kBlur, "Reflection Blur", AT(spread), AT(handles)),
    velm::glossySamplesRow(kSamples, AT(spread), AT(handles)),
    velm::glossyDepthRow(kBlurDepth, AT(spread), AT(handles)),
    velm::glossyNormalRow(AT(spread), AT(handles)),
};

constexpr velm::Output outputs[] = {{.name = "Color", .type = kConnectColour, .field = AT(handles.output)}};

constexpr auto layout = velm::joinHints(velm::minimumHint(kSamples, 1), velm::minimumHint(kBlurDepth, 0),
                                        velm::enableHint(kTint, nullptr, nullptr, kColor));

constexpr velm::NodeUnit unit = velm::glossyUnit<imagePopup>({
    .name = "Gaussian Reflections",
    .size = sizeof(GaussianReflections),
    .colour = nodeColor,
    .services = &services,
    .furtherServices = velm::glossyServiceRows<imglist, nodeutilf, filereq, bkdropinfo, timeinfo>,
    .parameters = parameters,
    .outputs = outputs,
    .node = AT(handles.node),
    .panel = AT(handles.panel),
    .group = AT(handles.group),
});
#undef AT

constexpr velm::GlossyServices glossy = {imglist, nodeutilf, bkdropinfo, timeinfo};

} // namespace

static void GaussianReflections_Evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    const auto &self = *static_cast<const GaussianReflections *>(instance);
    double result[3] = {0, 0, 0};
    if (!(sample->rayFlags & kRayShadow)) {
        velm::GlossySettings settings;
        const velm::Inputs inputs(services, sample);
        inputs.read(self.look.colour, self.handles.colourInput, settings.colour);
        settings.seamAngle = velm::readSeamAngle(inputs, self.look, self.handles);
        velm::readSpread(inputs, self.spread, self.handles, settings);
        const auto bend = [sample](const double view[3], const double normal[3]) {
            return velm::mirrored(view, normal, sample->refractionIndex);
        };
        velm::gatherGlossy(glossy, self.look, settings, self.handles, kTraceReflection, inputs, bend, result);
    }
    services.nodeOutputFunc->setValue(value, result);
}

VELM_DEFINE_TAGS(GaussianReflections, unit, "Velm's Nodes/Surfacing")
VELM_DEFINE_NODE(GaussianReflections, unit)
VELM_DEFINE_PANEL(GaussianReflections, unit, parameters, layout)
