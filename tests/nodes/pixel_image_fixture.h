// A Pixel Image node with a list of images, for tests.
#pragma once

#include "module/servers.h"
#include "tests/module/fake_images.h"
#include "tests/module/test_node.h"

#include <gtest/gtest.h>

namespace velm::plugin {

using Lines = std::vector<std::string>;
using Colour = std::array<double, 3>;

enum PixelControl : unsigned int { kThumbnail = 0x8001, kBg, kImage, kBlending, kOpacity, kUTiling, kVTiling, kX, kY };
enum Tiling { kReset, kRepeat, kMirror, kEdge };
inline constexpr unsigned int kIntegers[] = {kImage, kBlending, kUTiling, kVTiling, kX, kY};

// The list has three images of 10 by 8 pixels. The colour of each pixel encodes its column and row.
class PixelImageNode : public testing::Test {
  protected:
    FakeHost host;
    FakeImages images;
    TestNode node{host, activatedWith<FakeImages::lookup, PixelImage_Activate>,
                  activatedWith<FakeImages::lookup, PixelImage_Interface>};
    ShadingSample sample = plainSample();

    PixelImageNode() {
        images.add(3);
        node.set("Bg Color", -1.0, -2.0, -3.0);
    }
    Colour colour() {
        const HostNodeValue value = node.evaluate("Color", sample);
        EXPECT_EQ(value.timesSet, 1);
        return {value.numbers[0], value.numbers[1], value.numbers[2]};
    }
    double alpha() {
        const HostNodeValue value = node.evaluate("Alpha", sample);
        EXPECT_EQ(value.timesSet, 1);
        return value.numbers[0];
    }
    // The result of the fake host's blend for a pixel over the background.
    static Colour blended(double x, double y, double opacity = 1, int mode = 0) {
        const double rest = 100 * opacity + 1000 * mode;
        return {x - 10 + rest, y - 20 + rest, 0.5 - 30 + rest};
    }
    static constexpr Colour kBackground = {-1, -2, -3};
};

} // namespace velm::plugin
