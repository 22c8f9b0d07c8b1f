// Pixels of a finished picture that are NaN or infinite.
#pragma once

#include "host/image/picture.h"
#include "host/render/sample_renderer.h"

#include <string>

namespace velm::host {

struct NotFinitePixels {
    int count = 0;
    int x = 0, y = 0;          // of the first one, row by row
    std::string surface, node; // whose value the first one shows; empty if no node makes it, or not every time
    bool isBackdrop = false;   // the first one shows a value of the backdrop
};

// Counts these pixels. To find the node, the samples of the first pixel are rendered once more, in a process of its
// own, so that nodes of this one are as before. The surfaces have to be initialised and set to the job's time. Throws
// as Workers when that process fails. [between frames]
NotFinitePixels findNotFinite(const Picture &picture, const SampleRenderer &renderer);

} // namespace velm::host
