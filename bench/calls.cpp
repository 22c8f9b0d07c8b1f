// Single calls: a draw, a noise value, and evaluations of nodes of the module through the stand-alone host.
#include "bench/reference_mt19937.h"
#include "host/graph/network.h"
#include "host/load/module.h"
#include "host/panel/settings.h"
#include "random/random.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <random>

namespace {

using namespace velm;

void drawOfTheStream(benchmark::State &state) {
    init_genrand(3);
    for (auto _ : state) benchmark::DoNotOptimize(genrand_real1());
}
BENCHMARK(drawOfTheStream);

void drawOfThePlainReference(benchmark::State &state) {
    bench::ReferenceTwister twister(3);
    for (auto _ : state) benchmark::DoNotOptimize(twister.closed());
}
BENCHMARK(drawOfThePlainReference);

void drawOfTheStandardLibrary(benchmark::State &state) {
    std::mt19937 twister(3);
    for (auto _ : state) benchmark::DoNotOptimize(static_cast<uint32_t>(twister()) * (1.0 / 4294967295.0));
}
BENCHMARK(drawOfTheStandardLibrary);

void noiseOfTheStream(benchmark::State &state) {
    init_genrand(3);
    for (auto _ : state) benchmark::DoNotOptimize(gaussianNoise());
}
BENCHMARK(noiseOfTheStream);

void noiseOfThePlainReference(benchmark::State &state) {
    bench::ReferenceTwister twister(3);
    for (auto _ : state) benchmark::DoNotOptimize(twister.noise());
}
BENCHMARK(noiseOfThePlainReference);

// The module's servers, and a network with one node of them whose output feeds the root.
class Bed {
  public:
    Bed(const char *server, const char *output, int type) : module_(Module::open(VELM_MODULE_FILE)) {
        serverList().add(module_.servers(), module_.path());
        editor_ = std::make_unique<HostNodeEditor>("Bench", "Bench", nullptr, nullptr);
        HostNode &node = editor_->addNode(serverList().get(server));
        input_ = createInput(editor_->root(), type, "In", nullptr);
        editor_->connect(*node.findOutput(output), *input_);
        editor_->init(kInitRender);
        editor_->newTime(0, 0);
        sample_.shadingNormal[1] = sample_.geometricNormal[1] = 1;
        sample_.rayCast = [](const double *, const double *) { return 1.0; };
    }
    ~Bed() {
        editor_->cleanup();
        editor_.reset();
        serverList().remove(module_.path());
    }

    void evaluate(double value[3]) { evaluateInput(input_, &sample_, value); }

  protected:
    // Another node in the network, which feeds the root from now on.
    HostNode &feedBy(const char *server, const char *output) {
        HostNode &node = editor_->addNode(serverList().get(server));
        editor_->connect(*node.findOutput(output), *input_);
        return node;
    }
    HostNodeEditor &editor() { return *editor_; }

  private:
    Module module_;
    std::unique_ptr<HostNodeEditor> editor_;
    HostInput *input_;
    ShadingSample sample_{};
};

void evaluateNode(benchmark::State &state, const char *server, const char *output, int type) {
    Bed bed(server, output, type);
    for (auto _ : state) {
        double value[3] = {};
        bed.evaluate(value);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK_CAPTURE(evaluateNode, counter, "Velm Counter", "Out", kConnectScalar);
BENCHMARK_CAPTURE(evaluateNode, ambientOcclusionScalar, "Velm Ambient Occlusion", "Scalar", kConnectScalar);
BENCHMARK_CAPTURE(evaluateNode, ambientOcclusionColour, "Velm Ambient Occlusion", "Color", kConnectColour);

// A network in the root's place, and the same one through a store of its own and a node that gets it from there.
constexpr const char *kNoise = "Fractal Noise";

class SharedBed : public Bed {
  public:
    SharedBed() : Bed(kNoise, "Color", kConnectColour) {
        HostNode &store = editor().addNode(serverList().get("Velm Store Material"));
        editor().connect(kNoise, "Color", store.name, "Color");
        HostNode &get = feedBy("Velm Get Material", "Color");
        applySetting(*panelOf(get), {.label = "Slot", .value = store.name, .place = {}});
        editor().cleanup(); // a get looks for its store when rendering starts
        editor().init(kInitRender);
        editor().newTime(0, 0);
    }
};

void evaluateInPlace(benchmark::State &state) {
    Bed bed(kNoise, "Color", kConnectColour);
    for (auto _ : state) {
        double value[3] = {};
        bed.evaluate(value);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(evaluateInPlace);

void evaluateThroughAStore(benchmark::State &state) {
    SharedBed bed;
    for (auto _ : state) {
        double value[3] = {};
        bed.evaluate(value);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(evaluateThroughAStore);

// A network sampled by a node, and the same number of evaluations by hand.
constexpr int kSamples = 64;

class SampledBed : public Bed {
  public:
    SampledBed() : Bed(kNoise, "Color", kConnectColour) {
        HostNode &sampler = feedBy("Velm Take Samples", "Color");
        applySetting(*panelOf(sampler), {.label = "Samples", .value = double{kSamples}, .place = {}});
        editor().connect(kNoise, "Color", sampler.name, "Color");
    }
};

void evaluateSamplesByHand(benchmark::State &state) {
    Bed bed(kNoise, "Color", kConnectColour);
    for (auto _ : state) {
        double sum[3] = {};
        for (int i = 0; i < kSamples; ++i) {
            double value[3] = {};
            bed.evaluate(value);
            for (int k = 0; k < 3; ++k) sum[k] += value[k];
        }
        benchmark::DoNotOptimize(sum);
    }
}
BENCHMARK(evaluateSamplesByHand);

void evaluateSamplesByANode(benchmark::State &state) {
    SampledBed bed;
    for (auto _ : state) {
        double value[3] = {};
        bed.evaluate(value);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(evaluateSamplesByANode);

// The yardstick of a node with five unconnected inputs: five indirect calls that return at once.
void fiveIndirectCalls(benchmark::State &state) {
    const auto nothing = [](HostInput *input, ShadingSample *, void *) { return input != nullptr ? 1 : 0; };
    int (*volatile call)(HostInput *, ShadingSample *, void *) = nothing;
    double value = 0;
    for (auto _ : state)
        for (int i = 0; i < 5; ++i) benchmark::DoNotOptimize(call(nullptr, nullptr, &value));
}
BENCHMARK(fiveIndirectCalls);

} // namespace

BENCHMARK_MAIN();
