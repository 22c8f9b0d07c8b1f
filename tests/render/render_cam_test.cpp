// A node that looks through the scene's cameras: Render Cam, loaded as a module that uses the host's services.
#include "host/graph/server_list.h"
#include "host/load/module.h"
#include "host/render/geometry/item.h"
#include "host/render/geometry/mesh.h"
#include "host/render/scene/camera.h"
#include "host/render/services/scene_services.h"
#include "host/scene/build/scene_surfaces.h"
#include "host/scene/read_scene.h"
#include "host/services/time.h"
#include "tests/render/test_scene.h"

#include <fmt/format.h>

namespace velm::host::test {
namespace {

constexpr int kWidth = 24, kHeight = 18;

// "Watcher" looks straight down on a screen that fills its picture, high above everything else. "Straight" and "Turned"
// look at a ball in front of a backdrop that is different in every direction. They do not see the screen.
std::string sceneText(const std::string &camera, const std::string &map = "UV") {
    return fmt::format(R"({{
  "render": {{"width": {}, "height": {}, "firstFrame": 7, "lastFrame": 7, "framesPerSecond": 25}},
  "backdrop": {{"kind": "gradient", "zenith": [0, 0, 1], "sky": [1, 1, 0], "ground": [0, 1, 0], "nadir": [1, 0, 0]}},
  "cameras": {{
    "Watcher": {{"position": [0, 101, 0], "rotation": [0, 90, 0], "fieldOfView": 90}},
    "Straight": {{"position": [0, 0, -3], "fieldOfView": 50}},
    "Turned": {{"position": [-2, 1, -2], "rotation": [40, 15, 30], "fieldOfView": 80}}
  }},
  "objects": {{
    "Screen": {{"plane": {{"width": 2, "depth": 1.5}}, "position": [0, 100, 0], "surface": "Screen", "seenByRays": false}},
    "Ball": {{"sphere": {{"radius": 0.7}}, "position": [0.2, 0.1, 0], "surface": "Ball"}}
  }},
  "surfaces": {{
    "Screen": {{
      "settings": {{"Luminosity": 1, "Diffuse": 0}},
      "nodes": {{"Cam": {{"server": "Render Cam", "settings": {{"UV Map": "{}", "Camera": "{}"}}}}}},
      "connections": ["Cam.Color -> Screen.Color"]
    }},
    "Ball": {{"settings": {{"Color": [0.2, 0.3, 0.4], "Luminosity": 1, "Diffuse": 0}}}}
  }}
}})",
                       kWidth, kHeight, map, camera);
}

// The module with the node, in the host's list for the time of a test.
class LoadedCam {
  public:
    LoadedCam() : module_(Module::open(RENDER_CAM_MODULE)) {
        offerSceneServices();
        serverList().add(module_.servers(), module_.path());
    }
    ~LoadedCam() { serverList().remove(module_.path()); }
    LoadedCam(const LoadedCam &) = delete;
    LoadedCam &operator=(const LoadedCam &) = delete;

  private:
    Module module_;
};

// A scene between the start and the end of its render.
class RunningScene {
  public:
    explicit RunningScene(const std::string &text)
        : scene_(readSceneText(text, "scene.json", {})), renderScene_(scene_), built_(scene_, serverList()) {
        renderScene_.prepare(scene_, [this](const std::string &name) { return built_.surface(name); });
        const RenderJob job = renderJob(scene_.render);
        built_.init(kInitRender);
        setTime(job.frame, job.time);
        built_.newTime(job.frame, job.time);
    }
    ~RunningScene() { built_.cleanup(); }
    RunningScene(const RunningScene &) = delete;
    RunningScene &operator=(const RunningScene &) = delete;

    Picture seenBy(const std::string &camera) {
        RenderJob job = renderJob(scene_.render);
        job.camera = camera;
        job.order = RenderOrder::classic;
        job.threads = 2;
        return renderFrame(renderScene_, job).picture;
    }
    Surface &surface(const std::string &name) { return *built_.surface(name); }
    const RenderScene &renderScene() const { return renderScene_; }
    const CameraDescription &camera(std::size_t index) const { return scene_.cameras[index]; }

  private:
    SceneDescription scene_;
    RenderScene renderScene_;
    SceneSurfaces built_;
};

// The last ray that a sample's trace function was asked for.
Vec3 tracedOrigin, tracedDirection;

double noteRay(const double position[3], const double direction[3], double colour[3], double, int) {
    tracedOrigin = Vec3(position);
    tracedDirection = Vec3(direction);
    std::fill_n(colour, 3, 0.5);
    return 1;
}

// A sample on the first triangle of the screen.
ShadingSample onScreen(const RenderScene &renderScene, const std::array<float, 3> &weights) {
    ShadingSample sample{};
    sample.objectItem = const_cast<HostItem *>(renderScene.item(kItemObject, "Screen"));
    sample.polygon = const_cast<HostPolygon *>(sample.objectItem->mesh->triangles.data());
    std::copy(weights.begin(), weights.end(), sample.vertexWeights);
    sample.rayTraceMode = noteRay;
    return sample;
}

TEST(RenderCamInScene, CastsTheRayThatTheCameraWouldCast) {
    const LoadedCam cam;
    for (const auto &[name, index] : {std::pair{"Straight", 1u}, {"Turned", 2u}, {"Watcher", 0u}}) {
        RunningScene scene(sceneText(name));
        const Camera camera(scene.camera(index), kWidth, kHeight);
        for (const std::array<float, 3> &weights :
             {std::array{1.0F, 0.0F, 0.0F}, {0.0F, 1.0F, 0.0F}, {0.0F, 0.0F, 1.0F}, {0.25F, 0.5F, 0.25F}}) {
            ShadingSample sample = onScreen(scene.renderScene(), weights);
            double u = 0, v = 0;
            ASSERT_TRUE(sampleUv(sample, "UV", &u, &v));
            scene.surface("Screen").evaluate(&sample);
            const CameraRay expected = camera.ray(u * kWidth, (1 - v) * kHeight);
            expectNear(tracedOrigin, expected.origin, 0, name);
            expectNear(tracedDirection, expected.direction, 1e-12, name);
        }
    }
}

// A pixel of the watcher's picture shows the same point, in fractions of the size, of the other camera's film.
TEST(RenderCamThreaded, ShowsTheOtherCamerasPicture) {
    const LoadedCam cam;
    for (const char *camera : {"Straight", "Turned"}) {
        RunningScene scene(sceneText(camera));
        const Picture expected = scene.seenBy(camera), shown = scene.seenBy("Watcher");
        int balls = 0;
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                const float *a = expected.pixel(x, y), *b = shown.pixel(x, y);
                expectNear({a[0], a[1], a[2]}, {b[0], b[1], b[2]}, 1e-4, fmt::format("{} {} {}", camera, x, y));
                if (std::fabs(a[0] - 0.2F) < 1e-6F && std::fabs(a[2] - 0.4F) < 1e-6F) ++balls;
            }
        }
        EXPECT_GT(balls, 10) << "the ball is in the picture";
        EXPECT_LT(balls, kWidth * kHeight - 10);
    }
}

TEST(RenderCamInScene, ListsTheScenesCamerasAndMaps) {
    const LoadedCam cam;
    for (const std::string &wrong : {sceneText("Strait"), sceneText("Straight", "VU")}) {
        try {
            RunningScene scene(wrong);
            ADD_FAILURE() << "taken: " << wrong;
        } catch (const InputError &error) {
            const std::string message = error.what();
            EXPECT_TRUE(message.find("Straight") != std::string::npos || message.find("UV") != std::string::npos)
                << message;
        }
    }
}

TEST(RenderCamInScene, IsGreenWithoutACamera) {
    const LoadedCam cam;
    RunningScene scene(sceneText("(none)"));
    const Picture shown = scene.seenBy("Watcher");
    const float *pixel = shown.pixel(kWidth / 2, kHeight / 2);
    expectNear({pixel[0], pixel[1], pixel[2]}, {0, 1, 0}, 0);
}

} // namespace
} // namespace velm::host::test
