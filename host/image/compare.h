// How far two image files are apart, and whether that is too far.
//
// The numbers are compared as they stand in the files. Where one file keeps light (float) and the other screen numbers
// (8 or 16 bits), the light is taken through the screen's curve first, as when it is written to such a file. Channels
// go by their names; a grey channel stands for red, green and blue where the other file has those; alpha that only one
// file has is 1 in the other; any other channel that only one has makes the images different.
//
// OpenImageIO has a comparison too, which agrees with this one on finite numbers of equal channels. It takes two NaNs
// for equal, and an infinity for its negative, and fills missing channels with black; so it does not serve here.
#pragma once

#include "host/image/file_pixels.h"
#include "host/image/picture.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace velm::host {

// What two images may differ by and be the same. Differences are absolute, in the files' numbers, where integers are
// 0 to 1.
struct CompareLimits {
    double tolerance = 0.004; // a pixel differs when one of its channels is further apart: a little over 1 / 255
    double mean = 0.002;      // mean over all channels of all pixels; it matters where more than that is allowed below
    double rms = 0.002;       // root mean square over all channels of all pixels: half of 1 / 255
    double share = 0;         // the fraction of all pixels that may differ
    bool alpha = true;        // whether alpha counts
};

// The channel and pixel that are furthest apart, and the numbers there.
struct WorstPixel {
    double difference = 0; // infinite when either is no number, or one of them infinite and not the other alike
    int x = 0, y = 0;
    std::string channel;
    float first = 0, second = 0;
};

struct Comparison {
    bool sameSize = false;              // else nothing below is set
    bool asScreen = false;              // light was taken through the screen's curve
    std::vector<std::string> onlyInOne; // channels without a counterpart; not among the numbers below
    std::size_t channels = 0;           // how many were compared
    WorstPixel worst;
    double mean = 0, rms = 0;     // over all channels of all pixels
    std::uint64_t pixels = 0;     // in each image
    std::uint64_t beyond = 0;     // of them, beyond the tolerance
    std::uint64_t notNumbers = 0; // pixels with a NaN in either image
    Picture differences;          // red, green and blue; the difference of any other channel counts in all three
};

// [any thread]
Comparison compareImages(const FilePixels &first, const FilePixels &second, const CompareLimits &limits);

// Whether they are the same within the limits. A NaN in either is never the same as anything; nor is nothing the same
// as nothing, where no channel was left to compare.
bool withinLimits(const Comparison &comparison, const CompareLimits &limits);

} // namespace velm::host
