// A scene made of functions: what the rays of a sample hit, and a record of the rays that were sent.
#pragma once

#include "module/host.h"

#include <functional>
#include <vector>

namespace velm::plugin {

struct SentRay {
    bool traced; // with a colour; false: cast
    double origin[3], direction[3];
    double colour[3]; // as it was handed in, of a traced one
    double eta;
    int mode;
};

// One at a time, and for one thread: the ray functions, which are plain functions, find it by itself.
class RayScript {
  public:
    RayScript();
    ~RayScript();
    RayScript(const RayScript &) = delete;
    RayScript &operator=(const RayScript &) = delete;

    std::vector<SentRay> rays;
    // Nothing is hit until a test says otherwise.
    std::function<double(const double *origin, const double *direction)> distance;
    std::function<void(const double *direction, double *colour)> colour; // what traced rays bring

    // Gives a sample the functions.
    void attach(ShadingSample &sample) const;
};

} // namespace velm::plugin
