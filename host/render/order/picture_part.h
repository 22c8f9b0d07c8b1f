// Dividing a picture among several runs of the renderer.
#pragma once

#include "host/base/region.h"

namespace velm::host {

// How a picture is divided.
enum class PartsBy {
    tiles,  // each part has some of the pixels
    samples // each part has some of the samples of every pixel
};

// One of several parts of a picture.
struct PicturePart {
    int number = 1; // from 1 to count
    int count = 1;
    PartsBy by = PartsBy::tiles;
};

// The pixels of a part by tiles, in a picture of which `region` is rendered: whole tiles as far as they lie in it. The
// parts of a picture do not overlap, and their sizes differ by as little as whole tiles allow. InputError when there
// are fewer tiles than parts.
Region pixelsOfPart(const Region &region, const PicturePart &part);

// The samples of a part by samples: first to end - 1, of `samples` for each pixel. InputError when there are fewer
// samples than parts.
struct SampleRange {
    int first, end;
};
SampleRange samplesOfPart(int samples, const PicturePart &part);

} // namespace velm::host
