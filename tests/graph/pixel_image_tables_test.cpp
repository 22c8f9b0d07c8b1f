// The module's Pixel Image in the stand-alone host, with an image of four by four pixels: every tiling rule and every
// blend against tables written by hand, and every pixel of the thumbnail.
#include "host/graph/network.h"
#include "host/image/image.h"
#include "host/image/picture.h"
#include "host/panel/draw.h"
#include "host/panel/settings.h"
#include "tests/graph/listed_module.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>

namespace velm::host::test {
namespace {

constexpr int kSide = 4;
constexpr int kFirst = -9, kLast = 9;
constexpr float kQuarter = 0.25f;

// Red is the column in quarters, green the row.
class PixelTables : public testing::Test {
  protected:
    static void SetUpTestSuite() { listModule(); }

    PixelTables() {
        file_ = (std::filesystem::temp_directory_path() / ("velm_pixel_tables_" + std::to_string(::getpid()) + ".exr"))
                    .string();
        Picture picture(kSide, kSide);
        for (int y = 0; y < kSide; ++y)
            for (int x = 0; x < kSide; ++x) {
                const float pixel[4] = {kQuarter * static_cast<float>(x), kQuarter * static_cast<float>(y), 1, 1};
                std::copy_n(pixel, 4, picture.pixel(x, y));
            }
        writePicture(picture, file_);
        ImageList::instance().load(file_, "Chart");
        editor_ = std::make_unique<Network>("Tables", "Tables", nullptr, nullptr);
        node_ = &editor_->addNode(serverList().get("Velm Pixel Image"));
        input_ = createInput(editor_->root(), kConnectColour, "In", nullptr);
        editor_->connect(*node_->findOutput("Color"), *input_);
        set("Image", std::string("Chart"));
        set("Bg Color", Double3{0.5, 0.75, 0.25});
    }
    ~PixelTables() override {
        editor_.reset();
        ImageList::instance().clear();
        std::filesystem::remove(file_);
    }

    void set(const char *label, const SettingValue &value) {
        applySetting(*panelOf(*node_), {.label = label, .value = value, .location = {}});
    }
    Double3 colour() {
        editor_->init(kInitRender);
        editor_->newTime(0, 0);
        ShadingSample sample{};
        Double3 result{};
        EXPECT_EQ(evaluateInput(input_, &sample, result.data()), 1);
        editor_->cleanup();
        return result;
    }
    HostNode &node() { return *node_; }

    // The results for coordinates from kFirst to kLast along one axis: the pixel's number, or B for the background.
    std::string found(const char *axis, std::size_t component) {
        std::string text;
        for (int coordinate = kFirst; coordinate <= kLast; ++coordinate) {
            set(axis, static_cast<double>(coordinate));
            const Double3 seen = colour();
            text += seen[2] == 1 ? static_cast<char>('0' + static_cast<int>(seen[component] / kQuarter)) : 'B';
        }
        return text;
    }

  private:
    std::string file_;
    std::unique_ptr<Network> editor_;
    HostNode *node_;
    HostInput *input_;
};

struct TilingRow {
    const char *rule;
    const char *negative, *others; // -9 to -1, 0 to 9
};
// A negative multiple of the side is wrapped to the side itself, one past the last pixel, which reads the last pixel.
constexpr TilingRow kTilings[] = {
    {"Reset", "BBBBBBBBB", "0123BBBBBB"},
    {"Repeat", "331233123", "0123012301"},
    {"Mirror", "100123321", "0123321001"},
    {"Edge", "000000000", "0123333333"},
};

TEST_F(PixelTables, EveryTilingInBothAxes) {
    for (const TilingRow &row : kTilings) {
        const std::string expected = std::string(row.negative) + row.others;
        set("V Tiling", std::string("Reset"));
        set("U Tiling", std::string(row.rule));
        set("Y", 2.0);
        EXPECT_EQ(found("X", 0), expected) << row.rule << " across";
        set("U Tiling", std::string("Reset"));
        set("V Tiling", std::string(row.rule));
        set("X", 1.0);
        EXPECT_EQ(found("Y", 1), expected) << row.rule << " down";
    }
}

struct BlendRow {
    const char *mode;
    Double3 full; // at an opacity of 100 %
};
// The pixel (0.75, 0.25, 1) over the background (0.5, 0.75, 0.25).
constexpr BlendRow kBlends[] = {
    {"Normal", {0.75, 0.25, 1}},         {"Additive", {1.25, 1, 1.25}},      {"Subtractive", {-0.25, 0.5, -0.75}},
    {"Multiply", {0.375, 0.1875, 0.25}}, {"Screen", {0.875, 0.8125, 1}},     {"Darken", {0.5, 0.25, 0.25}},
    {"Lighten", {0.75, 0.75, 1}},        {"Difference", {0.25, 0.5, 0.75}},  {"Negative", {0.75, 1, 0.75}},
    {"Color Dodge", {2, 1, 1}},          {"Color Burn", {1.0 / 3, 0, 0.25}}, {"Red", {0.75, 0.75, 0.25}},
    {"Green", {0.5, 0.25, 0.25}},        {"Blue", {0.5, 0.75, 1}},
};

TEST_F(PixelTables, EveryBlendAtFullAndHalfOpacity) {
    constexpr Double3 kBackground = {0.5, 0.75, 0.25};
    set("X", 3.0);
    set("Y", 1.0);
    ASSERT_EQ(std::size(kBlends), static_cast<std::size_t>(kBlendBlue) + 1);
    for (const BlendRow &row : kBlends) {
        set("Blending", std::string(row.mode));
        for (const double percent : {100.0, 50.0, 0.0}) {
            set("Opacity", percent);
            const Double3 seen = colour();
            for (std::size_t i = 0; i < 3; ++i) {
                const double expected = kBackground[i] + percent / 100 * (row.full[i] - kBackground[i]);
                EXPECT_NEAR(seen[i], expected, 1e-12) << row.mode << " at " << percent << " %, component " << i;
            }
        }
    }
}

TEST_F(PixelTables, TheThumbnailPixelByPixel) {
    HostPanel &panel = *panelOf(node());
    const PanelItem &control = *panel.find(panel.controls().front());
    HostDrawArea area(8, 6);
    drawControl(panel, control, area);
    // Eight columns show each of four twice; six rows show four at steps of two thirds.
    constexpr int kRows[6] = {0, 0, 1, 2, 2, 3};
    constexpr int kBytes[kSide] = {0, 63, 127, 191}; // quarters of 255, truncated
    for (int y = 0; y < area.height; ++y)
        for (int x = 0; x < area.width; ++x) {
            const std::array<std::uint8_t, 3> seen = area.at(x, y);
            EXPECT_EQ(seen[0], kBytes[x / 2]) << x << ", " << y;
            EXPECT_EQ(seen[1], kBytes[kRows[y]]) << x << ", " << y;
            EXPECT_EQ(seen[2], 255) << x << ", " << y;
        }
}

} // namespace
} // namespace velm::host::test
