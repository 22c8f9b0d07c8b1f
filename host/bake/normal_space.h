// The coordinates in which normals are baked.
#pragma once

#include "host/bake/evaluate_point.h"
#include "host/render/geometry/mesh.h"

#include <array>
#include <cstdint>
#include <vector>

namespace velm::host {

enum class NormalSpace {
    tangent, // x along growing u, y along growing v, z along the surface's smooth normal
    object,
    world
};

// The tangents of a mesh in a UV map, by MikkTSpace's method (Mikkelsen, "Simulation of Wrinkled Surfaces Revisited",
// 2008), which renderers and game engines use that read normal maps: the tangent of a corner is the mean of the
// directions of growing u of the triangles around it that share its normal and UV coordinates and are mirrored in the
// map alike, each in the plane of the normal and weighted by its angle. The frame in a triangle is interpolated
// without normalising it, and its third axis is the cross product of the other two.
class Tangents {
  public:
    struct Frame {
        Vec3 tangent, bitangent, normal; // not normalised
    };

    // `isFlat` says which triangles are shaded flat. The mesh and the map have to outlive it. [any thread]
    Tangents(const Mesh &mesh, const UvMap &map, const std::vector<bool> &isFlat);

    // At a point of a triangle, by the weights of its corners. [any thread]
    Frame at(std::uint32_t triangle, const std::array<double, 3> &weights) const;

  private:
    struct Directions {
        Vec3 alongU, alongV; // unit length, or zero where the map has no area
    };
    Directions directionsOf(std::uint32_t triangle) const;
    Vec3 normalAt(std::uint32_t triangle, int corner) const;
    double angleAt(std::uint32_t triangle, int corner, const Vec3 &normal) const;
    bool mirrors(std::uint32_t triangle, const Directions &directions) const;
    void addTangents();

    const Mesh &mesh_;
    const UvMap &map_;
    const std::vector<bool> &isFlat_;
    std::vector<std::array<std::array<float, 3>, 3>> tangents_; // by triangle and corner; unit length
    std::vector<bool> mirrored_;                                // by triangle
};

// A unit normal in world space, in other coordinates; unit length. [any thread]
Vec3 toObjectSpace(const Transform &transform, const Vec3 &normal);
Vec3 toTangentSpace(const Tangents::Frame &frame, const Vec3 &normal);

} // namespace velm::host
