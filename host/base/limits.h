// Limits of what a person may ask for. The scene format, the command line and the renderer all check against these, so
// that each accepts exactly what the others do.
#pragma once

namespace velm::host {

inline constexpr int kLargestSide = 32768; // pixels: of a picture's width, and of its height; the least is 1
inline constexpr double kLeastPixelAspect = 0.01, kLargestPixelAspect = 100; // width of a pixel by its height
inline constexpr int kMostBlades = 64;                                       // of a lens
inline constexpr double kLongestShutter = 1000;                              // frames
inline constexpr int kMostSamples = 4096;       // of a pixel, and of an area light for each lit point; the least is 1
inline constexpr int kMaxRecursionDepth = 256;  // bounces of a ray; the least is 0
inline constexpr int kMostWorkers = 1024;       // processes that render a frame together; the least is 1
inline constexpr int kDefaultSubdivision = 2;   // level of subdivision surfaces; each doubles the edges
inline constexpr int kMostSubdivision = 8;      // the least is 0: the control cage
inline constexpr int kLastFrameNumber = 999999; // frames are numbered from -kLastFrameNumber to this

} // namespace velm::host
