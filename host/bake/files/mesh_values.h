// Values that were baked at the corners of a mesh's triangles, on their way to the vertices of a file.
#pragma once

#include "host/render/geometry/mesh.h"
#include "host/render/geometry/vector.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace velm::host {

// Corner k of triangle t has the number 3 t + k.
struct MeshValues {
    std::uint32_t size = 1;     // numbers in each value: 1, 3 for a colour, or 4 for a colour with alpha
    std::vector<float> numbers; // `size` for each corner; a NaN as the first one: the corner has no value

    std::span<const float> at(std::size_t corner) const { return std::span(numbers).subspan(corner * size, size); }
    bool has(std::size_t corner) const { return !std::isnan(numbers[corner * size]); }
};

// Values that differ by no more than this, in each of their numbers, count as equal: half a step of 8 bits.
inline constexpr double kEqualValues = 0.5 / 255;

// A weighted sum of values.
class ValueSum {
  public:
    explicit ValueSum(std::size_t size = 0) : sums_(size) {}

    void add(std::span<const float> value, double weight) {
        for (std::size_t i = 0; i < sums_.size(); ++i) sums_[i] += weight * static_cast<double>(value[i]);
        weight_ += weight;
    }
    double weight() const { return weight_; } // of all values
    // The mean; there has to be a value.
    std::vector<float> mean() const {
        std::vector<float> numbers;
        for (const double sum : sums_) numbers.push_back(static_cast<float>(sum / weight_));
        return numbers;
    }

  private:
    std::vector<double> sums_;
    double weight_ = 0;
};

// The values at the corners of a mesh's polygons. The mesh and the values have to outlive it. [any thread]
class PolygonValues {
  public:
    PolygonValues(const Mesh &mesh, const MeshValues &values);

    std::size_t count() const { return firstTriangles_.size() - 1; } // of polygons
    std::size_t size() const { return values_.size; }                // of a value

    // The triangles of a polygon: from the first one up to the one before the second. There may be none.
    std::size_t begin(std::size_t polygon) const { return firstTriangles_[polygon]; }
    std::size_t end(std::size_t polygon) const { return firstTriangles_[polygon + 1]; }

    // The vertex of a corner before smoothing split vertices: corners of a polygon at the same corner of the file have
    // the same one.
    std::uint32_t vertexOf(std::size_t corner) const;

    // The mean, by area, of a polygon's values at a vertex; its weight is the area of the triangles there. The weight
    // is 0 where there is no value.
    ValueSum at(std::size_t polygon, std::uint32_t vertex) const;
    // The same at the vertex that is at a position, up to rounding errors.
    ValueSum at(std::size_t polygon, const Vec3 &position) const;

  private:
    std::optional<std::uint32_t> vertexAt(std::size_t polygon, const Vec3 &position) const;

    const Mesh &mesh_;
    const MeshValues &values_;
    std::vector<std::size_t> firstTriangles_; // by polygon, and the number of triangles
};

// What went wrong: the file has other polygons than the mesh that was read from it.
[[noreturn]] void failForOtherPolygons(const std::string &file);

} // namespace velm::host
