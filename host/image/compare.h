// How far two image files are apart, and whether that is too far.
//
// The numbers are compared as they are in the files. If one file holds light (float) and the other display values (8 or
// 16 bits, or a float picture whose header says that it was rendered in the classic workflow), the light is converted
// by the sRGB curve first, as when it is written to such a file. Channels correspond by name. A grey channel
// corresponds to red, green and blue if the other file has those. Alpha that only one file has is 1 in the other. Any
// other channel that only one file has makes the images different.
//
// OpenImageIO's comparison agrees with this one on finite numbers of equal channels. It is not used because it treats
// two NaNs, and an infinity and its negative, as equal, and fills missing channels with black.
#pragma once

#include "host/image/file_pixels.h"
#include "host/image/picture.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace velm::host {

// How much two images may differ and still count as the same. Differences are absolute, in the numbers of the files, in
// which integers are mapped to 0..1.
struct CompareLimits {
    double tolerance = 0.004; // a pixel differs if a channel differs by more than this: a little over 1 / 255
    double mean = 0.002;      // over all channels of all pixels; matters only if `fraction` allows more
    double rms = 0.002;       // root mean square over all channels of all pixels: half of 1 / 255
    double fraction = 0;      // of all pixels: how many may differ
    bool alpha = true;        // whether alpha counts
};

// The channel and pixel with the largest difference, and the numbers there.
struct WorstPixel {
    double difference = 0; // infinite if either is a NaN, or if only one of them is that infinity
    int x = 0, y = 0;
    std::string channel;
    float first = 0, second = 0;
};

struct Comparison {
    bool sameSize = false;              // if false, nothing below is set
    bool asScreen = false;              // light was converted by the sRGB curve
    std::vector<std::string> onlyInOne; // channels without a counterpart, which the numbers below leave out
    std::size_t channels = 0;           // the number of channels that were compared
    WorstPixel worst;
    double mean = 0, rms = 0;     // over all channels of all pixels
    std::uint64_t pixels = 0;     // in each image
    std::uint64_t beyond = 0;     // pixels that differ by more than the tolerance
    std::uint64_t notNumbers = 0; // pixels with a NaN in either image
    Picture differences;          // in red, green and blue; the difference in any other channel is added to all three
};

// [any thread]
Comparison compareImages(const FilePixels &first, const FilePixels &second, const CompareLimits &limits);

// Whether the images are the same within the limits. False if either contains a NaN, and if no channel could be
// compared.
bool withinLimits(const Comparison &comparison, const CompareLimits &limits);

} // namespace velm::host
