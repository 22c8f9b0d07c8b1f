// Mappings from positions to image coordinates: u runs from the left edge (0) to the right edge (1), v from the top
// edge (0) to the bottom edge (1). Axes are 0 X, 1 Y and 2 Z. The planar and cubic mappings have an image of one metre
// by one metre, centred on the origin.
#pragma once

namespace velm::host {

// Along X: u = 1/2 + z, v = 1/2 - y, which is unmirrored when seen from +X. Along Y: u = 1/2 + x, v = 1/2 - z,
// unmirrored from +Y. Along Z: u = 1/2 + x, v = 1/2 - y, unmirrored from -Z. An unknown axis counts as Z. [any thread]
void planarMapping(const double position[3], int axis, double *u, double *v);

// Around the axis: u is the heading about it, with 0.5 where the heading starts, wrapped to 0 <= u < 1; v goes from 0
// at the positive end of the axis to 1 at the negative end. The heading goes from +Z towards +X for Y, from +Y towards
// +Z for X, and from +X towards +Y for Z. u is 0.5 on the axis itself; the origin gives (0.5, 0.5). An unknown axis
// counts as Z. [any thread]
void sphericalMapping(const double position[3], int axis, double *u, double *v);

// u as in the spherical mapping, v = 1/2 - height along the axis in metres. [any thread]
void cylindricalMapping(const double position[3], int axis, double *u, double *v);

// The planar mapping along the axis, mirrored on one side so that the image is unmirrored when seen from outside on
// both. An unknown axis selects the one along which the position is farthest from the origin. [any thread]
void cubicMapping(const double position[3], int axis, double *u, double *v);

// Projects a world position through cameraView() onto the picture; a position behind the camera is projected through
// the camera's position. (0.5, 0.5) in the plane of the camera. [render threads]
void frontMapping(const double position[3], double *u, double *v);

} // namespace velm::host
