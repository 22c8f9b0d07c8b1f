// Rendering frames of an open scene.
#pragma once

#include "host/render/renderer.h"
#include "host/session/session.h"

namespace velm::host {

// The scene's own render settings, for its first frame.
RenderJob renderJob(const Session &session);

// Surfaces are initialised for rendering as long as it lives, and cleaned up at its end. Meanwhile,
// the session must not be changed, except by setFrame. [between frames]
class Rendering {
  public:
    // `mode` as nodes get it: kInitRender or kInitPreview. InputError when a node refuses.
    explicit Rendering(Session &session, int mode = kInitRender);
    ~Rendering();
    Rendering(const Rendering &) = delete;
    Rendering &operator=(const Rendering &) = delete;

    // Makes `frame` the current one: sets the frame and time for nodes and services, moves the scene's items to that
    // time, and makes sequences of images show the files of the frame. Frame n shows the time n / frames per second, so
    // that a key at 0 shows in frame 0. To be called before the first render. InputError as Session::showFrame and
    // Session::setTime.
    void setFrame(int frame);

    // The order in which the current frame is rendered for a job. The first frame decides for all. May render a small
    // picture to find out whether nodes have a memory; throws as renderFrame does.
    OrderChoice decideOrder(RenderJob job) const;

    const std::string &sceneFile() const { return session_.scene().file; }

    // Gives a job what belongs to the current frame: its number, its time, and the mode in which surfaces are
    // initialised.
    void prepare(RenderJob &job) const;
    // Warns of nodes that evaluated each other in a circle since the last call.
    void warnOfCircles();

    // Renders the current frame, whatever frame the job names, and warns of nodes that evaluated each other in a
    // circle. Otherwise as renderFrame. `sink` may be null.
    Frame render(RenderJob job, ProgressSink *sink = nullptr);

  private:
    Session &session_;
    const int mode_;
    RenderOrder order_ = RenderOrder::automatic; // that was chosen for the first frame
    int frame_ = 0;
    double time_ = 0; // seconds, of the frame
};

} // namespace velm::host
