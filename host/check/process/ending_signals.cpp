#include "host/check/process/ending_signals.h"

#include "host/base/error.h"

#include <unistd.h>

#include <algorithm>

namespace velm::host {

EndingSignals::EndingSignals() : descriptor_(signals_.openDescriptor()) {
    if (descriptor_ < 0) throw MachineError("cannot wait for signals");
}

EndingSignals::~EndingSignals() { close(descriptor_); }

void EndingSignals::wait(std::vector<pollfd> &descriptors, std::chrono::steady_clock::time_point deadline) const {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    descriptors.push_back({.fd = descriptor_, .events = POLLIN, .revents = 0});
    poll(descriptors.data(), descriptors.size(), static_cast<int>(std::max<long>(0, left.count())));
    descriptors.pop_back();
    while (const auto signal = signals_.next(0))
        if (signal->si_signo != SIGCHLD) throw EndingSignal{signal->si_signo};
}

} // namespace velm::host
