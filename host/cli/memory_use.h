// The memory of this process, in MiB.
#pragma once

namespace velm::host {

// What is in main memory now, pages shared with other processes included. [any thread]
double memoryInUse();

// The most that was in main memory at any time so far; of this process, or of one that read a file for it if that had
// more. [any thread]
double peakMemory();

} // namespace velm::host
