// The transforms of all items of a scene at one time.
#pragma once

#include "host/render/geometry/transform.h"
#include "host/scene/format/description.h"

#include <cstddef>
#include <vector>

namespace velm::host {

// Transforms from each item's coordinates to world space, by index in the scene's lists. A transform with a scale of 0
// cannot be inverted.
struct ScenePose {
    std::vector<Transform> objects, nulls, lights, cameras;
    std::vector<bool> movingObjects; // whether keys change its transform: its own, or those of a parent or target

    std::vector<bool> modelledObjects; // whether its mesh is made in object coordinates: it moves, or others share it

    // The transform with which the mesh of an object is made: the identity for one in object coordinates, which is
    // transformed to world space for each frame or each object.
    const Transform &ofMesh(std::size_t object) const {
        static const Transform none;
        return modelledObjects[object] ? none : objects[object];
    }
};

// The pose at a time in seconds:
//
//   world = parent's world * T(position) * R(heading, pitch, bank) * S(scale) * T(-pivot)
//
// A position is thus in the coordinates of the parent. An item with a target turns its +Z to the target's pivot, and
// its +Y as close as possible to the parent's +Y. InputError, with the item's location, for parents and targets that
// ItemTree refuses, and for an item that is at its target. [any thread]
ScenePose poseAt(const SceneDescription &scene, double time);

// The transform of an item without regard to its parent, its keys and its target item. A target point counts.
// InputError for an item that is at its target point; `kind` is "light" and so on, for the message.
Transform transformOf(const ItemDescription &item, const char *kind);

// Whether the item's transform to world space is known to be only a rotation and a translation: it has no scale of its
// own, and no parent that may have one.
inline bool isRigid(const ItemDescription &item) { return item.parent.empty() && item.scale == Double3{1, 1, 1}; }

// The time that a frame shows, in seconds.
inline double timeOfFrame(const RenderDescription &render, int frame) { return frame / render.framesPerSecond; }

// The time of the first frame.
inline double startTime(const RenderDescription &render) { return timeOfFrame(render, render.firstFrame); }

} // namespace velm::host
