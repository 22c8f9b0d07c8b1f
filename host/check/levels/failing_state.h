// Load and save states that fail after a number of reads or writes, as on an unreadable file or a full disk.
#pragma once

#include "module/host.h"

namespace velm::host {

// Passes the first `reads` reads on to another state, which has to outlive this one. Later reads return 0 values and
// find no block; leaving a block and asking for the depth still work.
class FailingLoadState {
  public:
    FailingLoadState(const HostLoadState *state, long reads);
    FailingLoadState(const FailingLoadState &) = delete;
    FailingLoadState &operator=(const FailingLoadState &) = delete;

    const HostLoadState *state() const { return &own_; }
    bool hasFailed() const { return left_ < 0; } // whether a read has failed

  private:
    friend struct FailingCalls;

    const HostLoadState *real_;
    long left_;
    HostLoadState own_;
};

// Passes the first `writes` writes on to another state, which has to outlive this one. Later ones write nothing, which
// they cannot report, and begin no block, so that the depth stays as it is; the end of such a block ends no other.
class FailingSaveState {
  public:
    FailingSaveState(const HostSaveState *state, long writes);
    FailingSaveState(const FailingSaveState &) = delete;
    FailingSaveState &operator=(const FailingSaveState &) = delete;

    const HostSaveState *state() const { return &own_; }
    bool hasFailed() const { return left_ < 0; } // whether a write has failed

  private:
    friend struct FailingCalls;

    const HostSaveState *real_;
    long left_;
    int unopenedBlocks_ = 0; // innermost blocks that were not begun
    HostSaveState own_;
};

} // namespace velm::host
