// An open scene of the host's own nodes, for tests that change it.
#pragma once

#include "host/session/rendering.h"
#include "tests/scene/scene_text.h"

#include <string>
#include <vector>

namespace velm::host::test {

// A sphere on a plane, both with surfaces that have a network; a camera and a light.
inline const char *const kOpenScene = R"({
    "render": {"width": 24, "height": 16, "samples": 2},
    "cameras": {"Main": {"position": [0, 1, -4], "target": [0, 0.3, 0]}, "Top": {"position": [0, 5, 0.1], "target": [0, 0, 0]}},
    "lights": {"Key": {"kind": "distant", "position": [2, 4, -3]}},
    "backdrop": {"kind": "plain", "colour": [0.1, 0.2, 0.3]},
    "objects": {"Ball": {"sphere": {"radius": 0.6}, "position": [0, 0.6, 0], "surface": "Clay"},
                "Floor": {"plane": {"width": 8, "depth": 8}, "surface": "Ground"}},
    "surfaces": {
        "Clay": {"settings": {"Diffuse": 0.8},
                 "nodes": {"Level": {"server": "Constant Scalar", "settings": {"Scalar": 0.5}},
                           "Product": {"server": "Multiply Scalar", "settings": {"A": 0.5}}},
                 "connections": ["Level.Scalar -> Product.B", "Product.Out -> Clay.Luminosity"]},
        "Ground": {"settings": {"Color": [0.4, 0.5, 0.6]}}}})";

inline std::vector<float> pixelsOf(Session &session) {
    RenderJob job = renderJob(session);
    job.threads = 1;
    Rendering rendering(session);
    rendering.setFrame(job.frame);
    const Picture picture = rendering.render(job).picture;
    std::vector<float> pixels;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            for (int channel = 0; channel < 4; ++channel) pixels.push_back(picture.pixel(x, y)[channel]);
    return pixels;
}

// The picture of a scene that is opened, rendered and closed.
inline std::vector<float> pixelsOf(const SceneDescription &scene) {
    Warnings warnings(Warnings::Policy::strict);
    Session session(scene, warnings);
    return pixelsOf(session);
}

} // namespace velm::host::test
