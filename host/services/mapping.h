// From positions to places on an image: u from the left edge (0) to the right edge (1), v from the top edge (0) to the
// bottom edge (1). Axes are 0 X, 1 Y and 2 Z. The planar and cubic mappings lay down an image of one metre by one
// metre, centred on the origin.
#pragma once

namespace velm::host {

// Along X: u = 1/2 + z, v = 1/2 - y, which reads the right way round from +X. Along Y: u = 1/2 + x, v = 1/2 - z, from
// +Y. Along Z: u = 1/2 + x, v = 1/2 - y, from -Z. An axis that is none counts as Z. [any thread]
void planarMapping(const double position[3], int axis, double *u, double *v);

// Around the axis: u is the heading about it, 0.5 in the middle of the image and wrapping to 0 <= u < 1; v falls from
// 0 at the axis' end to 1 at its other end. For Y the heading goes from +Z towards +X; for X from +Y towards +Z; for Z
// from +X towards +Y. On the axis itself u is 0.5; the origin gives (0.5, 0.5). [any thread]
void sphericalMapping(const double position[3], int axis, double *u, double *v);

// u as in the spherical mapping, v = 1/2 - height along the axis in metres. [any thread]
void cylindricalMapping(const double position[3], int axis, double *u, double *v);

// The planar mapping along the axis, mirrored on one side so that the image reads the right way round from outside on
// both. An axis that is none stands for the axis along which the position is farthest from the
// origin. [any thread]
void cubicMapping(const double position[3], int axis, double *u, double *v);

// World positions through the camera view onto the picture; those behind the camera are projected through it. On the
// camera's own plane: (0.5, 0.5). [render threads]
void frontMapping(const double position[3], double *u, double *v);

} // namespace velm::host
