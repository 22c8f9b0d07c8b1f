// A scene made of functions, which say what rays hit, and a record of the rays that were sent.
#pragma once

#include "module/host.h"

#include <functional>
#include <vector>

namespace velm::plugin {

struct SentRay {
    bool traced; // false if it was cast, without a colour
    double origin[3], direction[3];
    double colour[3]; // of a traced ray: the colour before the call
    double eta;
    int mode;
};

// Only one may exist at a time, for one thread: the ray functions are plain functions, which find it through a global
// pointer.
class RayScript {
  public:
    RayScript();
    ~RayScript();
    RayScript(const RayScript &) = delete;
    RayScript &operator=(const RayScript &) = delete;

    std::vector<SentRay> rays;
    // By default no ray hits anything.
    std::function<double(const double *origin, const double *direction)> distance;
    std::function<void(const double *direction, double *colour)> colour; // writes the colour of a traced ray

    // Sets the ray functions of a sample.
    void attach(ShadingSample &sample) const;
};

} // namespace velm::plugin
