// The memory of this process, in MiB.
#pragma once

namespace velm::host {

// What is in main memory now, pages shared with other processes included. [any thread]
double memoryInUse();

// The most that was in main memory at any time so far. [any thread]
double peakMemory();

} // namespace velm::host
