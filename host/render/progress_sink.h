// Who wants to know how a render goes on.
#pragma once

#include "host/base/region.h"
#include "host/image/picture.h"

namespace velm::host {

// Is called on the thread that renders a pass: soon after the first tile, then about every 50 ms when tiles were
// finished since, and after the last one.
class ProgressSink {
  public:
    virtual ~ProgressSink() = default;
    // A tile that was finished in this pass. Its pixels in `picture` do not change again during the pass; those of
    // other tiles may be changing. Called once for each tile, before `progress` counts it.
    virtual void tile(const Region &, const Picture & /*picture*/) {}
    // `done` of `total` tiles of the pass. Returning false cancels the pass.
    virtual bool progress(int done, int total) = 0;
};

} // namespace velm::host
