#include "host/bake/bake_warnings.h"

#include "host/base/names.h"
#include "host/graph/surface.h"
#include "host/render/order/choose_order.h"

#include <fmt/format.h>

namespace velm::host {

void BakeWarnings::ofSurfaces(const BakedValue &value, const std::string &output) const {
    for (const std::uint16_t index : target_.surfaces)
        if (!value.has(index))
            add("surfaces without the output",
                fmt::format("the surface {} has no output {}; its polygons are left out",
                            inQuotes(scene_.surfaces[index].surface->name()), inQuotes(output)));
}

void BakeWarnings::ofOrder(const char *points) const {
    const OrderChoice choice = chooseOrder(RenderOrder::automatic, traitsOf(scene_));
    if (!choice.reason.empty())
        add("results that depend on the order of evaluation",
            fmt::format("the result depends on the order of evaluation, which is that of {}: {}", points,
                        choice.reason));
}

void BakeWarnings::add(const char *brief, const std::string &message) const {
    warnings_.add({.location = {.file = scene_.sceneFile, .line = 0},
                   .path = pathTo("objects", scene_.objects[target_.object].item->name),
                   .brief = brief,
                   .message = message});
}

} // namespace velm::host
