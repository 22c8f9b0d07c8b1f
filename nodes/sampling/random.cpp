// Random: a fresh uniform random number between two bounds, both included, each time it is evaluated.
//
// All numbers come from the module's one stream. Odd on purpose: creating a node restarts the stream from a fixed seed,
// for every user of it, so that a scene opened afresh renders the same again; and bounds the wrong way round are no
// mistake, but give the numbers between them.
#include "random/random.h"
#include "module/rows.h"
#include "module/servers.h"

namespace velm::plugin {

static NodeServices services;
static constexpr int nodeColor[3] = {164, 50, 10};

namespace {

struct Random {
    ScalarParameter min, max;
    HostChannelGroup *group;
    HostPanel *panel;
    HostNode *node;
    HostInput *minInput, *maxInput;
    HostOutput *output;
};

enum Control : unsigned int { kMin = kFirstControl, kMax };

#define AT(field) offsetof(Random, field)
constexpr Parameter parameters[] = {
    number(kMin, "Min").at(AT(min)).input(AT(minInput)),
    number(kMax, "Max").at(AT(max)).starting(1.0).input(AT(maxInput)),
};

constexpr Output outputs[] = {{.name = "Out", .type = kConnectScalar, .field = AT(output)}};

const char *restartRandomStream(void *, void *) {
    init_genrand(kCreationSeed);
    return nullptr;
}

constexpr NodeClass nodeClass = {
    .name = "Random",
    .size = sizeof(Random),
    .colour = nodeColor,
    .previewType = kPreviewOff,
    .services = &services,
    .parameters = parameters,
    .outputs = outputs,
    .node = AT(node),
    .panel = AT(panel),
    .group = AT(group),
    .prepare = restartRandomStream,
};
#undef AT

} // namespace

static void Random_Evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    const auto &self = *static_cast<const Random *>(instance);
    const Inputs inputs(services, sample);
    const double low = inputs.read(self.min, self.minInput);
    const double high = inputs.read(self.max, self.maxInput);
    const double result = low + (high - low) * genrand_real1();
    services.nodeOutputFunc->setValue(value, &result);
}

VELM_DEFINE_TAGS(Random, nodeClass, "Velm's Nodes/Math")
VELM_DEFINE_NODE(Random, nodeClass)
VELM_DEFINE_PANEL(Random, nodeClass, parameters, kPlainLayout)

} // namespace velm::plugin
