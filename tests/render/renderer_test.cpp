// Frames: threads, regions, samples, progress and errors.
#include "host/base/error.h"
#include "host/base/limits.h"
#include "host/render/frame_tiles.h"
#include "host/services/backdrop.h"
#include "host/services/scene_info.h"
#include "tests/render/test_scene.h"

#include <atomic>
#include <set>
#include <thread>
#include <vector>

namespace velm::host::test {
namespace {

constexpr double kTolerance = 1e-6;

const Region kWhole = {.left = 0, .top = 0, .right = 50, .bottom = 40};

void expectSamePictures(RenderOrder order, int mostWorkers) {
    TestScene scene = litBall();
    scene.job.order = order;
    scene.job.threads = 1;
    const Picture one = scene.render().picture;
    for (const int threads : {1, 2, 3, 16}) {
        scene.job.threads = threads;
        const Frame frame = scene.render();
        EXPECT_TRUE(samePixels(frame.picture, one, kWhole)) << threads;
        EXPECT_EQ(frame.statistics.threads, std::min(threads, mostWorkers)) << "at most one for each tile";
        EXPECT_EQ(frame.statistics.order, order);
        EXPECT_EQ(frame.statistics.orderReason, "");
    }
}

TEST(Renderer, PictureDoesNotDependOnWorkers) { expectSamePictures(RenderOrder::repeatable, 4); }
TEST(RendererThreaded, PictureDoesNotDependOnThreads) { expectSamePictures(RenderOrder::classic, 12); }

TEST(Renderer, RegionIsThatPartOfTheWhole) {
    TestScene scene = litBall();
    const Picture whole = scene.render().picture;
    scene.job.region = {.left = 13, .top = 7, .right = 41, .bottom = 33};
    const Picture part = scene.render().picture;
    EXPECT_TRUE(samePixels(part, whole, scene.job.region));
    EXPECT_EQ(part.width(), 50);
    for (int y = 0; y < 40; ++y) {
        for (int x = 0; x < 50; ++x) {
            if (x >= 13 && x < 41 && y >= 7 && y < 33) continue;
            EXPECT_EQ(part.pixel(x, y)[2], 0) << x << ", " << y;
        }
    }
}

TEST(Renderer, FramesDifferInTheirNoiseOnly) {
    TestScene scene = litBall();
    const Picture first = scene.render().picture, again = scene.render().picture;
    EXPECT_TRUE(samePixels(first, again, kWhole));
    scene.job.frame = 2;
    EXPECT_FALSE(samePixels(first, scene.render().picture, kWhole));
}

TEST(Renderer, AlphaIsCoverageAndBackdropIsColour) {
    TestScene scene;
    scene.job.width = 2;
    scene.job.samples = 256;
    scene.surface("Wall", {{"Luminosity", 1}});
    // Covers the left quarter of the right pixel.
    const double pixel = 2 * std::tan(20 * kPi / 180) / 2;
    ObjectDescription &wall =
        scene.object("Wall", PlaneShape{.width = 2, .depth = 10}, "Wall", {-1 + pixel / 4, 0, -4});
    wall.rotation = {0, -90, 0};
    const Frame frame = scene.render();
    EXPECT_EQ(frame.picture.pixel(0, 0)[3], 1);
    EXPECT_NEAR(frame.picture.pixel(1, 0)[3], 0.25, 0.01);
    EXPECT_NEAR(frame.picture.pixel(1, 0)[0], 0.25 + 0.75 * 0.25, 0.01);
    EXPECT_EQ(frame.statistics.rays.camera, 512u);
}

TEST(Renderer, OneSampleStandsInTheMiddle) {
    TestScene scene;
    scene.job.width = scene.job.height = 3;
    scene.surface("Wall", {{"Luminosity", 1}});
    std::vector<Vec3> places(9);
    int samples = 0;
    scene.probe("Wall", "Color", [&](ShadingSample &sample, double *) {
        places[static_cast<std::size_t>(sample.pixelX + 3 * sample.pixelY)] = Vec3(sample.position);
        ++samples;
    });
    scene.object("Wall", PlaneShape{.width = 20, .depth = 20}, "Wall", {0, 0, -4}).rotation = {0, -90, 0};
    scene.render();
    const double pixel = 2 * std::tan(20 * kPi / 180) / 3;
    EXPECT_EQ(samples, 9);
    expectNear(places[0], {-pixel, pixel, -4}, kTolerance);
    expectNear(places[4], {0, 0, -4}, kTolerance);
    expectNear(places[5], {pixel, 0, -4}, kTolerance);
}

TEST(RendererThreaded, EveryThreadKeepsItsNumber) {
    TestScene scene = litBall();
    scene.job.order = RenderOrder::classic;
    scene.job.threads = 4;
    std::atomic<int> wrong = 0;
    std::atomic<unsigned> used = 0;
    static thread_local int own = -1; // by render thread
    scene.probe("Ball", "Luminosity", [&](ShadingSample &sample, double *) {
        if (own < 0) own = sample.threadIndex;
        if (own != sample.threadIndex || own >= 4) ++wrong;
        used |= 1u << sample.threadIndex;
    });
    scene.render();
    EXPECT_EQ(wrong, 0);
    EXPECT_NE(used, 0u);
}

// Records the calls, and cancels after `enough` tiles.
class NotingSink : public ProgressSink {
  public:
    explicit NotingSink(int enough) : enough_(enough) {}
    bool progress(int done, int total) override {
        told.push_back(done);
        totals.insert(total);
        return done < enough_;
    }
    std::vector<int> told;
    std::set<int> totals;

  private:
    int enough_;
};

TEST(Renderer, TellsItsProgress) {
    TestScene scene = litBall();
    NotingSink sink(1000);
    const Frame frame = renderFrame(scene.renderScene(), scene.job, &sink);
    EXPECT_TRUE(frame.complete);
    EXPECT_EQ(sink.totals, std::set<int>{4}); // 2 by 2 tiles
    ASSERT_FALSE(sink.told.empty());
    EXPECT_EQ(sink.told.back(), 4);
    EXPECT_TRUE(std::is_sorted(sink.told.begin(), sink.told.end()));
}

TEST(RendererThreaded, CanBeCancelled) {
    TestScene scene = litBall();
    scene.job.order = RenderOrder::classic;
    scene.job.threads = 2;
    std::atomic<bool> held = true;
    scene.probe("Ball", "Luminosity", [&](ShadingSample &sample, double *) {
        // The second row of tiles waits until the sink has cancelled.
        if (sample.pixelY >= kClassicTileSize) held.wait(true);
    });
    class CancellingSink : public ProgressSink {
      public:
        explicit CancellingSink(std::atomic<bool> &held) : held_(held) {}
        bool progress(int, int) override {
            ++told;
            return false;
        }
        ~CancellingSink() override { release(); }
        void release() {
            held_ = false;
            held_.notify_all();
        }
        std::atomic<int> told = 0; // read by the releaser

      private:
        std::atomic<bool> &held_;
    };
    CancellingSink sink(held);
    std::thread releaser([&] {
        while (sink.told == 0) std::this_thread::yield();
        sink.release();
    });
    const Frame frame = renderFrame(scene.renderScene(), scene.job, &sink);
    releaser.join();
    EXPECT_FALSE(frame.complete);
}

TEST(Renderer, SinkThatThrowsEndsTheRender) {
    class ThrowingSink : public ProgressSink {
        bool progress(int, int) override { throw InputError("enough"); }
    };
    TestScene scene = litBall();
    ThrowingSink sink;
    EXPECT_THROW(renderFrame(scene.renderScene(), scene.job, &sink), InputError);
}

TEST(Renderer, CountsRaysByKind) {
    TestScene scene;
    scene.surface("Wall", {{"Diffuse", 1}, {"Reflection", 0.5}});
    scene.probe("Wall", "Color", [](ShadingSample &sample, double *) {
        double colour[3];
        const double up[3] = {0, 1, 0};
        sample.rayCast(sample.position, up);
        sample.rayTraceMode(sample.position, up, colour, 1, kTraceDistance);
        sample.rayTraceMode(sample.position, up, colour, 1, kTraceShadow);
        sample.rayTrace(sample.position, up, colour);
    });
    scene.object("Wall", PlaneShape{.width = 4, .depth = 4}, "Wall").rotation = {0, -90, 0};
    LightDescription sun;
    sun.position = {0, 0, -1};
    scene.description.lights.push_back(sun);
    const RenderStatistics statistics = scene.render().statistics;
    EXPECT_EQ(statistics.rays.camera, 1u);
    EXPECT_EQ(statistics.rays.cast, 2u);
    EXPECT_EQ(statistics.rays.shadow, 2u);
    EXPECT_EQ(statistics.rays.shaded, 2u);
    EXPECT_EQ(statistics.rays.total(), 7u);
    EXPECT_EQ(statistics.samples, 1u);
    EXPECT_EQ(statistics.triangles, 2u);
    EXPECT_GT(statistics.accelerationBytes, 0u);
}

TEST(Renderer, TellsNodesAboutTheScene) {
    TestScene scene;
    scene.description.name = "Test";
    scene.description.file = "test.json";
    scene.description.render.firstFrame = 3;
    scene.description.render.lastFrame = 9;
    scene.description.render.framesPerSecond = 25;
    scene.job.recursionDepth = 5;
    bool called = false;
    scene.surface("Wall", {{"Luminosity", 1}});
    scene.probe("Wall", "Color", [&](ShadingSample &sample, double *) {
        called = true;
        const HostSceneInfo &info = *sceneInfo();
        EXPECT_STREQ(info.name, "Test");
        EXPECT_STREQ(info.fileName, "test.json");
        EXPECT_EQ(info.firstFrame, 3);
        EXPECT_EQ(info.lastFrame, 9);
        EXPECT_EQ(info.framesPerSecond, 25);
        EXPECT_EQ(info.recursionDepth, 5);
        EXPECT_EQ(info.width, 1);
        EXPECT_EQ(info.points, 8 * 3); // a corner of a box has three points on the map
        EXPECT_EQ(info.polygons, 6);
        EXPECT_EQ(info.threads, 1);
        EXPECT_EQ(info.renderCamera(0), sample.sourceItem);
        double colour[3];
        backdropInfo()->backdrop(0, sample.position, colour);
        expectNear(Vec3(colour), {0.25, 0.5, 0.75}, 0);
    });
    scene.object("Wall", BoxShape{}, "Wall");
    scene.render();
    EXPECT_TRUE(called);
    EXPECT_STREQ(sceneInfo()->name, "");
    EXPECT_EQ(sceneInfo()->renderCamera(0), nullptr);
}

TEST(Renderer, TakesTheCameraByName) {
    TestScene scene;
    CameraDescription other = scene.description.cameras[0];
    other.name = "Other";
    other.rotation = {180, 0, 0};
    scene.description.cameras.push_back(other);
    scene.surface("Wall", {{"Luminosity", 1}}, {1, 0, 0});
    scene.object("Wall", BoxShape{}, "Wall");
    expectNear(scene.pixel(), {1, 0, 0}, kTolerance);
    scene.job.camera = "Other";
    expectNear(scene.pixel(), {0.25, 0.5, 0.75}, kTolerance);
    scene.job.camera = "Othr";
    try {
        scene.render();
        ADD_FAILURE();
    } catch (const InputError &error) {
        EXPECT_NE(std::string(error.what()).find("\"Other\""), std::string::npos) << error.what();
    }
}

TEST(Renderer, RefusesJobsThatMakeNoSense) {
    TestScene scene;
    const RenderJob good = scene.job;
    const auto refused = [&](auto edit) {
        RenderJob job = good;
        edit(job);
        EXPECT_THROW(renderFrame(scene.renderScene(), job), InputError);
    };
    refused([](RenderJob &job) { job.width = 0; });
    refused([](RenderJob &job) { job.height = -1; });
    refused([](RenderJob &job) { job.width = 1 << 20; });
    refused([](RenderJob &job) { job.samples = 0; });
    refused([](RenderJob &job) { job.threads = kMostWorkers + 1; });
    refused([](RenderJob &job) {
        job.order = RenderOrder::classic;
        job.threads = kMaxThreads + 1;
    });
    refused([](RenderJob &job) { job.firstSample = job.samples; });
    refused([](RenderJob &job) { job.endSample = job.samples + 1; });
    refused([](RenderJob &job) { job.part = {.left = 1, .top = 0, .right = 2, .bottom = 1}; });
    refused([](RenderJob &job) { job.threads = -1; });
    refused([](RenderJob &job) { job.recursionDepth = -1; });
    refused([](RenderJob &job) { job.recursionDepth = kMaxRecursionDepth + 1; });
    refused([](RenderJob &job) { job.region = {.left = 0, .top = 0, .right = 2, .bottom = 1}; });
    refused([](RenderJob &job) { job.region = {.left = 1, .top = 0, .right = 1, .bottom = 1}; });
    TestScene empty;
    empty.description.cameras.clear();
    EXPECT_THROW(empty.render(), InputError);
}

TEST(Renderer, JobFromTheScene) {
    RenderDescription description;
    description.width = 12;
    description.height = 34;
    description.samples = 5;
    description.recursionDepth = 6;
    description.firstFrame = 15;
    description.framesPerSecond = 30;
    description.camera = "B";
    const RenderJob job = renderJob(description);
    EXPECT_EQ(job.width, 12);
    EXPECT_EQ(job.height, 34);
    EXPECT_EQ(job.samples, 5);
    EXPECT_EQ(job.recursionDepth, 6);
    EXPECT_EQ(job.frame, 15);
    EXPECT_EQ(job.time, 0.5);
    EXPECT_EQ(job.camera, "B");
}

TEST(RenderJob, ARegionIsMadeOfWholePixels) {
    RenderDescription description;
    description.width = 200;
    description.height = 100;
    EXPECT_EQ(renderJob(description).region, Region{}) << "the whole picture";
    description.region = {0.25, 0.5, 0.752, 1};
    EXPECT_EQ(renderJob(description).region, (Region{.left = 50, .top = 50, .right = 150, .bottom = 100}));
    description.region = {0.999, 0.001, 1, 0.002};
    EXPECT_EQ(renderJob(description).region, (Region{.left = 199, .top = 0, .right = 200, .bottom = 1}))
        << "one at least";
}

TEST(Mask, PixelsOutsideHaveItsColour) {
    TestScene scene = litBall(); // 50 by 40 pixels
    const Picture whole = scene.render().picture;
    scene.description.cameras[0].mask = {0.2, 0, 1, 0.5};
    scene.description.cameras[0].maskColour = {1, 2, 3};
    scene.update();
    const Picture masked = scene.render().picture;
    EXPECT_TRUE(samePixels(masked, whole, {.left = 10, .top = 0, .right = 50, .bottom = 20}));
    for (const auto &[x, y] : {std::pair{9, 0}, {0, 39}, {10, 20}, {49, 39}}) {
        const float *pixel = masked.pixel(x, y);
        EXPECT_EQ((Vec3{pixel[0], pixel[1], pixel[2]}), (Vec3{1, 2, 3})) << x << ' ' << y;
        EXPECT_EQ(pixel[3], 1) << "opaque";
    }
}

} // namespace
} // namespace velm::host::test
