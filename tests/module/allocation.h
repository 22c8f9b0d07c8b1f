// Observes the allocation of instances. The test program is linked with wrappers of calloc and free.
#pragma once

namespace velm::plugin {

// Makes the next call of calloc in this program return null.
void failNextAllocation();

// The last memory that calloc returned, and whether it has been freed since.
struct LastAllocation {
    void *memory;
    bool freed;
};
LastAllocation lastAllocation();

} // namespace velm::plugin
