// Level 6: many render threads. Each thread must get the results that it gets alone, where those are the same each
// time.
#include "host/base/thread_role.h"
#include "host/check/fixture/fixture.h"
#include "host/check/fixture/render_threads.h"
#include "host/check/levels/elf_file.h"
#include "host/check/levels/levels.h"
#include "host/check/process/check_record.h"
#include "host/check/process/child.h"
#include "host/check/process/shared_strings.h"
#include "host/check/watch/global_writes.h"

#include <fmt/format.h>

#include <algorithm>
#include <barrier>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <memory>
#include <set>
#include <thread>

namespace velm::host {

namespace {

constexpr int kSettings = 6, kSamples = 60, kOracleRuns = 3, kSlices = 5, kInstances = 8, kOthers = 6;
// Each write to a protected variable takes as long as thousands of other instructions.
constexpr int kProtectedSettings = 3, kProtectedSamples = 12;
constexpr std::size_t kShownVariables = 4;

using Results = std::vector<Result>;

// The samples of each thread, in their order.
using Work = std::vector<std::vector<ShadingSample>>;

Work makeWork(Generator &random, int samples = kSamples) {
    Work work(kMaxThreads);
    for (int thread = 0; thread < kMaxThreads; ++thread)
        for (int i = 0; i < samples; ++i) work[static_cast<std::size_t>(thread)].push_back(makeSample(random, thread));
    return work;
}

// Runs `run` with the index on a new render thread of that index, after `wait`.
template <class Wait, class Run>
std::thread renderThread(int index, Wait wait, Run run) {
    return std::thread([=] {
        SlotScope slot(index);
        const RoleScope role(ThreadRole::render);
        wait();
        slot.run([&] { run(static_cast<std::size_t>(index)); });
    });
}

// Runs something on kMaxThreads new threads that start together.
template <class Run>
void onAllThreads(Run run) {
    std::barrier start(kMaxThreads);
    std::vector<std::thread> threads;
    for (int index = 0; index < kMaxThreads; ++index)
        threads.push_back(renderThread(
            index, [&] { start.arrive_and_wait(); }, run));
    for (std::thread &thread : threads) thread.join();
}

void begin(Fixture &fixture) {
    fixture.start();
    fixture.frame(1, 0.04);
}

// The results of each thread's samples, evaluated on the calling thread, one thread's after the other's.
std::vector<Results> alone(Fixture &fixture, const Work &work) {
    begin(fixture);
    std::vector<Results> results;
    for (const auto &samples : work) results.push_back(fixture.evaluate(samples));
    fixture.end();
    return results;
}

// The same if they are the same each time; else nothing.
std::vector<Results> deterministicAlone(Fixture &fixture, const Work &work) {
    std::vector<Results> first = alone(fixture, work);
    for (int i = 1; i < kOracleRuns; ++i)
        if (alone(fixture, work) != first) return {};
    return first;
}

void requireSameResults(const std::vector<Results> &expected, const std::vector<Results> &found) {
    if (!expected.empty() && expected != found) failCheck("sixteen threads get other results than each alone");
}

// Lets `run` evaluate on all threads at once, with the default settings and then with random ones, and compares the
// results with those of each thread alone.
template <class Run>
void compareOnAllThreads(const CheckTask &task, Run run) {
    WatchedModule module(task.module);
    Fixture fixture(module, task.server);
    Generator random(task.seed);
    for (int round = 0; round < kSettings; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        if (round > 0) fixture.randomSettings(random);
        const Work work = makeWork(random);
        const std::vector<Results> expected = deterministicAlone(fixture, work);
        std::vector<Results> found(kMaxThreads);
        begin(fixture);
        run(module, fixture, work, found);
        fixture.end();
        requireSameResults(expected, found);
    }
}

void shareOneInstance(const CheckTask &task) {
    compareOnAllThreads(task, [](WatchedModule &, Fixture &fixture, const Work &work, std::vector<Results> &found) {
        onAllThreads([&](std::size_t index) { found[index] = fixture.evaluate(work[index]); });
    });
}

void useManyInstances(const CheckTask &task) {
    WatchedModule module(task.module);
    Generator random(task.seed);
    std::vector<std::unique_ptr<Fixture>> fixtures;
    std::vector<std::vector<Results>> expected, found(kInstances, std::vector<Results>(kMaxThreads));
    const Work work = makeWork(random);
    for (int i = 0; i < kInstances; ++i) {
        fixtures.push_back(std::make_unique<Fixture>(module, task.server));
        fixtures.back()->randomSettings(random);
        expected.push_back(deterministicAlone(*fixtures.back(), work));
    }
    for (const auto &fixture : fixtures) begin(*fixture);
    onAllThreads([&](std::size_t index) {
        for (std::size_t step = 0; step < fixtures.size(); ++step) {
            const std::size_t which = (step + index) % fixtures.size();
            found[which][index] = fixtures[which]->evaluate(work[index]);
        }
    });
    for (const auto &fixture : fixtures) fixture->end();
    for (std::size_t i = 0; i < fixtures.size(); ++i) requireSameResults(expected[i], found[i]);
}

// Evaluates a thread's part of one of kSlices slices.
void evaluateSlice(Fixture &fixture, const std::vector<ShadingSample> &samples, int slice, Results &found) {
    const auto from = samples.begin() + std::ptrdiff_t{slice} * (kSamples / kSlices);
    const Results some = fixture.evaluate({from, from + kSamples / kSlices});
    found.insert(found.end(), some.begin(), some.end());
}

// A module keeps its per-thread state by thread index, whichever system thread has that index.
void comeAndGo(const CheckTask &task) {
    compareOnAllThreads(task, [](WatchedModule &, Fixture &fixture, const Work &work, std::vector<Results> &found) {
        for (int slice = 0; slice < kSlices; ++slice)
            onAllThreads([&](std::size_t index) { evaluateSlice(fixture, work[index], slice, found[index]); });
    });
}

// Instances of any of the module's nodes that come and go while another one is rendered.
class Others {
  public:
    Others(WatchedModule &module, std::uint64_t seed) : module_(module), names_(module.names()), random_(seed) {}

    void change() {
        if (!fixtures_.empty() && random_.chance(0.5))
            fixtures_.erase(fixtures_.begin() + random_.below(fixtures_.size()));
        while (fixtures_.size() < kOthers && random_.chance(0.7)) {
            const std::string &server = names_[static_cast<std::size_t>(random_.below(names_.size()))];
            Fixture &instance = *fixtures_.emplace_back(std::make_unique<Fixture>(module_, server));
            instance.randomSettings(random_);
            Fixture copy(module_, server);
            copy.copyFrom(instance);
            instance.load(copy.save());
        }
    }

  private:
    WatchedModule &module_;
    std::vector<std::string> names_;
    Generator random_;
    std::vector<std::unique_ptr<Fixture>> fixtures_;
};

// Instances may not be created or destroyed while samples are evaluated, but between the slices of a picture they may.
void othersComeAndGo(const CheckTask &task) {
    RenderThreads threads;
    compareOnAllThreads(task,
                        [&](WatchedModule &module, Fixture &fixture, const Work &work, std::vector<Results> &found) {
                            Others others(module, task.seed);
                            for (int slice = 0; slice < kSlices; ++slice) {
                                others.change();
                                threads.run(kMaxThreads, [&](int index) {
                                    const auto own = static_cast<std::size_t>(index);
                                    evaluateSlice(fixture, work[own], slice, found[own]);
                                });
                            }
                        });
}

// A module that initialises lazily does so at the first sample.
void startTogether(const CheckTask &task) {
    WatchedModule module(task.module);
    Generator random(task.seed);
    for (int round = 0; round < kSamples; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        Fixture fixture(module, task.server);
        Work work(kMaxThreads);
        for (int i = 0; i < kMaxThreads; ++i) work[static_cast<std::size_t>(i)] = {makeSample(random, i)};
        std::vector<Results> found(kMaxThreads);
        begin(fixture);
        onAllThreads([&](std::size_t index) { found[index] = fixture.evaluate(work[index]); });
        fixture.end();
        requireSameResults(deterministicAlone(fixture, work), found);
    }
}

// The addresses of the module's global variables that one thread writes to without a lock, in a process of its own.
std::vector<std::uintptr_t> writesOfThread(const WatchedModule &module, Fixture &fixture, const Work &work,
                                           int thread) {
    SharedStrings shared;
    Child child(
        checkRecord(),
        [&] {
            std::vector<std::uintptr_t> writes;
            renderThread(
                thread, [] {},
                [&](std::size_t index) {
                    writes = globalWritesOf(&module.module().descriptor(), [&] { fixture.evaluate(work[index]); });
                })
                .join();
            shared.add({reinterpret_cast<const char *>(writes.data()), writes.size() * sizeof(std::uintptr_t)});
        },
        kOtherProcessSeconds);
    const ChildEnd end = waitFor(child);
    if (end.outcome != Outcome::pass && end.outcome != Outcome::warn)
        failCheck("with write-protected variables: " + end.message);
    const std::string bytes = shared.all().front();
    std::vector<std::uintptr_t> writes(bytes.size() / sizeof(std::uintptr_t));
    std::memcpy(writes.data(), bytes.data(), bytes.size());
    return writes;
}

// "a, b and 3 more": the variables at some addresses.
std::string variablesText(const std::string &file, const std::set<std::uintptr_t> &addresses) {
    std::vector<std::string> names;
    for (const std::uintptr_t address : addresses) {
        std::string name = variableAt(file, address);
        if (name.empty()) name = fmt::format("the variable at {:#x}", address);
        if (std::ranges::find(names, name) == names.end()) names.push_back(std::move(name));
    }
    const std::size_t shown = std::min(names.size(), kShownVariables);
    const std::string list = fmt::format("{}", fmt::join(names.begin(), names.begin() + std::ptrdiff_t(shown), ", "));
    return shown == names.size() ? list : fmt::format("{} and {} more", list, names.size() - shown);
}

// Two threads evaluate from the same state, each in a process of its own, as if they began at the same time. A variable
// that both write to without a lock is one that they would race for.
void sharesNoVariables(const CheckTask &task) {
    if (const char *reason = whyWritesAreUnknown()) skipCheck(reason);
    WatchedModule module(task.module);
    Fixture fixture(module, task.server);
    Generator random(task.seed);
    std::set<std::uintptr_t> shared;
    for (int round = 0; round < kProtectedSettings; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        if (round > 0) fixture.randomSettings(random);
        const Work work = makeWork(random, kProtectedSamples);
        begin(fixture);
        const std::vector<std::uintptr_t> first = writesOfThread(module, fixture, work, 0);
        const std::vector<std::uintptr_t> second = writesOfThread(module, fixture, work, 1);
        std::ranges::set_intersection(first, second, std::inserter(shared, shared.end()));
        fixture.end();
    }
    if (!shared.empty())
        warnCheck("all render threads write to the same variables without a lock: " +
                  variablesText(task.module, shared) + "; a race, unless they are atomic");
}

constexpr Check kChecks[] = {
    {"threads.one", 6, CheckScope::node, "sixteen threads on one instance get the results that each gets alone",
     shareOneInstance},
    {"threads.many", 6, CheckScope::node, "sixteen threads on many instances get the results that each gets alone",
     useManyInstances},
    {"threads.new", 6, CheckScope::node, "a new thread may take over the index of one that has ended", comeAndGo},
    {"threads.others", 6, CheckScope::node, "other instances may come and go between the slices of a picture",
     othersComeAndGo},
    {"threads.globals", 6, CheckScope::node, "evaluating writes to no variable that other threads write to, too",
     sharesNoVariables},
    {"threads.first", 6, CheckScope::node, "sixteen threads may evaluate a new instance at once", startTogether},
};

} // namespace

std::span<const Check> threadChecks() { return kChecks; }

} // namespace velm::host
