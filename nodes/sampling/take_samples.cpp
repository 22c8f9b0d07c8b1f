// Take Samples: evaluates its "Color" input many times for one sample and combines the results: for what gives another
// value each time, such as random numbers or jittered rays.
//
// Each colour is shifted and, where asked for, clamped, channel by channel, before it is combined. The low clamp comes
// first, so that with a low above the high the high wins. The cost is the input's, times "Samples"; there is no limit.
//
// Odd on purpose: the last two modes of the list do what "Additive" does, as they always have in saved scenes.
#include "module/rows.h"
#include "module/servers.h"

#include <limits>

namespace velm::plugin {

static NodeServices services;
static constexpr int nodeColor[3] = {164, 50, 10};

namespace {

struct Channel {
    ScalarParameter shift;
    int clampLow;
    ScalarParameter low;
    int clampHigh;
    ScalarParameter high;
};
struct ChannelInputs {
    HostInput *shift, *low, *high;
};

struct TakeSamples {
    int mode, samples;
    Channel red, green, blue;
    HostChannelGroup *group;
    HostPanel *panel;
    HostNode *node;
    HostInput *modeInput, *samplesInput;
    ChannelInputs redInputs, greenInputs, blueInputs;
    HostInput *colourInput;
    HostOutput *output;
};

enum Mode { kAverage, kMinimum, kMaximum, kDarkest, kBrightest, kAdditive, kModes };
constexpr const char *modeStrings[] = {"Average",  "Minimum",     "Maximum",  "Darkest", "Brightest",
                                       "Additive", "Subtractive", "Multiply", nullptr};

enum Control : unsigned int {
    kMode = kFirstControl,
    kSamples,
    kRedShift,
    kRedClampLow,
    kRedLow,
    kRedClampHigh,
    kRedHigh,
    kGreenShift,
    kGreenClampLow,
    kGreenLow,
    kGreenClampHigh,
    kGreenHigh,
    kBlueShift,
    kBlueClampLow,
    kBlueLow,
    kBlueClampHigh,
    kBlueHigh,
};

#define AT(field) offsetof(TakeSamples, field)
// NOLINTBEGIN(bugprone-macro-parentheses): `channel` names a member
#define CHANNEL(letter, first, channel)                                                                                \
    number(first, letter " Shift").at(AT(channel.shift)).input(AT(channel##Inputs.shift)),                             \
        checkBox(first + 1, "Clamp").at(AT(channel.clampLow)),                                                         \
        number(first + 2, letter " Low").at(AT(channel.low)).input(AT(channel##Inputs.low)),                           \
        checkBox(first + 3, "Clamp").at(AT(channel.clampHigh)),                                                        \
        number(first + 4, letter " High").at(AT(channel.high)).starting(1.0).input(AT(channel##Inputs.high))
// NOLINTEND(bugprone-macro-parentheses)
constexpr Parameter parameters[] = {
    popup(kMode, "Mode", modeStrings).at(AT(mode)).input(AT(modeInput)),
    integer(kSamples, "Samples").at(AT(samples)).starting(12).input(AT(samplesInput)),
    plainInput("Color", kConnectColour, AT(colourInput)),
    CHANNEL("R", kRedShift, red),
    CHANNEL("G", kGreenShift, green),
    CHANNEL("B", kBlueShift, blue),
};
#undef CHANNEL

constexpr Output outputs[] = {{.name = "Color", .type = kConnectColour, .field = AT(output)}};

constexpr auto layout = joinHints(
    minimumHint(kSamples, 1), enforceHint(kSamples, true, false), enableHint(kRedClampLow, nullptr, nullptr, kRedLow),
    enableHint(kRedClampHigh, nullptr, nullptr, kRedHigh), enableHint(kGreenClampLow, nullptr, nullptr, kGreenLow),
    enableHint(kGreenClampHigh, nullptr, nullptr, kGreenHigh), enableHint(kBlueClampLow, nullptr, nullptr, kBlueLow),
    enableHint(kBlueClampHigh, nullptr, nullptr, kBlueHigh),
    listHint(kHintNarrow, kRedClampLow, kRedClampHigh, kGreenClampLow, kGreenClampHigh, kBlueClampLow, kBlueClampHigh),
    listHint(kHintLeftAlign, kRedLow, kRedHigh, kGreenLow, kGreenHigh, kBlueLow, kBlueHigh),
    listHint(kHintDividerAfter, kSamples, kRedHigh, kGreenHigh));

constexpr NodeClass nodeClass = {
    .name = "Take Samples",
    .size = sizeof(TakeSamples),
    .colour = nodeColor,
    .services = &services,
    .parameters = parameters,
    .outputs = outputs,
    .node = AT(node),
    .panel = AT(panel),
    .group = AT(group),
};
#undef AT

// A channel's settings for one sample. Limits that do not clamp are infinite.
struct ChannelRule {
    double shift, low, high;
};

ChannelRule resolve(const Channel &channel, const ChannelInputs &handles, const Inputs &inputs) {
    constexpr double kNoLimit = std::numeric_limits<double>::infinity();
    const double shift = inputs.read(channel.shift, handles.shift);
    const double low = inputs.read(channel.low, handles.low);
    const double high = inputs.read(channel.high, handles.high);
    return {.shift = shift, .low = channel.clampLow ? low : -kNoLimit, .high = channel.clampHigh ? high : kNoLimit};
}

struct Colour {
    double c[3];
};

double brightness(const Colour &colour) { return (colour.c[0] + colour.c[1] + colour.c[2]) * 0.3333333333333333; }

// One evaluation of the input, shifted and clamped.
Colour TakeSamples_sampleHandler(const TakeSamples &self, const Inputs &inputs, const ChannelRule (&rules)[3]) {
    Colour colour = {};
    inputs.evaluate(self.colourInput, colour.c);
    for (int i = 0; i < 3; ++i) {
        const ChannelRule &rule = rules[i];
        double value = rule.shift + colour.c[i];
        value = value < rule.low ? rule.low : value;
        value = value > rule.high ? rule.high : value;
        colour.c[i] = value;
    }
    return colour;
}

// Lays one more sample into what has been combined so far. Ties keep the earlier sample.
void combine(int mode, Colour &all, double &kept, const Colour &next) {
    if (mode == kDarkest || mode == kBrightest) {
        const double light = brightness(next);
        if (mode == kDarkest ? light < kept : light > kept) {
            all = next;
            kept = light;
        }
        return;
    }
    for (int i = 0; i < 3; ++i) {
        double &a = all.c[i];
        const double s = next.c[i];
        if (mode == kMinimum)
            a = s < a ? s : a;
        else if (mode == kMaximum)
            a = s > a ? s : a;
        else
            a += s;
    }
}

} // namespace

static void TakeSamples_Evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    const auto &self = *static_cast<const TakeSamples *>(instance);
    const Inputs inputs(services, sample);
    const int mode = inputs.readChoice(self.mode, self.modeInput, kModes);
    int samples = inputs.read(self.samples, self.samplesInput);
    if (samples < 1) samples = 1;
    const ChannelRule rules[3] = {resolve(self.red, self.redInputs, inputs),
                                  resolve(self.green, self.greenInputs, inputs),
                                  resolve(self.blue, self.blueInputs, inputs)};

    // Sums start at black, and everything else at the first sample.
    const bool sums = mode == kAverage || mode == kAdditive;
    Colour all = sums ? Colour{} : TakeSamples_sampleHandler(self, inputs, rules);
    double kept = brightness(all);
    for (int i = sums ? 0 : 1; i < samples; ++i)
        combine(mode, all, kept, TakeSamples_sampleHandler(self, inputs, rules));
    if (mode == kAverage)
        for (double &component : all.c) component *= 1.0 / samples;
    services.nodeOutputFunc->setValue(value, all.c);
}

VELM_DEFINE_TAGS(TakeSamples, nodeClass, "Velm's Nodes/Surfacing")
VELM_DEFINE_NODE(TakeSamples, nodeClass)
VELM_DEFINE_PANEL(TakeSamples, nodeClass, parameters, layout)

} // namespace velm::plugin
