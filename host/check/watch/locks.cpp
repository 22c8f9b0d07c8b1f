#include "host/check/watch/locks.h"

#include <cxxabi.h>
#include <pthread.h>

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <threads.h>

namespace velm::host {

namespace {

constexpr std::size_t kMostLocks = 16; // held by one thread; any further ones are not followed
thread_local const volatile void *locks[kMostLocks];
thread_local std::size_t held = 0;

void note(const volatile void *lock) {
    if (held < kMostLocks) locks[held++] = lock;
}

// A lock that was not noted, such as a read lock, is none to forget.
void forget(const volatile void *lock) {
    const volatile void **end = locks + held;
    if (const volatile void **found = std::find(locks, end, lock); found != end) *found = locks[--held];
}

// Calls the function that takes a lock. The lock counts as held before, since that function writes to it.
template <auto take, class Lock, class... More>
int watchedTake(Lock *lock, More... more) {
    note(lock);
    const int result = take(lock, more...);
    if (result != 0) forget(lock);
    return result;
}

template <auto release, class Lock>
int watchedRelease(Lock *lock) {
    const int result = release(lock);
    forget(lock);
    return result;
}

class Held {
  public:
    explicit Held(const void *lock) : lock_(lock) { note(lock); }
    ~Held() { forget(lock_); }
    Held(const Held &) = delete;
    Held &operator=(const Held &) = delete;

  private:
    const void *lock_;
};

int watchedOnce(pthread_once_t *once, void (*initialise)()) {
    const Held lock(once);
    return pthread_once(once, initialise);
}
void watchedCallOnce(once_flag *once, void (*initialise)()) {
    const Held lock(once);
    call_once(once, initialise);
}

// The initialisation of a local static variable of C++.
int watchedGuardAcquire(abi::__guard *guard) {
    note(guard);
    const int isOwn = abi::__cxa_guard_acquire(guard);
    if (isOwn == 0) forget(guard);
    return isOwn;
}
void watchedGuardRelease(abi::__guard *guard) {
    abi::__cxa_guard_release(guard);
    forget(guard);
}
void watchedGuardAbort(abi::__guard *guard) {
    abi::__cxa_guard_abort(guard);
    forget(guard);
}

const Import kLockImports[] = {
    import("pthread_mutex_lock", watchedTake<pthread_mutex_lock, pthread_mutex_t>),
    import("pthread_mutex_trylock", watchedTake<pthread_mutex_trylock, pthread_mutex_t>),
    import("pthread_mutex_timedlock", watchedTake<pthread_mutex_timedlock, pthread_mutex_t, const timespec *>),
    import("pthread_mutex_unlock", watchedRelease<pthread_mutex_unlock, pthread_mutex_t>),
    import("pthread_rwlock_wrlock", watchedTake<pthread_rwlock_wrlock, pthread_rwlock_t>),
    import("pthread_rwlock_trywrlock", watchedTake<pthread_rwlock_trywrlock, pthread_rwlock_t>),
    import("pthread_rwlock_unlock", watchedRelease<pthread_rwlock_unlock, pthread_rwlock_t>),
    import("pthread_spin_lock", watchedTake<pthread_spin_lock, pthread_spinlock_t>),
    import("pthread_spin_trylock", watchedTake<pthread_spin_trylock, pthread_spinlock_t>),
    import("pthread_spin_unlock", watchedRelease<pthread_spin_unlock, pthread_spinlock_t>),
    import("mtx_lock", watchedTake<mtx_lock, mtx_t>),
    import("mtx_trylock", watchedTake<mtx_trylock, mtx_t>),
    import("mtx_unlock", watchedRelease<mtx_unlock, mtx_t>),
    import("pthread_once", watchedOnce),
    import("call_once", watchedCallOnce),
    import("__cxa_guard_acquire", watchedGuardAcquire),
    import("__cxa_guard_release", watchedGuardRelease),
    import("__cxa_guard_abort", watchedGuardAbort),
};

} // namespace

bool holdsLock() { return held > 0; }

std::span<const Import> lockImports() { return kLockImports; }

} // namespace velm::host
