#include "host/services/mapping.h"

#include "host/services/camera_view.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace velm::host {

namespace {

bool isAxis(int axis) { return axis >= 0 && axis <= 2; }

CameraView currentView;

// The heading about an axis as a fraction of a turn, 0.5 where it starts, 0 <= u < 1.
double headingFraction(const double position[3], int axis) {
    const double along = position[(axis + 1) % 3];  // the heading starts here
    const double across = position[(axis + 2) % 3]; // and goes this way
    if (along == 0 && across == 0) return 0.5;
    const double u = 0.5 + std::atan2(across, along) / (2 * std::numbers::pi);
    return u >= 1 ? 0 : u; // the seam is at the left edge only
}

double dot(const double a[3], const double b[3]) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

} // namespace

void planarMapping(const double position[3], int axis, double *u, double *v) {
    *u = 0.5 + position[axis == 0 ? 2 : 0];
    *v = 0.5 - position[axis == 1 ? 2 : 1];
}

void sphericalMapping(const double position[3], int axis, double *u, double *v) {
    const int about = isAxis(axis) ? axis : 2;
    const double radius = std::sqrt(dot(position, position));
    *u = headingFraction(position, about);
    *v = radius > 0 ? 0.5 - std::asin(std::clamp(position[about] / radius, -1.0, 1.0)) / std::numbers::pi : 0.5;
}

void cylindricalMapping(const double position[3], int axis, double *u, double *v) {
    const int about = isAxis(axis) ? axis : 2;
    *u = headingFraction(position, about);
    *v = 0.5 - position[about];
}

void cubicMapping(const double position[3], int axis, double *u, double *v) {
    int along = axis;
    if (!isAxis(axis)) {
        along = 0;
        for (int i = 1; i < 3; ++i)
            if (std::fabs(position[i]) > std::fabs(position[along])) along = i;
    }
    planarMapping(position, along, u, v);
    // The planar image is unmirrored from +X (where +Z is on the right), from +Y (+X) and from -Z (+X).
    const bool mirrored = along == 2 ? position[2] > 0 : position[along] < 0;
    if (mirrored) *u = 1 - *u;
}

void setCameraView(const CameraView &view) { currentView = view; }

const CameraView &cameraView() { return currentView; }

void frontMapping(const double position[3], double *u, double *v) {
    const CameraView &view = currentView;
    const double offset[3] = {position[0] - view.position[0], position[1] - view.position[1],
                              position[2] - view.position[2]};
    const double depth = dot(offset, view.matrix + 6);
    if (depth == 0) {
        *u = *v = 0.5;
        return;
    }
    *u = 0.5 + 0.5 * dot(offset, view.matrix) / (depth * view.tanHalfWidth);
    *v = 0.5 - 0.5 * dot(offset, view.matrix + 3) / (depth * view.tanHalfHeight);
}

} // namespace velm::host
