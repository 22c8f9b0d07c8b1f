#include "host/lws/scene_links.h"

#include "host/base/error.h"
#include "host/base/names.h"

#include <fmt/format.h>
#include <unordered_map>

namespace velm::host::lws {

namespace {

// Calls `use` with every item.
template <class Use>
void forEachItem(Scene &scene, const Use &use) {
    for (Item &item : scene.objects) use(item);
    for (Item &item : scene.bones) use(item);
    for (Item &item : scene.lights) use(item);
    for (Item &item : scene.cameras) use(item);
}

// Finds cycles of parents. Every item is visited once, however many lead to it.
class Hierarchy {
  public:
    explicit Hierarchy(Scene &scene) {
        forEachItem(scene, [this](Item &item) { items_.emplace(item.id, Entry{.item = &item}); });
    }

    bool has(std::uint32_t id) const { return items_.contains(id); }

    // InputError if the item's parents, and theirs in turn, lead back to an item that was already passed.
    void check(const Item &item, const std::string &file) {
        ++round_;
        for (const Item *one = &item;;) {
            Entry &entry = items_.at(one->id);
            if (entry.round == round_)
                throw InputError({.file = file, .line = one->line},
                                 fmt::format("the item {} is its own parent, or the parent of one of its parents",
                                             inQuotes(one->name)));
            if (entry.round > 0) return;
            entry.round = round_;
            if (!one->parent) return;
            one = items_.at(*one->parent).item;
        }
    }

  private:
    struct Entry {
        const Item *item = nullptr;
        std::size_t round = 0; // of the check that visited the item; 0: none yet
    };
    std::unordered_map<std::uint32_t, Entry> items_;
    std::size_t round_ = 0;
};

} // namespace

std::uint32_t ItemIds::take(ItemKind kind, std::optional<std::uint32_t> given, std::uint32_t next) {
    std::uint32_t id = given.value_or(itemId(kind, next));
    while (!taken_.insert(id).second) id = itemId(kind, spare_--);
    return id;
}

void checkLinks(Scene &scene, const std::string &file) {
    Hierarchy hierarchy(scene);
    forEachItem(scene, [&](Item &item) {
        for (std::optional<std::uint32_t> *link : {&item.parent, &item.target}) {
            const bool isOwn = link == &item.target && *link == item.id;
            if (!*link || (hierarchy.has(**link) && !isOwn)) continue;
            link->reset();
            scene.losses.add(Loss::unknownItem, item.line);
        }
    });
    forEachItem(scene, [&](Item &item) { hierarchy.check(item, file); });
}

} // namespace velm::host::lws
