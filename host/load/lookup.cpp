#include "host/load/lookup.h"

#include "host/base/thread_role.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

namespace {

std::vector<Service> &registry() {
    static std::vector<Service> services;
    return services;
}

auto findService(std::string_view name) {
    return std::ranges::find_if(registry(), [&](const Service &one) { return name == one.name; });
}

thread_local std::string missing;

} // namespace

void offerServices(std::span<const Service> services) {
    assertInterface();
    for (const Service &service : services) {
        const auto known = findService(service.name);
        if (known == registry().end())
            registry().push_back(service);
        else
            *known = service;
    }
}

void *lookup(const char *service, int) {
    const std::string_view wanted = service ? service : "";
    if (const auto found = findService(wanted); found != registry().end()) return found->give();
    missing = wanted;
    return nullptr;
}

const char *lastMissingService() { return missing.empty() ? nullptr : missing.c_str(); }

void clearMissingService() { missing.clear(); }

} // namespace velm::host
