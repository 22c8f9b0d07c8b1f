// Level 10: everything together, for long. Walks through all that a host may call, as chance has it.
#include "host/check/process/check_record.h"
#include "host/check/random_walk/node_set.h"
#include "host/check/process/child.h"
#include "host/check/watch/imports.h"
#include "host/check/levels/levels.h"
#include "host/check/process/shared_strings.h"
#include "host/check/random_walk/random_walk.h"

namespace velm::host {

namespace {

constexpr std::size_t kScript = 2500; // bytes
constexpr int kTurnsOfOne = 3, kTurnsOfAll = 24;
constexpr int kRenders = 3;              // of each picture, to see whether it is steady
constexpr double kOneThreadSeconds = 50; // more than enough for a walk, and less than a check may take

// What a walk with one thread gave, in the process that it was walked in; an empty text for what need not be the same.
class Keeping : public WalkRecord {
  public:
    explicit Keeping(PassedOn &passed) : passed_(passed) {}
    bool agrees(const std::string &text, bool isSteady) override {
        passed_.add(isSteady ? text : std::string());
        return true;
    }

  private:
    PassedOn &passed_;
};

class Comparing : public WalkRecord {
  public:
    explicit Comparing(std::vector<std::string> expected) : expected_(std::move(expected)) {}
    bool agrees(const std::string &text, bool) override {
        if (next_ == expected_.size())
            failCheck("with several threads the same calls have other results: there are more");
        const std::string &there = expected_[next_++];
        return there.empty() || there == text;
    }

  private:
    std::vector<std::string> expected_;
    std::size_t next_ = 0;
};

// Does something in a process of its own that leaves texts. Where that ends badly, it is done again in this one, so
// that it ends at its place.
template <class Work>
std::vector<std::string> elsewhere(Work work) {
    PassedOn passed;
    Child other(
        blackboard(), [&] { work(passed); }, kOneThreadSeconds);
    const ChildEnd end = waitFor(other);
    if (end.outcome == Outcome::fail || end.outcome == Outcome::crash) work(passed);
    if (end.outcome != Outcome::pass && end.outcome != Outcome::warn)
        failCheck("with one thread, in a process of its own: " + end.message);
    return passed.all();
}

void mustLeaveNothing(const MemoryInUse &before, const HandlesInUse &handlesBefore) {
    if (const long blocks = moduleMemory().blocks - before.blocks; blocks > 0)
        failCheck(std::to_string(blocks) + " blocks of memory are left behind when all is destroyed");
    const HandlesInUse handles = handlesInUse();
    if (handles.parameters > handlesBefore.parameters) warnCheck("parameters are left behind when all is destroyed");
    if (handles.editors > handlesBefore.editors) warnCheck("networks are left behind when all is destroyed");
}

// `names`: the nodes that take part; without any, all.
void walkWith(const CheckTask &task, std::vector<std::string> names) {
    const std::string script = randomScript(task.seed, kScript);
    const auto nodes = [&](const WatchedModule &module) { return names.empty() ? module.names() : names; };
    const std::string triedOut = elsewhere([&](PassedOn &passed) {
                                     WatchedModule module(task.module);
                                     passed.add(tryOut(module, nodes(module), task.seed));
                                 }).at(0);
    std::vector<std::string> expected = elsewhere([&](PassedOn &passed) {
        WatchedModule module(task.module);
        Keeping record(passed);
        const WalkManner manner{.threads = nullptr, .renders = kRenders, .record = &record};
        walk(makeCast(module, nodes(module), triedOut), script, manner);
    });
    WatchedModule module(task.module);
    const Cast cast = makeCast(module, nodes(module), triedOut);
    RenderThreads threads;
    Comparing record(std::move(expected));
    walk(cast, script, {.threads = &threads, .renders = 1, .record = &record});
    // What is made once and kept is there by now; a second time, nothing more may stay.
    const MemoryInUse memory = moduleMemory();
    const HandlesInUse handles = handlesInUse();
    walk(cast, script, {.threads = &threads, .renders = 1, .record = nullptr});
    mustLeaveNothing(memory, handles);
}

void walkWithOne(const CheckTask &task) { walkWith(task, {task.server}); }
void walkWithAll(const CheckTask &task) { walkWith(task, {}); }

constexpr Check kChecks[] = {
    {"together.one", 10, CheckScope::node, "any legal calls, among up to 64 instances of one node", walkWithOne,
     kTurnsOfOne},
    {"together.all", 10, CheckScope::module, "any legal calls, among up to 64 instances of all nodes", walkWithAll,
     kTurnsOfAll},
};

} // namespace

std::span<const Check> togetherChecks() { return kChecks; }

} // namespace velm::host
