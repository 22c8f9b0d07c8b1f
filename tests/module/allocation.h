// The allocations of instances, watched: the test program wraps calloc and free.
#pragma once

namespace velm::plugin {

// Makes the next calloc of this program give null.
void failNextAllocation();

// What calloc gave last, and whether it has been freed since.
struct LastAllocation {
    void *memory;
    bool freed;
};
LastAllocation lastAllocation();

} // namespace velm::plugin
