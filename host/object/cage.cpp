#include "host/object/cage.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <iterator>
#include <limits>
#include <map>
#include <numeric>
#include <string_view>
#include <tuple>
#include <utility>

namespace velm::host {

namespace {

constexpr float kNoValue = std::numeric_limits<float>::quiet_NaN();

CageMap::Value valueOf(const ObjectVertexMap &map, std::size_t index) {
    CageMap::Value value{};
    std::copy_n(map.numbers.begin() + static_cast<std::ptrdiff_t>(index * map.size), map.size, value.begin());
    return value;
}

bool hasValue(const CageMap::Value &value) { return !std::isnan(value[0]); }

// The values of one map, from all of its chunks.
class MapValues {
  public:
    MapValues(const ObjectLayer &layer, const ObjectVertexMap &first) : layer_(layer) {
        map_.type = first.type;
        map_.size = first.size;
        map_.name = first.name;
        map_.subdivision = first.subdivision;
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

    // The map at the corners of a cage; without values if it has none there. Call it once, after all chunks are added.
    CageMap takeFor(const Cage &cage) {
        std::ranges::stable_sort(ofCorners_, {}, &OfCorner::key);
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

        std::pair<std::uint32_t, std::uint32_t> key() const { return {polygon, point}; }
    };

    // The value at a corner. Of several values in the file, the last one counts; without any, that of the point.
    CageMap::Value valueAt(std::uint32_t polygon, std::uint32_t point) const {
        const std::pair corner(polygon, point);
        const auto next = std::ranges::upper_bound(ofCorners_, corner, {}, &OfCorner::key);
        if (next != ofCorners_.begin() && std::prev(next)->key() == corner) return std::prev(next)->value;
        return ofPoints_.empty() ? CageMap::Value{kNoValue} : ofPoints_[point];
    }

    // Appends the values of a face; false if a corner has none.
    bool addFace(const Cage &cage, std::size_t face, std::vector<CageMap::Value> &values) const {
        bool isWhole = true;
        for (int i = 0; i < cage.sizes[face]; ++i) {
            const std::uint32_t point = cage.points[static_cast<std::size_t>(cage.corners[values.size()])];
            const CageMap::Value value = valueAt(cage.polygons[face], point);
            if (!hasValue(value)) isWhole = false;
            values.push_back(value);
        }
        return isWhole;
    }

    // Numbers the values so that corners with equal values at the same point have the same number. Each corner without
    // a value has a number of its own.
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
    std::vector<CageMap::Value> ofPoints_; // by point of the layer; empty for a map of corners only
    std::vector<OfCorner> ofCorners_;
};

// The points of a polygon, without those that repeat the previous one.
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
    std::vector<std::vector<const ObjectVertexMap *>> chunks; // by map, in the order of their first chunks
    std::map<std::tuple<std::uint32_t, std::uint32_t, std::string_view>, std::size_t> indices;
    for (const ObjectVertexMap &chunk : layer.maps) {
        if (!chunk.isOfMeshes() || chunk.points.empty()) continue;
        const auto [known, isNew] = indices.try_emplace({chunk.type, chunk.size, chunk.name}, chunks.size());
        if (isNew) chunks.emplace_back();
        chunks[known->second].push_back(&chunk);
    }
    std::vector<CageMap> maps;
    for (const std::vector<const ObjectVertexMap *> &ofMap : chunks) {
        MapValues values(layer, *ofMap.front());
        for (const ObjectVertexMap *chunk : ofMap) values.add(*chunk);
        if (CageMap map = values.takeFor(cage); !map.values.empty()) maps.push_back(std::move(map));
    }
    return maps;
}

} // namespace velm::host
