#include "host/graph/builtin/texture_space.h"

#include <algorithm>
#include <cmath>

namespace velm::host::builtin {

namespace {

// Offsets in kSpaceRows and kFalloffRows.
enum { kCoordinatesOffset, kCentreOffset, kSizeOffset, kHeadingOffset, kPitchOffset, kBankOffset };
enum { kFalloffTypeOffset, kFalloffOffset };
enum { kObject, kWorld };
enum { kCubicFalloff, kSphericalFalloff, kLinearX };

// Turns a pair of components back by an angle: `first` towards where `second` was.
void turnBack(double &first, double &second, double angle) {
    if (angle == 0) return;
    const double cosine = std::cos(angle), sine = std::sin(angle), before = first;
    first = before * cosine + second * sine;
    second = second * cosine - before * sine;
}

} // namespace

TextureSpace::TextureSpace(const Evaluation &evaluation, int firstRow)
    : evaluation_(evaluation), firstRow_(firstRow),
      isInWorld_(evaluation.choice(firstRow + kCoordinatesOffset) == kWorld),
      heading_(evaluation.scalar(firstRow + kHeadingOffset)), pitch_(evaluation.scalar(firstRow + kPitchOffset)),
      bank_(evaluation.scalar(firstRow + kBankOffset)) {
    const ShadingSample &sample = evaluation.sample();
    const double *position = isInWorld_ ? sample.position : sample.objectPosition;
    const Vector centre = evaluation.triple(firstRow + kCentreOffset);
    for (std::size_t i = 0; i < 3; ++i) point_[i] = position[i] - centre[i];
    turn(point_);
}

TextureSpace::Vector TextureSpace::size() const { return evaluation_.triple(firstRow_ + kSizeOffset); }

CellPosition TextureSpace::inCells() const {
    const Vector sizes = size();
    CellPosition result{.smallest = std::min({std::fabs(sizes[0]), std::fabs(sizes[1]), std::fabs(sizes[2])})};
    for (std::size_t i = 0; i < 3; ++i) result.cell[i] = point_[i] / sizes[i];
    result.isUsable = result.smallest > 0 && std::isfinite(result.cell[0] + result.cell[1] + result.cell[2]);
    return result;
}

void TextureSpace::turn(Vector &vector) const {
    turnBack(vector[2], vector[0], heading_);
    turnBack(vector[1], vector[2], pitch_);
    turnBack(vector[0], vector[1], bank_);
}

TextureSpace::Vector TextureSpace::normal() const {
    const double *world = evaluation_.sample().geometricNormal;
    Vector normal{world[0], world[1], world[2]};
    if (!isInWorld_) {
        const double *matrix = evaluation_.sample().objectToWorld; // normals are transformed by its transpose
        for (std::size_t i = 0; i < 3; ++i)
            normal[i] = matrix[i] * world[0] + matrix[3 + i] * world[1] + matrix[6 + i] * world[2];
    }
    turn(normal);
    return normal;
}

int TextureSpace::normalAxis() const {
    const Vector direction = normal();
    int axis = 0;
    for (int i = 1; i < 3; ++i)
        if (std::fabs(direction[static_cast<std::size_t>(i)]) > std::fabs(direction[static_cast<std::size_t>(axis)]))
            axis = i;
    return axis;
}

double TextureSpace::falloff(int firstFalloffRow) const {
    const Vector falloff = evaluation_.triple(firstFalloffRow + kFalloffOffset);
    if (falloff == Vector{}) return 1;
    const Vector loss{point_[0] * falloff[0], point_[1] * falloff[1], point_[2] * falloff[2]};
    const int type = evaluation_.choice(firstFalloffRow + kFalloffTypeOffset);
    double lost = 0;
    if (type == kCubicFalloff)
        lost = std::max({std::fabs(loss[0]), std::fabs(loss[1]), std::fabs(loss[2])});
    else if (type == kSphericalFalloff)
        lost = std::hypot(loss[0], loss[1], loss[2]);
    else
        lost = loss[static_cast<std::size_t>(type - kLinearX)];
    return std::clamp(1 - lost, 0.0, 1.0);
}

} // namespace velm::host::builtin
