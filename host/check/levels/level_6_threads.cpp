// Level 6: many render threads. What each thread gets must be what it gets alone, as far as that is the same each time.
#include "host/base/thread_role.h"
#include "host/check/process/check_record.h"
#include "host/check/levels/levels.h"
#include "host/check/fixture/render_threads.h"
#include "host/check/fixture/fixture.h"

#include <barrier>
#include <memory>
#include <thread>

namespace velm::host {

namespace {

constexpr int kSettings = 6, kSamples = 60, kOracleRuns = 3, kBatches = 5, kInstances = 8, kOthers = 6;

using Results = std::vector<Result>;

// The samples of each thread, in its order.
using Work = std::vector<std::vector<ShadingSample>>;

Work makeWork(Dice &dice) {
    Work work(kMaxThreads);
    for (int thread = 0; thread < kMaxThreads; ++thread)
        for (int i = 0; i < kSamples; ++i) work[static_cast<std::size_t>(thread)].push_back(makeSample(dice, thread));
    return work;
}

// Runs something on sixteen threads that start together.
template <class Run>
void onAllThreads(Run run) {
    std::barrier start(kMaxThreads);
    std::vector<std::thread> threads;
    for (int index = 0; index < kMaxThreads; ++index)
        threads.emplace_back([&, index] {
            const SlotScope slot(index);
            const RoleScope role(ThreadRole::render);
            start.arrive_and_wait();
            run(static_cast<std::size_t>(index));
        });
    for (std::thread &thread : threads) thread.join();
}

void begin(Stage &stage) {
    stage.start();
    stage.frame(1, 0.04);
}

// What each thread gets when one after the other has its turn.
std::vector<Results> alone(Stage &stage, const Work &work) {
    begin(stage);
    std::vector<Results> results;
    for (const auto &samples : work) results.push_back(stage.evaluate(samples));
    stage.end();
    return results;
}

// The same, when it is the same each time; else nothing.
std::vector<Results> steadyAlone(Stage &stage, const Work &work) {
    std::vector<Results> first = alone(stage, work);
    for (int i = 1; i < kOracleRuns; ++i)
        if (alone(stage, work) != first) return {};
    return first;
}

void mustAgree(const std::vector<Results> &expected, const std::vector<Results> &found) {
    if (!expected.empty() && expected != found) failCheck("with sixteen threads they get other results than alone");
}

// Evaluates on all threads at once by `run`, with the defaults and then with settings of chance, and compares with what
// each thread's samples give alone.
template <class Run>
void shareWithAll(const CheckTask &task, Run run) {
    WatchedModule module(task.module);
    Stage stage(module, task.server);
    Dice dice(task.seed);
    for (int round = 0; round < kSettings; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        if (round > 0) stage.randomSettings(dice);
        const Work work = makeWork(dice);
        const std::vector<Results> expected = steadyAlone(stage, work);
        std::vector<Results> found(kMaxThreads);
        begin(stage);
        run(module, stage, work, found);
        stage.end();
        mustAgree(expected, found);
    }
}

void shareOneInstance(const CheckTask &task) {
    shareWithAll(task, [](WatchedModule &, Stage &stage, const Work &work, std::vector<Results> &found) {
        onAllThreads([&](std::size_t index) { found[index] = stage.evaluate(work[index]); });
    });
}

void useManyInstances(const CheckTask &task) {
    WatchedModule module(task.module);
    Dice dice(task.seed);
    std::vector<std::unique_ptr<Stage>> stages;
    std::vector<std::vector<Results>> expected, found(kInstances, std::vector<Results>(kMaxThreads));
    const Work work = makeWork(dice);
    for (int i = 0; i < kInstances; ++i) {
        stages.push_back(std::make_unique<Stage>(module, task.server));
        stages.back()->randomSettings(dice);
        expected.push_back(steadyAlone(*stages.back(), work));
    }
    for (const auto &stage : stages) begin(*stage);
    onAllThreads([&](std::size_t index) {
        for (std::size_t step = 0; step < stages.size(); ++step) {
            const std::size_t which = (step + index) % stages.size();
            found[which][index] = stages[which]->evaluate(work[index]);
        }
    });
    for (const auto &stage : stages) stage->end();
    for (std::size_t i = 0; i < stages.size(); ++i) mustAgree(expected[i], found[i]);
}

// A thread's part of one of the slices that the work is done in.
void evaluateSlice(Stage &stage, const std::vector<ShadingSample> &samples, int slice, Results &found) {
    const auto from = samples.begin() + slice * (kSamples / kBatches);
    const Results some = stage.evaluate({from, from + kSamples / kBatches});
    found.insert(found.end(), some.begin(), some.end());
}

// The number of a thread stands for its state, whichever thread has it.
void comeAndGo(const CheckTask &task) {
    shareWithAll(task, [](WatchedModule &, Stage &stage, const Work &work, std::vector<Results> &found) {
        for (int batch = 0; batch < kBatches; ++batch)
            onAllThreads([&](std::size_t index) { evaluateSlice(stage, work[index], batch, found[index]); });
    });
}

// Instances of any of the module's nodes that live while another is rendered.
class Others {
  public:
    Others(WatchedModule &module, std::uint64_t seed) : module_(module), names_(module.names()), dice_(seed) {}

    void change() {
        if (!stages_.empty() && dice_.chance(0.5)) stages_.erase(stages_.begin() + dice_.below(stages_.size()));
        while (stages_.size() < kOthers && dice_.chance(0.7)) {
            const std::string &server = names_[static_cast<std::size_t>(dice_.below(names_.size()))];
            Stage &made = *stages_.emplace_back(std::make_unique<Stage>(module_, server));
            made.randomSettings(dice_);
            Stage like(module_, server);
            like.copyFrom(made);
            made.load(like.save());
        }
    }

  private:
    WatchedModule &module_;
    std::vector<std::string> names_;
    Dice dice_;
    std::vector<std::unique_ptr<Stage>> stages_;
};

// Nothing may be made or destroyed while samples are evaluated; between the slices of a picture it may.
void othersComeAndGo(const CheckTask &task) {
    RenderThreads threads;
    shareWithAll(task, [&](WatchedModule &module, Stage &stage, const Work &work, std::vector<Results> &found) {
        Others others(module, task.seed);
        for (int slice = 0; slice < kBatches; ++slice) {
            others.change();
            threads.run(kMaxThreads, [&](int index) {
                const auto own = static_cast<std::size_t>(index);
                evaluateSlice(stage, work[own], slice, found[own]);
            });
        }
    });
}

// The first sample after the start is where a module makes what it needs, if it makes it late.
void startTogether(const CheckTask &task) {
    WatchedModule module(task.module);
    Dice dice(task.seed);
    for (int round = 0; round < kSamples; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        Stage stage(module, task.server);
        Work work(kMaxThreads);
        for (int i = 0; i < kMaxThreads; ++i) work[static_cast<std::size_t>(i)] = {makeSample(dice, i)};
        std::vector<Results> found(kMaxThreads);
        begin(stage);
        onAllThreads([&](std::size_t index) { found[index] = stage.evaluate(work[index]); });
        stage.end();
        mustAgree(steadyAlone(stage, work), found);
    }
}

constexpr Check kChecks[] = {
    {"threads.one", 6, CheckScope::node, "sixteen threads on one instance get what each gets alone", shareOneInstance},
    {"threads.many", 6, CheckScope::node, "sixteen threads on many instances get what each gets alone",
     useManyInstances},
    {"threads.new", 6, CheckScope::node, "a new thread takes over where another with its number ended", comeAndGo},
    {"threads.others", 6, CheckScope::node, "other instances may come and go between the slices of a picture",
     othersComeAndGo},
    {"threads.first", 6, CheckScope::node, "sixteen threads may ask a new instance at once", startTogether},
};

} // namespace

std::span<const Check> threadChecks() { return kChecks; }

} // namespace velm::host
