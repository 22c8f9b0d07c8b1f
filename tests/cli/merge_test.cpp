// "velm render --part" and "velm merge": a picture in parts is the picture rendered at once.
#include "host/image/picture_parts.h"
#include "tests/cli/command.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace velm::host {
namespace {

using test::TemporaryDirectory;

constexpr const char *kNoise = R"({
    "render": {"width": 100, "height": 70, "samples": 8},
    "cameras": {"Main": {"position": [0, 0, -5]}},
    "surfaces": {"Noise": {
        "settings": {"Color": [1, 1, 1], "Diffuse": 0},
        "nodes": {"R": {"server": "Velm Random"}},
        "connections": ["R.Out -> Noise.Luminosity"]}},
    "objects": {"Wall": {"box": {"size": [20, 20, 1]}, "surface": "Noise"}}
})";

class Merge : public testing::Test {
  protected:
    std::string file(const std::string &name) const { return directory_ / name; }

    test::Outcome render(const std::string &output, std::vector<std::string> more) const {
        std::vector<std::string> words{"render", scene_, "-o", file(output), "--quiet"};
        words.insert(words.end(), more.begin(), more.end());
        return test::velm(words);
    }

    // Renders all parts, and returns their names.
    std::vector<std::string> renderParts(int count, const std::string &by) const {
        std::vector<std::string> names;
        for (int number = 1; number <= count; ++number) {
            const std::string name = by + std::to_string(number) + ".exr";
            const test::Outcome outcome =
                render(name, {"--part", std::to_string(number) + "/" + std::to_string(count), "--by", by});
            EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
            names.push_back(file(name));
        }
        return names;
    }

    test::Outcome merge(std::vector<std::string> words) const {
        words.insert(words.begin(), "merge");
        words.insert(words.end(), {"-o", file("merged.exr")});
        return test::velm(words, false);
    }

    double largestDifference(const std::string &a, const std::string &b) const {
        const Picture first = readPart(file(a)).picture, second = readPart(file(b)).picture;
        double largest = 0;
        for (int y = 0; y < 70; ++y)
            for (int x = 0; x < 100; ++x)
                for (int i = 0; i < Picture::kChannels; ++i)
                    largest = std::max<double>(largest, std::abs(first.pixel(x, y)[i] - second.pixel(x, y)[i]));
        return largest;
    }

    const TemporaryDirectory directory_;
    const std::string scene_ = directory_.write("scene.json", kNoise);
};

TEST_F(Merge, PartsByTilesAreTheWholeToTheBit) {
    ASSERT_EQ(render("whole.exr", {}).status, kExitDone);
    std::vector<std::string> parts = renderParts(5, "tiles");
    std::ranges::reverse(parts);
    parts.insert(parts.end(), {"--expect", "5"});
    const test::Outcome merged = merge(parts);
    ASSERT_EQ(merged.status, kExitDone) << merged.err;
    EXPECT_EQ(largestDifference("merged.exr", "whole.exr"), 0);
    EXPECT_EQ(digestOfFile(file("merged.exr")), digestOfFile(file("whole.exr")));
}

TEST_F(Merge, PartsBySamplesAreTheWholeButForRounding) {
    ASSERT_EQ(render("whole.exr", {}).status, kExitDone);
    const test::Outcome merged = merge(renderParts(3, "samples"));
    ASSERT_EQ(merged.status, kExitDone) << merged.err;
    EXPECT_LT(largestDifference("merged.exr", "whole.exr"), 1e-6);
}

TEST_F(Merge, SaysWhichPartsAreMissing) {
    std::vector<std::string> parts = renderParts(4, "tiles");
    parts.erase(parts.begin() + 2);
    const test::Outcome merged = merge(parts);
    EXPECT_EQ(merged.status, kExitInput);
    EXPECT_EQ(merged.err, "velm: parts are missing: 3 of 4 by tiles\n");
}

TEST_F(Merge, RefusesPartsOfAnotherSeed) {
    ASSERT_EQ(render("a.exr", {"--part", "1/2"}).status, kExitDone);
    ASSERT_EQ(render("b.exr", {"--part", "2/2", "--seed", "9"}).status, kExitDone);
    const test::Outcome merged = merge({file("a.exr"), file("b.exr")});
    EXPECT_EQ(merged.status, kExitInput);
    EXPECT_NE(merged.err.find("b.exr: is no part of the same picture"), std::string::npos) << merged.err;
}

TEST_F(Merge, RefusesToReplaceAPart) {
    ASSERT_EQ(render("merged.exr", {"--part", "1/1"}).status, kExitDone);
    const test::Outcome merged = merge({file("merged.exr")});
    EXPECT_EQ(merged.status, kExitUsage);
    EXPECT_NE(merged.err.find("it is read, as"), std::string::npos) << merged.err;
}

TEST_F(Merge, PartsThatMakeNoSenseAreUsageErrors) {
    const auto message = [this](const std::string &output, const std::vector<std::string> &options) {
        const test::Outcome outcome = render(output, options);
        EXPECT_EQ(outcome.status, kExitUsage);
        return outcome.err;
    };
    EXPECT_NE(message("a.exr", {"--part", "3"}).find("\"3\" is no part such as 3/8"), std::string::npos);
    EXPECT_NE(message("a.exr", {"--part", "3/2"}).find("there is no part 3 of 2"), std::string::npos);
    EXPECT_NE(message("a.exr", {"--part", "0/2"}).find("there is no part 0 of 2"), std::string::npos);
    EXPECT_NE(
        message("a.exr", {"--part", "1/13"}).find("the picture has 12 tiles of 32 by 32 pixels, too few for 13 parts"),
        std::string::npos);
    EXPECT_NE(message("a.exr", {"--part", "1/9", "--by", "samples"}).find("a pixel has 8 samples, too few for 9 parts"),
              std::string::npos);
    EXPECT_NE(message("a.exr", {"--part", "1/2", "--by", "rows"}).find("\"rows\" is none of tiles, samples"),
              std::string::npos);
    EXPECT_NE(message("a.png", {"--part", "1/2"}).find("the output has to end in .exr"), std::string::npos);
    EXPECT_NE(message("a.exr", {"--threads", "17", "--order", "classic"}).find("16 threads at most"),
              std::string::npos);
    message("a.exr", {"--by", "tiles"});
    message("a.exr", {"--order", "sorted"});
}

TEST_F(Merge, ScenesWithMemoryHaveNoPartsByThemselves) {
    const std::string scene = directory_.write("counter.json", R"({
        "render": {"width": 64, "height": 64}, "cameras": {"Main": {"position": [0, 0, -5]}},
        "surfaces": {"S": {"nodes": {"Count": {"server": "Velm Counter"}}, "connections": ["Count.Out -> S.Luminosity"]}},
        "objects": {"Wall": {"box": {"size": [20, 20, 1]}, "surface": "S"}}})");
    const std::vector<std::string> words{"render", scene, "-o", file("a.exr"), "--part", "1/2", "--quiet"};
    const test::Outcome refused = test::velm(words);
    EXPECT_EQ(refused.status, kExitInput);
    EXPECT_NE(refused.err.find("cannot be rendered in parts: the node \"Count\" has a memory"), std::string::npos)
        << refused.err;
    std::vector<std::string> repeatable = words;
    repeatable.insert(repeatable.end(), {"--order", "repeatable"});
    EXPECT_EQ(test::velm(repeatable).status, kExitDone);
}

TEST_F(Merge, SkipsPicturesOfTheSameDigestOnly) {
    ASSERT_EQ(render("a.exr", {}).status, kExitDone);
    const auto isRendered = [this](std::vector<std::string> options) {
        std::vector<std::string> words{"render", scene_, "-o", file("a.exr"), "--skip-existing", "--stats"};
        words.insert(words.end(), options.begin(), options.end());
        return test::velm(words).err.find("is not rendered") == std::string::npos;
    };
    EXPECT_FALSE(isRendered({}));
    EXPECT_FALSE(isRendered({"--threads", "3"}));
    EXPECT_TRUE(isRendered({"--seed", "3"}));
    EXPECT_TRUE(isRendered({"--set", "surfaces.Noise.nodes.R.settings.Max=2"}));
    EXPECT_FALSE(isRendered({"--set", "surfaces.Noise.nodes.R.settings.Max=2"}));
}

} // namespace
} // namespace velm::host
