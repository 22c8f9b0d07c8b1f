// Every scene in examples/ can be read and rendered.
#include "host/base/colour.h"
#include "host/image/image.h"

#include "tests/cli/command.h"
#include "tests/cli/example_names.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace velm::host {
namespace {

class Example : public testing::TestWithParam<std::string> {};

TEST_P(Example, RendersAPictureWithContrast) {
    const test::TemporaryDirectory directory;
    const std::string file = directory / "small.exr";
    const test::Outcome outcome = test::velm({"render", test::exampleFile(GetParam()), "-o", file, "--size", "32x18",
                                              "--samples", "1", "--frames", "1", "--quiet"});
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    // Some examples reflect panoramas from a package that only "./run examples" installs. Without it, they warn where
    // to get it, and the picture may be empty.
    if (outcome.err.find("warning: ") != std::string::npos) {
        EXPECT_NE(outcome.err.find("; it comes from Debian's package blender-data"), std::string::npos) << outcome.err;
        GTEST_SKIP() << outcome.err;
    }
    const auto image = readImage(file, "result");
    float darkest = 1, brightest = 0;
    for (int y = 0; y < image->height; ++y)
        for (int x = 0; x < image->width; ++x) {
            float colour[3];
            pixel(image.get(), x, y, colour);
            const auto level = static_cast<float>(luminance(colour[0], colour[1], colour[2]));
            ASSERT_TRUE(std::isfinite(level)) << x << ", " << y;
            darkest = std::min(darkest, level);
            brightest = std::max(brightest, level);
        }
    constexpr float kLeastContrast = 0.1F;
    EXPECT_GT(brightest - darkest, kLeastContrast);
}

INSTANTIATE_TEST_SUITE_P(All, Example, testing::ValuesIn(test::exampleNames()),
                         [](const auto &name) { return name.param; });

} // namespace
} // namespace velm::host
