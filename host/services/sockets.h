// The inputs or outputs of a node by index, as "NodeInputFuncs" and "NodeOutputFuncs" count them: from 1.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace velm::host {

// 0 for one that is not in the list.
template <class Socket>
int indexInList(const std::vector<std::unique_ptr<Socket>> &all, const Socket *one) {
    for (std::size_t i = 0; i < all.size(); ++i)
        if (all[i].get() == one) return static_cast<int>(i) + 1;
    return 0;
}

// Null for an index that is out of range.
template <class Socket>
Socket *atIndex(const std::vector<std::unique_ptr<Socket>> &all, int index) {
    if (index < 1 || static_cast<std::size_t>(index) > all.size()) return nullptr;
    return all[static_cast<std::size_t>(index) - 1].get();
}

} // namespace velm::host
