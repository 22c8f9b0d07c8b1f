#include "shading/directions.h"

#include "shading/sincos.h"

#include <cmath>

namespace velm::plugin {

AxisRotation rotationTo(const double axis[3]) {
    const double heading = std::atan2(axis[2], axis[0]);
    const double pitch = std::atan2(axis[1], std::sqrt(axis[0] * axis[0] + axis[2] * axis[2]));
    return {.cosPitch = std::cos(pitch),
            .sinPitch = std::sin(pitch),
            .cosHeading = std::cos(heading),
            .sinHeading = std::sin(heading)};
}

void rotateBatch(DirectionBatch &batch, int count, const AxisRotation &rotation) {
    double sinTheta[DirectionBatch::kMost], cosTheta[DirectionBatch::kMost];
    double sinPhi[DirectionBatch::kMost], cosPhi[DirectionBatch::kMost];
    sinesAndCosines(batch.theta, count, sinTheta, cosTheta);
    sinesAndCosines(batch.phi, count, sinPhi, cosPhi);
    const auto [cosPitch, sinPitch, cosHeading, sinHeading] = rotation; // copies, which the stores below cannot change
    for (int i = 0; i < count; ++i) {
        const double x = cosTheta[i], y = sinTheta[i] * sinPhi[i], z = sinTheta[i] * cosPhi[i];
        const double level = x * cosPitch - y * sinPitch;
        batch.directions[i][0] = level * cosHeading - z * sinHeading;
        batch.directions[i][1] = x * sinPitch + y * cosPitch;
        batch.directions[i][2] = level * sinHeading + z * cosHeading;
    }
}

} // namespace velm::plugin
