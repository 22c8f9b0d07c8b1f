// Gaussian Refractions: what is seen through this surface, if it is not perfectly smooth?
//
// Gives a blurred refraction. The view is bent through the surface by Snell's law, at the normal jittered by noise that
// "Refraction Blur" scales, or mirrored inside where it cannot leave the denser medium; then it is looked up as in
// Gaussian Reflections.
//
// Odd on purpose: a shadow ray gets white, or the tint, so that a refracting surface never blocks one; at exactly the
// critical angle the ray refracts; and the "Normal" parameter has no effect, only the input of that name has.
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

struct GaussianRefractions {
    GlossyLook look;
    ScalarParameter refractionIndex;
    GlossySpread spread;
};

int GaussianRefractions_getImageCount(void *instance);
const char *GaussianRefractions_getImageName(void *instance, int index);

#define AT(field) offsetof(GaussianRefractions, field)
constexpr Parameter parameters[] = {
    glossyModeRow(AT(look)),
    glossyImageRow(AT(look), GaussianRefractions_getImageCount, GaussianRefractions_getImageName),
    glossySeamRow(AT(look)),
    number(AT(refractionIndex), "Refraction Index").starting(1.0).input("IOR").createdLast(),
    checkBox(AT(look.tint), "Tint Refractions"),
    glossyColourRow(AT(look)),
    glossyBlurRow(AT(spread), "Refraction Blur"),
    glossySamplesRow(AT(spread)),
    glossyDepthRow(AT(spread)),
    glossyNormalRow(AT(spread)),
};

constexpr Output outputs[] = {{.name = "Color", .type = kConnectColour, .field = offsetof(GlossyConnections, output)}};

using Instance = InstanceRecord<GaussianRefractions, inputCount(parameters), GlossyConnections>;

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

int GaussianRefractions_getImageCount(void *instance) { return getImageCount(imagePopup, instance); }
const char *GaussianRefractions_getImageName(void *instance, int index) {
    return getImageName(imagePopup, instance, index);
}

constexpr NodeClass nodeClass = glossyClass<imagePopup>({
    .name = "Gaussian Refractions",
    .colour = nodeColor,
    .services = &services,
    .furtherServices = glossyServiceRows<imglist, nodeutilf, filereq, bkdropinfo, timeinfo>,
    .parameters = parameters,
    .outputs = outputs,
    .record = layoutOf<Instance>,
});

constexpr GlossyServices glossy = {imglist, nodeutilf, bkdropinfo, timeinfo};

// The ray of a view direction that meets a normal, from a medium of index `from` into one of index `into`. Snell's law
// in vector form, for a normal on either side: Andrew Glassner (ed.), "An Introduction to Ray Tracing", 1989.
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

void GaussianRefractions_Evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    const auto &self = *static_cast<const GaussianRefractions *>(instance);
    const ParameterInputs<nodeClass> inputs(instance, sample);
    GlossySettings settings;
    settings.colour = inputs.read<AT(look.colour)>();
    Vec3 result = {{1, 1, 1}};
    if (sample->rayFlags & kRayShadow) {
        services.nodeOutputFunc->setValue(value, self.look.tint ? settings.colour.c : result.c);
        return;
    }
    settings.seamAngle = inputs.read<AT(look.seamAngle)>();
    const double index = inputs.read<AT(refractionIndex)>();
    readSpread<AT(spread)>(inputs, settings);
    const Vec3 normal = inputs.readOr<AT(spread.normal)>(sample->shadingNormal);
    const auto bend = [sample, index](const double view[3], const double jittered[3]) {
        return refracted(view, jittered, sample->refractionIndex, index);
    };
    result = gatherGlossy(glossy, self.look, settings, normal, kTraceRefraction, *sample, bend);
    services.nodeOutputFunc->setValue(value, result.c);
}

} // namespace

VELM_DEFINE_TAGS(GaussianRefractions, nodeClass, "Velm's Nodes/Surfacing")
VELM_DEFINE_NODE(GaussianRefractions, nodeClass)
VELM_DEFINE_PANEL(GaussianRefractions, nodeClass, parameters, layout)

} // namespace velm::plugin
