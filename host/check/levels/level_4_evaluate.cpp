// Level 4: single evaluations, on one thread.
#include "host/base/error.h"
#include "host/check/fixture/fixture.h"
#include "host/check/levels/levels.h"
#include "host/check/process/check_record.h"
#include "host/check/watch/imports.h"
#include "host/check/watch/process_state.h"

#include <fmt/format.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>
#include <string>

namespace velm::host {

namespace {

constexpr int kSettings = 4, kSamples = 64, kConfirmations = 8;

// Runs something with the default settings, and then with random ones.
void withSettings(Fixture &fixture, Generator &random, const std::function<void()> &run) {
    for (int i = 0; i < kSettings; ++i) {
        noteRound(static_cast<std::uint64_t>(i));
        if (i > 0) fixture.randomSettings(random);
        run();
    }
}

void setsItsOutputs(const CheckTask &task) {
    WatchedModule module(task.module);
    Fixture fixture(module, task.server);
    Generator random(task.seed);
    withSettings(fixture, random, [&] {
        fixture.start();
        fixture.frame(1, 0.04);
        for (const auto &output : fixture.node().outputs)
            if (evaluateOutput(*output, makeSample(random)).sets == 0)
                warnCheck(fmt::format("output \"{}\" is not always set", output->name));
        fixture.end();
    });
}

// A sample at the end of readable memory, so that reading beyond it crashes.
class GuardedSample {
  public:
    GuardedSample() : page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
        memory_ = mmap(nullptr, 2 * page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory_ == MAP_FAILED) throw MachineError("no memory for a sample");
        char *guard = static_cast<char *>(memory_) + page_;
        mprotect(guard, page_, PROT_NONE);
        sample_ = new (guard - sizeof(ShadingSample)) ShadingSample{};
    }
    ~GuardedSample() { munmap(memory_, 2 * page_); }
    GuardedSample(const GuardedSample &) = delete;
    GuardedSample &operator=(const GuardedSample &) = delete;
    ShadingSample &operator*() const { return *sample_; }

  private:
    std::size_t page_;
    void *memory_;
    ShadingSample *sample_;
};

void leavesTheSampleAlone(const CheckTask &task) {
    WatchedModule module(task.module);
    Fixture fixture(module, task.server);
    Generator random(task.seed);
    const GuardedSample guarded;
    withSettings(fixture, random, [&] {
        fixture.start();
        fixture.frame(1, 0.04);
        for (int i = 0; i < kSamples; ++i) {
            *guarded = makeSample(random);
            const std::string bytes(reinterpret_cast<const char *>(&*guarded), sizeof(ShadingSample));
            for (const auto &output : fixture.node().outputs) evaluateOutput(*output, *guarded);
            if (std::memcmp(bytes.data(), &*guarded, bytes.size()) != 0) failCheck("it writes to the sample");
        }
        fixture.end();
    });
}

void isFiniteByDefault(const CheckTask &task) {
    WatchedModule module(task.module);
    Fixture fixture(module, task.server);
    Generator random(task.seed);
    fixture.start();
    fixture.frame(1, 0.04);
    for (int i = 0; i < kSamples; ++i)
        for (const auto &output : fixture.node().outputs)
            if (const Result result = evaluateOutput(*output, makeSample(random)); !result.isFinite())
                warnCheck(fmt::format("output \"{}\" is not finite with the default settings", output->name));
    fixture.end();
}

// Evaluates samples of different render threads in order or in reverse order, and returns the results in order. As each
// is the first sample of its thread, both orders must give the same results unless the node draws random numbers.
std::vector<Result> firstOnEachThread(Fixture &fixture, const std::vector<ShadingSample> &samples, bool backwards) {
    fixture.start();
    fixture.frame(1, 0.04);
    std::vector<ShadingSample> ordered = samples;
    if (backwards) std::reverse(ordered.begin(), ordered.end());
    std::vector<Result> results;
    for (const ShadingSample &sample : ordered) {
        const std::vector<Result> some = fixture.evaluate({sample});
        results.insert(backwards ? results.begin() : results.end(), some.begin(), some.end());
    }
    fixture.end();
    return results;
}

void keepsThreadsApart(const CheckTask &task) {
    WatchedModule module(task.module);
    Fixture fixture(module, task.server);
    Generator random(task.seed);
    withSettings(fixture, random, [&] {
        std::vector<ShadingSample> samples;
        for (int i = 0; i < kMaxThreads; ++i) samples.push_back(makeSample(random, i));
        const std::vector<Result> forwards = firstOnEachThread(fixture, samples, false);
        const std::vector<Result> backwards = firstOnEachThread(fixture, samples, true);
        if (forwards == backwards) return;
        // A node that draws random numbers gives other results each time. One that mixes up its threads repeats them.
        for (int i = 0; i < kConfirmations; ++i)
            if (firstOnEachThread(fixture, samples, false) != forwards ||
                firstOnEachThread(fixture, samples, true) != backwards)
                return;
        failCheck("a render thread's results depend on the samples of others");
    });
}

void changesNothingElse(const CheckTask &task) {
    WatchedModule module(task.module);
    Fixture fixture(module, task.server);
    Generator random(task.seed);
    withSettings(fixture, random, [&] {
        fixture.start();
        fixture.frame(1, 0.04);
        const ProcessState before = captureProcessState();
        long calls[kImportKinds];
        for (int kind = 0; kind < kImportKinds; ++kind) calls[kind] = importCalls(ImportKind{kind});
        for (int i = 0; i < kSamples; ++i) fixture.evaluate({makeSample(random)});
        for (int kind = 0; kind < kImportKinds; ++kind)
            if (importCalls(ImportKind{kind}) > calls[kind])
                warnCheck(fmt::format("evaluating requests {} ({})", importKindName(ImportKind{kind}),
                                      lastImport(ImportKind{kind})));
        const ProcessState after = captureProcessState();
        if (after.floatingPoint != before.floatingPoint) failCheck("evaluating changes the floating-point mode");
        if (const std::string changes = describeChanges(before, after); !changes.empty())
            failCheck("after evaluating " + changes);
        fixture.end();
    });
}

constexpr Check kChecks[] = {
    {"evaluate.sets", 4, CheckScope::node, "the requested output is set, and nothing else", setsItsOutputs},
    {"evaluate.sample", 4, CheckScope::node, "the sample is only read, and not beyond its end", leavesTheSampleAlone},
    {"evaluate.finite", 4, CheckScope::node, "a new instance gives finite numbers", isFiniteByDefault},
    {"evaluate.slots", 4, CheckScope::node, "a render thread's results do not depend on other threads' samples",
     keepsThreadsApart},
    {"evaluate.process", 4, CheckScope::node, "evaluating changes nothing in the process and requests nothing from it",
     changesNothingElse},
};

} // namespace

std::span<const Check> evaluateChecks() { return kChecks; }

} // namespace velm::host
