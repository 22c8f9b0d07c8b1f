// Level 4: single evaluations, on one thread.
#include "host/base/error.h"
#include "host/check/process/check_record.h"
#include "host/check/watch/imports.h"
#include "host/check/levels/levels.h"
#include "host/check/fixture/fixture.h"
#include "host/check/watch/process_state.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>

namespace velm::host {

namespace {

constexpr int kSettings = 4, kSamples = 64, kConfirmations = 8;

// Runs something with the defaults, and then with settings of chance.
void withSettings(Stage &stage, Dice &dice, const std::function<void()> &run) {
    for (int i = 0; i < kSettings; ++i) {
        noteRound(static_cast<std::uint64_t>(i));
        if (i > 0) stage.randomSettings(dice);
        run();
    }
}

void setsWhatWasAsked(const CheckTask &task) {
    WatchedModule module(task.module);
    Stage stage(module, task.server);
    Dice dice(task.seed);
    withSettings(stage, dice, [&] {
        stage.start();
        stage.frame(1, 0.04);
        for (const auto &output : stage.node().outputs)
            if (evaluateOutput(*output, makeSample(dice)).sets == 0)
                warnCheck("output \"" + output->name + "\" is not always set");
        stage.end();
    });
}

// A sample at the very end of what may be read.
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
    Stage stage(module, task.server);
    Dice dice(task.seed);
    const GuardedSample guarded;
    withSettings(stage, dice, [&] {
        stage.start();
        stage.frame(1, 0.04);
        for (int i = 0; i < kSamples; ++i) {
            const ShadingSample sample = *guarded = makeSample(dice);
            for (const auto &output : stage.node().outputs) evaluateOutput(*output, *guarded);
            if (std::memcmp(&sample, &*guarded, sizeof sample) != 0) failCheck("it writes to the sample");
        }
        stage.end();
    });
}

void isFiniteAtFirst(const CheckTask &task) {
    WatchedModule module(task.module);
    Stage stage(module, task.server);
    Dice dice(task.seed);
    stage.start();
    stage.frame(1, 0.04);
    for (int i = 0; i < kSamples; ++i)
        for (const auto &output : stage.node().outputs)
            if (const Result result = evaluateOutput(*output, makeSample(dice)); !result.isFinite())
                warnCheck("output \"" + output->name + "\" is not finite with the settings of a new instance");
    stage.end();
}

// Each sample is the first one on its render thread, so that nothing but chance may tell the orders apart.
std::vector<Result> firstOnEachThread(Stage &stage, const std::vector<ShadingSample> &samples, bool backwards) {
    stage.start();
    stage.frame(1, 0.04);
    std::vector<ShadingSample> ordered = samples;
    if (backwards) std::reverse(ordered.begin(), ordered.end());
    std::vector<Result> results;
    for (const ShadingSample &sample : ordered) {
        const std::vector<Result> some = stage.evaluate({sample});
        results.insert(backwards ? results.begin() : results.end(), some.begin(), some.end());
    }
    stage.end();
    return results;
}

void keepsThreadsApart(const CheckTask &task) {
    WatchedModule module(task.module);
    Stage stage(module, task.server);
    Dice dice(task.seed);
    withSettings(stage, dice, [&] {
        std::vector<ShadingSample> samples;
        for (int i = 0; i < kMaxThreads; ++i) samples.push_back(makeSample(dice, i));
        const std::vector<Result> forwards = firstOnEachThread(stage, samples, false);
        const std::vector<Result> backwards = firstOnEachThread(stage, samples, true);
        if (forwards == backwards) return;
        // A node that draws numbers gives something else each time; one that mixes up its threads gives the same.
        for (int i = 0; i < kConfirmations; ++i)
            if (firstOnEachThread(stage, samples, false) != forwards ||
                firstOnEachThread(stage, samples, true) != backwards)
                return;
        failCheck("what a render thread gets depends on the samples of others");
    });
}

void changesNothingElse(const CheckTask &task) {
    WatchedModule module(task.module);
    Stage stage(module, task.server);
    Dice dice(task.seed);
    withSettings(stage, dice, [&] {
        stage.start();
        stage.frame(1, 0.04);
        const Surroundings before = lookAround();
        long calls[kImportKinds];
        for (int kind = 0; kind < kImportKinds; ++kind) calls[kind] = importCalls(ImportKind{kind});
        for (int i = 0; i < kSamples; ++i) stage.evaluate({makeSample(dice)});
        for (int kind = 0; kind < kImportKinds; ++kind)
            if (importCalls(ImportKind{kind}) > calls[kind])
                warnCheck("evaluating asks for " + std::string(importKindName(ImportKind{kind})) + " (" +
                          lastImport(ImportKind{kind}) + ")");
        const Surroundings after = lookAround();
        if (after.floatingPoint != before.floatingPoint) failCheck("evaluating changes the floating-point mode");
        if (const std::string changes = changesBetween(before, after); !changes.empty())
            failCheck("after evaluating " + changes);
        stage.end();
    });
}

constexpr Check kChecks[] = {
    {"evaluate.sets", 4, CheckScope::node, "what is asked for is set, and nothing else", setsWhatWasAsked},
    {"evaluate.sample", 4, CheckScope::node, "the sample is only read, and only as far as it goes",
     leavesTheSampleAlone},
    {"evaluate.finite", 4, CheckScope::node, "a new instance gives finite numbers", isFiniteAtFirst},
    {"evaluate.slots", 4, CheckScope::node, "a render thread's results do not depend on other threads' samples",
     keepsThreadsApart},
    {"evaluate.process", 4, CheckScope::node, "evaluating changes nothing in the process, and asks it for nothing",
     changesNothingElse},
};

} // namespace

std::span<const Check> evaluateChecks() { return kChecks; }

} // namespace velm::host
