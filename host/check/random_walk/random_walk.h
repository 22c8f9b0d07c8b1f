// A random walk through everything that a host may call: up to 64 instances in networks that are created, connected,
// set, saved, loaded, copied, rendered on several threads and destroyed, in any legal order. A call script determines
// the walk.
#pragma once

#include "host/check/fixture/render_threads.h"
#include "host/check/random_walk/node_set.h"

#include <string>

namespace velm::host {

// Receives the results and the saved data of a walk in the order of its script, in order to record them or to compare
// them with those of another walk of the same script. [interface thread]
class WalkJournal {
  public:
    WalkJournal() = default;
    virtual ~WalkJournal() = default;
    WalkJournal(const WalkJournal &) = delete;
    WalkJournal &operator=(const WalkJournal &) = delete;
    // Receives the next text. False if the other walk has another text here. Texts that are not deterministic may
    // differ and always agree.
    virtual bool agrees(const std::string &text, bool isDeterministic) = 0;
};

struct WalkOptions {
    RenderThreads *threads = nullptr; // null: the calling thread evaluates the samples of all threads in turn
    int renders = 1;                  // how often each picture is rendered; above 1, to see whether it is deterministic
    WalkJournal *journal = nullptr;   // null: nothing is recorded or compared
};

// Follows a script to its end and destroys what is left. Fails the check at the first violation. Does nothing if the
// set is empty. [interface thread; not while rendering]
void randomWalk(const NodeSet &nodes, const std::string &script, const WalkOptions &options);

} // namespace velm::host
