// Gaussian Refractions: a blurred refraction. The view is bent through the surface by Snell's law, at the normal
// jittered by noise that "Refraction Blur" scales, or mirrored inside where it cannot leave the denser medium; then it
// is looked up as in Gaussian Reflections.
//
// Odd on purpose: a shadow ray gets white, or the tint, so that a refracting surface never blocks one; at exactly the
// critical angle the ray refracts; and, as there, the "Normal" parameter takes part in nothing.
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

struct GaussianRefractions {
    GlossyLook look;
    ScalarParameter refractionIndex;
    GlossySpread spread;
    GlossyHandles handles;
    HostInput *iorInput;
};

enum Control : unsigned int {
    kMode = kFirstControl,
    kImage,
    kSeamAngle,
    kRefractionIndex,
    kTint,
    kColour,
    kBlur,
    kSamples,
    kBlurDepth,
};

#define AT(field) offsetof(GaussianRefractions, field)
constexpr ImagePopup imagePopup = {.services = services,
                                   .imglist = imglist,
                                   .filereq = filereq,
                                   .request = imageRequest,
                                   .control = kImage,
                                   .choice = AT(look.image),
                                   .panel = AT(handles.panel)};

int GaussianRefractions_getImageCount(void *instance) { return getImageCount(imagePopup, instance); }
const char *GaussianRefractions_getImageName(void *instance, int index) {
    return getImageName(imagePopup, instance, index);
}

constexpr Parameter parameters[] = {
    glossyModeRow(kMode, AT(look)),
    glossyImageRow(kImage, AT(look), GaussianRefractions_getImageCount, GaussianRefractions_getImageName),
    glossySeamRow(kSeamAngle, AT(look), AT(handles)),
    number(kRefractionIndex, "Refraction Index")
        .at(AT(refractionIndex))
        .starting(1.0)
        .input(AT(iorInput), "IOR")
        .createdLast(),
    checkBox(kTint, "Tint Refractions").at(AT(look.tint)),
    glossyColourRow(kColour, AT(look), AT(handles)),
    glossyBlurRow(kBlur, "Refraction Blur", AT(spread), AT(handles)),
    glossySamplesRow(kSamples, AT(spread), AT(handles)),
    glossyDepthRow(kBlurDepth, AT(spread), AT(handles)),
    glossyNormalRow(AT(spread), AT(handles)),
};

constexpr Output outputs[] = {{.name = "Color", .type = kConnectColour, .field = AT(handles.output)}};

constexpr auto layout =
    joinHints(minimumHint(kSamples, 1), minimumHint(kBlurDepth, 0), enableHint(kTint, nullptr, nullptr, kColour));

constexpr NodeClass nodeClass = glossyClass<imagePopup>({
    .name = "Gaussian Refractions",
    .size = sizeof(GaussianRefractions),
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

// Where a view direction goes at a normal, from a medium of index `from` into one of index `into`: Snell's law in
// vector form, as in Andrew Glassner (ed.), "An Introduction to Ray Tracing", 1989, for a normal on either side.
GlossyRay refracted(const double view[3], const double normal[3], double from, double into) {
    const double cosine = dot(view, normal);
    if (from > into && std::asin(into / from) < std::acos(-cosine)) return mirrored(view, normal, from);
    const double ratio = from / into;
    const double inside = ratio * ratio * (cosine * cosine - 1) + 1;
    const double k = inside > 0 ? std::sqrt(inside) : 0; // 0 at the critical angle, where rounding may go below
    const double along = (cosine >= 0 ? k : -k) - ratio * cosine;
    GlossyRay ray = {.direction = {}, .eta = into};
    for (int i = 0; i < 3; ++i) ray.direction[i] = ratio * view[i] + along * normal[i];
    return ray;
}

} // namespace

static void GaussianRefractions_Evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    const auto &self = *static_cast<const GaussianRefractions *>(instance);
    GlossySettings settings;
    const Inputs inputs(services, sample);
    inputs.read(self.look.colour, self.handles.colourInput, settings.colour);
    double result[3] = {1, 1, 1};
    if (sample->rayFlags & kRayShadow) {
        services.nodeOutputFunc->setValue(value, self.look.tint ? settings.colour : result);
        return;
    }
    settings.seamAngle = readSeamAngle(inputs, self.look, self.handles);
    const double index = inputs.read(self.refractionIndex, self.iorInput);
    readSpread(inputs, self.spread, self.handles, settings);
    const auto bend = [sample, index](const double view[3], const double normal[3]) {
        return refracted(view, normal, sample->refractionIndex, index);
    };
    gatherGlossy(glossy, self.look, settings, self.handles, kTraceRefraction, inputs, bend, result);
    services.nodeOutputFunc->setValue(value, result);
}

VELM_DEFINE_TAGS(GaussianRefractions, nodeClass, "Velm's Nodes/Surfacing")
VELM_DEFINE_NODE(GaussianRefractions, nodeClass)
VELM_DEFINE_PANEL(GaussianRefractions, nodeClass, parameters, layout)

} // namespace velm::plugin
