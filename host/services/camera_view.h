// The camera of the picture that is being rendered, for services that project positions.
#pragma once

namespace velm::host {

struct CameraView {
    double position[3] = {0, 0, 0};                 // world space
    double matrix[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1}; // rows: right, up and forward, unit vectors in world space
    double tanHalfWidth = 1;                        // tangent of half the horizontal field of view
    double tanHalfHeight = 1;                       // likewise vertical
};

// The renderer sets it before each frame. [between frames]
void setCameraView(const CameraView &view);
// [render threads]
const CameraView &cameraView();

} // namespace velm::host
