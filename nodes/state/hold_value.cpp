// Hold Value: a sample-and-hold. Passes its input through, except while the chosen condition holds, when it keeps
// giving the value that it had before.
//
// Every render thread holds a value of its own, which lives on from frame to frame until the next render starts; the
// first evaluation on a thread passes the input through, whatever the mode. Here, unlike in Counter, each text names
// the condition under which the node holds.
//
// Odd on purpose: the parameter is "Input" on the panel and "In" as an input, as saved scenes have it; and the modes
// that compare A with B do not note A, so that switching back to a change mode compares with what was noted before.
#include "module/rows.h"
#include "module/servers.h"
#include "shading/compare.h"

#include <iterator>

namespace velm::plugin {

static NodeServices services;
static constexpr int nodeColor[3] = {164, 50, 10};

namespace {

struct HoldValue {
    int fresh[kMaxThreads]; // 1 until the thread's first evaluation
    double held[kMaxThreads];
    double lastA[kMaxThreads]; // "A" at the fresh start, and then at each evaluation in the two change modes
    int mode;
    ScalarParameter passed, a, b;
    HostChannelGroup *group;
    HostPanel *panel;
    HostNode *node;
    HostInput *modeInput, *in, *aInput, *bInput;
    HostOutput *out;
};

// How A compares with its last value, and then with B, where the node is to hold.
constexpr Relation changeHolds[] = {Relation::notEqual, Relation::equal};
constexpr Relation bHolds[] = {Relation::equal, Relation::notEqual,       Relation::greater,
                               Relation::less,  Relation::greaterOrEqual, Relation::lessOrEqual};
enum Mode { kFirstOfB = std::size(changeHolds), kModes = kFirstOfB + std::size(bHolds) };

constexpr const char *modeStrings[kModes + 1] = {
    "A Does Change",
    "A Does Not Change",
    "A Equal To B",
    "A Not Equal To B",
    "A Greater Than B",
    "A Less Than B",
    "A Greater Than Or Equal To B",
    "A Less Than Or Equal To B",
};

// "B" matters only to the modes that compare A with it.
constexpr EnableStates valueBEnableStates = {0, 0, 1, 1, 1, 1, 1, 1};

enum Control : unsigned int { kMode = kFirstControl, kInput, kA, kB };

#define AT(field) offsetof(HoldValue, field)
constexpr Parameter parameters[] = {
    popup(kMode, "Mode", modeStrings).at(AT(mode)).input(AT(modeInput)),
    number(kInput, "Input").at(AT(passed)).starting(1.0).input(AT(in), "In"),
    number(kA, "A").at(AT(a)).input(AT(aInput)),
    number(kB, "B").at(AT(b)).input(AT(bInput)),
};

constexpr Output outputs[] = {{.name = "Out", .type = kConnectScalar, .field = AT(out)}};

constexpr auto layout = joinHints(enableHint(kMode, nullptr, &valueBEnableStates, kB));

constexpr NodeClass nodeClass = {
    .name = "Hold Value",
    .size = sizeof(HoldValue),
    .colour = nodeColor,
    .previewType = kPreviewOff,
    .services = &services,
    .parameters = parameters,
    .outputs = outputs,
    .node = AT(node),
    .panel = AT(panel),
    .group = AT(group),
    .freshFlags = AT(fresh),
};
#undef AT

} // namespace

static void HoldValue_Evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    auto &self = *static_cast<HoldValue *>(instance);
    const Inputs inputs(services, sample);
    const int mode = inputs.readChoice(self.mode, self.modeInput, kModes);
    const double passed = inputs.read(self.passed, self.in);
    const double a = inputs.read(self.a, self.aInput);
    const double b = inputs.read(self.b, self.bInput);

    const int thread = sample->threadIndex;
    double &held = self.held[thread];
    double &lastA = self.lastA[thread];
    const bool comparesWithB = mode >= kFirstOfB;
    if (self.fresh[thread]) {
        self.fresh[thread] = 0;
        held = passed;
        lastA = a;
    } else {
        const bool holds =
            comparesWithB ? related(a, bHolds[mode - kFirstOfB], b) : related(a, changeHolds[mode], lastA);
        if (!holds) held = passed;
        if (!comparesWithB) lastA = a;
    }
    services.nodeOutputFunc->setValue(value, &held);
}

VELM_DEFINE_TAGS(HoldValue, nodeClass, "Velm's Nodes/Math")
VELM_DEFINE_NODE(HoldValue, nodeClass)
VELM_DEFINE_PANEL(HoldValue, nodeClass, parameters, layout)

} // namespace velm::plugin
