#include "host/check/failing_state.h"

namespace velm {

struct FailingCalls {
    static FailingReads &self(void *data) { return *static_cast<FailingReads *>(data); }

    // Whether there is still a read to be had.
    static bool take(FailingReads &own) {
        if (own.left_ > 0) return --own.left_, true;
        own.left_ = -1;
        return false;
    }

    // The function that stands for a read of values, of a text or for a block.
    template <auto member>
    struct Read;
    template <class Result, class... Arguments, Result (*HostLoadState::*member)(void *, Arguments...)>
    struct Read<member> {
        static Result call(void *data, Arguments... arguments) {
            FailingReads &own = self(data);
            return take(own) ? (own.real_->*member)(own.real_->data, arguments...) : Result{0};
        }
    };

    static void endBlock(void *data) { self(data).real_->endBlock(self(data).real_->data); }
    static int depth(void *data) { return self(data).real_->depth(self(data).real_->data); }
};

FailingReads::FailingReads(const HostLoadState *state, long reads)
    : real_(state), left_(reads), own_{.mode = state->mode,
                                       .data = this,
                                       .read = FailingCalls::Read<&HostLoadState::read>::call,
                                       .readI1 = FailingCalls::Read<&HostLoadState::readI1>::call,
                                       .readI2 = FailingCalls::Read<&HostLoadState::readI2>::call,
                                       .readI4 = FailingCalls::Read<&HostLoadState::readI4>::call,
                                       .readU1 = FailingCalls::Read<&HostLoadState::readU1>::call,
                                       .readU2 = FailingCalls::Read<&HostLoadState::readU2>::call,
                                       .readU4 = FailingCalls::Read<&HostLoadState::readU4>::call,
                                       .readFP = FailingCalls::Read<&HostLoadState::readFP>::call,
                                       .readString = FailingCalls::Read<&HostLoadState::readString>::call,
                                       .readId = FailingCalls::Read<&HostLoadState::readId>::call,
                                       .findBlock = FailingCalls::Read<&HostLoadState::findBlock>::call,
                                       .endBlock = FailingCalls::endBlock,
                                       .depth = FailingCalls::depth,
                                       .readDP = FailingCalls::Read<&HostLoadState::readDP>::call} {}

} // namespace velm
