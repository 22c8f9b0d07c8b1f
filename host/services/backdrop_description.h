// A backdrop as data, with its image by name.
#pragma once

#include "host/base/double3.h"
#include "host/base/error.h"

#include <string>

namespace velm::host {

struct BackdropDescription {
    enum class Kind { plain, gradient, image } kind = Kind::plain;
    Double3 colour{0, 0, 0};                                               // plain
    Double3 zenith{0, 0.1569, 0.3137}, sky{0.4706, 0.7059, 0.9412};        // gradient, straight up and at the horizon
    Double3 ground{0.1961, 0.1569, 0.1176}, nadir{0.3922, 0.3137, 0.2353}; // at the horizon from below, straight down
    double skySqueeze = 2, groundSqueeze = 2;
    std::string image;     // name of an image
    double seamAngle = 0;  // degrees
    double brightness = 1; // of the image
    SourceLocation location;

    bool operator==(const BackdropDescription &) const = default;
};

} // namespace velm::host
