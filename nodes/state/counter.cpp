// Counter: "how many times has this been asked?"
//
// A running count that grows by "Increase Value" each time the node is evaluated on a render thread, and falls back to
// "Start Value" when the chosen condition holds. It counts evaluations, not pixels or frames: whoever reads "Out" twice
// in one sample advances it twice. Every render thread counts for itself, so that no thread waits for another, and the
// counts go on from frame to frame until the next render starts.
//
// Odd on purpose, because scenes rely on it: "A Does Change" resets while A stays the *same*, and "A Does Not Change"
// resets when A changes. The other texts say when the counter is reset. The first evaluation on a thread always gives
// the start value, whatever the mode.
#include "module/rows.h"
#include "module/servers.h"
#include "shading/compare.h"

#include <iterator>

namespace velm::plugin {

static NodeServices services;
static constexpr int nodeColor[3] = {164, 50, 10};

namespace {

struct Counter {
    int fresh[kMaxThreads]; // 1 until the thread's first evaluation
    double count[kMaxThreads];
    double lastA[kMaxThreads]; // "A" at the fresh start, and then at each evaluation in the two change modes
    int mode;
    ScalarParameter start, increase, a, b;
    HostChannelGroup *group;
    HostPanel *panel;
    HostNode *node;
    HostInput *modeInput, *startInput, *increaseInput, *aInput, *bInput;
    HostOutput *out;
};

// How the count compares with A, and then A with B, where the counter is to reset. The two change modes lie between.
constexpr Relation countResets[] = {Relation::equal, Relation::greater, Relation::less, Relation::greaterOrEqual,
                                    Relation::lessOrEqual};
constexpr Relation bResets[] = {Relation::equal, Relation::notEqual,       Relation::greater,
                                Relation::less,  Relation::greaterOrEqual, Relation::lessOrEqual};
enum Mode { kAChanges = std::size(countResets), kADoesNotChange, kFirstOfB, kModes = kFirstOfB + std::size(bResets) };

constexpr const char *modeStrings[kModes + 1] = {
    "Counter Equal To A",
    "Counter Greater Than A",
    "Counter Less Than A",
    "Counter Greater Than Or Equal To A",
    "Counter Less Than Or Equal To A",
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
constexpr EnableStates valueBEnableStates = {0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1};

enum Control : unsigned int { kMode = kFirstControl, kStart, kIncrease, kA, kB };

#define AT(field) offsetof(Counter, field)
constexpr Parameter parameters[] = {
    popup(kMode, "Mode", modeStrings).at(AT(mode)).input(AT(modeInput)),
    number(kStart, "Start Value").at(AT(start)).input(AT(startInput)),
    number(kIncrease, "Increase Value").at(AT(increase)).starting(1.0).input(AT(increaseInput)),
    number(kA, "A").at(AT(a)).input(AT(aInput)),
    number(kB, "B").at(AT(b)).input(AT(bInput)),
};

constexpr Output outputs[] = {{.name = "Out", .type = kConnectScalar, .field = AT(out)}};

constexpr auto layout = joinHints(enableHint(kMode, nullptr, &valueBEnableStates, kB));

constexpr NodeClass nodeClass = {
    .name = "Counter",
    .size = sizeof(Counter),
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

// Whether the counter falls back to its start value. The two change modes are the reverse of what their texts say.
bool resets(int mode, double count, double a, double b, double lastA) {
    if (mode < kAChanges) return related(count, countResets[mode], a);
    if (mode == kAChanges) return related(a, Relation::equal, lastA);
    if (mode == kADoesNotChange) return related(a, Relation::notEqual, lastA);
    return related(a, bResets[mode - kFirstOfB], b);
}

} // namespace

static void Counter_Evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    auto &self = *static_cast<Counter *>(instance);
    const Inputs inputs(services, sample);
    const int mode = inputs.readChoice(self.mode, self.modeInput, kModes);
    const double start = inputs.read(self.start, self.startInput);
    const double increase = inputs.read(self.increase, self.increaseInput);
    const double a = inputs.read(self.a, self.aInput);
    const double b = inputs.read(self.b, self.bInput);

    const int thread = sample->threadIndex;
    double &count = self.count[thread];
    count += increase;
    if (self.fresh[thread]) {
        self.fresh[thread] = 0;
        count = start;
        self.lastA[thread] = a;
    } else {
        if (resets(mode, count, a, b, self.lastA[thread])) count = start;
        if (mode == kAChanges || mode == kADoesNotChange) self.lastA[thread] = a;
    }
    services.nodeOutputFunc->setValue(value, &count);
}

VELM_DEFINE_TAGS(Counter, nodeClass, "Velm's Nodes/Math")
VELM_DEFINE_NODE(Counter, nodeClass)
VELM_DEFINE_PANEL(Counter, nodeClass, parameters, layout)

} // namespace velm::plugin
