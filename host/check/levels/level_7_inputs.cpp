// Level 7: extreme settings, inputs and samples. A node may give any result for them, but must not crash or hang.
#include "host/check/fixture/fixture.h"
#include "host/check/fixture/source_node.h"
#include "host/check/levels/levels.h"
#include "host/check/process/check_record.h"

#include <climits>
#include <cmath>
#include <functional>
#include <limits>

namespace velm::host {

namespace {

constexpr int kSettings = 300, kFewSettings = 20, kNetworks = 100, kNodesPerNetwork = 4, kTimes = 200,
              kOddSamples = 300;
constexpr int kLongest = 1000; // largest odd integer, since sample counts make an evaluation slow

using Limits = std::numeric_limits<double>;
constexpr double kOddNumbers[] = {0.0,
                                  -0.0,
                                  1.0,
                                  -1.0,
                                  Limits::min(),
                                  Limits::denorm_min(),
                                  1e-300,
                                  1e30,
                                  -1e30,
                                  1e300,
                                  -1e300,
                                  Limits::max(),
                                  1e9,
                                  Limits::lowest(),
                                  0.5,
                                  -1e-12,
                                  Limits::infinity(),
                                  -Limits::infinity(),
                                  Limits::quiet_NaN()};
constexpr int kOddIntegers[] = {0, -1, 1, 2, 7, -2, 70, kLongest, -kLongest, INT_MIN, INT_MIN + 1, -32768};

void renderSome(Fixture &fixture, const std::vector<ShadingSample> &samples) {
    fixture.start();
    fixture.frame(1, 0.04);
    fixture.evaluate(samples);
    fixture.end();
}

std::vector<ShadingSample> someSamples(Generator &random) { return {makeSample(random, 0), makeSample(random, 15)}; }

// The numbers that a control is tried with: its limits, their neighbours, and odd numbers.
std::vector<double> limitsOf(const PanelItem &control) {
    std::vector<double> numbers;
    const double factor = control.type ? shownFactor(control.type->unit) : 1;
    for (const auto &limit : {control.minimum, control.maximum})
        if (limit)
            for (const int offset : {-1, 0, 1}) numbers.push_back((*limit + offset) / factor);
    if (control.type && control.type->storage == Storage::integer)
        numbers.insert(numbers.end(), std::begin(kOddIntegers), std::end(kOddIntegers));
    else
        for (const double number : kOddNumbers)
            if (std::isfinite(number)) numbers.push_back(number);
    return numbers;
}

void survivesLimits(const CheckTask &task) {
    WatchedModule module(task.module);
    Generator random(task.seed);
    std::uint64_t round = 0;
    Fixture shown(module, task.server);
    HostPanel *panel = shown.panel();
    if (!panel) return;
    for (const unsigned int id : panel->controls())
        for (const double number : limitsOf(*panel->find(id))) {
            noteRound(++round);
            Fixture fixture(module, task.server);
            setNumber(*fixture.panel(), *fixture.panel()->find(id), number);
            renderSome(fixture, someSamples(random));
            fixture.save();
        }
}

void survivesSettings(const CheckTask &task) {
    WatchedModule module(task.module);
    Fixture fixture(module, task.server);
    Generator random(task.seed);
    for (int round = 0; round < kSettings; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        fixture.randomSettings(random);
        renderSome(fixture, someSamples(random));
    }
}

void connectInputs(Fixture &fixture, HostNode &source, Generator &random, double probability) {
    for (const auto &input : fixture.node().inputs) {
        fixture.network().disconnect(*input);
        if (random.chance(probability)) fixture.network().connect(sourceOutputFor(source, *input), *input);
    }
}

void survivesOddInputs(const CheckTask &task) {
    WatchedModule module(task.module);
    Fixture fixture(module, task.server);
    HostNode &source = addSourceNode(fixture.network());
    Generator random(task.seed);
    std::uint64_t round = 0;
    for (int settings = 0; settings < kFewSettings; ++settings) {
        if (settings > 0) fixture.randomSettings(random);
        for (const double number : kOddNumbers) {
            noteRound(++round);
            connectInputs(fixture, source, random, settings == 0 ? 1 : 0.5);
            setSourceValues(number, kOddIntegers[random.below(std::size(kOddIntegers))]);
            renderSome(fixture, someSamples(random));
        }
    }
}

void makeOdd(ShadingSample &sample, Generator &random) {
    const auto odd = [&] { return kOddNumbers[random.below(std::size(kOddNumbers))]; };
    const auto maybe = [&](double(&vector)[3]) {
        const bool zero = random.chance(0.3);
        if (random.chance(0.3))
            for (double &component : vector) component = zero ? 0 : odd();
    };
    for (auto *vector : {&sample.position, &sample.geometricNormal, &sample.shadingNormal, &sample.raySource,
                         &sample.unbumpedNormal, &sample.objectPosition})
        maybe(*vector);
    if (random.chance(0.3)) sample.rayLength = sample.spotSize = sample.cosine = odd();
    if (random.chance(0.3)) sample.refractionIndex = odd();
    if (random.chance(0.3)) sample.rayDepth = kOddIntegers[random.below(std::size(kOddIntegers))];
    if (random.chance(0.3)) sample.pixelX = sample.pixelY = kOddIntegers[random.below(std::size(kOddIntegers))];
    if (random.chance(0.3)) removeRays(sample);
    sample.rayFlags = random.between(0, 127);
    sample.threadIndex = random.below(kMaxThreads);
}

void survivesOddSamples(const CheckTask &task) {
    WatchedModule module(task.module);
    Fixture fixture(module, task.server);
    Generator random(task.seed);
    for (int round = 0; round < kOddSamples; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        if (round % 5 == 4) fixture.randomSettings(random);
        ShadingSample sample = makeSample(random);
        if (round == 0)
            removeRays(sample);
        else
            makeOdd(sample, random);
        renderSome(fixture, {sample});
    }
}

void survivesConnections(const CheckTask &task) {
    WatchedModule module(task.module);
    const std::vector<std::string> names = module.names();
    Generator random(task.seed);
    for (int round = 0; round < kNetworks; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        Network network("Check", "Check", nullptr, nullptr);
        for (int i = 0; i < kNodesPerNetwork; ++i)
            network.addNode(module.server(names[static_cast<std::size_t>(random.below(names.size()))]));
        connectAtRandom(network, random);
        network.init(kInitRender);
        network.newTime(1, 0.04);
        const ShadingSample sample = makeSample(random);
        for (const auto &node : network.nodes())
            for (const auto &output : node->outputs) evaluateOutput(*output, sample);
        network.cleanup();
    }
}

void survivesTimes(const CheckTask &task) {
    WatchedModule module(task.module);
    Fixture fixture(module, task.server);
    Generator random(task.seed);
    fixture.randomSettings(random);
    fixture.start();
    int frame = 10;
    for (int round = 0; round < kTimes; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        if (random.chance(0.2))
            frame = random.between(-1000, 1000000); // else one frame back, one on, or the same again
        frame += random.between(-1, 1);
        fixture.frame(frame, frame / 25.0);
        fixture.evaluate(someSamples(random));
    }
    fixture.end();
}

constexpr Check kChecks[] = {
    {"inputs.ends", 7, CheckScope::node, "every control may be set to its limits and beyond", survivesLimits},
    {"inputs.settings", 7, CheckScope::node, "hundreds of random settings give a result", survivesSettings},
    {"inputs.values", 7, CheckScope::node, "inputs may give NaN, infinities, huge and tiny numbers", survivesOddInputs},
    {"inputs.samples", 7, CheckScope::node, "odd samples, and samples without ray functions, give a result",
     survivesOddSamples},
    {"inputs.wirings", 7, CheckScope::module, "the module's nodes may be connected in any way", survivesConnections},
    {"inputs.times", 7, CheckScope::node, "time may go back, stand still and jump", survivesTimes},
};

} // namespace

std::span<const Check> inputChecks() { return kChecks; }

} // namespace velm::host
