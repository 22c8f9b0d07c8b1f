// Watches a loaded module's calls to the system's libraries: malloc, fopen, pthread_create and so on are redirected to
// functions that count them and can make a chosen allocation fail, and those that take locks to functions that follow
// them (locks.h). The redirection replaces entries of the module's own
// import tables, so calls that the C++ library makes on the module's behalf are not seen.
#pragma once

#include <cstddef>

namespace velm::host {

enum class ImportKind { memory, file, thread, environment };
constexpr int kImportKinds = 4;

const char *importKindName(ImportKind kind); // for messages: "memory", "a file", ...

// Redirects the imports of the shared object that contains the address `inside` and returns the number of redirected
// entries. Lasts until the object is unloaded. [interface thread]
int watchImports(const void *inside);

struct MemoryInUse {
    long blocks, bytes;
};

// The heap memory that the watched module has allocated and not freed. [any thread]
MemoryInUse moduleMemory();

// The number of watched calls of a kind that the calling thread has made since it started.
long importCalls(ImportKind kind);
// The function of the last such call, "calloc"; empty if there was none.
const char *lastImport(ImportKind kind);

// Makes the calling thread's n-th allocation from now on (counted from 0) fail with a null pointer; a negative number
// makes none fail.
void failAllocation(long number);
// Whether that allocation has been requested since the last call of failAllocation on this thread.
bool allocationFailed();

} // namespace velm::host
