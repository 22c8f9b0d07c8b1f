#include "host/check/random_walk/node_set.h"

#include "host/check/fixture/source_node.h"
#include "host/check/fixture/fixture.h"

#include <algorithm>
#include <memory>

namespace velm::host {

namespace {

constexpr int kSettings = 6, kRenders = 3, kOfEachThread = 2, kMeetings = 24;
constexpr double kFed = 0.37;
constexpr int kFedWhole = 3;

std::vector<ShadingSample> someSamples(Dice &dice) {
    std::vector<ShadingSample> samples;
    for (int i = 0; i < kOfEachThread * kMaxThreads; ++i) samples.push_back(makeSample(dice, i % kMaxThreads));
    return samples;
}

std::vector<Result> renderOnce(Stage &stage, const std::vector<ShadingSample> &samples) {
    stage.start();
    stage.frame(1, 0.04);
    std::vector<Result> results = stage.evaluate(samples);
    stage.end();
    return results;
}

bool isSteady(const WatchedServers &servers, const std::string &name, Dice &dice) {
    Stage stage(servers, name);
    for (int settings = 0; settings < kSettings; ++settings) {
        if (settings > 0) stage.randomSettings(dice);
        const std::vector<ShadingSample> samples = someSamples(dice);
        const std::vector<Result> first = renderOnce(stage, samples);
        for (int i = 1; i < kRenders; ++i)
            if (renderOnce(stage, samples) != first) return false;
    }
    return true;
}

// Whether it gives the same while there is an instance of every node, each fed with numbers, and when they are gone.
bool isSelfContained(const WatchedServers &servers, const std::string &name, Dice &dice) {
    feed(kFed, kFedWhole);
    for (int meeting = 0; meeting < kMeetings; ++meeting) {
        std::vector<std::unique_ptr<Stage>> others;
        for (const std::string &other : servers.names()) {
            Stage &made = *others.emplace_back(std::make_unique<Stage>(servers, other));
            HostNode &feeder = addFeeder(made.editor());
            for (const auto &input : made.node().inputs) made.editor().connect(feederFor(feeder, *input), *input);
        }
        Stage stage(servers, name);
        stage.randomSettings(dice);
        const std::vector<ShadingSample> samples = someSamples(dice);
        const std::vector<Result> together = renderOnce(stage, samples);
        others.clear();
        if (renderOnce(stage, samples) != together) return false;
    }
    return true;
}

} // namespace

std::string tryOut(const WatchedServers &servers, const std::vector<std::string> &names, std::uint64_t seed) {
    std::string found;
    Dice dice(seed);
    for (const std::string &name : names) {
        const bool steady = isSteady(servers, name, dice);
        found += steady ? 'y' : 'n';
        found += steady && isSelfContained(servers, name, dice) ? 'y' : 'n';
    }
    return found;
}

Cast makeCast(const WatchedServers &servers, const std::vector<std::string> &names, const std::string &triedOut) {
    const std::vector<std::string> all = servers.names();
    Cast cast;
    for (std::size_t i = 0; i < names.size(); ++i)
        cast.push_back({.server = &servers.server(names[i]),
                        .place = static_cast<int>(std::find(all.begin(), all.end(), names[i]) - all.begin()),
                        .isSteady = triedOut.at(2 * i) == 'y',
                        .isSelfContained = triedOut.at(2 * i + 1) == 'y'});
    return cast;
}

} // namespace velm::host
