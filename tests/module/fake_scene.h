// The scene around a node, for tests: the services of the scene and its cameras, and ray functions that record their
// arguments and return what the test specifies.
#pragma once

#include "tests/module/fake_host.h"

#include <array>
#include <optional>

struct HostItem {
    std::string name;
    double filmWidth = 0, filmHeight = 0;
    HostFrameTiming timing = {};
};

struct HostCameraEvaluator {
    HostItem *camera;
    bool destroyed = false;
};

namespace velm::plugin {

// Used together with a FakeHost, in whose log it records its calls. Only one may exist at a time.
class FakeScene {
  public:
    FakeScene();
    ~FakeScene();
    FakeScene(const FakeScene &) = delete;
    FakeScene &operator=(const FakeScene &) = delete;

    // Returns the services of the scene and those of the host. Services that the host is missing are null.
    static void *lookup(const char *service, int use);

    HostSceneInfo info{};
    std::deque<HostItem> cameras;
    std::vector<std::string> uvMaps; // the texture maps; there are no maps of other types
    // Writes the coordinates of a sample on the named map. False if the sample is not on the map.
    std::function<bool(const std::string &map, double &u, double &v)> uvMapping;
    HostCameraRay cameraRay{};
    bool cameraHasRay = true;
    bool evaluatorsFail = false;
    std::deque<HostCameraEvaluator> evaluators;

    struct CameraQuestion {
        double filmX, filmY, lensX, lensY, timeFraction;
    };
    std::vector<CameraQuestion> cameraQuestions;
};

// The ray functions of samples, as one test needs them. Only one may exist at a time, for one thread.
class FakeRays {
  public:
    FakeRays();
    ~FakeRays();
    FakeRays(const FakeRays &) = delete;
    FakeRays &operator=(const FakeRays &) = delete;

    struct Call {
        std::array<double, 3> position, direction, colour; // the colour before the call
        double eta;
        unsigned int mode;
    };
    std::vector<Call> shades, traces;

    std::function<void()> met; // called for each ray, after it is recorded

    double distance = 1;                         // what rayShade and rayTraceMode return
    std::optional<std::array<double, 3>> colour; // the colour that both write; without it the colour is unchanged

    // A sample whose rayShade and rayTraceMode are these.
    ShadingSample sample() const;
};

} // namespace velm::plugin
