#include "host/session/rendering.h"

#include "host/base/names.h"
#include "host/graph/node.h"
#include "host/render/motion/pose.h"
#include "host/services/time.h"

#include <fmt/format.h>
#include <utility>

namespace velm::host {

namespace {

// A circle that runs through pointers of the module, such as a material store, is unknown to the host until an
// evaluation runs into it.
void warnOfCircle(const std::string &sceneFile, Warnings &warnings) {
    if (!takeEvaluationTooDeep()) return;
    warnings.add({.location = {.file = sceneFile, .line = 0},
                  .path = "",
                  .brief = "nodes that evaluate each other in a circle",
                  .message = "nodes evaluate each other in a circle, perhaps through a material store; the inputs at "
                             "which it was cut count as unconnected"});
}

void warnOfNotFinite(const NotFinitePixels &pixels, int frame, const SceneDescription &scene, Warnings &warnings) {
    if (pixels.count == 0) return;
    std::string path, source;
    if (!pixels.node.empty()) {
        path = pathTo(pathTo(pathTo("surfaces", pixels.surface), "nodes"), pixels.node);
        source = fmt::format(", where the node {} gives such a value", inQuotes(pixels.node));
    } else if (pixels.isBackdrop && scene.backdrop.kind == BackdropDescription::Kind::image) {
        path = "backdrop.image";
        source = fmt::format(", where the image {} of the backdrop has such a value", inQuotes(scene.backdrop.image));
    }
    warnings.add({.location = {.file = scene.file, .line = 0},
                  .path = std::move(path),
                  .brief = "pixels that are NaN or infinite",
                  .message = fmt::format("frame {}: {} {} NaN or infinite, the first at {}, {}{}", frame, pixels.count,
                                         pixels.count == 1 ? "pixel is" : "pixels are", pixels.x, pixels.y, source)});
}

} // namespace

RenderJob renderJob(const Session &session) { return renderJob(session.scene().render); }

Rendering::Rendering(Session &session, int mode) : session_(session), mode_(mode) { session_.surfaces().init(mode); }

Rendering::~Rendering() { session_.surfaces().cleanup(); }

void Rendering::setFrame(int frame) {
    frame_ = frame;
    time_ = timeOfFrame(session_.scene().render, frame);
    session_.showFrame(frame_);
    session_.setTime(time_);
    setTime(frame_, time_);
    session_.surfaces().newTime(frame_, time_);
}

OrderChoice Rendering::decideOrder(RenderJob job) const {
    prepare(job);
    return velm::host::decideOrder(session_.renderScene(), job);
}

void Rendering::prepare(RenderJob &job) const {
    job.frame = frame_;
    job.time = time_;
    job.initMode = mode_;
    if (job.order == RenderOrder::automatic) job.order = order_;
}

void Rendering::warnOfCircles() { warnOfCircle(session_.scene().file, session_.warnings()); }

Frame Rendering::render(RenderJob job, ProgressSink *sink) {
    prepare(job);
    Frame frame = renderFrame(session_.renderScene(), job, sink);
    order_ = frame.statistics.order; // the same for all frames
    if (!frame.complete) return frame;
    warnOfCircles();
    warnOfNotFinite(frame.notFinite, frame_, session_.scene(), session_.warnings());
    return frame;
}

} // namespace velm::host
