// What glossy reflections and glossy refractions have in common: a normal jittered by noise, a ray that is mirrored or
// bent at it, and four ways to find what the ray sees; averaged over several rays, and tinted.
#pragma once

#include "module/inputs.h"
#include "module/panel.h"
#include "module/rows.h"
#include "random/random.h"
#include "shading/image_popup.h"
#include "shading/rays.h"
#include "shading/vectors.h"

#include <algorithm>

namespace velm::plugin {

enum GlossyMode { kBackdropOnly, kRaysAndBackdrop, kSphericalMap, kRaysAndMap };
// The leading blank of the last entry belongs to it. Each node class has a list of its own: the address of a shared one
// is not a constant expression under the undefined-behaviour sanitizer, which allows for null symbols.
static constexpr const char *modeStrings[] = {"Backdrop Only", "Ray Tracing + Backdrop", "Spherical Map",
                                              " Ray Tracing + Spherical Map", nullptr};

// References to the service pointers of a node class.
struct GlossyServices {
    const HostImageList *const &imglist;
    const HostNodeUtilityFuncs *const &nodeutilf;
    const HostBackdropInfo *const &bkdropinfo; // null, as the next, in the modelling application
    const HostTimeInfo *const &timeinfo;
};

// The first fields of an instance, and the last. Refractions have their refraction index between them.
struct GlossyLook {
    int mode;
    ImageChoice image;
    int tint;
    Vec3Parameter colour;
    ScalarParameter seamAngle;
};
struct GlossySpread {
    ScalarParameter blur;
    int samples;
    int blurDepth;
    Vec3Parameter normal; // created with the node; only its input has an effect
};
struct GlossyConnections {
    HostOutput *output;
};

// The settings of one sample.
struct GlossySettings {
    Vec3 colour;
    double seamAngle, blur;
    int samples, blurDepth;
};

inline constexpr int kWordsOfGlossyRay = 3 * kWordsOfNoise; // a noise value for each component of the normal

struct GlossyRay {
    double direction[3];
    double eta; // the index of refraction of the medium that the ray is in
};

// Reads the settings of the GlossySpread at an offset of the instance. [render threads]
template <size_t spread, const NodeClass &nodeClass>
void readSpread(const ParameterInputs<nodeClass> &inputs, GlossySettings &settings) {
    settings.blur = inputs.template read<spread + offsetof(GlossySpread, blur)>();
    settings.samples = inputs.template read<spread + offsetof(GlossySpread, samples)>();
    settings.blurDepth = inputs.template read<spread + offsetof(GlossySpread, blurDepth)>();
}

// The number of rays of a sample: 1 without blur, for rays that are themselves one of many beyond the blur depth, and
// for pre-process rays.
inline int glossyRayCount(const GlossySettings &settings, const ShadingSample &sample) {
    if (settings.blur == 0 || settings.samples <= 0) return 1;
    if ((sample.rayFlags & kRaySampled) && sample.rayDepth > settings.blurDepth) return 1;
    return sample.rayFlags & kRayPreprocess ? 1 : settings.samples;
}

// Stores the colour of the spherical map in a direction.
inline void lookUpMap(const GlossyServices &g, HostImage *image, double seamAngle, const ShadingSample &sample,
                      const double direction[3], double colour[3]) {
    double u = 0, v = 0;
    g.nodeutilf->directionMapping(seamAngle, direction, &u, &v);
    g.imglist->rgbSpot(image, u, v, sample.spotSize, 1, colour);
}

// Stores the colour that one ray sees; `colour` is unchanged if it sees nothing. `image` may be null. `traceKind` is
// kTraceReflection or kTraceRefraction, with kTraceSampled if there is blur.
inline void lookUpRay(const GlossyServices &g, int mode, HostImage *image, double seamAngle, unsigned int traceKind,
                      const ShadingSample &sample, const GlossyRay &ray, double colour[3]) {
    if (mode == kBackdropOnly) {
        if (g.bkdropinfo && g.timeinfo) g.bkdropinfo->backdrop(g.timeinfo->time, ray.direction, colour);
        return;
    }
    bool missed = mode == kSphericalMap;
    if (mode == kRaysAndBackdrop || mode == kRaysAndMap)
        missed = traceRay(sample, sample.position, ray.direction, colour, ray.eta, traceKind) == HOST_RAY_MISS &&
                 mode == kRaysAndMap;
    if (missed && image) lookUpMap(g, image, seamAngle, sample, ray.direction, colour);
}

// Averages the colours of the rays that `bend(view, jittered)` gives for the view direction and each jittered normal,
// both of unit length, and tints the result. `normal` may have any length. [render threads]
template <class Bend>
Vec3 gatherGlossy(const GlossyServices &g, const GlossyLook &look, const GlossySettings &settings, Vec3 normal,
                  unsigned int traceKind, const ShadingSample &sample, Bend bend) {
    normalise(normal.c);
    double view[3];
    for (int i = 0; i < 3; ++i) view[i] = sample.position[i] - sample.raySource[i];
    normalise(view);
    HostImage *image =
        look.mode >= kSphericalMap && look.image.index >= 1 ? getImageID(*g.imglist, look.image.index) : nullptr;
    if (settings.blur != 0) traceKind |= kTraceSampled;

    const int rays = glossyRayCount(settings, sample);
    Vec3 sum = {};
    // The random words of several rays are taken ahead. If shading a hit draws words itself, it gets these first and
    // the rays after it get later ones, as if each ray had drawn its own.
    constexpr int kMostRays = WordsAhead::kMost / kWordsOfGlossyRay;
    WordsAhead ahead;
    for (int i = 0; i < rays; ++i) {
        if (ahead.left() < kWordsOfGlossyRay) ahead.fill(kWordsOfGlossyRay * std::min(kMostRays, rays - i));
        double jittered[3]; // draws three noise values without blur too, since scenes rely on the state of the stream
        const uint32_t *words = ahead.words();
        for (int k = 0; k < 3; ++k, words += kWordsOfNoise)
            jittered[k] = normal.c[k] - noiseOfWords(words[0], words[1], words[2]) * settings.blur;
        ahead.use(kWordsOfGlossyRay);
        normalise(jittered);
        double colour[3] = {0, 0, 0};
        lookUpRay(g, look.mode, image, settings.seamAngle, traceKind, sample, bend(view, jittered), colour);
        for (int k = 0; k < 3; ++k) sum.c[k] += colour[k];
    }
    for (int k = 0; k < 3; ++k) sum.c[k] = sum.c[k] / rays * (look.tint ? settings.colour.c[k] : 1.0);
    return sum;
}

// The mirrored view direction.
inline GlossyRay mirrored(const double view[3], const double normal[3], double eta) {
    const double cosine = dot(view, normal);
    GlossyRay ray = {.direction = {}, .eta = eta};
    for (int i = 0; i < 3; ++i) ray.direction[i] = view[i] - 2 * cosine * normal[i];
    return ray;
}

// ---- Tables ----

// The services of a glossy node class, stored in the class's own pointers.
template <auto &imglist, auto &nodeutilf, auto &filereq, auto &bkdropinfo, auto &timeinfo>
inline constexpr FurtherService glossyServiceRows[] = {
    {.name = HOST_IMAGE_LIST, .store = storeIn<imglist>},
    {.name = HOST_NODE_UTILITY_FUNCS, .store = storeIn<nodeutilf>},
    {.name = HOST_FILE_REQUEST, .store = storeIn<filereq>},
    {.name = HOST_SYSTEM_ID, .rule = FurtherService::Rule::systemWord},
    {.name = HOST_BACKDROP_INFO, .rule = FurtherService::Rule::unlessModelling, .store = storeIn<bkdropinfo>},
    {.name = HOST_TIME_INFO, .rule = FurtherService::Rule::unlessModelling, .store = storeIn<timeinfo>},
};

// A glossy node class, with the hooks of its image popup filled in.
template <const ImagePopup &imagePopup>
constexpr NodeClass glossyClass(NodeClass nodeClass) {
    nodeClass = withImages<imagePopup>(nodeClass);
    nodeClass.changed = [](void *instance, HostPanel *panel, unsigned int control, int event) {
        return loadChosenImage(imagePopup, instance, panel, control, event) ? 2 : 0;
    };
    return nodeClass;
}

// The parameter rows, from the offset of the GlossyLook or the GlossySpread. The colour and its input are created
// before the other animated parameters and their inputs, though the seam angle precedes it on the panel and in files.

constexpr Row glossyModeRow(size_t look) {
    return popup(look + offsetof(GlossyLook, mode), "Mode", modeStrings).starting(kRaysAndBackdrop);
}
constexpr Row glossyImageRow(size_t look, HostPopupCount *count, HostPopupName *name) {
    return popup(look + offsetof(GlossyLook, image.index), "Image").entries(count, name);
}
constexpr Row glossySeamRow(size_t look) {
    return angle(look + offsetof(GlossyLook, seamAngle), "Image Seam Angle").input("Angle").createdLast();
}
constexpr Row glossyColourRow(size_t look) {
    return colour(look + offsetof(GlossyLook, colour), "Color").starting(0.78431).input();
}
constexpr Row glossyBlurRow(size_t spread, const char *label) {
    return percent(spread + offsetof(GlossySpread, blur), label).input("Blur").createdLast();
}
constexpr Row glossySamplesRow(size_t spread) {
    return integer(spread + offsetof(GlossySpread, samples), "Samples").starting(8).input().createdLast();
}
constexpr Row glossyDepthRow(size_t spread) {
    return integer(spread + offsetof(GlossySpread, blurDepth), "Blur Depth").input().createdLast();
}
constexpr Row glossyNormalRow(size_t spread) {
    return bareVec3(spread + offsetof(GlossySpread, normal), "Normal", kParmPlainTriple)
        .starting(0, 1, 0)
        .input()
        .createdLast();
}

} // namespace velm::plugin
