// Which thread may call what. The tags in the plug-in interface's headers state it; debug builds assert it, by a role
// that each thread has. A thread starts with the interface role. The render controller has its role while a render
// runs, and each render thread while it evaluates samples.
#pragma once

#ifndef NDEBUG
#include <atomic>
#include <cassert>
#endif

namespace velm::host {

enum class ThreadRole { interface, controller, render };

#ifndef NDEBUG

namespace detail {
inline constinit thread_local ThreadRole threadRole = ThreadRole::interface;
inline constinit std::atomic<int> controllers = 0;   // renders that are running
inline constinit std::atomic<int> renderThreads = 0; // threads that may be evaluating samples
} // namespace detail

// Gives the calling thread a role until the end of the scope.
class RoleScope {
  public:
    explicit RoleScope(ThreadRole role) : previous_(detail::threadRole), role_(role) {
        detail::threadRole = role;
        count(role, 1);
    }
    ~RoleScope() {
        count(role_, -1);
        detail::threadRole = previous_;
    }
    RoleScope(const RoleScope &) = delete;
    RoleScope &operator=(const RoleScope &) = delete;

  private:
    static void count(ThreadRole role, int change) {
        if (role == ThreadRole::controller) detail::controllers += change;
        if (role == ThreadRole::render) detail::renderThreads += change;
    }
    ThreadRole previous_, role_;
};

// [interface thread]
inline void assertInterfaceThread() {
    assert(detail::threadRole == ThreadRole::interface && "for the interface thread");
}

// [interface thread; not while rendering]
inline void assertInterface() {
    assertInterfaceThread();
    assert(detail::controllers == 0 && detail::renderThreads == 0 && "not while rendering");
}

// [between frames]: the controller, or the interface thread where nothing is being rendered.
inline void assertBetweenFrames() {
    assert(detail::threadRole != ThreadRole::render && "not for render threads");
    assert(detail::renderThreads == 0 && "not while samples are being evaluated");
    if (detail::threadRole == ThreadRole::interface) assertInterface();
}

// [render threads]: also the interface thread, which evaluates the samples of previews itself.
inline void assertRender() { assert(detail::threadRole != ThreadRole::controller && "the controller shades nothing"); }

#else

class RoleScope {
  public:
    explicit RoleScope(ThreadRole) {}
    ~RoleScope() {} // user-provided, so that compilers do not warn of an unused variable
    RoleScope(const RoleScope &) = delete;
    RoleScope &operator=(const RoleScope &) = delete;
};

inline void assertInterfaceThread() {}
inline void assertInterface() {}
inline void assertBetweenFrames() {}
inline void assertRender() {}

#endif

} // namespace velm::host
