// Level 3: instances come and go.
#include "host/check/process/check_record.h"
#include "host/check/watch/imports.h"
#include "host/check/levels/levels.h"
#include "host/check/fixture/fixture.h"

#include <algorithm>
#include <memory>

namespace velm::host {

namespace {

constexpr int kFirstLives = 20, kLives = 1000, kInstances = 8, kRounds = 40, kSamples = 4;

struct Held {
    MemoryInUse memory;
    HandlesInUse handles;
};

Held heldAfter(WatchedModule &module, const std::string &server, int lives) {
    for (int i = 0; i < lives; ++i) {
        noteRound(static_cast<std::uint64_t>(i));
        Stage stage(module, server);
        if (i % 2 == 1) stage.panel();
    }
    return {moduleMemory(), handlesInUse()};
}

void leavesNothingBehind(const CheckTask &task) {
    WatchedModule module(task.module);
    const Held before = heldAfter(module, task.server, kFirstLives);
    const Held after = heldAfter(module, task.server, kLives);
    const long blocks = after.memory.blocks - before.memory.blocks;
    const std::string each = " are left behind by " + std::to_string(kLives) + " instances";
    if (blocks >= kLives) failCheck(std::to_string(blocks) + " blocks of memory" + each);
    if (blocks > 0) warnCheck(std::to_string(blocks) + " blocks of memory" + each);
    if (const long left = after.handles.parameters - before.handles.parameters; left > 0)
        warnCheck(std::to_string(left) + " parameters" + each);
    if (const long left = after.handles.editors - before.handles.editors; left > 0)
        warnCheck(std::to_string(left) + " networks" + each);
}

std::vector<ShadingSample> samplesOnThreads(Dice &dice, int count) {
    std::vector<ShadingSample> samples;
    for (int i = 0; i < count; ++i) samples.push_back(makeSample(dice, i % kMaxThreads));
    return samples;
}

void render(Stage &stage, Dice &dice, int mode) {
    stage.start(mode);
    for (int frame = 1; frame <= 2; ++frame) {
        stage.frame(frame, frame / 25.0);
        stage.evaluate(samplesOnThreads(dice, kSamples));
    }
    stage.end();
}

void must(HostError error, const char *what) {
    if (error) failCheck(std::string(what) + " gives the error: " + error);
}

// Everything that a host calls in a node's life, in its order.
void wholeLife(WatchedModule &module, const std::string &server, Dice &dice) {
    Stage stage(module, server), copy(module, server);
    stage.panel();
    render(stage, dice, kInitPreview);
    stage.randomSettings(dice);
    render(stage, dice, kInitRender);
    for (const int mode : {kStateBinary, kStateText}) {
        const std::string saved = stage.save(mode);
        must(copy.load(saved, mode), "loading");
    }
    must(copy.copyFrom(stage), "copying");
    render(copy, dice, kInitRender);
    render(stage, dice, kInitRender);
}

void livesTwice(const CheckTask &task) {
    WatchedModule module(task.module);
    Dice dice(task.seed);
    for (std::uint64_t life = 0; life < 2; ++life) {
        noteRound(life);
        wholeLife(module, task.server, dice);
    }
}

std::string connectors(HostNode &node) {
    std::string text;
    for (const auto &input : node.inputs) text += "in " + input->name + ' ' + typeName(input->type) + '\n';
    for (const auto &output : node.outputs) text += "out " + output->name + ' ' + typeName(output->type) + '\n';
    return text;
}

void hasTheSameConnectors(const CheckTask &task) {
    WatchedModule module(task.module);
    Dice dice(task.seed);
    Stage first(module, task.server);
    const std::string expected = connectors(first.node());
    if (first.node().outputs.empty()) warnCheck("it has no output");
    for (int i = 1; i < kInstances; ++i) {
        Stage other(module, task.server);
        if (connectors(other.node()) != expected)
            failCheck("instance " + std::to_string(i + 1) + " has other inputs or outputs than the first");
        if (i % 2 == 1) other.randomSettings(dice);
    }
}

void diesInAnyOrder(const CheckTask &task) {
    WatchedModule module(task.module);
    Dice dice(task.seed);
    std::vector<std::unique_ptr<Stage>> stages;
    for (int round = 0; round < kRounds * kInstances; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        if (stages.size() < kInstances && dice.chance(0.55)) {
            stages.push_back(std::make_unique<Stage>(module, task.server));
            stages.back()->panel();
        } else if (!stages.empty()) {
            stages.erase(stages.begin() + dice.below(stages.size()));
        }
        for (const auto &stage : stages) render(*stage, dice, kInitRender);
    }
}

constexpr Check kChecks[] = {
    {"life.balance", 3, CheckScope::node, "a thousand instances leave neither memory nor host objects behind",
     leavesNothingBehind},
    {"life.calls", 3, CheckScope::node, "two whole lives keep to the wall's threads, phases and handles", livesTwice},
    {"life.connectors", 3, CheckScope::node, "all instances have the same inputs and outputs", hasTheSameConnectors},
    {"life.order", 3, CheckScope::node, "instances end in any order without harm to the others", diesInAnyOrder},
};

} // namespace

std::span<const Check> lifeChecks() { return kChecks; }

} // namespace velm::host
