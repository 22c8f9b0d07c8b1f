// Level 3: the life of instances, from creation to destruction.
#include "host/check/fixture/fixture.h"
#include "host/check/levels/levels.h"
#include "host/check/process/check_record.h"
#include "host/check/watch/imports.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>

namespace velm::host {

namespace {

constexpr int kFirstLives = 20, kLives = 1000, kInstances = 8, kRounds = 40, kSamples = 4;

struct Resources {
    MemoryInUse memory;
    LiveHandles handles;
};

Resources resourcesAfter(WatchedModule &module, const std::string &server, int lives) {
    for (int i = 0; i < lives; ++i) {
        noteRound(static_cast<std::uint64_t>(i));
        Fixture fixture(module, server);
        if (i % 2 == 1) fixture.panel();
    }
    return {moduleMemory(), liveHandles()};
}

void leavesNothingBehind(const CheckTask &task) {
    WatchedModule module(task.module);
    const Resources before = resourcesAfter(module, task.server, kFirstLives);
    const Resources after = resourcesAfter(module, task.server, kLives);
    const long blocks = after.memory.blocks - before.memory.blocks;
    const auto leaked = [](long count, const char *what) {
        return fmt::format("{} {} are left behind by {} instances", count, what, kLives);
    };
    if (blocks >= kLives) failCheck(leaked(blocks, "blocks of memory"));
    if (blocks > 0) warnCheck(leaked(blocks, "blocks of memory"));
    if (const long left = after.handles.parameters - before.handles.parameters; left > 0)
        warnCheck(leaked(left, "parameters"));
    if (const long left = after.handles.editors - before.handles.editors; left > 0) warnCheck(leaked(left, "networks"));
}

std::vector<ShadingSample> samplesOnThreads(Generator &random, int count) {
    std::vector<ShadingSample> samples;
    for (int i = 0; i < count; ++i) samples.push_back(makeSample(random, i % kMaxThreads));
    return samples;
}

void render(Fixture &fixture, Generator &random, int mode) {
    fixture.start(mode);
    for (int frame = 1; frame <= 2; ++frame) {
        fixture.frame(frame, frame / 25.0);
        fixture.evaluate(samplesOnThreads(random, kSamples));
    }
    fixture.end();
}

void requireSuccess(HostError error, const char *what) {
    if (error) failCheck(fmt::format("{} reports the error: {}", what, error));
}

// All calls that a host makes in a node's life, in their usual order.
void fullLife(WatchedModule &module, const std::string &server, Generator &random) {
    Fixture fixture(module, server), copy(module, server);
    fixture.panel();
    render(fixture, random, kInitPreview);
    fixture.randomSettings(random);
    render(fixture, random, kInitRender);
    for (const int mode : {kStateBinary, kStateText}) {
        const std::string saved = fixture.save(mode);
        requireSuccess(copy.load(saved, mode), "loading");
    }
    requireSuccess(copy.copyFrom(fixture), "copying");
    render(copy, random, kInitRender);
    render(fixture, random, kInitRender);
}

void followsTheRules(const CheckTask &task) {
    WatchedModule module(task.module);
    Generator random(task.seed);
    for (std::uint64_t life = 0; life < 2; ++life) {
        noteRound(life);
        fullLife(module, task.server, random);
    }
}

std::string connectors(HostNode &node) {
    std::string text;
    for (const auto &input : node.inputs) text += fmt::format("in {} {}\n", input->name, typeName(input->type));
    for (const auto &output : node.outputs) text += fmt::format("out {} {}\n", output->name, typeName(output->type));
    return text;
}

void hasTheSameConnectors(const CheckTask &task) {
    WatchedModule module(task.module);
    Generator random(task.seed);
    Fixture first(module, task.server);
    const std::string expected = connectors(first.node());
    if (first.node().outputs.empty()) warnCheck("it has no output");
    for (int i = 1; i < kInstances; ++i) {
        Fixture other(module, task.server);
        if (connectors(other.node()) != expected)
            failCheck(fmt::format("instance {} has other inputs or outputs than the first", i + 1));
        if (i % 2 == 1) other.randomSettings(random);
    }
}

void endsInAnyOrder(const CheckTask &task) {
    WatchedModule module(task.module);
    Generator random(task.seed);
    std::vector<std::unique_ptr<Fixture>> fixtures;
    for (int round = 0; round < kRounds * kInstances; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        if (fixtures.size() < kInstances && random.chance(0.55)) {
            fixtures.push_back(std::make_unique<Fixture>(module, task.server));
            fixtures.back()->panel();
        } else if (!fixtures.empty()) {
            fixtures.erase(fixtures.begin() + random.below(fixtures.size()));
        }
        for (const auto &fixture : fixtures) render(*fixture, random, kInitRender);
    }
}

constexpr Check kChecks[] = {
    {"life.balance", 3, CheckScope::node, "a thousand instances leave neither memory nor host objects behind",
     leavesNothingBehind},
    {"life.calls", 3, CheckScope::node, "two full lives keep to the interface's rules on threads, phases and handles",
     followsTheRules},
    {"life.connectors", 3, CheckScope::node, "all instances have the same inputs and outputs", hasTheSameConnectors},
    {"life.order", 3, CheckScope::node, "instances may be destroyed in any order", endsInAnyOrder},
};

} // namespace

std::span<const Check> lifeChecks() { return kChecks; }

} // namespace velm::host
