// The services that the host offers to plug-ins, and the lookup function that it hands to their servers.
//
// This is the one registry of services. It knows no service itself: each room that provides some describes them in a
// table of `Service` rows and offers the table once, before the first plug-in is activated.
#pragma once

#include "module/host.h"

#include <span>

namespace velm::host {

struct Service {
    const char *name; // as plug-ins ask for it
    void *(*give)();  // the service's table, function or word; see tableService and functionService
};

// A service that is a table of functions, which `table` gives. The lookup's type predates const; plug-ins do not write
// to what they get.
template <const auto *(*table)()>
void *tableService() {
    return const_cast<void *>(static_cast<const void *>(table()));
}

// A service that is a single function, which `function` gives.
template <auto *(*function)()>
void *functionService() {
    return reinterpret_cast<void *>(function());
}

// Adds services to the registry. A service that is offered again replaces the earlier one of that name. The rows have
// to outlive the program's last lookup. [interface thread; not while rendering]
void offerServices(std::span<const Service> services);

// The lookup function that servers are activated with: a service by its name, or null when the host does not offer it.
// [any thread from which the host calls a plug-in]
void *lookup(const char *service, int use);

// The service that the calling thread looked up in vain since it last called clearMissingService; null for none.
const char *lastMissingService();
void clearMissingService();

} // namespace velm::host
