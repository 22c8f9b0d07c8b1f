// Level 9: allocation failures, and long runs.
#include "host/base/error.h"
#include "host/check/fixture/fixture.h"
#include "host/check/levels/levels.h"
#include "host/check/process/check_record.h"
#include "host/check/watch/imports.h"

#include <fmt/format.h>

namespace velm::host {

namespace {

constexpr int kMostFailures = 1000, kCycles = 10000, kFirstCycles = 100, kFrames = 1000, kStarts = 1000;

// While this lives, the n-th allocation of the module on the calling thread fails (counted from 0).
class MemoryShortage {
  public:
    explicit MemoryShortage(long number) { failAllocation(number); }
    ~MemoryShortage() { failAllocation(-1); }
    MemoryShortage(const MemoryShortage &) = delete;
    MemoryShortage &operator=(const MemoryShortage &) = delete;
    static bool hasOccurred() { return allocationFailed(); }
};

void useOnce(Fixture &fixture, Generator &random) {
    fixture.start();
    fixture.frame(1, 0.04);
    fixture.evaluate({makeSample(random)});
    fixture.end();
    fixture.save();
}

// Creates an instance while the n-th allocation fails, and returns whether one failed. If the instance is created
// nevertheless, it has to work.
bool createWithFailure(WatchedModule &module, const std::string &server, Generator &random, long number) {
    bool failed = false;
    try {
        const MemoryShortage shortage(number);
        Fixture fixture(module, server);
        failed = MemoryShortage::hasOccurred();
        failAllocation(-1);
        useOnce(fixture, random);
    } catch (const CreationError &error) {
        if (!error.hasReason()) failCheck("without memory it creates no instance and leaves no message");
        failed = true;
    } catch (const InputError &) { // the class could not be activated, or the rendering not be started
        failed = true;
    }
    return failed;
}

void createsWithLittleMemory(const CheckTask &task) {
    WatchedModule module(task.module);
    Generator random(task.seed);
    for (long number = 0; number < kMostFailures; ++number) {
        noteRound(static_cast<std::uint64_t>(number));
        if (!createWithFailure(module, task.server, random, number)) return;
    }
}

// Repeats a step with the first, second, ... allocation failing, until none fails any more.
template <class Step>
void withEachFailure(WatchedModule &module, const CheckTask &task, Generator &random, Step step) {
    for (long number = 0; number < kMostFailures; ++number) {
        noteRound(static_cast<std::uint64_t>(number));
        Fixture from(module, task.server), to(module, task.server);
        from.randomSettings(random);
        const std::string saved = from.save();
        bool failed = false;
        {
            const MemoryShortage shortage(number);
            step(from, to, saved);
            failed = MemoryShortage::hasOccurred();
        }
        useOnce(from, random);
        useOnce(to, random);
        if (!failed) return;
    }
}

void copiesWithLittleMemory(const CheckTask &task) {
    WatchedModule module(task.module);
    Generator random(task.seed);
    withEachFailure(module, task, random, [](Fixture &from, Fixture &to, const std::string &) { to.copyFrom(from); });
    withEachFailure(module, task, random, [](Fixture &, Fixture &to, const std::string &saved) { to.load(saved); });
}

void warnOfGrowth(long before, const std::string &when) {
    if (const long blocks = moduleMemory().blocks - before; blocks > 0)
        warnCheck(fmt::format("{} blocks of memory more {}", blocks, when));
}

void rendersForLong(const CheckTask &task) {
    WatchedModule module(task.module);
    Fixture fixture(module, task.server);
    Generator random(task.seed);
    const ShadingSample sample = makeSample(random);
    fixture.start();
    fixture.frame(1, 0.04);
    fixture.evaluate({sample});
    const long before = moduleMemory().blocks;
    for (int frame = 2; frame < kFrames; ++frame) {
        noteRound(static_cast<std::uint64_t>(frame));
        fixture.frame(frame, frame / 25.0);
        fixture.evaluate({sample});
    }
    warnOfGrowth(before, fmt::format("after {} frames", kFrames));
    fixture.end();
}

void livesForLong(const CheckTask &task) {
    WatchedModule module(task.module);
    Generator random(task.seed);
    Fixture original(module, task.server), copy(module, task.server);
    long before = 0;
    for (int cycle = 0; cycle < kCycles; ++cycle) {
        noteRound(static_cast<std::uint64_t>(cycle));
        if (cycle == kFirstCycles) before = moduleMemory().blocks;
        copy.copyFrom(original);
        original.load(copy.save());
        original.start();
        original.end();
    }
    warnOfGrowth(before, fmt::format("after copying, saving, loading and rendering {} times", kCycles));
}

// A host may start again without cleaning up.
void startsWithoutEnd(const CheckTask &task) {
    WatchedModule module(task.module);
    Fixture fixture(module, task.server);
    Generator random(task.seed);
    fixture.start();
    const long before = moduleMemory().blocks;
    for (int start = 0; start < kStarts; ++start) {
        noteRound(static_cast<std::uint64_t>(start));
        fixture.start(start % 2 == 0 ? kInitRender : kInitPreview);
        fixture.frame(1, 0.04);
        fixture.evaluate({makeSample(random)});
    }
    warnOfGrowth(before, fmt::format("after starting {} times without cleaning up", kStarts));
    fixture.end();
}

constexpr Check kChecks[] = {
    {"resources.create", 9, CheckScope::node, "without memory, creating an instance fails with a message",
     createsWithLittleMemory},
    {"resources.copy", 9, CheckScope::node, "copying and loading survive a lack of memory", copiesWithLittleMemory},
    {"resources.frames", 9, CheckScope::node, "a thousand frames take no more memory than one", rendersForLong},
    {"resources.cycles", 9, CheckScope::node, "ten thousand cycles take no more memory than a few", livesForLong},
    {"resources.starts", 9, CheckScope::node, "rendering may start again without having ended", startsWithoutEnd},
};

} // namespace

std::span<const Check> resourceChecks() { return kChecks; }

} // namespace velm::host
