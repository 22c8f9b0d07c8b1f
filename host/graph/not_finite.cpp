#include "host/graph/not_finite.h"

#include <algorithm>
#include <cmath>

namespace velm::host {
namespace {

bool getsFiniteValue(const HostInput &input, ShadingSample *sample) {
    HostMaterial value{}; // the largest of the values; it begins with a colour
    if (!evaluateInput(&input, sample, &value) || input.type == kConnectInteger) return true;
    const auto *numbers = reinterpret_cast<const double *>(&value);
    const int count = input.type == kConnectScalar || input.type == kConnectFunction ? 1 : 3;
    return std::all_of(numbers, numbers + count, [](double number) { return std::isfinite(number); });
}

} // namespace

const HostNode *sourceOfNotFinite(const HostInput &input, ShadingSample *sample) {
    if (getsFiniteValue(input, sample)) return nullptr;
    const HostNode *node = input.source->node;
    for (const HostNode *before = node; before;) {
        const auto found = std::ranges::find_if(
            node->inputs, [&](const auto &each) { return each->source && !getsFiniteValue(*each, sample); });
        before = found == node->inputs.end() ? nullptr : (*found)->source->node;
        if (before) node = before;
    }
    return node;
}

} // namespace velm::host
