#include "host/render/scene/item_handles.h"

namespace velm::host {

void ItemHandles::begin() {
    for (auto &[key, same] : handles_) same.taken = 0;
}

HostItem *ItemHandles::take(int type, const std::string &name) {
    Namesakes &same = handles_[{type, name}];
    if (same.taken == same.handles.size())
        same.handles.push_back(std::make_unique<HostItem>(HostItem{.type = type, .index = -1, .name = name}));
    return same.handles[same.taken++].get();
}

} // namespace velm::host
