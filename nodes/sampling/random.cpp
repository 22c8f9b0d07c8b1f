// Random: a new random number between two bounds at each evaluation. The numbers are uniform, and both bounds are among
// them.
//
// All numbers come from the module's one random stream. Odd on purpose: creating this node restarts the stream from a
// fixed seed, for all nodes that use it, so that a newly opened scene always renders the same; and bounds in the wrong
// order are no error, but give the numbers between them.
#include "random/random.h"
#include "module/inputs.h"
#include "module/rows.h"
#include "module/servers.h"

namespace velm::plugin {
namespace {

NodeServices services;
constexpr int nodeColor[3] = {164, 50, 10};

struct Random {
    ScalarParameter min, max;
};
struct Connections {
    HostOutput *output;
};

#define AT(field) offsetof(Random, field)
constexpr Parameter parameters[] = {
    number(AT(min), "Min").input(),
    number(AT(max), "Max").starting(1.0).input(),
};

constexpr Output outputs[] = {{.name = "Out", .type = kConnectScalar, .field = offsetof(Connections, output)}};

using Instance = InstanceRecord<Random, inputCount(parameters), Connections>;

const char *restartRandomStream(void *, void *) {
    init_genrand(kCreationSeed);
    return nullptr;
}

constexpr NodeClass nodeClass = {
    .name = "Random",
    .colour = nodeColor,
    .previewType = kPreviewOff,
    .services = &services,
    .parameters = parameters,
    .outputs = outputs,
    .record = layoutOf<Instance>,
    .prepare = restartRandomStream,
};

void Random_Evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    const ParameterInputs<nodeClass> inputs(instance, sample);
    const double low = inputs.read<AT(min)>();
    const double high = inputs.read<AT(max)>();
    const double result = low + (high - low) * genrand_real1();
    services.nodeOutputFunc->setValue(value, &result);
}

} // namespace

VELM_DEFINE_TAGS(Random, nodeClass, "Velm's Nodes/Math")
VELM_DEFINE_NODE(Random, nodeClass)
VELM_DEFINE_PANEL(Random, nodeClass, parameters, kPlainLayout)

} // namespace velm::plugin
