#include "host/check/levels/failing_state.h"

namespace velm::host {

struct FailingCalls {
    static FailingLoadState &self(void *data) { return *static_cast<FailingLoadState *>(data); }
    static FailingSaveState &writer(void *data) { return *static_cast<FailingSaveState *>(data); }

    // Counts a read or write, and tells whether it still succeeds.
    template <class State>
    static bool take(State &own) {
        if (own.left_ > 0) return --own.left_, true;
        own.left_ = -1;
        return false;
    }

    // The function that replaces a member for reading values or text or for finding a block.
    template <auto member>
    struct Read;
    template <class Result, class... Arguments, Result (*HostLoadState::*member)(void *, Arguments...)>
    struct Read<member> {
        static Result call(void *data, Arguments... arguments) {
            FailingLoadState &own = self(data);
            return take(own) ? (own.real_->*member)(own.real_->data, arguments...) : Result{0};
        }
    };

    static void endBlock(void *data) { self(data).real_->endBlock(self(data).real_->data); }
    static int depth(void *data) { return self(data).real_->depth(self(data).real_->data); }

    // The function that replaces a member for writing values or text.
    template <auto member>
    struct Write;
    template <class... Arguments, void (*HostSaveState::*member)(void *, Arguments...)>
    struct Write<member> {
        static void call(void *data, Arguments... arguments) {
            FailingSaveState &own = writer(data);
            if (take(own)) (own.real_->*member)(own.real_->data, arguments...);
        }
    };

    static void begin(void *data, const HostBlockId *id, int leaf) {
        FailingSaveState &own = writer(data);
        if (take(own))
            own.real_->beginBlock(own.real_->data, id, leaf);
        else
            ++own.unopenedBlocks_;
    }
    static void end(void *data) {
        FailingSaveState &own = writer(data);
        if (own.unopenedBlocks_ > 0)
            --own.unopenedBlocks_;
        else
            own.real_->endBlock(own.real_->data);
    }
    static int writtenDepth(void *data) { return writer(data).real_->depth(writer(data).real_->data); }
};

FailingLoadState::FailingLoadState(const HostLoadState *state, long reads)
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

FailingSaveState::FailingSaveState(const HostSaveState *state, long writes)
    : real_(state), left_(writes), own_{.mode = state->mode,
                                        .data = this,
                                        .write = FailingCalls::Write<&HostSaveState::write>::call,
                                        .writeI1 = FailingCalls::Write<&HostSaveState::writeI1>::call,
                                        .writeI2 = FailingCalls::Write<&HostSaveState::writeI2>::call,
                                        .writeI4 = FailingCalls::Write<&HostSaveState::writeI4>::call,
                                        .writeU1 = FailingCalls::Write<&HostSaveState::writeU1>::call,
                                        .writeU2 = FailingCalls::Write<&HostSaveState::writeU2>::call,
                                        .writeU4 = FailingCalls::Write<&HostSaveState::writeU4>::call,
                                        .writeFP = FailingCalls::Write<&HostSaveState::writeFP>::call,
                                        .writeString = FailingCalls::Write<&HostSaveState::writeString>::call,
                                        .writeId = FailingCalls::Write<&HostSaveState::writeId>::call,
                                        .beginBlock = FailingCalls::begin,
                                        .endBlock = FailingCalls::end,
                                        .depth = FailingCalls::writtenDepth,
                                        .writeDP = FailingCalls::Write<&HostSaveState::writeDP>::call} {}

} // namespace velm::host
