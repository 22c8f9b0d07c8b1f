// Pictures that a walk renders: some networks at once, in slices that several threads share, frame by frame.
#pragma once

#include "host/check/fixture/render_threads.h"
#include "host/check/random_walk/call_script.h"
#include "host/graph/network.h"
#include "module/host.h"

#include <cstddef>
#include <string>
#include <vector>

namespace velm::host {

// Everything that is called for a picture, by the places of networks, nodes and outputs, so that it can be done again
// with other networks of the same nodes.
struct Picture {
    enum class Step { frame, slice, startAgain, end };

    struct Probe {
        std::size_t node, output; // the node's place in `nodesIn`
    };
    struct Call {
        Step step;
        std::size_t network = 0; // of a start and an end
        int frame = 0;           // and its time
        double time = 0;
        std::vector<std::vector<ShadingSample>> samples; // of a slice: for each thread
    };

    int mode = kInitRender;
    std::vector<std::vector<Probe>> probes; // for each network
    std::vector<Call> calls;
};

// `networks`: at least one.
Picture makePicture(Script &script, const std::vector<Network *> &networks);

// What each network gives, as bytes, or "error: ..." where a node reports one. A null network is left out. Without
// threads, the samples of each are evaluated by the caller, one thread's after the other's. [between frames]
std::vector<std::string> render(const Picture &picture, const std::vector<Network *> &networks, RenderThreads *threads);

// The same for one of the networks by itself, or for another of the same nodes in its place.
std::string renderAlone(const Picture &picture, std::size_t place, Network &network);

} // namespace velm::host
