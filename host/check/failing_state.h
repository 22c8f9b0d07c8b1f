// A load state that runs dry: after some reads it gives nothing more, as a file does that cannot be read on.
#pragma once

#include "module/host.h"

namespace velm {

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

} // namespace velm
