// The pictures that a random walk renders: several networks at once, frame by frame, in slices that several threads
// share.
#pragma once

#include "host/check/fixture/render_threads.h"
#include "host/check/random_walk/call_script.h"
#include "host/graph/network.h"
#include "module/host.h"

#include <cstddef>
#include <string>
#include <vector>

namespace velm::host {

// The calls of a rendering. Networks, nodes and outputs are given by their indices, so that the calls can be repeated
// with other networks of the same nodes.
struct RandomPicture {
    enum class Step { frame, slice, startAgain, end };

    // An output that is evaluated.
    struct Probe {
        std::size_t node, output; // indices into `nodesIn` and into the node's outputs
    };
    struct Call {
        Step step;
        std::size_t network = 0;                         // of startAgain and end
        int frame = 0;                                   // of frame: its number
        double time = 0;                                 // and its time in seconds
        std::vector<std::vector<ShadingSample>> samples; // of slice: for each thread
    };

    int mode = kInitRender;                 // or kInitPreview
    std::vector<std::vector<Probe>> probes; // for each network
    std::vector<Call> calls;
};

// Makes a picture of at least one network.
RandomPicture makePicture(CallScript &script, const std::vector<Network *> &networks);

// Renders a picture and returns the results of each network as bytes, with "error: ..." where a node reports one.
// Networks that are null are left out. Without `threads`, the calling thread evaluates the samples of all threads in
// turn. [interface thread; between frames]
std::vector<std::string> render(const RandomPicture &picture, const std::vector<Network *> &networks,
                                RenderThreads *threads);

// Renders only the network at one index, or another network of the same nodes in its place, on the calling thread.
std::string renderAlone(const RandomPicture &picture, std::size_t index, Network &network);

} // namespace velm::host
