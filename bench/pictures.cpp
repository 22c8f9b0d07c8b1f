// Whole pictures of the bunny of the demonstration, shaded by one node of the module, against the same pictures
// rendered by hand-written loops.
#include "bench/compare.h"
#include "bench/plain_picture.h"
#include "host/graph/listed_module.h"
#include "host/guard/shared_record.h"
#include "host/guard/workers.h"
#include "host/image/image_formats.h"
#include "host/scene/read_scene.h"
#include "host/session/rendering.h"

#include <OpenImageIO/imagebuf.h>

#include <array>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <variant>

namespace velm::host::bench {
namespace {

constexpr int kRounds = 7;

SettingDescription setting(const char *label, SettingValue value) {
    return {.label = label, .value = std::move(value), .location = {}};
}

// Keeps the geometry, the camera and the backdrop, and on every surface one node, which gives the whole colour.
// Everything else that would cast rays or cost time is removed, since the hand-written loops do not have it.
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

// An open scene, rendered by the nodes and by hand.
class Fixture {
  public:
    Fixture(const SceneDescription &scene, PlainShader shader)
        : warnings_(Warnings::Policy::strict), session_(scene, warnings_), rendering_(session_),
          job_(renderJob(session_)), shader_(std::move(shader)) {
        job_.width /= 2; // enough for the measurement
        job_.height /= 2;
        job_.samples = 1;
        job_.recursionDepth = 0; // hits of the nodes' rays are not shaded
        rendering_.setFrame(job_.frame);
    }
    Fixture(const Fixture &) = delete;
    Fixture &operator=(const Fixture &) = delete;

    // Millions of rays per second.
    double byNodes(int threads, RenderOrder order = RenderOrder::repeatable) {
        job_.threads = threads;
        job_.order = order;
        const RenderStatistics statistics = rendering_.render(job_).statistics;
        return static_cast<double>(statistics.rays.total()) / statistics.seconds / 1e6;
    }
    // The same as the sum of two processes with one worker each, which have nothing to do with each other: as fast as
    // two cores of this machine can be.
    double byTwoProcesses() {
        const SharedRecord<std::array<double, 2>> rates;
        const std::function<void(int)> render = [&](int process) {
            (*rates)[static_cast<std::size_t>(process)] = byNodes(1);
        };
        Workers(2, Workers::In::processes, render).waitForAll();
        return (*rates)[0] + (*rates)[1];
    }
    double byHand(int threads) const {
        const PlainPicture picture = renderPlain(session_.renderScene(), job_, threads, shader_);
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
    Warnings warnings_;
    Session session_;
    Rendering rendering_;
    RenderJob job_;
    PlainShader shader_;
};

// Milliseconds from the start to the end of a worker that does nothing.
double startOfWorker(Workers::In in) {
    constexpr int kWorkers = 16;
    const std::function<void(int)> nothing = [](int) {};
    const auto begin = std::chrono::steady_clock::now();
    Workers(kWorkers, in, nothing).waitForAll();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count() / kWorkers;
}

void compareOcclusion(Table &table, const SceneDescription &demonstration) {
    const auto occlusion = [&](const char *output, const std::vector<SettingDescription> &settings) {
        return shadedBy(demonstration, "Velm Ambient Occlusion", output, settings);
    };
    {
        Fixture fixture(occlusion("Scalar", {}), plainOcclusion({}));
        fixture.compare(table, "occlusion, 27 random rays", 1, 0.95);
        fixture.compare(table, "occlusion, 27 random rays", 2, 0.90);
        table.compare(
            {.what = "occlusion, 27 random rays, 2 workers",
             .against = "one worker",
             .unit = "Mrays/s",
             .goal = Goal::ratioAtLeast,
             .target = 1.95},
            kRounds, [&] { return fixture.byNodes(2); }, [&] { return fixture.byNodes(1); });
        table.compare(
            {.what = "occlusion, 27 random rays, 2 workers",
             .against = "two processes with a worker each",
             .unit = "Mrays/s",
             .goal = Goal::ratioAtLeast,
             .target = 0.975},
            kRounds, [&] { return fixture.byNodes(2); }, [&] { return fixture.byTwoProcesses(); });
        for (const int workers : {1, 2})
            table.compare(
                {.what = "occlusion, 27 random rays, repeatable order, " + std::to_string(workers),
                 .against = "classic order",
                 .unit = "Mrays/s",
                 .goal = Goal::ratioAtLeast,
                 .target = 0.98},
                kRounds, [&] { return fixture.byNodes(workers); },
                [&] { return fixture.byNodes(workers, RenderOrder::classic); });
        table.compare(
            {.what = "start and end of a worker",
             .against = "a thread",
             .unit = "ms",
             .goal = Goal::differenceAtMost,
             .target = 5},
            kRounds, [] { return startOfWorker(Workers::In::processes); },
            [] { return startOfWorker(Workers::In::threads); });
    }
    {
        Fixture fixture(occlusion("Color", {setting("Color Mode", std::string("Backdrop")),
                                            setting("Color Mode 2", std::string("Backdrop"))}),
                        plainOcclusion({.colours = true}));
        for (const int threads : {1, 2}) fixture.compare(table, "occlusion, backdrop colours", threads, 0.90);
    }
    {
        Fixture fixture(occlusion("Scalar", {setting("Mode", std::string("Polar"))}), plainOcclusion({.polar = true}));
        for (const int threads : {1, 2}) fixture.compare(table, "occlusion, 19 polar rays", threads, 0.90);
    }
}

// An environment image for reflections: floats, 1024 by 512 pixels. The destructor deletes it.
class EnvironmentFile {
  public:
    EnvironmentFile() : file_(std::filesystem::temp_directory_path() / "velm_bench_environment.exr") {
        setUpImageLibrary();
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
        std::error_code ignored; // a file that is left in the temporary directory does no harm
        std::filesystem::remove(file_, ignored);
    }
    EnvironmentFile(const EnvironmentFile &) = delete;
    EnvironmentFile &operator=(const EnvironmentFile &) = delete;
    std::string path() const { return file_.string(); }

  private:
    std::filesystem::path file_;
};

// The scene with a hundred objects for each one with a mesh file.
SceneDescription withInstances(SceneDescription scene) {
    constexpr int kColumns = 10, kCount = 100;
    constexpr double kSpacing = 2.5; // metres; the bunny of the demonstration is 2 m long
    const std::vector<ObjectDescription> objects = scene.objects;
    for (const ObjectDescription &object : objects) {
        if (!std::holds_alternative<MeshFile>(object.shape)) continue;
        for (int i = 1; i < kCount; ++i) {
            ObjectDescription &added = scene.objects.emplace_back(object);
            added.name += ' ' + std::to_string(i);
            const int row = i / kColumns, column = i % kColumns;
            added.position[0] += kSpacing * column;
            added.position[2] += kSpacing * row;
            added.rotation[0] += 37.0 * i;
        }
    }
    return scene;
}

void compareInstances(Table &table, const SceneDescription &demonstration) {
    Fixture fixture(shadedBy(withInstances(demonstration), "Velm Ambient Occlusion", "Scalar", {}), plainOcclusion({}));
    fixture.compare(table, "occlusion, instances", 1, 0.95);
}

void compareReflections(Table &table, SceneDescription demonstration) {
    constexpr double kBlur = 0.2;
    const EnvironmentFile environment;
    demonstration.images.push_back({.name = "Environment", .file = environment.path(), .location = {}});
    const std::vector<SettingDescription> settings = {setting("Mode", std::string(" Ray Tracing + Spherical Map")),
                                                      setting("Image", std::string("Environment")),
                                                      setting("Reflection Blur", 100 * kBlur)};
    Fixture fixture(shadedBy(demonstration, "Velm Gaussian Reflections", "Color", settings),
                    plainReflections(kBlur, environment.path()));
    fixture.compare(table, "Gaussian Reflections, 8 rays and an image", 1, 0.90);
}

} // namespace

void comparePictures(Table &table) {
    const SceneDescription demonstration =
        readScene(VELM_SOURCE_DIR "/examples/occlusion.json", makeSearchPath({}, nullptr));
    const ListedModule module(VELM_MODULE_FILE);
    compareOcclusion(table, demonstration);
    compareInstances(table, demonstration);
    compareReflections(table, demonstration);
}

} // namespace velm::host::bench
