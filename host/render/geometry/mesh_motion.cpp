#include "host/render/geometry/mesh_motion.h"

#include <algorithm>
#include <utility>

namespace velm::host {
namespace {

struct Moment {
    std::size_t step; // the last one before it that has a next one
    double fraction;  // of the way to the next one
};

Moment momentAt(double time, std::size_t steps) {
    const double position = std::clamp(time, 0.0, 1.0) * static_cast<double>(steps - 1);
    const std::size_t step = std::min(static_cast<std::size_t>(position), steps - 2);
    return {.step = step, .fraction = position - static_cast<double>(step)};
}

} // namespace

Transform transformAt(const std::vector<Transform> &path, double time) {
    const Moment moment = momentAt(time, path.size());
    const Transform &from = path[moment.step], &to = path[moment.step + 1];
    Transform now;
    for (int i = 0; i < 9; ++i)
        now.toWorld.m[i] = from.toWorld.m[i] + moment.fraction * (to.toWorld.m[i] - from.toWorld.m[i]);
    now.toObject = now.toWorld.inverse();
    now.position = from.position + moment.fraction * (to.position - from.position);
    return now;
}

MeshMotion::MeshMotion(std::shared_ptr<const Mesh> mesh, const std::vector<Transform> &path)
    : mesh_(std::move(mesh)), path_(path) {
    const Transform &first = path_.front();
    for (std::size_t step = 1; step < path_.size(); ++step) {
        std::vector<HostPoint> &points = later_.emplace_back();
        points.reserve(mesh_->points.size() + 1); // Embree reads 16 bytes at each point
        for (const HostPoint &point : mesh_->points) {
            const float *p = point.position;
            const Vec3 moved = path_[step].pointToWorld(first.pointToObject({p[0], p[1], p[2]}));
            points.push_back({{static_cast<float>(moved.x), static_cast<float>(moved.y), static_cast<float>(moved.z)}});
        }
    }
}

const HostPoint *MeshMotion::points(std::size_t step) const {
    return step == 0 ? mesh_->points.data() : later_[step - 1].data();
}

Vec3 MeshMotion::corner(std::uint32_t triangle, int which, double time) const {
    const std::uint32_t point = mesh_->triangles[triangle].corners[which];
    const Moment moment = momentAt(time, steps());
    const float *from = points(moment.step)[point].position, *to = points(moment.step + 1)[point].position;
    const Vec3 before{from[0], from[1], from[2]}, after{to[0], to[1], to[2]};
    return before + moment.fraction * (after - before);
}

Vec3 MeshMotion::turned(const Vec3 &normal, const Transform &now) const {
    return normalised(now.normalToWorld(path_.front().toWorld.transposedTimes(normal)), normal);
}

} // namespace velm::host
