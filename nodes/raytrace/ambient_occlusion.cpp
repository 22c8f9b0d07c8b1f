// Ambient Occlusion: how much of the sky does this point see?
//
// Casts rays from the point into a cone about its normal and weighs each hit: as 1 in plain mode, and in ranged mode
// less the farther away it is. "Scalar" is the openness, 1 for a free point. "Color" mixes four colours by the weights:
// the colour of the surface, of the background, of what occludes, and, for secondary rays beyond "Sample Depth", of the
// limit. Angles are radians here and degrees on the panel.
//
// Odd on purpose, because pictures rely on it:
//   - Directions are uniform in the angle from the normal, not weighted by its cosine.
//   - In ranged mode the weight is not clamped: with a shift above 0 a far hit counts negative, and brightens.
//   - In plain mode a surface colour mode of "Trace" traces nothing, so the surface colour is black, unless the
//     occlusion colour is traced as well.
//   - The jitter of "Polar" turns rays both ways about the axis but tilts them only towards it.
//   - Creating a node restarts the module's random stream, so that a newly opened scene always renders the same.
#include "module/inputs.h"
#include "module/rows.h"
#include "module/servers.h"
#include "random/random.h"
#include "shading/directions.h"
#include "shading/rays.h"
#include "shading/vectors.h"

#include <algorithm>
#include <cstdint>
#include <numbers>

namespace velm::plugin {
namespace {

NodeServices services;
const HostBackdropInfo *bkdropinfo; // null, as the next, in the modelling application
const HostTimeInfo *timeinfo;
constexpr int nodeColor[3] = {164, 50, 10};

struct ColourSettings {
    int mode;
    Vec3Parameter colour;
    ScalarParameter brightness;
};
struct AmbientOcclusion {
    int mode, samples, polarSamples1, polarSamples2;
    ScalarParameter jitterAngle, coneAngle;
    int ranged;
    ScalarParameter max, shift;
    int clampLow;
    ScalarParameter low;
    int clampHigh;
    ScalarParameter high, offset;
    int sampleDepth;
    ColourSettings surface, background, occlusion, limit;
};
struct Connections {
    HostInput *function, *normal;
    HostOutput *colour, *scalar;
};

enum Mode { kRandom, kPolar };
enum ColourMode { kCustom, kBackdrop, kTrace };
constexpr const char *modeStrings[] = {"Random", "Polar", nullptr};
constexpr const char *colorStrings1[] = {"Custom", "Backdrop", "Trace", nullptr};
constexpr const char *colorStrings2[] = {"Custom", "Backdrop", nullptr};
constexpr EnableStates colorEnableStates = {1, 0, 0}; // a colour can be edited only in the mode "Custom"
constexpr double kTwentyDegrees = 0.3490658503988659, kRightAngle = 1.5707963267948966;
constexpr const char *kRangedOnly = "This control is only enabled in ranged mode";

// The mode of a ray that this node traces: shaded as a reflection, and one of many.
constexpr unsigned int kTraceRay = kTraceSampled | kTraceReflection;

// All four are labelled "Brightness"; the names of the channel and the input tell them apart.
constexpr Row brightness(size_t field, const char *name) {
    return percent(field, "Brightness").named(name).starting(1.0).input(name);
}

#define AT(field) offsetof(AmbientOcclusion, field)
constexpr Parameter parameters[] = {
    choice(AT(mode), "Mode", modeStrings),
    integer(AT(samples), "Samples").starting(27).input(),
    integer(AT(polarSamples1), "Polar Samples 1").starting(3).input("Polar 1"),
    integer(AT(polarSamples2), "Polar Samples 2").starting(9).input("Polar 2"),
    angle(AT(jitterAngle), "Jitter Angle").starting(kTwentyDegrees).input(),
    angle(AT(coneAngle), "Cone Angle").starting(kRightAngle).input(),
    checkBox(AT(ranged), "Ranged").starting(1),
    distance(AT(max), "Max").starting(5.0).input(),
    number(AT(shift), "Shift").input(),
    checkBox(AT(clampLow), "Clamp"),
    number(AT(low), "Low").input(),
    checkBox(AT(clampHigh), "Clamp"),
    number(AT(high), "High").starting(1.0).input(),
    distance(AT(offset), "Offset").input(),
    integer(AT(sampleDepth), "Sample Depth").input(),
    choice(AT(surface.mode), "Color Mode", colorStrings1),
    colour(AT(surface.colour), "Srf Color").starting(1.0).input(),
    brightness(AT(surface.brightness), "Srf Brightness"),
    choice(AT(background.mode), "Color Mode", colorStrings2),
    colour(AT(background.colour), "Bg Color").starting(1.0).input(),
    brightness(AT(background.brightness), "Bg Brightness"),
    choice(AT(occlusion.mode), "Color Mode", colorStrings1),
    colour(AT(occlusion.colour), "Occ Color").input(),
    brightness(AT(occlusion.brightness), "Occ Brightness"),
    choice(AT(limit.mode), "Color Mode", colorStrings2),
    colour(AT(limit.colour), "Limit Color").input(),
    brightness(AT(limit.brightness), "Limit Brightness"),
    plainInput("Function", kConnectFunction, offsetof(Connections, function)),
    plainInput("Normal", kConnectVector, offsetof(Connections, normal)),
};

constexpr Output outputs[] = {
    {.name = "Color", .type = kConnectColour, .field = offsetof(Connections, colour)},
    {.name = "Scalar", .type = kConnectScalar, .field = offsetof(Connections, scalar)},
};

using Instance = InstanceRecord<AmbientOcclusion, inputCount(parameters), Connections>;

enum Group : unsigned int { kPolarGroup = 0x9001, kModeStack, kBrightnessGroup, kSampleGroup, kColourGroup, kTabs };
#define ID(field) controlOf(parameters, AT(field))
constexpr auto layout = joinHints(
    minimumHint(ID(samples), 1), minimumHint(ID(polarSamples1), 1), minimumHint(ID(polarSamples2), 1),
    rangeHint(ID(jitterAngle), 0, 90, 1), rangeHint(ID(coneAngle), 0, 90, 1), minimumHint(ID(max), 0),
    minimumHint(ID(sampleDepth), 0), minimumHint(ID(surface.brightness), 0), minimumHint(ID(background.brightness), 0),
    minimumHint(ID(occlusion.brightness), 0), minimumHint(ID(limit.brightness), 0), stepHint(ID(shift), 1),
    stepHint(ID(low), 1), stepHint(ID(high), 1), enforceHint(ID(samples), true, false),
    enforceHint(ID(polarSamples1), true, false), enforceHint(ID(polarSamples2), true, false),
    enforceHint(ID(sampleDepth), true, false),
    groupHint(kPolarGroup, ID(polarSamples1), ID(polarSamples2), ID(jitterAngle)),
    stackHint(kModeStack, ID(mode), ID(samples), kPolarGroup), enableHint(ID(ranged), nullptr, nullptr, ID(max)),
    enableHint(ID(clampLow), nullptr, nullptr, ID(low)), enableHint(ID(clampHigh), nullptr, nullptr, ID(high)),
    enableHint(ID(surface.mode), nullptr, &colorEnableStates, ID(surface.colour)),
    enableHint(ID(background.mode), nullptr, &colorEnableStates, ID(background.colour)),
    enableHint(ID(occlusion.mode), nullptr, &colorEnableStates, ID(occlusion.colour)),
    enableHint(ID(limit.mode), nullptr, &colorEnableStates, ID(limit.colour)),
    enableHint(ID(ranged), kRangedOnly, nullptr, ID(surface.mode), ID(surface.colour), ID(surface.brightness)),
    listHint(kHintNarrow, ID(ranged), ID(clampLow), ID(clampHigh)),
    listHint(kHintLeftAlign, ID(max), ID(shift), ID(low), ID(high)),
    groupHint(kBrightnessGroup, ID(surface.brightness), ID(background.brightness), ID(occlusion.brightness)),
    groupHint(kSampleGroup, ID(mode), kModeStack, ID(coneAngle), ID(ranged), ID(max), ID(shift), ID(clampLow), ID(low),
              ID(clampHigh), ID(high), ID(offset), ID(sampleDepth)),
    labelHint(kSampleGroup, "Sample Settings"),
    groupHint(kColourGroup, ID(surface.mode), ID(surface.colour), ID(surface.brightness), ID(background.mode),
              ID(background.colour), ID(background.brightness), ID(occlusion.mode), ID(occlusion.colour),
              ID(occlusion.brightness), ID(limit.mode), ID(limit.colour), ID(limit.brightness)),
    labelHint(kColourGroup, "Color Settings"), tabsHint(kTabs, kSampleGroup, kColourGroup));

constexpr FurtherService furtherServices[] = {
    {.name = HOST_SYSTEM_ID, .rule = FurtherService::Rule::systemWord},
    {.name = HOST_BACKDROP_INFO, .rule = FurtherService::Rule::unlessModelling, .store = storeIn<bkdropinfo>},
    {.name = HOST_TIME_INFO, .rule = FurtherService::Rule::unlessModelling, .store = storeIn<timeinfo>},
};

const char *restartRandomStream(void *, void *) {
    init_genrand(kCreationSeed);
    return nullptr;
}

constexpr NodeClass nodeClass = {
    .name = "Ambient Occlusion",
    .colour = nodeColor,
    .services = &services,
    .furtherServices = furtherServices,
    .parameters = parameters,
    .outputs = outputs,
    .record = layoutOf<Instance>,
    .prepare = restartRandomStream,
};

// ---- Evaluation ----

using OcclusionInputs = ParameterInputs<nodeClass>;

struct Tinted {
    Vec3 colour;
    double brightness;
};

// The settings of one sample: the instance's, or what is connected to their inputs.
struct Resolved {
    double coneAngle, max, shift, low, high, offset;
    int sampleDepth;
    Tinted surface, background, occlusion, limit;
};

template <size_t settings>
void resolveTinted(const OcclusionInputs &inputs, Tinted &result) {
    result.colour = inputs.read<settings + offsetof(ColourSettings, colour)>();
    result.brightness = inputs.read<settings + offsetof(ColourSettings, brightness)>();
}

void resolve(const OcclusionInputs &inputs, Resolved &r) {
    r.coneAngle = inputs.read<AT(coneAngle)>();
    r.max = inputs.read<AT(max)>();
    r.shift = inputs.read<AT(shift)>();
    r.low = inputs.read<AT(low)>();
    r.high = inputs.read<AT(high)>();
    r.offset = inputs.read<AT(offset)>();
    r.sampleDepth = inputs.read<AT(sampleDepth)>();
    resolveTinted<AT(surface)>(inputs, r.surface);
    resolveTinted<AT(background)>(inputs, r.background);
    resolveTinted<AT(occlusion)>(inputs, r.occlusion);
    resolveTinted<AT(limit)>(inputs, r.limit);
}

// The occlusion weight of a ray that hit at `distance`, negative for a miss.
double AmbientOcclusion_weightSample(bool ranged, double distance, double max, double shift) {
    if (!ranged) return distance >= 0 ? 1 - shift : 0;
    if (distance > max) return 0;
    return distance >= 0 ? 1 - distance / max - shift : 0;
}

// The rays of one evaluation: where they start, and the sum and the number of those sent so far.
struct Gathering {
    const Instance &self;
    const OcclusionInputs &inputs;
    const HostOutput *output;
    const Resolved &resolved;
    double origin[3];
    Vec3 axis;
    double accumulator[3] = {0, 0, 0};
    double count = 0;
};

// The weight after the curve connected to "Function" and the two clamps. If the low clamp applies, the high one does
// not.
double shapedWeight(const Gathering &rays, double distance) {
    const AmbientOcclusion &self = rays.self.fields;
    const Resolved &r = rays.resolved;
    double weight = AmbientOcclusion_weightSample(self.ranged != 0, distance, r.max, r.shift);
    rays.inputs.evaluate(rays.self.connections.function, &weight);
    if (self.clampLow && weight > 1 - r.low) return 1 - r.low;
    if (self.clampHigh && weight < 1 - r.high) return 1 - r.high;
    return weight;
}

// One of the colours as seen in a direction. Without a backdrop it is the custom one. `traced` is the colour that the
// ray brought, or null if the mode "Trace" cannot be chosen; `room` receives a backdrop colour.
const double *seenColour(int mode, const Tinted &custom, const double direction[3], const double *traced,
                         double room[3]) {
    if (mode == kTrace && traced) return traced;
    if (mode != kBackdrop || !bkdropinfo || !timeinfo) return custom.colour.c;
    std::copy_n(custom.colour.c, 3, room);
    bkdropinfo->backdrop(timeinfo->time, direction, room);
    return room;
}

// Sends one ray and adds its colour. Not inlined, to keep the loop over the rays of "Scalar" small.
[[gnu::noinline]] void sampleColour(Gathering &rays, const double direction[3]) {
    const AmbientOcclusion &self = rays.self.fields;
    const Resolved &r = rays.resolved;
    const ShadingSample &sample = *rays.inputs.sample();
    double traced[3] = {0, 0, 0};
    const bool traces = (self.ranged && self.surface.mode == kTrace) || self.occlusion.mode == kTrace;
    const double distance = traces ? traceRay(sample, rays.origin, direction, traced, sample.refractionIndex, kTraceRay)
                                   : castRay(sample, rays.origin, direction);
    const double weight = shapedWeight(rays, distance);

    // All three are looked up, used or not: a backdrop may be made of nodes that draw from the random stream.
    double surfaceRoom[3], backgroundRoom[3], occlusionRoom[3];
    const double *surface = seenColour(self.surface.mode, r.surface, direction, traced, surfaceRoom);
    const double *background = seenColour(self.background.mode, r.background, direction, nullptr, backgroundRoom);
    const double *occlusion = seenColour(self.occlusion.mode, r.occlusion, direction, traced, occlusionRoom);
    const bool hit = distance >= 0;
    const double *open = hit ? surface : background;
    const double openBrightness = hit ? r.surface.brightness : r.background.brightness;
    for (int i = 0; i < 3; ++i)
        rays.accumulator[i] += weight * occlusion[i] * r.occlusion.brightness + (1 - weight) * open[i] * openBrightness;
}

// Sends one ray and adds its contribution: for "Scalar" its weight, in the first component.
void AmbientOcclusion_sample(Gathering &rays, const double direction[3]) {
    if (rays.output == rays.self.connections.scalar)
        rays.accumulator[0] += shapedWeight(rays, castRay(*rays.inputs.sample(), rays.origin, direction));
    else
        sampleColour(rays, direction);
    rays.count += 1;
}

void AmbientOcclusion_sampleLimit(const AmbientOcclusion &self, const ShadingSample *sample, const Tinted &limit,
                                  double result[3]) {
    double view[3], room[3];
    for (int i = 0; i < 3; ++i) view[i] = sample->position[i] - sample->raySource[i];
    normalise(view);
    const double *colour = seenColour(self.limit.mode, limit, view, nullptr, room);
    for (int i = 0; i < 3; ++i) result[i] = colour[i] * limit.brightness;
}

void AmbientOcclusion_rotateAroundVector(DirectionBatch &batch, int count, const AxisRotation &rotation) {
    rotateBatch(batch, count, rotation);
}

// Sends `count` rays about the axis, aimed by `aim`; see sendInBatches.
template <class Aim>
void gather(Gathering &rays, int64_t count, Aim aim) {
    const AxisRotation rotation = rotationTo(rays.axis.c);
    const auto rotate = [&](DirectionBatch &batch, int length) {
        AmbientOcclusion_rotateAroundVector(batch, length, rotation);
    };
    sendInBatches(count, aim, rotate, [&](const double direction[3]) { AmbientOcclusion_sample(rays, direction); });
}

constexpr double kFullTurn = 2 * std::numbers::pi;

int atLeastOne(int count) { return count < 1 ? 1 : count; }

void gatherRandom(Gathering &rays) {
    const int samples = atLeastOne(rays.inputs.read<AT(samples)>());
    const double cone = rays.resolved.coneAngle;
    gather(rays, samples, [cone](int64_t, double r1, double r2, double &theta, double &phi) {
        theta = r2 * cone;
        phi = r1 * kFullTurn;
    });
}

void gatherPolar(Gathering &rays) {
    const int rings = atLeastOne(rays.inputs.read<AT(polarSamples1)>());
    const int perRing = atLeastOne(rays.inputs.read<AT(polarSamples2)>());
    const double jitter = rays.inputs.read<AT(jitterAngle)>();
    AmbientOcclusion_sample(rays, rays.axis.c); // not normalised
    const double ringStep = rays.resolved.coneAngle / (rings - 1), azimuthStep = kFullTurn / perRing;
    const auto aim = [=](int64_t ray, double r1, double r2, double &theta, double &phi) {
        const int64_t ring = 1 + ray / perRing, index = ray % perRing;
        theta = ringStep * static_cast<double>(ring) - jitter * r2;
        phi = azimuthStep * static_cast<double>(index) - jitter + 2 * jitter * r1;
    };
    gather(rays, int64_t{rings - 1} * perRing, aim);
}

void AmbientOcclusion_Evaluate(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value) {
    const auto &self = *static_cast<const Instance *>(instance);
    double result[3] = {0, 0, 0};
    if (sample->rayFlags & kRayShadow) {
        services.nodeOutputFunc->setValue(value, result);
        return;
    }
    const OcclusionInputs inputs(instance, sample);
    Resolved resolved;
    resolve(inputs, resolved);
    Gathering rays = {.self = self, .inputs = inputs, .output = output, .resolved = resolved, .origin = {}, .axis = {}};
    for (int i = 0; i < 3; ++i) rays.origin[i] = sample->position[i] + resolved.offset * sample->geometricNormal[i];
    rays.axis = inputs.evaluateOr(self.connections.normal, sample->shadingNormal);

    const int mode = self.fields.mode;
    if ((sample->rayFlags & kRaySampled) && sample->rayDepth > resolved.sampleDepth) {
        AmbientOcclusion_sampleLimit(self.fields, sample, resolved.limit, result);
    } else if (mode == kRandom || mode == kPolar) {
        mode == kRandom ? gatherRandom(rays) : gatherPolar(rays);
        for (int i = 0; i < 3; ++i) result[i] = rays.accumulator[i] / rays.count;
        if (output == self.connections.scalar) result[0] = 1 - result[0];
    }
    services.nodeOutputFunc->setValue(value, result);
}

} // namespace

VELM_DEFINE_TAGS(AmbientOcclusion, nodeClass, "Velm's Nodes/Surfacing")
VELM_DEFINE_NODE(AmbientOcclusion, nodeClass)
VELM_DEFINE_PANEL(AmbientOcclusion, nodeClass, parameters, layout)

} // namespace velm::plugin
