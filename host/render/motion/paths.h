// The motion of items while a shutter is open.
#pragma once

#include "host/render/motion/pose.h"

#include <vector>

namespace velm::host {

// The transforms of an item at equal steps of time, the first when the shutter opens, the last when it closes: two if
// they are enough to interpolate between, else kShutterSteps. Empty: the item does not move.
using ItemPath = std::vector<Transform>;
inline constexpr int kShutterSteps = 9;

// The time of a step, for a shutter that opens at `time` for `duration` seconds.
inline double timeOfStep(double time, double duration, int step) {
    return time + duration * step / (kShutterSteps - 1);
}

// The poses at all steps; empty where the shutter is open for no time and where nothing has keys. Throws as poseAt.
std::vector<ScenePose> shutterPoses(const SceneDescription &scene, double time, double duration);

// The path of an object, from the poses of shutterPoses; empty also for one that at some step has a scale
// of 0 or is infinitely far away.
ItemPath objectPath(const std::vector<ScenePose> &poses, std::size_t object);

// The longest time for which the shutter of a camera of the scene is open, in seconds.
double longestShutter(const SceneDescription &scene);

} // namespace velm::host
