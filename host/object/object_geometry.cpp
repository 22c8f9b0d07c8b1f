#include "host/object/object_geometry.h"

#include "host/base/names.h"
#include "host/object/layer_builder.h"
#include "host/state/blocks.h"

#include <fmt/format.h>
#include <unordered_set>

namespace velm::host {

bool ObjectVertexMap::isOfMeshes() const {
    switch (type) {
    case fourCC("TXUV"): return size == 2;
    case fourCC("WGHT"): return size == 1;
    case fourCC("RGB "): return size == 3;
    case fourCC("RGBA"): return size == 4;
    default: return false;
    }
}

const std::string &ObjectGeometry::surfaceOf(const ObjectLayer &layer, std::size_t polygon) const {
    static const std::string kDefault = "Default";
    const std::uint32_t tag = layer.surfaceTag(polygon);
    return tag == kNoTag ? kDefault : tags[tag];
}

std::string placeOf(const ObjectLayer &layer) {
    return layer.name.empty() ? fmt::format("layer {}", layer.number)
                              : fmt::format("layer {} {}", layer.number, inQuotes(layer.name));
}

std::string placeOf(const ObjectLayer &layer, std::size_t polygon) {
    return fmt::format("polygon {} of {}", polygon, placeOf(layer));
}

bool isObject(std::string_view head) {
    if (!head.starts_with("FORM") || head.size() < 12) return false;
    const std::string_view type = head.substr(8, 4);
    return type == "LWO2" || type == "LWOB" || type == "LWLO" || type == "LWO3";
}

ObjectGeometry readObject(std::string_view bytes, const std::string &name) {
    const IffFile file(bytes, name);
    ObjectGeometry geometry;
    switch (const std::uint32_t type = file.formType()) {
    case fourCC("LWO2"): readNewObject(file, geometry); break;
    case fourCC("LWOB"):
    case fourCC("LWLO"): readOldObject(file, geometry); break;
    default:
        file.fail(8, fmt::format("the object file has the form {}; LWO2, LWOB and LWLO are read", blockName(type)));
    }
    return geometry;
}

std::vector<std::string> surfacesOfPolygons(const ObjectGeometry &geometry) {
    std::vector<std::string> names;
    std::unordered_set<std::string> known;
    std::uint32_t last = kNoTag;
    bool hasLast = false;
    for (const ObjectLayer &layer : geometry.layers) {
        if (layer.isHidden()) continue;
        forEachDrawnPolygon(layer, [&](std::size_t polygon) {
            const std::uint32_t tag = layer.surfaceTag(polygon);
            if (hasLast && tag == last) return; // as is usual
            last = tag;
            hasLast = true;
            if (const std::string &name = geometry.surfaceOf(layer, polygon); known.insert(name).second)
                names.push_back(name);
        });
    }
    return names;
}

} // namespace velm::host
