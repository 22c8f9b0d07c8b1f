// The faults of the mutants. A build selects one by defining FAULT as its name, or by a macro of its own where the
// other builds must not even compile it. Without a fault, every function here does nothing or returns its argument.
#pragma once

#include "module/host.h"

#include "tests/mutants/processes.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>
#include <xmmintrin.h>

#include <atomic>
#include <clocale>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#ifndef FAULT
#define FAULT kNone
#endif

namespace faults {

enum Fault {
    kNone,
    // As a file
    kCrashesAtLoad,
    kRefusesBlanks,
    kFlushesToZeroAtStart,
    kLeavesFileOpen,
    kLeaksAtStart,
    // In the server table and activation
    kTwoOfAName,
    kNamedByAddress,
    kTakesAnyVersion,
    kFillsBeforeRefusing,
    kWrongRefusal,
    kFillsWithoutServices,
    kFillsInTurns,
    kTouchesItems,
    // In the life of instances
    kLeaksInstance,
    kLeaksParameter,
    kSetsColourWhileRendering,
    kDestroysTwice,
    kCallsFromOwnThread,
    kHangsInNewTime,
    kNamesInTurns,
    kSharedByAll,
    // In evaluation
    kSetsNothing,
    kSetsOther,
    kWritesSample,
    kReadsBeyondSample,
    kGivesNan,
    kRemembersOthers,
    kChangesRounding,
    kSetsLocale,
    kOpensFile,
    kStartsThread,
    kAllocates,
    kExits,
    kEndsItsThread,
    kLeavesProcesses,
    kOverwritesRecord,
    // In settings
    kForgetsMode,
    kSavesProcess,
    kChangesOnSave,
    kTiesCopies,
    kChangesOriginal,
    kKeepsOldMode,
    kFollowsLocale,
    kTrustsLength,
    kChangesOnRead,
    // With threads
    kCountsForAll,
    kKnowsOneInstance,
    kNeedsItsThread,
    kFillsLate,
    kForgetsWithOthers,
    kCountsForNobody,
    kCountsProperly, // no fault
    // With odd inputs
    kTrustsMode,
    kTrustsSettings,
    kTrustsNumbers,
    kTrustsRays,
    kTrustsInputs,
    kTrustsTime,
    // With damaged data
    kTrustsData,
    kTrustsText,
    kReadsOn,
    kTrustsBlocks,
    // With little memory, and in long runs
    kLeavesNoMessage,
    kNeedsRoomToCopy,
    kGrowsByFrame,
    kGrowsByLoad,
    kGrowsByStart,
    // Only in sequences of calls
    kReadsOriginal,
    kKeepsModeOnceCopied,
    kCountsStarts,
    kEndsForAll,
};

constexpr bool is(Fault fault) { return FAULT == fault; }

inline int counted = 0; // whatever the fault counts

[[noreturn]] inline void crash() {
    std::raise(SIGSEGV);
    std::abort();
}

// Leaks memory where the fault does.
inline void grow(Fault fault) {
    if (FAULT == fault) *static_cast<volatile char *>(std::malloc(10)) = 0;
}

// ---- As a file ------------------------------------------------------------------------------------------------------

inline void *started() {
    Dl_info info;
    if (is(kRefusesBlanks) && dladdr(&counted, &info) && std::strchr(info.dli_fname, ' ')) return nullptr;
    if (is(kFlushesToZeroAtStart)) _mm_setcsr(_mm_getcsr() | _MM_FLUSH_ZERO_ON);
    if (is(kLeavesFileOpen)) static_cast<void>(open("/dev/null", O_RDONLY));
    if (is(kLeaksAtStart)) *static_cast<volatile char *>(std::malloc(100)) = 0;
    return &counted;
}

struct AtLoad {
    AtLoad() {
        if (is(kCrashesAtLoad)) crash();
    }
};
inline const AtLoad atLoad;

// ---- In the server table and activation -----------------------------------------------------------------------------

constexpr const char *secondName(const char *right) { return is(kTwoOfAName) ? "Mutant Sum" : right; }

inline const char *displayName(const char *right) {
    static char text[32];
    if (!is(kNamedByAddress)) return right;
    std::snprintf(text, sizeof text, "Sum at %p", static_cast<void *>(&counted));
    return text;
}

template <class Evaluate>
void activating(HostNodeHandler *handler, Evaluate *evaluate) {
    if (is(kFillsBeforeRefusing)) handler->evaluate = evaluate;
}

constexpr bool takesAnyVersion() { return is(kTakesAnyVersion); }

template <class Evaluate>
int withoutService(int right, HostNodeHandler *handler, Evaluate *evaluate) {
    if (is(kFillsWithoutServices)) handler->evaluate = evaluate;
    return is(kWrongRefusal) ? int{kActivateBadLocal} : right;
}

inline unsigned int someFlags(void *) { return 0; }
inline void activated(HostNodeHandler *handler) {
    if (is(kFillsInTurns)) handler->flags = ++counted % 2 == 0 ? someFlags : nullptr;
    if (is(kTouchesItems) && handler->item) handler->item->changeName = nullptr;
}

// ---- In the life of instances ---------------------------------------------------------------------------------------

inline void *newest = nullptr;

inline const char *outputName(const char *right) { return is(kNamesInTurns) && ++counted % 2 == 0 ? "Other" : right; }
inline int generation = 0; // counts the events after which the fault resets its per-thread state
inline void created(void *instance) {
    newest = instance;
    if (is(kForgetsWithOthers)) ++generation;
}
inline void destroyed() { newest = nullptr; }
constexpr bool keepsInstance() { return is(kLeaksInstance); }

constexpr const char *message(const char *right) { return is(kLeavesNoMessage) ? nullptr : right; }
constexpr int destructions() { return is(kLeaksParameter) ? 0 : is(kDestroysTwice) ? 2 : 1; }

inline double lastTime = 0;

inline void newTime(double time) {
    if (is(kTrustsTime) && time < lastTime) crash();
    lastTime = time;
    grow(kGrowsByFrame);
#ifdef THROWS
    throw 1;
#endif
    if (is(kSharedByAll) && !newest) crash();
    while (is(kHangsInNewTime)) pause();
}

// ---- In evaluation --------------------------------------------------------------------------------------------------

struct Painted {
    const HostNodeFuncs *nodes;
    HostNode *node;
};

inline void *paint(void *painted) {
    const auto *what = static_cast<const Painted *>(painted);
    what->nodes->setColourRgb(what->node, 1, 2, 3);
    return nullptr;
}

inline void onThread(void *(*work)(void *), void *argument) {
    pthread_t thread;
    if (pthread_create(&thread, nullptr, work, argument) == 0) pthread_join(thread, nullptr);
}

inline void *nothing(void *argument) { return argument; }

// ---- With threads ---------------------------------------------------------------------------------------------------

inline int countForAll = 0;
inline const void *lastInstance = nullptr; // the one evaluated last, on any thread
inline volatile int filled = 0; // state of a table that is filled on first use: 1 while it is being filled, then 2
inline pthread_t owners[kMaxThreads];
inline bool owned[kMaxThreads];

inline volatile int countForNobody = 0; // no result depends on it

// What threads may share: what a lock or an atomic instruction guards, what is made once, and a place for each thread.
inline void countProperly(int thread) {
    static pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    static pthread_once_t once = PTHREAD_ONCE_INIT;
    static volatile int guarded, made, byThread[kMaxThreads];
    static std::atomic<int> counter, latest;
    static const volatile int first = thread;
    pthread_mutex_lock(&mutex);
    guarded = guarded + first;
    pthread_mutex_unlock(&mutex);
    pthread_once(&once, [] { made = 1; });
    ++counter;
    latest = thread;
    byThread[thread] = byThread[thread] + made;
}

// Whether a thread has not yet evaluated a sample.
inline int isFresh(int right, int thread) {
    static int known[kMaxThreads];
    const bool isOld = (is(kForgetsWithOthers) || is(kEndsForAll)) && known[thread] != generation;
    known[thread] = generation;
    return isOld ? 1 : right;
}

inline double withThreads(double right, const void *instance, int thread) {
    if (is(kCountsForAll)) return right + ++countForAll;
    if (is(kCountsForNobody)) countForNobody = countForNobody + 1;
    if constexpr (is(kCountsProperly)) countProperly(thread);
    if (is(kKnowsOneInstance)) {
        const bool isKnown = !lastInstance || lastInstance == instance;
        lastInstance = instance;
        return isKnown ? right : 0;
    }
    if (is(kFillsLate) && filled != 2) {
        if (filled == 1) crash(); // another thread is filling it
        filled = 1;
        for (int i = 0; i < 20; ++i) sched_yield();
        filled = 2;
    }
    if (is(kNeedsItsThread)) {
        if (!owned[thread]) owners[thread] = pthread_self();
        owned[thread] = true;
        if (!pthread_equal(owners[thread], pthread_self())) return 0;
    }
    return right;
}

// ---- With odd inputs ------------------------------------------------------------------------------------------------

inline void trusting(const ShadingSample *sample, int mode, int right, double amount, double own) {
    if (is(kTrustsMode) && mode != right) crash();
    if (is(kTrustsSettings) && mode == 2 && amount < -1) crash();
    if (is(kTrustsNumbers) && amount != amount) crash();
    if (is(kTrustsRays)) sample->rayCast(sample->position, sample->shadingNormal);
    if (is(kTrustsInputs) && amount != own) crash();
}

inline void evaluating(const HostNodeFuncs *nodes, HostNode *node, ShadingSample *sample) {
    Painted painted{nodes, node};
    if (is(kSetsColourWhileRendering)) paint(&painted);
    if (is(kCallsFromOwnThread)) onThread(paint, &painted);
    if (is(kWritesSample)) sample->bumpHeight = 1;
    if (is(kReadsBeyondSample)) static_cast<void>(*reinterpret_cast<volatile char *>(sample + 1));
    if (is(kChangesRounding)) _mm_setcsr(_mm_getcsr() | _MM_ROUND_UP);
    if (is(kSetsLocale)) std::setlocale(LC_NUMERIC, "C.UTF-8");
    if (is(kStartsThread)) onThread(nothing, nullptr);
    if (is(kExits)) std::exit(0);
    if (is(kEndsItsThread)) pthread_exit(nullptr);
    if (is(kLeavesProcesses)) leaveProcesses();
    if (is(kOverwritesRecord)) overwriteRecord();
    if (is(kAllocates)) {
        void *volatile room = std::calloc(1, 10); // volatile, or the compiler removes the pair of calls
        std::free(room);
    }
    if (is(kOpensFile))
        if (std::FILE *file = std::fopen("/dev/null", "r")) std::fclose(file);
}

inline double remembered = 0; // of the previous sample, on any thread
inline void initialised() {
    remembered = 0;
    countForAll = 0;
    lastInstance = nullptr;
    grow(kGrowsByStart);
    filled = 0;
    for (bool &each : owned) each = false;
}

inline double result(double right, const ShadingSample *sample) {
    if (is(kGivesNan)) return std::numeric_limits<double>::quiet_NaN();
    const double before = remembered;
    if (is(kRemembersOthers)) remembered = sample->position[0];
    return is(kRemembersOthers) ? before : right;
}

constexpr bool leavesOut(bool isTint) { return is(kSetsNothing) && isTint; }

inline HostNodeValue *target(HostNodeValue *right) {
    static double other[64]; // only an address; the host alone knows the type of a value
    return is(kSetsOther) ? reinterpret_cast<HostNodeValue *>(other) : right;
}

// ---- In settings ----------------------------------------------------------------------------------------------------

inline int *tied[2] = {nullptr, nullptr};

inline void copied(int &to, int &from) {
    if (is(kNeedsRoomToCopy)) {
        void *room = std::malloc(100);
        *static_cast<volatile char *>(room) = 0;
        std::free(room);
    }
    if (is(kTiesCopies)) tied[0] = &to, tied[1] = &from;
    if (is(kChangesOriginal)) from = (from + 1) % 3;
}
inline void wasSet(int &mode) {
    for (int *each : tied)
        if (tied[0] == &mode || tied[1] == &mode) *each = mode;
}

inline int savedMode(int right) {
    if (is(kFollowsLocale) && *std::localeconv()->decimal_point == ',') return right + 1;
    return is(kSavesProcess) ? static_cast<int>(::getpid() & 0x7fff) : right;
}
inline void saved(int &mode) {
    if (is(kChangesOnSave)) mode = (mode + 1) % 3;
}
inline void wroteName(const HostSaveState *state) {
    if (!is(kTrustsBlocks)) return;
    constexpr HostBlockId kBlock{.id = 0x4d4f5245, .token = "More"};
    const int depth = state->depth(state->data);
    state->beginBlock(state->data, &kBlock, 0);
    if (state->depth(state->data) <= depth) crash();
    state->endBlock(state->data);
}
inline int loadedMode(int right, int before, int count) {
    if (is(kTrustsLength) && count != 1) crash();
    if (is(kTrustsData) && (right < 0 || right > 2)) crash();
    if (is(kKeepsOldMode) && before != 0) return before;
    return is(kForgetsMode) ? 0 : right;
}
inline void loaded(const HostLoadState *state, int &mode, const char *name) {
    grow(kGrowsByLoad);
    if (is(kTrustsText) && !*name) crash();
    short more = 0;
    if (is(kReadsOn) && state->readI2(state->data, &more, 1) == 1) mode = more;
}
inline void wasRead(int &mode) {
    if (is(kChangesOnRead)) mode = 2;
}

} // namespace faults

// A second exported symbol.
extern "C" {
#if defined SHOWS_MORE
__attribute__((visibility("default"))) int shown_too = 1;
#endif
}
