// The cameras and lights in mesh files.
#pragma once

#include "host/base/double3.h"

#include <cstdint>
#include <string>
#include <vector>

namespace velm::host {

// Positions are in the coordinates of the mesh's object, and so are rotations: heading, pitch and bank in degrees.
struct MeshCameraValues {
    Double3 position, rotation;
    // Half the width and half the height of what the camera sees at a distance of 1. One of them is 0 if it follows
    // from the aspect ratio of the picture; both are 0 if the field of view is not known.
    double halfWidth, halfHeight;
};

struct MeshCamera : MeshCameraValues {
    std::string name; // may be empty, or equal to that of another camera
};

struct MeshLightValues {
    Double3 position, rotation;
    Double3 colour;   // its largest component is 1
    double intensity; // at least 0
    // The terms a, b and c of the intensity at the distance d: intensity / (a + b d + c d^2). Each is at least 0.
    Double3 attenuation;
    double cone, edge; // of spot lights: see LightDescription
};

struct MeshLight : MeshLightValues {
    enum class Kind : std::uint32_t { point, distant, spot, ambient } kind;
    std::string name; // may be empty, or equal to that of another light
};

struct MeshItems {
    std::vector<MeshCamera> cameras;
    std::vector<MeshLight> lights;
};

} // namespace velm::host
