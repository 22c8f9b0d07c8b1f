// Pixel Image: the choice of the image and the pixel, blending, and alpha.
#include "tests/nodes/pixel_image_fixture.h"

#include <climits>

namespace velm::plugin {
namespace {

// ---- Which pixel ----

struct Tile {
    int tiling, coordinate;
    int taken; // the pixel on an axis of 10, or kOutside
};
constexpr int kOutside = INT_MIN;

constexpr Tile kTiles[] = {
    {kReset, 0, 0},
    {kReset, 9, 9},
    {kReset, 10, kOutside},
    {kReset, -1, kOutside},
    {kReset, 15, kOutside},
    {kReset, INT_MAX, kOutside},
    {kReset, INT_MIN, kOutside},
    {kRepeat, 0, 0},
    {kRepeat, 9, 9},
    {kRepeat, 10, 0},
    {kRepeat, 12, 2},
    {kRepeat, 20, 0},
    {kRepeat, -1, 9},
    {kRepeat, -9, 1},
    {kRepeat, -10, 10}, // one past the last
    {kRepeat, -11, 9},
    {kRepeat, -20, 10},
    {kRepeat, -25, 5},
    {kRepeat, INT_MAX, 7},
    {kRepeat, INT_MIN, 2},
    {kMirror, 0, 0},
    {kMirror, 9, 9},
    {kMirror, 10, 9},
    {kMirror, 12, 7},
    {kMirror, 19, 0},
    {kMirror, 20, 0},
    {kMirror, 23, 3},
    {kMirror, 30, 9},
    {kMirror, -1, 1},
    {kMirror, -3, 3},
    {kMirror, -10, 9},
    {kMirror, -12, 7},
    {kMirror, INT_MAX, 7},
    {kMirror, INT_MIN, 8},
    {kEdge, 0, 0},
    {kEdge, 9, 9},
    {kEdge, 10, 9},
    {kEdge, 15, 9},
    {kEdge, -1, 0},
    {kEdge, INT_MIN, 0},
    {kEdge, INT_MAX, 9},
};

TEST_F(PixelImageNode, TilesAcross) {
    node.set(kImage, 2);
    node.set(kY, 3);
    images.list[1]->hasAlpha = true;
    for (const Tile &one : kTiles) {
        node.set(kUTiling, one.tiling);
        node.set(kX, one.coordinate);
        const bool outside = one.taken == kOutside;
        EXPECT_EQ(colour(), outside ? kBackground : blended(one.taken, 3)) << one.tiling << ", " << one.coordinate;
        EXPECT_EQ(alpha(), outside ? 1 : one.taken + 300) << one.tiling << ", " << one.coordinate;
    }
}

TEST_F(PixelImageNode, TilesDown) {
    node.set(kImage, 2);
    node.set(kX, 4);
    images.list[1]->width = 7;
    images.list[1]->height = 10; // the axis of the table
    for (const Tile &one : kTiles) {
        node.set(kVTiling, one.tiling);
        node.set(kY, one.coordinate);
        EXPECT_EQ(colour(), one.taken == kOutside ? kBackground : blended(4, one.taken))
            << one.tiling << ", " << one.coordinate;
    }
}

TEST_F(PixelImageNode, TilesEachAxisByItsOwnRule) {
    node.set(kImage, 1);
    node.set(kUTiling, kRepeat);
    node.set(kVTiling, kEdge);
    node.set(kX, -3);
    node.set(kY, 50);
    EXPECT_EQ(colour(), blended(7, 7));
    node.set(kVTiling, kReset);
    EXPECT_EQ(colour(), kBackground);
    node.set(kY, 7);
    EXPECT_EQ(colour(), blended(7, 7));
}

TEST_F(PixelImageNode, HoldsTheTilingsInTheirList) {
    node.set(kImage, 1);
    node.set(kX, 12);
    node.set(kY, 11);
    for (const int tiling : {3, 4, 70000}) {
        node.connect("U Tiling", tiling);
        node.connect("V Tiling", tiling);
        EXPECT_EQ(colour(), blended(9, 7)) << "the last: the edge";
    }
    node.connect("U Tiling", -1);
    EXPECT_EQ(colour(), kBackground) << "the first";
}

TEST_F(PixelImageNode, TakesCoordinatesFromItsInputsForOneSampleOnly) {
    node.set(kImage, 1);
    node.set(kX, 1);
    node.set(kY, 2);
    node.connect("X", 5);
    node.connect("Y", 6);
    EXPECT_EQ(colour(), blended(5, 6));
    node.disconnect("X");
    node.disconnect("Y");
    EXPECT_EQ(colour(), blended(1, 2));
}

// ---- Which image ----

TEST_F(PixelImageNode, TakesTheImageOfThePanelAlone) {
    for (int i = 0; i < 3; ++i)
        images.list[static_cast<size_t>(i)]->pixel = [i](int, int) {
            return std::array{static_cast<float>(i), 0.f, 0.f};
        };
    for (const int index : {1, 2, 3}) {
        node.set(kImage, index);
        for (const int connected : {0, 1, 2, 3, 4, 90, -1}) {
            node.connect("Image", connected);
            EXPECT_EQ(colour()[0], index - 1 + 90) << "the input has no effect";
        }
        node.disconnect("Image");
    }
    node.set(kImage, 0);
    node.connect("Image", 1);
    EXPECT_EQ(colour(), kBackground);
}

TEST_F(PixelImageNode, GivesTheBackgroundWithoutAnImage) {
    for (const int tiling : {kReset, kRepeat, kMirror, kEdge}) {
        node.set(kUTiling, tiling);
        node.set(kVTiling, tiling);
        for (const int index : {0, -1, 4, 5, 70000}) { // none; invalid; "(load Image)"; beyond
            node.set(kImage, index);
            EXPECT_EQ(colour(), kBackground) << index;
            EXPECT_EQ(alpha(), 1) << index;
        }
    }
    node.connect("Bg Color", 5.0, 6.0, 7.0);
    EXPECT_EQ(colour(), (Colour{5, 6, 7}));
    node.disconnect("Bg Color");
    node.set(kImage, 3);
    node.set(kUTiling, kReset);
    node.set(kVTiling, kReset);
    EXPECT_EQ(colour(), blended(0, 0));
    images.remove(1);
    EXPECT_EQ(colour(), kBackground) << "it has been removed";
    images.list.clear();
    EXPECT_EQ(colour(), kBackground);
}

TEST_F(PixelImageNode, GivesTheBackgroundForAnImageWithoutPixels) {
    node.set(kImage, 1);
    for (const int tiling : {kReset, kRepeat, kMirror, kEdge})
        for (const auto &[width, height] : {std::pair{0, 8}, std::pair{10, 0}}) {
            images.list[0]->width = width;
            images.list[0]->height = height;
            node.set(kUTiling, tiling);
            node.set(kVTiling, tiling);
            EXPECT_EQ(colour(), kBackground);
            EXPECT_EQ(alpha(), 1);
        }
}

// ---- Blending and alpha ----

TEST_F(PixelImageNode, LaysThePixelOverTheBackground) {
    node.set(kImage, 1);
    node.set(kX, 3);
    node.set("Opacity", 0.5);
    node.set(kBlending, 6);
    EXPECT_EQ(colour(), blended(3, 0, 0.5, 6));
    for (const double opacity : {-1.5, 0.0, 2.5}) { // not clamped
        node.connect("Opacity", opacity);
        EXPECT_EQ(colour(), blended(3, 0, opacity, 6));
    }
    for (const auto &[connected, mode] :
         {std::pair{20, 13}, std::pair{13, 13}, std::pair{14, 13}, std::pair{-1, 0}, std::pair{5, 5}}) {
        node.connect("Blending", connected);
        EXPECT_EQ(colour(), blended(3, 0, 2.5, mode)) << connected;
    }
    node.connect("Bg Color", 1.0, 1.0, 1.0);
    EXPECT_EQ(colour(), (Colour{3 + 10 + 250 + 5000, 0 + 10 + 250 + 5000, 0.5 + 10 + 250 + 5000}));
}

TEST_F(PixelImageNode, GivesThePixelsAlpha) {
    node.set(kImage, 2);
    node.set(kX, 3);
    node.set(kY, 4);
    EXPECT_EQ(alpha(), 1) << "an image without alpha";
    images.list[1]->hasAlpha = true;
    EXPECT_EQ(alpha(), 403);
}

TEST_F(PixelImageNode, GivesTheAlphaToWhateverIsNotItsColour) {
    const auto given = [&] {
        const HostNodeValue value = node.evaluateStranger(kConnectScalar, sample);
        EXPECT_EQ(value.timesSet, 1);
        return value.numbers[0];
    };
    EXPECT_EQ(given(), 1) << "without an image";
    node.set(kImage, 2);
    node.set(kX, 3);
    node.set(kY, 4);
    images.list[1]->hasAlpha = true;
    EXPECT_EQ(given(), 403);
    node.set(kX, 10);
    EXPECT_EQ(given(), 1) << "outside";
}

TEST_F(PixelImageNode, ReadsItsInputsInOrder) {
    host.logsEvaluation = true;
    node.evaluate("Color", sample);
    EXPECT_EQ(host.takeLog(), (Lines{"evaluate Bg Color", "evaluate Image", "setValue"}));
    for (const int index : {1, 4, 9}) { // an image, "(load Image)" and a removed image, which all take the same path
        host.logsEvaluation = false;
        node.set(kImage, index);
        host.logsEvaluation = true;
        for (const char *output : {"Color", "Alpha"}) {
            node.evaluate(output, sample);
            EXPECT_EQ(host.takeLog(),
                      (Lines{"evaluate Bg Color", "evaluate Image", "evaluate Blending", "evaluate Opacity",
                             "evaluate U Tiling", "evaluate V Tiling", "evaluate X", "evaluate Y", "setValue"}));
        }
    }
}

} // namespace
} // namespace velm::plugin
