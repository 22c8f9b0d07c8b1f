// A walk through everything that a host may call: up to 64 instances in networks that are made, wired, set, saved,
// loaded, copied, rendered on several threads and destroyed, in whatever legal order a script says.
#pragma once

#include "host/check/fixture/render_threads.h"
#include "host/check/random_walk/call_script.h"
#include "host/graph/network.h"
#include "host/graph/server_list.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace velm::host {

// A kind of node that takes part.
struct CastNode {
    ServerClass *server;
    int place;            // among the module's nodes
    bool isSteady;        // gives the same each time
    bool isSelfContained; // and does so whatever becomes of other instances
};
using Cast = std::vector<CastNode>;

// What a walk gives and saves, to be kept or to be compared with what another one gave and saved. Texts come in the
// order of the script. [interface thread]
class WalkRecord {
  public:
    WalkRecord() = default;
    virtual ~WalkRecord() = default;
    WalkRecord(const WalkRecord &) = delete;
    WalkRecord &operator=(const WalkRecord &) = delete;
    // False when the other walk had another text here. Without `isSteady`, the text need not be the same each time.
    virtual bool agrees(const std::string &text, bool isSteady) = 0;
};

struct WalkManner {
    RenderThreads *threads = nullptr; // null: the threads' samples are evaluated by the caller, one after the other
    int renders = 1;                  // how often each picture is rendered; above 1 to see whether it is steady
    WalkRecord *record = nullptr;     // null: nothing is compared
};

// Follows a script to its end, and destroys what is left. Fails the check where something is found. [interface thread]
void walk(const Cast &cast, const std::string &script, const WalkManner &manner);

} // namespace velm::host
