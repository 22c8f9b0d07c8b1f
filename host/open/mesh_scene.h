// Cameras and lights of an opened mesh file.
#pragma once

#include "host/render/geometry/bounds.h"
#include "host/scene/format/description.h"

namespace velm::host {

// Adds the cameras and lights of the mesh's file to a scene whose only object is the mesh, under names that no camera
// and no light has yet. Ambient lights become the scene's ambient light.
//
// Each camera sees at least what it sees in the file: a picture of another shape shows more at two of its sides. A
// light has the intensity of the file, at a distance of 1 where the file has units: 1 candela or 1 lux is an intensity
// of 1. A light that decreases by several powers of the distance is given the nearest falloff that
// LightDescription has, and is as bright in the middle of the mesh as in the file. [any thread]
void addCamerasAndLights(const Mesh &mesh, SceneDescription &scene);

// Scales all lights and the ambient light of a scene where they would make a picture that is almost black or almost
// white: so that together they light a surface in the middle of the bounds that faces each of them to 1. Returns the
// factor; 1 where they light it to something between 0.25 and 4, and where no light reaches it. [any thread]
double exposeLights(const Bounds &bounds, SceneDescription &scene);

} // namespace velm::host
