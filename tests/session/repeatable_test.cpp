// Repeatable order with the module's nodes: one picture, however it is divided, and noise that does not repeat.
#include "host/graph/listed_module.h"
#include "host/render/order/unit_of_work.h"
#include "host/render/services/scene_services.h"
#include "host/scene/read_scene.h"
#include "host/services/services.h"
#include "host/session/rendering.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace velm::host::test {
namespace {

// A wall that fills the picture, of 4 by 4 tiles, and shows random numbers.
constexpr int kSide = 4 * kTileSize;

SceneDescription wall(const std::string &node, const std::string &connection) {
    const std::string text = R"({
        "render": {"width": 128, "height": 128, "samples": 1},
        "cameras": {"Main": {"position": [0, 0, -5], "target": [0, 0, 0]}},
        "backdrop": {"kind": "plain", "colour": [0.3, 0.3, 0.3]},
        "objects": {"Wall": {"box": {"size": [90, 90, 1]}, "surface": "Wall"}},
        "surfaces": {"Wall": {"settings": {"Color": [1, 1, 1], "Luminosity": 1, "Diffuse": 0}, "nodes": {)" +
                             node + R"(}, "connections": [")" + connection + R"("]}}})";
    return readSceneText(text, "wall.json", {});
}

class Repeatable : public testing::Test {
  protected:
    Repeatable() {
        offerNodeServices();
        offerSceneServices();
        module_.emplace(VELM_MODULE_FILE);
    }

    // Renders what `change` makes of the scene's own job.
    template <class Change>
    Frame render(const SceneDescription &scene, int frame, Change change) {
        Warnings warnings(Warnings::Policy::strict);
        Session session(scene, warnings);
        RenderJob job = renderJob(session);
        job.threads = 1;
        change(job);
        Rendering rendering(session);
        rendering.setFrame(frame);
        return rendering.render(job);
    }
    Picture picture(const SceneDescription &scene, int frame = 1) {
        return render(scene, frame, [](RenderJob &) {}).picture;
    }

    std::optional<ListedModule> module_;
};

const SceneDescription &randomWall() {
    static const SceneDescription scene =
        wall(R"("Random": {"server": "Velm Random"})", "Random.Out -> Wall.Luminosity");
    return scene;
}

bool areEqual(const Picture &a, const Picture &b, const Region &region) {
    const std::size_t bytes = static_cast<std::size_t>(region.width()) * Picture::kChannels * sizeof(float);
    for (int y = region.top; y < region.bottom; ++y)
        if (std::memcmp(a.pixel(region.left, y), b.pixel(region.left, y), bytes) != 0) return false;
    return true;
}

constexpr Region kWhole = {.left = 0, .top = 0, .right = kSide, .bottom = kSide};

TEST_F(Repeatable, AnyNumberOfWorkersMakesThePicture) {
    const Picture one = picture(randomWall());
    for (const int workers : {2, 3, 16, 32}) {
        const Frame frame = render(randomWall(), 1, [workers](RenderJob &job) { job.threads = workers; });
        EXPECT_EQ(frame.statistics.order, RenderOrder::repeatable);
        EXPECT_TRUE(areEqual(frame.picture, one, kWhole)) << workers;
    }
}

TEST_F(Repeatable, AFrameDoesNotDependOnThoseBefore) {
    const Picture alone = picture(randomWall(), 7);
    Warnings warnings(Warnings::Policy::strict);
    Session session(randomWall(), warnings);
    RenderJob job = renderJob(session);
    job.threads = 2;
    Rendering rendering(session);
    for (const int frame : {5, 6}) {
        rendering.setFrame(frame);
        rendering.render(job);
    }
    rendering.setFrame(7);
    EXPECT_TRUE(areEqual(rendering.render(job).picture, alone, kWhole));
}

TEST_F(Repeatable, ARegionAndPartsAreThatOfTheWhole) {
    const Picture whole = picture(randomWall());
    const Region region = {.left = 13, .top = 40, .right = 77, .bottom = 90};
    EXPECT_TRUE(areEqual(render(randomWall(), 1, [&](RenderJob &job) { job.region = region; }).picture, whole, region));
    EXPECT_TRUE(areEqual(render(randomWall(), 1, [&](RenderJob &job) { job.part = region; }).picture, whole, region));
}

TEST_F(Repeatable, SamplesAddUpToThePictureMadeAtOnce) {
    const auto samples = [](int first, int end) {
        return [first, end](RenderJob &job) {
            job.samples = 8;
            job.firstSample = first;
            job.endSample = end;
        };
    };
    const Picture whole = render(randomWall(), 1, samples(0, 8)).picture;
    const Picture begin = render(randomWall(), 1, samples(0, 3)).picture,
                  end = render(randomWall(), 1, samples(3, 8)).picture;
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x)
            EXPECT_NEAR((3 * begin.pixel(x, y)[0] + 5 * end.pixel(x, y)[0]) / 8, whole.pixel(x, y)[0], 1e-6);
}

TEST_F(Repeatable, SeedsAndFramesChooseTheNoise) {
    const Picture first = picture(randomWall());
    EXPECT_FALSE(areEqual(render(randomWall(), 1, [](RenderJob &job) { job.seed = 1; }).picture, first, kWhole));
    EXPECT_FALSE(areEqual(picture(randomWall(), 2), first, kWhole));
    const auto locked = [](RenderJob &job) { job.lockNoise = true; };
    EXPECT_TRUE(areEqual(render(randomWall(), 1, locked).picture, render(randomWall(), 2, locked).picture, kWhole));
}

// ---- Noise ----

struct Shift {
    int x, y;
};

// The correlation of the noise of each tile of `a` with that of the tile of `b` that is `tiles` beside it, where both
// are shifted against each other. Over all tiles of the picture.
double correlation(const Picture &a, const Picture &b, const Shift &tiles, const Shift &shift) {
    double sumA = 0, sumB = 0, squaresA = 0, squaresB = 0, products = 0, count = 0;
    for (int y = 0; y < kSide - tiles.y * kTileSize; ++y) {
        for (int x = 0; x < kSide - tiles.x * kTileSize; ++x) {
            const int inX = x % kTileSize + shift.x, inY = y % kTileSize + shift.y;
            if (inX < 0 || inX >= kTileSize || inY < 0 || inY >= kTileSize) continue;
            const double one = a.pixel(x, y)[0];
            const double other = b.pixel(x + shift.x + tiles.x * kTileSize, y + shift.y + tiles.y * kTileSize)[0];
            sumA += one;
            sumB += other;
            squaresA += one * one;
            squaresB += other * other;
            products += one * other;
            ++count;
        }
    }
    const double covariance = products / count - sumA / count * (sumB / count);
    return covariance / std::sqrt((squaresA / count - sumA * sumA / count / count) *
                                  (squaresB / count - sumB * sumB / count / count));
}

double largestCorrelation(const Picture &a, const Picture &b, const Shift &tiles) {
    double largest = 0;
    for (int y = -4; y <= 4; ++y)
        for (int x = -4; x <= 4; ++x) largest = std::max(largest, std::abs(correlation(a, b, tiles, {.x = x, .y = y})));
    return largest;
}

TEST_F(Repeatable, NeighbouringTilesAndSuccessiveFramesHaveNoiseOfTheirOwn) {
    const Picture first = picture(randomWall(), 1), second = picture(randomWall(), 2);
    // 9,000 to 12,000 pixels: a correlation of 0.01 is one standard deviation, and the largest of 81 some 2.5 to 3.5.
    EXPECT_LT(largestCorrelation(first, first, {.x = 1, .y = 0}), 0.05);
    EXPECT_LT(largestCorrelation(first, first, {.x = 0, .y = 1}), 0.05);
    EXPECT_LT(largestCorrelation(first, second, {.x = 0, .y = 0}), 0.05);
}

// Independent noise averages down with the square root of the number of pictures.
TEST_F(Repeatable, NoiseOfSixteenFramesAveragesDown) {
    std::vector<double> sums(std::size_t{kSide} * kSide);
    for (int frame = 1; frame <= 16; ++frame) {
        const Picture one = picture(randomWall(), frame);
        for (std::size_t i = 0; i < sums.size(); ++i)
            sums[i] += one.pixel(static_cast<int>(i) % kSide, static_cast<int>(i) / kSide)[0];
    }
    double squares = 0;
    for (const double sum : sums) squares += (sum / 16 - 0.5) * (sum / 16 - 0.5);
    const double expected = std::sqrt(1.0 / 12 / 16); // of the mean of 16 numbers from 0 to 1
    EXPECT_NEAR(std::sqrt(squares / static_cast<double>(sums.size())), expected, 0.03 * expected);
}

// ---- Choosing the order ----

TEST_F(Repeatable, NodesWithMemoryAreRenderedInClassicOrder) {
    const SceneDescription counter = wall(R"("Counter": {"server": "Velm Counter"})", "Counter.Out -> Wall.Luminosity");
    const Frame frame = render(counter, 1, [](RenderJob &) {});
    EXPECT_EQ(frame.statistics.order, RenderOrder::classic);
    EXPECT_EQ(frame.statistics.orderReason, "the node \"Counter\" has a memory of earlier evaluations");
}

TEST_F(Repeatable, NodesWithMemoryBeginAnewInEachUnitOnDemand) {
    const SceneDescription counter = wall(R"("Counter": {"server": "Velm Counter"})", "Counter.Out -> Wall.Luminosity");
    const auto repeatable = [](RenderJob &job) { job.order = RenderOrder::repeatable; };
    const Frame one = render(counter, 1, repeatable);
    EXPECT_EQ(one.statistics.orderReason, "");
    const Frame several = render(counter, 1, [](RenderJob &job) {
        job.order = RenderOrder::repeatable;
        job.threads = 5;
    });
    EXPECT_TRUE(areEqual(one.picture, several.picture, kWhole));
    // The count of the first tile is that of every other.
    for (int y = 0; y < kTileSize; ++y)
        for (int x = 0; x < kTileSize; ++x)
            EXPECT_EQ(one.picture.pixel(x, y)[0], one.picture.pixel(x + 2 * kTileSize, y + kTileSize)[0]);
}

TEST_F(Repeatable, ClassicOrderOnDemand) {
    const auto classic = [](RenderJob &job) { job.order = RenderOrder::classic; };
    const Frame first = render(randomWall(), 1, classic), again = render(randomWall(), 1, classic);
    EXPECT_EQ(first.statistics.order, RenderOrder::classic);
    EXPECT_TRUE(areEqual(first.picture, again.picture, kWhole)) << "opening the scene restarts the stream";
}

} // namespace
} // namespace velm::host::test
