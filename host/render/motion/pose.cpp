#include "host/render/motion/pose.h"

#include "host/base/error.h"
#include "host/render/geometry/shared_shapes.h"
#include "host/render/motion/values.h"
#include "host/scene/format/item_tree.h"

#include <fmt/format.h>
#include <utility>

namespace velm::host {
namespace {

// The rotation that turns an item's +Z to a target, which is in the parent's coordinates.
Matrix rotationTo(const Vec3 &target, const ItemDescription &item, const char *kind) {
    const Vec3 position(item.position);
    if (target == position)
        throw InputError(item.location,
                         fmt::format("the {} \"{}\" is at the same position as its target", kind, item.name));
    return lookAlong(target - position);
}

// Works out the transforms of all items, in the tree's order.
class Poser {
  public:
    Poser(const SceneDescription &scene, double time) : tree_(scene) {
        for (const ItemTree::Entry &entry : tree_.entries()) places_.push_back(placeAt(*entry.item, time));
        for (std::size_t i = 0; i < scene.lights.size(); ++i)
            if (!scene.lights[i].isAimed()) places_[tree_.firstLight() + i].hasTarget = false;
        worlds_.resize(places_.size());
        moves_.resize(places_.size());
        for (const std::size_t number : tree_.order()) {
            worlds_[number] = worldOf(number);
            moves_[number] = movesWithKeys(number);
        }
    }

    ScenePose pose(const std::vector<ObjectDescription> &descriptions) const {
        const std::size_t objects = descriptions.size();
        const auto part = [this](std::size_t first, std::size_t end) {
            return std::vector<Transform>(worlds_.begin() + static_cast<std::ptrdiff_t>(first),
                                          worlds_.begin() + static_cast<std::ptrdiff_t>(end));
        };
        const ShapeCounts counts(descriptions);
        std::vector<bool> modelled;
        for (std::size_t i = 0; i < objects; ++i) {
            const ShapeDescription &shape = descriptions[i].shape;
            modelled.push_back(moves_[i] || isMadeOnce(shape, counts.of(shape)));
        }
        return {.objects = part(0, objects),
                .nulls = part(objects, tree_.firstLight()),
                .lights = part(tree_.firstLight(), tree_.firstCamera()),
                .cameras = part(tree_.firstCamera(), worlds_.size()),
                .movingObjects = {moves_.begin(), moves_.begin() + static_cast<std::ptrdiff_t>(objects)},
                .modelledObjects = std::move(modelled)};
    }

  private:
    const Transform *parentOf(std::size_t number) const {
        const std::size_t parent = tree_.entries()[number].parent;
        return parent == ItemTree::kNone ? nullptr : &worlds_[parent];
    }

    // The position of an item, which is where its pivot is, in world space.
    Vec3 positionOf(std::size_t number) const {
        const Vec3 position(places_[number].position);
        const Transform *parent = parentOf(number);
        return parent ? parent->pointToWorld(position) : position;
    }

    Matrix rotationOf(std::size_t number) const {
        const ItemDescription &place = places_[number];
        if (!place.hasTarget) return rotationMatrix(place.rotation);
        const ItemTree::Entry &entry = tree_.entries()[number];
        const Vec3 target = entry.target == ItemTree::kNone ? Vec3(place.target) : positionOf(entry.target);
        const Transform *parent = parentOf(number);
        if (!parent) return rotationTo(target, place, entry.kind);
        if (!parent->isInvertible()) return {}; // the parent has a scale of 0, so there is no direction to the target
        return rotationTo(parent->pointToObject(target), place, entry.kind);
    }

    Transform worldOf(std::size_t number) const {
        const Transform local(places_[number], rotationOf(number));
        const Transform *parent = parentOf(number);
        return parent ? *parent * local : local;
    }

    bool movesWithKeys(std::size_t number) const {
        const ItemTree::Entry &entry = tree_.entries()[number];
        const auto moves = [this](std::size_t item) { return item != ItemTree::kNone && moves_[item]; };
        if (hasMotion(*entry.item) || moves(entry.parent)) return true;
        if (entry.target == ItemTree::kNone) return false;
        const ItemTree::Entry &target = tree_.entries()[entry.target];
        return hasMotion(*target.item) || moves(target.parent);
    }

    const ItemTree tree_;
    std::vector<ItemDescription> places_; // by number
    std::vector<Transform> worlds_;
    std::vector<bool> moves_;
};

} // namespace

ScenePose poseAt(const SceneDescription &scene, double time) { return Poser(scene, time).pose(scene.objects); }

Transform transformOf(const ItemDescription &item, const char *kind) {
    return {item, item.hasTarget ? rotationTo(Vec3(item.target), item, kind) : rotationMatrix(item.rotation)};
}

} // namespace velm::host
