// Level 6: many render threads. What each thread gets must be what it gets alone, as far as that is the same each time.
#include "host/check/blackboard.h"
#include "host/check/levels.h"
#include "host/check/stage.h"
#include "host/thread_role.h"

#include <barrier>
#include <memory>
#include <thread>

namespace velm {

namespace {

constexpr int kSettings = 6, kSamples = 60, kOracleRuns = 3, kBatches = 5, kInstances = 8;

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
        run(stage, work, found);
        stage.end();
        mustAgree(expected, found);
    }
}

void shareOneInstance(const CheckTask &task) {
    shareWithAll(task, [](Stage &stage, const Work &work, std::vector<Results> &found) {
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

// The number of a thread stands for its state, whichever thread has it.
void comeAndGo(const CheckTask &task) {
    shareWithAll(task, [](Stage &stage, const Work &work, std::vector<Results> &found) {
        for (int batch = 0; batch < kBatches; ++batch)
            onAllThreads([&](std::size_t index) {
                const auto from = work[index].begin() + batch * (kSamples / kBatches);
                const Results some = stage.evaluate({from, from + kSamples / kBatches});
                found[index].insert(found[index].end(), some.begin(), some.end());
            });
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
    {"threads.first", 6, CheckScope::node, "sixteen threads may ask a new instance at once", startTogether},
};

} // namespace

std::span<const Check> threadChecks() { return kChecks; }

} // namespace velm
