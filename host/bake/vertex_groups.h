// The corners of a mesh's triangles, grouped by the values that they share: the points of a value that is baked into
// vertices.
#pragma once

#include "host/bake/bake_points.h"
#include "host/bake/files/mesh_values.h"
#include "host/render/order/unit_of_work.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace velm::host {

// Corners share a value if they have the same vertex and the same material, and are shaded with the same normal: where
// normals are not smoothed, only corners of one polygon do.
//
// The groups are numbered along the tiles of a picture, one pixel for each, so that bakePoints can evaluate them.
class VertexGroups {
  public:
    // Those of the triangles of an object whose surfaces have the evaluator's value. The scene has to outlive the
    // result. InputError if the picture would exceed the largest size of a picture. [between frames]
    VertexGroups(const RenderSceneData &scene, std::uint32_t object, const PointEvaluator &evaluator);

    std::size_t count() const { return ends_.size(); }
    int width() const { return columns_ * kTileSize; } // of the picture, pixels
    int height() const;

    // A point of the group of a pixel, near one of its corners. Samples choose corners by the areas of their
    // triangles. Returns false for a pixel without a group. [render threads]
    bool find(int x, int y, const UnitSquare &random, SurfacePoint &point) const;

    // The values of all corners, of the groups' pixels: `size` numbers of each, or the luminance if `size` is 1; the
    // fourth number is 1. Numbers that are NaN or infinite become 0, and are added to `notFinite`.
    MeshValues values(const Picture &picture, std::uint32_t size, std::size_t &notFinite) const;

  private:
    std::size_t groupOf(int x, int y) const;
    std::size_t begin(std::size_t group) const { return group == 0 ? 0 : ends_[group - 1]; }

    const std::uint32_t object_;
    std::size_t meshCorners_ = 0;      // of all triangles
    std::vector<std::size_t> corners_; // of all groups: corner k of triangle t has the number 3 t + k
    std::vector<double> areas_;        // by element of corners_: of the triangles of the group up to this one
    std::vector<std::size_t> ends_;    // by group: where its corners end
    int columns_ = 1;                  // of tiles
};

// The points of a group for each pixel of the picture.
class VertexSource final : public PointSource {
  public:
    explicit VertexSource(const VertexGroups &groups) : groups_(groups) {}
    double find(int x, int y, const UnitSquare &random, bool, SurfacePoint &point) override {
        return groups_.find(x, y, random, point) ? 1 : 0;
    }

  private:
    const VertexGroups &groups_;
};

} // namespace velm::host
