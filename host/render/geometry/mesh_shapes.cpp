// The meshes of the built-in shapes.
#include "host/render/geometry/mesh.h"
#include "host/render/geometry/mesh_builder.h"

#include "host/base/error.h"

#include <algorithm>
#include <numbers>
#include <variant>

namespace velm::host {
namespace {

void requirePositive(double size, const char *what) {
    if (!(size > 0) || !std::isfinite(size)) throw InputError(std::string(what) + " has to be above 0");
}

// Takes vertices in object space, and polygons whose corners run clockwise as seen from their front there.
class ShapeBuilder {
  public:
    ShapeBuilder(const Transform &transform, bool hasNormals)
        : transform_(transform), builder_({"UV"}, hasNormals), material_(builder_.addMaterial("")),
          mirrors_(transform.mirrors()) {}

    std::uint32_t vertex(const Vec3 &position, double u, double v, const Vec3 &normal = {}) {
        return builder_.addVertex({.position = transform_.pointToWorld(position),
                                   .normal = normalised(transform_.normalToWorld(normal), {0, 0, 0}),
                                   .uvs = {{static_cast<float>(u), static_cast<float>(v)}}});
    }
    void polygon(std::vector<std::uint32_t> corners) {
        if (mirrors_) std::reverse(corners.begin() + 1, corners.end());
        builder_.addPolygon(corners, material_);
    }
    Mesh finish() {
        Mesh mesh = builder_.finish();
        trimBuffers(mesh);
        return mesh;
    }

  private:
    const Transform &transform_;
    MeshBuilder builder_;
    std::uint16_t material_;
    bool mirrors_;
};

// Adds one side of a box, whose middle is at `outward`; `right` and `up` lead from there to its edges, as seen from
// outside.
void addSide(ShapeBuilder &builder, const Vec3 &outward, const Vec3 &right, const Vec3 &up, bool inward) {
    const std::uint32_t lowerLeft = builder.vertex(outward - right - up, 0, 0);
    const std::uint32_t upperLeft = builder.vertex(outward - right + up, 0, 1);
    const std::uint32_t upperRight = builder.vertex(outward + right + up, 1, 1);
    const std::uint32_t lowerRight = builder.vertex(outward + right - up, 1, 0);
    if (inward) {
        builder.polygon({lowerLeft, lowerRight, upperRight, upperLeft});
    } else {
        builder.polygon({lowerLeft, upperLeft, upperRight, lowerRight});
    }
}

} // namespace

Mesh shapeMesh(const PlaneShape &shape, const Transform &transform) {
    requirePositive(shape.width, "the width of a plane");
    requirePositive(shape.depth, "the depth of a plane");
    ShapeBuilder builder(transform, false);
    addSide(builder, {0, 0, 0}, {shape.width / 2, 0, 0}, {0, 0, shape.depth / 2}, false);
    return builder.finish();
}

Mesh shapeMesh(const BoxShape &shape, const Transform &transform) {
    for (const double size : shape.size) requirePositive(size, "the size of a box");
    ShapeBuilder builder(transform, false);
    const Vec3 x{shape.size[0] / 2, 0, 0}, y{0, shape.size[1] / 2, 0}, z{0, 0, shape.size[2] / 2};
    addSide(builder, -z, x, y, shape.inward);
    addSide(builder, z, -x, y, shape.inward);
    addSide(builder, -x, -z, y, shape.inward);
    addSide(builder, x, z, y, shape.inward);
    addSide(builder, y, x, z, shape.inward);
    addSide(builder, -y, x, -z, shape.inward);
    return builder.finish();
}

Mesh shapeMesh(const SphereShape &shape, const Transform &transform) {
    requirePositive(shape.radius, "the radius of a sphere");
    if (shape.segments < 3) throw InputError("a sphere has to have at least 3 segments");
    const int columns = shape.segments, rows = std::max(2, shape.segments / 2);
    ShapeBuilder builder(transform, true);
    // Rows run upwards from the south pole, columns from +Z through -X, which is to the right as seen from outside. The
    // vertex of a column at a pole lies in the middle of the column's u.
    const auto vertex = [&](int column, int row) {
        const bool pole = row == 0 || row == rows;
        const double u = (column + (pole ? 0.5 : 0.0)) / columns, v = static_cast<double>(row) / rows;
        const double elevation = (v - 0.5) * std::numbers::pi,
                     turn = 2 * std::numbers::pi * (column % columns) / columns;
        const double across = pole ? 0.0 : std::cos(elevation),
                     height = pole ? (row == 0 ? -1.0 : 1.0) : std::sin(elevation);
        const Vec3 outward{-across * std::sin(turn), height, across * std::cos(turn)};
        return builder.vertex(shape.radius * outward, u, v, outward);
    };
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            if (row == 0) {
                builder.polygon({vertex(column, 0), vertex(column, 1), vertex(column + 1, 1)});
            } else if (row == rows - 1) {
                builder.polygon({vertex(column, row), vertex(column, rows), vertex(column + 1, row)});
            } else {
                builder.polygon({vertex(column, row), vertex(column, row + 1), vertex(column + 1, row + 1),
                                 vertex(column + 1, row)});
            }
        }
    }
    return builder.finish();
}

Mesh makeMesh(const ShapeDescription &shape, const Transform &transform) {
    return std::visit([&transform](const auto &one) { return shapeMesh(one, transform); }, shape);
}

} // namespace velm::host
