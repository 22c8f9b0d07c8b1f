// Cameras and lights of an opened mesh file.
#pragma once

#include "host/render/geometry/bounds.h"
#include "host/scene/format/description.h"

namespace velm::host {

// Adds the cameras and lights of the mesh's file to a scene whose only object is the mesh, under names that no camera
// and no light has yet. Ambient lights become the scene's ambient light.
//
// Each camera sees at least what it sees in the file: a picture of another aspect ratio shows more at two of its sides.
// A light has the intensity of the file; 1 candela or 1 lux is an intensity of 1. If the intensity is divided by a sum
// of several powers of the distance, the light gets the nearest falloff that LightDescription has, and is as bright at
// the centre of the mesh as in the file. [any thread]
void addCamerasAndLights(const Mesh &mesh, SceneDescription &scene);

// Scales all lights and the ambient light of a scene if they would make a picture that is almost black or almost white.
// The measure is the sum of the light that each of them gives a surface that faces it at the centre of the bounds. A
// sum from 0.25 to 4 stays, and so does one of 0; any other becomes 1. Returns the factor. [any thread]
double exposeLights(const Bounds &bounds, SceneDescription &scene);

} // namespace velm::host
