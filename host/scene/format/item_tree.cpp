#include "host/scene/format/item_tree.h"

#include "host/base/names.h"

#include <algorithm>
#include <fmt/format.h>
#include <string_view>
#include <unordered_map>

namespace velm::host {

// The items of a scene by name.
class ItemTree::Names {
  public:
    explicit Names(const std::vector<Entry> &entries) : entries_(entries) {
        for (std::size_t i = 0; i < entries.size(); ++i) numbers_[entries[i].item->name].push_back(i);
    }

    // Errors have the location `named`, where the name is used, or `item` if `named` is not set.
    std::size_t find(const std::string &name, const SourceLocation &named, const SourceLocation &item) const {
        const SourceLocation &location = named.file.empty() ? item : named;
        const auto found = numbers_.find(name);
        if (found == numbers_.end()) {
            std::vector<std::string> known;
            for (const Entry &entry : entries_) known.push_back(entry.item->name);
            throw InputError(location, fmt::format("there is no object, null, light or camera {}{}", inQuotes(name),
                                                   suggestion(name, known)));
        }
        const std::vector<std::size_t> &all = found->second;
        if (all.size() > 1)
            throw InputError(location, fmt::format("{} may be the {} or the {} of that name", inQuotes(name),
                                                   entries_[all[0]].kind, entries_[all[1]].kind));
        return all.front();
    }

  private:
    const std::vector<Entry> &entries_;
    std::unordered_map<std::string_view, std::vector<std::size_t>> numbers_;
};

ItemTree::ItemTree(const SceneDescription &scene) {
    const auto add = [this](const auto &items, const char *kind) {
        for (const ItemDescription &item : items) entries_.push_back({.item = &item, .kind = kind});
    };
    add(scene.objects, "object");
    add(scene.nulls, "null");
    firstLight_ = entries_.size();
    add(scene.lights, "light");
    firstCamera_ = entries_.size();
    add(scene.cameras, "camera");
    const Names names(entries_);
    for (Entry &entry : entries_) {
        const ItemDescription &item = *entry.item;
        if (!item.parent.empty()) entry.parent = names.find(item.parent, item.parentLocation, item.location);
        if (item.hasTarget && !item.targetItem.empty())
            entry.target = names.find(item.targetItem, item.targetLocation, item.location);
        if (entry.target != kNone && entries_[entry.target].item == &item)
            throw InputError(item.targetLocation,
                             fmt::format("the {} {} is its own target", entry.kind, inQuotes(item.name)));
    }
    sort();
}

std::vector<std::size_t> ItemTree::dependenciesOf(std::size_t number) const {
    std::vector<std::size_t> all;
    const Entry &entry = entries_[number];
    if (entry.parent != kNone) all.push_back(entry.parent);
    if (entry.target != kNone && entries_[entry.target].parent != kNone) all.push_back(entries_[entry.target].parent);
    return all;
}

// Kahn's algorithm: places an item as soon as everything that it depends on is placed.
void ItemTree::sort() {
    std::vector<std::size_t> missing(entries_.size());
    std::vector<std::vector<std::size_t>> dependents(entries_.size());
    for (std::size_t i = 0; i < entries_.size(); ++i)
        for (const std::size_t each : dependenciesOf(i)) {
            dependents[each].push_back(i);
            ++missing[i];
        }
    std::vector<bool> isPlaced(entries_.size(), false);
    const auto place = [&](std::size_t number) {
        order_.push_back(number);
        isPlaced[number] = true;
    };
    for (std::size_t i = 0; i < entries_.size(); ++i)
        if (missing[i] == 0) place(i);
    for (std::size_t next = 0; next < order_.size(); ++next)
        for (const std::size_t dependent : dependents[order_[next]])
            if (--missing[dependent] == 0) place(dependent);
    if (order_.size() < entries_.size()) failCircle(isPlaced);
}

void ItemTree::failCircle(const std::vector<bool> &isPlaced) const {
    // Every item that is not placed depends on another one that is not placed. Following these dependencies therefore
    // leads back to an item that was visited before.
    std::size_t at = static_cast<std::size_t>(std::ranges::find(isPlaced, false) - isPlaced.begin());
    std::vector<std::size_t> path;
    std::vector<bool> isVisited(entries_.size(), false);
    while (!isVisited[at]) {
        isVisited[at] = true;
        path.push_back(at);
        const std::vector<std::size_t> all = dependenciesOf(at);
        at = *std::ranges::find_if(all, [&](std::size_t each) { return !isPlaced[each]; });
    }
    path.erase(path.begin(), std::ranges::find(path, at));
    const Entry &first = entries_[at];
    if (path.size() == 1)
        throw InputError(first.item->location, fmt::format("the {} {} follows itself, by its parent or its target",
                                                           first.kind, inQuotes(first.item->name)));
    std::string text = inQuotes(first.item->name);
    for (std::size_t i = 1; i < path.size(); ++i)
        text += " follows " + inQuotes(entries_[path[i]].item->name) + ", which";
    throw InputError(first.item->location, fmt::format("parents and targets lead in a circle: {} follows {}", text,
                                                       inQuotes(first.item->name)));
}

} // namespace velm::host
