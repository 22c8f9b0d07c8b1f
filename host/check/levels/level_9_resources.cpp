// Level 9: little memory, and a long time.
#include "host/base/error.h"
#include "host/check/process/check_record.h"
#include "host/check/watch/imports.h"
#include "host/check/levels/levels.h"
#include "host/check/fixture/fixture.h"

namespace velm::host {

namespace {

constexpr int kMostFailures = 1000, kCycles = 10000, kFirstCycles = 100, kFrames = 1000, kStarts = 1000;

// The n-th request of the module for memory fails while this lives.
class MemoryShortage {
  public:
    explicit MemoryShortage(long number) { failAllocation(number); }
    ~MemoryShortage() { failAllocation(-1); }
    MemoryShortage(const MemoryShortage &) = delete;
    MemoryShortage &operator=(const MemoryShortage &) = delete;
    static bool wasFelt() { return allocationFailed(); }
};

void useOnce(Stage &stage, Dice &dice) {
    stage.start();
    stage.frame(1, 0.04);
    stage.evaluate({makeSample(dice)});
    stage.end();
    stage.save();
}

// An instance that was made all the same has to work.
bool createWithout(WatchedModule &module, const std::string &server, Dice &dice, long number) {
    bool felt = false;
    try {
        const MemoryShortage shortage(number);
        Stage stage(module, server);
        felt = MemoryShortage::wasFelt();
        failAllocation(-1);
        useOnce(stage, dice);
    } catch (const InputError &error) {
        if (std::string(error.what()).find("gives no reason") != std::string::npos)
            failCheck("without memory it makes no instance, and leaves no message");
        felt = true;
    }
    return felt;
}

void createsWithLittleMemory(const CheckTask &task) {
    WatchedModule module(task.module);
    Dice dice(task.seed);
    for (long number = 0; number < kMostFailures; ++number) {
        noteRound(static_cast<std::uint64_t>(number));
        if (!createWithout(module, task.server, dice, number)) return;
    }
}

// Runs one step again and again, with the first, second, ... request for memory refused, until none is.
template <class Step>
void withEachFailure(WatchedModule &module, const CheckTask &task, Dice &dice, Step step) {
    for (long number = 0; number < kMostFailures; ++number) {
        noteRound(static_cast<std::uint64_t>(number));
        Stage from(module, task.server), to(module, task.server);
        from.randomSettings(dice);
        const std::string saved = from.save();
        bool felt = false;
        {
            const MemoryShortage shortage(number);
            step(from, to, saved);
            felt = MemoryShortage::wasFelt();
        }
        useOnce(from, dice);
        useOnce(to, dice);
        if (!felt) return;
    }
}

void copiesWithLittleMemory(const CheckTask &task) {
    WatchedModule module(task.module);
    Dice dice(task.seed);
    withEachFailure(module, task, dice, [](Stage &from, Stage &to, const std::string &) { to.copyFrom(from); });
    withEachFailure(module, task, dice, [](Stage &, Stage &to, const std::string &saved) { to.load(saved); });
}

void warnOfGrowth(long before, const std::string &when) {
    if (const long blocks = moduleMemory().blocks - before; blocks > 0)
        warnCheck(std::to_string(blocks) + " blocks of memory more " + when);
}

void rendersForLong(const CheckTask &task) {
    WatchedModule module(task.module);
    Stage stage(module, task.server);
    Dice dice(task.seed);
    const ShadingSample sample = makeSample(dice);
    stage.start();
    stage.frame(1, 0.04);
    stage.evaluate({sample});
    const long before = moduleMemory().blocks;
    for (int frame = 2; frame < kFrames; ++frame) {
        noteRound(static_cast<std::uint64_t>(frame));
        stage.frame(frame, frame / 25.0);
        stage.evaluate({sample});
    }
    warnOfGrowth(before, "after " + std::to_string(kFrames) + " frames");
    stage.end();
}

void livesForLong(const CheckTask &task) {
    WatchedModule module(task.module);
    Dice dice(task.seed);
    Stage kept(module, task.server), copy(module, task.server);
    long before = 0;
    for (int cycle = 0; cycle < kCycles; ++cycle) {
        noteRound(static_cast<std::uint64_t>(cycle));
        if (cycle == kFirstCycles) before = moduleMemory().blocks;
        copy.copyFrom(kept);
        kept.load(copy.save());
        kept.start();
        kept.end();
    }
    warnOfGrowth(before, "after copying, saving, loading and rendering " + std::to_string(kCycles) + " times");
}

// A host may give up before it cleans up.
void startsWithoutEnd(const CheckTask &task) {
    WatchedModule module(task.module);
    Stage stage(module, task.server);
    Dice dice(task.seed);
    stage.start();
    const long before = moduleMemory().blocks;
    for (int start = 0; start < kStarts; ++start) {
        noteRound(static_cast<std::uint64_t>(start));
        stage.start(start % 2 == 0 ? kInitRender : kInitPreview);
        stage.frame(1, 0.04);
        stage.evaluate({makeSample(dice)});
    }
    warnOfGrowth(before, "after starting " + std::to_string(kStarts) + " times without cleaning up");
    stage.end();
}

constexpr Check kChecks[] = {
    {"resources.create", 9, CheckScope::node, "an instance that cannot be made for want of memory is refused in words",
     createsWithLittleMemory},
    {"resources.copy", 9, CheckScope::node, "copying and loading stand the want of memory", copiesWithLittleMemory},
    {"resources.frames", 9, CheckScope::node, "a thousand frames take no more memory than one", rendersForLong},
    {"resources.cycles", 9, CheckScope::node, "ten thousand cycles take no more memory than a few", livesForLong},
    {"resources.starts", 9, CheckScope::node, "rendering may start again without having ended", startsWithoutEnd},
};

} // namespace

std::span<const Check> resourceChecks() { return kChecks; }

} // namespace velm::host
