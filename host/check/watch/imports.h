// What a loaded module asks of the system's libraries: its calls of malloc, fopen, pthread_create and so on are led
// through functions of ours, which count them and can let a chosen one fail. Only the module's own calls are seen, by
// the entries of its tables of imported functions; what the C++ library asks for on its behalf is not.
#pragma once

#include <cstddef>

namespace velm::host {

enum class ImportKind { memory, file, thread, environment };
constexpr int kImportKinds = 4;

const char *importKindName(ImportKind kind);

// Leads the imports of the shared object that holds `inside` through here. Gives how many entries were changed.
// Undone by unloading. [interface thread]
int watchImports(const void *inside);

struct MemoryInUse {
    long blocks, bytes;
};

// What the watched module holds of the heap.
MemoryInUse moduleMemory();

// Calls of a kind by the calling thread since it started.
long importCalls(ImportKind kind);
// The name of the last one, "calloc"; empty when there was none.
const char *lastImport(ImportKind kind);

// Lets the n-th request for memory by the calling thread from now on (from 0) be answered with null; below 0, none.
void failAllocation(long number);
// Whether that has happened.
bool allocationFailed();

} // namespace velm::host
