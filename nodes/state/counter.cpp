// Counter: how many times has this node been asked for its value?
//
// Gives a count that grows by "Increase Value" at each evaluation, and returns to "Start Value" when the chosen
// condition holds. It counts evaluations, not pixels or frames: a network that reads "Out" twice in one sample advances
// the count twice. Each render thread has a count of its own, so that no thread waits for another, and the counts go on
// from frame to frame until the next render starts.
//
// Odd on purpose, because scenes rely on it: "A Does Change" resets the count while A stays the same, and "A Does Not
// Change" resets it when A changes. All other texts say when the count is reset. The first evaluation on a thread gives
// the start value in every mode.
#include "module/inputs.h"
#include "module/rows.h"
#include "module/servers.h"
#include "shading/compare.h"

#include <iterator>

namespace velm::plugin {
namespace {

NodeServices services;
constexpr int nodeColor[3] = {164, 50, 10};

struct Counter {
    int fresh[kMaxThreads]; // 1 until the thread's first evaluation
    double count[kMaxThreads];
    double lastA[kMaxThreads]; // "A" at the first evaluation, and then at each evaluation in the two change modes
    int mode;
    ScalarParameter start, increase, a, b;
};
struct Connections {
    HostOutput *out;
};

// The modes compare the count with A, or A with its last value, or A with B. These are the relations that reset the
// count in the first and the third group; the two change modes lie between them.
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

// "B" matters only in the modes that compare A with it.
constexpr EnableStates valueBEnableStates = {0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1};

#define AT(field) offsetof(Counter, field)
constexpr Parameter parameters[] = {
    popup(AT(mode), "Mode", modeStrings).input(),
    number(AT(start), "Start Value").input(),
    number(AT(increase), "Increase Value").starting(1.0).input(),
    number(AT(a), "A").input(),
    number(AT(b), "B").input(),
};

constexpr Output outputs[] = {{.name = "Out", .type = kConnectScalar, .field = offsetof(Connections, out)}};

using Instance = InstanceRecord<Counter, inputCount(parameters), Connections>;

#define ID(field) controlOf(parameters, AT(field))
constexpr auto layout = joinHints(enableHint(ID(mode), nullptr, &valueBEnableStates, ID(b)));

constexpr NodeClass nodeClass = {
    .name = "Counter",
    .colour = nodeColor,
    .previewType = kPreviewOff,
    .services = &services,
    .parameters = parameters,
    .outputs = outputs,
    .record = layoutOf<Instance>,
    .freshFlags = AT(fresh),
};

// Whether the count returns to its start value. The two change modes do the opposite of what their texts say.
bool resets(int mode, double count, double a, double b, double lastA) {
    if (mode < kAChanges) return related(count, countResets[mode], a);
    if (mode == kAChanges) return related(a, Relation::equal, lastA);
    if (mode == kADoesNotChange) return related(a, Relation::notEqual, lastA);
    return related(a, bResets[mode - kFirstOfB], b);
}

void Counter_Evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    const ParameterInputs<nodeClass> inputs(instance, sample);
    const int mode = inputs.choice<AT(mode)>(kModes);
    const double start = inputs.read<AT(start)>();
    const double increase = inputs.read<AT(increase)>();
    const double a = inputs.read<AT(a)>();
    const double b = inputs.read<AT(b)>();

    auto &self = static_cast<Instance *>(instance)->fields;
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

} // namespace

VELM_DEFINE_TAGS(Counter, nodeClass, "Velm's Nodes/Math")
VELM_DEFINE_NODE(Counter, nodeClass)
VELM_DEFINE_PANEL(Counter, nodeClass, parameters, layout)

} // namespace velm::plugin
