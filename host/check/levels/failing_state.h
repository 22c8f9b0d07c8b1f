// States that fail after a while: a load state that gives nothing more, as a file does that cannot be read on, and a
// save state that takes nothing more, as a full disk does.
#pragma once

#include "module/host.h"

namespace velm::host {

// Passes everything on to another state until `reads` reads were answered; from then on every read gives 0 values and
// no block is found. Leaving blocks and their depth go on as they are. Valid as long as the other state.
class FailingReads {
  public:
    FailingReads(const HostLoadState *state, long reads);
    FailingReads(const FailingReads &) = delete;
    FailingReads &operator=(const FailingReads &) = delete;

    const HostLoadState *state() const { return &own_; }
    bool ranDry() const { return left_ < 0; }

  private:
    friend struct FailingCalls;

    const HostLoadState *real_;
    long left_;
    HostLoadState own_;
};

// The same for a save state: from then on nothing is written, which writes have no way to tell, and no block is begun,
// so that it is not deeper either; the end of such a block ends no other.
class FailingWrites {
  public:
    FailingWrites(const HostSaveState *state, long writes);
    FailingWrites(const FailingWrites &) = delete;
    FailingWrites &operator=(const FailingWrites &) = delete;

    const HostSaveState *state() const { return &own_; }
    bool ranDry() const { return left_ < 0; }

  private:
    friend struct FailingCalls;

    const HostSaveState *real_;
    long left_;
    int unopened_ = 0; // blocks that were to be begun, innermost
    HostSaveState own_;
};

} // namespace velm::host
