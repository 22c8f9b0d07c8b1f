// Whole pictures of the demonstration's bunny, shaded by a node of the module alone, against the same pictures by hand.
#include "bench/compare.h"
#include "host/graph/listed_module.h"
#include "bench/plain_picture.h"
#include "host/scene/build/scene_surfaces.h"
#include "host/scene/read_scene.h"
#include "host/services/time.h"

#include <OpenImageIO/imagebuf.h>

#include <cmath>
#include <filesystem>
#include <stdexcept>

namespace velm::host::bench {
namespace {

constexpr int kRounds = 7;

SettingDescription setting(const char *label, SettingValue value) {
    return {.label = label, .value = std::move(value), .location = {}};
}

// Leaves the geometry, the camera and the backdrop, and one node on every surface, which gives the whole colour.
// Everything else that would cast rays or cost time is taken out, as the pictures made by hand have none of it.
SceneDescription shadedBy(SceneDescription scene, const char *server, const char *output,
                          const std::vector<SettingDescription> &settings) {
    scene.lights.clear();
    for (SurfaceDescription &surface : scene.surfaces) {
        surface.settings = {setting("Luminosity", 1.0), setting("Diffuse", 0.0)};
        for (NodeDescription &node : surface.network.nodes) {
            node.server = server;
            node.settings = settings;
        }
        for (ConnectionDescription &connection : surface.network.connections) connection.output = output;
    }
    return scene;
}

// A scene ready to be rendered by the nodes, and by hand.
class Stage {
  public:
    Stage(const SceneDescription &scene, PlainShader shader)
        : built_(scene, serverList()), world_(scene, [this](const std::string &name) { return built_.surface(name); }),
          job_(renderJob(scene.render)), shader_(std::move(shader)) {
        job_.width /= 2; // enough to measure by
        job_.height /= 2;
        job_.samples = 1;
        job_.recursionDepth = 0; // what rays of nodes hit is not shaded
        built_.init(kInitRender);
        setTime(job_.frame, job_.time);
        built_.newTime(job_.frame, job_.time);
    }
    ~Stage() { built_.cleanup(); }
    Stage(const Stage &) = delete;
    Stage &operator=(const Stage &) = delete;

    // Millions of rays a second.
    double byNodes(int threads) {
        job_.threads = threads;
        const RenderStatistics statistics = renderFrame(world_, job_).statistics;
        return static_cast<double>(statistics.rays.total()) / statistics.seconds / 1e6;
    }
    double byHand(int threads) const {
        const PlainPicture picture = renderPlain(world_, job_, threads, shader_);
        return static_cast<double>(picture.rays) / picture.seconds / 1e6;
    }

    void compare(Table &table, const char *what, int threads, double target) {
        table.compare(
            {.what = std::string(what) + (threads == 1 ? ", 1 thread" : ", 2 threads"),
             .against = threads == 1 ? "a loop by hand" : "a loop by hand, a stream for each thread",
             .unit = "Mrays/s",
             .goal = Goal::ratioAtLeast,
             .target = target},
            kRounds, [&] { return byNodes(threads); }, [&] { return byHand(threads); });
    }

  private:
    SceneSurfaces built_;
    RenderScene world_;
    RenderJob job_;
    PlainShader shader_;
};

void compareOcclusion(Table &table, const SceneDescription &demonstration) {
    const auto occlusion = [&](const char *output, const std::vector<SettingDescription> &settings) {
        return shadedBy(demonstration, "Velm Ambient Occlusion", output, settings);
    };
    {
        Stage stage(occlusion("Scalar", {}), plainOcclusion({}));
        stage.compare(table, "occlusion, 27 random rays", 1, 0.95);
        stage.compare(table, "occlusion, 27 random rays", 2, 0.90);
        table.compare(
            {.what = "occlusion, 27 random rays, 2 threads",
             .against = "our own single thread",
             .unit = "Mrays/s",
             .goal = Goal::ratioAtLeast,
             .target = 1.85},
            kRounds, [&] { return stage.byNodes(2); }, [&] { return stage.byNodes(1); });
    }
    {
        Stage stage(occlusion("Color", {setting("Color Mode", std::string("Backdrop")),
                                        setting("Color Mode 2", std::string("Backdrop"))}),
                    plainOcclusion({.colours = true}));
        for (const int threads : {1, 2}) stage.compare(table, "occlusion, backdrop colours", threads, 0.90);
    }
    {
        Stage stage(occlusion("Scalar", {setting("Mode", std::string("Polar"))}), plainOcclusion({.polar = true}));
        for (const int threads : {1, 2}) stage.compare(table, "occlusion, 19 polar rays", threads, 0.90);
    }
}

// An environment to be mirrored: floats, 1024 by 512 pixels, deleted in the end.
class EnvironmentFile {
  public:
    EnvironmentFile() : file_(std::filesystem::temp_directory_path() / "velm_bench_environment.exr") {
        OIIO::ImageBuf image(OIIO::ImageSpec(1024, 512, 3, OIIO::TypeDesc::FLOAT));
        for (int y = 0; y < 512; ++y)
            for (int x = 0; x < 1024; ++x) {
                const float waves = std::sin(0.05f * static_cast<float>(x)) * std::cos(0.04f * static_cast<float>(y));
                const float pixel[3] = {0.5f + 0.5f * waves, 0.5f - 0.25f * waves, static_cast<float>(y) / 512};
                image.setpixel(x, y, pixel);
            }
        if (!image.write(file_.string())) throw std::runtime_error("cannot write " + file_.string());
    }
    ~EnvironmentFile() {
        std::error_code ignored; // a file left behind in the temporary directory harms nobody
        std::filesystem::remove(file_, ignored);
    }
    EnvironmentFile(const EnvironmentFile &) = delete;
    EnvironmentFile &operator=(const EnvironmentFile &) = delete;
    std::string path() const { return file_.string(); }

  private:
    std::filesystem::path file_;
};

void compareReflections(Table &table, SceneDescription demonstration) {
    constexpr double kBlur = 0.2;
    const EnvironmentFile environment;
    demonstration.images.push_back({.name = "Environment", .file = environment.path(), .location = {}});
    const std::vector<SettingDescription> settings = {setting("Mode", std::string(" Ray Tracing + Spherical Map")),
                                                      setting("Image", std::string("Environment")),
                                                      setting("Reflection Blur", 100 * kBlur)};
    Stage stage(shadedBy(demonstration, "Velm Gaussian Reflections", "Color", settings),
                plainReflections(kBlur, environment.path()));
    stage.compare(table, "Gaussian Reflections, 8 rays and an image", 1, 0.90);
}

} // namespace

void comparePictures(Table &table) {
    const SceneDescription demonstration =
        readScene(VELM_SOURCE_DIR "/examples/occlusion.json", makeSearchPath({}, nullptr));
    const ListedModule module(VELM_MODULE_FILE);
    compareOcclusion(table, demonstration);
    compareReflections(table, demonstration);
}

} // namespace velm::host::bench
