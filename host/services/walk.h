// Walking a node's inputs or outputs, as both services offer it.
#pragma once

#include <memory>
#include <vector>

namespace velm::host::walk {

// 1 for the first; 0 for a stranger.
template <class T>
int indexOf(const std::vector<std::unique_ptr<T>> &all, const T *one) {
    for (std::size_t i = 0; i < all.size(); ++i)
        if (all[i].get() == one) return static_cast<int>(i) + 1;
    return 0;
}

// From 1; null beyond the ends.
template <class T>
T *byIndex(const std::vector<std::unique_ptr<T>> &all, int index) {
    if (index < 1 || static_cast<std::size_t>(index) > all.size()) return nullptr;
    return all[static_cast<std::size_t>(index) - 1].get();
}

} // namespace velm::host::walk
