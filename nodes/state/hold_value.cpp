// Hold Value: when does this value stop changing? A sample-and-hold.
//
// Passes its input through, except while the chosen condition holds: then it keeps giving the value that it gave
// before. Here, unlike in Counter, each text names the condition under which the node holds. Each render thread holds a
// value of its own, which lasts from frame to frame until the next render starts. The first evaluation on a thread
// passes the input through in every mode.
//
// Odd on purpose, because scenes rely on it: the parameter is "Input" on the panel and "In" as an input; and the modes
// that compare A with B do not store A, so that after switching back to a change mode, A is compared with what was
// stored before.
#include "module/inputs.h"
#include "module/rows.h"
#include "module/servers.h"
#include "shading/compare.h"

#include <iterator>

namespace velm::plugin {
namespace {

NodeServices services;
constexpr int nodeColor[3] = {164, 50, 10};

struct HoldValue {
    int fresh[kMaxThreads]; // 1 until the thread's first evaluation
    double held[kMaxThreads];
    double lastA[kMaxThreads]; // "A" at the first evaluation, and then at each evaluation in the two change modes
    int mode;
    ScalarParameter passed, a, b;
};
struct Connections {
    HostOutput *out;
};

// The relations under which the node holds: of A to its last value, and then of A to B.
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

// "B" matters only in the modes that compare A with it.
constexpr EnableStates valueBEnableStates = {0, 0, 1, 1, 1, 1, 1, 1};

#define AT(field) offsetof(HoldValue, field)
constexpr Parameter parameters[] = {
    popup(AT(mode), "Mode", modeStrings).input(),
    number(AT(passed), "Input").starting(1.0).input("In"),
    number(AT(a), "A").input(),
    number(AT(b), "B").input(),
};

constexpr Output outputs[] = {{.name = "Out", .type = kConnectScalar, .field = offsetof(Connections, out)}};

using Instance = InstanceRecord<HoldValue, inputCount(parameters), Connections>;

#define ID(field) controlOf(parameters, AT(field))
constexpr auto layout = joinHints(enableHint(ID(mode), nullptr, &valueBEnableStates, ID(b)));

constexpr NodeClass nodeClass = {
    .name = "Hold Value",
    .colour = nodeColor,
    .previewType = kPreviewOff,
    .services = &services,
    .parameters = parameters,
    .outputs = outputs,
    .record = layoutOf<Instance>,
    .freshFlags = AT(fresh),
};

void HoldValue_Evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    const ParameterInputs<nodeClass> inputs(instance, sample);
    const int mode = inputs.choice<AT(mode)>(kModes);
    const double passed = inputs.read<AT(passed)>();
    const double a = inputs.read<AT(a)>();
    const double b = inputs.read<AT(b)>();

    auto &self = static_cast<Instance *>(instance)->fields;
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

} // namespace

VELM_DEFINE_TAGS(HoldValue, nodeClass, "Velm's Nodes/Math")
VELM_DEFINE_NODE(HoldValue, nodeClass)
VELM_DEFINE_PANEL(HoldValue, nodeClass, parameters, layout)

} // namespace velm::plugin
