// Faults that only show in a sequence of calls.
#pragma once

#include "tests/mutants/faults.h"

namespace faults {

// The history of an instance.
struct Past {
    const Past *original; // the instance that it was copied from
    int isOriginalGone;
    int isCopied, modeThen; // whether it has been copied, and its mode at that time
    int starts;             // renderings started, and one more, since it became a copy; 0 before
};

inline Past *copies[256];
inline int copyCount = 0;

inline void copied(Past &to, Past &from, int mode) {
    if (is(kReadsOriginal)) {
        to.original = &from;
        to.isOriginalGone = 0;
        copies[copyCount++ % 256] = &to;
    }
    from.isCopied = 1;
    from.modeThen = mode;
    to.starts = 1;
}

inline void destroyed(Past &past) {
    for (Past *&copy : copies) {
        if (copy == &past) copy = nullptr;
        if (copy && copy->original == &past) copy->isOriginalGone = 1;
    }
}

inline void started(Past &past) {
    if (past.starts > 0) ++past.starts;
}

inline void ended() {
    if (is(kEndsForAll)) ++generation;
}

inline int modeAfter(const Past &past, int right) {
    if (is(kReadsOriginal) && past.isOriginalGone) crash();
    return is(kKeepsModeOnceCopied) && past.isCopied ? past.modeThen : right;
}

inline double amountAfter(const Past &past, double right) {
    return is(kCountsStarts) && past.starts > 4 ? right + 1 : right;
}

} // namespace faults
