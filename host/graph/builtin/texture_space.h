// The axes of a texture, for Image Projection and the procedural textures: those of the object or the world, rotated by
// heading, pitch and bank, with the origin at "Center". Lengths are in metres.
#pragma once

#include "host/graph/builtin/frame.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace velm::host::builtin {

inline constexpr const char *kCoordinateTexts[] = {"Object", "World", nullptr};
inline constexpr const char *kAxisTexts[] = {"X", "Y", "Z", nullptr};
inline constexpr const char *kFalloffTexts[] = {"Cubic", "Spherical", "Linear X", "Linear Y", "Linear Z", nullptr};
inline constexpr const char *kSwitchTexts[] = {"Off", "On", nullptr};

// The rows of a node's table that TextureSpace reads.
inline constexpr int kSpaceRowCount = 6, kFalloffRowCount = 2;
inline constexpr std::array<Parameter, kSpaceRowCount> kSpaceRows{{
    {.label = "Coordinates", .kind = Kind::choice, .texts = kCoordinateTexts},
    {.label = "Center", .kind = Kind::vector},
    {.label = "Size", .kind = Kind::vector, .initial = {1, 1, 1}},
    {.label = "Heading", .kind = Kind::angle},
    {.label = "Pitch", .kind = Kind::angle},
    {.label = "Bank", .kind = Kind::angle},
}};
inline constexpr std::array<Parameter, kFalloffRowCount> kFalloffRows{{
    {.label = "Falloff Type", .kind = Kind::choice, .texts = kFalloffTexts},
    {.label = "Falloff", .kind = Kind::vector},
}};

// The table of a node, joined from runs of rows.
template <std::size_t... n>
constexpr std::array<Parameter, kMaxParameters> joinRows(const std::array<Parameter, n> &...runs) {
    static_assert((n + ...) <= std::size_t{kMaxParameters});
    std::array<Parameter, kMaxParameters> rows{};
    auto *next = rows.data();
    ((next = std::copy(runs.begin(), runs.end(), next)), ...);
    return rows;
}

// A position that is measured in the sizes of a texture along its axes.
struct CellPosition {
    std::array<double, 3> cell{};
    double smallest = 0;   // of the sizes; metres
    bool isUsable = false; // no size is 0, and the position is finite

    // The coordinate along an axis (0, 1 or 2), and the distance from it.
    double along(int axis) const { return cell[static_cast<std::size_t>(axis)]; }
    double fromAxis(int axis) const {
        const auto index = static_cast<std::size_t>(axis);
        return std::hypot(cell[(index + 1) % 3], cell[(index + 2) % 3]);
    }
};

// A sample in the axes of a texture. [render threads]
class TextureSpace {
  public:
    using Vector = std::array<double, 3>;

    // `firstRow` is the index of the first of kSpaceRows. `evaluation` has to outlive the object.
    TextureSpace(const Evaluation &evaluation, int firstRow);

    const Vector &point() const { return point_; }
    Vector size() const;
    CellPosition inCells() const;
    // The polygon's normal; its length is not 1.
    Vector normal() const;
    // The axis to which the polygon's normal is closest: 0, 1 or 2.
    int normalAxis() const;
    // The factor of the opacity at the sample, 0 to 1. `firstFalloffRow` is the index of the first of kFalloffRows. A
    // linear falloff acts on the positive side of its axis, or on the negative side if its value is negative.
    double falloff(int firstFalloffRow) const;

  private:
    void turn(Vector &vector) const;

    const Evaluation &evaluation_;
    const int firstRow_;
    const bool isInWorld_;
    const double heading_, pitch_, bank_;
    Vector point_{};
};

} // namespace velm::host::builtin
