#include "host/check/random_walk/picture.h"

#include "host/base/error.h"
#include "host/check/fixture/fixture.h"
#include "host/check/random_walk/networks.h"

#include <algorithm>

namespace velm::host {

namespace {

// The budget of one evaluation.
constexpr long kInputs = 300;
constexpr int kLargestInteger = 50;
constexpr std::size_t kProbes = 3, kSamples = 2, kCalls = 8;

std::vector<RandomPicture::Probe> chooseProbes(CallScript &script, Network &network) {
    const std::vector<HostNode *> nodes = nodesIn(network);
    std::vector<RandomPicture::Probe> probes;
    if (nodes.empty()) return probes;
    for (std::size_t i = 0; i < kProbes; ++i) {
        const auto node = static_cast<std::size_t>(script.below(nodes.size()));
        if (const std::size_t outputs = nodes[node]->outputs.size(); outputs > 0)
            probes.push_back({node, static_cast<std::size_t>(script.below(outputs))});
    }
    return probes;
}

RandomPicture::Call makeSlice(CallScript &script) {
    RandomPicture::Call slice{.step = RandomPicture::Step::slice, .samples = {}};
    const int threads = 1 + script.below(kMaxThreads);
    Generator random = script.generator();
    for (int thread = 0; thread < threads; ++thread) {
        auto &samples = slice.samples.emplace_back();
        for (std::size_t i = 0; i < kSamples; ++i) samples.push_back(makeSample(random, thread));
    }
    return slice;
}

RandomPicture::Call makeFrame(CallScript &script) {
    const int frame = script.below(100) - 10;
    return {.step = RandomPicture::Step::frame, .frame = frame, .time = frame / 25.0, .samples = {}};
}

// The rendering of one network of a picture.
struct Part {
    Network *network = nullptr;
    bool isRunning = false;
    std::vector<HostOutput *> outputs;
    std::string results;
};

class Rendering {
  public:
    Rendering(const RandomPicture &picture, const std::vector<Network *> &networks, RenderThreads *threads)
        : picture_(picture), threads_(threads), parts_(networks.size()) {
        for (std::size_t i = 0; i < networks.size(); ++i) {
            Part &part = parts_[i];
            part.network = networks[i];
            if (!part.network) continue;
            const std::vector<HostNode *> nodes = nodesIn(*part.network);
            for (const RandomPicture::Probe &probe : picture.probes[i])
                part.outputs.push_back(nodes.at(probe.node)->outputs.at(probe.output).get());
        }
    }

    std::vector<std::string> run() {
        for (Part &part : parts_)
            if (part.network) start(part);
        for (const RandomPicture::Call &call : picture_.calls) make(call);
        for (Part &part : parts_) end(part);
        std::vector<std::string> results;
        for (Part &part : parts_) results.push_back(std::move(part.results));
        return results;
    }

  private:
    void make(const RandomPicture::Call &call) {
        switch (call.step) {
        case RandomPicture::Step::slice: return evaluate(call.samples);
        case RandomPicture::Step::end: return end(parts_[call.network]);
        case RandomPicture::Step::startAgain:
            if (parts_[call.network].isRunning) start(parts_[call.network]);
            return;
        case RandomPicture::Step::frame:
            for (Part &part : parts_)
                if (part.isRunning) beginFrame(part, call.frame, call.time);
        }
    }

    // An error counts as a result. The network has then cleaned up the nodes that it had initialised.
    void start(Part &part) {
        try {
            part.network->init(picture_.mode);
            part.isRunning = true;
            beginFrame(part, 0, 0.0);
        } catch (const InputError &error) {
            part.isRunning = false;
            part.results += std::string("error: ") + error.what();
        }
    }

    static void beginFrame(Part &part, int frame, double time) {
        try {
            part.network->newTime(frame, time);
        } catch (const InputError &error) {
            end(part);
            part.results += std::string("error: ") + error.what();
        }
    }

    static void end(Part &part) {
        if (part.isRunning) part.network->cleanup();
        part.isRunning = false;
    }

    void evaluate(const std::vector<std::vector<ShadingSample>> &samples) {
        std::vector<std::vector<std::string>> found(samples.size(), std::vector<std::string>(parts_.size()));
        const auto work = [&](int thread) {
            const auto own = static_cast<std::size_t>(thread);
            // Each thread begins with another network, so that they evaluate several at the same time.
            for (std::size_t i = 0; i < parts_.size(); ++i) {
                const std::size_t which = (i + own) % parts_.size();
                if (parts_[which].isRunning) found[own][which] = evaluatePart(parts_[which], samples[own]);
            }
        };
        const int count = static_cast<int>(samples.size());
        if (threads_)
            threads_->run(count, work);
        else
            for (int thread = 0; thread < count; ++thread) work(thread);
        for (const auto &ofThread : found)
            for (std::size_t i = 0; i < parts_.size(); ++i) parts_[i].results += ofThread[i];
    }

    static std::string evaluatePart(const Part &part, const std::vector<ShadingSample> &samples) {
        std::string results;
        for (const ShadingSample &sample : samples)
            for (HostOutput *output : part.outputs) {
                const EvaluationBudget budget(kInputs, kLargestInteger);
                results += evaluateOutput(*output, sample).bytes();
            }
        return results;
    }

    const RandomPicture &picture_;
    RenderThreads *threads_;
    std::vector<Part> parts_;
};

} // namespace

RandomPicture makePicture(CallScript &script, const std::vector<Network *> &networks) {
    RandomPicture picture;
    picture.mode = script.below(4) == 0 ? kInitPreview : kInitRender;
    for (Network *network : networks) picture.probes.push_back(chooseProbes(script, *network));
    picture.calls.push_back(makeFrame(script));
    picture.calls.push_back(makeSlice(script));
    for (std::size_t left = static_cast<std::size_t>(script.below(kCalls)); left > 0; --left) {
        const auto network = static_cast<std::size_t>(script.below(networks.size()));
        switch (script.below(8)) {
        case 0:
            picture.calls.push_back({.step = RandomPicture::Step::startAgain, .network = network, .samples = {}});
            break;
        case 1:
        case 2: picture.calls.push_back({.step = RandomPicture::Step::end, .network = network, .samples = {}}); break;
        case 3: picture.calls.push_back(makeFrame(script)); break;
        default: picture.calls.push_back(makeSlice(script));
        }
    }
    return picture;
}

std::vector<std::string> render(const RandomPicture &picture, const std::vector<Network *> &networks,
                                RenderThreads *threads) {
    return Rendering(picture, networks, threads).run();
}

std::string renderAlone(const RandomPicture &picture, std::size_t index, Network &network) {
    std::vector<Network *> networks(picture.probes.size());
    networks[index] = &network;
    return render(picture, networks, nullptr)[index];
}

} // namespace velm::host
