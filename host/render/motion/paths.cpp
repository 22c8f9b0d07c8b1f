#include "host/render/motion/paths.h"

#include "host/render/motion/values.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace velm::host {
namespace {

double farthest(const Vec3 &a, const Vec3 &b) { return largest(a - b); }

// Whether every step lies on the straight line between the first and the last one, to single precision.
bool isStraight(const ItemPath &path) {
    const Transform &first = path.front(), &last = path.back();
    double scale = largest(first.position) + largest(last.position), error = 0;
    for (std::size_t i = 0; i < path.size(); ++i) {
        const double share = static_cast<double>(i) / static_cast<double>(path.size() - 1);
        error = std::max(error, farthest(path[i].position, first.position + share * (last.position - first.position)));
        for (int k = 0; k < 9; ++k) {
            const double from = first.toWorld.m[k], to = last.toWorld.m[k];
            scale = std::max({scale, std::fabs(from), std::fabs(to)});
            error = std::max(error, std::fabs(path[i].toWorld.m[k] - (from + share * (to - from))));
        }
    }
    constexpr double kPrecision = 1e-7;
    return error <= kPrecision * scale;
}

} // namespace

std::vector<ScenePose> shutterPoses(const SceneDescription &scene, double time, double duration) {
    std::vector<ScenePose> poses;
    if (!(duration > 0) || !hasKeys(scene)) return poses;
    for (int step = 0; step < kShutterSteps; ++step) poses.push_back(poseAt(scene, timeOfStep(time, duration, step)));
    return poses;
}

ItemPath objectPath(const std::vector<ScenePose> &poses, std::size_t object) {
    ItemPath path;
    for (const ScenePose &pose : poses) {
        path.push_back(pose.objects[object]);
        if (!path.back().isInvertible() || !isFinite(path.back().position)) return {};
    }
    if (std::ranges::all_of(path, [&path](const Transform &each) { return each == path.front(); })) return {};
    return isStraight(path) ? ItemPath{path.front(), path.back()} : path;
}

double longestShutter(const SceneDescription &scene) {
    double longest = 0;
    for (const CameraDescription &camera : scene.cameras) longest = std::max(longest, camera.shutter);
    return longest / scene.render.framesPerSecond;
}

} // namespace velm::host
