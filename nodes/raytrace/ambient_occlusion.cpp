// Ambient Occlusion: "how much of the sky does this point see?"
//
// Casts rays from the point into a cone about its normal and weighs each hit: 1 in plain mode, less the farther it lies
// in ranged mode. "Scalar" is the openness, 1 for a free point; "Color" mixes four colours by the weights: that of the
// surface, of the background, of what occludes, and, for secondary rays beyond "Sample Depth", of the limit.
// Angles are radians here and degrees on the panel.
//
// Odd on purpose, because pictures rely on it:
//   - Directions are uniform in the angle from the normal, not weighted by its cosine.
//   - In ranged mode the weight is not clamped: with a shift above 0 a far hit counts negative, and brightens.
//   - In plain mode a surface colour mode of "Trace" traces nothing, so the surface colour is black, unless the
//     occlusion colour is traced as well.
//   - The jitter of "Polar" turns rays both ways about the axis but tilts them only towards it.
//   - Creating a node restarts the module's random stream, so that a scene opened afresh renders the same again.
#include "module/rows.h"
#include "module/servers.h"
#include "random/random.h"
#include "shading/rays.h"
#include "shading/sincos.h"
#include "shading/vectors.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace velm::plugin {

static NodeServices services;
static const HostBackdropInfo *bkdropinfo; // null, as the next, in the modelling application
static const HostTimeInfo *timeinfo;
static constexpr int nodeColor[3] = {164, 50, 10};

namespace {

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
    HostChannelGroup *group;
    HostPanel *panel;
    HostNode *node;
    HostInput *samplesInput, *polar1Input, *polar2Input, *jitterAngleInput, *coneAngleInput, *maxInput, *shiftInput,
        *lowInput, *highInput, *offsetInput, *sampleDepthInput, *surfaceColourInput, *surfaceBrightnessInput,
        *backgroundColourInput, *backgroundBrightnessInput, *occlusionColourInput, *occlusionBrightnessInput,
        *limitColourInput, *limitBrightnessInput, *functionInput, *normalInput;
    HostOutput *colourOutput, *scalarOutput;
};

enum Mode { kRandom, kPolar };
enum ColourMode { kCustom, kBackdrop, kTrace };
constexpr const char *modeStrings[] = {"Random", "Polar", nullptr};
constexpr const char *colorStrings1[] = {"Custom", "Backdrop", "Trace", nullptr};
constexpr const char *colorStrings2[] = {"Custom", "Backdrop", nullptr};
constexpr EnableStates colorEnableStates = {1, 0, 0}; // a colour is edited only where it is the custom one
constexpr double kTwentyDegrees = 0.3490658503988659, kRightAngle = 1.5707963267948966;
constexpr const char *kRangedOnly = "This control is only enabled in ranged mode";

// A ray as this node traces it: shaded as a reflection, and one of many.
constexpr unsigned int kTraceRay = kTraceSampled | kTraceReflection;

enum Control : unsigned int {
    kMode = kFirstControl,
    kSamples,
    kPolarSamples1,
    kPolarSamples2,
    kJitterAngle,
    kConeAngle,
    kRanged,
    kMax,
    kShift,
    kClampLow,
    kLow,
    kClampHigh,
    kHigh,
    kOffset,
    kSampleDepth,
    kSurfaceMode,
    kSurfaceColour,
    kSurfaceBrightness,
    kBackgroundMode,
    kBackgroundColour,
    kBackgroundBrightness,
    kOcclusionMode,
    kOcclusionColour,
    kOcclusionBrightness,
    kLimitMode,
    kLimitColour,
    kLimitBrightness,
};
enum Group : unsigned int { kPolarGroup = 0x9001, kModeStack, kBrightnessGroup, kSampleGroup, kColourGroup, kTabs };

// All four are labelled "Brightness"; channel and input tell them apart.
constexpr Row brightness(unsigned int id, const char *name, size_t field, size_t input) {
    return percent(id, "Brightness").named(name).at(field).starting(1.0).input(input, name);
}

#define AT(field) offsetof(AmbientOcclusion, field)
constexpr Parameter parameters[] = {
    choice(kMode, "Mode", modeStrings).at(AT(mode)),
    integer(kSamples, "Samples").at(AT(samples)).starting(27).input(AT(samplesInput)),
    integer(kPolarSamples1, "Polar Samples 1").at(AT(polarSamples1)).starting(3).input(AT(polar1Input), "Polar 1"),
    integer(kPolarSamples2, "Polar Samples 2").at(AT(polarSamples2)).starting(9).input(AT(polar2Input), "Polar 2"),
    angle(kJitterAngle, "Jitter Angle").at(AT(jitterAngle)).starting(kTwentyDegrees).input(AT(jitterAngleInput)),
    angle(kConeAngle, "Cone Angle").at(AT(coneAngle)).starting(kRightAngle).input(AT(coneAngleInput)),
    checkBox(kRanged, "Ranged").at(AT(ranged)).starting(1),
    distance(kMax, "Max").at(AT(max)).starting(5.0).input(AT(maxInput)),
    number(kShift, "Shift").at(AT(shift)).input(AT(shiftInput)),
    checkBox(kClampLow, "Clamp").at(AT(clampLow)),
    number(kLow, "Low").at(AT(low)).input(AT(lowInput)),
    checkBox(kClampHigh, "Clamp").at(AT(clampHigh)),
    number(kHigh, "High").at(AT(high)).starting(1.0).input(AT(highInput)),
    distance(kOffset, "Offset").at(AT(offset)).input(AT(offsetInput)),
    integer(kSampleDepth, "Sample Depth").at(AT(sampleDepth)).input(AT(sampleDepthInput)),
    choice(kSurfaceMode, "Color Mode", colorStrings1).at(AT(surface.mode)),
    colour(kSurfaceColour, "Srf Color").at(AT(surface.colour)).starting(1.0).input(AT(surfaceColourInput)),
    brightness(kSurfaceBrightness, "Srf Brightness", AT(surface.brightness), AT(surfaceBrightnessInput)),
    choice(kBackgroundMode, "Color Mode", colorStrings2).at(AT(background.mode)),
    colour(kBackgroundColour, "Bg Color").at(AT(background.colour)).starting(1.0).input(AT(backgroundColourInput)),
    brightness(kBackgroundBrightness, "Bg Brightness", AT(background.brightness), AT(backgroundBrightnessInput)),
    choice(kOcclusionMode, "Color Mode", colorStrings1).at(AT(occlusion.mode)),
    colour(kOcclusionColour, "Occ Color").at(AT(occlusion.colour)).input(AT(occlusionColourInput)),
    brightness(kOcclusionBrightness, "Occ Brightness", AT(occlusion.brightness), AT(occlusionBrightnessInput)),
    choice(kLimitMode, "Color Mode", colorStrings2).at(AT(limit.mode)),
    colour(kLimitColour, "Limit Color").at(AT(limit.colour)).input(AT(limitColourInput)),
    brightness(kLimitBrightness, "Limit Brightness", AT(limit.brightness), AT(limitBrightnessInput)),
    plainInput("Function", kConnectFunction, AT(functionInput)),
    plainInput("Normal", kConnectVector, AT(normalInput)),
};

constexpr Output outputs[] = {
    {.name = "Color", .type = kConnectColour, .field = AT(colourOutput)},
    {.name = "Scalar", .type = kConnectScalar, .field = AT(scalarOutput)},
};

constexpr auto layout = joinHints(
    minimumHint(kSamples, 1), minimumHint(kPolarSamples1, 1), minimumHint(kPolarSamples2, 1),
    rangeHint(kJitterAngle, 0, 90, 1), rangeHint(kConeAngle, 0, 90, 1), minimumHint(kMax, 0),
    minimumHint(kSampleDepth, 0), minimumHint(kSurfaceBrightness, 0), minimumHint(kBackgroundBrightness, 0),
    minimumHint(kOcclusionBrightness, 0), minimumHint(kLimitBrightness, 0), stepHint(kShift, 1), stepHint(kLow, 1),
    stepHint(kHigh, 1), enforceHint(kSamples, true, false), enforceHint(kPolarSamples1, true, false),
    enforceHint(kPolarSamples2, true, false), enforceHint(kSampleDepth, true, false),
    groupHint(kPolarGroup, kPolarSamples1, kPolarSamples2, kJitterAngle),
    stackHint(kModeStack, kMode, kSamples, kPolarGroup), enableHint(kRanged, nullptr, nullptr, kMax),
    enableHint(kClampLow, nullptr, nullptr, kLow), enableHint(kClampHigh, nullptr, nullptr, kHigh),
    enableHint(kSurfaceMode, nullptr, &colorEnableStates, kSurfaceColour),
    enableHint(kBackgroundMode, nullptr, &colorEnableStates, kBackgroundColour),
    enableHint(kOcclusionMode, nullptr, &colorEnableStates, kOcclusionColour),
    enableHint(kLimitMode, nullptr, &colorEnableStates, kLimitColour),
    enableHint(kRanged, kRangedOnly, nullptr, kSurfaceMode, kSurfaceColour, kSurfaceBrightness),
    listHint(kHintNarrow, kRanged, kClampLow, kClampHigh), listHint(kHintLeftAlign, kMax, kShift, kLow, kHigh),
    groupHint(kBrightnessGroup, kSurfaceBrightness, kBackgroundBrightness, kOcclusionBrightness),
    groupHint(kSampleGroup, kMode, kModeStack, kConeAngle, kRanged, kMax, kShift, kClampLow, kLow, kClampHigh, kHigh,
              kOffset, kSampleDepth),
    labelHint(kSampleGroup, "Sample Settings"),
    groupHint(kColourGroup, kSurfaceMode, kSurfaceColour, kSurfaceBrightness, kBackgroundMode, kBackgroundColour,
              kBackgroundBrightness, kOcclusionMode, kOcclusionColour, kOcclusionBrightness, kLimitMode, kLimitColour,
              kLimitBrightness),
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
    .size = sizeof(AmbientOcclusion),
    .colour = nodeColor,
    .services = &services,
    .furtherServices = furtherServices,
    .parameters = parameters,
    .outputs = outputs,
    .node = AT(node),
    .panel = AT(panel),
    .group = AT(group),
    .prepare = restartRandomStream,
};
#undef AT

// ---- Evaluation ----

struct Tinted {
    double colour[3];
    double brightness;
};

// The settings of one sample: the instance's, with what is connected laid over.
struct Resolved {
    double coneAngle, max, shift, low, high, offset;
    int sampleDepth;
    Tinted surface, background, occlusion, limit;
};

void tinted(const ColourSettings &settings, HostInput *colour, HostInput *brightness, const Inputs &inputs,
            Tinted &result) {
    inputs.read(settings.colour, colour, result.colour);
    result.brightness = inputs.read(settings.brightness, brightness);
}

void resolve(const AmbientOcclusion &self, const Inputs &inputs, Resolved &r) {
    r.coneAngle = inputs.read(self.coneAngle, self.coneAngleInput);
    r.max = inputs.read(self.max, self.maxInput);
    r.shift = inputs.read(self.shift, self.shiftInput);
    r.low = inputs.read(self.low, self.lowInput);
    r.high = inputs.read(self.high, self.highInput);
    r.offset = inputs.read(self.offset, self.offsetInput);
    r.sampleDepth = inputs.read(self.sampleDepth, self.sampleDepthInput);
    tinted(self.surface, self.surfaceColourInput, self.surfaceBrightnessInput, inputs, r.surface);
    tinted(self.background, self.backgroundColourInput, self.backgroundBrightnessInput, inputs, r.background);
    tinted(self.occlusion, self.occlusionColourInput, self.occlusionBrightnessInput, inputs, r.occlusion);
    tinted(self.limit, self.limitColourInput, self.limitBrightnessInput, inputs, r.limit);
}

// The occlusion weight of a ray that hit at `distance`, negative for a miss.
double AmbientOcclusion_weightSample(bool ranged, double distance, double max, double shift) {
    if (!ranged) return distance >= 0 ? 1 - shift : 0;
    if (distance > max) return 0;
    return distance >= 0 ? 1 - distance / max - shift : 0;
}

// The weight after the curve connected to "Function" and the two clamps. A low clamp that takes hold ends the matter.
double shapedWeight(const AmbientOcclusion &self, const Inputs &inputs, double distance, const Resolved &r) {
    double weight = AmbientOcclusion_weightSample(self.ranged != 0, distance, r.max, r.shift);
    inputs.evaluate(self.functionInput, &weight);
    if (self.clampLow && weight > 1 - r.low) return 1 - r.low;
    if (self.clampHigh && weight < 1 - r.high) return 1 - r.high;
    return weight;
}

// One of the colours as it shows in a direction: its own where there is no backdrop. `traced` is null where it
// cannot be chosen; `room` holds what is looked up.
const double *seenColour(int mode, const Tinted &custom, const double direction[3], const double *traced,
                         double room[3]) {
    if (mode == kTrace && traced) return traced;
    if (mode != kBackdrop || !bkdropinfo || !timeinfo) return custom.colour;
    std::copy_n(custom.colour, 3, room);
    bkdropinfo->backdrop(timeinfo->time, direction, room);
    return room;
}

void sampleColour(const AmbientOcclusion &self, const Inputs &inputs, const double origin[3], const double direction[3],
                  const Resolved &r, double accumulator[3]) {
    const ShadingSample &sample = *inputs.sample();
    double traced[3] = {0, 0, 0};
    const bool traces = (self.ranged && self.surface.mode == kTrace) || self.occlusion.mode == kTrace;
    const double distance = traces ? traceRay(sample, origin, direction, traced, sample.refractionIndex, kTraceRay)
                                   : castRay(sample, origin, direction);
    const double weight = shapedWeight(self, inputs, distance, r);

    // All three, whether the ray shows them or not: a backdrop may be made of nodes that draw from the random stream.
    double surfaceRoom[3], backgroundRoom[3], occlusionRoom[3];
    const double *surface = seenColour(self.surface.mode, r.surface, direction, traced, surfaceRoom);
    const double *background = seenColour(self.background.mode, r.background, direction, nullptr, backgroundRoom);
    const double *occlusion = seenColour(self.occlusion.mode, r.occlusion, direction, traced, occlusionRoom);
    const bool hit = distance >= 0;
    const double *open = hit ? surface : background;
    const double openBrightness = hit ? r.surface.brightness : r.background.brightness;
    for (int i = 0; i < 3; ++i)
        accumulator[i] += weight * occlusion[i] * r.occlusion.brightness + (1 - weight) * open[i] * openBrightness;
}

// Casts one ray and adds what it brings: for "Scalar", its weight in the first component.
void AmbientOcclusion_sample(const AmbientOcclusion &self, const Inputs &inputs, const HostOutput *output,
                             const double origin[3], const double direction[3], const Resolved &r,
                             double accumulator[3]) {
    if (output == self.scalarOutput)
        accumulator[0] += shapedWeight(self, inputs, castRay(*inputs.sample(), origin, direction), r);
    else
        sampleColour(self, inputs, origin, direction, r, accumulator);
}

void AmbientOcclusion_sampleLimit(const AmbientOcclusion &self, const ShadingSample *sample, const Tinted &limit,
                                  double result[3]) {
    double view[3], room[3];
    for (int i = 0; i < 3; ++i) view[i] = sample->position[i] - sample->raySource[i];
    normalise(view);
    const double *colour = seenColour(self.limit.mode, limit, view, nullptr, room);
    for (int i = 0; i < 3; ++i) result[i] = colour[i] * limit.brightness;
}

// The turn of a cone about +X onto an axis, by the axis's pitch and then its heading.
struct Turn {
    double cosPitch, sinPitch, cosHeading, sinHeading;

    Turn(double heading, double pitch)
        : cosPitch(std::cos(pitch)), sinPitch(std::sin(pitch)), cosHeading(std::cos(heading)),
          sinHeading(std::sin(heading)) {}
};

// A run of rays: the angle from the axis and the angle about it of each, and their unit directions.
constexpr int kRun = WordsAhead::kMost / 2; // two words for each ray
struct Run {
    double theta[kRun], phi[kRun];
    double directions[kRun][3];
};

// With theta 0, the axis.
void AmbientOcclusion_rotateAroundVector(Run &run, int count, const Turn &turn) {
    double sinTheta[kRun], cosTheta[kRun], sinPhi[kRun], cosPhi[kRun];
    sinesAndCosines(run.theta, count, sinTheta, cosTheta);
    sinesAndCosines(run.phi, count, sinPhi, cosPhi);
    for (int i = 0; i < count; ++i) {
        const double x = cosTheta[i], y = sinTheta[i] * sinPhi[i], z = sinTheta[i] * cosPhi[i];
        const double level = x * turn.cosPitch - y * turn.sinPitch;
        run.directions[i][0] = level * turn.cosHeading - z * turn.sinHeading;
        run.directions[i][1] = x * turn.sinPitch + y * turn.cosPitch;
        run.directions[i][2] = level * turn.sinHeading + z * turn.cosHeading;
    }
}

// The rays of one evaluation: where they start, how they are counted, what they have brought.
struct Gathering {
    const AmbientOcclusion &self;
    const Inputs &inputs;
    const HostOutput *output;
    const Resolved &resolved;
    double origin[3];
    double axis[3];
    double accumulator[3] = {0, 0, 0};
    double count = 0;

    void add(const double direction[3]) {
        AmbientOcclusion_sample(self, inputs, output, origin, direction, resolved, accumulator);
        count += 1;
    }
    Turn turn() const {
        return {std::atan2(axis[2], axis[0]), std::atan2(axis[1], std::sqrt(axis[0] * axis[0] + axis[2] * axis[2]))};
    }
};

constexpr double kFullTurn = 2 * std::numbers::pi;

int atLeastOne(int count) { return count < 1 ? 1 : count; }

// Sends `count` rays. `aim` sets the two angles of a ray from its number and its two random values. The words of a run
// of rays are taken ahead and its directions computed together; should anything that a ray calls draw words itself,
// the rays after it get later ones, as if each had drawn its own.
template <class Aim>
void gather(Gathering &rays, int64_t count, Aim aim) {
    const Turn turn = rays.turn();
    WordsAhead ahead;
    Run run;
    for (int64_t sent = 0; sent < count;) {
        const int length = static_cast<int>(std::min<int64_t>(count - sent, kRun));
        ahead.fill(2 * length);
        const uint32_t *words = ahead.words();
        for (int i = 0; i < length; ++i)
            aim(sent + i, words[2 * i] * kPerInt32Closed, words[2 * i + 1] * kPerInt32Closed, run.theta[i], run.phi[i]);
        AmbientOcclusion_rotateAroundVector(run, length, turn);
        for (int i = 0; i < length && ahead.left() == 2 * (length - i); ++i, ++sent) {
            ahead.use(2);
            rays.add(run.directions[i]);
        }
    }
}

void gatherRandom(Gathering &rays) {
    const AmbientOcclusion &self = rays.self;
    const int samples = atLeastOne(rays.inputs.read(self.samples, self.samplesInput));
    const double cone = rays.resolved.coneAngle;
    gather(rays, samples, [cone](int64_t, double r1, double r2, double &theta, double &phi) {
        theta = r2 * cone;
        phi = r1 * kFullTurn;
    });
}

void gatherPolar(Gathering &rays) {
    const AmbientOcclusion &self = rays.self;
    const int rings = atLeastOne(rays.inputs.read(self.polarSamples1, self.polar1Input));
    const int perRing = atLeastOne(rays.inputs.read(self.polarSamples2, self.polar2Input));
    const double jitter = rays.inputs.read(self.jitterAngle, self.jitterAngleInput);
    rays.add(rays.axis); // as it was given, not normalised
    const double ringStep = rays.resolved.coneAngle / (rings - 1), azimuthStep = kFullTurn / perRing;
    const auto aim = [=](int64_t ray, double r1, double r2, double &theta, double &phi) {
        const auto ring = static_cast<double>(1 + ray / perRing), place = static_cast<double>(ray % perRing);
        theta = ringStep * ring - jitter * r2;
        phi = azimuthStep * place - jitter + 2 * jitter * r1;
    };
    gather(rays, int64_t{rings - 1} * perRing, aim);
}

} // namespace

static void AmbientOcclusion_Evaluate(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value) {
    const auto &self = *static_cast<const AmbientOcclusion *>(instance);
    double result[3] = {0, 0, 0};
    if (sample->rayFlags & kRayShadow) {
        services.nodeOutputFunc->setValue(value, result);
        return;
    }
    const Inputs inputs(services, sample);
    Resolved resolved;
    resolve(self, inputs, resolved);
    Gathering rays = {.self = self, .inputs = inputs, .output = output, .resolved = resolved, .origin = {}, .axis = {}};
    for (int i = 0; i < 3; ++i) rays.origin[i] = sample->position[i] + resolved.offset * sample->geometricNormal[i];
    inputs.read(sample->shadingNormal, self.normalInput, rays.axis);

    if ((sample->rayFlags & kRaySampled) && sample->rayDepth > resolved.sampleDepth) {
        AmbientOcclusion_sampleLimit(self, sample, resolved.limit, result);
    } else if (self.mode == kRandom || self.mode == kPolar) {
        self.mode == kRandom ? gatherRandom(rays) : gatherPolar(rays);
        for (int i = 0; i < 3; ++i) result[i] = rays.accumulator[i] / rays.count;
        if (output == self.scalarOutput) result[0] = 1 - result[0];
    }
    services.nodeOutputFunc->setValue(value, result);
}

VELM_DEFINE_TAGS(AmbientOcclusion, nodeClass, "Velm's Nodes/Surfacing")
VELM_DEFINE_NODE(AmbientOcclusion, nodeClass)
VELM_DEFINE_PANEL(AmbientOcclusion, nodeClass, parameters, layout)

} // namespace velm::plugin
