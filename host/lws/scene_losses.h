// Features of LightWave scenes that are not supported, counted for the warnings: one warning for each kind, with the
// number of occurrences and the line of the first one.
#pragma once

#include "host/base/loss_counts.h"

#include <cstddef>
#include <string>
#include <vector>

namespace velm::host::lws {

enum class Loss {
    unreadLine, // a known keyword with arguments that could not be read
    unknownItem,
    motionModifier,
    controller, // inverse kinematics, paths, poles
    sameAsItem,
    pivotRotation,
    bone,
    morph,
    displacement,
    clipMap,
    distanceDissolve,
    polygonSize,
    shadowOption,
    excludedLight,
    lightShape,   // drawn as a point light
    unknownLight, // left out
    negativeLight,
    lensFlare,
    volumetricLight,
    projectedImage,
    shadowColour,
    lightEffect,
    animatedValue, // a value that cannot have keys here
    globalIllumination,
    caustics,
    compositing,
    environment,
    imageFilter,
    cameraKind,
    filmSize,
    fieldRendering,
    pixelAspect,
    frameSizeCode,
    renderRange,
};

// A place is a line of the file.
class Losses : public LossCounts<Loss, static_cast<std::size_t>(Loss::renderRange) + 1, int> {
  public:
    struct Text {
        int line = 0;        // of the first one
        std::string brief;   // "depth of field"
        std::string message; // "2 cameras have depth of field, which is not rendered"
    };
    // One for each kind of which there is anything, in the order of the kinds.
    std::vector<Text> texts() const;
};

} // namespace velm::host::lws
