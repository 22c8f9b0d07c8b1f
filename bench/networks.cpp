// Evaluation of the module's nodes through the stand-alone host.
#include "bench/compare.h"
#include "host/graph/listed_module.h"
#include "host/graph/network.h"
#include "host/panel/settings.h"

#include <memory>
#include <string>

namespace velm::host::bench {
namespace {

// Many short rounds, so that both of a pair run under the same load.
constexpr int kRounds = 151;
constexpr const char *kNoise = "Fractal Noise"; // has a cost, and gives the same result at every evaluation

// A network whose last node feeds the root.
class Bed {
  public:
    Bed() {
        editor_ = std::make_unique<Network>("Bench", "Bench", nullptr, nullptr);
        sample_.shadingNormal[1] = sample_.geometricNormal[1] = 1;
    }
    ~Bed() {
        if (input_) editor_->cleanup();
    }
    Bed(const Bed &) = delete;
    Bed &operator=(const Bed &) = delete;

    HostNode &add(const char *server) { return editor_->addNode(serverList().get(server)); }
    void connect(const HostNode &from, const char *output, const HostNode &to, const char *input) {
        editor_->connect(*from.findOutput(output), *to.findInput(input));
    }
    // Selects what is measured from now on.
    void start(const HostNode &last, const char *output, int type) {
        input_ = createInput(editor_->root(), type, "In", nullptr);
        editor_->connect(*last.findOutput(output), *input_);
        editor_->init(kInitRender);
        editor_->newTime(0, 0);
    }
    void evaluate() {
        double value[3] = {};
        evaluateInput(input_, &sample_, value);
        keep(value);
    }

  private:
    std::unique_ptr<Network> editor_;
    HostInput *input_ = nullptr;
    ShadingSample sample_{};
};

// Five calls through a pointer that the compiler cannot see through.
double fiveCallsThatReturnAtOnce(int calls) {
    const auto nothing = [](HostInput *input, ShadingSample *, void *) { return input ? 1 : 0; };
    int (*volatile call)(HostInput *, ShadingSample *, void *) = nothing;
    double value = 0;
    return nanosecondsOf(calls, [&] {
        for (int i = 0; i < 5; ++i) keep(call(nullptr, nullptr, &value));
    });
}

void compareUnconnected(Table &table) {
    Bed bed;
    bed.start(bed.add("Velm Counter"), "Out", kConnectScalar);
    constexpr int kCalls = 200000;
    table.compare(
        {.what = "evaluate of a node with five unconnected inputs",
         .against = "five indirect calls that return at once",
         .unit = "ns",
         .goal = Goal::ratioAtMost,
         .target = 1.5},
        kRounds, [&] { return nanosecondsOf(kCalls, [&] { bed.evaluate(); }); },
        [] { return fiveCallsThatReturnAtOnce(kCalls); });
}

// The last of `length` nodes, each fed by the one before.
const HostNode &chain(Bed &bed, int length) {
    const HostNode *last = &bed.add("Velm Counter");
    for (int i = 1; i < length; ++i) {
        const HostNode &next = bed.add("Velm Counter");
        bed.connect(*last, "Out", next, "A");
        last = &next;
    }
    return *last;
}

void compareChains(Table &table) {
    constexpr int kLong = 100, kShort = 10, kNodes = 400000;
    Bed longBed, shortBed;
    longBed.start(chain(longBed, kLong), "Out", kConnectScalar);
    shortBed.start(chain(shortBed, kShort), "Out", kConnectScalar);
    const auto perNode = [](Bed &bed, int length) {
        return nanosecondsOf(kNodes / length, [&bed] { bed.evaluate(); }) / length;
    };
    table.compare(
        {.what = "evaluate through a chain of 100 nodes, a node",
         .against = "a chain of 10, a node",
         .unit = "ns",
         .goal = Goal::ratioAtMost,
         .target = 1.10},
        kRounds, [&] { return perNode(longBed, kLong); }, [&] { return perNode(shortBed, kShort); });
}

void compareStores(Table &table) {
    Bed inPlace, stored;
    inPlace.start(inPlace.add(kNoise), "Color", kConnectColour);
    const HostNode &noise = stored.add(kNoise), &store = stored.add("Velm Store Material");
    stored.connect(noise, "Color", store, "Color");
    HostNode &get = stored.add("Velm Get Material");
    applySetting(*panelOf(get), {.label = "Slot", .value = store.name, .location = {}});
    stored.start(get, "Color", kConnectColour);
    constexpr int kCalls = 20000;
    table.compare(
        {.what = "Get Material of a network",
         .against = "the same network in place",
         .unit = "ns",
         .goal = Goal::differenceAtMost,
         .target = 5},
        kRounds, [&] { return nanosecondsOf(kCalls, [&] { stored.evaluate(); }); },
        [&] { return nanosecondsOf(kCalls, [&] { inPlace.evaluate(); }); });
}

void compareSampling(Table &table) {
    constexpr int kSamples = 64, kCalls = 400;
    Bed sampled, plain;
    const HostNode &noise = sampled.add(kNoise);
    HostNode &sampler = sampled.add("Velm Take Samples");
    applySetting(*panelOf(sampler), {.label = "Samples", .value = double{kSamples}, .location = {}});
    sampled.connect(noise, "Color", sampler, "Color");
    sampled.start(sampler, "Color", kConnectColour);
    plain.start(plain.add(kNoise), "Color", kConnectColour);
    const auto byHand = [&] {
        for (int i = 0; i < kSamples; ++i) plain.evaluate();
    };
    table.compare(
        {.what = "Take Samples, 64 evaluations",
         .against = "the input evaluated 64 times by hand",
         .unit = "ns",
         .goal = Goal::ratioAtMost,
         .target = 1.03},
        kRounds, [&] { return nanosecondsOf(kCalls, [&] { sampled.evaluate(); }); },
        [&] { return nanosecondsOf(kCalls, byHand); });
}

} // namespace

void compareNetworks(Table &table) {
    const ListedModule module(VELM_MODULE_FILE);
    compareUnconnected(table);
    compareChains(table);
    compareStores(table);
    compareSampling(table);
}

} // namespace velm::host::bench
