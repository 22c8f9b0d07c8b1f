// What surrounds a node in a scene, for tests: the services that tell of the scene and of its cameras, and ray
// functions that note what they are asked and answer what the test says.
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

// Stands beside a FakeHost, and notes its calls in that host's log. One at a time.
class FakeScene {
  public:
    FakeScene();
    ~FakeScene();
    FakeScene(const FakeScene &) = delete;
    FakeScene &operator=(const FakeScene &) = delete;

    // Gives the services of the scene, and those of the host. Heeds what the host is missing.
    static void *lookup(const char *service, int use);

    HostSceneInfo info{};
    std::deque<HostItem> cameras;
    std::vector<std::string> uvMaps; // the texture maps; maps of other types there are none
    // Where a sample lies on the map named; false: not on it.
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

// The ray functions of samples, as one test wants them. One at a time, and for one thread.
class FakeRays {
  public:
    FakeRays();
    ~FakeRays();
    FakeRays(const FakeRays &) = delete;
    FakeRays &operator=(const FakeRays &) = delete;

    struct Call {
        std::array<double, 3> position, direction, colour; // the colour as it was handed in
        double eta;
        unsigned int mode;
    };
    std::vector<Call> shades, traces;

    std::function<void()> met; // called for each ray, once it is noted

    double distance = 1;                         // what both functions return
    std::optional<std::array<double, 3>> colour; // what both leave; none: the colour as it is

    // A sample that carries both functions.
    ShadingSample sample() const;
};

} // namespace velm::plugin
