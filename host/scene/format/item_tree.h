// The items of a scene with their parents and targets, in an order in which their transforms can be computed.
#pragma once

#include "host/scene/format/description.h"

#include <cstddef>
#include <vector>

namespace velm::host {

// Numbers all items of a scene: objects, then nulls, lights and cameras, each in the scene's order.
class ItemTree {
  public:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    struct Entry {
        const ItemDescription *item; // never null
        const char *kind;            // "object" and so on, for messages
        std::size_t parent = kNone, target = kNone;
    };

    // Throws InputError, with the location of the item or of its parent or target, for a parent or target that the
    // scene does not have, for a name that several items have, for an item that is its own target, and for items whose
    // transforms depend on each other in a circle. Refers to the description, which must live longer.
    explicit ItemTree(const SceneDescription &scene);

    const std::vector<Entry> &entries() const { return entries_; }
    std::size_t firstLight() const { return firstLight_; }
    std::size_t firstCamera() const { return firstCamera_; }

    // The numbers of all items, each after those that its transform depends on: its parent and the parent of its
    // target. A target's own rotation does not matter, so two items may be each other's target.
    const std::vector<std::size_t> &order() const { return order_; }

  private:
    class Names;

    void sort();
    std::vector<std::size_t> dependenciesOf(std::size_t number) const;
    [[noreturn]] void failCircle(const std::vector<bool> &isPlaced) const;

    std::vector<Entry> entries_;
    std::vector<std::size_t> order_;
    std::size_t firstLight_ = 0, firstCamera_ = 0;
};

} // namespace velm::host
