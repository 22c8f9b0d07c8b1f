// Frames in passes: the same picture however it is divided, coarse passes, tiles, stopping and priorities.
#include "host/base/error.h"
#include "host/render/order/unit_of_work.h"
#include "tests/render/test_scene.h"

#include <atomic>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace velm::host::test {
namespace {

const Region kWhole = {.left = 0, .top = 0, .right = 50, .bottom = 40};

// Every way to divide `samples` into successive passes, as the sample counts after each pass.
std::vector<std::vector<int>> divisions(int samples) {
    std::vector<std::vector<int>> all;
    for (unsigned cuts = 0; cuts < 1u << (samples - 1); ++cuts) {
        std::vector<int> &ends = all.emplace_back();
        for (int end = 1; end < samples; ++end)
            if ((cuts >> (end - 1) & 1) != 0) ends.push_back(end);
        ends.push_back(samples);
    }
    return all;
}

TEST(FrameRenderer, PassesMakeThePictureThatIsMadeAtOnce) {
    TestScene scene = litBall();
    scene.job.samples = 5;
    scene.job.region = {.left = 10, .top = 12, .right = 37, .bottom = 36}; // two by two tiles
    const Picture whole = scene.render().picture;
    for (const std::vector<int> &ends : divisions(5)) {
        FrameRenderer renderer(scene.renderScene(), scene.job);
        for (const int end : ends) {
            EXPECT_TRUE(renderer.renderPass({.samples = end}));
            EXPECT_EQ(renderer.samplesDone(), end);
        }
        EXPECT_TRUE(samePixels(renderer.picture(), whole, kWhole))
            << ends.size() << " passes, the first of " << ends[0];
        EXPECT_EQ(renderer.statistics().rays.camera, 27u * 24 * 5);
    }
}

TEST(FrameRenderer, CoarsePassesTakeNoSampleTwice) {
    TestScene scene = litBall();
    const Frame whole = scene.render();
    FrameRenderer renderer(scene.renderScene(), scene.job);
    const std::uint64_t expected[] = {7 * 5, 13 * 10, 25 * 20, 50 * 40}; // pixels that have their first sample
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(renderer.renderPass(kCoarseToFine[i]));
        EXPECT_EQ(renderer.statistics().rays.camera, expected[i]);
        EXPECT_EQ(renderer.samplesDone(), i < 3 ? 0 : 1);
    }
    EXPECT_TRUE(renderer.renderPass({.samples = 3}));
    EXPECT_TRUE(samePixels(renderer.picture(), whole.picture, kWhole));
    EXPECT_EQ(renderer.statistics().rays.total(), whole.statistics.rays.total());
    EXPECT_EQ(renderer.statistics().samples, whole.statistics.samples);
}

TEST(FrameRenderer, CoarsePassesShowBlocks) {
    TestScene scene = litBall();
    FrameRenderer first(scene.renderScene(), scene.job), renderer(scene.renderScene(), scene.job);
    first.renderPass({.samples = 1});
    for (const int step : {8, 4}) {
        renderer.renderPass({.samples = 1, .step = step});
        for (int y = 0; y < 40; ++y) {
            for (int x = 0; x < 50; ++x) {
                const float *shown = renderer.picture().pixel(x, y),
                            *corner = first.picture().pixel(x - x % step, y - y % step);
                for (int k = 0; k < Picture::kChannels; ++k) EXPECT_EQ(shown[k], corner[k]) << x << ", " << y;
            }
        }
    }
}

TEST(FrameRenderer, SamplesBeyondThoseOfTheJobAreNotTaken) {
    TestScene scene = litBall();
    FrameRenderer renderer(scene.renderScene(), scene.job);
    EXPECT_TRUE(renderer.renderPass({.samples = 1000}));
    EXPECT_EQ(renderer.samplesDone(), 3);
    const std::uint64_t rays = renderer.statistics().rays.total();
    EXPECT_TRUE(renderer.renderPass({.samples = 3}));
    EXPECT_EQ(renderer.statistics().rays.total(), rays);
}

// Copies the tiles that it is given.
class TileSink : public ProgressSink {
  public:
    TileSink(int width, int height) : picture(width, height), told(static_cast<std::size_t>(width * height)) {}
    void tile(const Region &region, const Picture &source) override {
        EXPECT_EQ(std::this_thread::get_id(), thread);
        ++tiles;
        for (int y = region.top; y < region.bottom; ++y) {
            for (int x = region.left; x < region.right; ++x) {
                ++told[static_cast<std::size_t>(y * picture.width() + x)];
                std::copy_n(source.pixel(x, y), Picture::kChannels, picture.pixel(x, y));
            }
        }
    }
    bool progress(int done, int) override {
        EXPECT_EQ(done, tiles) << "tiles come before they are counted";
        return true;
    }
    const std::thread::id thread = std::this_thread::get_id();
    Picture picture;
    std::vector<int> told; // by pixel
    int tiles = 0;
};

TEST(FrameRenderer, EveryTileIsHandedOutOnce) {
    TestScene scene = litBall();
    scene.job.threads = 3;
    FrameRenderer renderer(scene.renderScene(), scene.job);
    for (const RenderPass pass :
         {RenderPass{.samples = 1, .step = 4}, RenderPass{.samples = 2}, RenderPass{.samples = 3}}) {
        TileSink sink(50, 40);
        EXPECT_TRUE(renderer.renderPass(pass, &sink));
        EXPECT_EQ(sink.tiles, 4);
        EXPECT_EQ(sink.told, std::vector<int>(2000, 1));
        EXPECT_TRUE(samePixels(sink.picture, renderer.picture(), kWhole));
    }
}

TEST(FrameRenderer, PassesOfSeveralWorkersMakeTheSamePicture) {
    TestScene scene = litBall();
    const Picture whole = scene.render().picture;
    scene.job.threads = 4;
    FrameRenderer renderer(scene.renderScene(), scene.job);
    for (const RenderPass &pass : kCoarseToFine) renderer.renderPass(pass);
    renderer.renderPass({.samples = 2});
    renderer.renderPass({.samples = 3});
    EXPECT_TRUE(samePixels(renderer.picture(), whole, kWhole));
}

// A wall that fills a picture of four samples. Rendering it is stopped by its evaluation of a given number.
class StoppedRender {
  public:
    StoppedRender(int side, int enough) {
        scene_.job.width = scene_.job.height = side;
        scene_.job.samples = kSamples;
        scene_.surface("Wall", {{"Luminosity", 1}});
        scene_.probe("Wall", "Color", [this, enough](ShadingSample &sample, double value[3]) {
            value[0] = sample.position[0];
            if (++evaluations_ == enough) source_.request_stop();
        });
        scene_.object("Wall", BoxShape{.size = {9, 9, 1}}, "Wall");
    }

    RenderJob &job() { return scene_.job; }
    int evaluations() const { return evaluations_; }
    bool start(FrameRenderer &renderer) {
        return renderer.renderPass({.samples = kSamples}, nullptr, source_.get_token());
    }
    FrameRenderer renderer() { return FrameRenderer(scene_.renderScene(), scene_.job); }
    // Renders the rest, and compares the picture with one that was not stopped. The number of evaluations until then.
    int finish(FrameRenderer &renderer) {
        EXPECT_TRUE(renderer.renderPass({.samples = kSamples}));
        const int evaluations = evaluations_;
        EXPECT_TRUE(samePixels(renderer.picture(), scene_.render().picture,
                               {.left = 0, .top = 0, .right = scene_.job.width, .bottom = scene_.job.height}));
        return evaluations;
    }

    static constexpr int kSamples = 4;

  private:
    TestScene scene_;
    std::atomic<int> evaluations_ = 0;
    std::stop_source source_;
};

TEST(FrameRendererThreaded, StopsAfterTheSampleAtHand) {
    constexpr int kSide = 64, kEnough = 200;
    for (const int threads : {1, 4}) {
        StoppedRender stopped(kSide, kEnough);
        stopped.job().order = RenderOrder::classic;
        stopped.job().threads = threads;
        FrameRenderer renderer = stopped.renderer();
        EXPECT_FALSE(stopped.start(renderer));
        EXPECT_GE(stopped.evaluations(), kEnough);
        EXPECT_LE(stopped.evaluations(), kEnough + threads - 1) << "each other thread may finish one sample";
        EXPECT_EQ(renderer.samplesDone(), 0);

        const int before = stopped.evaluations();
        EXPECT_FALSE(stopped.start(renderer)) << "stopped before it began";
        EXPECT_EQ(stopped.evaluations(), before);
        EXPECT_EQ(stopped.finish(renderer), kSide * kSide * StoppedRender::kSamples) << "goes on where it stopped";
    }
}

// A unit of work that was stopped is begun again: its samples so far do not count.
TEST(FrameRenderer, GoesOnFromTheLastWholeUnit) {
    constexpr int kBegun = 100, kEnough = 2 * kTilePixels + kBegun;
    StoppedRender stopped(kTileSize, kEnough);
    stopped.job().threads = 1;
    FrameRenderer renderer = stopped.renderer();
    EXPECT_FALSE(stopped.start(renderer));
    EXPECT_EQ(stopped.evaluations(), kEnough);
    EXPECT_EQ(stopped.finish(renderer), StoppedRender::kSamples * kTilePixels + kBegun);
}

TEST(FrameRendererThreaded, RenderThreadsHaveTheirPriority) {
    TestScene scene;
    scene.surface("Wall", {{"Luminosity", 1}});
    scene.object("Wall", BoxShape{}, "Wall");
    int niceness = -1;
    const auto ownNiceness = [] { return getpriority(PRIO_PROCESS, static_cast<id_t>(gettid())); };
    scene.probe("Wall", "Color", [&](ShadingSample &, double *) { niceness = ownNiceness(); });
    const int usual = ownNiceness();
    scene.render();
    EXPECT_EQ(niceness, usual);
    scene.job.niceness = 5;
    scene.render();
    EXPECT_EQ(niceness, std::min(usual + 5, 19));
    EXPECT_EQ(ownNiceness(), usual) << "the calling thread keeps its own";
    for (const int wrong : {-1, 20}) {
        scene.job.niceness = wrong;
        EXPECT_THROW(scene.render(), InputError);
    }
}

} // namespace
} // namespace velm::host::test
