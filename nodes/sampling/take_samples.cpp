// Take Samples: what does this noisy network give on average, or at its darkest, or its brightest?
//
// Evaluates its "Color" input many times for one sample and combines the results. The input is meant to give another
// value each time, as random numbers or jittered rays do. Each colour is shifted and, if asked for, clamped, channel by
// channel, before it is combined. The low clamp comes first: with a low limit above the high one, the high one wins.
// The cost is that of the input times "Samples", without a limit.
//
// Odd on purpose: the last two modes of the list do what "Additive" does, as they always have in saved scenes.
#include "module/inputs.h"
#include "module/rows.h"
#include "module/servers.h"

#include <limits>

namespace velm::plugin {
namespace {

NodeServices services;
constexpr int nodeColor[3] = {164, 50, 10};

struct Channel {
    ScalarParameter shift;
    int clampLow;
    ScalarParameter low;
    int clampHigh;
    ScalarParameter high;
};
struct TakeSamples {
    int mode, samples;
    Channel red, green, blue;
};
struct Connections {
    HostInput *colour;
    HostOutput *output;
};

enum Mode { kAverage, kMinimum, kMaximum, kDarkest, kBrightest, kAdditive, kModes };
constexpr const char *modeStrings[] = {"Average",  "Minimum",     "Maximum",  "Darkest", "Brightest",
                                       "Additive", "Subtractive", "Multiply", nullptr};

#define AT(field) offsetof(TakeSamples, field)
// NOLINTBEGIN(bugprone-macro-parentheses): `channel` names a member
#define CHANNEL(letter, channel)                                                                                       \
    number(AT(channel.shift), letter " Shift").input(), checkBox(AT(channel.clampLow), "Clamp"),                       \
        number(AT(channel.low), letter " Low").input(), checkBox(AT(channel.clampHigh), "Clamp"),                      \
        number(AT(channel.high), letter " High").starting(1.0).input()
// NOLINTEND(bugprone-macro-parentheses)
constexpr Parameter parameters[] = {
    popup(AT(mode), "Mode", modeStrings).input(),
    integer(AT(samples), "Samples").starting(12).input(),
    plainInput("Color", kConnectColour, offsetof(Connections, colour)),
    CHANNEL("R", red),
    CHANNEL("G", green),
    CHANNEL("B", blue),
};

constexpr Output outputs[] = {{.name = "Color", .type = kConnectColour, .field = offsetof(Connections, output)}};

using Instance = InstanceRecord<TakeSamples, inputCount(parameters), Connections>;

#define ID(field) controlOf(parameters, AT(field))
constexpr auto layout = joinHints(
    minimumHint(ID(samples), 1), enforceHint(ID(samples), true, false),
    enableHint(ID(red.clampLow), nullptr, nullptr, ID(red.low)),
    enableHint(ID(red.clampHigh), nullptr, nullptr, ID(red.high)),
    enableHint(ID(green.clampLow), nullptr, nullptr, ID(green.low)),
    enableHint(ID(green.clampHigh), nullptr, nullptr, ID(green.high)),
    enableHint(ID(blue.clampLow), nullptr, nullptr, ID(blue.low)),
    enableHint(ID(blue.clampHigh), nullptr, nullptr, ID(blue.high)),
    listHint(kHintNarrow, ID(red.clampLow), ID(red.clampHigh), ID(green.clampLow), ID(green.clampHigh),
             ID(blue.clampLow), ID(blue.clampHigh)),
    listHint(kHintLeftAlign, ID(red.low), ID(red.high), ID(green.low), ID(green.high), ID(blue.low), ID(blue.high)),
    listHint(kHintDividerAfter, ID(samples), ID(red.high), ID(green.high)));

constexpr NodeClass nodeClass = {
    .name = "Take Samples",
    .colour = nodeColor,
    .services = &services,
    .parameters = parameters,
    .outputs = outputs,
    .record = layoutOf<Instance>,
};

// A channel's settings for one sample. A limit that does not clamp is infinite.
struct ChannelRule {
    double shift, low, high;
};

template <size_t channel>
ChannelRule resolve(const TakeSamples &self, const ParameterInputs<nodeClass> &inputs) {
    constexpr double kNoLimit = std::numeric_limits<double>::infinity();
    const double shift = inputs.read<channel + offsetof(Channel, shift)>();
    const double low = inputs.read<channel + offsetof(Channel, low)>();
    const double high = inputs.read<channel + offsetof(Channel, high)>();
    const auto &switches = fieldAt<Channel>(&self, channel);
    return {.shift = shift, .low = switches.clampLow ? low : -kNoLimit, .high = switches.clampHigh ? high : kNoLimit};
}

double brightness(const Vec3 &colour) { return (colour.c[0] + colour.c[1] + colour.c[2]) * 0.3333333333333333; }

// Evaluates the input once, and shifts and clamps the result.
Vec3 TakeSamples_sampleHandler(HostInput *input, const Inputs &inputs, const ChannelRule (&rules)[3]) {
    Vec3 colour = {};
    inputs.evaluate(input, colour.c);
    for (int i = 0; i < 3; ++i) {
        const ChannelRule &rule = rules[i];
        double value = rule.shift + colour.c[i];
        value = value < rule.low ? rule.low : value;
        value = value > rule.high ? rule.high : value;
        colour.c[i] = value;
    }
    return colour;
}

// Adds a sample to the result so far. `light` is the brightness of the result in the two modes that compare whole
// samples. Ties keep the earlier sample.
void combine(int mode, Vec3 &result, double &light, const Vec3 &sample) {
    if (mode == kDarkest || mode == kBrightest) {
        const double next = brightness(sample);
        if (mode == kDarkest ? next < light : next > light) {
            result = sample;
            light = next;
        }
        return;
    }
    for (int i = 0; i < 3; ++i) {
        double &a = result.c[i];
        const double s = sample.c[i];
        if (mode == kMinimum)
            a = s < a ? s : a;
        else if (mode == kMaximum)
            a = s > a ? s : a;
        else
            a += s;
    }
}

void TakeSamples_Evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    const auto &self = *static_cast<const Instance *>(instance);
    const ParameterInputs<nodeClass> inputs(instance, sample);
    const int mode = inputs.choice<AT(mode)>(kModes);
    int samples = inputs.read<AT(samples)>();
    if (samples < 1) samples = 1;
    const ChannelRule rules[3] = {resolve<AT(red)>(self.fields, inputs), resolve<AT(green)>(self.fields, inputs),
                                  resolve<AT(blue)>(self.fields, inputs)};

    // Sums start at black, everything else at the first sample.
    const auto next = [&] { return TakeSamples_sampleHandler(self.connections.colour, inputs, rules); };
    const bool sums = mode == kAverage || mode == kAdditive;
    Vec3 result = sums ? Vec3{} : next();
    double light = brightness(result);
    for (int i = sums ? 0 : 1; i < samples; ++i) combine(mode, result, light, next());
    if (mode == kAverage)
        for (double &component : result.c) component *= 1.0 / samples;
    services.nodeOutputFunc->setValue(value, result.c);
}

} // namespace

VELM_DEFINE_TAGS(TakeSamples, nodeClass, "Velm's Nodes/Surfacing")
VELM_DEFINE_NODE(TakeSamples, nodeClass)
VELM_DEFINE_PANEL(TakeSamples, nodeClass, parameters, layout)

} // namespace velm::plugin
