// Level 7: whatever people and networks may feed a node. It may give anything, but has to come to an end of it.
#include "host/check/blackboard.h"
#include "host/check/feeder.h"
#include "host/check/levels.h"
#include "host/check/stage.h"

#include <climits>
#include <cmath>
#include <functional>
#include <limits>

namespace velm::host {

namespace {

constexpr int kSettings = 300, kFewSettings = 20, kWirings = 100, kNodesWired = 4, kTimes = 200, kOddSamples = 300;
constexpr int kLongest = 1000; // of an odd whole number: counts of samples make an evaluation long

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
constexpr int kOddWholes[] = {0, -1, 1, 2, 7, -2, 70, kLongest, -kLongest, INT_MIN, INT_MIN + 1, -32768};

void renderSome(Stage &stage, const std::vector<ShadingSample> &samples) {
    stage.start();
    stage.frame(1, 0.04);
    stage.evaluate(samples);
    stage.end();
}

std::vector<ShadingSample> someSamples(Dice &dice) { return {makeSample(dice, 0), makeSample(dice, 15)}; }

// What a control is tried with: its ends, what lies just beyond, and odd numbers.
std::vector<double> endsOf(const PanelItem &control) {
    std::vector<double> numbers;
    const double factor = control.type ? shownFactor(control.type->unit) : 1;
    for (const auto &end : {control.minimum, control.maximum})
        if (end)
            for (const int beside : {-1, 0, 1}) numbers.push_back((*end + beside) / factor);
    if (control.type && control.type->storage == Storage::integer)
        numbers.insert(numbers.end(), std::begin(kOddWholes), std::end(kOddWholes));
    else
        for (const double number : kOddNumbers)
            if (std::isfinite(number)) numbers.push_back(number);
    return numbers;
}

void standsEnds(const CheckTask &task) {
    WatchedModule module(task.module);
    Dice dice(task.seed);
    std::uint64_t round = 0;
    Stage shown(module, task.server);
    HostPanel *panel = shown.panel();
    if (!panel) return;
    for (const unsigned int id : panel->controls())
        for (const double number : endsOf(*panel->find(id))) {
            noteRound(++round);
            Stage stage(module, task.server);
            setNumber(*stage.panel(), *stage.panel()->find(id), number);
            renderSome(stage, someSamples(dice));
            stage.save();
        }
}

void standsSettings(const CheckTask &task) {
    WatchedModule module(task.module);
    Stage stage(module, task.server);
    Dice dice(task.seed);
    for (int round = 0; round < kSettings; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        stage.randomSettings(dice);
        renderSome(stage, someSamples(dice));
    }
}

void connectAll(Stage &stage, HostNode &feeder, Dice &dice, double part) {
    for (const auto &input : stage.node().inputs) {
        stage.editor().disconnect(*input);
        if (dice.chance(part)) stage.editor().connect(feederFor(feeder, *input), *input);
    }
}

void standsOddInputs(const CheckTask &task) {
    WatchedModule module(task.module);
    Stage stage(module, task.server);
    HostNode &feeder = addFeeder(stage.editor());
    Dice dice(task.seed);
    std::uint64_t round = 0;
    for (int settings = 0; settings < kFewSettings; ++settings) {
        if (settings > 0) stage.randomSettings(dice);
        for (const double number : kOddNumbers) {
            noteRound(++round);
            connectAll(stage, feeder, dice, settings == 0 ? 1 : 0.5);
            feed(number, kOddWholes[dice.below(std::size(kOddWholes))]);
            renderSome(stage, someSamples(dice));
        }
    }
}

void makeOdd(ShadingSample &sample, Dice &dice) {
    const auto odd = [&] { return kOddNumbers[dice.below(std::size(kOddNumbers))]; };
    const auto maybe = [&](double(&triple)[3]) {
        const bool zero = dice.chance(0.3);
        if (dice.chance(0.3))
            for (double &component : triple) component = zero ? 0 : odd();
    };
    for (auto *triple : {&sample.position, &sample.geometricNormal, &sample.shadingNormal, &sample.raySource,
                         &sample.unbumpedNormal, &sample.objectPosition})
        maybe(*triple);
    if (dice.chance(0.3)) sample.rayLength = sample.spotSize = sample.cosine = odd();
    if (dice.chance(0.3)) sample.refractionIndex = odd();
    if (dice.chance(0.3)) sample.rayDepth = kOddWholes[dice.below(std::size(kOddWholes))];
    if (dice.chance(0.3)) sample.pixelX = sample.pixelY = kOddWholes[dice.below(std::size(kOddWholes))];
    if (dice.chance(0.3)) withoutRays(sample);
    sample.rayFlags = dice.between(0, 127);
    sample.threadIndex = dice.below(kMaxThreads);
}

void standsOddSamples(const CheckTask &task) {
    WatchedModule module(task.module);
    Stage stage(module, task.server);
    Dice dice(task.seed);
    for (int round = 0; round < kOddSamples; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        if (round % 5 == 4) stage.randomSettings(dice);
        ShadingSample sample = makeSample(dice);
        if (round == 0)
            withoutRays(sample);
        else
            makeOdd(sample, dice);
        renderSome(stage, {sample});
    }
}

void standsWirings(const CheckTask &task) {
    WatchedModule module(task.module);
    const std::vector<std::string> names = module.names();
    Dice dice(task.seed);
    for (int round = 0; round < kWirings; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        Network editor("Check", "Check", nullptr, nullptr);
        for (int i = 0; i < kNodesWired; ++i)
            editor.addNode(module.server(names[static_cast<std::size_t>(dice.below(names.size()))]));
        connectAtRandom(editor, dice);
        editor.init(kInitRender);
        editor.newTime(1, 0.04);
        const ShadingSample sample = makeSample(dice);
        for (const auto &node : editor.nodes())
            for (const auto &output : node->outputs) evaluateOutput(*output, sample);
        editor.cleanup();
    }
}

void standsTimes(const CheckTask &task) {
    WatchedModule module(task.module);
    Stage stage(module, task.server);
    Dice dice(task.seed);
    stage.randomSettings(dice);
    stage.start();
    int frame = 10;
    for (int round = 0; round < kTimes; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        if (dice.chance(0.2)) frame = dice.between(-1000, 1000000); // else one back, one on, or the same again
        frame += dice.between(-1, 1);
        stage.frame(frame, frame / 25.0);
        stage.evaluate(someSamples(dice));
    }
    stage.end();
}

constexpr Check kChecks[] = {
    {"inputs.ends", 7, CheckScope::node, "every control may be set to its ends and beyond", standsEnds},
    {"inputs.settings", 7, CheckScope::node, "hundreds of settings come to a result", standsSettings},
    {"inputs.values", 7, CheckScope::node, "inputs may bring NaN, infinities, huge and tiny numbers", standsOddInputs},
    {"inputs.samples", 7, CheckScope::node, "odd points, and samples without ray functions, come to a result",
     standsOddSamples},
    {"inputs.wirings", 7, CheckScope::module, "the module's nodes may be wired in any way", standsWirings},
    {"inputs.times", 7, CheckScope::node, "time may go back, stand and leap", standsTimes},
};

} // namespace

std::span<const Check> inputChecks() { return kChecks; }

} // namespace velm::host
