// Rendering frames of an open scene.
#pragma once

#include "host/render/renderer.h"
#include "host/session/session.h"

namespace velm::host {

// The scene's own render settings, for its first frame.
RenderJob renderJob(const Session &session);

// Surfaces are initialised for rendering as long as it lives, and cleaned up at its end. The session does not change
// meanwhile. [between frames]
class Rendering {
  public:
    // `mode` as nodes get it: kInitRender or kInitPreview. InputError when a node refuses.
    explicit Rendering(Session &session, int mode = kInitRender);
    ~Rendering();
    Rendering(const Rendering &) = delete;
    Rendering &operator=(const Rendering &) = delete;

    // Makes `frame` the current one for nodes and services; frame n shows the time n / frames per second. To be called
    // before the first render.
    void setFrame(int frame);

    // Renders the current frame, whatever frame the job names, and warns of nodes that evaluated each other in a
    // circle. Otherwise as renderFrame. `sink` may be null.
    Frame render(RenderJob job, ProgressSink *sink = nullptr);

  private:
    Session &session_;
    int frame_ = 0;
    double time_ = 0; // seconds, of the frame
};

} // namespace velm::host
