// What glossy reflections and glossy refractions have in common: a normal jittered by noise, a ray that leaves by it,
// and four ways of looking up where that ray goes. Averaged over several rays, and tinted.
#pragma once

#include "module/panel.h"
#include "module/rows.h"
#include "random/random.h"
#include "shading/image_popup.h"
#include "shading/rays.h"
#include "shading/vectors.h"

#include <algorithm>

namespace velm::plugin {

enum GlossyMode { kBackdropOnly, kRaysAndBackdrop, kSphericalMap, kRaysAndMap };
// The blank that the last one starts with belongs to it. Each unit has its own list: the address of a shared one is no
// constant where the undefined-behaviour sanitizer allows for null symbols.
static constexpr const char *modeStrings[] = {"Backdrop Only", "Ray Tracing + Backdrop", "Spherical Map",
                                              " Ray Tracing + Spherical Map", nullptr};

// The services of a unit, as its own pointers have them.
struct GlossyServices {
    const HostImageList *const &imglist;
    const HostNodeUtilityFuncs *const &nodeutilf;
    const HostBackdropInfo *const &bkdropinfo; // null, as the next, in the modelling application
    const HostTimeInfo *const &timeinfo;
};

// The first fields of an instance, and the last.
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
    Vec3Parameter normal; // created with the node and left alone: it takes no part in anything
};
struct GlossyHandles {
    HostChannelGroup *group;
    HostPanel *panel;
    HostNode *node;
    HostInput *colourInput, *angleInput, *blurInput, *samplesInput, *blurDepthInput, *normalInput;
    HostOutput *output;
};

// One sample's settings.
struct GlossySettings {
    double colour[3];
    double seamAngle, blur;
    int samples, blurDepth;
};

inline constexpr int kWordsOfGlossyRay = 3 * kWordsOfNoise; // a noise value for each component of the normal

struct GlossyRay {
    double direction[3];
    double eta;
};

// The part of the settings after the tint colour. A further parameter is read between the two.
inline double readSeamAngle(const Inputs &inputs, const GlossyLook &look, const GlossyHandles &handles) {
    return inputs.read(look.seamAngle, handles.angleInput);
}
inline void readSpread(const Inputs &inputs, const GlossySpread &spread, const GlossyHandles &handles,
                       GlossySettings &settings) {
    settings.blur = inputs.read(spread.blur, handles.blurInput);
    settings.samples = inputs.read(spread.samples, handles.samplesInput);
    settings.blurDepth = inputs.read(spread.blurDepth, handles.blurDepthInput);
}

// How many rays a sample is worth: one where there is no blur, for rays that are themselves one of many beyond the blur
// depth, and for pre-process rays.
inline int glossyRayCount(const GlossySettings &settings, const ShadingSample &sample) {
    if (settings.blur == 0 || settings.samples <= 0) return 1;
    if ((sample.rayFlags & kRaySampled) && sample.rayDepth > settings.blurDepth) return 1;
    return sample.rayFlags & kRayPreprocess ? 1 : settings.samples;
}

// The spherical map, as seen in a direction.
inline void lookUpMap(const GlossyServices &g, HostImage *image, double seamAngle, const ShadingSample &sample,
                      const double direction[3], double colour[3]) {
    double u = 0, v = 0;
    g.nodeutilf->directionMapping(seamAngle, direction, &u, &v);
    g.imglist->rgbSpot(image, u, v, sample.spotSize, 1, colour);
}

// What one ray brings. `traceKind` is kTraceReflection or kTraceRefraction, flagged as sampled where there is blur.
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

// Averages the rays that `bend` makes of the view direction and each jittered normal, and tints the result.
template <class Bend>
void gatherGlossy(const GlossyServices &g, const GlossyLook &look, const GlossySettings &settings,
                  const GlossyHandles &handles, unsigned int traceKind, const Inputs &inputs, Bend bend,
                  double result[3]) {
    const ShadingSample *sample = inputs.sample();
    double normal[3], view[3];
    inputs.read(sample->shadingNormal, handles.normalInput, normal);
    normalise(normal);
    for (int i = 0; i < 3; ++i) view[i] = sample->position[i] - sample->raySource[i];
    normalise(view);
    HostImage *image =
        look.mode >= kSphericalMap && look.image.index >= 1 ? getImageID(*g.imglist, look.image.index) : nullptr;
    if (settings.blur != 0) traceKind |= kTraceSampled;

    const int rays = glossyRayCount(settings, *sample);
    double sum[3] = {0, 0, 0};
    // The words of a run of rays are taken ahead; a ray whose hit draws words itself is given them first, and the rays
    // after it get later ones, as if each had drawn its own.
    constexpr int kRun = WordsAhead::kMost / kWordsOfGlossyRay;
    WordsAhead ahead;
    for (int i = 0; i < rays; ++i) {
        if (ahead.left() < kWordsOfGlossyRay) ahead.fill(kWordsOfGlossyRay * std::min(kRun, rays - i));
        double jittered[3]; // three noise values for every ray, also without blur: the stream goes on as it always has
        const uint32_t *words = ahead.words();
        for (int k = 0; k < 3; ++k, words += kWordsOfNoise)
            jittered[k] = normal[k] - noiseOfWords(words[0], words[1], words[2]) * settings.blur;
        ahead.use(kWordsOfGlossyRay);
        normalise(jittered);
        double colour[3] = {0, 0, 0};
        lookUpRay(g, look.mode, image, settings.seamAngle, traceKind, *sample, bend(view, jittered), colour);
        for (int k = 0; k < 3; ++k) sum[k] += colour[k];
    }
    for (int k = 0; k < 3; ++k) result[k] = sum[k] / rays * (look.tint ? settings.colour[k] : 1.0);
}

// The mirrored view direction.
inline GlossyRay mirrored(const double view[3], const double normal[3], double eta) {
    const double cosine = dot(view, normal);
    GlossyRay ray = {.direction = {}, .eta = eta};
    for (int i = 0; i < 3; ++i) ray.direction[i] = view[i] - 2 * cosine * normal[i];
    return ray;
}

// ---- Tables ----

// The services that a unit fetches, stored in its own pointers.
template <auto &imglist, auto &nodeutilf, auto &filereq, auto &bkdropinfo, auto &timeinfo>
inline constexpr FurtherService glossyServiceRows[] = {
    {.name = HOST_IMAGE_LIST, .store = storeIn<imglist>},
    {.name = HOST_NODE_UTILITY_FUNCS, .store = storeIn<nodeutilf>},
    {.name = HOST_FILE_REQUEST, .store = storeIn<filereq>},
    {.name = HOST_SYSTEM_ID, .rule = FurtherService::Rule::systemWord},
    {.name = HOST_BACKDROP_INFO, .rule = FurtherService::Rule::unlessModelling, .store = storeIn<bkdropinfo>},
    {.name = HOST_TIME_INFO, .rule = FurtherService::Rule::unlessModelling, .store = storeIn<timeinfo>},
};

// The image popup of a glossy unit, complete.
template <const ImagePopup &imagePopup>
constexpr NodeClass glossyClass(NodeClass nodeClass) {
    nodeClass = withImages<imagePopup>(nodeClass);
    nodeClass.changed = [](void *instance, HostPanel *panel, unsigned int control, int event) {
        return loadChosenImage(imagePopup, instance, panel, control, event) ? 2 : 0;
    };
    return nodeClass;
}

// Parameter rows.
// `look`, `spread` and `handles` are the offsets of the three records. The colour and its input are created first,
// though it stands after the seam angle on the panel and in files.

constexpr Row glossyModeRow(unsigned int id, size_t look) {
    return popup(id, "Mode", modeStrings).at(look + offsetof(GlossyLook, mode)).starting(kRaysAndBackdrop);
}
constexpr Row glossyImageRow(unsigned int id, size_t look, HostPopupCount *count, HostPopupName *name) {
    return popup(id, "Image").entries(count, name).at(look + offsetof(GlossyLook, image.index));
}
constexpr Row glossySeamRow(unsigned int id, size_t look, size_t handles) {
    return angle(id, "Image Seam Angle")
        .at(look + offsetof(GlossyLook, seamAngle))
        .input(handles + offsetof(GlossyHandles, angleInput), "Angle")
        .createdLast();
}
constexpr Row glossyColourRow(unsigned int id, size_t look, size_t handles) {
    return colour(id, "Color")
        .at(look + offsetof(GlossyLook, colour))
        .starting(0.78431)
        .input(handles + offsetof(GlossyHandles, colourInput));
}
constexpr Row glossyBlurRow(unsigned int id, const char *label, size_t spread, size_t handles) {
    return percent(id, label)
        .at(spread + offsetof(GlossySpread, blur))
        .input(handles + offsetof(GlossyHandles, blurInput), "Blur")
        .createdLast();
}
constexpr Row glossySamplesRow(unsigned int id, size_t spread, size_t handles) {
    return integer(id, "Samples")
        .at(spread + offsetof(GlossySpread, samples))
        .starting(8)
        .input(handles + offsetof(GlossyHandles, samplesInput))
        .createdLast();
}
constexpr Row glossyDepthRow(unsigned int id, size_t spread, size_t handles) {
    return integer(id, "Blur Depth")
        .at(spread + offsetof(GlossySpread, blurDepth))
        .input(handles + offsetof(GlossyHandles, blurDepthInput))
        .createdLast();
}
constexpr Row glossyNormalRow(size_t spread, size_t handles) {
    return bareVec3("Normal", kParmPlainTriple)
        .at(spread + offsetof(GlossySpread, normal))
        .starting(0, 1, 0)
        .input(handles + offsetof(GlossyHandles, normalInput))
        .createdLast();
}

} // namespace velm::plugin
