#include "host/check/feeder.h"

#include "host/services/services.h"

#include <algorithm>
#include <cstddef>

namespace velm::host {

namespace {

constexpr char kOrigin[] = "checks", kName[] = "Check Feeder";

double fedNumber = 0;
int fedWhole = 0;

void *create(void *, void *node, const char **) {
    for (int type = kConnectColour; type <= kConnectMaterial; ++type)
        createOutput(*static_cast<HostNode *>(node), type, typeName(type));
    return node;
}

void destroy(void *) {}

void evaluate(void *, ShadingSample *, HostOutput *output, HostNodeValue *value) {
    double numbers[sizeof(HostMaterial) / sizeof(double)];
    std::fill(std::begin(numbers), std::end(numbers), fedNumber);
    const void *result = numbers;
    if (output->type == kConnectInteger) result = &fedWhole;
    nodeOutputFuncs()->setValue(value, result);
}

int activate(int, HostLookup *, void *local, void *) {
    auto *handler = static_cast<HostNodeHandler *>(local);
    handler->instance->create = create;
    handler->instance->destroy = destroy;
    handler->evaluate = evaluate;
    return kActivateOk;
}

constexpr HostServer kServers[] = {{HOST_CLASS_NODE_HANDLER, kName, activate, nullptr},
                                   {nullptr, nullptr, nullptr, nullptr}};

} // namespace

void feed(double number, int whole) {
    fedNumber = number;
    fedWhole = whole;
}

HostNode &addFeeder(Network &editor) {
    if (!serverList().find(kName)) serverList().add(kServers, kOrigin);
    return editor.addNode(serverList().get(kName));
}

HostOutput &feederFor(HostNode &feeder, const HostInput &input) {
    return **std::find_if(feeder.outputs.begin(), feeder.outputs.end(),
                          [&](const auto &output) { return output->type == input.type; });
}

} // namespace velm::host
