// Where the items of a scene are at one time.
#pragma once

#include "host/render/geometry/transform.h"
#include "host/scene/format/description.h"

#include <cstddef>
#include <vector>

namespace velm::host {

// Transforms from each item's coordinates to the world's, by index in the scene's lists. A transform cannot be inverted
// where a scale is 0.
struct ScenePose {
    std::vector<Transform> objects, lights, cameras;
    std::vector<bool> movingObjects; // those whose transform depends on keys, be it those of a parent or a target

    // The transform that the mesh of an object is made with: objects that move are made in their own coordinates.
    const Transform &ofMesh(std::size_t object) const {
        static const Transform none;
        return movingObjects[object] ? none : objects[object];
    }
};

// The pose at a time in seconds:
//
//   world = parent's world * T(position) * R(heading, pitch, bank) * S(scale) * T(-pivot)
//
// so that a position is a point of the parent's own coordinates. An item with a target turns its +Z to the target's
// pivot, with +Y as upright in the parent's coordinates as it can. InputError, with the item's location, for parents
// and targets that ItemTree refuses, and for an item that is at its target. [any thread]
ScenePose poseAt(const SceneDescription &scene, double time);

// The transform of an item by itself: without its parent, its keys, and a target that is an item. InputError as above;
// `kind` is "light" and so on.
Transform transformOf(const ItemDescription &item, const char *kind);

// Whether the item's transform to the world is a rotation and a translation, and nothing else.
inline bool isRigid(const ItemDescription &item) { return item.parent.empty() && item.scale == Double3{1, 1, 1}; }

// The time of the first frame, in seconds: frame n shows the time n / frames per second.
inline double startTime(const RenderDescription &render) { return render.firstFrame / render.framesPerSecond; }

} // namespace velm::host
