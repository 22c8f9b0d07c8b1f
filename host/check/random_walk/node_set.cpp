#include "host/check/random_walk/node_set.h"

#include "host/check/fixture/fixture.h"
#include "host/check/fixture/source_node.h"

#include <algorithm>
#include <memory>

namespace velm::host {

namespace {

constexpr int kSettings = 6, kRenders = 3, kSamplesPerThread = 2, kTrials = 24;
constexpr double kSourceNumber = 0.37;
constexpr int kSourceInteger = 3;

std::vector<ShadingSample> someSamples(Generator &random) {
    std::vector<ShadingSample> samples;
    for (int i = 0; i < kSamplesPerThread * kMaxThreads; ++i) samples.push_back(makeSample(random, i % kMaxThreads));
    return samples;
}

std::vector<Result> renderOnce(Fixture &fixture, const std::vector<ShadingSample> &samples) {
    fixture.start();
    fixture.frame(1, 0.04);
    std::vector<Result> results = fixture.evaluate(samples);
    fixture.end();
    return results;
}

bool isDeterministic(const WatchedServers &servers, const std::string &name, Generator &random) {
    Fixture fixture(servers, name);
    for (int settings = 0; settings < kSettings; ++settings) {
        if (settings > 0) fixture.randomSettings(random);
        const std::vector<ShadingSample> samples = someSamples(random);
        const std::vector<Result> first = renderOnce(fixture, samples);
        for (int i = 1; i < kRenders; ++i)
            if (renderOnce(fixture, samples) != first) return false;
    }
    return true;
}

// Compares the results while there is another instance of every node, each with source nodes at its inputs, with those
// after these instances are gone.
bool isIndependent(const WatchedServers &servers, const std::string &name, Generator &random) {
    setSourceValues(kSourceNumber, kSourceInteger);
    for (int trial = 0; trial < kTrials; ++trial) {
        std::vector<std::unique_ptr<Fixture>> others;
        for (const std::string &other : servers.names()) {
            Fixture &made = *others.emplace_back(std::make_unique<Fixture>(servers, other));
            HostNode &source = addSourceNode(made.network());
            for (const auto &input : made.node().inputs)
                made.network().connect(sourceOutputFor(source, *input), *input);
        }
        Fixture fixture(servers, name);
        fixture.randomSettings(random);
        const std::vector<ShadingSample> samples = someSamples(random);
        const std::vector<Result> together = renderOnce(fixture, samples);
        others.clear();
        if (renderOnce(fixture, samples) != together) return false;
    }
    return true;
}

} // namespace

std::string classifyNodes(const WatchedServers &servers, const std::vector<std::string> &names, std::uint64_t seed) {
    std::string found;
    Generator random(seed);
    for (const std::string &name : names) {
        const bool repeats = isDeterministic(servers, name, random);
        found += repeats ? 'y' : 'n';
        found += repeats && isIndependent(servers, name, random) ? 'y' : 'n';
    }
    return found;
}

NodeSet makeNodeSet(const WatchedServers &servers, const std::vector<std::string> &names, const std::string &classes) {
    const std::vector<std::string> all = servers.names();
    NodeSet nodes;
    for (std::size_t i = 0; i < names.size(); ++i)
        nodes.push_back({.server = &servers.server(names[i]),
                         .index = static_cast<int>(std::find(all.begin(), all.end(), names[i]) - all.begin()),
                         .isDeterministic = classes.at(2 * i) == 'y',
                         .isIndependent = classes.at(2 * i + 1) == 'y'});
    return nodes;
}

} // namespace velm::host
