#include "host/render/order/noise_stream.h"

namespace velm::host {

void NoiseStream::place(std::uint32_t words) {
    network_.reset();
    network_.emplace("Random stream", restarter_);
    const HostNode &node = network_->root();
    if (node.outputs.empty()) return;
    ShadingSample sample{};
    for (std::uint32_t i = 0; i < words; ++i) {
        double drawn = 0;
        HostNodeValue value{.target = &drawn, .askingType = kConnectScalar, .outputType = kConnectScalar};
        node.evaluate(node.instance, &sample, node.outputs.front().get(), &value);
    }
}

} // namespace velm::host
