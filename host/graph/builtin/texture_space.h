// The axes of a texture, which Image Projection and Procedural Pattern have in common: those of the object or the
// world, rotated by heading, pitch and bank, with the origin at "Center". Lengths are metres.
#pragma once

#include "host/graph/builtin/frame.h"

#include <array>

namespace velm::host::builtin {

inline constexpr const char *kCoordinateTexts[] = {"Object", "World", nullptr};
inline constexpr const char *kAxisTexts[] = {"X", "Y", "Z", nullptr};
inline constexpr const char *kFalloffTexts[] = {"Cubic", "Spherical", "Linear X", "Linear Y", "Linear Z", nullptr};
inline constexpr const char *kSwitchTexts[] = {"Off", "On", nullptr};

// Rows of a node's table. The first six follow one another, and so do the last two.
inline constexpr Parameter kCoordinatesRow{.label = "Coordinates", .kind = Kind::choice, .texts = kCoordinateTexts};
inline constexpr Parameter kCentreRow{.label = "Center", .kind = Kind::vector};
inline constexpr Parameter kSizeRow{.label = "Size", .kind = Kind::vector, .initial = {1, 1, 1}};
inline constexpr Parameter kHeadingRow{.label = "Heading", .kind = Kind::angle};
inline constexpr Parameter kPitchRow{.label = "Pitch", .kind = Kind::angle};
inline constexpr Parameter kBankRow{.label = "Bank", .kind = Kind::angle};
inline constexpr Parameter kFalloffTypeRow{.label = "Falloff Type", .kind = Kind::choice, .texts = kFalloffTexts};
inline constexpr Parameter kFalloffRow{.label = "Falloff", .kind = Kind::vector};

// A sample in the axes of a texture. [render threads]
class TextureSpace {
  public:
    using Vector = std::array<double, 3>;

    // `firstRow` is the index of the row "Coordinates". `evaluation` has to outlive the object.
    TextureSpace(const Evaluation &evaluation, int firstRow);

    const Vector &point() const { return point_; }
    Vector size() const;
    // The polygon's normal; its length is not 1.
    Vector normal() const;
    // The axis to which the polygon's normal is closest: 0, 1 or 2.
    int normalAxis() const;
    // The factor of the opacity at the sample, 0 to 1. `firstFalloffRow` is the index of "Falloff Type". A linear
    // falloff acts on the positive side of its axis, or on the negative side if its value is negative.
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
