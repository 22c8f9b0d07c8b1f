#include "host/panel/draw.h"

#include "tests/panel/panel_fixture.h"

#include <gtest/gtest.h>

#include <climits>

using namespace velm::host;

namespace {

using Pixel = std::array<std::uint8_t, 3>;
constexpr Pixel kBlack = {0, 0, 0}, kWhite = {255, 255, 255}, kRed = {255, 0, 0}, kGrey = {128, 128, 128};

const HostDrawFuncs &funcs() { return *drawFuncs(); }

// Rows of text with '#' for each pixel that is not black.
std::string shape(const HostDrawArea &area) {
    std::string text;
    for (int y = 0; y < area.height; ++y) {
        for (int x = 0; x < area.width; ++x) text += area.at(x, y) == kBlack ? '.' : '#';
        text += '\n';
    }
    return text;
}

TEST(Draw, Pixels) {
    HostDrawArea area(3, 2);
    funcs().rgbPixel(&area, 1, 2, 3, 0, 0);
    funcs().rgbPixel(&area, -9, 999, 256, 2, 1);
    funcs().pixel(&area, 4, 1, 0);
    EXPECT_EQ(area.at(0, 0), (Pixel{1, 2, 3}));
    EXPECT_EQ(area.at(2, 1), (Pixel{0, 255, 255}));
    EXPECT_EQ(area.at(1, 0), kRed);
    for (const int outside : {-1, 3, INT_MIN, INT_MAX}) {
        funcs().pixel(&area, 3, outside, 0);
        funcs().pixel(&area, 3, 0, outside);
    }
    EXPECT_EQ(shape(area), "##.\n..#\n");
    funcs().pixel(&area, 99, 0, 0);
    EXPECT_EQ(area.at(0, 0), kBlack) << "numbers without a colour are black";
}

TEST(Draw, BoxesAreClipped) {
    HostDrawArea area(4, 3);
    funcs().box(&area, 3, 1, 1, 2, 1);
    EXPECT_EQ(shape(area), "....\n.##.\n....\n");
    funcs().rgbBox(&area, 9, 9, 9, -5, 2, INT_MAX, INT_MAX);
    EXPECT_EQ(shape(area), "....\n.##.\n####\n");
    funcs().box(&area, 3, 0, 0, 0, 5);
    funcs().box(&area, 3, 0, 0, -3, 1);
    EXPECT_EQ(shape(area), "....\n.##.\n####\n");
}

TEST(Draw, Lines) {
    const struct {
        int x0, y0, x1, y1;
        const char *shape;
    } rows[] = {
        {0, 0, 3, 3, "#...\n.#..\n..#.\n...#\n"},   {3, 3, 0, 0, "#...\n.#..\n..#.\n...#\n"},
        {0, 1, 3, 1, "....\n####\n....\n....\n"},   {2, 3, 2, 1, "....\n..#.\n..#.\n..#.\n"},
        {1, 1, 1, 1, "....\n.#..\n....\n....\n"},   {-1000000000, 2, 1000000000, 2, "....\n....\n####\n....\n"},
        {-4, 0, -1, 3, "....\n....\n....\n....\n"}, {0, 0, 3, 1, "##..\n..##\n....\n....\n"},
        {0, -3, 3, 0, "...#\n....\n....\n....\n"},
    };
    for (const auto &row : rows) {
        HostDrawArea area(4, 4);
        funcs().line(&area, 3, row.x0, row.y0, row.x1, row.y1);
        EXPECT_EQ(shape(area), row.shape) << row.x0 << " " << row.y0 << " " << row.x1 << " " << row.y1;
    }
}

TEST(Draw, Borders) {
    HostDrawArea area(4, 4);
    funcs().border(&area, 0, 0, 0, 4, 4);
    EXPECT_EQ(shape(area), "####\n#..#\n#..#\n####\n");
    EXPECT_EQ(area.at(0, 0), kWhite);
    EXPECT_EQ(area.at(3, 3), kGrey);
    funcs().border(&area, 1, 0, 0, 4, 4);
    EXPECT_EQ(area.at(0, 0), kGrey);
    EXPECT_EQ(area.at(3, 3), kWhite);
    HostDrawArea other(2, 2);
    funcs().border(&other, 0, 0, 0, 0, 2);
    EXPECT_EQ(shape(other), "..\n..\n");
}

TEST(Draw, TextHasASizeAndDrawsNothing) {
    HostDrawArea area(20, 10);
    EXPECT_EQ(funcs().textWidth(&area, "abc"), 18);
    EXPECT_EQ(funcs().textWidth(&area, nullptr), 0);
    EXPECT_EQ(funcs().textHeight(&area, "abc"), 10);
    funcs().text(&area, "abc", 3, 0, 0);
    EXPECT_EQ(shape(area).find('#'), std::string::npos);
}

TEST(Draw, NullAreasAreHarmless) {
    funcs().pixel(nullptr, 1, 0, 0);
    funcs().line(nullptr, 1, 0, 0, 1, 1);
    funcs().box(nullptr, 1, 0, 0, 1, 1);
    funcs().border(nullptr, 0, 0, 0, 1, 1);
    const HostDrawArea smallest(0, -5);
    EXPECT_EQ(smallest.width, 1);
    EXPECT_EQ(smallest.height, 1);
}

TEST(Draw, ControlsDrawThemselves) {
    Plug plug;
    const PanelOwner panel = makePanel(plug);
    HostDrawArea area(8, 6);
    drawControl(*panel, *panel->find(Plug::kThumb), area);
    EXPECT_EQ(area.at(3, 3), (Pixel{10, 20, 30}));
    EXPECT_EQ(area.at(7, 5), (Pixel{255, 0, 7}));
    drawControl(*panel, *panel->find(Plug::kMode), area); // has no draw callback
}

TEST(Draw, OptionsGiveASize) {
    const struct {
        int options, width, height;
    } rows[] = {{0, 64, 64},
                {kThumbSmall | kThumbSquare, 32, 32},
                {kThumbMedium | kThumb4To3, 85, 64},
                {kThumbLarge, 128, 128},
                {kThumbExtraLarge | kThumbWide, 455, 256}};
    for (const auto &row : rows) {
        PanelItem control;
        control.options = static_cast<unsigned int>(row.options);
        EXPECT_EQ(thumbnailSize(control).width, row.width);
        EXPECT_EQ(thumbnailSize(control).height, row.height);
    }
}

} // namespace
