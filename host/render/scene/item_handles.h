// The handles by which shading samples and services refer to a scene's items.
#pragma once

#include "host/render/geometry/item.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace velm::host {

// Owns the handles of a RenderScene for as long as it lives. An item keeps its handle for as long as its name stays,
// even if it is taken out of the scene and put back: nodes hold on to handles.
class ItemHandles {
  public:
    // Begins with the items of a description; all handles may be taken again.
    void begin();
    // The handle of the next item of that type and name. A new one has the index -1 and no mesh.
    HostItem *take(int type, const std::string &name);
    // Calls `edit` with every handle that was ever taken.
    template <typename Edit>
    void forEach(const Edit &edit) {
        for (auto &[key, same] : handles_)
            for (const std::unique_ptr<HostItem> &handle : same.handles) edit(*handle);
    }

  private:
    // Items of the same type and name, in the scene's order.
    struct Namesakes {
        std::vector<std::unique_ptr<HostItem>> handles;
        std::size_t taken = 0;
    };
    std::map<std::pair<int, std::string>, Namesakes> handles_;
};

} // namespace velm::host
