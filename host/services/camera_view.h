// The camera through which the picture being made is seen, for services that project positions.
#pragma once

namespace velm::host {

struct CameraView {
    double position[3] = {0, 0, 0};                 // world space
    double matrix[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1}; // by row: right, up and forward in world space, unit length
    double tanHalfWidth = 1;                        // of half the horizontal angle of view
    double tanHalfHeight = 1;
};

// Written by the renderer before each frame. [between frames]
void setCameraView(const CameraView &view);
// [render threads]
const CameraView &cameraView();

} // namespace velm::host
