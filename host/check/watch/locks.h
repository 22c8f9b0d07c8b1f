// Follows the locks that a watched module takes: mutexes, write locks and spin locks of POSIX, mutexes of C, and what
// guards an initialisation that happens once.
#pragma once

#include "host/check/watch/import.h"

#include <span>

namespace velm::host {

// Whether the calling thread holds such a lock. Locks are followed from watchImports() on. [any thread]
bool holdsLock();

// The imports that take and release locks, for watchImports(). They live as long as the program. [any thread]
std::span<const Import> lockImports();

} // namespace velm::host
