#include "host/object/subdivision.h"

#include "host/base/error.h"
#include "host/object/cage.h"

#include <opensubdiv/far/primvarRefiner.h>
#include <opensubdiv/far/topologyDescriptor.h>
#include <opensubdiv/far/topologyRefinerFactory.h>

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <memory>
#include <numeric>
#include <optional>
#include <span>

namespace velm::host {

namespace {

using OpenSubdiv::Far::TopologyRefiner;
using Interpolation = OpenSubdiv::Sdc::Options::FVarLinearInterpolation;
using Refiners = OpenSubdiv::Far::TopologyRefinerFactory<OpenSubdiv::Far::TopologyDescriptor>;

constexpr MapSubdivision kMapSubdivisions[] = {MapSubdivision::linear, MapSubdivision::smooth,
                                               MapSubdivision::linearCorners, MapSubdivision::linearEdges};

Interpolation interpolationOf(MapSubdivision subdivision) {
    switch (subdivision) {
    case MapSubdivision::linear: return OpenSubdiv::Sdc::Options::FVAR_LINEAR_ALL;
    case MapSubdivision::smooth: return OpenSubdiv::Sdc::Options::FVAR_LINEAR_NONE;
    case MapSubdivision::linearCorners: return OpenSubdiv::Sdc::Options::FVAR_LINEAR_CORNERS_ONLY;
    case MapSubdivision::linearEdges: return OpenSubdiv::Sdc::Options::FVAR_LINEAR_BOUNDARIES;
    }
    return OpenSubdiv::Sdc::Options::FVAR_LINEAR_ALL;
}

// A value that OpenSubdiv interpolates. It requires these names of the functions.
template <std::size_t n>
struct WeightedSum {
    std::array<float, n> values{};

    void Clear() { values = {}; }
    void AddWithWeight(const WeightedSum &other, float weight) {
        for (std::size_t i = 0; i < n; ++i) values[i] += weight * other.values[i];
    }
};
using Point = WeightedSum<3>;
using MapValue = WeightedSum<4>;

// Whether more faces meet at a point than OpenSubdiv supports. It refuses such a cage only after a search that takes
// seconds.
bool hasCrowdedPoint(const Cage &cage) {
    std::vector<int> faces(cage.points.size()); // by point; the corners of a face are different points
    return std::ranges::any_of(cage.corners, [&](int point) {
        return ++faces[static_cast<std::size_t>(point)] > OpenSubdiv::Far::VALENCE_LIMIT;
    });
}

// The topology of a cage and of all its subdivisions, with maps as channels, which are all interpolated by the same
// rule. Null for a cage that OpenSubdiv refuses.
std::unique_ptr<TopologyRefiner> refined(const Cage &cage, std::span<const CageMap *const> maps,
                                         MapSubdivision subdivision, int level) {
    OpenSubdiv::Far::TopologyDescriptor topology;
    topology.numVertices = static_cast<int>(cage.points.size());
    topology.numFaces = static_cast<int>(cage.sizes.size());
    topology.numVertsPerFace = cage.sizes.data();
    topology.vertIndicesPerFace = cage.corners.data();
    std::vector<OpenSubdiv::Far::TopologyDescriptor::FVarChannel> channels(maps.size());
    for (std::size_t i = 0; i < maps.size(); ++i) {
        channels[i].numValues = static_cast<int>(maps[i]->values.size());
        channels[i].valueIndices = maps[i]->numbers.data();
    }
    topology.numFVarChannels = static_cast<int>(channels.size());
    topology.fvarChannels = channels.data();

    OpenSubdiv::Sdc::Options rules;
    rules.SetVtxBoundaryInterpolation(OpenSubdiv::Sdc::Options::VTX_BOUNDARY_EDGE_ONLY);
    rules.SetFVarLinearInterpolation(interpolationOf(subdivision));
    Refiners::Options options(OpenSubdiv::Sdc::SCHEME_CATMARK, rules);
    options.validateFullTopology = true;
    std::unique_ptr<TopologyRefiner> refiner(Refiners::Create(topology, options));
    if (!refiner) return nullptr;
    TopologyRefiner::UniformOptions uniform(level);
    uniform.fullTopologyInLastLevel = true; // which limits need
    refiner->RefineUniform(uniform);
    return refiner;
}

// Points of the limit surface, and two tangents of it at each.
struct Limits {
    std::vector<Point> points, tangents, otherTangents;
};

Limits limitsOf(const TopologyRefiner &refiner, std::vector<Point> points) {
    const OpenSubdiv::Far::PrimvarRefinerReal<float> interpolator(refiner);
    std::vector<Point> next;
    for (int level = 1; level <= refiner.GetMaxLevel(); ++level) {
        next.assign(static_cast<std::size_t>(refiner.GetLevel(level).GetNumVertices()), {});
        interpolator.Interpolate(level, points, next);
        points.swap(next);
    }
    next.assign(points.size(), {});
    Limits limits{.points = next, .tangents = next, .otherTangents = next};
    interpolator.Limit(points, limits.points, limits.tangents, limits.otherTangents);
    return limits;
}

// The unit vector across two others; zero where they are parallel.
std::array<float, 3> normalAcross(const Point &a, const Point &b) {
    std::array<double, 3> across{};
    double square = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const std::size_t j = (i + 1) % 3, k = (i + 2) % 3;
        across[i] = double{a.values[j]} * b.values[k] - double{a.values[k]} * b.values[j];
        square += across[i] * across[i];
    }
    std::array<float, 3> normal{};
    for (std::size_t i = 0; square > 0 && i < 3; ++i) normal[i] = static_cast<float>(across[i] / std::sqrt(square));
    return normal;
}

std::vector<MapValue> limitValues(const TopologyRefiner &refiner, int channel, const CageMap &map) {
    std::vector<MapValue> values(map.values.size());
    for (std::size_t i = 0; i < values.size(); ++i) values[i].values = map.values[i];
    const OpenSubdiv::Far::PrimvarRefinerReal<float> interpolator(refiner);
    std::vector<MapValue> next;
    for (int level = 1; level <= refiner.GetMaxLevel(); ++level) {
        next.assign(static_cast<std::size_t>(refiner.GetLevel(level).GetNumFVarValues(channel)), {});
        interpolator.InterpolateFaceVarying(level, values, next, channel);
        values.swap(next);
    }
    next.assign(values.size(), {});
    interpolator.LimitFaceVarying(values, next, channel);
    for (MapValue &value : next) // all components are NaN where there is no value
        if (std::isnan(value.values[0])) value.values.fill(std::numeric_limits<float>::quiet_NaN());
    return next;
}

// By face of the last level, the face of the cage that it is a part of.
std::vector<std::uint32_t> facesOfCage(const TopologyRefiner &refiner) {
    std::vector<std::uint32_t> faces(static_cast<std::size_t>(refiner.GetLevel(0).GetNumFaces())), next;
    std::iota(faces.begin(), faces.end(), 0U);
    for (int number = 1; number <= refiner.GetMaxLevel(); ++number) {
        const OpenSubdiv::Far::TopologyLevel &level = refiner.GetLevel(number);
        next.resize(static_cast<std::size_t>(level.GetNumFaces()));
        for (int face = 0; face < level.GetNumFaces(); ++face)
            next[static_cast<std::size_t>(face)] = faces[static_cast<std::size_t>(level.GetFaceParentFace(face))];
        faces.swap(next);
    }
    return faces;
}

// Subdivides the cage of one layer.
class LayerSubdivision {
  public:
    LayerSubdivision(ObjectLayer &layer, const Cage &cage)
        : layer_(layer), cage_(cage), firstPoint_(static_cast<std::uint32_t>(layer.points.size())),
          firstPolygon_(static_cast<std::uint32_t>(layer.ends.size())) {}

    // Returns false, and leaves the layer unchanged, for a cage that cannot be subdivided.
    bool run(int level) {
        if (hasCrowdedPoint(cage_)) return false;
        const std::vector<CageMap> maps = mapsOfCage(layer_, cage_);
        bool hasPolygons = false;
        for (const MapSubdivision subdivision : kMapSubdivisions) {
            std::vector<const CageMap *> alike;
            for (const CageMap &map : maps)
                if (map.subdivision == subdivision) alike.push_back(&map);
            if (alike.empty() && (hasPolygons || !maps.empty())) continue;
            const std::unique_ptr<TopologyRefiner> refiner = refined(cage_, alike, subdivision, level);
            if (!refiner) return false;
            if (!hasPolygons) addPolygons(*refiner);
            hasPolygons = true;
            for (std::size_t i = 0; i < alike.size(); ++i) addMap(*refiner, static_cast<int>(i), *alike[i]);
        }
        return true;
    }

  private:
    void addPolygons(const TopologyRefiner &refiner) {
        for (ObjectPolygons &group : layer_.polygons)
            if (group.areCage()) group.isReplaced = true;
        addPoints(refiner);
        const OpenSubdiv::Far::TopologyLevel &last = refiner.GetLevel(refiner.GetMaxLevel());
        const auto count = static_cast<std::size_t>(last.GetNumFaces());
        layer_.polygons.push_back({.type = kFacePolygons, .first = layer_.ends.size(), .count = count});
        layer_.ends.reserve(layer_.ends.size() + count);
        layer_.corners.reserve(layer_.corners.size() + static_cast<std::size_t>(last.GetNumFaceVertices()));
        for (int face = 0; face < last.GetNumFaces(); ++face) {
            for (const int point : last.GetFaceVertices(face))
                layer_.corners.push_back(firstPoint_ + static_cast<std::uint32_t>(point));
            layer_.ends.push_back(static_cast<std::uint32_t>(layer_.corners.size()));
        }
        if (layer_.surfaces.empty()) return;
        layer_.surfaces.resize(firstPolygon_, kNoTag);
        layer_.surfaces.reserve(layer_.ends.size());
        for (const std::uint32_t face : facesOfCage(refiner))
            layer_.surfaces.push_back(layer_.surfaces[cage_.polygons[face]]);
    }

    void addPoints(const TopologyRefiner &refiner) {
        std::vector<Point> points(cage_.points.size());
        for (std::size_t i = 0; i < points.size(); ++i) points[i].values = layer_.points[cage_.points[i]];
        const Limits limits = limitsOf(refiner, std::move(points));
        const std::size_t count = layer_.points.size() + limits.points.size();
        layer_.points.reserve(count);
        layer_.normals.reserve(count);
        layer_.normals.resize(layer_.points.size());
        const OpenSubdiv::Far::TopologyLevel &last = refiner.GetLevel(refiner.GetMaxLevel());
        for (std::size_t i = 0; i < limits.points.size(); ++i) {
            layer_.points.push_back(limits.points[i].values);
            // Where more than two polygons meet at an edge, there are several normals.
            const bool hasNormal = !last.IsVertexNonManifold(static_cast<int>(i));
            layer_.normals.push_back(hasNormal ? normalAcross(limits.tangents[i], limits.otherTangents[i])
                                               : std::array<float, 3>{});
        }
    }

    // Adds the values of a map: to the points, and to the corners that have another value than their point.
    void addMap(const TopologyRefiner &refiner, int channel, const CageMap &map) {
        const OpenSubdiv::Far::TopologyLevel &last = refiner.GetLevel(refiner.GetMaxLevel());
        const std::vector<MapValue> values = limitValues(refiner, channel, map);
        ObjectVertexMap ofPoints, ofCorners;
        for (ObjectVertexMap *one : {&ofPoints, &ofCorners}) {
            one->type = map.type;
            one->size = map.size;
            one->name = map.name;
        }
        ofCorners.isOfCorners = true;
        const auto add = [&](ObjectVertexMap &to, int point, int value) {
            to.points.push_back(firstPoint_ + static_cast<std::uint32_t>(point));
            const std::array<float, 4> &numbers = values[static_cast<std::size_t>(value)].values;
            to.numbers.insert(to.numbers.end(), numbers.begin(), numbers.begin() + map.size);
        };
        const auto areNone = [&](int one, int other) {
            return std::isnan(values[static_cast<std::size_t>(one)].values[0]) &&
                   std::isnan(values[static_cast<std::size_t>(other)].values[0]);
        };
        constexpr int kNone = -1;
        std::vector<int> first(static_cast<std::size_t>(last.GetNumVertices()), kNone); // by point: its value
        for (int face = 0; face < last.GetNumFaces(); ++face) {
            const auto points = last.GetFaceVertices(face), numbers = last.GetFaceFVarValues(face, channel);
            for (int i = 0; i < points.size(); ++i) {
                int &known = first[static_cast<std::size_t>(points[i])];
                if (known == numbers[i] || (known != kNone && areNone(known, numbers[i]))) continue;
                if (known == kNone) {
                    known = numbers[i];
                    add(ofPoints, points[i], numbers[i]);
                } else {
                    add(ofCorners, points[i], numbers[i]);
                    ofCorners.polygons.push_back(firstPolygon_ + static_cast<std::uint32_t>(face));
                }
            }
        }
        for (ObjectVertexMap *one : {&ofPoints, &ofCorners})
            if (!one->points.empty()) layer_.maps.push_back(std::move(*one));
    }

    ObjectLayer &layer_;
    const Cage &cage_;
    const std::uint32_t firstPoint_, firstPolygon_; // of those that are added
};

// How many polygons the cages of visible layers become, at most.
std::uint64_t polygonsAt(int level, const ObjectGeometry &geometry) {
    std::uint64_t corners = 0;
    for (const ObjectLayer &layer : geometry.layers)
        for (const ObjectPolygons &group : layer.polygons)
            if (!layer.isHidden() && group.areCage() && group.count > 0)
                corners += layer.ends[group.first + group.count - 1] - layer.begin(group.first);
    return corners << (2 * (level - 1));
}

// The memory for one polygon of the result: its topology, points, corners and maps, and the triangles into which it is
// split later. Measured with one UV map.
constexpr std::uint64_t kBytesOfPolygon = 500;
// OpenSubdiv numbers corners by int.
constexpr std::uint64_t kMostPolygons = std::numeric_limits<int>::max() / 4;

void requireMemory(const ObjectGeometry &geometry, const Subdivision &wanted, const std::string &file) {
    const std::uint64_t polygons = polygonsAt(wanted.level, geometry);
    if (polygons <= std::min(wanted.mostBytes / kBytesOfPolygon, kMostPolygons)) return;
    throw InputError({.file = file},
                     fmt::format("the object's subdivision surfaces have {} polygons at level {}, which take about {} "
                                 "MiB of memory; {} MiB are allowed. Choose a lower level (see --subdivision)",
                                 polygons, wanted.level, (polygons * kBytesOfPolygon) >> 20, wanted.mostBytes >> 20));
}

bool isWeightOfPatches(const ObjectVertexMap &map) {
    return map.type == fourCC("MNVW") &&
           std::any_of(map.numbers.begin(), map.numbers.end(), [](float weight) { return weight != 0; });
}

void noteWeights(const ObjectLayer &layer, Losses &losses) {
    for (const ObjectVertexMap &map : layer.maps)
        if (isWeightOfPatches(map)) losses.addAt(Loss::cageWeights, [&] { return placeOf(layer); });
}

} // namespace

void subdivide(ObjectGeometry &geometry, const Subdivision &wanted, const std::string &file) {
    if (wanted.level == 0) return;
    requireMemory(geometry, wanted, file);
    for (ObjectLayer &layer : geometry.layers) {
        if (layer.isHidden()) continue;
        const Cage cage = cageOf(layer, geometry.losses);
        if (cage.sizes.empty()) continue;
        noteWeights(layer, geometry.losses);
        if (!LayerSubdivision(layer, cage).run(wanted.level))
            geometry.losses.add(Loss::cage, placeOf(layer, cage.polygons.front()), cage.sizes.size());
    }
}

} // namespace velm::host
