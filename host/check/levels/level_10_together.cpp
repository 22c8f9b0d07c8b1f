// Level 10: random walks through everything that a host may call.
#include "host/check/process/check_record.h"
#include "host/check/process/child.h"
#include "host/check/random_walk/call_script.h"
#include "host/check/random_walk/node_set.h"
#include "host/check/watch/imports.h"

#include "host/check/levels/levels.h"
#include "host/check/process/shared_strings.h"
#include "host/check/random_walk/random_walk.h"

#include <fmt/format.h>

namespace velm::host {

namespace {

constexpr std::size_t kScript = 2500; // bytes
constexpr int kTurnsOfOne = 3, kTurnsOfAll = 24;
constexpr int kRenders = 3;              // of each picture, to see whether it is deterministic
constexpr double kOneThreadSeconds = 50; // ample for a walk, and less than the time limit of a check

// Records the texts of a walk; an empty one in place of each that is not deterministic.
class RecordingJournal : public WalkJournal {
  public:
    explicit RecordingJournal(SharedStrings &strings) : strings_(strings) {}
    bool agrees(const std::string &text, bool isDeterministic) override {
        strings_.add(isDeterministic ? text : std::string());
        return true;
    }

  private:
    SharedStrings &strings_;
};

// Compares the texts of a walk with recorded ones.
class ComparingJournal : public WalkJournal {
  public:
    explicit ComparingJournal(std::vector<std::string> expected) : expected_(std::move(expected)) {}
    bool agrees(const std::string &text, bool) override {
        if (next_ == expected_.size()) failCheck("with several threads the same calls give more results than with one");
        const std::string &recorded = expected_[next_++];
        return recorded.empty() || recorded == text;
    }

  private:
    std::vector<std::string> expected_;
    std::size_t next_ = 0;
};

// Does some work in another process and returns the strings that it hands over. If that process fails or crashes, the
// work is done again in this one, so that the check ends at the call that failed.
template <class Work>
std::vector<std::string> inOtherProcess(Work work) {
    SharedStrings strings;
    Child other(
        checkRecord(), [&] { work(strings); }, kOneThreadSeconds);
    const ChildEnd end = waitFor(other);
    if (end.outcome == Outcome::fail || end.outcome == Outcome::crash) work(strings);
    if (end.outcome != Outcome::pass && end.outcome != Outcome::warn)
        failCheck("with one thread, in another process: " + end.message);
    return strings.all();
}

void requireNothingLeft(const MemoryInUse &before, const LiveHandles &handlesBefore) {
    if (const long blocks = moduleMemory().blocks - before.blocks; blocks > 0)
        failCheck(fmt::format("{} blocks of memory are left behind after everything is destroyed", blocks));
    const LiveHandles handles = liveHandles();
    if (handles.parameters > handlesBefore.parameters)
        warnCheck("parameters are left behind after everything is destroyed");
    if (handles.editors > handlesBefore.editors) warnCheck("networks are left behind after everything is destroyed");
}

// Walks one script three times: with one thread in another process, which records the results; with several threads,
// compared with the record; and again, to see that no memory is leaked. `names` are the nodes that take part; all if it
// is empty.
void walkWithNodes(const CheckTask &task, std::vector<std::string> names) {
    const std::string script = randomCallScript(task.seed, kScript);
    const auto namesIn = [&](const WatchedModule &module) { return names.empty() ? module.names() : names; };
    const std::string classes = inOtherProcess([&](SharedStrings &strings) {
                                    WatchedModule module(task.module);
                                    strings.add(classifyNodes(module, namesIn(module), task.seed));
                                }).at(0);
    std::vector<std::string> expected = inOtherProcess([&](SharedStrings &strings) {
        WatchedModule module(task.module);
        RecordingJournal journal(strings);
        const WalkOptions options{.threads = nullptr, .renders = kRenders, .journal = &journal};
        randomWalk(makeNodeSet(module, namesIn(module), classes), script, options);
    });
    WatchedModule module(task.module);
    const NodeSet nodes = makeNodeSet(module, namesIn(module), classes);
    RenderThreads threads;
    ComparingJournal journal(std::move(expected));
    randomWalk(nodes, script, {.threads = &threads, .renders = 1, .journal = &journal});
    // By now, everything that the module allocates once and keeps exists; the same walk again may leave nothing more.
    const MemoryInUse memory = moduleMemory();
    const LiveHandles handles = liveHandles();
    randomWalk(nodes, script, {.threads = &threads, .renders = 1, .journal = nullptr});
    requireNothingLeft(memory, handles);
}

void walkWithOne(const CheckTask &task) { walkWithNodes(task, {task.server}); }
void walkWithAll(const CheckTask &task) { walkWithNodes(task, {}); }

constexpr Check kChecks[] = {
    {"together.one", 10, CheckScope::node, "any legal calls among up to 64 instances of one node", walkWithOne,
     kTurnsOfOne},
    {"together.all", 10, CheckScope::module, "any legal calls among up to 64 instances of all nodes", walkWithAll,
     kTurnsOfAll},
};

} // namespace

std::span<const Check> togetherChecks() { return kChecks; }

} // namespace velm::host
