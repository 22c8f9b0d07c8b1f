#include "host/object/cage.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <numeric>
#include <tuple>

namespace velm::host {

namespace {

constexpr float kNoValue = std::numeric_limits<float>::quiet_NaN();

bool isSubdivided(const ObjectVertexMap &map) {
    switch (map.type) {
    case fourCC("TXUV"): return map.size == 2;
    case fourCC("WGHT"): return map.size == 1;
    case fourCC("RGB "): return map.size == 3;
    case fourCC("RGBA"): return map.size == 4;
    default: return false;
    }
}

CageMap::Value valueOf(const ObjectVertexMap &map, std::size_t index) {
    CageMap::Value value{};
    std::copy_n(map.numbers.begin() + static_cast<std::ptrdiff_t>(index * map.size), map.size, value.begin());
    return value;
}

bool hasValue(const CageMap::Value &value) { return !std::isnan(value[0]); }

// All chunks of one map.
class MapValues {
  public:
    MapValues(const ObjectLayer &layer, const ObjectVertexMap &first) : layer_(layer) {
        map_.type = first.type;
        map_.size = first.size;
        map_.name = first.name;
        map_.subdivision = first.subdivision;
    }

    bool isOf(const ObjectVertexMap &chunk) const {
        return std::tie(chunk.type, chunk.size, chunk.name) == std::tie(map_.type, map_.size, map_.name);
    }

    void add(const ObjectVertexMap &chunk) {
        if (!chunk.isOfCorners && ofPoints_.empty())
            ofPoints_.resize(layer_.points.size(), {kNoValue, kNoValue, kNoValue, kNoValue});
        for (std::size_t i = 0; i < chunk.points.size(); ++i) {
            if (chunk.isOfCorners)
                ofCorners_.push_back(
                    {.polygon = chunk.polygons[i], .point = chunk.points[i], .value = valueOf(chunk, i)});
            else
                ofPoints_[chunk.points[i]] = valueOf(chunk, i);
        }
    }

    // The map at the corners of a cage; without values if it has none there.
    CageMap at(const Cage &cage) {
        std::stable_sort(ofCorners_.begin(), ofCorners_.end(),
                         [](const OfCorner &a, const OfCorner &b) { return a.polygon < b.polygon; });
        bool isEmpty = true;
        std::vector<CageMap::Value> values;
        values.reserve(cage.corners.size());
        for (std::size_t face = 0; face < cage.sizes.size(); ++face) {
            const std::size_t begin = values.size();
            const bool isMapped = addFace(cage, face, values);
            if (isMapped)
                isEmpty = false;
            else
                std::fill(values.begin() + static_cast<std::ptrdiff_t>(begin), values.end(),
                          CageMap::Value{kNoValue, kNoValue, kNoValue, kNoValue});
        }
        if (!isEmpty) shareValues(cage, values);
        return std::move(map_);
    }

  private:
    struct OfCorner {
        std::uint32_t polygon, point;
        CageMap::Value value;
    };

    // Appends the values of a face; false if a corner has none. The faces come in ascending order.
    bool addFace(const Cage &cage, std::size_t face, std::vector<CageMap::Value> &values) {
        const std::uint32_t polygon = cage.polygons[face];
        while (next_ < ofCorners_.size() && ofCorners_[next_].polygon < polygon) ++next_;
        std::size_t end = next_;
        while (end < ofCorners_.size() && ofCorners_[end].polygon == polygon) ++end;
        bool isWhole = true;
        for (int i = 0; i < cage.sizes[face]; ++i) {
            const std::uint32_t point = cage.points[static_cast<std::size_t>(cage.corners[values.size()])];
            CageMap::Value value{kNoValue};
            if (!ofPoints_.empty()) value = ofPoints_[point];
            for (std::size_t one = next_; one < end; ++one)
                if (ofCorners_[one].point == point) value = ofCorners_[one].value;
            if (!hasValue(value)) isWhole = false;
            values.push_back(value);
        }
        return isWhole;
    }

    // Numbers the values so that equal ones of a point have the same number. Those that are none stay apart.
    void shareValues(const Cage &cage, const std::vector<CageMap::Value> &values) {
        std::vector<std::uint32_t> order(values.size());
        std::iota(order.begin(), order.end(), 0U);
        const auto key = [&](std::uint32_t corner) {
            return std::pair(cage.corners[corner], std::bit_cast<std::array<std::uint32_t, 4>>(values[corner]));
        };
        std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) { return key(a) < key(b); });
        map_.numbers.resize(values.size());
        for (std::size_t i = 0; i < order.size(); ++i) {
            const CageMap::Value &value = values[order[i]];
            if (i == 0 || !hasValue(value) || key(order[i]) != key(order[i - 1])) map_.values.push_back(value);
            map_.numbers[order[i]] = static_cast<int>(map_.values.size() - 1);
        }
    }

    const ObjectLayer &layer_;
    CageMap map_;
    std::vector<CageMap::Value> ofPoints_; // empty: none
    std::vector<OfCorner> ofCorners_;
    std::size_t next_ = 0; // the first one of the faces to come
};

// The points of a polygon, without those that repeat the one before.
void takePoints(const ObjectLayer &layer, std::size_t polygon, std::vector<std::uint32_t> &points) {
    points.assign(layer.corners.begin() + static_cast<std::ptrdiff_t>(layer.begin(polygon)),
                  layer.corners.begin() + static_cast<std::ptrdiff_t>(layer.ends[polygon]));
    points.erase(std::unique(points.begin(), points.end()), points.end());
    while (points.size() > 1 && points.front() == points.back()) points.pop_back();
}

} // namespace

Cage cageOf(const ObjectLayer &layer, Losses &losses) {
    constexpr int kUnused = -1;
    Cage cage;
    std::vector<int> numbers(layer.points.size(), kUnused);
    std::vector<std::uint32_t> points, sorted;
    const auto addPolygon = [&](std::size_t polygon) {
        takePoints(layer, polygon, points);
        if (points.size() < 3) return;
        sorted = points;
        std::sort(sorted.begin(), sorted.end());
        if (std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end())
            return losses.addAt(Loss::knottedCage, [&] { return placeOf(layer, polygon); });
        for (const std::uint32_t point : points) {
            if (numbers[point] == kUnused) {
                numbers[point] = static_cast<int>(cage.points.size());
                cage.points.push_back(point);
            }
            cage.corners.push_back(numbers[point]);
        }
        cage.sizes.push_back(static_cast<int>(points.size()));
        cage.polygons.push_back(static_cast<std::uint32_t>(polygon));
    };
    for (const ObjectPolygons &group : layer.polygons)
        for (std::size_t i = 0; group.areCage() && i < group.count; ++i) addPolygon(group.first + i);
    return cage;
}

std::vector<CageMap> mapsOfCage(const ObjectLayer &layer, const Cage &cage) {
    std::vector<MapValues> all;
    for (const ObjectVertexMap &chunk : layer.maps) {
        if (!isSubdivided(chunk) || chunk.points.empty()) continue;
        const auto found = std::find_if(all.begin(), all.end(), [&](const MapValues &one) { return one.isOf(chunk); });
        (found == all.end() ? all.emplace_back(layer, chunk) : *found).add(chunk);
    }
    std::vector<CageMap> maps;
    for (MapValues &one : all)
        if (CageMap map = one.at(cage); !map.values.empty()) maps.push_back(std::move(map));
    return maps;
}

} // namespace velm::host
